// What the viewer shows, and how keys and pointer change it. Knows no window and no GL.
#pragma once

#include <cstdint>
#include <optional>

#include "core/geometry.h"
#include "tools/zorvan/values.h"

namespace zorvan::tool {

enum class ViewAction {
    Quit,
    TogglePause,
    StepForward,  // one frame of the root timeline, and pause
    StepBack,
    SeekForward,  // a second
    SeekBack,
    SeekFarForward,  // ten seconds
    SeekFarBack,
    Restart,
    Faster,
    Slower,
    NormalSpeed,
    ZoomIn,
    ZoomOut,
    PanLeft,  // looks further to the left
    PanRight,
    PanUp,
    PanDown,
    ResetCamera,
    ToggleOverlay,
    Reload,
    Screenshot,
};

using WindowPoint = Vector2T<int>;  // pixels from the top left

// Things to do that are not the state's own.
struct ViewRequests {
    bool quit = false;
    bool reload = false;
    bool screenshot = false;
    std::optional<WindowPoint> click;
};

// What a scene brings along.
struct ViewedScene {
    double framesPerSecond = 30;  // of the root timeline, above 0
    double seconds = 0;           // length of the root timeline; 0 when it has none
    Camera2D camera;
};

class ViewState {
  public:
    // For a new scene; time, speed and camera stay.
    void SetScene(ViewedScene const& scene) { scene_ = scene; }
    void SetWindow(PixelSize const& window) { window_ = window; }

    void Apply(ViewAction action);
    // Lets time pass, in seconds of the wall clock.
    void Advance(double seconds);
    // Limited to what the core's time can hold.
    void Seek(double seconds);
    // To a part of the root timeline's length, 0 to 1; nothing for a timeline without a length.
    void SeekToPart(double part);

    // A press and a release at nearly one place is a click, anything longer moves the camera.
    void Press(WindowPoint point);
    void Move(WindowPoint point);
    void Release(WindowPoint point);
    // Zooms in (above 0) or out by notches and keeps what is under the pointer there.
    void Wheel(WindowPoint point, int notches);

    double GetSeconds() const { return seconds_; }
    RealFixed GetTime() const;
    bool IsPaused() const { return paused_; }
    double GetSpeed() const { return speed_; }
    double GetZoom() const { return zoom_; }
    bool ShowsOverlay() const { return overlay_; }
    // What the screen-space camera shows, in scene units; nothing for all of it.
    std::optional<RectangleT<RealFixed>> GetCameraView() const;
    // Those since the last call.
    ViewRequests TakeRequests();

  private:
    void Step(int frames);
    void ZoomAt(double x, double y, double factor);
    void Pan(double x, double y);
    // Of the whole camera, in scene units.
    SizeT<double> CameraUnits() const;

    ViewedScene scene_;
    PixelSize window_ = {1, 1};
    double seconds_ = 0;
    double speed_ = 1;
    bool paused_ = false;
    bool overlay_ = true;
    double zoom_ = 1;
    double left_ = 0, top_ = 0;  // of what the camera shows, in scene units
    std::optional<WindowPoint> pressed_;
    WindowPoint last_;
    bool dragging_ = false;
    ViewRequests requests_;
};

}  // namespace zorvan::tool
