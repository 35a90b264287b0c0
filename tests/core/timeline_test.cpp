#include <gtest/gtest.h>

#include <functional>

#include "core/json_writer.h"
#include "tests/core/fake_backend.h"
#include "tests/core/save_load.h"

namespace zorvan::test {
namespace {

// Seconds as a host counts them: frames at a rate, cut to 1/65536 s.
RealFixed AtFrame(int64_t frame, RealFixed rate = Fix(30)) {
    return RealFixed::FromRaw(static_cast<int32_t>((frame << 32) / rate.raw));
}

RefT<FakeTimeline> MakeTimeline(double length, PlaybackMode::Enum mode) {
    RefT<FakeTimeline> timeline(new FakeTimeline);
    timeline->length.Set(Fix(length));
    timeline->mode.Set(mode);
    return timeline;
}

double FrameOf(Playback const& playback) {
    return playback.GetFrame().raw / 65536.0;
}

TEST(Timeline, FoldsItsTime) {
    FakeDevice device;
    constexpr struct {
        PlaybackMode::Enum mode;
        double start, rate, time, frame;
    } kCases[] = {
        {PlaybackMode::Once, 0, 30, 0.1, 3},     {PlaybackMode::Once, 0, 30, 5, 10},
        {PlaybackMode::Once, 2, 30, 1, 0},       {PlaybackMode::Once, 2, 30, 2.1, 3},
        {PlaybackMode::Loop, 0, 30, 0.5, 5},     {PlaybackMode::Loop, 0, 10, 1, 0},
        {PlaybackMode::Loop, 0, 7.5, 2, 5},      {PlaybackMode::PingPong, 0, 10, 1, 10},
        {PlaybackMode::PingPong, 0, 10, 1.5, 5}, {PlaybackMode::PingPong, 0, 10, 2, 0},
        {PlaybackMode::PingPong, 0, 10, 2.5, 5}, {PlaybackMode::Loop, 0, 0, 100, 0},
        {PlaybackMode::Loop, 3, 30, 2.9, 0},     {PlaybackMode::PingPong, 3, 30, 2.9, 0},
    };
    for (auto const& row : kCases) {
        const RefT<FakeTimeline> timeline = MakeTimeline(10, row.mode);
        timeline->start.Set(Fix(row.start));
        timeline->rate.Set(Fix(row.rate));
        timeline->Update(device, Fix(row.time));
        EXPECT_NEAR(FrameOf(*timeline), row.frame, 0.001) << row.mode << " at " << row.time;
    }
}

TEST(Timeline, ShowsWholeFramesAtCutTimesAndStaysInItsType) {
    FakeDevice device;
    const RefT<FakeTimeline> timeline = MakeTimeline(0, PlaybackMode::Loop);
    for (RealFixed rate : {Fix(30), Fix(23.976)}) {
        timeline->rate.Set(rate);
        for (int frame = 0; frame < 30000; frame += 7) {
            timeline->Update(device, AtFrame(frame, rate));
            ASSERT_EQ(timeline->GetFrame(), RealFixed::FromInt(frame));
        }
    }
    constexpr RealFixed kLast = RealFixed::FromRaw(INT32_MAX), kFirst = RealFixed::FromRaw(INT32_MIN);
    timeline->SetFrame(Fix(20000));  // no length limits it
    EXPECT_EQ(timeline->GetFrame(), Fix(20000));
    timeline->rate.Set(kLast);
    timeline->start.Set(kFirst);
    timeline->Update(device, kFirst);
    timeline->SetFrame(kLast);
    timeline->Update(device, kLast);
    EXPECT_EQ(timeline->GetFrame(), kLast);
}

TEST(Timeline, StopsAndGoesOn) {
    FakeDevice device;
    const RefT<FakeTimeline> timeline = MakeTimeline(10, PlaybackMode::PingPong);
    Playback& playback = *timeline;  // the same object
    const struct {
        std::function<void()> act;
        int at;
        double frame;
    } steps[] = {
        {[] {}, 12, 8},
        {[&] { playback.Stop(); }, 100, 8},
        {[&] { playback.Play(); }, 100, 8},
        {[] {}, 102, 6},  // still on its way back
        {[&] { playback.SetFrame(Fix(3)); }, 102, 3},
        {[] {}, 104, 5},
        {[] {}, 90, 9},  // a parent's loop starts again: 9 frames before its start
        {[&] { playback.SetFrame(Fix(99)); }, 90, 10},
        {[&] { playback.SetFrame(Fix(-1)); }, 90, 0},
        {[&] { playback.Stop(), timeline->UpdateSynchronous(device, AtFrame(7)); }, 9, 7},
        {[&] { playback.Play(); }, 10, 8},
        {[&] { timeline->UpdateSynchronous(device, AtFrame(4)), playback.Play(); }, 6, 6},
    };
    for (auto const& step : steps) {
        step.act();
        timeline->Update(device, AtFrame(step.at));
        EXPECT_NEAR(FrameOf(playback), step.frame, 0.001) << &step - steps;
    }
}

TEST(Timeline, GivesNestedOnesItsFoldedTime) {
    FakeDevice device;
    const RefT<FakeTimeline> outer = MakeTimeline(30, PlaybackMode::Loop),
                             inner = MakeTimeline(0, PlaybackMode::Loop);
    outer->Attach(inner.Get());
    inner->start.Set(Fix(0.5));
    inner->rate.Set(Fix(10));
    outer->Update(device, Fix(1.75));
    EXPECT_NEAR(FrameOf(*inner), 2.5, 0.001);
    outer->Update(device, Fix(2.25));
    EXPECT_EQ(FrameOf(*inner), 0);
}

TEST(Timeline, UpdatesItsCameraOnItsOwnPlace) {
    FakeDevice device;
    RefT<FakeTimeline> timeline = MakeTimeline(0, PlaybackMode::Loop),
                       other = MakeTimeline(0, PlaybackMode::Loop);
    const RefT<FakeCamera> camera(new FakeCamera);
    timeline->SetCamera(camera.Get());
    for (double x : {7, 9}) {
        timeline->position.Set({Fix(x), {}, {}});
        timeline->Update(device, {});
        EXPECT_EQ(camera->GetWorldMatrix()[12], Fix(x));
    }
    const RefT<Node> copy(timeline->CloneDeep());
    Camera* copied = static_cast<FakeTimeline*>(copy.Get())->GetCamera();
    ASSERT_TRUE(copied != nullptr && copied != camera.Get());
    EXPECT_EQ(copied->GetParent(), copy.Get());
    EXPECT_FALSE(camera->Attach(timeline.Get()));  // the camera stands on the timeline
    other->Attach(camera.Get());
    other->SetCamera(camera.Get());
    EXPECT_TRUE(other->GetChildren().IsEmpty());
    timeline->SetCamera(nullptr);
    EXPECT_EQ(camera->GetParent(), other.Get());
    other = {};
    EXPECT_EQ(camera->GetParent(), nullptr);
    EXPECT_EQ(camera->references, 1);
    camera->Attach(timeline.Get());
    timeline->SetCamera(camera.Get());  // refused: an ancestor
    EXPECT_EQ(timeline->GetCamera(), nullptr);
}

class TrackTest : public testing::Test {
  protected:
    // A timeline of 10 frames with a sprite "s", a timeline "t", their cameras "c" and "d", and these tracks.
    RefT<FakeTimeline> Load(std::string const& tracks) {
        EXPECT_TRUE(
            scene.Parse(R"({"version": 1, "root": {"length": 10, "camera": {"name": "c"}, "children": [
            {"class": "Sprite", "name": "s", "width": 4, "height": 4},
            {"class": "Timeline", "name": "t", "camera": {"name": "d"}}], "tracks": [)" +
                            tracks + "]}}",
                        backend.registry))
            << scene.Error();
        return static_cast<FakeTimeline*>(scene.root.Get());
    }
    // One that goes from 0 to 1 in these ten frames.
    static std::string Opacity(char const* node) {
        return std::string(R"({"node": ")") + node +
               R"(", "property": "opacity", "keys": [{"frame": 0, "value": 0}, {"frame": 10, "value": 1}]})";
    }

    FakeBackend backend;
    FakeDevice device;
    Scene scene;
};

