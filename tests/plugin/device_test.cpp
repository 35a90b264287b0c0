// The device's GL state, viewport, camera stack, teardown, lights, read-back and projection.
#include "graphics/device.h"

#include <GLES2/gl2.h>

#include "core/light.h"
#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

// An object that says when it is deleted.
template <typename Base>
class Mortal : public Base {
  public:
    explicit Mortal(bool& dead) : dead_(dead) {}
    ~Mortal() override { dead_ = true; }

  private:
    bool& dead_;
};

TEST(DeviceInitialize, SetsStateAndBuildsTheSolidProgram) {
    recording_gl::Reset();
    GraphicsDeviceGL device;
    EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {0, 4}), 0u);
    EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {4, 0}), 0u);
    EXPECT_EQ(Taken(), "");
    EXPECT_EQ(device.defaultCamera, nullptr);

    EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {640, 480}), 1u);
    const std::string build = Replaced(Replaced(Replaced(kBuild, "103", "101"), "104", "102"), "(2", "(1");
    EXPECT_EQ(Taken(), Calls("glClearStencil(0); glDisable(GL_STENCIL_TEST); glDisable(GL_SCISSOR_TEST); "
                             "glFrontFace(GL_CCW); glEnable(GL_DITHER); glClearColor(0, 0, 0, 1); "
                             "glDisable(GL_CULL_FACE); glDisable(GL_DEPTH_TEST); glDepthFunc(GL_LEQUAL); "
                             "glEnable(GL_BLEND); " +
                             build));
    EXPECT_EQ(device.GetViewport(), (RectangleT<int>{0, 0, 640, 480}));
    ASSERT_NE(device.defaultCamera, nullptr);
    EXPECT_EQ(device.defaultCamera->references, 1);
    EXPECT_FALSE(device.defaultCamera->orthographic.Get());
    EXPECT_EQ(device.defaultCamera->viewRectangle.Get(),
              (RectangleT<RealFixed>{{}, {}, Real(640), Real(480)}));
    // Both matrices are there at once.
    EXPECT_FALSE(device.defaultCamera->GetProjectionMatrix() == Matrix4T<RealFixed>::Identity);
    EXPECT_FALSE(device.defaultCamera->GetViewMatrix() == Matrix4T<RealFixed>::Identity);
    ASSERT_NE(device.solidShader, nullptr);
    delete device.solidShader;
}

TEST(DeviceInitialize, WithoutSolidProgramIsNoFailure) {
    recording_gl::Reset();
    script.linkError = "none";
    Traces traces;
    GraphicsDeviceGL device;
    EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {1, 1}), 1u);
    EXPECT_EQ(device.solidShader, nullptr);
    EXPECT_EQ(traces.Take(), Lines{"none"});
}

using DeviceTest = RecordedTest;

// The rectangle form of SetViewport hands GL the viewport from before; masks do nothing.
TEST_F(DeviceTest, FrameCalls) {
    List<Mask*> masks;
    device->PushMasks(masks);
    device->PopMasks(masks);
    device->Clear();
    device->SetClearColor({RealFixed{0x8000}, RealFixed{0x4000}, Real(1), RealFixed{-0x10000}});
    device->Present();
    device->SetViewport(RectangleT<int>{10, 20, 110, 220});
    EXPECT_EQ(device->GetViewport(), (RectangleT<int>{10, 20, 110, 220}));
    device->SetViewport(RectangleT<int>{0, 0, 5, 5});
    device->SetViewport(1, 2, 30, 40);
    EXPECT_EQ(device->GetViewport(), (RectangleT<int>{1, 2, 31, 42}));
    device->Reset({2, 3, 12, 23});
    EXPECT_EQ(Taken(), Calls("glClear(0x4500); glClearColor(0.5, 0.25, 1, -1); glFlush(); "
                             "glViewport(0, 0, 640, 480); glViewport(10, 20, 100, 200); "
                             "glViewport(1, 2, 30, 40); glViewport(2, 3, 10, 20)"));
    EXPECT_EQ(device->GetClearColor().red, RealFixed{0x8000});
}

