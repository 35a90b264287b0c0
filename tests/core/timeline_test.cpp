#include <gtest/gtest.h>

#include "tests/core/fake_backend.h"
#include "tests/core/save_load.h"

namespace zorvan::test {
namespace {

// Seconds as a host counts them: frames of 1/30 s, cut to 1/65536 s.
RealFixed AtFrame(int frame) {
    return RealFixed::FromRaw(frame * 65536 / 30);
}

RefT<FakeTimeline> MakeTimeline(double length, PlaybackMode::Enum mode) {
    RefT<FakeTimeline> timeline(new FakeTimeline);
    timeline->length.Set(Fix(length));
    timeline->mode.Set(mode);
    return timeline;
}

double FrameOf(Timeline const& timeline) {
    return timeline.GetFrame().raw / 65536.0;
}

TEST(Timeline, FoldsItsTime) {
    FakeDevice device;
    struct Case {
        PlaybackMode::Enum mode;
        double start, rate, time, frame;
    };
    constexpr Case kCases[] = {
        {PlaybackMode::Once, 0, 30, 0.1, 3},     {PlaybackMode::Once, 0, 30, 5, 10},
        {PlaybackMode::Once, 2, 30, 1, 0},       {PlaybackMode::Once, 2, 30, 2.1, 3},
        {PlaybackMode::Loop, 0, 30, 0.5, 5},     {PlaybackMode::Loop, 0, 10, 1, 0},
        {PlaybackMode::Loop, 0, 7.5, 2, 5},      {PlaybackMode::PingPong, 0, 10, 1, 10},
        {PlaybackMode::PingPong, 0, 10, 1.5, 5}, {PlaybackMode::PingPong, 0, 10, 2, 0},
        {PlaybackMode::PingPong, 0, 10, 2.5, 5}, {PlaybackMode::Loop, 0, 0, 100, 0},
        {PlaybackMode::Loop, 0, 30, -5, 0},      {PlaybackMode::Loop, 3, 30, 1, 0},
    };
    for (Case const& c : kCases) {
        RefT<FakeTimeline> timeline = MakeTimeline(10, c.mode);
        timeline->start.Set(Fix(c.start));
        timeline->rate.Set(Fix(c.rate));
        timeline->Update(device, Fix(c.time));
        EXPECT_NEAR(FrameOf(*timeline), c.frame, 0.001) << c.mode << " at " << c.time;
    }
}

TEST(Timeline, ShowsWholeFramesAtCutTimes) {
    FakeDevice device;
    RefT<FakeTimeline> timeline = MakeTimeline(0, PlaybackMode::Loop);
    for (int frame = 0; frame < 30000; frame += 7) {
        timeline->Update(device, AtFrame(frame));
        ASSERT_EQ(timeline->GetFrame(), RealFixed::FromInt(frame));
    }
    timeline->rate.Set(Fix(23.976));
    for (int64_t frame = 0; frame < 10000; frame += 7) {
        timeline->Update(device,
                         RealFixed::FromRaw(static_cast<int32_t>((frame << 32) / timeline->rate.Get().raw)));
        ASSERT_EQ(timeline->GetFrame(), RealFixed::FromInt(static_cast<int>(frame)));
    }
    timeline->rate.Set(Fix(30));
    // Without a length the frame stays at what its type holds.
    timeline->Update(device, Fix(32767));
    EXPECT_EQ(timeline->GetFrame().raw, INT32_MAX);
    // Nor does the longest run at the highest rate leave it.
    constexpr RealFixed kLast = RealFixed::FromRaw(INT32_MAX);
    constexpr RealFixed kFirst = RealFixed::FromRaw(INT32_MIN);
    timeline->rate.Set(kLast);
    timeline->start.Set(kFirst);
    timeline->Update(device, kFirst);
    timeline->SetFrame(kLast);
    timeline->Update(device, kLast);
    EXPECT_EQ(timeline->GetFrame().raw, INT32_MAX);
}

TEST(Timeline, StopsAndGoesOn) {
    FakeDevice device;
    RefT<FakeTimeline> timeline = MakeTimeline(10, PlaybackMode::PingPong);
    Playback& playback = *timeline;  // the same object
    struct Step {
        void (*act)(Timeline&, Playback&);
        int at;
        double frame;
    };
    constexpr Step kSteps[] = {
        {[](Timeline&, Playback&) {}, 12, 8},
        {[](Timeline&, Playback& p) { p.Stop(); }, 100, 8},
        {[](Timeline&, Playback& p) { p.Play(); }, 100, 8},
        {[](Timeline&, Playback&) {}, 102, 6},  // still on its way back
        {[](Timeline& t, Playback&) { t.SetFrame(Fix(3)); }, 102, 3},
        {[](Timeline&, Playback&) {}, 104, 5},
        {[](Timeline& t, Playback&) { t.SetFrame(Fix(99)); }, 104, 10},
        {[](Timeline& t, Playback&) { t.SetFrame(Fix(-1)); }, 104, 0},
    };
    for (Step const& step : kSteps) {
        step.act(*timeline, playback);
        timeline->Update(device, AtFrame(step.at));
        EXPECT_NEAR(FrameOf(*timeline), step.frame, 0.001) << &step - kSteps;
    }
    timeline->Stop();
    timeline->UpdateSynchronous(device, AtFrame(7));
    EXPECT_EQ(playback.GetFrame(), Fix(7));
    EXPECT_FALSE(timeline->IsPlaying());
}

TEST(Timeline, GivesNestedOnesItsFoldedTime) {
    FakeDevice device;
    RefT<FakeTimeline> outer = MakeTimeline(30, PlaybackMode::Loop);
    RefT<FakeTimeline> inner = MakeTimeline(0, PlaybackMode::Loop);
    outer->Attach(inner.Get());
    inner->start.Set(Fix(0.5));
    inner->rate.Set(Fix(10));
    outer->Update(device, Fix(1.75));
    EXPECT_NEAR(FrameOf(*inner), 2.5, 0.001);
    outer->Update(device, Fix(2.25));
    outer->Stop();
    outer->Update(device, Fix(2.75));
    EXPECT_EQ(FrameOf(*inner), 0);
}

TEST(Timeline, UpdatesItsCameraOnItsOwnPlace) {
    FakeDevice device;
    RefT<FakeTimeline> timeline = MakeTimeline(0, PlaybackMode::Loop);
    RefT<FakeTimeline> other = MakeTimeline(0, PlaybackMode::Loop);
    RefT<FakeCamera> camera(new FakeCamera);
    timeline->SetCamera(camera.Get());
    timeline->position.Set({Fix(7), {}, {}});
    timeline->Update(device, RealFixed{});
    EXPECT_EQ(camera->GetWorldMatrix()[12], Fix(7));
    RefT<Node> copy(timeline->CloneDeep());
    Camera* copied = static_cast<FakeTimeline*>(copy.Get())->GetCamera();
    ASSERT_TRUE(copied != nullptr && copied != camera.Get());
    EXPECT_EQ(copied->GetParent(), copy.Get());
    EXPECT_FALSE(camera->Attach(timeline.Get()));  // the camera stands on the timeline
    other->SetCamera(camera.Get());
    timeline->SetCamera(nullptr);
    EXPECT_EQ(camera->GetParent(), other.Get());
    other->SetCamera(nullptr);
    EXPECT_EQ(camera->GetParent(), nullptr);
    EXPECT_EQ(camera->references, 1);
    camera->Attach(timeline.Get());
    timeline->SetCamera(camera.Get());  // refused: an ancestor
    EXPECT_EQ(timeline->GetCamera(), nullptr);
}

class TrackTest : public testing::Test {
  protected:
    // A timeline of 10 frames with a sprite "s" and the given tracks.
    RefT<FakeTimeline> Load(std::string const& tracks) {
        JsonReader reader(backend.registry);
        EXPECT_TRUE(reader.Parse(
            R"({"length": 10, "camera": {"name": "c"}, "children": [{"class": "Sprite", "name": "s", "width": 4, "height": 4},)"
            R"({"class": "Timeline", "name": "t", "camera": {"name": "d"}}], "tracks": [)" +
            tracks + "]}"));
        RefT<Node> node(LoadNode(reader, "Timeline"));
        EXPECT_TRUE(reader.Finish()) << reader.Error();
        return RefT<FakeTimeline>(static_cast<FakeTimeline*>(node.Get()));
    }

