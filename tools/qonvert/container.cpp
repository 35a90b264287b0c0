#include "tools/qonvert/container.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "texconv/format_table.h"
#include "tools/qonvert/dds.h"
#ifdef QONVERT_JPEG
#include "tools/qonvert/jpeg.h"
#endif
#include "tools/qonvert/ktx1.h"
#include "tools/qonvert/pkm.h"
#include "tools/qonvert/png.h"
#include "tools/qonvert/raw.h"

namespace qonvert {

namespace {

#ifdef QONVERT_JPEG
bool JpegCarries(std::uint32_t, const WriteOptions&) {
    return false;
}
#endif

const std::vector<Container>& Table() {
    static const std::vector<Container> table = {
        {"png", {"png"}, false, false, kMaxSide, IsPng, PngCarries, ReadPng, WritePng},
#ifdef QONVERT_JPEG
        {"jpeg", {"jpg", "jpeg"}, false, false, kMaxSide, IsJpeg, JpegCarries, ReadJpeg, nullptr},
#endif
        {"ktx", {"ktx"}, true, true, kMaxSide, IsKtx1, Ktx1Carries, ReadKtx1, WriteKtx1},
        {"dds", {"dds"}, true, false, kMaxSide, IsDds, DdsCarries, ReadDds, WriteDds},
        {"pkm", {"pkm"}, false, false, kMaxPkmSide, IsPkm, PkmCarries, ReadPkm, WritePkm},
        {"raw", {"raw"}, true, false, kMaxSide, IsRaw, RawCarries, ReadRaw, WriteRaw},
    };
    return table;
}

template <typename Fits>
std::string NamesOf(Fits fits) {
    std::string names;
    for (const Container& container : Table()) {
        if (fits(container)) {
            names += (names.empty() ? "" : ", ") + std::string(container.name);
        }
    }
    return names;
}

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return lower;
}

}  // namespace

std::span<const Container> Containers() {
    return Table();
}

const Container* FindContainer(std::string_view nameOrExtension) {
    const std::string wanted = LowerCase(nameOrExtension);
    for (const Container& container : Table()) {
        if (container.name == wanted || std::find(container.extensions.begin(), container.extensions.end(),
                                                  wanted) != container.extensions.end()) {
            return &container;
        }
    }
    return nullptr;
}

const Container& NamedContainer(std::string_view nameOrExtension) {
    const Container* container = FindContainer(nameOrExtension);
    if (container == nullptr) {
        throw ToolError(ExitCode::kUsage, "no container is called \"" + std::string(nameOrExtension) +
                                              "\"; there are " + ContainerNames());
    }
    return *container;
}

const Container* ContainerOfPath(std::string_view path) {
    const std::size_t slash = path.find_last_of('/');
    const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    const std::size_t dot = name.find_last_of('.');
    return dot == std::string_view::npos ? nullptr : FindContainer(name.substr(dot + 1));
}

const Container* ContainerOfBytes(ByteSpan bytes) {
    for (const Container& container : Table()) {
        if (container.recognises(bytes)) {
            return &container;
        }
    }
    return nullptr;
}

std::string ContainerNames() {
    return NamesOf([](const Container&) { return true; });
}

std::string ContainersThatCarry(std::uint32_t format, const WriteOptions& options) {
    return NamesOf([&](const Container& container) { return container.carries(format, options); });
}

void CheckCarries(const Container& container, std::uint32_t format, const WriteOptions& options) {
    if (container.write == nullptr) {
        throw ToolError(ExitCode::kUnsupported, std::string(container.name) + " is only read, not written");
    }
    if (!container.carries(format, options)) {
        const auto* info = QXTextureConverter::FindFormat(format);
        throw ToolError(ExitCode::kUnsupported,
                        std::string(container.name) + " cannot carry " +
                            (info != nullptr ? std::string(info->name + 4) : std::to_string(format)) +
                            "; these can: " + ContainersThatCarry(format, options));
    }
}

void CheckSides(const Container& container, std::uint32_t width, std::uint32_t height) {
    if (std::max(width, height) > container.largestSide) {
        throw ToolError(ExitCode::kUnsupported, std::string(container.name) + " holds sides up to " +
                                                    std::to_string(container.largestSide) + " pixels, got " +
                                                    std::to_string(width) + " x " + std::to_string(height));
    }
}

Bytes WriteContainer(const Container& container, const TextureFile& texture, const WriteOptions& options) {
    CheckCarries(container, texture.format, options);
    CheckSides(container, texture.width, texture.height);
    return container.write(texture, options);
}

}  // namespace qonvert
