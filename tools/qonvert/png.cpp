#include "tools/qonvert/png.h"

#include <bit>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include <png.h>

#include "texconv/format_table.h"
#include "tools/qonvert/byte_io.h"
#include "tools/qonvert/pixels.h"
#include "tools/qonvert/png_samples.h"

namespace qonvert {

using QXTextureConverter::FindFormat;
using QXTextureConverter::FormatInfo;

namespace {

constexpr std::size_t kIdentifierBytes = 8;

// What libpng calls back into. Its errors come back to the last setjmp.
struct Codec {
    png_structp png = nullptr;
    png_infop info = nullptr;
    bool reads = false;
    ByteSource* in = nullptr;
    Bytes out;
    char message[200] = {};
    Findings* findings = nullptr;
    std::exception_ptr thrown;  // by a callback
    bool outOfMemory = false;

    explicit Codec(bool reading) : reads(reading) {}
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;
    ~Codec() {
        if (reads) {
            png_destroy_read_struct(&png, &info, nullptr);
        } else {
            png_destroy_write_struct(&png, &info);
        }
    }
};

[[noreturn]] void OnError(png_structp png, png_const_charp message) {
    auto* codec = static_cast<Codec*>(png_get_error_ptr(png));
    std::strncpy(codec->message, message, sizeof codec->message - 1);
    png_longjmp(png, 1);
}

// Runs a step that may throw: libpng's frames let errors through, but no exceptions.
template <typename Step>
void Guard(png_structp png, Codec& codec, Step step) {
    try {
        step();
    } catch (...) {
        codec.thrown = std::current_exception();
    }
    if (codec.thrown) {
        png_error(png, "a step of ours failed");
    }
}

void OnWarning(png_structp png, png_const_charp message) {
    auto* codec = static_cast<Codec*>(png_get_error_ptr(png));
    if (codec->findings != nullptr) {
        Guard(png, *codec,
              [&] { Note(*codec->findings, FindingNumber::kOddStream, "PNG data", message, ""); });
    }
}

void OnRead(png_structp png, png_bytep out, std::size_t count) {
    auto* codec = static_cast<Codec*>(png_get_io_ptr(png));
    bool whole = false;
    Guard(png, *codec, [&] {
        whole = codec->in->Ahead(count) == count;
        if (whole) {
            codec->in->Take({out, count});
        }
    });
    if (!whole) {
        png_error(png, "the file ends early");
    }
}

void OnWrite(png_structp png, png_bytep bytes, std::size_t count) {
    auto* codec = static_cast<Codec*>(png_get_io_ptr(png));
    Guard(png, *codec, [&] { codec->out.insert(codec->out.end(), bytes, bytes + count); });
}

void OnFlush(png_structp) {}

// Largest ancillary chunk that is unpacked, bytes.
constexpr png_alloc_size_t kChunkLimit = 8000000;

// libpng's errors do not tell a lack of memory from damage.
png_voidp OnAllocate(png_structp png, png_alloc_size_t size) {
    void* memory = std::malloc(size);
    if (memory == nullptr) {
        static_cast<Codec*>(png_get_mem_ptr(png))->outOfMemory = true;
    }
    return memory;
}

void OnFree(png_structp, png_voidp memory) {
    std::free(memory);
}

void Start(Codec& codec) {
    const auto create = codec.reads ? png_create_read_struct_2 : png_create_write_struct_2;
    codec.png = create(PNG_LIBPNG_VER_STRING, &codec, OnError, OnWarning, &codec, OnAllocate, OnFree);
    codec.info = codec.png != nullptr ? png_create_info_struct(codec.png) : nullptr;
    if (codec.outOfMemory) {
        throw std::bad_alloc();
    }
    if (codec.info == nullptr) {
        throw ToolError(ExitCode::kRuntime, "libpng cannot start");
    }
}

// Each step below holds nothing with a destructor, so that an error may jump out of it.

bool ReadInfo(Codec& codec) {
    if (setjmp(png_jmpbuf(codec.png)) != 0) {
        return false;
    }
    png_set_read_fn(codec.png, &codec, OnRead);
    png_set_sig_bytes(codec.png, kIdentifierBytes);
    png_set_user_limits(codec.png, kMaxSide, kMaxSide);
    png_set_chunk_malloc_max(codec.png, kChunkLimit);
    png_read_info(codec.png, codec.info);
    return true;
}

// Unpacks to whole bytes per sample; 16-bit samples are kept or cut to their top 8 bits.
bool ApplyTransforms(Codec& codec, bool keepDeep, bool bigEndianHost) {
    if (setjmp(png_jmpbuf(codec.png)) != 0) {
        return false;
    }
    const png_byte type = png_get_color_type(codec.png, codec.info);
    if (type == PNG_COLOR_TYPE_PALETTE) {
        png_set_packing(codec.png);
    } else {
        png_set_expand_gray_1_2_4_to_8(codec.png);
        if (png_get_valid(codec.png, codec.info, PNG_INFO_tRNS) != 0) {
            png_set_tRNS_to_alpha(codec.png);
        }
        if (png_get_bit_depth(codec.png, codec.info) == 16) {
            if (!keepDeep) {
                png_set_strip_16(codec.png);
            } else if (!bigEndianHost) {
                png_set_swap(codec.png);
            }
        }
    }
    png_set_interlace_handling(codec.png);
    png_read_update_info(codec.png, codec.info);
    return true;
}

bool ReadRows(Codec& codec, png_bytep* rows) {
    if (setjmp(png_jmpbuf(codec.png)) != 0) {
        return false;
    }
    png_read_image(codec.png, rows);
    png_read_end(codec.png, codec.info);
    return true;
}

struct Header {
    int depth;
    int type;
    const png_color* colours;
    int colourCount;
    const png_byte* alphas;
    int alphaCount;
};

bool WriteAll(Codec& codec, const Header& header, png_uint_32 width, png_uint_32 height, png_bytep* rows) {
    if (setjmp(png_jmpbuf(codec.png)) != 0) {
        return false;
    }
    png_set_write_fn(codec.png, &codec, OnWrite, OnFlush);
    png_set_IHDR(codec.png, codec.info, width, height, header.depth, header.type, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    if (header.colourCount != 0) {
        png_set_PLTE(codec.png, codec.info, header.colours, header.colourCount);
    }
    if (header.alphaCount != 0) {
        png_set_tRNS(codec.png, codec.info, header.alphas, header.alphaCount, nullptr);
    }
    png_write_info(codec.png, codec.info);
    png_write_image(codec.png, rows);
    png_write_end(codec.png, codec.info);
    return true;
}

void ThrowAgain(const Codec& codec) {
    if (codec.thrown) {
        std::rethrow_exception(codec.thrown);
    }
    if (codec.outOfMemory) {
        throw std::bad_alloc();
    }
}

[[noreturn]] void RejectStream(const Codec& codec) {
    ThrowAgain(codec);
    Reject(FindingNumber::kDamagedStream, "PNG data", codec.message, "a whole picture");
}

// Deflate shrinks at most 1032 times; a picture that claims more is not in the file.
void CheckSizeAgainstFile(std::uint64_t pictureBytes, ByteSource& source) {
    const std::uint64_t least = pictureBytes / 1032;
    const std::uint64_t fileBytes = source.taken() + source.Ahead(least);
    if (least > fileBytes) {
        Reject(FindingNumber::kDataMissing, "pixels", std::to_string(fileBytes) + " bytes in the file",
               "data for " + std::to_string(pictureBytes) + " bytes of pixels");
    }
}

std::vector<png_bytep> RowPointers(Bytes& pixels, std::size_t rowBytes) {
    std::vector<png_bytep> rows(pixels.size() / rowBytes);
    for (std::size_t y = 0; y < rows.size(); ++y) {
        rows[y] = pixels.data() + y * rowBytes;
    }
    return rows;
}

std::string Encoding(Codec& codec) {
    const int depth = png_get_bit_depth(codec.png, codec.info);
    const int type = png_get_color_type(codec.png, codec.info);
    const char* kind = type == PNG_COLOR_TYPE_PALETTE      ? "indexed"
                       : type == PNG_COLOR_TYPE_GRAY       ? "grey"
                       : type == PNG_COLOR_TYPE_GRAY_ALPHA ? "grey and alpha"
                       : type == PNG_COLOR_TYPE_RGB        ? "RGB"
                                                           : "RGBA";
    return std::to_string(depth) + "-bit " + kind;
}

PngPalette ReadPalette(Codec& codec) {
    PngPalette palette;
    png_colorp colours = nullptr;
    int count = 0;
    png_get_PLTE(codec.png, codec.info, &colours, &count);
    png_bytep alphas = nullptr;
    int alphaCount = 0;
    png_get_tRNS(codec.png, codec.info, &alphas, &alphaCount, nullptr);
    palette.hasAlpha = alphaCount > 0;
    for (int i = 0; i < count; ++i) {
        const std::uint8_t alpha = i < alphaCount ? alphas[i] : 255;
        palette.entries.push_back({colours[i].red, colours[i].green, colours[i].blue, alpha});
    }
    return palette;
}

// The picture's rows, one byte or one 16-bit word per sample.
Bytes ReadSamples(Codec& codec) {
    const std::size_t rowBytes = png_get_rowbytes(codec.png, codec.info);
    Bytes samples(rowBytes * png_get_image_height(codec.png, codec.info));
    std::vector<png_bytep> rows = RowPointers(samples, rowBytes);
    if (!ReadRows(codec, rows.data())) {
        RejectStream(codec);
    }
    return samples;
}

constexpr bool kBigEndianHost = std::endian::native == std::endian::big;

}  // namespace

bool IsPng(ByteSpan bytes) {
    return bytes.size() >= kIdentifierBytes && png_sig_cmp(bytes.data(), 0, kIdentifierBytes) == 0;
}

bool PngCarries(std::uint32_t format, const WriteOptions& options) {
    const FormatInfo* info = FindFormat(format);
    if (info == nullptr) {
        return false;
    }
    if (info->IsFloat()) {
        return options.pngDeepFloats && info->floatChannels != QXTextureConverter::FloatChannels::kA;
    }
    return info->IsPalette() || format == FMT_RGBA8888 || format == FMT_RGB888 || format == FMT_L8 ||
           format == FMT_LA88 || format == FMT_L16;
}

TextureFile ReadPng(ByteSource& source, const ReadOptions& options, Findings& findings) {
    std::uint8_t identifier[kIdentifierBytes];
    if (const std::uint64_t left = source.Ahead(kIdentifierBytes); left < kIdentifierBytes) {
        Reject(FindingNumber::kHeaderTruncated, "identifier", std::to_string(left) + " bytes", "8");
    }
    source.Take(identifier);
    if (!IsPng(identifier)) {
        Reject(FindingNumber::kWrongMagic, "identifier", "other bytes", "the 8 bytes of PNG");
    }
    Codec codec(true);
    codec.in = &source;
    codec.findings = &findings;
    Start(codec);
    if (!ReadInfo(codec)) {
        RejectStream(codec);
    }
    const std::uint32_t width = png_get_image_width(codec.png, codec.info);
    const std::uint32_t height = png_get_image_height(codec.png, codec.info);
    CheckPictureSize(width, height);
    CheckSizeAgainstFile(std::uint64_t{png_get_rowbytes(codec.png, codec.info)} * height, source);

    TextureFile texture;
    texture.width = width;
    texture.height = height;
    texture.origin = Origin::kTopLeft;
    texture.encoding = Encoding(codec);
    const bool deep = png_get_bit_depth(codec.png, codec.info) == 16;
    const bool indexed = png_get_color_type(codec.png, codec.info) == PNG_COLOR_TYPE_PALETTE;
    const int sourceDepth = png_get_bit_depth(codec.png, codec.info);
    DeepSamples wish = deep ? options.deepSamples : DeepSamples::kTopByte;
    const bool onlyGrey = png_get_color_type(codec.png, codec.info) == PNG_COLOR_TYPE_GRAY &&
                          png_get_valid(codec.png, codec.info, PNG_INFO_tRNS) == 0;
    if (wish == DeepSamples::kLuminance16 && !onlyGrey) {
        wish = DeepSamples::kTopByte;
    }
    const bool keepDeep = wish != DeepSamples::kTopByte;
    if (!ApplyTransforms(codec, keepDeep, kBigEndianHost)) {
        RejectStream(codec);
    }
    const PngPalette palette = indexed ? ReadPalette(codec) : PngPalette{};
    const unsigned channels = png_get_channels(codec.png, codec.info);
    Bytes samples = ReadSamples(codec);
    NoteTrailingBytes(source, findings, "the picture");
    if (indexed) {
        PackIndexed(samples, palette, sourceDepth, texture, findings);
    } else if (keepDeep) {
        PackDeep(samples, channels, wish, texture);
    } else {
        PackBytes(std::move(samples), channels, texture);
    }
    return texture;
}

Bytes WritePng(const TextureFile& texture, const WriteOptions&) {
    PngPicture picture = UnpackForPng(texture);
    Codec codec(false);
    Start(codec);
    std::vector<png_color> colours;
    std::vector<png_byte> alphas;
    for (const auto& entry : picture.palette.entries) {
        colours.push_back({entry[0], entry[1], entry[2]});
        if (picture.palette.hasAlpha) {
            alphas.push_back(entry[3]);
        }
    }
    constexpr int kTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                              PNG_COLOR_TYPE_RGB_ALPHA};
    const int type = colours.empty() ? kTypes[picture.channels - 1] : PNG_COLOR_TYPE_PALETTE;
    std::vector<png_bytep> rows = RowPointers(picture.rows, picture.rowBytes);
    const Header header{static_cast<int>(picture.depth),  type,          colours.data(),
                        static_cast<int>(colours.size()), alphas.data(), static_cast<int>(alphas.size())};
    if (!WriteAll(codec, header, texture.width, texture.height, rows.data())) {
        ThrowAgain(codec);
        throw ToolError(ExitCode::kRuntime, std::string("cannot write png: ") + codec.message);
    }
    return std::move(codec.out);
}

}  // namespace qonvert