TEST_F(DeviceTest, CameraStack) {
    bool dead = false;
    RefT<CameraGL> camera(new Mortal<CameraGL>(dead));
    device->PushCamera(nullptr);
    device->PopCamera();
    EXPECT_EQ(device->cameras.Count(), 0u);
    device->PushCamera(camera.Get());
    device->PushCamera(camera.Get());
    EXPECT_EQ(camera->references, 3);
    device->PopCamera();
    EXPECT_EQ(camera->references, 2);
    camera = {};
    EXPECT_FALSE(dead);
    device->PopCamera();
    EXPECT_TRUE(dead);
    for (int i = 0; i < 9; ++i) {
        device->PushCamera2D(Real(10), Real(10));
    }
    EXPECT_EQ(device->cameras.Count(), 9u);
    EXPECT_EQ(device->cameras.Capacity(), 16u);
    EXPECT_EQ(Taken(), "");
}

TEST_F(DeviceTest, ScreenSpaceCamera) {
    device->PushCamera2D(Real(640), Real(480));
    CameraGL const* camera = device->cameras.Last();
    EXPECT_EQ(camera->references, 1);
    EXPECT_TRUE(camera->orthographic.Get());
    EXPECT_EQ(camera->viewRectangle.Get(), (RectangleT<RealFixed>{{}, {}, Real(639), Real(479)}));
    EXPECT_EQ(RawElements(device->GetProjectionMatrix()),
              (Elements{205, 0, 0, 0, 0, -273, 0, 0, 0, 0, -65536, 0, -65536, 65536, 0, 65536}));
    EXPECT_EQ(device->GetViewMatrix(), Matrix4T<RealFixed>::Identity);
}

TEST_F(DeviceTest, CameraDepth) {
    EXPECT_FALSE(device->useDefaultCamera);
    EXPECT_EQ(device->GetProjectionMatrix(), Matrix4T<RealFixed>::Identity);
    device->PopCameraDepth(false);
    device->PushCameraDepth(true);
    EXPECT_EQ(device->cameraDepth, 0u);
    // Depth count, depth flag, camera pushed: is the default camera in use?
    struct Case {
        uint32_t pushed;
        bool depth, camera, usesDefault;
    };
    constexpr Case kCases[] = {{0, false, false, true}, {0, true, false, true},  {2, false, false, true},
                               {2, true, false, true},  {0, false, true, false}, {0, true, true, true},
                               {2, false, true, false}, {2, true, true, false}};
    for (Case const& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.pushed << c.depth << c.camera);
        for (uint32_t i = 0; i < c.pushed; ++i) {
            device->PushCameraDepth(false);
        }
        EXPECT_EQ(device->cameraDepth, c.pushed);
        if (c.camera) {
            device->PushCamera2D(Real(11), Real(11));
        }
        device->SetCameraDepth(c.depth);
        EXPECT_EQ(device->useDefaultCamera, c.usesDefault);
        CameraGL const* used = c.usesDefault ? device->defaultCamera : device->cameras.Last();
        EXPECT_EQ(device->GetProjectionMatrix(), used->GetProjectionMatrix());
        EXPECT_EQ(device->GetViewMatrix(), used->GetViewMatrix());
        device->PopCamera();
        device->PopCameraDepth(true);
        for (uint32_t i = 0; i < c.pushed; ++i) {
            device->PopCameraDepth(false);
        }
        EXPECT_EQ(device->cameraDepth, 0u);
    }
    // A device that was never set up has no default camera.
    GraphicsDeviceGL bare;
    bare.SetCameraDepth(true);
    EXPECT_EQ(bare.GetViewMatrix(), Matrix4T<RealFixed>::Identity);
}

TEST_F(DeviceTest, Teardown) {
    struct Case {
        intptr_t display, surface, context;
        char const* calls;
    };
    for (Case const& c : {Case{0, 2, 3, ""},
                          {1, 0, 0, "eglMakeCurrent(0, 0, 0, 0); eglTerminate(1)"},
                          {1, 2, 0, "eglMakeCurrent(0, 0, 0, 0); eglDestroySurface(1, 2); eglTerminate(1)"},
                          {1, 2, 3,
                           "eglMakeCurrent(0, 0, 0, 0); eglDestroySurface(1, 2); eglDestroyContext(1, 3); "
                           "eglTerminate(1)"}}) {
        bool dead = false;
        RefT<CameraGL> kept(new CameraGL);
        {
            GraphicsDeviceGL going;
            going.eglDisplay = reinterpret_cast<void*>(c.display);
            going.eglSurface = reinterpret_cast<void*>(c.surface);
            going.eglContext = reinterpret_cast<void*>(c.context);
            going.PushCamera(new Mortal<CameraGL>(dead));
            going.PushCamera(kept.Get());
            going.defaultCamera = kept.Get();
            Retain(kept.Get());
        }
        EXPECT_TRUE(dead);
        EXPECT_EQ(kept->references, 1);
        EXPECT_EQ(Taken(), Calls(c.calls));
    }
}

