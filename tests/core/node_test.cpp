#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "core/light.h"
#include "core/trig.h"
#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

std::string Names(List<Node*> const& nodes) {
    std::string names;
    for (Node* node : nodes) {
        names += node->name;
    }
    return names;
}

TEST(Node, AttachesMovesAndDetaches) {
    const RefT<FakeSprite> a = Named("a"), b = Named("b"), c = Named("c");
    RefT<FakeSprite> root = Named("r", {a.Get(), c.Get(), b.Get()});
    // A child that moves inside its parent keeps its one reference.
    const struct {
        std::function<bool(Node& r)> move;
        char const* order;
    } moves[] = {
        {[&](Node& r) { return r.Attach(a.Get()); }, "cba"},
        {[&](Node& r) { return r.AttachBefore(a.Get(), c.Get()); }, "acb"},
        {[&](Node& r) { return r.AttachAfter(a.Get(), b.Get()); }, "cba"},
        {[&](Node& r) { return r.AttachAfter(c.Get(), a.Get()); }, "bac"},
        {[&](Node& r) { return !r.Attach(&r) && !r.Attach(nullptr) && !c->Attach(&r); }, "bac"},
        {[&](Node& r) { return !r.AttachAfter(a.Get(), a.Get()) && !c->Detach(a.Get()); }, "bac"},
        {[&](Node& r) { return a->Attach(c.Get()) && !r.AttachBefore(a.Get(), c.Get()); }, "ba"},
    };
    for (auto const& row : moves) {
        EXPECT_TRUE(row.move(*root));
        EXPECT_EQ(Names(root->GetChildren()), row.order);
        EXPECT_EQ(a->references, 2);
        EXPECT_EQ(c->references, 2);
    }
    EXPECT_EQ(c->GetParent(), a.Get());
    EXPECT_TRUE(a->Detach(c.Get()));
    EXPECT_EQ(c->GetParent(), nullptr);
    EXPECT_EQ(c->references, 1);
    root = {};
    EXPECT_EQ(a->GetParent(), nullptr);
    EXPECT_EQ(a->references, 1);
}

TEST(Node, ClonesDeep) {
    const RefT<FakeSprite> child = Named("child"), root = Named("root", {child.Get()});
    root->AddMask(new Mask);
    child->opacity.Set(Fix(0.25));
    root->SetUserData(child.Get());
    EXPECT_TRUE(RefT<Node>(root->Clone())->GetChildren().IsEmpty());
    const RefT<Node> deep(root->CloneDeep());
    FakeSprite* copy = Find(*deep, "child");
    ASSERT_TRUE(copy != nullptr && copy != child.Get());
    EXPECT_EQ(copy->opacity.Get(), Fix(0.25));
    EXPECT_EQ(deep->GetUserData(), child.Get());
    EXPECT_EQ(root->GetMasks()[0]->references, 2);
}

struct FakeLight final : Light {
    void Setup(GraphicsDevice&) override {}
};

TEST(Light, IsVisitedAsOne) {
    struct : Visitor {
        void VisitNode(Node&) override {}
        void VisitTransformNode(TransformNode&) override {}
        void VisitCamera(Camera&) override {}
        void VisitLight(Light&) override { log += "light "; }
        void VisitTimeline(Timeline&) override {}
        void VisitChildren(List<Node*>&) override { log += "children"; }
        std::string log;
    } visitor;
    FakeLight light;
    light.Visit(visitor);
    EXPECT_EQ(visitor.log, "light children");
    EXPECT_TRUE(light.IsKindOf(MakeClassId(u"Light")) && light.IsKindOf(MakeClassId(u"TransformNode")));
}

TEST(TransformNode, PlacesItsChildren) {
    FakeDevice device;
    const RefT<FakeSprite> child = Named("child"), root = Named("root", {child.Get()});
    root->position.Set({Fix(10), Fix(20), Fix(30)});
    root->scale.Set({Fix(2), Fix(3), Fix(1)});
    root->rotation.Set({{}, {}, Fix(90)});
    child->position.Set({Fix(1), Fix(2), Fix(3)});
    child->origin.Set({Fix(5), {}, {}});
    child->rotation.Set({Fix(90), Fix(180), Fix(90)});  // about x, y, z: (x, y, z) becomes (z, -x, -y)
    root->Update(device, {});
    // The origin of the child, turned to (0, 5, 0), lies at (1, 7, 3), scaled at (2, 21, 3), turned at
    // (-21, 2, 3).
    constexpr int kWorld[16] = {3, 0, 0, 0, 0, 0, -1, 0, 0, 2, 0, 0, -11, 22, 33, 1};
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(child->GetWorldMatrix()[i], RealFixed::FromInt(kWorld[i])) << i;
    }
}

