// The viewer's window, and its keys and pointer.
#pragma once

#include <memory>
#include <string>

#include "tools/zorvan/gl_context.h"
#include "tools/zorvan/view_state.h"

struct SDL_Window;
union SDL_Event;

namespace zorvan::tool {

class ViewWindow final : public GlContext {
  public:
    // Failures: Unsupported when there is no display that anybody sees (unless SDL_VIDEODRIVER asks for one),
    // Runtime when it has no window or no OpenGL ES 2.0.
    static Result<std::unique_ptr<ViewWindow>> Create(std::string const& title, SurfaceFormat format,
                                                      PixelSize const& size);
    ViewWindow(ViewWindow const&) = delete;
    ViewWindow& operator=(ViewWindow const&) = delete;
    ~ViewWindow() override;

    std::string Describe() const override;
    // Hands what happened since the last call to the state. Whether anything did.
    bool HandleEvents(ViewState& state);
    // Returns when something happens, after this time at the latest.
    void Wait(int milliseconds);
    void Swap();
    PixelSize GetSize() const;

  private:
    ViewWindow() = default;
    Status Open(std::string const& title, SurfaceFormat format, PixelSize const& size);
    static void Handle(SDL_Event const& event, ViewState& state);

    SDL_Window* window_ = nullptr;
    void* context_ = nullptr;
};

}  // namespace zorvan::tool
