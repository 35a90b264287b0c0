// Reads next to nothing: an object loaded from it keeps the values that a test set before.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "core/class_registry.h"
#include "core/serializer.h"

namespace zorvan {

class EmptyReader : public Deserializer {
  public:
    bool Has(char const*) override { return false; }
    bool Read(char const*, bool&) override { return false; }
    bool Read(char const*, int32_t&) override { return false; }
    bool Read(char const* key, uint32_t& value) override { return Take(numbers, key, value); }
    bool Read(char const*, RealFixed&) override { return false; }
    bool Read(char const*, RealFixed*, uint32_t) override { return false; }
    bool Read(char const*, std::string&) override { return false; }
    bool Read(char const*, MStringT<wchar_t>&) override { return false; }
    bool Read(char const* key, std::vector<uint8_t>& blob) override { return Take(blobs, key, blob); }
    bool Read(char const*, RefT<Texture>&) override { return false; }
    bool Read(char const*, RefT<Font>&) override { return false; }
    bool Enter(char const*) override { return false; }
    bool Enter(uint32_t) override { return false; }
    void Leave() override {}
    uint32_t Count() override { return 0; }
    void Fail(char const*, std::string const&) override { failed = true; }
    bool Failed() const override { return failed; }
    std::string ResolvePath(std::string const& path) const override { return path; }
    ClassRegistry& Registry() override { return registry_; }

    bool failed = false;
    std::map<std::string, uint32_t> numbers;
    std::map<std::string, std::vector<uint8_t>> blobs;

  private:
    template <typename T>
    static bool Take(std::map<std::string, T> const& values, char const* key, T& value) {
        const auto found = values.find(key);
        if (found == values.end()) {
            return false;
        }
        value = found->second;
        return true;
    }

    ClassRegistry registry_;
};

}  // namespace zorvan
