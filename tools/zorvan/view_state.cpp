#include "tools/zorvan/view_state.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace zorvan::tool {
namespace {

constexpr double kLastSecond = 32767;
constexpr double kLeastSpeed = 1.0 / 16, kMostSpeed = 16;
constexpr double kLeastZoom = 1.0 / 16, kMostZoom = 64;
constexpr double kZoomStep = 1.25;
constexpr double kPanStep = 0.1;  // of what is visible
// Scene units; what is visible must stay within 16.16.
constexpr double kFarthest = 16000;
constexpr int kClickSlack = 4;  // pixels

RealFixed ToFixed(double value) {
    return RealFixed::FromRaw(static_cast<int32_t>(std::lround(value * 65536)));
}

}  // namespace

void ViewState::Apply(ViewAction action) {
    const double centerX = window_.width / 2.0;
    const double centerY = window_.height / 2.0;
    const double panX = kPanStep * window_.width;
    const double panY = kPanStep * window_.height;
    switch (action) {
        case ViewAction::Quit:
            requests_.quit = true;
            break;
        case ViewAction::TogglePause:
            paused_ = !paused_;
            break;
        case ViewAction::StepForward:
            return Step(1);
        case ViewAction::StepBack:
            return Step(-1);
        case ViewAction::SeekForward:
            return Seek(seconds_ + 1);
        case ViewAction::SeekBack:
            return Seek(seconds_ - 1);
        case ViewAction::SeekFarForward:
            return Seek(seconds_ + 10);
        case ViewAction::SeekFarBack:
            return Seek(seconds_ - 10);
        case ViewAction::Restart:
            return Seek(0);
        case ViewAction::Faster:
            speed_ = std::min(speed_ * 2, kMostSpeed);
            break;
        case ViewAction::Slower:
            speed_ = std::max(speed_ / 2, kLeastSpeed);
            break;
        case ViewAction::NormalSpeed:
            speed_ = 1;
            break;
        case ViewAction::ZoomIn:
            return ZoomAt(centerX, centerY, kZoomStep);
        case ViewAction::ZoomOut:
            return ZoomAt(centerX, centerY, 1 / kZoomStep);
        case ViewAction::PanLeft:
            return Pan(-panX, 0);
        case ViewAction::PanRight:
            return Pan(panX, 0);
        case ViewAction::PanUp:
            return Pan(0, -panY);
        case ViewAction::PanDown:
            return Pan(0, panY);
        case ViewAction::ResetCamera:
            zoom_ = 1;
            left_ = top_ = 0;
            break;
        case ViewAction::ToggleOverlay:
            overlay_ = !overlay_;
            break;
        case ViewAction::Reload:
            requests_.reload = true;
            break;
        case ViewAction::Screenshot:
            requests_.screenshot = true;
            break;
    }
}

void ViewState::Advance(double seconds) {
    if (!paused_) {
        Seek(seconds_ + seconds * speed_);
    }
}

void ViewState::Seek(double seconds) {
    seconds_ = std::clamp(seconds, 0.0, kLastSecond);
}

void ViewState::SeekToPart(double part) {
    if (scene_.seconds > 0) {
        Seek(part * scene_.seconds);
    }
}

void ViewState::Step(int frames) {
    paused_ = true;
    // A time that rounding put just below a frame counts as that frame.
    const double frame = std::floor(seconds_ * scene_.framesPerSecond + 1e-3);
    Seek((frame + frames) / scene_.framesPerSecond);
}

RealFixed ViewState::GetTime() const {
    return ToFixed(seconds_);
}

SizeT<double> ViewState::CameraUnits() const {
    // The rectangle of a screen-space camera ends one unit short of its size.
    return {scene_.camera.size.width.ToFloat() - 1.0, scene_.camera.size.height.ToFloat() - 1.0};
}

void ViewState::ZoomAt(double x, double y, double factor) {
    if (!scene_.camera.enabled) {
        return;
    }
    const double zoom = std::clamp(zoom_ * factor, kLeastZoom, kMostZoom);
    // The point under the pointer stays: its distance from the corner shrinks with the zoom.
    Pan(x * (1 - zoom_ / zoom), y * (1 - zoom_ / zoom));
    zoom_ = std::fabs(zoom - 1) < 1e-9 ? 1 : zoom;
}

void ViewState::Pan(double x, double y) {
    if (!scene_.camera.enabled) {
        return;
    }
    const SizeT<double> units = CameraUnits();
    left_ = std::clamp(left_ + x * units.width / (zoom_ * window_.width), -kFarthest, kFarthest);
    top_ = std::clamp(top_ + y * units.height / (zoom_ * window_.height), -kFarthest, kFarthest);
}

void ViewState::Press(WindowPoint point) {
    pressed_ = last_ = point;
    dragging_ = false;
}

void ViewState::Move(WindowPoint point) {
    if (!pressed_) {
        return;
    }
    if (!dragging_ &&
        std::max(std::abs(point.x - pressed_->x), std::abs(point.y - pressed_->y)) <= kClickSlack) {
        return;
    }
    dragging_ = true;
    Pan(last_.x - point.x, last_.y - point.y);
    last_ = point;
}

void ViewState::Release(WindowPoint point) {
    Move(point);
    if (pressed_ && !dragging_) {
        requests_.click = point;
    }
    pressed_.reset();
}

void ViewState::Wheel(WindowPoint point, int notches) {
    ZoomAt(point.x, point.y, std::pow(kZoomStep, notches));
}

std::optional<RectangleT<RealFixed>> ViewState::GetCameraView() const {
    if (!scene_.camera.enabled || (zoom_ == 1 && left_ == 0 && top_ == 0)) {
        return std::nullopt;
    }
    const SizeT<double> units = CameraUnits();
    const double right = std::min(left_ + units.width / zoom_, kLastSecond);
    const double bottom = std::min(top_ + units.height / zoom_, kLastSecond);
    return RectangleT<RealFixed>{ToFixed(left_), ToFixed(top_), ToFixed(right), ToFixed(bottom)};
}

ViewRequests ViewState::TakeRequests() {
    return std::exchange(requests_, {});
}

}  // namespace zorvan::tool
