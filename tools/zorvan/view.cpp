#include "tools/zorvan/view.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "core/image_file.h"
#include "core/sprite.h"
#include "tools/common/printable.h"
#include "tools/zorvan/describe_node.h"
#include "tools/zorvan/draw_counter.h"
#include "tools/zorvan/file_watch.h"
#include "tools/zorvan/overlay.h"
#include "tools/zorvan/statistics.h"
#include "tools/zorvan/view_state.h"
#include "tools/zorvan/view_window.h"

namespace zorvan::tool {
namespace {

constexpr double kFrameMilliseconds = 1000.0 / 60;  // at least, for displays that do not wait
constexpr int kIdleMilliseconds = 50;
constexpr double kWatchMilliseconds = 250;
constexpr double kLongestStep = 0.25;  // seconds that a frame may advance the time

double ToDouble(RealFixed value) {
    return static_cast<double>(value.raw) / 65536;
}

class Viewer {
  public:
    explicit Viewer(ViewOptions const& options) : options_(options) {}

    Status Run();

  private:
    Status Open();
    // What the state needs to know about the scene as loaded.
    void TakeScene();
    // Passes the state's camera and the window's size on.
    void ShowCamera();
    void Frame();
    void CheckFiles();
    Status CheckSceneToReload() const;
    void Reload();
    void Select(WindowPoint point);
    Status SaveScreenshot();
    std::string OverlayText() const;

