#include "tools/zorvan/sheet_output.h"

#include <algorithm>

#include "core/image_file.h"

namespace zorvan::tool {
namespace {

constexpr uint32_t kGap = 4;  // pixels between frames and around them

class SheetOutput final : public FrameOutput {
  public:
    SheetOutput(std::string path, SheetGrid const& grid) : path_(std::move(path)), grid_(grid) {}

    Status Write(uint32_t, Image const& frame) override;
    Status Finish() override {
        const std::string error = WritePng(path_, sheet_);
        return error.empty() ? std::nullopt
                             : Status(Failure{ExitCode::Io, path_ + ": cannot write: " + error});
    }

  private:
    std::string path_;
    SheetGrid grid_;
    Image sheet_;
    uint32_t done_ = 0;
};

Status SheetOutput::Write(uint32_t, Image const& frame) {
    if (done_ == 0) {
        const uint64_t width = uint64_t{grid_.columns} * (frame.width + kGap) + kGap;
        const uint64_t height = uint64_t{grid_.rows} * (frame.height + kGap) + kGap;
        if (width > kLargestSurface || height > kLargestSurface) {
            return Failure{ExitCode::Usage, "--sheet: got a sheet of " + std::to_string(width) + "x" +
                                                std::to_string(height) +
                                                " pixels, expected at most 16384 each way; see --size"};
        }
        sheet_ = {static_cast<uint32_t>(width), static_cast<uint32_t>(height), {}};
        sheet_.rgba.resize(4 * width * height);
        for (size_t i = 3; i < sheet_.rgba.size(); i += 4) {
            sheet_.rgba[i] = 255;
        }
    }
    const size_t left = kGap + size_t{done_ % grid_.columns} * (frame.width + kGap);
    const size_t top = kGap + size_t{done_ / grid_.columns} * (frame.height + kGap);
    for (size_t y = 0; y < frame.height; ++y) {
        std::copy_n(&frame.rgba[4 * y * frame.width], size_t{4} * frame.width,
                    &sheet_.rgba[4 * ((top + y) * sheet_.width + left)]);
    }
    ++done_;
    return std::nullopt;
}

}  // namespace

Result<std::unique_ptr<FrameOutput>> MakeSheetOutput(std::string const& path, SheetGrid const& grid) {
    if (Status failure = CheckPngName(path)) {
        return *failure;
    }
    return std::unique_ptr<FrameOutput>(new SheetOutput(path, grid));
}

std::vector<uint32_t> SheetFrames(FrameRange const& frames, SheetGrid const& grid) {
    const uint64_t count = std::min<uint64_t>(frames.Count(), uint64_t{grid.columns} * grid.rows);
    std::vector<uint32_t> numbers;
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t offset = count > 1 ? i * (frames.Count() - 1) / (count - 1) : 0;
        numbers.push_back(frames.first + static_cast<uint32_t>(offset));
    }
    return numbers;
}

}  // namespace zorvan::tool
