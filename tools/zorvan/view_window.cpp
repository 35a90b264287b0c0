#include "tools/zorvan/view_window.h"

#include <SDL.h>

namespace zorvan::tool {
namespace {

struct Key {
    SDL_Keycode key;
    bool shift;
    ViewAction action;
};

constexpr Key kKeys[] = {
    {SDLK_q, false, ViewAction::Quit},
    {SDLK_ESCAPE, false, ViewAction::Quit},
    {SDLK_SPACE, false, ViewAction::TogglePause},
    {SDLK_PERIOD, false, ViewAction::StepForward},
    {SDLK_COMMA, false, ViewAction::StepBack},
    {SDLK_RIGHT, false, ViewAction::SeekForward},
    {SDLK_LEFT, false, ViewAction::SeekBack},
    {SDLK_RIGHT, true, ViewAction::SeekFarForward},
    {SDLK_LEFT, true, ViewAction::SeekFarBack},
    {SDLK_HOME, false, ViewAction::Restart},
    {SDLK_RIGHTBRACKET, false, ViewAction::Faster},
    {SDLK_LEFTBRACKET, false, ViewAction::Slower},
    {SDLK_BACKSPACE, false, ViewAction::NormalSpeed},
    {SDLK_PLUS, false, ViewAction::ZoomIn},
    {SDLK_PLUS, true, ViewAction::ZoomIn},
    {SDLK_EQUALS, false, ViewAction::ZoomIn},
    {SDLK_EQUALS, true, ViewAction::ZoomIn},
    {SDLK_KP_PLUS, false, ViewAction::ZoomIn},
    {SDLK_MINUS, false, ViewAction::ZoomOut},
    {SDLK_KP_MINUS, false, ViewAction::ZoomOut},
    {SDLK_a, false, ViewAction::PanLeft},
    {SDLK_d, false, ViewAction::PanRight},
    {SDLK_w, false, ViewAction::PanUp},
    {SDLK_s, false, ViewAction::PanDown},
    {SDLK_r, false, ViewAction::ResetCamera},
    {SDLK_o, false, ViewAction::ToggleOverlay},
    {SDLK_F5, false, ViewAction::Reload},
    {SDLK_F12, false, ViewAction::Screenshot},
};

void HandleKey(SDL_KeyboardEvent const& event, ViewState& state) {
    const SDL_Keycode key = event.keysym.sym;
    const bool shift = (event.keysym.mod & KMOD_SHIFT) != 0;
    if (key >= SDLK_0 && key <= SDLK_9) {
        return state.SeekToPart((key - SDLK_0) / 10.0);
    }
    for (Key const& row : kKeys) {
        if (row.key == key && row.shift == shift) {
            return state.Apply(row.action);
        }
    }
}

Failure SdlFailure(ExitCode code, char const* what) {
    return {code, std::string("window: ") + what + ": " + SDL_GetError()};
}

// Wayland's library complains on standard error, too, when it is asked for a display and has no folder for
// its socket. A name that is a path leads it to none in silence.
void SilenceWayland() {
    char const* folder = SDL_getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || *folder != '/') {
        SDL_setenv("WAYLAND_DISPLAY", "/", 0);
    }
}

// Without a display SDL falls back on drivers that draw where nobody sees it.
Status CheckDisplay() {
    char const* asked = SDL_getenv("SDL_VIDEODRIVER");
    const std::string driver = SDL_GetCurrentVideoDriver();
    const bool isUnseen = driver == "offscreen" || driver == "dummy" || driver == "evdev";
    if (!isUnseen || (asked != nullptr && *asked != 0)) {
        return std::nullopt;
    }
    return Failure{ExitCode::Unsupported,
                   "window: no display: found neither X11 nor Wayland (DISPLAY, WAYLAND_DISPLAY); "
                   "SDL_VIDEODRIVER=" +
                       driver + " would run unseen"};
}

void SetAttributes(SurfaceFormat format) {
    const bool few = format == SurfaceFormat::Rgb565;
    const std::pair<SDL_GLattr, int> attributes[] = {{SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_ES},
                                                     {SDL_GL_CONTEXT_MAJOR_VERSION, 2},
                                                     {SDL_GL_CONTEXT_MINOR_VERSION, 0},
                                                     {SDL_GL_RED_SIZE, few ? 5 : 8},
                                                     {SDL_GL_GREEN_SIZE, few ? 6 : 8},
                                                     {SDL_GL_BLUE_SIZE, few ? 5 : 8},
                                                     {SDL_GL_DEPTH_SIZE, 0},
                                                     {SDL_GL_DOUBLEBUFFER, 1}};
    for (auto const& [name, value] : attributes) {
        SDL_GL_SetAttribute(name, value);
    }
}

}  // namespace