class TestLight : public Light {
  public:
    explicit TestLight(std::vector<TestLight*>& order) : order_(order) {}
    void Setup(GraphicsDevice&) override { order_.push_back(this); }

  private:
    std::vector<TestLight*>& order_;
};

TEST_F(DeviceTest, Lights) {
    std::vector<TestLight*> order;
    RefT<TestLight> a(new TestLight(order));
    RefT<TestLight> b(new TestLight(order));
    device->AddLight(nullptr);
    device->RemoveLight(a.Get());
    EXPECT_EQ(device->LightCount(), 0u);
    const std::vector<TestLight*> added = {a.Get(), a.Get(), b.Get(), a.Get()};
    for (TestLight* light : added) {
        device->AddLight(light);
    }
    EXPECT_EQ(device->LightCount(), 4u);
    device->SetupLights();
    EXPECT_EQ(order, added);
    // The walk skips what moved into a removed place, and removes the first equal entry each time. The
    // references stay taken.
    device->RemoveLight(a.Get());
    order.clear();
    device->SetupLights();
    EXPECT_EQ(order, (std::vector<TestLight*>{b.Get(), a.Get()}));
    EXPECT_EQ(a->references, 4);
    a->references -= 3;
    b->references -= 1;
}

class ReadPixelsTest : public RecordedTest {
  protected:
    static std::string Read(std::string const& calls) {
        return Calls(
            "glGetIntegerv(GL_RED_BITS, *); glGetIntegerv(GL_GREEN_BITS, *); "
            "glGetIntegerv(GL_BLUE_BITS, *); " +
            calls + "; glGetError()");
    }
    static std::vector<uint8_t> Counted(size_t size) {
        std::vector<uint8_t> bytes(size);
        std::iota(bytes.begin(), bytes.end(), uint8_t{1});
        return bytes;
    }
};

TEST_F(ReadPixelsTest, FormatFollowsTheColourDepth) {
    struct Case {
        int bits;
        uint32_t formatBefore, format;
        char const* read;
        uint32_t bytes;
    };
    device->SetViewport(RectangleT<int>{5, 7, 645, 487});
    Taken();
    // In the last row the format has fewer bytes than the read: it gets what fits.
    for (Case const& c : {Case{16, 0, 6, "GL_RGBA", 16},
                          {24, 0, 4, "GL_RGB", 12},
                          {30, 6, 6, "GL_RGBA", 16},
                          {0, 7, 7, "GL_RGBA", 16},
                          {30, 4, 4, "GL_RGBA", 12}}) {
        script.colorBits = {c.bits / 3, c.bits - c.bits / 3 * 2, c.bits / 3};
        RefT<TextureGL> texture(new TextureGL);
        texture->format.Set(c.formatBefore);
        Texture* out = texture.Get();
        // The second time into the same texture: still one level.
        for (int pass = 0; pass < 2; ++pass) {
            EXPECT_EQ(device->ReadPixels({10, 20, 14, 21}, &out), 1u);
            EXPECT_EQ(out, texture.Get());
            EXPECT_EQ(Taken(),
                      Read(Replaced("glReadPixels(10, 459, 4, 1, $f, GL_UNSIGNED_BYTE, *)", "$f", c.read)));
            EXPECT_EQ(texture->format.Get(), c.format);
            EXPECT_EQ((std::array{texture->width.Get(), texture->height.Get(), texture->usedWidth.Get(),
                                  texture->usedHeight.Get()}),
                      (std::array{4, 1, 4, 1}));
            EXPECT_EQ(Bytes(*texture), Counted(c.bytes));
            ASSERT_EQ(texture->levels.Count(), 1u);
            EXPECT_EQ(texture->levels[0], (TextureLevel{4, 1, 0, c.bytes}));
        }
    }
}

TEST_F(ReadPixelsTest, NewTextureIsTheCallers) {
    Texture* out = nullptr;
    EXPECT_EQ(device->ReadPixels({0, 0, 2, 2}, &out), 1u);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->references, 0);
    // 6 bytes a row: GL must not pad them.
    EXPECT_EQ(Taken(), Read("glPixelStorei(GL_PACK_ALIGNMENT, 1); "
                            "glReadPixels(0, 478, 2, 2, GL_RGB, GL_UNSIGNED_BYTE, *); "
                            "glPixelStorei(GL_PACK_ALIGNMENT, 4)"));
    delete out;
}

