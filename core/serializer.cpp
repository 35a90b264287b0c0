#include "core/serializer.h"

namespace zorvan {

Deserializer::~Deserializer() = default;

Serializer::~Serializer() = default;

}  // namespace zorvan