TEST_F(TrackTest, TimelinesSelectInsideTheirCamera) {
    const RefT<FakeTimeline> timeline = Load("");
    timeline->depth.Set(true);
    timeline->Detach(Find<Node>(*timeline, "t"));
    timeline->Update(device, {});
    List<Node*> selected;
    device.SetSelectionMode({Fix(1), Fix(1)}, &selected);
    timeline->Render(device);
    ASSERT_EQ(selected.Count(), 1u);
    EXPECT_EQ(selected[0], Find(*timeline, "s"));
    EXPECT_EQ(device.log, "camera; depth 1; set 1; set 0; pop depth; pop camera; ");
}

TEST_F(TrackTest, InterpolatesBetweenKeys) {
    constexpr struct {
        char const *node, *property, *interpolation;
        char const *first, *second;  // at frames 2 and 6
        int frame;
        char const* expected;
    } kCases[] = {
        {"s", "opacity", "step", "0", "1", 0, "0"},
        {"s", "opacity", "step", "0", "1", 5, "0"},
        {"s", "opacity", "step", "0", "1", 6, "1"},
        {"s", "opacity", "linear", "0", "1", 2, "0"},
        {"s", "opacity", "linear", "0", "1", 5, "0.75"},
        {"s", "opacity", "linear", "0", "1", 7, "1"},
        {"s", "opacity", "smooth", "0", "1", 3, "0.15625"},
        {"s", "opacity", "smooth", "0", "1", 5, "0.84375"},
        {"s", "position", "linear", "[0, -30000, 8]", "[10, 30000, 8]", 4, "[5, 0, 8]"},
        {"s", "color", "linear", "[0, 0, 0, 0]", "[1, 0.5, 0, 1]", 4, "[0.5, 0.25, 0, 0.5]"},
        {"s", "width", "linear", "4", "99", 5, "4"},
        {"s", "transferMode", "linear", "\"none\"", "36", 5, "\"none\""},
        {"t", "rate", "linear", "60", "60", 4, "60"},
        {"", "depth", "linear", "false", "true", 6, "true"},
    };
    for (auto const& row : kCases) {
        const auto quoted = [](std::string const& text) { return '"' + text + '"'; };
        const RefT<FakeTimeline> timeline =
            Load("{\"node\": " + quoted(row.node) + ", \"property\": " + quoted(row.property) +
                 ", \"interpolation\": " + quoted(row.interpolation) +
                 ", \"keys\": [{\"frame\": 2, \"value\": " + row.first +
                 "}, {\"frame\": 6, \"value\": " + row.second + "}]}");
        timeline->Update(device, AtFrame(row.frame));
        JsonWriter writer;
        Find<Node>(*timeline, row.node)->GetProperties().Find(row.property)->Save(writer, "v");
        EXPECT_EQ(writer.Text(), std::string("{\n  \"v\": ") + row.expected + "\n}\n") << row.frame;
    }
}

