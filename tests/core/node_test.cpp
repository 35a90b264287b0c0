#include <gtest/gtest.h>

#include <cmath>

#include "core/trig.h"
#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

RefT<FakeSprite> Named(char const* name) {
    RefT<FakeSprite> node(new FakeSprite);
    node->name = name;
    return node;
}

std::string Order(Node& node) {
    std::string order;
    for (Node* child : node.GetChildren()) {
        order += child->name;
    }
    return order;
}

TEST(Node, AttachesMovesAndDetaches) {
    RefT<FakeSprite> root = Named("root");
    RefT<FakeSprite> a = Named("a");
    RefT<FakeSprite> b = Named("b");
    RefT<FakeSprite> c = Named("c");
    EXPECT_TRUE(root->Attach(a.Get()));
    EXPECT_TRUE(root->Attach(b.Get()));
    EXPECT_TRUE(root->AttachBefore(c.Get(), b.Get()));
    EXPECT_EQ(Order(*root), "acb");
    // A child that moves inside its parent keeps its one reference.
    struct Move {
        bool (*move)(Node& root, Node& a, Node& b, Node& c);
        char const* order;
    };
    const Move moves[] = {
        {[](Node& r, Node& x, Node&, Node&) { return r.Attach(&x); }, "cba"},
        {[](Node& r, Node& x, Node&, Node& z) { return r.AttachBefore(&x, &z); }, "acb"},
        {[](Node& r, Node& x, Node& y, Node&) { return r.AttachAfter(&x, &y); }, "cba"},
        {[](Node& r, Node& x, Node&, Node& z) { return r.AttachAfter(&z, &x); }, "bac"},
        {[](Node& r, Node&, Node&, Node& z) { return r.Attach(&z); }, "bac"},
    };
    for (Move const& move : moves) {
        EXPECT_TRUE(move.move(*root, *a, *b, *c));
        EXPECT_EQ(Order(*root), move.order);
        EXPECT_EQ(a->references, 2);
        EXPECT_EQ(c->references, 2);
    }
    // To another parent.
    EXPECT_TRUE(a->Attach(c.Get()));
    EXPECT_EQ(Order(*root), "ba");
    EXPECT_EQ(c->GetParent(), a.Get());
    EXPECT_EQ(c->references, 2);
    EXPECT_TRUE(a->Detach(c.Get()));
    EXPECT_EQ(c->GetParent(), nullptr);
    EXPECT_EQ(c->references, 1);
}

TEST(Node, RefusesCyclesAndStrangers) {
    RefT<FakeSprite> root = Named("root");
    RefT<FakeSprite> child = Named("child");
    RefT<FakeSprite> stranger = Named("stranger");
    root->Attach(child.Get());
    EXPECT_FALSE(root->Attach(root.Get()));
    EXPECT_FALSE(root->Attach(nullptr));
    EXPECT_FALSE(child->Attach(root.Get()));
    EXPECT_FALSE(root->AttachBefore(stranger.Get(), stranger.Get()));
    EXPECT_FALSE(root->AttachAfter(child.Get(), child.Get()));
    EXPECT_FALSE(root->Detach(stranger.Get()));
    EXPECT_FALSE(root->AttachAfter(stranger.Get(), nullptr));
    EXPECT_EQ(Order(*root), "child");
    EXPECT_EQ(child->references, 2);
}

TEST(Node, OutlivesItsParentWhenHeld) {
    RefT<FakeSprite> child = Named("child");
    {
        RefT<FakeSprite> root = Named("root");
        root->Attach(child.Get());
    }
    EXPECT_EQ(child->GetParent(), nullptr);
    EXPECT_EQ(child->references, 1);
}

