#include "core/font_file.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_MODULE_H
#include FT_OUTLINE_H
#include <algorithm>
#include <cstdlib>

#include "core/file_bytes.h"
#include "core/out_of_memory.h"

namespace zorvan {
namespace {

constexpr uint32_t kMostBytes = 256u << 20;

struct LibraryDeleter {
    void operator()(FT_Library library) const { FT_Done_Library(library); }
};
struct FaceDeleter {
    void operator()(FT_Face face) const { FT_Done_Face(face); }
};

// FreeType itself does without the modules and the glyphs that it finds no memory for.
void* Noted(void* memory) {
    if (memory == nullptr) {
        OutOfMemory::Note();
    }
    return memory;
}
void* Allocate(FT_Memory, long size) {
    return Noted(std::malloc(static_cast<size_t>(size)));
}
void* Reallocate(FT_Memory, long, long size, void* block) {
    return Noted(std::realloc(block, static_cast<size_t>(size)));
}
void Free(FT_Memory, void* block) {
    std::free(block);
}

FT_Library StartFreeType() {
    static FT_MemoryRec_ memory{nullptr, Allocate, Free, Reallocate};
    FT_Library library = nullptr;
    if (FT_New_Library(&memory, &library) != 0) {
        return nullptr;
    }
    FT_Add_Default_Modules(library);
    FT_Set_Default_Properties(library);
    return library;
}

// Outlines are snapped to pixels, vertically, by the rasteriser's own hinting: the same for all fonts.
constexpr FT_Int32 kLoadFlags = FT_LOAD_TARGET_LIGHT;

struct BitmapSize {
    FT_Pos width, height;
};

// Of a loaded glyph: an outline's before its bitmap is made.
BitmapSize SizeOf(FT_GlyphSlot slot) {
    if (slot->format != FT_GLYPH_FORMAT_OUTLINE) {
        return {static_cast<FT_Pos>(slot->bitmap.width), static_cast<FT_Pos>(slot->bitmap.rows)};
    }
    FT_BBox box{};
    FT_Outline_Get_CBox(&slot->outline, &box);
    return {((box.xMax + 63) >> 6) - (box.xMin >> 6), ((box.yMax + 63) >> 6) - (box.yMin >> 6)};
}

int RoundToPixel(FT_Pos value) {
    return static_cast<int>((value + 32) >> 6);
}

class FreeTypeFile final : public FontFile {
  public:
    // Empty on success.
    std::string Load(std::string const& path, int size) {
        path_ = path;
        FileBytes file = ReadFileBytes(path, kMostBytes);
        if (!file.error.empty()) {
            return file.error;
        }
        bytes_ = std::move(file.bytes);
        if (bytes_.empty()) {
            return "got an empty file, expected a font";
        }
        FT_Library library = StartFreeType();
        if (library == nullptr) {
            return "the font rasteriser cannot start";
        }
        library_.reset(library);
        FT_Face face = nullptr;
        const FT_Error error =
            FT_New_Memory_Face(library, bytes_.data(), static_cast<FT_Long>(bytes_.size()), 0, &face);
        if (error == FT_Err_Unknown_File_Format) {
            return "not a font file that can be read";
        }
        if (error != 0) {
            return "damaged font file (error " + std::to_string(error) + ")";
        }
        face_.reset(face);
        if (FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(size)) != 0) {
            return "this font has no glyphs of " + std::to_string(size) + " pixels";
        }
        FT_Size_Metrics const& metrics = face->size->metrics;
        lineHeight = RoundToPixel(metrics.height);
        ascent = RoundToPixel(metrics.ascender);
        return {};
    }

    uint32_t GlyphIndex(uint32_t codePoint) const override {
        return FT_Get_Char_Index(face_.get(), codePoint);
    }

    bool Rasterise(uint32_t index, GlyphBitmap& bitmap, std::string& error) override {
        FT_Error code = FT_Load_Glyph(face_.get(), index, kLoadFlags);
        FT_GlyphSlot slot = face_->glyph;
        if (code == 0) {
            const BitmapSize size = SizeOf(slot);
            if (std::max(size.width, size.height) > kMostGlyphSide) {
                error = path_ + ": got a glyph of " + std::to_string(size.width) + "x" +
                        std::to_string(size.height) + " pixels, expected at most " +
                        std::to_string(kMostGlyphSide) + ": choose a smaller size";
                return false;
            }
            code = slot->format == FT_GLYPH_FORMAT_BITMAP ? 0 : FT_Render_Glyph(slot, FT_RENDER_MODE_LIGHT);
        }
        if (code != 0 || !CopyCoverage(slot->bitmap, bitmap)) {
            error = path_ + ": damaged font file, glyph " + std::to_string(index) +
                    " cannot be drawn (error " + std::to_string(code) + ")";
            return false;
        }
        bitmap.left = slot->bitmap_left;
        bitmap.top = slot->bitmap_top;
        bitmap.advance = RoundToPixel(slot->advance.x);
        return true;
    }

    int Kerning(uint32_t left, uint32_t right) const override {
        FT_Vector kerning{};
        if (FT_Get_Kerning(face_.get(), left, right, FT_KERNING_DEFAULT, &kerning) != 0) {
            return 0;
        }
        return RoundToPixel(kerning.x);
    }

  private:
    static bool CopyCoverage(FT_Bitmap const& source, GlyphBitmap& bitmap) {
        bitmap.width = static_cast<int>(source.width);
        bitmap.height = static_cast<int>(source.rows);
        if (bitmap.width == 0 || bitmap.height == 0) {
            bitmap.width = bitmap.height = 0;
            bitmap.coverage.clear();
            return true;
        }
        const bool bits = source.pixel_mode == FT_PIXEL_MODE_MONO;
        if (!bits && source.pixel_mode != FT_PIXEL_MODE_GRAY) {
            return false;
        }
        bitmap.coverage.resize(size_t{source.width} * source.rows);
        // A negative pitch means rows from the bottom.
        uint8_t const* row = source.buffer;
        if (source.pitch < 0) {
            row += static_cast<size_t>(-source.pitch) * (source.rows - 1);
        }
        uint8_t* out = bitmap.coverage.data();
        for (unsigned y = 0; y < source.rows; ++y, row += source.pitch) {
            for (unsigned x = 0; x < source.width; ++x) {
                const bool bit = bits && (row[x / 8] & (0x80 >> x % 8)) != 0;
                *out++ = !bits ? row[x] : bit ? 255 : 0;
            }
        }
        return true;
    }

    std::string path_;
    // The face reads from the bytes as long as it lives.
    std::vector<uint8_t> bytes_;
    std::unique_ptr<FT_LibraryRec_, LibraryDeleter> library_;
    std::unique_ptr<FT_FaceRec_, FaceDeleter> face_;
};

}  // namespace

FontFile::~FontFile() = default;

std::unique_ptr<FontFile> FontFile::Open(std::string const& path, int size, std::string& error) {
    if (size < 1 || size > kMostPixels) {
        error = path + ": got a font size of " + std::to_string(size) + ", expected 1 to " +
                std::to_string(kMostPixels) + " pixels";
        return nullptr;
    }
    auto file = std::make_unique<FreeTypeFile>();
    const std::string problem = file->Load(path, size);
    if (!problem.empty()) {
        error = path + ": " + problem;
        return nullptr;
    }
    return file;
}

}  // namespace zorvan
