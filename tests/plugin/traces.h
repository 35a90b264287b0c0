// Collects what the engine traces while it lives.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "core/trace.h"

namespace zorvan {

class Traces {
  public:
    Traces() {
        Debug::SetSink(
            [](void* context, std::string_view text) {
                static_cast<Traces*>(context)->texts_.emplace_back(text);
            },
            this);
    }
    ~Traces() { Debug::SetSink(nullptr, nullptr); }
    Traces(Traces const&) = delete;
    Traces& operator=(Traces const&) = delete;

    std::vector<std::string> Take() { return std::exchange(texts_, {}); }

  private:
    std::vector<std::string> texts_;
};

}  // namespace zorvan
