// What can be played.
#pragma once

#include "core/api.h"
#include "core/fixed.h"

namespace zorvan {

class ZORVAN_CORE_API Playback {
  public:
    virtual ~Playback();
    virtual void Play() = 0;
    virtual void Stop() = 0;
    virtual RealFixed GetFrame() const = 0;
    virtual void SetFrame(RealFixed const& frame) = 0;
};

}  // namespace zorvan
