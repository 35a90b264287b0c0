#include "tools/zorvan/stage.h"

#include <GLES2/gl2.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "core/camera.h"
#include "core/out_of_memory.h"
#include "core/pixel_format.h"
#include "tools/zorvan/atitc.h"
#include "tools/zorvan/egl_context.h"

namespace zorvan::tool {
namespace {

constexpr PixelSize kDefaultSize = {640, 480};

DeviceFormat::Enum ToDeviceFormat(SurfaceFormat format) {
    switch (format) {
        case SurfaceFormat::Rgb565:
            return DeviceFormat::Rgb565;
        case SurfaceFormat::Rgb888:
            return DeviceFormat::Rgb888;
        case SurfaceFormat::Rgba8888:
            return DeviceFormat::Rgba8888;
    }
    return DeviceFormat::Rgba8888;
}

std::string GlText(GLenum name) {
    auto const* text = reinterpret_cast<char const*>(glGetString(name));
    return text == nullptr ? "unknown" : text;
}

// Drawing may leave errors behind that say nothing about a read-back; a lost context never runs out of them.
void ClearGlErrors() {
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i) {
    }
}

// Colour, depth and a picture that is read back must fit into a limit of their own.
Status CheckSurface(PixelSize const& size, uint64_t limit) {
    constexpr uint64_t kBytesPerPixel = 4 + 4 + 4;
    const uint64_t bytes =
        kBytesPerPixel * static_cast<uint64_t>(size.width) * static_cast<uint64_t>(size.height);
    if (bytes <= limit) {
        return std::nullopt;
    }
    return Failure{ExitCode::Memory, "surface: got " + std::to_string(bytes) + " bytes for " + ToText(size) +
                                         " pixels, expected at most " + std::to_string(limit) +
                                         " (the memory limit)"};
}

// Averages squares of factor x factor pixels.
Image Shrink(Image image, uint32_t factor) {
    if (factor == 1) {
        return image;
    }
    Image small{image.width / factor, image.height / factor, {}};
    small.rgba.reserve(size_t{4} * small.width * small.height);
    for (uint32_t y = 0; y < small.height; ++y) {
        for (uint32_t i = 0; i < 4 * small.width; ++i) {
            uint32_t sum = factor * factor / 2;
            for (uint32_t n = 0; n < factor * factor; ++n) {
                const size_t from =
                    size_t{y * factor + n / factor} * image.width + i / 4 * factor + n % factor;
                sum += image.rgba[4 * from + i % 4];
            }
            small.rgba.push_back(static_cast<uint8_t>(sum / (factor * factor)));
        }
    }
    return small;
}

}  // namespace

void StageOptions::AddTo(CLI::App& app) {
    AddValue(app, "--surface", surface, "565, 888 or 8888: colour bits of the surface; default 888");
    app.add_option("--supersample", supersample,
                   "Draw N times the pixels in each direction and average them, 1 to 8; default 1")
        ->check(CLI::Range(1, 8));
    AddToViewer(app);
}

void StageOptions::AddToViewer(CLI::App& app) {
    AddValue(app, "--size", size, "WIDTHxHEIGHT of the surface in pixels; default: the scene's own");
    AddValue(app, "--background", background, "#rrggbb or #rrggbbaa; default: the scene's own, or black");
    AddValue(app, "--camera2d", camera2D,
             "WIDTHxHEIGHT of the screen-space camera, or none; default: the scene's own, or none");
    app.add_flag("--decode-atitc", decodeAtitc,
                 "Unpack ATITC textures before GL gets them, for drivers that do not know them");
    AddSourceOptions(app);
}

Result<std::unique_ptr<Stage>> Stage::Open(StageOptions const& options, ContextMaker const& makeContext) {
    Result<std::unique_ptr<LoadedScene>> loaded = LoadedScene::Open(options);
    if (!loaded) {
        return loaded.GetFailure();
    }
    std::unique_ptr<Stage> stage(new Stage);
    stage->loaded_ = std::move(*loaded);
    stage->options_ = options;
    const Status failure = stage->Prepare(makeContext ? makeContext : EglContext::Create);
    if (OutOfMemory::Take()) {
        return NoMemoryFor(options.scene);
    }
    if (failure) {
        return *failure;
    }
    return stage;
}

// Scene, programs, device, then (by the members' own order) registry, plug-in and context.
Stage::~Stage() {
    if (loaded_) {
        loaded_->Unload();
    }
}

Status Stage::Prepare(ContextMaker const& makeContext) {
    Scene const& scene = loaded_->GetScene();
    supersample_ = options_.supersample;
    const bool hasSize = scene.size.width > 0 && scene.size.height > 0;
    size_ = options_.size.value_or(hasSize ? PixelSize{scene.size.width, scene.size.height} : kDefaultSize);
    const PixelSize surface = {size_.width * supersample_, size_.height * supersample_};
    if (Status failure = CheckSurface(surface, options_.MemoryLimit())) {
        return failure;
    }
    Result<std::unique_ptr<GlContext>> context = makeContext(options_.surface, surface);
    if (!context) {
        return context.GetFailure();
    }
    context_ = std::move(*context);
    device_.reset(loaded_->GetPlugin().CreateDevice());
    if (device_ == nullptr || device_->Initialize(nullptr, ToDeviceFormat(options_.surface), size_) == 0) {
        return Failure{ExitCode::Runtime, "the plug-in's device failed to start"};
    }
    Resize(size_);
    return ApplyScene();
}

