#include "fuzz/container_input.h"

#include <zlib.h>

#include <algorithm>
#include <array>

#include "fuzz/fuzz_input.h"
#include "texconv/format_table.h"

namespace qonvert::fuzz {

namespace {

using zorvan::fuzz::FuzzInput;

void AppendBigEndian(Bytes& out, std::uint32_t word) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(word >> shift));
    }
}

void AppendChunk(Bytes& file, std::string_view type, const Bytes& content) {
    AppendBigEndian(file, static_cast<std::uint32_t>(content.size()));
    Bytes checked(type.begin(), type.end());
    checked.insert(checked.end(), content.begin(), content.end());
    file.insert(file.end(), checked.begin(), checked.end());
    AppendBigEndian(file,
                    static_cast<std::uint32_t>(crc32(0, checked.data(), static_cast<uInt>(checked.size()))));
}

Bytes Packed(const Bytes& plain) {
    uLongf size = compressBound(static_cast<uLong>(plain.size()));
    Bytes packed(size);
    compress(packed.data(), &size, plain.data(), static_cast<uLong>(plain.size()));
    packed.resize(size);
    return packed;
}

Bytes Content(FuzzInput& input, std::uint32_t size) {
    Bytes content(size);
    std::generate(content.begin(), content.end(), [&] { return input.Byte(); });
    return content;
}

Bytes PngFromInput(FuzzInput& input) {
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    AppendBigEndian(header, input.Byte());
    AppendBigEndian(header, input.Byte());
    constexpr std::array<std::uint8_t, 6> kDepths = {1, 2, 4, 8, 16, 3};
    constexpr std::array<std::uint8_t, 6> kTypes = {0, 2, 3, 4, 6, 1};
    header.push_back(input.Pick(kDepths));
    header.push_back(input.Pick(kTypes));
    header.push_back(0);
    header.push_back(0);
    header.push_back(input.Byte() & 1);
    AppendChunk(file, "IHDR", header);
    constexpr std::array<std::string_view, 6> kNames = {"PLTE", "tRNS", "gAMA", "IDAT", "bKGD", "tEXt"};
    const std::uint32_t chunks = input.Range(1, 5);
    for (std::uint32_t i = 0; i < chunks; ++i) {
        const std::string_view name = input.Pick(kNames);
        const Bytes content = Content(input, input.Byte());
        AppendChunk(file, name, name == "IDAT" ? Packed(content) : content);
    }
    AppendChunk(file, "IDAT", Packed(Content(input, input.Word() % 4096)));
    AppendChunk(file, "IEND", {});
    return file;
}

}  // namespace

Bytes FileFromInput(std::string_view container, ByteSpan bytes, ReadOptions& options) {
    FuzzInput input(bytes.data(), bytes.size());
    if (container == "raw") {
        options.rawFormat = QXTextureConverter::kFormats[input.Byte() % 40].code;
        options.rawWidth = input.Byte() < 250 ? input.Byte() : input.Word();
        options.rawHeight = input.Byte() < 250 ? input.Byte() : input.Word();
        return Content(input, input.Word() % 4096);
    }
    if (container == "png" && (input.Byte() & 3) != 0) {
        options.deepSamples = static_cast<DeepSamples>(input.Byte() % 3);
        return PngFromInput(input);
    }
    const ByteSpan rest = container == "png" && !bytes.empty() ? bytes.subspan(1) : bytes;
    return Bytes(rest.begin(), rest.end());
}

}  // namespace qonvert::fuzz
