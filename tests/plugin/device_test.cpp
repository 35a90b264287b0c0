// The device's GL state, viewport, camera stack, teardown, lights, read-back and projection.
#include "core/light.h"
#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

TEST(DeviceInitialize, SetsStateAndBuildsTheSolidProgram) {
    Traces traces;
    for (const bool buildable : {true, false}) {
        recording_gl::Reset();
        GraphicsDeviceGL device;
        EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {0, 4}), 0u);
        EXPECT_EQ(TakeLog(), "");
        EXPECT_EQ(device.defaultCamera, nullptr);
        script.linkError = buildable ? std::optional<std::string>() : "none";
        EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgb565, {640, 480}), 1u);
        const std::unique_ptr<ShaderGL> solid(device.solidShader);
        EXPECT_EQ(solid != nullptr, buildable);
        const std::string state = Calls(
            "ClearStencil(0); Disable(STENCIL_TEST); Disable(SCISSOR_TEST); FrontFace(CCW); Enable(DITHER); "
            "ClearColor(0, 0, 0, 1); Disable(CULL_FACE); Disable(DEPTH_TEST); DepthFunc(LEQUAL); "
            "Enable(BLEND); ");
        const std::string calls = TakeLog();
        EXPECT_EQ(calls.substr(0, buildable ? calls.size() : state.size()),
                  state + (buildable ? Built(1) : ""));
        CameraGL const& camera = *device.defaultCamera;
        EXPECT_EQ(camera.references, 1);
        EXPECT_EQ(camera.viewRectangle.Get(), (RectangleT<RealFixed>{{}, {}, Real(640), Real(480)}));
        // Half the film's height over the lens, and a place in front of the middle; both matrices are there
        // at once.
        EXPECT_NEAR(camera.GetProjectionMatrix()[5].ToFloat(), 50 / (60 * 480 / 640 / 2.0), 0.02);
        EXPECT_EQ(camera.GetViewMatrix()[12], Real(-320));
        EXPECT_EQ(camera.GetViewMatrix()[13], Real(240));
    }
    EXPECT_EQ(traces.Take(), Lines{"none"});
}

using DeviceTest = RecordedTest;
using Rectangle = RectangleT<int>;

// The rectangle form of SetViewport hands GL the viewport from before; masks do nothing.
TEST_F(DeviceTest, FrameCalls) {
    List<Mask*> masks;
    device->PushMasks(masks);
    device->PopMasks(masks);
    device->Clear();
    device->SetClearColor({RealFixed{0x8000}, RealFixed{0x4000}, Real(1), RealFixed{-0x10000}});
    EXPECT_EQ(device->GetClearColor().red, RealFixed{0x8000});
    device->Present();
    device->SetViewport(Rectangle{10, 20, 110, 220});
    EXPECT_EQ(device->GetViewport(), (Rectangle{10, 20, 110, 220}));
    device->SetViewport(Rectangle{0, 0, 5, 5});
    device->SetViewport(1, 2, 30, 40);
    EXPECT_EQ(device->GetViewport(), (Rectangle{1, 2, 31, 42}));
    device->Reset({2, 3, 12, 23});
    EXPECT_EQ(TakeLog(),
              Calls("Clear(0x4500); ClearColor(0.5, 0.25, 1, -1); Flush(); Viewport(0, 0, 640, 480); "
                    "Viewport(10, 20, 100, 200); Viewport(1, 2, 30, 40); Viewport(2, 3, 10, 20)"));
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
    device->PushCamera2D(Real(640), Real(480));
    EXPECT_EQ(device->cameras.Last()->references, 1);
    EXPECT_EQ(RawElements(device->GetProjectionMatrix()),
              (Elements{205, 0, 0, 0, 0, -273, 0, 0, 0, 0, -65536, 0, -65536, 65536, 0, 65536}));
    EXPECT_EQ(device->GetViewMatrix(), Matrix4T<RealFixed>::Identity);
    EXPECT_EQ(TakeLog(), "");
}

