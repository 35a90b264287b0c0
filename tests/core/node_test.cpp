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
    RefT<FakeSprite> a = Named("a");
    RefT<FakeSprite> b = Named("b");
    RefT<FakeSprite> c = Named("c");
    RefT<FakeSprite> root = Named("root", {a.Get(), c.Get(), b.Get()});
    // A child that moves inside its parent keeps its one reference.
    const struct {
        bool (*move)(Node& root, Node& a, Node& b, Node& c);
        char const* order;
    } moves[] = {
        {[](Node& r, Node& x, Node&, Node&) { return r.Attach(&x); }, "cba"},
        {[](Node& r, Node& x, Node&, Node& z) { return r.AttachBefore(&x, &z); }, "acb"},
        {[](Node& r, Node& x, Node& y, Node&) { return r.AttachAfter(&x, &y); }, "cba"},
        {[](Node& r, Node& x, Node&, Node& z) { return r.AttachAfter(&z, &x); }, "bac"},
        {[](Node& r, Node&, Node&, Node& z) { return r.Attach(&z); }, "bac"},
        {[](Node& r, Node&, Node&, Node& z) { return !r.Attach(&r) && !r.Attach(nullptr) && !z.Attach(&r); },
         "bac"},
        {[](Node& r, Node& x, Node&, Node& z) { return !r.AttachAfter(&x, &x) && !z.Detach(&x); }, "bac"},
        {[](Node& r, Node& x, Node&, Node& z) { return x.Attach(&z) && !r.AttachBefore(&x, &z); }, "ba"},
    };
    for (auto const& row : moves) {
        EXPECT_TRUE(row.move(*root, *a, *b, *c));
        EXPECT_EQ(Names(root->GetChildren()), row.order);
        EXPECT_EQ(a->references, 2);
        EXPECT_EQ(c->references, 2);
    }
    EXPECT_EQ(c->GetParent(), a.Get());
    EXPECT_TRUE(a->Detach(c.Get()));
    EXPECT_FALSE(root->AttachAfter(c.Get(), nullptr) || root->AttachBefore(c.Get(), c.Get()));
    EXPECT_EQ(c->GetParent(), nullptr);
    EXPECT_EQ(c->references, 1);
    root = {};
    EXPECT_EQ(a->GetParent(), nullptr);
    EXPECT_EQ(a->references, 1);
}

TEST(Node, ClonesDeep) {
    RefT<FakeSprite> child = Named("child");
    RefT<FakeSprite> root = Named("root", {child.Get()});
    root->AddMask(new Mask);
    child->opacity.Set(Fix(0.25));
    int data = 0;
    root->SetUserData(&data);
    RefT<Node> shallow(root->Clone());
    EXPECT_TRUE(shallow->GetChildren().IsEmpty());
    RefT<Node> deep(root->CloneDeep());
    FakeSprite* copy = FindSprite(deep.Get(), "child");
    ASSERT_TRUE(copy != nullptr && copy != child.Get());
    EXPECT_EQ(copy->opacity.Get(), Fix(0.25));
    EXPECT_EQ(deep->GetUserData(), &data);
    EXPECT_EQ(root->GetMasks()[0]->references, 3);
    EXPECT_TRUE(deep->IsKindOf(MakeClassId(u"Sprite")) && deep->IsKindOf(MakeClassId(u"TransformNode")));
    EXPECT_FALSE(deep->IsKindOf(MakeClassId(u"Text")));
}

TEST(TransformNode, PlacesItsChildren) {
    FakeDevice device;
    RefT<FakeSprite> child = Named("child");
    RefT<FakeSprite> root = Named("root", {child.Get()});
    root->position.Set({Fix(10), Fix(20), Fix(30)});
    root->scale.Set({Fix(2), Fix(3), Fix(1)});
    root->rotation.Set({RealFixed{}, RealFixed{}, Fix(90)});
    child->position.Set({Fix(1), Fix(2), Fix(3)});
    child->origin.Set({Fix(5), RealFixed{}, RealFixed{}});
    root->Update(device, RealFixed{});
    // The child's origin at (-4, 2, 3), scaled to (-8, 6, 3), turned to (-6, -8, 3).
    const Matrix4T<RealFixed> world{{{},
                                     Fix(2),
                                     {},
                                     {},
                                     Fix(-3),
                                     {},
                                     {},
                                     {},  //
                                     {},
                                     {},
                                     Fix(1),
                                     {},
                                     Fix(4),
                                     Fix(12),
                                     Fix(33),
                                     Fix(1)}};
    EXPECT_EQ(child->GetWorldMatrix(), world);
}

