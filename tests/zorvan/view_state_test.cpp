// How keys and pointer change what the viewer shows. Needs no window.
#include "tools/zorvan/view_state.h"

#include <gtest/gtest.h>

namespace zorvan::tool {
namespace {

using enum ViewAction;

// A camera of 400x200 units on a window of 800x400 pixels; 4 seconds at 25 frames per second.
ViewState MakeState(bool camera = true) {
    ViewState state;
    state.SetScene({25, 4, {camera, {RealFixed::FromInt(401), RealFixed::FromInt(201)}}});
    state.SetWindow({800, 400});
    return state;
}

void Repeat(ViewState& state, ViewAction action, int times) {
    for (int i = 0; i < times; ++i) {
        state.Apply(action);
    }
}

TEST(ViewState, ActionsMoveTheTime) {
    const struct {
        char const* name;
        double from;                      // seconds
        std::vector<ViewAction> actions;  // and then a second passes
        double to;
    } rows[] = {
        {"plays", 1, {}, 2},
        {"faster", 1, {Faster}, 3},
        {"slower", 1, {Slower, Slower}, 1.25},
        {"normal", 1, {Faster, Faster, NormalSpeed}, 2},
        {"paused", 1, {TogglePause}, 1},
        {"played on", 1, {TogglePause, TogglePause}, 2},
        {"to before the start", 0.5, {SeekBack}, 1},
        {"far and near", 2, {SeekFarForward, SeekForward}, 14},
        {"back", 20, {SeekFarBack, SeekBack}, 10},
        {"restart", 3, {Restart}, 1},
        {"to the next frame, and pauses", 0.11, {StepForward}, 0.12},
        {"two frames on", 0.11, {StepForward, StepForward}, 0.16},
        {"on and back", 1.72, {StepForward, StepBack, StepBack}, 1.68},
        {"back to the start", 0.01, {StepBack}, 0},
        {"at the end of time", 1e9, {SeekForward}, 32767},
    };
    for (auto const& row : rows) {
        ViewState state = MakeState();
        state.Seek(row.from);
        for (const ViewAction action : row.actions) {
            state.Apply(action);
        }
        state.Advance(1);
        EXPECT_NEAR(state.GetTime().ToFloat(), row.to, 1e-4) << row.name;
    }
    ViewState state = MakeState();
    state.SeekToPart(0.5);
    EXPECT_EQ(state.GetSeconds(), 2);
    state.SetScene({25, 0, {}});  // a timeline without a length has no tenths
    state.SeekToPart(0.25);
    EXPECT_EQ(state.GetSeconds(), 2);
    Repeat(state, Slower, 99);
    EXPECT_GT(state.GetSpeed(), 0);
}

TEST(ViewState, PointerAndKeysMoveTheCamera) {
    struct Edges {
        double left, top, right, bottom;
    };
    ViewState state = MakeState();
    const auto expect = [&](char const* after, Edges const& edges) {
        SCOPED_TRACE(after);
        const auto view = state.GetCameraView().value_or(RectangleT<RealFixed>{});
        EXPECT_NEAR(view.left.ToFloat(), edges.left, 1e-3);
        EXPECT_NEAR(view.top.ToFloat(), edges.top, 1e-3);
        EXPECT_NEAR(view.right.ToFloat(), edges.right, 1e-3);
        EXPECT_NEAR(view.bottom.ToFloat(), edges.bottom, 1e-3);
    };
    EXPECT_FALSE(state.GetCameraView());
    state.Wheel({400, 100}, 1);
    expect("a zoom, which keeps units (200, 50) under the pointer", {40, 10, 360, 170});
    state.Wheel({400, 100}, -1);
    expect("the way back", {0, 0, 400, 200});
    state.Wheel({0, 0}, 1000);
    expect("the largest zoom", {0, 0, 400.0 / 64, 200.0 / 64});
    state.Wheel({0, 0}, -1000);
    expect("the smallest zoom", {0, 0, 400 * 16, 200 * 16});
    state.Apply(ResetCamera);
    EXPECT_FALSE(state.GetCameraView());
    state.Press({100, 100});
    state.Move({200, 60});
    state.Release({300, 20});
    expect("a drag", {-100, 40, 300, 240});
    state.Move({300, 300});
    expect("a move while nothing is pressed", {-100, 40, 300, 240});
    state.Apply(PanRight);
    state.Apply(PanUp);
    expect("two keys", {-60, 20, 340, 220});
    Repeat(state, PanLeft, 5000);
    expect("many keys", {-16000, 20, -15600, 220});
    // Scenes without that camera do not zoom.
    ViewState fixed = MakeState(false);
    fixed.Wheel({0, 0}, 3);
    fixed.Apply(PanDown);
    EXPECT_FALSE(fixed.GetCameraView());
    EXPECT_EQ(fixed.GetZoom(), 1);
}

TEST(ViewState, RequestsAreTakenOnce) {
    ViewState state = MakeState();
    for (ViewAction action : {Quit, Reload, Screenshot}) {
        state.Apply(action);
    }
    state.Press({100, 100});
    state.Move({104, 97});
    state.Release({103, 100});
    EXPECT_FALSE(state.GetCameraView());
    ViewRequests requests = state.TakeRequests();
    EXPECT_TRUE(requests.quit && requests.reload && requests.screenshot);
    EXPECT_EQ(requests.click, (WindowPoint{103, 100}));
    // A drag is no click, and neither is a release of a press elsewhere.
    state.Press({100, 100});
    state.Move({200, 60});
    state.Release({200, 60});
    state.Release({1, 1});
    requests = state.TakeRequests();
    EXPECT_FALSE(requests.quit || requests.reload || requests.screenshot || requests.click);
}

}  // namespace
}  // namespace zorvan::tool