// The default camera is in use without others, and where depth is true outside every depth that was pushed.
TEST_F(DeviceTest, CameraDepth) {
    EXPECT_EQ(device->GetProjectionMatrix(), Matrix4T<RealFixed>::Identity);
    device->PopCameraDepth(false);
    std::string used;  // the default camera or the top one, for depth false and true
    for (auto const& [pushed, cameras] :
         std::vector<std::pair<uint32_t, int>>{{0, 0}, {0, 2}, {2, 0}, {2, 2}}) {
        for (uint32_t i = 0; i < pushed; ++i) {
            device->PushCameraDepth(false);
        }
        device->PushCameraDepth(true);
        device->PopCameraDepth(true);
        EXPECT_EQ(device->cameraDepth, pushed);
        for (int i = 0; i < cameras; ++i) {
            device->PushCamera2D(Real(11 + i), Real(11));
        }
        for (const bool depth : {false, true}) {
            device->SetCameraDepth(depth);
            const Matrix4T<RealFixed> matrix = device->GetProjectionMatrix();
            used += matrix == device->defaultCamera->GetProjectionMatrix()    ? "default "
                    : matrix == device->cameras.Last()->GetProjectionMatrix() ? "top "
                                                                              : "other ";
        }
        device->PopCamera();
        device->PopCamera();
        while (device->cameraDepth > 0) {
            device->PopCameraDepth(false);
        }
    }
    EXPECT_EQ(used, "default default top default default default top top ");
    // A device that was never set up has no default camera.
    GraphicsDeviceGL bare;
    bare.SetCameraDepth(true);
    EXPECT_EQ(bare.GetViewMatrix(), Matrix4T<RealFixed>::Identity);
}

TEST_F(DeviceTest, Teardown) {
    using Case = std::tuple<intptr_t, intptr_t, intptr_t, char const*>;
    for (auto const& [display, surface, context, calls] :
         {Case{0, 2, 3, ""},
          {1, 0, 0, "eglMakeCurrent(0, 0, 0, 0); eglTerminate(1)"},
          {1, 2, 0, "eglMakeCurrent(0, 0, 0, 0); eglDestroySurface(1, 2); eglTerminate(1)"},
          {1, 2, 3,
           "eglMakeCurrent(0, 0, 0, 0); eglDestroySurface(1, 2); eglDestroyContext(1, 3); "
           "eglTerminate(1)"}}) {
        bool dead = false;
        const RefT<CameraGL> kept(new CameraGL);
        auto going = std::make_unique<GraphicsDeviceGL>();
        going->eglDisplay = reinterpret_cast<void*>(display);
        going->eglSurface = reinterpret_cast<void*>(surface);
        going->eglContext = reinterpret_cast<void*>(context);
        going->PushCamera(new Mortal<CameraGL>(dead));
        going->PushCamera(kept.Get());
        Retain(going->defaultCamera = kept.Get());
        going.reset();
        EXPECT_TRUE(dead);
        EXPECT_EQ(kept->references, 1);
        EXPECT_EQ(TakeLog(), Calls(calls));
    }
}

class TestLight : public Light {
  public:
    explicit TestLight(std::vector<TestLight*>& order) : order_(order) {}
    void Setup(GraphicsDevice&) override { order_.push_back(this); }

  private:
    std::vector<TestLight*>& order_;
};

// Removing skips what moved into a removed place, and removes the first equal entry each time. References
// stay taken.
TEST_F(DeviceTest, Lights) {
    std::vector<TestLight*> order;
    const RefT<TestLight> a(new TestLight(order)), b(new TestLight(order));
    device->AddLight(nullptr);
    device->RemoveLight(a.Get());
    EXPECT_EQ(device->LightCount(), 0u);
    for (TestLight* light : {a.Get(), a.Get(), b.Get(), a.Get()}) {
        device->AddLight(light);
    }
    EXPECT_EQ(device->LightCount(), 4u);
    device->SetupLights();
    device->RemoveLight(a.Get());
    device->SetupLights();
    EXPECT_EQ(order, (std::vector<TestLight*>{a.Get(), a.Get(), b.Get(), a.Get(), b.Get(), a.Get()}));
    EXPECT_EQ(a->references, 4);
    a->references -= 3;
    b->references -= 1;
}

class ReadPixelsTest : public RecordedTest {
  protected:
    // Into the caller's texture, which must be what comes out, or into a new one.
    std::vector<uint8_t> Read(Rectangle const& area, RefT<Texture>& texture, uint32_t result = 1) {
        Texture* out = texture.Get();
        EXPECT_EQ(device->ReadPixels(area, &out), result);
        EXPECT_TRUE(out == texture.Get() || (!texture && result == 1 && out->references == 0));
        texture = RefT<Texture>(out);
        return out == nullptr ? std::vector<uint8_t>()
                              : std::vector<uint8_t>(out->pixels.data, out->pixels.data + out->pixels.size);
    }
    // The colour depth is asked for first, and GL's errors last.
    static std::string ReadCalls(std::string const& calls, std::string const& window) {
        return Calls("GetIntegerv(RED_BITS, *); GetIntegerv(GREEN_BITS, *); GetIntegerv(BLUE_BITS, *); " +
                         Replaced(Replaced(calls, "@", ", UNSIGNED_BYTE, *)"), "tight RGB",
                                  "PixelStorei(PACK_ALIGNMENT, 1); ReadPixels($, RGB, UNSIGNED_BYTE, *); "
                                  "PixelStorei(PACK_ALIGNMENT, 4)") +
                         "; GetError()",
                     window);
    }
    static std::vector<uint8_t> Counted(size_t size) {
        std::vector<uint8_t> bytes(size);
        std::iota(bytes.begin(), bytes.end(), uint8_t{1});
        return bytes;
    }
};