Status Stage::ApplyScene() {
    Scene& scene = loaded_->GetScene();
    camera2D_ = options_.camera2D.value_or(
        Camera2D{scene.camera2d.has_value(), scene.camera2d.value_or(SizeT<RealFixed>{})});
    device_->SetClearColor(options_.background.value_or(scene.background));
    if (options_.decodeAtitc) {
        return DecodeAtitc(scene, loaded_->GetPlugin());
    }
    WarnOfAtitc(scene, GlText(GL_EXTENSIONS));
    return std::nullopt;
}

Status Stage::Reload() {
    if (Status failure = loaded_->Replace(options_.scene)) {
        return failure;
    }
    lastTime_.reset();
    return ApplyScene();
}

void Stage::Resize(PixelSize const& size) {
    size_ = size;
    device_->SetViewport(0, 0, size_.width * supersample_, size_.height * supersample_);
}

void Stage::PushCamera() {
    if (!camera2D_.enabled) {
        return;
    }
    if (!cameraView_) {
        device_->PushCamera2D(camera2D_.size.width, camera2D_.size.height);
        return;
    }
    // As the device's screen-space camera, but for the rectangle.
    const RefT<Camera> camera(static_cast<Camera*>(loaded_->GetRegistry().Create(MakeClassId(u"Camera"))));
    camera->orthographic.Set(true);
    camera->viewRectangle.Set(*cameraView_);
    camera->nearPlane.Set(-kOne<RealFixed>);
    camera->farPlane.Set(kOne<RealFixed>);
    camera->Update(*device_, RealFixed{});
    device_->PushCamera(camera.Get());
}

List<Node*> Stage::Select(Vector2T<RealFixed> const& point) {
    List<Node*> nodes;
    device_->SetSelectionMode(point, &nodes);
    PushCamera();
    loaded_->GetScene().root->Render(*device_);
    if (camera2D_.enabled) {
        device_->PopCamera();
    }
    device_->SetRenderMode();
    return nodes;
}

FrameTimes Stage::Draw(RealFixed time) {
    FrameTimes times;
    const Stopwatch whole;
    device_->Clear();
    PushCamera();
    const RealFixed delta = lastTime_ ? time - *lastTime_ : RealFixed{};
    lastTime_ = time;
    const Stopwatch update;
    loaded_->GetScene().root->Update(*device_, time, delta, false);
    times.update = update.Milliseconds();
    const Stopwatch render;
    loaded_->GetScene().root->Render(*device_);
    device_->Present();
    glFinish();
    times.render = render.Milliseconds();
    if (camera2D_.enabled) {
        device_->PopCamera();
    }
    times.total = whole.Milliseconds();
    return times;
}

Result<Image> Stage::Read() const {
    if (OutOfMemory::Take()) {
        return NoMemoryFor(options_.scene);  // the picture may lack parts
    }
    const PixelSize surface = {size_.width * supersample_, size_.height * supersample_};
    Image image{static_cast<uint32_t>(surface.width), static_cast<uint32_t>(surface.height), {}};
    const size_t row = size_t{4} * image.width;
    image.rgba.resize(row * image.height);
    ClearGlErrors();
    glReadPixels(0, 0, surface.width, surface.height, GL_RGBA, GL_UNSIGNED_BYTE, image.rgba.data());
    if (const GLenum error = glGetError(); error != GL_NO_ERROR) {
        char text[64];
        std::snprintf(text, sizeof text, "GL: glReadPixels failed with error 0x%04X", error);
        return Failure{ExitCode::Runtime, text};
    }
    // GL's first row is the bottom one.
    for (uint32_t y = 0; y < image.height / 2; ++y) {
        std::swap_ranges(&image.rgba[y * row], &image.rgba[y * row] + row,
                         &image.rgba[(image.height - 1 - y) * row]);
    }
    return Shrink(std::move(image), static_cast<uint32_t>(supersample_));
}

Result<Image> Stage::ReadArea(RectangleT<int> const& area) {
    if (area.right > size_.width || area.bottom > size_.height) {
        return Failure{ExitCode::Usage, "--area: got an end at " + std::to_string(area.right) + ", " +
                                            std::to_string(area.bottom) + ", expected one inside the " +
                                            ToText(size_) + " of the picture"};
    }
    const int n = supersample_;
    Texture* read = nullptr;
    ClearGlErrors();
    const bool isRead =
        device_->ReadPixels({area.left * n, area.top * n, area.right * n, area.bottom * n}, &read) != 0;
    const RefT<Texture> texture(read);
    if (OutOfMemory::Take()) {
        return NoMemoryFor(options_.scene);
    }
    if (!isRead) {
        return Failure{ExitCode::Runtime, "the device failed to read its pixels back"};
    }
    const auto [width, height, offset, bytes] = texture->levels[0];
    return Shrink(UnpackPixels(texture->pixels.data, texture->format.Get(), width, height),
                  static_cast<uint32_t>(n));
}

std::vector<std::pair<std::string, std::string>> Stage::DescribeGl() const {
    return {{"egl", context_->Describe()},
            {"vendor", GlText(GL_VENDOR)},
            {"renderer", GlText(GL_RENDERER)},
            {"version", GlText(GL_VERSION)},
            {"glsl", GlText(GL_SHADING_LANGUAGE_VERSION)},
            {"plugin", loaded_->GetPlugin().GetPath()}};
}

}  // namespace zorvan::tool