TEST(Node, ClonesDeep) {
    RefT<FakeSprite> root = Named("root");
    RefT<FakeSprite> child = Named("child");
    root->Attach(child.Get());
    root->AddMask(new Mask);
    child->opacity.Set(Fix(0.25));
    int data = 0;
    root->SetUserData(&data);
    RefT<Node> shallow(root->Clone());
    EXPECT_TRUE(shallow->GetChildren().IsEmpty());
    RefT<Node> deep(root->CloneDeep());
    ASSERT_EQ(Order(*deep), "child");
    EXPECT_NE(deep->GetChildren()[0], child.Get());
    EXPECT_EQ(static_cast<FakeSprite*>(deep->GetChildren()[0])->opacity.Get(), Fix(0.25));
    EXPECT_EQ(deep->GetUserData(), &data);
    EXPECT_EQ(static_cast<FakeSprite*>(deep.Get())->GetMasks()[0]->references, 3);
    EXPECT_TRUE(deep->IsKindOf(MakeClassId(u"Sprite")));
    EXPECT_TRUE(deep->IsKindOf(MakeClassId(u"TransformNode")));
    EXPECT_TRUE(deep->IsKindOf(MakeClassId(u"Node")));
    EXPECT_FALSE(deep->IsKindOf(MakeClassId(u"Text")));
}

TEST(TransformNode, PlacesItsChildren) {
    FakeDevice device;
    RefT<FakeSprite> root = Named("root");
    RefT<FakeSprite> child = Named("child");
    root->Attach(child.Get());
    root->position.Set({Fix(10), Fix(20), Fix(30)});
    root->scale.Set({Fix(2), Fix(3), Fix(1)});
    root->rotation.Set({RealFixed{}, RealFixed{}, Fix(90)});
    child->position.Set({Fix(1), Fix(2), Fix(3)});
    child->origin.Set({Fix(5), RealFixed{}, RealFixed{}});
    root->Update(device, RealFixed{});
    // The child's origin at (-4, 2, 3), scaled to (-8, 6, 3), turned to (-6, -8, 3).
    const Matrix4T<RealFixed>& world = child->GetWorldMatrix();
    EXPECT_EQ(world[12], Fix(4));
    EXPECT_EQ(world[13], Fix(12));
    EXPECT_EQ(world[14], Fix(33));
    EXPECT_EQ(world[1], Fix(2));
    EXPECT_EQ(world[4], Fix(-3));
}

TEST(TransformNode, RotatesAboutXThenYThenZ) {
    FakeDevice device;
    struct Case {
        double x, y, z;
        int axis;      // that is looked at
        double to[3];  // where it points
    };
    constexpr Case kCases[] = {{90, 0, 0, 1, {0, 0, 1}},  {0, 90, 0, 2, {1, 0, 0}},
                               {0, 0, 90, 0, {0, 1, 0}},  {90, 90, 0, 1, {1, 0, 0}},
                               {90, 0, 90, 1, {0, 0, 1}}, {180, 0, 0, 1, {0, -1, 0}}};
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
    RefT<FakeSprite> root = Named("root");
    RefT<FakeSprite> middle = Named("middle");
    RefT<FakeSprite> leaf = Named("leaf");
    RefT<FakeSprite> other = Named("other");
    root->Attach(middle.Get());
    middle->Attach(leaf.Get());
    root->Attach(other.Get());
    const auto counts = [&] {
        return std::vector<int>{root->transforms, middle->transforms, leaf->transforms, other->transforms};
    };
    root->Update(device, RealFixed{});
    root->Update(device, RealFixed{});
    EXPECT_EQ(counts(), (std::vector<int>{1, 1, 1, 1}));
    middle->opacity.Set(Fix(0.5));
    root->Update(device, RealFixed{});
    EXPECT_EQ(counts(), (std::vector<int>{1, 2, 2, 1}));
    EXPECT_EQ(leaf->GetEffectiveOpacity(), Fix(0.5));
    leaf->opacity.Set(Fix(0.5));
    root->Update(device, RealFixed{});
    EXPECT_EQ(leaf->GetEffectiveOpacity(), Fix(0.25));
    EXPECT_EQ(counts(), (std::vector<int>{1, 2, 3, 1}));
    other->Attach(leaf.Get());
    root->Update(device, RealFixed{});
    EXPECT_EQ(leaf->GetEffectiveOpacity(), Fix(0.5));
    EXPECT_EQ(counts(), (std::vector<int>{1, 2, 4, 1}));
    root->Update(device, RealFixed{}, RealFixed{}, true);
    EXPECT_EQ(counts(), (std::vector<int>{2, 3, 5, 2}));
}