// The viewport is 480 pixels high. Rows of 3 bytes per pixel that are no whole words must not be padded, and
// a format of fewer bytes than the read gets what fits.
TEST_F(ReadPixelsTest, FormatsAndAreas) {
    constexpr uint32_t kNew = 1000;  // for no texture of the caller's
    device->SetViewport(Rectangle{5, 7, 645, 487});
    using Case =
        std::tuple<std::array<int, 3>, uint32_t, Rectangle, char const*, char const*, uint32_t, uint32_t>;
    for (auto const& [bits, given, area, window, read, format, size] : {
             Case{{5, 6, 5}, 7, {10, 20, 14, 21}, "10, 459, 4, 1", "ReadPixels($, RGBA@", 6, 16},
             {{5, 6, 5}, kNew, {1, 0, 4, 2}, "1, 478, 3, 2", "ReadPixels($, RGBA@", 6, 24},
             {{8, 8, 8}, 0, {10, 20, 14, 21}, "10, 459, 4, 1", "ReadPixels($, RGB@", 4, 12},
             {{8, 8, 8}, kNew, {10, 20, 13, 22}, "10, 458, 3, 2", "tight RGB", 4, 18},
             {{8, 8, 8}, 4, {-3, -2, 2, 1}, "-3, 479, 5, 3", "tight RGB", 4, 45},
             {{8, 8, 8}, 4, {638, 478, 642, 482}, "638, -2, 4, 4", "ReadPixels($, RGB@", 4, 48},
             {{10, 10, 10}, 6, {10, 20, 14, 21}, "10, 459, 4, 1", "ReadPixels($, RGBA@", 6, 16},
             {{0, 0, 0}, kNew, {10, 20, 14, 21}, "10, 459, 4, 1", "ReadPixels($, RGBA@", 6, 16},
             {{0, 0, 0}, 4, {10, 20, 13, 21}, "10, 459, 3, 1", "ReadPixels($, RGBA@", 4, 9},
             {{10, 10, 10}, 0, {-1, 0, 2, 1}, "-1, 479, 3, 1", "ReadPixels($, RGBA@", 0, 6},
         }) {
        SCOPED_TRACE(testing::Message() << bits[0] << ' ' << given << ' ' << window);
        script.colorBits = bits;
        RefT<Texture> texture(given == kNew ? nullptr : new TextureGL);
        if (given != kNew) {
            texture->format.Set(given);
        }
        // The second time into the same texture: still one level.
        for (int pass = 0; pass < 2; ++pass) {
            TakeLog();
            EXPECT_EQ(Read(area, texture), Counted(size));
            EXPECT_EQ(TakeLog(), ReadCalls(read, window));
            EXPECT_EQ(texture->format.Get(), format);
            const auto [width, height] = SizeOf(area);
            EXPECT_EQ((std::array{texture->width.Get(), texture->height.Get(), texture->usedWidth.Get(),
                                  texture->usedHeight.Get()}),
                      (std::array{width, height, width, height}));
            ASSERT_EQ(texture->levels.Count(), 1u);
            EXPECT_EQ(texture->levels[0],
                      (TextureLevel{static_cast<uint32_t>(width), static_cast<uint32_t>(height), 0, size}));
        }
    }
}

// Drivers may refuse to read without alpha, time and again: then the alpha is read and dropped.
TEST_F(ReadPixelsTest, DropsAlpha) {
    for (const int width : {1, 4}) {
        script.errors["ReadPixels"] = {GL_INVALID_OPERATION, GL_INVALID_OPERATION};
        RefT<Texture> texture;
        const std::vector<uint8_t> expected = {1, 2, 3, 5, 6, 7, 9, 10, 11, 13, 14, 15};
        EXPECT_EQ(Read({0, 0, width, 1}, texture),
                  std::vector(expected.begin(), expected.begin() + 3 * width));
        EXPECT_EQ(texture->format.Get(), 4u);
        const std::string read = width == 1 ? "tight RGB; GetError(); " : "ReadPixels($, RGB@; GetError(); ";
        EXPECT_EQ(TakeLog(), ReadCalls(read + read + "ReadPixels($, RGBA@",
                                       Calls("0, 479, $, 1", std::to_string(width))));
    }
}