TEST(TransformNode, RecomputesOnlyWhatChanged) {
    FakeDevice device;
    const RefT<FakeSprite> leaf = Named("leaf"), middle = Named("middle", {leaf.Get()}),
                           other = Named("other"), root = Named("root", {middle.Get(), other.Get()});
    const struct {
        std::function<void()> change;
        std::vector<int> transforms;  // so far
        double opacity;               // the leaf's
    } steps[] = {
        {[] {}, {1, 1, 1, 1}, 1},
        {[] {}, {1, 1, 1, 1}, 1},
        {[&] { middle->opacity.Set(Fix(0.5)); }, {1, 2, 2, 1}, 0.5},
        {[&] { leaf->opacity.Set(Fix(0.5)); }, {1, 2, 3, 1}, 0.25},
        {[&] { other->Attach(leaf.Get()); }, {1, 2, 4, 1}, 0.5},
        {[&] { root->Update(device, {}, {}, true); }, {2, 3, 5, 2}, 0.5},
    };
    for (auto const& step : steps) {
        step.change();
        root->Update(device, {});
        EXPECT_EQ((std::vector{root->transforms, middle->transforms, leaf->transforms, other->transforms}),
                  step.transforms);
        EXPECT_EQ(leaf->GetEffectiveOpacity(), Fix(step.opacity));
    }
}

TEST(TransformNode, ChainsEffectKeys) {
    FakeDevice device;
    const RefT<FakeSprite> leaf = Named("leaf"), plain = Named("plain", {leaf.Get()}),
                           root = Named("root", {plain.Get()});
    root->transferMode.Set(5);
    leaf->transferMode.Set(36);
    root->Update(device, {});
    const uint32_t first = (0x811C9DC5u * 16777619u) ^ 5u;
    EXPECT_EQ(plain->keys, std::vector<uint32_t>{first});
    EXPECT_EQ(leaf->keys, (std::vector<uint32_t>{first, (first * 16777619u) ^ 36u}));
    // A pop without a push changes nothing, and a mode that changes between them is taken back.
    root->PopEffect(device);
    root->PushEffect(device);
    EXPECT_EQ(device.effectKeys.Count(), 1u);
    root->transferMode.Set(kNoTransferMode);
    root->PopEffect(device);
    EXPECT_TRUE(device.effectKeys.IsEmpty() && device.transferModes.IsEmpty());
}

TEST(TransformNode, DrawsParentsFirstAndSelectsInThatOrder) {
    FakeDevice device;
    const RefT<FakeSprite> child = Named("child"), root = Named("root", {child.Get()});
    for (FakeSprite* sprite : {root.Get(), child.Get()}) {
        sprite->width.Set(10);
        sprite->height.Set(10);
    }
    child->position.Set({Fix(15), Fix(5), {}});
    child->scale.Set({Fix(-1), Fix(1), Fix(1)});  // from 5 to 15, seen from behind
    root->Update(device, {});
    root->Render(device);
    EXPECT_EQ(device.log, "draw root; draw child; ");
    const struct {
        double x, y;
        char const* names;
    } points[] = {{1, 1, "root"}, {7, 7, "rootchild"}, {12, 12, "child"}, {1, 12, ""}, {20000, -20000, ""}};
    for (auto const& point : points) {
        List<Node*> selected;
        device.SetSelectionMode({Fix(point.x), Fix(point.y)}, &selected);
        root->Render(device);
        EXPECT_EQ(Names(selected), point.names) << point.x << ", " << point.y;
    }
    device.SetRenderMode();
    EXPECT_FALSE(device.IsSelecting());
}

