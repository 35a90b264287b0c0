#include "tools/qonvert/transform.h"

#include <algorithm>

#include "texconv/format_table.h"
#include "tools/qonvert/parallel.h"

namespace qonvert {

using QXTextureConverter::FindFormat;

namespace {

// Pixel rows of one piece of encoding work: a multiple of the block height.
constexpr std::uint32_t kBandRows = 16;

bool ChangesPixels(const TextureFile& source, const Recipe& recipe) {
    const Steps& steps = recipe.steps;
    return steps.mirrorX || steps.flipY || steps.normalMap != 0 || recipe.width != source.width ||
           recipe.height != source.height;
}

// What the pixels are between decoding and encoding. The converter's own working images are the same,
// so that two calls over them give the bytes of one call.
std::uint32_t WorkingFormat(const TextureFile& source, const Recipe& recipe) {
    const bool floats = FindFormat(source.format)->IsFloat() && FindFormat(recipe.format)->IsFloat();
    return floats && recipe.steps.normalMap == 0 ? FMT_RGBA32F : FMT_RGBA8888;
}

struct WorkingLevel {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    Bytes pixels;
    const Bytes* copy = nullptr;  // encoded already
};

Picture LevelPicture(const TextureFile& source, std::uint32_t level) {
    return {source.format, LevelSide(source.width, level), LevelSide(source.height, level),
            source.levels[level]};
}

WorkingLevel Decode(const TextureFile& source, const Recipe& recipe, std::uint32_t level,
                    std::uint32_t format) {
    WorkingLevel working;
    working.width = LevelSide(recipe.width, level);
    working.height = LevelSide(recipe.height, level);
    working.pixels =
        ConvertPicture(LevelPicture(source, level), format, working.width, working.height, recipe.steps);
    return working;
}

WorkingLevel Halve(const WorkingLevel& above, std::uint32_t format) {
    WorkingLevel level;
    level.width = LevelSide(above.width, 1);
    level.height = LevelSide(above.height, 1);
    level.pixels =
        ConvertPicture({format, above.width, above.height, above.pixels}, format, level.width, level.height);
    return level;
}

std::vector<WorkingLevel> BuildLevels(const TextureFile& source, const Recipe& recipe, std::uint32_t format) {
    const bool changes = ChangesPixels(source, recipe);
    const bool copies = !changes && source.format == recipe.format;
    const bool onlyBase =
        recipe.steps.normalMap != 0 || recipe.width != source.width || recipe.height != source.height;
    std::vector<WorkingLevel> levels;
    if (recipe.levels == 0) {
        const auto count = onlyBase ? 1 : static_cast<std::uint32_t>(source.levels.size());
        for (std::uint32_t i = 0; i < count; ++i) {
            if (copies) {
                levels.push_back(
                    {LevelSide(source.width, i), LevelSide(source.height, i), {}, &source.levels[i]});
            } else {
                levels.push_back(Decode(source, recipe, i, format));
            }
        }
        return levels;
    }
    const std::uint32_t count = std::min(recipe.levels, FullChain(recipe.width, recipe.height));
    if (copies && count == 1) {
        levels.push_back({source.width, source.height, {}, &source.levels.front()});
        return levels;
    }
    levels.push_back(Decode(source, recipe, 0, format));
    for (std::uint32_t i = 1; i < count; ++i) {
        levels.push_back(Halve(levels.back(), format));
    }
    if (copies) {
        levels.front().copy = &source.levels.front();
    }
    return levels;
}

// A piece of one level: all of it, or a band of rows of blocks.
struct Piece {
    std::size_t level;
    std::uint32_t top;
    std::uint32_t rows;
};

std::vector<Piece> CutIntoPieces(const std::vector<WorkingLevel>& levels, std::uint32_t format) {
    const bool bands = FindFormat(format)->IsCompressed();
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const std::uint32_t height = levels[i].height;
        const std::uint32_t step = bands ? kBandRows : height;
        for (std::uint32_t top = 0; top < height; top += step) {
            pieces.push_back({i, top, std::min(step, height - top)});
        }
    }
    return pieces;
}

void EncodePiece(const WorkingLevel& level, std::uint32_t workingFormat, const Piece& piece,
                 std::uint32_t format, bool fast, Bytes& out) {
    const std::size_t rowBytes = level.pixels.size() / level.height;
    const Picture source{workingFormat, level.width, piece.rows,
                         ByteSpan(level.pixels).subspan(piece.top * rowBytes, piece.rows * rowBytes)};
    Steps steps;
    steps.fastCompress = fast;
    const auto at =
        piece.top == 0 ? 0 : static_cast<std::size_t>(PictureBytes(format, level.width, piece.top));
    const auto size = static_cast<std::size_t>(PictureBytes(format, level.width, piece.rows));
    ConvertPictureInto(source, format, level.width, piece.rows, steps, std::span(out).subspan(at, size));
}

}  // namespace

Transformed Transform(const TextureFile& source, const Recipe& recipe) {
    CheckConvertible(recipe.format, recipe.width, recipe.height);
    Transformed result;
    result.texture.format = recipe.format;
    result.texture.width = recipe.width;
    result.texture.height = recipe.height;
    result.texture.origin = source.origin;
    result.pixelFormat = WorkingFormat(source, recipe);
    std::vector<WorkingLevel> levels = BuildLevels(source, recipe, result.pixelFormat);
    for (const WorkingLevel& level : levels) {
        result.texture.levels.push_back(level.copy != nullptr
                                            ? *level.copy
                                            : Bytes(PictureBytes(recipe.format, level.width, level.height)));
    }
    const std::vector<Piece> pieces = CutIntoPieces(levels, recipe.format);
    ParallelFor(pieces.size(), recipe.threads, [&](std::size_t i) {
        const WorkingLevel& level = levels[pieces[i].level];
        if (level.copy == nullptr) {
            EncodePiece(level, result.pixelFormat, pieces[i], recipe.format, recipe.steps.fastCompress,
                        result.texture.levels[pieces[i].level]);
        }
    });
    if (levels.front().copy == nullptr) {
        result.pixels = std::move(levels.front().pixels);
    }
    return result;
}

}  // namespace qonvert