Result<std::unique_ptr<ViewWindow>> ViewWindow::Create(std::string const& title, SurfaceFormat format,
                                                       PixelSize const& size) {
    PrepareSoftwareRendering();
    std::unique_ptr<ViewWindow> window(new ViewWindow);
    if (Status failure = window->Open(title, format, size)) {
        return *failure;
    }
    return window;
}

Status ViewWindow::Open(std::string const& title, SurfaceFormat format, PixelSize const& size) {
    // The plug-in is linked with the GL ES library, whose contexts EGL makes.
    SDL_SetHint(SDL_HINT_OPENGL_ES_DRIVER, "1");
    SDL_SetHint(SDL_HINT_VIDEO_X11_FORCE_EGL, "1");
    SilenceWayland();
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        return SdlFailure(ExitCode::Unsupported, "no display");
    }
    if (Status failure = CheckDisplay()) {
        return failure;
    }
    SetAttributes(format);
    window_ = SDL_CreateWindow(title.c_str(), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, size.width,
                               size.height, SDL_WINDOW_OPENGL | SDL_WINDOW_RESIZABLE);
    if (window_ == nullptr) {
        return SdlFailure(ExitCode::Runtime, "cannot open one");
    }
    context_ = SDL_GL_CreateContext(window_);
    if (context_ == nullptr) {
        return SdlFailure(ExitCode::Runtime, "no OpenGL ES 2.0 here");
    }
    SDL_GL_SetSwapInterval(1);
    return std::nullopt;
}

ViewWindow::~ViewWindow() {
    if (context_ != nullptr) {
        SDL_GL_DeleteContext(context_);
    }
    if (window_ != nullptr) {
        SDL_DestroyWindow(window_);
    }
    SDL_Quit();
}

std::string ViewWindow::Describe() const {
    return std::string("SDL window on ") + SDL_GetCurrentVideoDriver();
}

bool ViewWindow::HandleEvents(ViewState& state) {
    bool any = false;
    for (SDL_Event event; SDL_PollEvent(&event) != 0; any = true) {
        Handle(event, state);
    }
    return any;
}

void ViewWindow::Handle(SDL_Event const& event, ViewState& state) {
    switch (event.type) {
        case SDL_QUIT:
            return state.Apply(ViewAction::Quit);
        case SDL_KEYDOWN:
            return HandleKey(event.key, state);
        case SDL_MOUSEBUTTONDOWN:
            return state.Press({event.button.x, event.button.y});
        case SDL_MOUSEBUTTONUP:
            return state.Release({event.button.x, event.button.y});
        case SDL_MOUSEMOTION:
            return state.Move({event.motion.x, event.motion.y});
        case SDL_MOUSEWHEEL:
            return state.Wheel({event.wheel.mouseX, event.wheel.mouseY}, event.wheel.y);
        default:
            return;
    }
}

void ViewWindow::Wait(int milliseconds) {
    SDL_WaitEventTimeout(nullptr, milliseconds);
}

void ViewWindow::Swap() {
    SDL_GL_SwapWindow(window_);
}

PixelSize ViewWindow::GetSize() const {
    PixelSize size;
    SDL_GL_GetDrawableSize(window_, &size.width, &size.height);
    return size;
}

}  // namespace zorvan::tool
