// One conversion: the working image and the steps that create, change and write it.
#pragma once

#include <cstdint>

#include "texconv/channel_bits.h"
#include "texconv/format_table.h"
#include "texconv/half_float.h"
#include "texconv/qonvert.h"
#include "texconv/row_steps.h"

namespace QXTextureConverter {

using ::TFormatFlags;
using enum ::TQonvertFormat;

// Properties of an image descriptor, answered by CImage::ImgInfo. INFO_STRIDE and later are the
// TFormatFlags words, in order.
enum TInfo : std::uint32_t {
    INFO_BPP,
    INFO_ALPHA,
    INFO_PALETTE_BITS,
    INFO_COMPRESSED,
    INFO_FLOAT,
    INFO_STRIDE,
    INFO_MASK_R,
    INFO_MASK_G,
    INFO_MASK_B,
    INFO_MASK_A,
    INFO_MIRROR_X,
    INFO_FLIP_Y,
    INFO_FAST_COMPRESS,
    INFO_SCALE_FILTER,
    INFO_BUMPMAP,
    INFO_BUMPMAP_HEIGHT,
    INFO_BUMPMAP_WRAP,
    INFO_MODE
};

// What a call has to do.
enum TCheck : std::uint32_t { CHECK_GENERIC, CHECK_FLOAT, CHECK_DATASIZE, CHECK_VERSION };

// One conversion between two descriptors, which it does not own. A step reads and replaces the
// working image; a step that finds none (its memory could not be had, or the source has no
// pixels) does nothing, and the later steps then do nothing either.
class CImage {
  public:
    CImage(TQonvertImage* source, TQonvertImage* destination);
    ~CImage();
    CImage(const CImage&) = delete;
    CImage& operator=(const CImage&) = delete;

    // Entry and checks.

    // One property of `image`; 0 for a null image. An unsupported format or property prints.
    std::uint32_t ImgInfo(const TQonvertImage* image, TInfo what);
    // Bytes that `image` occupies, modulo 2^32; prints and gives 0 for an unsupported format.
    std::uint32_t ImgSize(const TQonvertImage* image);
    // Reports every problem of the descriptors and chooses the path; never refuses.
    TCheck Input_Check();
    // Stores the destination's ImgSize in its nDataSize and returns it.
    std::uint32_t Output_DataSize();
    // Stores QONVERT_VERSION in the destination's first four bytes.
    void Output_Version();
    // Prints one message line on standard error while m_bVerbose is set.
    void Verbose(const char* message);
    // Prints, and sets the destination's nDataSize to 0: of its bytes none were produced.
    void ReportNoMemory();
    // `size` bytes, at least one, to be freed with std::free; reports and returns null on failure.
    unsigned char* Mem_Malloc(unsigned size);

    // 8-bit pipeline, in the order of a conversion.

    void Input_ToGeneric();
    void Generic_Flip();
    void Generic_Scale();
    void Generic_Bumpmap();
    void Output_Generic();

    void Input_UncompressedToGeneric();
    void Input_CompressedToGeneric();
    void Input_FloatToGeneric();
    void Output_GenericToUncompressed();
    void Output_GenericToCompressed();
    void Output_GenericToPalette();
    void Output_GenericToFloat();

    // Height 0 to 255 at (x, y), at most one image size outside: the mean of R, G and B, of the
    // wrapped or the nearest pixel. The working image must not be empty.
    unsigned Bumpmap_GetPixel(int x, int y, bool wrap);

    // Float pipeline, in the order of a conversion.

    void Input_ToFloat();
    void Float_Flip();
    void Float_Scale();
    void Output_Float();

    bool m_bVerbose = true;
    TQonvertImage* m_pSrc;
    TQonvertImage* m_pDst;
    // The working image: rows packed, R, G, B, A of a byte or of a float each, owned.
    std::uint32_t m_nWidth = 0;
    std::uint32_t m_nHeight = 0;
    std::uint32_t m_nBytesPerPixel = 0;
    unsigned char* m_pBuffer = nullptr;

    // The steps of a conversion of 8-bit or of float pixels.
    void Convert(bool floats);

  private:
    // Bytes at pData that may be touched: what the caller states or, if larger, what the format
    // needs.
    std::uint64_t DataLimit(const TQonvertImage* image);
    ChannelMasks Masks(const TQonvertImage* image);

    // Memory for a working image, or null (with the message) where it does not fit 32 bits.
    unsigned char* AllocateImage(std::uint32_t width, std::uint32_t height, std::uint32_t bytesPerPixel);
    // Creates the working image in the source's size; false without source pixels or memory.
    bool StartWorkingImage(std::uint32_t bytesPerPixel);
    // Replaces the working image by `buffer`, which may be null.
    void SetBuffer(unsigned char* buffer);

    // Fills `to`, the working image or memory for another, with packed rows.
    void Store(RowSource& rows, std::uint32_t width, std::uint32_t height, unsigned char* to) const;

    // The whole conversion with as few working images as possible; false, with nothing done, for
    // formats and sizes with which a step may print.
    bool ConvertByRows(bool floats);
    // The source's pixels, oriented as the destination's: of the caller's bytes or of a working
    // image; null without memory for it.
    RowSourcePointer OrientedSourceRows(const FormatInfo& from, bool floats);
    // Whether source and destination lie in one another.
    bool SharesBytes();

    // The rows, for formats that are made from a whole image.
    void OutputWorkingImage(RowSourcePointer rows);

    // The source's pixels; UncompressedRows for plain and palette formats.
    RowSourcePointer UncompressedRows();
    RowSourcePointer FloatSourceRows(const FormatInfo& format, bool toBytes);
    // Stores working pixels in the destination, as many as the members say.
    void WritePlain(RowSource& rows);
    void WriteFloat(RowSource& rows, const FormatInfo& format, bool fromBytes);

    void ReadFloat(bool toBytes);
    void OutputFloats(bool fromBytes);
    Orientation WantedOrientation();
    // The rows of the working image's size in the destination's size, and as a normal map.
    RowSourcePointer Scaled(RowSourcePointer rows);
    RowSourcePointer Normals(RowSourcePointer rows, std::uint32_t kernel);

    std::uint32_t EncodeAtitc();
    std::uint32_t Encode(std::uint32_t flags, std::uint32_t codecFormat);

    // Scales the working image.
    void Scale();
};

}  // namespace QXTextureConverter