TEST(TransformNode, RotatesAboutXThenYThenZ) {
    FakeDevice device;
    struct Case {
        double x, y, z;
        int axis;      // that is looked at
        double to[3];  // where it points
    };
    constexpr Case kCases[] = {
        {90, 90, 0, 1, {1, 0, 0}}, {90, 0, 90, 1, {0, 0, 1}}, {0, 90, 0, 2, {1, 0, 0}}};
    for (Case const& c : kCases) {
        RefT<FakeSprite> node = Named("");
        node->rotation.Set({Fix(c.x), Fix(c.y), Fix(c.z)});
        node->Update(device, RealFixed{});
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(node->GetWorldMatrix()[4 * c.axis + i], Fix(c.to[i]))
                << c.x << " " << c.y << " " << c.z;
        }
    }
}

TEST(TransformNode, RecomputesOnlyWhatChanged) {
    FakeDevice device;
    RefT<FakeSprite> leaf = Named("leaf");
    RefT<FakeSprite> middle = Named("middle", {leaf.Get()});
    RefT<FakeSprite> other = Named("other");
    RefT<FakeSprite> root = Named("root", {middle.Get(), other.Get()});
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
        {[&] { root->Update(device, RealFixed{}, RealFixed{}, true); }, {2, 3, 5, 2}, 0.5},
    };
    for (auto const& step : steps) {
        step.change();
        root->Update(device, RealFixed{});
        EXPECT_EQ((std::vector{root->transforms, middle->transforms, leaf->transforms, other->transforms}),
                  step.transforms);
        EXPECT_EQ(leaf->GetEffectiveOpacity(), Fix(step.opacity));
    }
}

TEST(TransformNode, ChainsEffectKeys) {
    FakeDevice device;
    RefT<FakeSprite> leaf = Named("leaf");
    RefT<FakeSprite> plain = Named("plain", {leaf.Get()});
    RefT<FakeSprite> root = Named("root", {plain.Get()});
    root->transferMode.Set(5);
    leaf->transferMode.Set(36);
    root->Update(device, RealFixed{});
    const uint32_t first = (0x811C9DC5u * 16777619u) ^ 5u;
    EXPECT_EQ(plain->keys, std::vector<uint32_t>{first});
    EXPECT_EQ(leaf->keys, (std::vector<uint32_t>{first, (first * 16777619u) ^ 36u}));
    EXPECT_TRUE(device.effectKeys.IsEmpty() && device.transferModes.IsEmpty());
    // A pop without a push changes nothing, and a mode that changes between them is taken back.
    root->PopEffect(device);
    root->PushEffect(device);
    root->transferMode.Set(kNoTransferMode);
    root->PopEffect(device);
    EXPECT_TRUE(device.effectKeys.IsEmpty());
}

TEST(TransformNode, DrawsParentsFirstAndSelectsInThatOrder) {
    FakeDevice device;
    RefT<FakeSprite> child = Named("child");
    RefT<FakeSprite> root = Named("root", {child.Get()});
    for (FakeSprite* sprite : {root.Get(), child.Get()}) {
        sprite->width.Set(10);
        sprite->height.Set(10);
    }
    child->position.Set({Fix(5), Fix(5), RealFixed{}});
    root->Update(device, RealFixed{});
    root->Render(device);
    const struct {
        double x, y;
        std::string names;
    } points[] = {{1, 1, "root"}, {7, 7, "rootchild"}, {12, 12, "child"}, {1, 12, ""}, {20000, -20000, ""}};
    for (auto const& point : points) {
        List<Node*> selected;
        device.SetSelectionMode({Fix(point.x), Fix(point.y)}, &selected);
        root->Render(device);
        EXPECT_EQ(Names(selected), point.names) << point.x << ", " << point.y;
    }
    EXPECT_EQ(device.log, (std::vector<std::string>{"draw root", "draw child"}));
    device.SetRenderMode();
    EXPECT_FALSE(device.IsSelecting());
}

class FakeLight final : public Light {
  public:
    void Setup(GraphicsDevice&) override {}
};

