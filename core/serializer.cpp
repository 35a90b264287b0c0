#include "core/serializer.h"

#include "core/picture_cache.h"

namespace zorvan {

Deserializer::Deserializer(uint64_t memoryLimit)
    : budget_(new MemoryBudget(memoryLimit)), pictures_(std::make_unique<PictureCache>(*budget_)) {}

Deserializer::~Deserializer() = default;

bool Deserializer::TakeMemory(char const* key, uint64_t bytes, std::string_view what) {
    if (Failed()) {
        return false;
    }
    const bool fits = budget_->Take(bytes);
    if (!fits) {
        Fail(key, budget_->Refusal(what));
    }
    return fits;
}

Serializer::~Serializer() = default;

}  // namespace zorvan