    ViewOptions const& options_;
    std::unique_ptr<Stage> stage_;
    ViewWindow* window_ = nullptr;  // the stage's
    std::unique_ptr<Overlay> overlay_;
    ViewState state_;
    FileWatch watch_;
    Stopwatch sinceWatch_, sinceFrame_;
    std::string error_;
    double drawMilliseconds_ = 0, cycleMilliseconds_ = 0;  // running means
    uint64_t drawCalls_ = 0;
    bool changed_ = true;  // since the last drawing
};

Status Viewer::Open() {
    const std::string title = std::filesystem::path(options_.stage.scene).filename().string() + " - zorvan";
    const ContextMaker makeWindow = [&](SurfaceFormat format,
                                        PixelSize const& size) -> Result<std::unique_ptr<GlContext>> {
        Result<std::unique_ptr<ViewWindow>> window = ViewWindow::Create(title, format, size);
        if (!window) {
            return window.GetFailure();
        }
        window_ = window->get();
        return std::unique_ptr<GlContext>(std::move(*window));
    };
    watch_.Start(options_.stage.scene);
    Result<std::unique_ptr<Stage>> stage = Stage::Open(options_.stage, makeWindow);
    if (!stage) {
        return stage.GetFailure();
    }
    stage_ = std::move(*stage);
    overlay_ = Overlay::Create(*stage_, FindOverlayFont());
    if (overlay_ == nullptr) {
        std::fprintf(stderr, "zorvan: found no font for the overlay (Debian: fonts-dejavu-core)\n");
    }
    TakeScene();
    state_.Seek(ToDouble(options_.time));
    if (options_.paused) {
        state_.Apply(ViewAction::TogglePause);
    }
    return std::nullopt;
}

void Viewer::TakeScene() {
    Timeline const& root = *stage_->GetLoaded().GetScene().root;
    ViewedScene scene;
    if (root.rate.Get().raw > 0) {
        scene.framesPerSecond = ToDouble(root.rate.Get());
        scene.seconds = ToDouble(root.length.Get()) / scene.framesPerSecond;
    }
    scene.camera = stage_->GetCamera2D();
    state_.SetScene(scene);
}

Status Viewer::Run() {
    if (Status failure = Open()) {
        return failure;
    }
    std::printf("%s: %s; see zorvan view --help for the keys\n",
                tools::Printable(options_.stage.scene).c_str(), ToText(stage_->GetSize()).c_str());
    while (true) {
        std::fflush(stdout);
        changed_ |= window_->HandleEvents(state_);
        const ViewRequests requests = state_.TakeRequests();
        if (requests.quit) {
            return std::nullopt;
        }
        if (requests.reload) {
            Reload();
        }
        ShowCamera();
        if (requests.click) {
            Select(*requests.click);
        }
        CheckFiles();
        if (state_.IsPaused() && !changed_) {
            window_->Wait(kIdleMilliseconds);
            sinceFrame_ = {};
            continue;
        }
        Frame();
        if (requests.screenshot) {
            if (Status failure = SaveScreenshot()) {
                std::fprintf(stderr, "zorvan: %s\n", tools::Printable(failure->message).c_str());
            }
        }
        window_->Swap();
        if (const double rest = kFrameMilliseconds - sinceFrame_.Milliseconds(); rest >= 1) {
            window_->Wait(static_cast<int>(rest));
        }
    }
}

void Viewer::ShowCamera() {
    const PixelSize size = window_->GetSize();
    if (!(size == stage_->GetSize())) {
        stage_->Resize(size);
    }
    state_.SetWindow(size);
    stage_->SetCameraView(state_.GetCameraView());
}

void Viewer::Frame() {
    const double cycle = sinceFrame_.Milliseconds();
    sinceFrame_ = {};
    state_.Advance(std::min(cycle / 1000, kLongestStep));
    const uint64_t callsBefore = DrawCallCount();
    const FrameTimes times = stage_->Draw(state_.GetTime());
    drawCalls_ = DrawCallCount() - callsBefore;
    const auto mean = [](double& value, double next) {
        constexpr double kWeight = 0.1;
        value = value == 0 ? next : value + kWeight * (next - value);
    };
    mean(drawMilliseconds_, times.total);
    mean(cycleMilliseconds_, cycle);
    if (overlay_ != nullptr && state_.ShowsOverlay()) {
        overlay_->Draw(OverlayText(), error_);
    }
    changed_ = false;
}

std::string Viewer::OverlayText() const {
    char text[256];
    const double rate = cycleMilliseconds_ > 0 ? 1000 / cycleMilliseconds_ : 0;
    std::snprintf(text, sizeof text,
                  "%.1f ms  %.0f fps  %llu draws  %.2f MB of textures\n%.2f s  speed %g  zoom %.0f %%%s",
                  drawMilliseconds_, rate, static_cast<unsigned long long>(drawCalls_),
                  static_cast<double>(stage_->GetLoaded().GetTextureBytes()) / 1e6, state_.GetSeconds(),
                  state_.GetSpeed(), 100 * state_.GetZoom(), state_.IsPaused() ? "  paused" : "");
    return text;
}

void Viewer::CheckFiles() {
    if (sinceWatch_.Milliseconds() < kWatchMilliseconds) {
        return;
    }
    sinceWatch_ = {};
    if (watch_.Changed()) {
        Reload();
    }
}

Status Viewer::CheckSceneToReload() const {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(options_.stage.scene, error);
    // The window must not wait for a pipe's writer. The others say themselves what is wrong with them.
    if (!std::filesystem::is_other(status)) {
        return std::nullopt;
    }
    return Failure{ExitCode::Io,
                   options_.stage.scene + ": got a pipe or a device, expected a file to load again"};
}

void Viewer::Reload() {
    // Before loading: what changes meanwhile is noticed next time.
    watch_.Start(options_.stage.scene);
    changed_ = true;
    Status failure = CheckSceneToReload();
    failure = failure ? failure : stage_->Reload();
    if (failure) {
        error_ = tools::Printable(failure->message);
        std::fprintf(stderr, "zorvan: %s\n", error_.c_str());
        return;
    }
    error_.clear();
    TakeScene();
    std::printf("%s: loaded again\n", tools::Printable(options_.stage.scene).c_str());
}

void Viewer::Select(WindowPoint point) {
    // The middle of the pixel.
    const RealFixed half = RealFixed::FromRaw(0x8000);
    const List<Node*> nodes =
        stage_->Select({RealFixed::FromInt(point.x) + half, RealFixed::FromInt(point.y) + half});
    if (nodes.IsEmpty()) {
        std::printf("%d, %d: nothing\n", point.x, point.y);
        return;
    }
    Node& top = *nodes[nodes.Count() - 1];
    std::printf("%d, %d: %s  %s%s%s  %s\n", point.x, point.y, NodePath(top).c_str(), ClassName(top).c_str(),
                top.name.empty() ? "" : "  ", tools::Printable(top.name).c_str(), PropertyText(top).c_str());
}

Status Viewer::SaveScreenshot() {
    Result<Image> image = stage_->Read();
    if (!image) {
        return image.GetFailure();
    }
    const std::string stem = std::filesystem::path(options_.stage.scene).stem();
    std::string path;
    std::error_code error;
    int number = 0;
    do {
        char suffix[32];
        std::snprintf(suffix, sizeof suffix, "-%04d.png", ++number);
        path = stem + suffix;
    } while (std::filesystem::exists(path, error));
    if (const std::string problem = WritePng(path, *image); !problem.empty()) {
        return Failure{ExitCode::Io, path + ": cannot write: " + problem};
    }
    std::printf("screenshot: %s\n", tools::Printable(path).c_str());
    return std::nullopt;
}

}  // namespace

Status View(ViewOptions const& options) {
    return Viewer(options).Run();
}

}  // namespace zorvan::tool