TEST_F(TrackTest, SetsNothingThatStands) {
    const RefT<FakeTimeline> timeline = Load(R"({"node": "s", "property": "opacity", "keys": [
        {"frame": 0, "value": 1}, {"frame": 5, "value": 1}, {"frame": 8, "value": 0}]})");
    constexpr int kTransforms[][2] = {{0, 1}, {1, 1}, {4, 1}, {5, 2}, {6, 3},
                                      {6, 3}, {5, 4}, {6, 5}, {8, 6}, {9, 6}};
    for (auto const& [frame, transforms] : kTransforms) {
        timeline->Update(device, AtFrame(frame));
        EXPECT_EQ(Find(*timeline, "s")->transforms, transforms) << frame;
    }
}

TEST_F(TrackTest, FollowsNodesInAndOutOfTheTree) {
    const RefT<FakeTimeline> timeline = Load(Opacity("s") + "," + Opacity("d"));
    auto* nested = Find<FakeTimeline>(*timeline, "t");
    const RefT<Node> copy(timeline->CloneDeep());
    const RefT<FakeSprite> sprite(Find(*timeline, "s")), other = Named("s"), added = Named("s");
    timeline->Update(device, AtFrame(1));
    timeline->Detach(sprite.Get());
    const RefT<FakeCamera> camera(new FakeCamera);
    camera->name = "d";
    nested->SetCamera(camera.Get());  // the old one goes
    timeline->Update(device, AtFrame(5));
    EXPECT_LT(sprite->opacity.Get(), Fix(0.2));
    EXPECT_EQ(camera->opacity.Get(), Fix(0.5));
    // New nodes of the name, below another one and below the timeline itself.
    nested->Attach(other.Get());
    timeline->Update(device, AtFrame(5));
    EXPECT_EQ(other->opacity.Get(), Fix(0.5));
    nested->Detach(other.Get());
    timeline->AttachAndUpdate(added.Get());
    timeline->Update(device, AtFrame(5));
    EXPECT_EQ(added->opacity.Get(), Fix(0.5));
    // The copy moves its own sprite.
    copy->Update(device, AtFrame(5));
    EXPECT_EQ(Find(*copy, "s")->opacity.Get(), Fix(0.5));
}

// A track that still moved what left would write to it after its end.
TEST_F(TrackTest, LetsGoOfWhatLeaves) {
    struct Leaver final : detail::callable<void(RealFixed const&)> {
        explicit Leaver(FakeTimeline& from) : timeline(from) {}
        void operator()(RealFixed const&) override { timeline.Detach(Find<Node>(timeline, "t")); }
        FakeTimeline& timeline;
    };
    const RefT<FakeTimeline> timeline = Load(Opacity("s") + "," + Opacity("t") + "," + Opacity("c"));
    timeline->Update(device, AtFrame(1));
    // Another node takes the camera over; the view stays.
    const RefT<FakeSprite> other = Named("other", {timeline->GetCamera()});
    // What listens to the first track takes the second one's node away.
    const RefT<FakeTimeline> nested(Find<FakeTimeline>(*timeline, "t"));
    Find(*timeline, "s")->opacity.changed.Add(new Leaver(*timeline));
    timeline->Update(device, AtFrame(5));
    EXPECT_LT(nested->opacity.Get(), Fix(0.2));
    EXPECT_LT(timeline->GetCamera()->opacity.Get(), Fix(0.2));
    EXPECT_EQ(timeline->GetCamera()->GetParent(), other.Get());
    // Tracks without a node are not saved: the scene could not be loaded.
    ExpectSavesWhatItLoads(scene, backend.registry);
    EXPECT_EQ(scene.root->GetTracks().size(), 1u);
}

}  // namespace
}  // namespace zorvan::test
