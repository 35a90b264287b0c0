// The camera's matrices, its notifications, and the exported products.
#include "graphics/camera.h"

#include "graphics/math.h"
#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

class CameraTest : public RecordedTest {
  protected:
    CameraTest() {
        camera->viewRectangle.Set({{}, {}, Real(640), Real(480)});
        camera->nearPlane.Set(Real(1));
        camera->farPlane.Set(Real(100));
    }
    Elements Projection() const { return RawElements(camera->GetProjectionMatrix()); }

    RefT<CameraGL> camera{new CameraGL};
};

TEST_F(CameraTest, Projections) {
    struct Case {
        bool orthographic;
        int horizontal;
        int32_t verticalAfter;
        Elements elements;
    };
    const Case cases[] = {
        {true, 90, 60 << 16, {204, 0, 0, 0, 0, -273, 0, 0, 0, 0, -1323, 0, -65536, 65536, -66859, 65536}},
        {false, 0, 60 << 16, {85326, 0, 0, 0, 0, 113767, 0, 0, 0, 0, -66859, -65536, 0, 0, -132395, 0}},
        {false, 90, 4825679, {65793, 0, 0, 0, 0, 87724, 0, 0, 0, 0, -66859, -65536, 0, 0, -132395, 0}},
    };
    EXPECT_EQ(Projection(), RawElements(Matrix4T<RealFixed>::Identity));
    EXPECT_EQ(camera->GetViewMatrix(), Matrix4T<RealFixed>::Identity);
    for (Case const& c : cases) {
        SCOPED_TRACE(testing::Message() << c.orthographic << ' ' << c.horizontal);
        camera->orthographic.Set(c.orthographic);
        camera->horizontalFieldOfView.Set(Real(c.horizontal));
        camera->fieldOfView.Set(Real(60));
        for (int pass = 0; pass < 2; ++pass) {
            Update(*camera);
            EXPECT_EQ(Projection(), c.elements);
            EXPECT_EQ(camera->fieldOfView.Get().raw, c.verticalAfter);
        }
    }
    // An empty view does not trap.
    camera->viewRectangle.Set({});
    camera->farPlane.Set(Real(1));
    for (const bool orthographic : {false, true}) {
        camera->orthographic.Set(orthographic);
        Update(*camera);
        EXPECT_EQ(Projection()[0], 0);
    }
}

// Each setting's change brings a new projection; without one a hidden change of the angle stays.
TEST_F(CameraTest, SettingsMakeItDirty) {
    Update(*camera);
    const auto changes = std::to_array<void (*)(CameraGL&)>(
        {[](CameraGL& c) { c.fieldOfView.Set(Real(50)); }, [](CameraGL& c) { c.nearPlane.Set(Real(2)); },
         [](CameraGL& c) { c.farPlane.Set(Real(90)); },
         [](CameraGL& c) {
             c.viewRectangle.Set(RectangleT<RealFixed>{{}, {}, Real(300), Real(480)});
         },
         [](CameraGL& c) { c.horizontalFieldOfView.Set(Real(30)); },
         [](CameraGL& c) { c.orthographic.Set(true); }});
    for (size_t i = 0; i < changes.size(); ++i) {
        const Elements before = Projection();
        changes[i](*camera);
        EXPECT_EQ(Projection(), before) << i;
        Update(*camera);
        EXPECT_NE(Projection(), before) << i;
    }
}

// A copy has the matrices and no subscribers of the original.
TEST_F(CameraTest, Clones) {
    camera->Attach(new CameraGL);
    camera->position.Set({Real(3), Real(4), Real(5)});
    Update(*camera);
    RefT<CameraGL> shallow(static_cast<CameraGL*>(camera->Clone()));
    RefT<CameraGL> deep(static_cast<CameraGL*>(camera->CloneDeep()));
    EXPECT_EQ(shallow->GetChildren().Count(), 0u);
    ASSERT_EQ(deep->GetChildren().Count(), 1u);
    EXPECT_NE(deep->GetChildren()[0], camera->GetChildren()[0]);
    for (CameraGL* copy : {shallow.Get(), deep.Get()}) {
        EXPECT_EQ(RawElements(copy->GetProjectionMatrix()), Projection());
        EXPECT_EQ(copy->GetViewMatrix(), camera->GetViewMatrix());
        copy->farPlane.Set(Real(50));
        Update(*copy);
        EXPECT_NE(RawElements(copy->GetProjectionMatrix()), Projection());
    }
}

TEST_F(CameraTest, ViewIsTheInverseWorld) {
    camera->position.Set({Real(10), Real(-20), Real(30)});
    camera->scale.Set({Real(2), Real(4), Real(8)});
    Update(*camera);
    EXPECT_EQ(RawElements(camera->GetViewMatrix()), (Elements{0x8000, 0, 0, 0, 0, 0x4000, 0, 0, 0, 0, 0x2000,
                                                              0, -5 << 16, 5 << 16, -15 << 14, 65536}));

    camera->scale.Set({Real(1), Real(1), Real(1)});
    camera->rotation.Set({Real(30), Real(-75), Real(200)});
    camera->position.Set({Real(3), Real(-2), Real(1)});
    Update(*camera);
    const Elements product = RawElements(camera->GetWorldMatrix() * camera->GetViewMatrix());
    for (size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(product[i], i % 5 == 0 ? 65536 : 0, 48) << i;
    }

    // A singular world matrix does not trap.
    camera->scale.Set({});
    Update(*camera);
    EXPECT_EQ(camera->GetViewMatrix()[0].raw, 0);
}

TEST(VectorProducts, RoundLikeTheirScalars) {
    Matrix4T<RealFixed> real = Matrix4T<RealFixed>::Identity;
    real[0] = RealFixed{0x10001};
    real[12] = RealFixed{-7};
    real[7] = RealFixed{3};
    EXPECT_EQ((real * Vector4T<RealFixed>{Real(1), Real(2), RealFixed{5}, Real(1)}),
              (Vector4T<RealFixed>{RealFixed{0x10000 - 7}, Real(2), RealFixed{5}, RealFixed{0x10000 + 6}}));

    Matrix4T<DoubleRealFixed> wide;
    SetIdentity(wide);
    wide[4] = DoubleRealFixed{(int64_t{1} << 32) + 0xFFFF};
    const auto w = wide * Vector4T<DoubleRealFixed>{{}, DoubleRealFixed{0x1FFFF}, DoubleRealFixed{-1}, {}};
    EXPECT_EQ((std::array{w.x.raw, w.y.raw, w.z.raw}), (std::array<int64_t, 3>{0x10000, 0x10000, -0x10000}));
}

}  // namespace
}  // namespace zorvan