TEST(Light, IsVisitedAsOne) {
    struct : Visitor {
        void VisitNode(Node&) override {}
        void VisitTransformNode(TransformNode&) override {}
        void VisitCamera(Camera&) override {}
        void VisitLight(Light& light) override { seen = &light; }
        void VisitTimeline(Timeline&) override {}
        void VisitChildren(List<Node*>& list) override { children = &list; }
        Light* seen = nullptr;
        List<Node*>* children = nullptr;
    } visitor;
    FakeLight light;
    light.Visit(visitor);
    EXPECT_EQ(visitor.seen, &light);
    EXPECT_EQ(visitor.children, &light.GetChildren());
    EXPECT_TRUE(light.IsKindOf(MakeClassId(u"Light")) && light.IsKindOf(MakeClassId(u"TransformNode")));
    EXPECT_FALSE(light.IsKindOf(MakeClassId(u"Camera")));
}

TEST(Camera, SetsUpLikeAPhotographer) {
    RefT<FakeCamera> camera(new FakeCamera);
    camera->horizontalFieldOfView.Set(Fix(40));
    camera->SetupMillimeter(Fix(50), Fix(60), Fix(800), Fix(480), true);
    // Half the film's height of 36 mm over 50 mm.
    EXPECT_EQ(camera->horizontalFieldOfView.Get().raw, 0);
    EXPECT_NEAR(camera->fieldOfView.Get().raw / 65536.0, 2 * std::atan(18.0 / 50.0) * 180 / 3.14159265, 0.15);
    EXPECT_EQ(camera->viewRectangle.Get(), (RectangleT<RealFixed>{{}, {}, Fix(800), Fix(480)}));
    EXPECT_EQ(camera->nearPlane.Get(), Fix(1));
    EXPECT_EQ(camera->farPlane.Get(), Fix(10000));
    EXPECT_EQ(camera->rotation.Get(), (Vector3T<RealFixed>{Fix(180), {}, {}}));
    // The view's height fills the angle at the plane z = 0, with the projection's own tangent.
    const Vector3T<RealFixed> place = camera->position.Get();
    const RealFixed tangent = TanFixed(camera->fieldOfView.Get() * Fix(0.5) * kDegreesToRadians);
    EXPECT_NEAR((-place.z * tangent).raw / 65536.0, 240, 0.05);
    EXPECT_EQ(place, (Vector3T<RealFixed>{Fix(400), Fix(240), place.z}));
    // Without a place the camera stays.
    camera->SetupMillimeter(Fix(35), Fix(60), Fix(10), Fix(0), false);
    EXPECT_EQ(camera->position.Get(), place);
    EXPECT_EQ(camera->fieldOfView.Get().raw / 65536, 0);
}

TEST(GraphicsDevice, StacksItsStateAndResetsIt) {
    FakeDevice device;
    EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {0, 5}), 0u);
    EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {7, 5}), 1u);
    EXPECT_EQ(device.GetViewport(), (RectangleT<int>{0, 0, 7, 5}));
    device.SetViewport(1, 2, 3, 4);
    EXPECT_EQ(device.GetViewport(), (RectangleT<int>{1, 2, 4, 6}));
    device.PushOpacity(Fix(0.5));
    device.MergeOpacity(Fix(0.5));
    EXPECT_EQ(device.GetOpacity(), Fix(0.25));
    device.PushOpacity(Fix(0.75));
    EXPECT_EQ(device.GetOpacity(), Fix(0.75));
    device.PopOpacity();
    device.PopOpacity();
    EXPECT_EQ(device.GetOpacity(), Fix(0.5));
    Matrix4T<RealFixed> move = Matrix4T<RealFixed>::Identity;
    move[12] = Fix(3);
    device.PushTransformMatrix(move);
    device.MergeTransformMatrix(move);
    EXPECT_EQ(device.GetTransformMatrix()[12], Fix(6));
    device.Reset({10, 20, 40, 60});
    EXPECT_EQ(device.GetViewport(), (RectangleT<int>{10, 20, 40, 60}));
    EXPECT_TRUE(IsIdentity(device.GetTransformMatrix()));
    device.PopOpacity();
    EXPECT_EQ(device.GetOpacity(), Fix(1));
}

}  // namespace
}  // namespace zorvan::test