TEST(TransformNode, ChainsEffectKeys) {
    FakeDevice device;
    RefT<FakeSprite> root = Named("root");
    RefT<FakeSprite> plain = Named("plain");
    RefT<FakeSprite> leaf = Named("leaf");
    root->Attach(plain.Get());
    plain->Attach(leaf.Get());
    root->transferMode.Set(5);
    leaf->transferMode.Set(36);
    root->Update(device, RealFixed{});
    const uint32_t first = (0x811C9DC5u * 16777619u) ^ 5u;
    EXPECT_EQ(root->keys, std::vector<uint32_t>{first});
    EXPECT_EQ(plain->keys, std::vector<uint32_t>{first});
    EXPECT_EQ(leaf->keys, (std::vector<uint32_t>{first, (first * 16777619u) ^ 36u}));
    EXPECT_TRUE(device.effectKeys.IsEmpty());
    EXPECT_TRUE(device.transferModes.IsEmpty());
    // A pop without a push changes nothing, and a mode that changes between them is taken back.
    root->PopEffect(device);
    root->PushEffect(device);
    root->transferMode.Set(kNoTransferMode);
    root->PopEffect(device);
    EXPECT_TRUE(device.effectKeys.IsEmpty());
}

TEST(TransformNode, DrawsParentsFirstAndSelectsInThatOrder) {
    FakeDevice device;
    RefT<FakeSprite> root = Named("root");
    RefT<FakeSprite> child = Named("child");
    root->Attach(child.Get());
    for (FakeSprite* sprite : {root.Get(), child.Get()}) {
        sprite->width.Set(10);
        sprite->height.Set(10);
    }
    child->position.Set({Fix(5), Fix(5), RealFixed{}});
    root->Update(device, RealFixed{});
    root->Render(device);
    EXPECT_EQ(device.log, (std::vector<std::string>{"draw root", "draw child"}));
    const struct {
        double x, y;
        std::string names;
    } points[] = {{1, 1, "root"}, {7, 7, "rootchild"}, {12, 12, "child"}, {1, 12, ""}, {20000, -20000, ""}};
    for (auto const& point : points) {
        List<Node*> selected;
        device.SetSelectionMode({Fix(point.x), Fix(point.y)}, &selected);
        root->Render(device);
        std::string names;
        for (Node* node : selected) {
            names += node->name;
        }
        EXPECT_EQ(names, point.names) << point.x << ", " << point.y;
    }
    EXPECT_EQ(device.log.size(), 2u);
    device.SetRenderMode();
    EXPECT_FALSE(device.IsSelecting());
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
    const Vector3T<RealFixed> place = camera->position.Get();
    EXPECT_EQ(place.x, Fix(400));
    EXPECT_EQ(place.y, Fix(240));
    // The view's height fills the angle at the plane z = 0, with the projection's own tangent.
    const RealFixed tangent = TanFixed(camera->fieldOfView.Get() * Fix(0.5) * kDegreesToRadians);
    EXPECT_NEAR((-place.z * tangent).raw / 65536.0, 240, 0.05);
    // Without a place the camera stays.
    camera->position.Set({});
    camera->SetupMillimeter(Fix(35), Fix(60), Fix(10), Fix(0), false);
    EXPECT_EQ(camera->position.Get(), Vector3T<RealFixed>{});
    EXPECT_EQ(camera->fieldOfView.Get().raw / 65536, 0);
}

TEST(GraphicsDevice, KeepsItsState) {
    FakeDevice device;
    EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {0, 5}), 0u);
    EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {7, 5}), 1u);
    EXPECT_EQ(device.GetViewport(), (RectangleT<int>{0, 0, 7, 5}));
    device.SetViewport(1, 2, 3, 4);
    EXPECT_EQ(device.GetViewport(), (RectangleT<int>{1, 2, 4, 6}));
    EXPECT_EQ(device.GetOpacity(), Fix(1));
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
    EXPECT_EQ(device.GetOpacity(), Fix(1));
    EXPECT_TRUE(IsIdentity(device.GetTransformMatrix()));
    device.PopOpacity();
    EXPECT_EQ(device.GetOpacity(), Fix(1));
}

}  // namespace
}  // namespace zorvan::test