TEST(Camera, SetsUpLikeAPhotographer) {
    const RefT<FakeCamera> camera(new FakeCamera);
    camera->horizontalFieldOfView.Set(Fix(40));
    camera->SetupMillimeter(Fix(50), Fix(60), Fix(800), Fix(480), true);
    // Half the film's height of 36 mm over 50 mm.
    EXPECT_NEAR(camera->fieldOfView.Get().raw / 65536.0, 2 * std::atan(18.0 / 50.0) * 180 / 3.14159265, 0.15);
    EXPECT_EQ(camera->horizontalFieldOfView.Get().raw, 0);
    EXPECT_EQ(camera->viewRectangle.Get(), (RectangleT<RealFixed>{{}, {}, Fix(800), Fix(480)}));
    EXPECT_EQ(camera->nearPlane.Get(), Fix(1));
    EXPECT_EQ(camera->farPlane.Get(), Fix(10000));
    EXPECT_EQ(camera->rotation.Get(), (Vector3T<RealFixed>{Fix(180), {}, {}}));
    // The view's height fills the angle at the plane z = 0, with the projection's own tangent.
    const Vector3T<RealFixed> place = camera->position.Get();
    const RealFixed tangent = TanFixed(camera->fieldOfView.Get() * Fix(0.5) * kDegreesToRadians);
    EXPECT_NEAR((-place.z * tangent).raw / 65536.0, 240, 0.05);
    EXPECT_EQ(place, (Vector3T<RealFixed>{Fix(400), Fix(240), place.z}));
    camera->SetupMillimeter(Fix(35), Fix(60), Fix(10), {}, false);
    EXPECT_EQ(camera->position.Get(), place);
    EXPECT_EQ(camera->fieldOfView.Get().raw / 65536, 0);
}

TEST(GraphicsDevice, StacksItsStateAndResetsIt) {
    FakeDevice device;
    EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {7, 0}), 0u);
    Matrix4T<RealFixed> move = Matrix4T<RealFixed>::Identity;
    move[12] = Fix(3);
    for (double opacity : {0.5, 0.25}) {
        device.MergeOpacity(Fix(0.5));
        EXPECT_EQ(device.GetOpacity(), Fix(opacity));
        device.MergeTransformMatrix(move);
        EXPECT_EQ(device.GetTransformMatrix()[12], Fix(1.5 / opacity));
    }
    device.PopOpacity();
    EXPECT_EQ(device.GetOpacity(), Fix(0.5));
    device.Reset({10, 20, 40, 60});
    EXPECT_EQ(device.GetViewport(), (RectangleT<int>{10, 20, 40, 60}));
    EXPECT_TRUE(IsIdentity(device.GetTransformMatrix()));
    EXPECT_EQ(device.GetOpacity(), Fix(1));
}

struct Listener final : detail::callable<void(RealFixed const&)> {
    explicit Listener(int& times) : heard(times) {}
    void operator()(RealFixed const&) override { ++heard; }
    int& heard;
};

TEST(Property, NotifiesForEqualValuesToo) {
    int heard = 0;
    const RefT<TransformNode> node(new TransformNode);
    ASSERT_TRUE(node->opacity.changed.Add(new Listener(heard)));
    node->opacity.Set(Fix(1));
    node->opacity.Set(Fix(1));
    // A copy has the value, but not the listener.
    static_cast<TransformNode&>(*RefT<Node>(node->Clone())).opacity.Set({});
    EXPECT_EQ(heard, 2);
}

struct CountingNode final : TransformNode {
    void RegisterProperties() override {
        ++registrations;
        TransformNode::RegisterProperties();
    }
    int registrations = 0;
};

TEST(Property, IsRegisteredOnceBeforeItsFirstUse) {
    for (int use = 0; use < 3; ++use) {
        const RefT<CountingNode> node(new CountingNode);
        for (int round = 0; round < 2; ++round) {
            FakeDevice device;
            use == 0   ? node->opacity.Set({})
            : use == 1 ? node->Update(device, {})
                       : void(node->GetProperties());
            EXPECT_EQ(node->registrations, 1);
        }
        EXPECT_EQ(node->GetProperties().Find("opacity"), &node->opacity);
        EXPECT_EQ(node->GetProperties().Find("opa"), nullptr);
    }
}

}  // namespace
}  // namespace zorvan::test