// An error from before the read counts too, whichever it is. Neither the caller's texture nor a new one,
// which is lost, is handed out; its store is zeroed before the read.
TEST_F(ReadPixelsTest, GLErrorsFail) {
    constexpr uint32_t kRefused = GL_INVALID_OPERATION;
    const std::tuple<char const*, int, std::deque<uint32_t>> cases[] = {
        {"ReadPixels", 5, {kRefused}},
        {"ReadPixels", 8, {GL_OUT_OF_MEMORY}},
        {"ReadPixels", 8, {kRefused, GL_OUT_OF_MEMORY}},
        {"ReadPixels", 8, {kRefused, kRefused, kRefused}},
        {"GetIntegerv", 5, {GL_INVALID_VALUE}},
        {"GetIntegerv", 8, {GL_INVALID_VALUE}},
        {"GetIntegerv", 8, {kRefused}}};
    for (auto const& [function, bits, errors] : cases) {
        SCOPED_TRACE(testing::Message() << function << ' ' << bits << ' ' << errors.size());
        script.colorBits = {bits, bits == 5 ? 6 : 8, bits};
        for (RefT<Texture> texture : {RefT<Texture>(new TextureGL), RefT<Texture>()}) {
            script.errors = {{function, errors}};
            const std::vector<uint8_t> bytes = Read({0, 0, 4, 4}, texture, 0);
            EXPECT_TRUE(*function == 'G' || bytes == std::vector<uint8_t>(bytes.size()));
            EXPECT_TRUE(!texture || texture->levels.IsEmpty());
        }
    }
}

// A store that memory cannot hold, or of less than no size, takes the caller's texture with it.
TEST_F(ReadPixelsTest, StoreThatCannotBe) {
    for (Rectangle const& area : {Rectangle{0, 0, 65536, 32768}, {4, 0, 0, 4}, {0, 4, 4, 0}}) {
        bool dead = false;
        Texture* out = new Mortal<TextureGL>(dead);
        EXPECT_EQ(device->ReadPixels(area, &out), 0u);
        EXPECT_TRUE(dead);
    }
}

// Zero w yields the origin instead of a trap. Odd viewports halve downwards; left and top count.
TEST_F(DeviceTest, ProjectCoordinate) {
    constexpr Rectangle kWhole{0, 0, 640, 480};
    constexpr Rectangle kOdd{100, 50, 201, 83};
    const std::tuple<Rectangle, int, int, int, int, int> cases[] = {
        {kWhole, 0, 0, 2, 320, 240}, {kWhole, 1, 1, 2, 480, 120}, {kWhole, 1, -1, 2, 480, 360},
        {kWhole, -2, 2, 2, 0, 0},    {kWhole, 1, 1, 0, 320, 240}, {kOdd, 0, 0, 1, 150, 66}};
    for (auto const& [viewport, pointX, pointY, w, x, y] : cases) {
        device->SetViewport(viewport);
        const auto projected = device->ProjectCoordinate(Matrix4T<RealFixed>::Identity,
                                                         {Real(pointX), Real(pointY), Real(0), Real(w)});
        EXPECT_EQ(projected.x.raw, int64_t{x} << 32);
        EXPECT_EQ(projected.y.raw, int64_t{y} << 32);
    }
    // (2, 1) in the world less the camera's (1, 0), a quarter of its view to the right and in the middle of
    // its height.
    const auto camera =
        Make<CameraGL>("{'orthographic': true, 'viewRectangle': [0, 0, 4, 2], 'position': [1, 0, 0]}");
    const auto node = Make<TransformNode>("{'position': [2, 0, 0]}");
    Update(*camera);
    Update(*node);
    device->PushCamera(camera.Get());
    device->SetViewport(kWhole);
    const auto projected =
        device->ProjectCoordinate(node->GetWorldMatrix(), {Real(0), Real(1), Real(0), Real(1)});
    EXPECT_EQ((std::array{projected.x.raw, projected.y.raw}),
              (std::array{int64_t{160} << 32, int64_t{240} << 32}));
}

}  // namespace
}  // namespace zorvan
