// Entry point, checks and memory of a conversion.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "texconv/image.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kModeQuiet = 1;
constexpr std::uint32_t kModeVersion = 2;

// Little-endian, whatever the alignment.
void StoreWord(std::uint8_t* bytes, std::uint32_t word) {
    for (unsigned i = 0; i < 4; ++i) {
        bytes[i] = static_cast<std::uint8_t>(word >> (8 * i));
    }
}

}  // namespace

CImage::CImage(TQonvertImage* source, TQonvertImage* destination) : m_pSrc(source), m_pDst(destination) {}

CImage::~CImage() {
    std::free(m_pBuffer);
}

TCheck CImage::Input_Check() {
    if (ImgInfo(m_pSrc, INFO_MODE) == kModeQuiet || ImgInfo(m_pDst, INFO_MODE) == kModeQuiet) {
        m_bVerbose = false;
    }
    if (ImgInfo(m_pSrc, INFO_MODE) == kModeVersion || ImgInfo(m_pDst, INFO_MODE) == kModeVersion) {
        return CHECK_VERSION;
    }
    if (m_pDst == nullptr || m_pDst->pData == nullptr) {
        return CHECK_DATASIZE;
    }
    if (m_pDst->nDataSize < ImgSize(m_pDst)) {
        Verbose("m_pDst->nDataSize is to small");
    }
    if (m_pSrc != nullptr && m_pSrc->nWidth == 0) {
        Verbose("m_pSrc->nWidth == 0");
    }
    if (m_pSrc != nullptr && m_pSrc->nHeight == 0) {
        Verbose("m_pSrc->nHeight == 0");
    }
    if (m_pSrc != nullptr && m_pSrc->nDataSize < ImgSize(m_pSrc)) {
        Verbose("m_pSrc->nDataSize is smaller then the format suggests");
    }
    if (m_pSrc == nullptr || m_pSrc->pData == nullptr) {
        Verbose("m_pSrc->pData == NULL");
    }
    const bool floats = ImgInfo(m_pSrc, INFO_FLOAT) != 0 && ImgInfo(m_pDst, INFO_FLOAT) != 0;
    return floats ? CHECK_FLOAT : CHECK_GENERIC;
}

std::uint32_t CImage::Output_DataSize() {
    const std::uint32_t size = ImgSize(m_pDst);
    if (m_pDst != nullptr) {
        m_pDst->nDataSize = size;
    }
    return size;
}

void CImage::Output_Version() {
    if (m_pDst == nullptr) {
        return;
    }
    if (m_pDst->nDataSize < 4) {
        Verbose("nDataSize not large enough to hold version number. Should be sizeof(unsigned int)");
    }
    if (m_pDst->pData != nullptr) {
        StoreWord(m_pDst->pData, QONVERT_VERSION);
    }
}

void CImage::Verbose(const char* message) {
    if (m_bVerbose) {
        std::fprintf(stderr, "QXTextureConverter error: %s \n", message);
    }
}

void CImage::ReportNoMemory() {
    Verbose("Could not create memory");
    if (m_pDst != nullptr) {
        m_pDst->nDataSize = 0;
    }
}

unsigned char* CImage::Mem_Malloc(unsigned size) {
    auto* memory = static_cast<unsigned char*>(std::malloc(std::max(size, 1u)));
    if (memory == nullptr) {
        ReportNoMemory();
    }
    return memory;
}

unsigned char* CImage::AllocateImage(std::uint32_t width, std::uint32_t height, std::uint32_t bytesPerPixel) {
    const std::uint64_t pixels = std::uint64_t{width} * height;
    if (pixels > UINT32_MAX / bytesPerPixel) {
        ReportNoMemory();
        return nullptr;
    }
    return Mem_Malloc(static_cast<unsigned>(pixels * bytesPerPixel));
}

bool CImage::StartWorkingImage(std::uint32_t bytesPerPixel) {
    SetBuffer(nullptr);
    if (m_pSrc == nullptr) {
        return false;
    }
    if (m_pSrc->pData == nullptr && m_pSrc->nWidth != 0 && m_pSrc->nHeight != 0) {
        return false;
    }
    m_nWidth = m_pSrc->nWidth;
    m_nHeight = m_pSrc->nHeight;
    m_nBytesPerPixel = bytesPerPixel;
    m_pBuffer = AllocateImage(m_nWidth, m_nHeight, bytesPerPixel);
    return m_pBuffer != nullptr;
}

void CImage::SetBuffer(unsigned char* buffer) {
    std::free(m_pBuffer);
    m_pBuffer = buffer;
}

void CImage::Store(RowSource& rows, std::uint32_t width, std::uint32_t height, unsigned char* to) const {
    for (std::uint32_t y = 0; y < height; ++y) {
        rows.Read(y, to + std::size_t{y} * width * m_nBytesPerPixel);
    }
}

void CImage::Convert(bool floats) {
    if (ConvertByRows(floats)) {
        return;
    }
    if (floats) {
        Input_ToFloat();
        Float_Flip();
        Float_Scale();
        Output_Float();
    } else {
        Input_ToGeneric();
        Generic_Flip();
        Generic_Scale();
        Generic_Bumpmap();
        Output_Generic();
    }
}

}  // namespace QXTextureConverter

std::uint32_t Qonvert(TQonvertImage* source, TQonvertImage* destination) {
    using namespace QXTextureConverter;
    CImage image(source, destination);
    switch (const TCheck check = image.Input_Check(); check) {
        case CHECK_GENERIC:
        case CHECK_FLOAT:
            try {
                image.Convert(check == CHECK_FLOAT);
            } catch (const std::exception&) {  // also of vectors that no memory could hold
                image.ReportNoMemory();
            }
            break;
        case CHECK_DATASIZE:
            image.Output_DataSize();
            break;
        case CHECK_VERSION:
            image.Output_Version();
            break;
    }
    return 0;
}
