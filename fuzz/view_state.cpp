// The viewer's state under any keys, pointer movements and scenes: what it shows can always be shown.
#include "tools/zorvan/view_state.h"

#include <cmath>

#include "fuzz/fuzz_input.h"

namespace {

using namespace zorvan;
using namespace zorvan::tool;
using fuzz::FuzzInput;
using fuzz::Require;

RealFixed CameraSide(FuzzInput& input) {
    const auto raw = static_cast<int32_t>(input.Word() & 0x7FFFFFFF);
    return RealFixed::FromRaw(std::max(raw, 0x10001));
}

ViewedScene Scene(FuzzInput& input) {
    ViewedScene scene;
    const double rates[] = {30, 1, 0.001, 60, 32767.99, 1.0 / 65536};
    scene.framesPerSecond = rates[input.Byte() % std::size(rates)];
    scene.seconds = (input.Byte() & 1) == 0 ? 0 : input.Word() / 65536.0;
    scene.camera.enabled = (input.Byte() & 7) != 0;
    scene.camera.size = {CameraSide(input), CameraSide(input)};
    return scene;
}

WindowPoint Point(FuzzInput& input) {
    // The window system tells of points far outside, too.
    const auto x = static_cast<int16_t>(input.Byte() | input.Byte() << 8);
    const auto y = static_cast<int16_t>(input.Byte() | input.Byte() << 8);
    return {x, y};
}

void Act(FuzzInput& input, ViewState& state) {
    constexpr uint32_t kActions = static_cast<uint32_t>(ViewAction::Screenshot) + 1;
    const uint32_t choice = input.Byte() % (kActions + 9);
    if (choice < kActions) {
        return state.Apply(static_cast<ViewAction>(choice));
    }
    switch (choice - kActions) {
        case 0:
            return state.Press(Point(input));
        case 1:
            return state.Move(Point(input));
        case 2:
            return state.Release(Point(input));
        case 3: {
            const WindowPoint point = Point(input);
            return state.Wheel(point, static_cast<int8_t>(input.Byte()));
        }
        case 4:
            return state.Advance(input.Word() / 1e6);
        case 5:
            return state.SeekToPart(input.Byte() / 255.0);
        case 6:
            return state.SetScene(Scene(input));
        case 7: {
            const auto width = static_cast<int>(input.Range(1, 255));
            return state.SetWindow({width, static_cast<int>(1 + input.Word() % kLargestSurface)});
        }
        default:
            state.TakeRequests();
            Require(!state.TakeRequests().click);
    }
}

void RequireShowable(ViewState const& state) {
    Require(state.GetSeconds() >= 0 && state.GetSeconds() <= 32767 && state.GetTime().raw >= 0);
    Require(state.GetSpeed() >= 1.0 / 16 && state.GetSpeed() <= 16);
    Require(state.GetZoom() >= 1.0 / 16 && state.GetZoom() <= 64);
    if (const auto view = state.GetCameraView()) {
        Require(view->left <= view->right && view->top <= view->bottom);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    FuzzInput input(data, size);
    ViewState state;
    state.SetScene({30, 0, {true, {RealFixed::FromInt(641), RealFixed::FromInt(481)}}});
    while (!input.AtEnd()) {
        Act(input, state);
        RequireShowable(state);
    }
    return 0;
}
