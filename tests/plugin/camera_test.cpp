// The camera's matrices, its notifications, and the exported products.
#include <functional>

#include "graphics/math.h"
#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

class CameraTest : public RecordedTest {
  protected:
    Elements Projection() const { return RawElements(camera->GetProjectionMatrix()); }

    RefT<CameraGL> camera = Make<CameraGL>(
        "{'viewRectangle': [0, 0, 640, 480], 'farPlane': 100, 'children': [{'class': "
        "'Sprite'}]}");
};

TEST_F(CameraTest, Projections) {
    EXPECT_EQ(Projection(), RawElements(Matrix4T<RealFixed>::Identity));
    EXPECT_EQ(camera->GetViewMatrix(), Matrix4T<RealFixed>::Identity);
    // Left edge, horizontal angle and the vertical one after it; an empty view does not trap.
    using Case = std::tuple<bool, int, int, int, Elements>;
    const Case cases[] = {
        {true, 0, 90, 60 << 16, {204, 0, 0, 0, 0, -273, 0, 0, 0, 0, -1323, 0, -65536, 65536, -66859, 65536}},
        {true,
         320,
         0,
         60 << 16,
         {409, 0, 0, 0, 0, -273, 0, 0, 0, 0, -1323, 0, -3 * 65536, 65536, -66859, 65536}},
        {false, 0, 0, 60 << 16, {85326, 0, 0, 0, 0, 113767, 0, 0, 0, 0, -66859, -65536, 0, 0, -132395, 0}},
        {false, 0, 90, 4825679, {65793, 0, 0, 0, 0, 87724, 0, 0, 0, 0, -66859, -65536, 0, 0, -132395, 0}},
        {true, 640, 0, 60 << 16, {0, 0, 0, 0, 0, -273, 0, 0, 0, 0, -1323, 0, 0, 65536, -66859, 65536}},
        {false, 640, 0, 60 << 16, {0, 0, 0, 0, 0, 113767, 0, 0, 0, 0, -66859, -65536, 0, 0, -132395, 0}},
    };
    for (auto const& [orthographic, left, horizontal, vertical, elements] : cases) {
        SCOPED_TRACE(testing::Message() << orthographic << ' ' << left << ' ' << horizontal);
        camera->orthographic.Set(orthographic);
        camera->viewRectangle.Set({Real(left), {}, Real(640), Real(480)});
        camera->horizontalFieldOfView.Set(Real(horizontal));
        camera->fieldOfView.Set(Real(60));
        for (int pass = 0; pass < 2; ++pass) {
            Update(*camera);
            EXPECT_EQ(Projection(), elements);
            EXPECT_EQ(camera->fieldOfView.Get().raw, vertical);
        }
    }
}

// Each setting's change brings a new projection with the next update.
TEST_F(CameraTest, SettingsMakeItDirty) {
    Update(*camera);
    CameraGL& c = *camera;
    const std::vector<std::function<void()>> changes = {
        [&c] { c.fieldOfView.Set(Real(50)); },
        [&c] { c.nearPlane.Set(Real(2)); },
        [&c] { c.farPlane.Set(Real(90)); },
        [&c] {
            c.viewRectangle.Set({{}, {}, Real(300), Real(480)});
        },
        [&c] { c.horizontalFieldOfView.Set(Real(30)); },
        [&c] { c.orthographic.Set(true); }};
    for (auto const& change : changes) {
        SCOPED_TRACE(&change - changes.data());
        const Elements before = Projection();
        change();
        EXPECT_EQ(Projection(), before);
        Update(*camera);
        EXPECT_NE(Projection(), before);
    }
}

// A copy has the matrices and no subscribers of the original.
TEST_F(CameraTest, Clones) {
    camera->position.Set({Real(3), Real(4), Real(5)});
    Update(*camera);
    std::vector<uint32_t> children;
    for (Node* clone : {camera->Clone(), camera->CloneDeep()}) {
        const RefT<CameraGL> copy(static_cast<CameraGL*>(clone));
        EXPECT_EQ(RawElements(copy->GetProjectionMatrix()), Projection());
        EXPECT_EQ(copy->GetViewMatrix(), camera->GetViewMatrix());
        copy->farPlane.Set(Real(50));
        Update(*copy);
        EXPECT_NE(RawElements(copy->GetProjectionMatrix()), Projection());
        children.push_back(copy->GetChildren().Count());
    }
    EXPECT_EQ(children, (std::vector{0u, 1u}));
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
    std::tie(real[0], real[12], real[7]) = std::tuple(RealFixed{0x10001}, RealFixed{-7}, RealFixed{3});
    EXPECT_EQ((real * Vector4T<RealFixed>{Real(1), Real(2), RealFixed{5}, Real(2)}),
              (Vector4T<RealFixed>{RealFixed{0x10000 - 14}, Real(2), RealFixed{5}, RealFixed{0x20000 + 6}}));
    Matrix4T<DoubleRealFixed> wide;
    SetIdentity(wide);
    wide[4] = DoubleRealFixed{(int64_t{1} << 32) + 0xFFFF};
    EXPECT_EQ((wide * Vector4T<DoubleRealFixed>{{}, DoubleRealFixed{0x1FFFF}, DoubleRealFixed{-1}, {}}),
              (Vector4T<DoubleRealFixed>{
                  DoubleRealFixed{0x10000}, DoubleRealFixed{0x10000}, DoubleRealFixed{-0x10000}, {}}));
}

}  // namespace
}  // namespace zorvan