// Drivers may refuse to read without alpha: then the alpha is read and dropped.
TEST_F(ReadPixelsTest, FallsBackToAlpha) {
    script.errors["glReadPixels"] = {GL_INVALID_OPERATION, GL_INVALID_OPERATION};
    RefT<TextureGL> texture(new TextureGL);
    Texture* out = texture.Get();
    EXPECT_EQ(device->ReadPixels({0, 0, 4, 1}, &out), 1u);
    EXPECT_EQ(texture->format.Get(), 4u);
    EXPECT_EQ(Bytes(*texture), (std::vector<uint8_t>{1, 2, 3, 5, 6, 7, 9, 10, 11, 13, 14, 15}));
    const std::string read = "glReadPixels(0, 479, 4, 1, GL_RGB, GL_UNSIGNED_BYTE, *); glGetError(); ";
    EXPECT_EQ(Taken(), Read(read + read + "glReadPixels(0, 479, 4, 1, GL_RGBA, GL_UNSIGNED_BYTE, *)"));
}

// An error from before the read counts too, whichever it is.
TEST_F(ReadPixelsTest, GLErrorsFail) {
    constexpr uint32_t kRefused = GL_INVALID_OPERATION;
    struct Case {
        char const* function;
        int bits;
        std::deque<uint32_t> errors;
    };
    for (Case const& c : {Case{"glReadPixels", 5, {kRefused}},
                          {"glReadPixels", 8, {GL_OUT_OF_MEMORY}},
                          {"glReadPixels", 8, {kRefused, kRefused, kRefused}},
                          {"glGetIntegerv", 5, {GL_INVALID_VALUE}},
                          {"glGetIntegerv", 8, {GL_INVALID_VALUE}},
                          {"glGetIntegerv", 8, {kRefused}}}) {
        SCOPED_TRACE(testing::Message() << c.function << ' ' << c.bits << ' ' << c.errors.front());
        script.colorBits = {c.bits, c.bits == 5 ? 6 : 8, c.bits};
        RefT<TextureGL> texture(new TextureGL);
        // A texture of the device's own is not handed out either; it is lost.
        for (Texture* const given : {texture.Get(), static_cast<TextureGL*>(nullptr)}) {
            script.errors = {{c.function, c.errors}};
            Texture* out = given;
            EXPECT_EQ(device->ReadPixels({0, 0, 4, 4}, &out), 0u);
            EXPECT_EQ(out, given);
        }
        EXPECT_EQ(texture->levels.Count(), 0u);
        if (c.function == std::string("glReadPixels")) {
            EXPECT_EQ(Bytes(*texture), std::vector<uint8_t>(texture->pixels.size));  // zeroed before the read
        }
    }
}

// A store beyond what memory can hold takes the caller's texture with it.
TEST_F(ReadPixelsTest, StoreTooLarge) {
    bool dead = false;
    Texture* out = new Mortal<TextureGL>(dead);
    EXPECT_EQ(device->ReadPixels({0, 0, 65536, 32768}, &out), 0u);
    EXPECT_TRUE(dead);
}

// Zero w yields the origin instead of a trap. Odd viewports halve downwards; left and top count.
TEST_F(DeviceTest, ProjectCoordinate) {
    struct Case {
        RectangleT<int> viewport;
        Vector4T<RealFixed> point;
        int x, y;
    };
    constexpr RectangleT<int> kWhole{0, 0, 640, 480};
    for (Case const& c : {Case{kWhole, {Real(0), Real(0), Real(0), Real(1)}, 320, 240},
                          {kWhole, {RealFixed{0x8000}, RealFixed{0x8000}, Real(0), Real(1)}, 480, 120},
                          {kWhole, {Real(1), Real(-1), Real(0), Real(2)}, 480, 360},
                          {kWhole, {Real(-1), Real(1), Real(0), Real(1)}, 0, 0},
                          {kWhole, {Real(1), Real(1), Real(0), Real(0)}, 320, 240},
                          {{100, 50, 201, 83}, {Real(0), Real(0), Real(0), Real(1)}, 150, 66}}) {
        device->SetViewport(c.viewport);
        const auto projected = device->ProjectCoordinate(Matrix4T<RealFixed>::Identity, c.point);
        EXPECT_EQ(projected.x.raw, int64_t{c.x} << 32);
        EXPECT_EQ(projected.y.raw, int64_t{c.y} << 32);
    }
}

}  // namespace
}  // namespace zorvan