    FakeBackend backend;
    FakeDevice device;
};

TEST_F(TrackTest, TimelinesSelectInsideTheirCamera) {
    RefT<FakeTimeline> timeline = Load("");
    timeline->depth.Set(true);
    timeline->Detach(FindNode(timeline.Get(), "t"));
    timeline->Update(device, RealFixed{});
    List<Node*> selected;
    device.SetSelectionMode({Fix(1), Fix(1)}, &selected);
    timeline->Render(device);
    ASSERT_EQ(selected.Count(), 1u);
    EXPECT_EQ(selected[0], FindNode(timeline.Get(), "s"));
    EXPECT_EQ(device.log, (std::vector<std::string>{"camera", "depth 1", "pop depth", "pop camera"}));
}

TEST_F(TrackTest, InterpolatesBetweenKeys) {
    struct Case {
        char const* interpolation;
        int frame;
        int32_t value;  // from 0 at frame 2 to 0x10000 at frame 6
    };
    constexpr Case kCases[] = {{"step", 0, 0},         {"step", 5, 0},        {"step", 6, 0x10000},
                               {"linear", 2, 0},       {"linear", 3, 0x4000}, {"linear", 5, 0xC000},
                               {"linear", 7, 0x10000}, {"smooth", 3, 0x2800}, {"smooth", 5, 0xD800}};
    for (Case const& c : kCases) {
        RefT<FakeTimeline> timeline =
            Load(std::string(R"({"node": "s", "property": "opacity", "interpolation": ")") + c.interpolation +
                 R"(", "keys": [{"frame": 2, "value": 0}, {"frame": 6, "value": 1}]})");
        timeline->Update(device, AtFrame(c.frame));
        EXPECT_EQ(FindSprite(timeline.Get(), "s")->opacity.Get().raw, c.value)
            << c.interpolation << " at " << c.frame;
    }
}

TEST_F(TrackTest, ReachesEveryKindOfProperty) {
    RefT<FakeTimeline> timeline = Load(R"(
        {"node": "s", "property": "position", "keys": [{"frame": 0, "value": [0, -30000, 8]}, {"frame": 10, "value": [10, 30000, 8]}]},
        {"node": "s", "property": "transferMode", "keys": [{"frame": 0, "value": "none"}, {"frame": 5, "value": 36}]},
        {"node": "s", "property": "depth", "keys": [{"frame": 0, "value": false}, {"frame": 5, "value": true}]},
        {"node": "s", "property": "width", "keys": [{"frame": 0, "value": 4}, {"frame": 5, "value": 9}]},
        {"node": "s", "property": "color", "keys": [{"frame": 0, "value": [0, 0, 0, 0]}, {"frame": 10, "value": [1, 0.5, 0, 1]}]},
        {"node": "c", "property": "fieldOfView", "keys": [{"frame": 0, "value": 20}, {"frame": 10, "value": 40}]},
        {"node": "d", "property": "viewRectangle", "keys": [{"frame": 0, "value": [0, 0, 1, 2]}]},
        {"node": "t", "property": "rate", "keys": [{"frame": 0, "value": 60}]},
        {"property": "scale", "keys": [{"frame": 0, "value": [3, 3, 3]}]})");
    timeline->Update(device, AtFrame(5));
    FakeSprite* sprite = FindSprite(timeline.Get(), "s");
    auto* nested = static_cast<FakeTimeline*>(FindNode(timeline.Get(), "t"));
    EXPECT_EQ(sprite->position.Get(), (Vector3T<RealFixed>{Fix(5), {}, Fix(8)}));
    EXPECT_EQ(sprite->transferMode.Get(), 36u);
    EXPECT_TRUE(sprite->depth.Get());
    EXPECT_EQ(sprite->width.Get(), 9);
    EXPECT_EQ(sprite->color.Get(), (ColorT<RealFixed>{Fix(0.5), Fix(0.25), {}, Fix(0.5)}));
    EXPECT_EQ(timeline->GetCamera()->fieldOfView.Get(), Fix(30));
    EXPECT_EQ(nested->GetCamera()->viewRectangle.Get().bottom, Fix(2));
    EXPECT_EQ(nested->rate.Get(), Fix(60));
    EXPECT_EQ(sprite->GetWorldMatrix()[0], Fix(3));
    timeline->Update(device, AtFrame(10));  // the loop is at its start again
    EXPECT_EQ(sprite->transferMode.Get(), kNoTransferMode);
}

TEST_F(TrackTest, SetsNothingThatStands) {
    RefT<FakeTimeline> timeline = Load(R"(
        {"node": "s", "property": "opacity", "keys": [{"frame": 0, "value": 1}, {"frame": 5, "value": 1}, {"frame": 8, "value": 0}]})");
    constexpr int kTransforms[][2] = {{0, 1}, {1, 1}, {4, 1}, {6, 2}, {6, 2}, {8, 3}, {9, 3}};
    for (auto const& [frame, transforms] : kTransforms) {
        timeline->Update(device, AtFrame(frame));
        EXPECT_EQ(FindSprite(timeline.Get(), "s")->transforms, transforms) << frame;
    }
}

TEST_F(TrackTest, FollowsNodesInAndOutOfTheTree) {
    RefT<FakeTimeline> timeline = Load(R"(
        {"node": "s", "property": "opacity", "keys": [{"frame": 0, "value": 0}, {"frame": 10, "value": 1}]})");
    RefT<FakeSprite> sprite(FindSprite(timeline.Get(), "s"));
    RefT<Node> copy(timeline->CloneDeep());
    timeline->Update(device, AtFrame(1));
    timeline->Detach(sprite.Get());
    timeline->Update(device, AtFrame(5));
    EXPECT_LT(sprite->opacity.Get(), Fix(0.2));
    // New nodes of the name, below another one and below the timeline itself.
    RefT<FakeSprite> other = Named("s");
    FindNode(timeline.Get(), "t")->Attach(other.Get());
    timeline->Update(device, AtFrame(5));
    EXPECT_EQ(other->opacity.Get(), Fix(0.5));
    FindNode(timeline.Get(), "t")->Detach(other.Get());
    RefT<FakeSprite> added = Named("s");
    timeline->AttachAndUpdate(added.Get());
    timeline->Update(device, AtFrame(5));
    EXPECT_EQ(added->opacity.Get(), Fix(0.5));
    // The copy moves its own sprite.
    copy->Update(device, AtFrame(5));
    EXPECT_EQ(FindSprite(copy.Get(), "s")->opacity.Get(), Fix(0.5));
}

// A track that still moved what left would write to it after its end.
TEST_F(TrackTest, LetsGoOfWhatLeaves) {
    struct Leaver final : detail::callable<void(RealFixed const&)> {
        explicit Leaver(FakeTimeline& from) : timeline(from) {}
        void operator()(RealFixed const&) override { timeline.Detach(FindNode(&timeline, "t")); }
        FakeTimeline& timeline;
    };
    RefT<FakeTimeline> timeline = Load(R"(
        {"node": "s", "property": "opacity", "keys": [{"frame": 0, "value": 0}, {"frame": 10, "value": 1}]},
        {"node": "t", "property": "rate", "keys": [{"frame": 0, "value": 10}, {"frame": 10, "value": 20}]},
        {"node": "c", "property": "opacity", "keys": [{"frame": 0, "value": 0}, {"frame": 10, "value": 1}]})");
    timeline->Update(device, AtFrame(1));
    // Another node takes the camera over; the view stays.
    RefT<FakeSprite> other = Named("other", {timeline->GetCamera()});
    // What listens to the first track takes the second one's node away.
    RefT<FakeTimeline> nested(static_cast<FakeTimeline*>(FindNode(timeline.Get(), "t")));
    FindSprite(timeline.Get(), "s")->opacity.changed.Add(new Leaver(*timeline));
    timeline->Update(device, AtFrame(5));
    EXPECT_LT(nested->rate.Get(), Fix(12));
    EXPECT_EQ(nested->references, 1);
    EXPECT_LT(timeline->GetCamera()->opacity.Get(), Fix(0.2));
    EXPECT_EQ(timeline->GetCamera()->GetParent(), other.Get());
    // Tracks without a node are not saved: the scene could not be loaded.
    Scene scene;
    scene.root = RefT<Timeline>(timeline.Get());
    ExpectSavesWhatItLoads(scene, backend.registry);
    EXPECT_EQ(scene.root->GetTracks().size(), 1u);
}

TEST_F(TrackTest, FollowsCamerasOfNestedTimelines) {
    RefT<FakeTimeline> timeline = Load(R"(
        {"node": "d", "property": "opacity", "keys": [{"frame": 0, "value": 0}, {"frame": 10, "value": 1}]})");
    timeline->Update(device, AtFrame(1));
    RefT<FakeCamera> other(new FakeCamera);
    other->name = "d";
    static_cast<FakeTimeline*>(FindNode(timeline.Get(), "t"))->SetCamera(other.Get());  // the old one goes
    timeline->Update(device, AtFrame(5));
    EXPECT_EQ(other->opacity.Get(), Fix(0.5));
}

}  // namespace
}  // namespace zorvan::test
