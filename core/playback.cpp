#include "core/playback.h"

namespace zorvan {

Playback::~Playback() = default;

}  // namespace zorvan
