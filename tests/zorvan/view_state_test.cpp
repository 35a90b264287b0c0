// How keys and pointer change what the viewer shows. Needs no window.
#include "tools/zorvan/view_state.h"

#include <gtest/gtest.h>

namespace zorvan::tool {
namespace {

// A camera of 400x200 units on a window of 800x400 pixels; 4 seconds at 25 frames per second.
ViewState MakeState(bool camera = true) {
    ViewState state;
    state.SetScene({25, 4, {camera, {RealFixed::FromInt(401), RealFixed::FromInt(201)}}});
    state.SetWindow({800, 400});
    return state;
}

void ExpectView(ViewState const& state, double left, double top, double right, double bottom) {
    const auto view = state.GetCameraView();
    ASSERT_TRUE(view);
    EXPECT_NEAR(view->left.ToFloat(), left, 1e-3);
    EXPECT_NEAR(view->top.ToFloat(), top, 1e-3);
    EXPECT_NEAR(view->right.ToFloat(), right, 1e-3);
    EXPECT_NEAR(view->bottom.ToFloat(), bottom, 1e-3);
}

TEST(ViewState, TimeFollowsSpeedAndPause) {
    ViewState state = MakeState();
    state.Advance(1);
    state.Apply(ViewAction::Faster);
    state.Advance(1);
    EXPECT_DOUBLE_EQ(state.GetSeconds(), 3);
    state.Apply(ViewAction::TogglePause);
    state.Advance(1);
    EXPECT_DOUBLE_EQ(state.GetSeconds(), 3);
    state.Apply(ViewAction::TogglePause);
    for (int i = 0; i < 3; ++i) {
        state.Apply(ViewAction::Slower);
    }
    state.Advance(1);
    EXPECT_DOUBLE_EQ(state.GetSeconds(), 3.25);
    for (int i = 0; i < 99; ++i) {
        state.Apply(ViewAction::Slower);
    }
    EXPECT_GT(state.GetSpeed(), 0);
    state.Apply(ViewAction::NormalSpeed);
    EXPECT_EQ(state.GetSpeed(), 1);
}

TEST(ViewState, SeeksWithinWhatTimeCanHold) {
    ViewState state = MakeState();
    state.Apply(ViewAction::SeekBack);
    EXPECT_EQ(state.GetTime().raw, 0);
    state.SeekToPart(0.5);
    EXPECT_DOUBLE_EQ(state.GetSeconds(), 2);
    state.Apply(ViewAction::SeekFarForward);
    state.Apply(ViewAction::SeekForward);
    EXPECT_DOUBLE_EQ(state.GetSeconds(), 13);
    state.Seek(1e9);
    state.Advance(10);
    EXPECT_EQ(state.GetTime(), RealFixed::FromInt(32767));
    state.Apply(ViewAction::Restart);
    EXPECT_EQ(state.GetTime().raw, 0);
    // A timeline without a length has no tenths.
    state.SetScene({25, 0, {}});
    state.Seek(7);
    state.SeekToPart(0.5);
    EXPECT_DOUBLE_EQ(state.GetSeconds(), 7);
}

TEST(ViewState, StepsWholeFramesAndPauses) {
    ViewState state = MakeState();
    state.Seek(0.11);  // within frame 2
    state.Apply(ViewAction::StepForward);
    EXPECT_TRUE(state.IsPaused());
    EXPECT_NEAR(state.GetSeconds(), 3 / 25.0, 1e-9);
    for (int i = 0; i < 40; ++i) {
        state.Apply(ViewAction::StepForward);
    }
    EXPECT_NEAR(state.GetSeconds(), 43 / 25.0, 1e-9);
    state.Apply(ViewAction::StepBack);
    EXPECT_NEAR(state.GetSeconds(), 42 / 25.0, 1e-9);
    state.Seek(0.01);
    state.Apply(ViewAction::StepBack);
    EXPECT_EQ(state.GetSeconds(), 0);
}

TEST(ViewState, ZoomKeepsWhatIsUnderThePointer) {
    ViewState state = MakeState();
    EXPECT_FALSE(state.GetCameraView());
    state.Wheel({400, 100}, 1);  // units (200, 50)
    ExpectView(state, 200 - 200 / 1.25, 50 - 50 / 1.25, 200 + 200 / 1.25, 50 + 150 / 1.25);
    state.Wheel({400, 100}, -1);
    EXPECT_EQ(state.GetZoom(), 1);
    state.Wheel({0, 0}, 1000);
    ExpectView(state, 0, 0, 400.0 / 64, 200.0 / 64);
    state.Apply(ViewAction::ResetCamera);
    EXPECT_FALSE(state.GetCameraView());
    state.Wheel({0, 0}, -1000);
    ExpectView(state, 0, 0, 400 * 16, 200 * 16);
}

TEST(ViewState, DraggingPansAndShortPressesClick) {
    ViewState state = MakeState();
    state.Move({300, 300});  // nothing is pressed
    state.Press({100, 100});
    state.Move({104, 97});
    state.Release({103, 100});
    EXPECT_FALSE(state.GetCameraView());
    ViewRequests requests = state.TakeRequests();
    ASSERT_TRUE(requests.click);
    EXPECT_EQ(*requests.click, (WindowPoint{103, 100}));
    state.Press({100, 100});
    state.Move({200, 60});
    state.Release({300, 20});
    EXPECT_FALSE(state.TakeRequests().click);
    ExpectView(state, -100, 40, 300, 240);
    state.Release({1, 1});  // of a press elsewhere
    EXPECT_FALSE(state.TakeRequests().click);
    state.Apply(ViewAction::PanRight);
    state.Apply(ViewAction::PanUp);
    ExpectView(state, -60, 20, 340, 220);
    for (int i = 0; i < 5000; ++i) {
        state.Apply(ViewAction::PanLeft);
    }
    ExpectView(state, -16000, 20, -15600, 220);
}

TEST(ViewState, ScenesWithoutCameraDoNotZoom) {
    ViewState state = MakeState(false);
    state.Wheel({0, 0}, 3);
    state.Apply(ViewAction::PanDown);
    EXPECT_FALSE(state.GetCameraView());
    EXPECT_EQ(state.GetZoom(), 1);
}

TEST(ViewState, RequestsAreTakenOnce) {
    ViewState state = MakeState();
    EXPECT_FALSE(state.TakeRequests().quit);
    for (ViewAction action : {ViewAction::Quit, ViewAction::Reload, ViewAction::Screenshot}) {
        state.Apply(action);
    }
    const ViewRequests requests = state.TakeRequests();
    EXPECT_TRUE(requests.quit && requests.reload && requests.screenshot);
    EXPECT_FALSE(state.TakeRequests().reload);
}

}  // namespace
}  // namespace zorvan::tool
