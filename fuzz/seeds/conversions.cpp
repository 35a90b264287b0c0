// Conversions between formats, and blocks of every codec.
#include <algorithm>
#include <array>

#include "fuzz/seeds/seeds.h"
#include "texcompress/texcompress.h"
#include "texconv/format_table.h"

namespace zorvan::fuzz {

namespace {

constexpr uint32_t kFormatCount = QXTextureConverter::kFormats.size();

// The flags of one image, as the target of honest descriptors reads them.
void AddFlags(SeedInput& input, uint32_t variant) {
    input.Byte(0);
    input.Byte(variant).Byte(variant / 2).Byte(variant / 3);
    input.Byte(variant % 6).Byte(variant % 7 == 0 ? variant % 4 : 0).Byte(0).Byte(variant);
}

Bytes Conversion(uint32_t from, uint32_t to, uint32_t variant) {
    SeedInput input;
    AddFlags(input, 0);
    AddFlags(input, variant);
    const bool scaled = variant % 3 == 1;
    input.Byte(1).Byte(9).Byte(6).Byte(from).Byte(to).Byte(scaled ? 1 : 0);
    if (scaled) {
        input.Byte(5).Byte(11);
    }
    return input.Noise(9 * 6 * 4, variant).bytes;
}

// One descriptor, as the target between guard pages reads it.
void AddDescriptor(SeedInput& input, uint32_t code, uint32_t variant, uint32_t width) {
    input.Byte(0).Byte(0).Byte(0);  // the format's own stride and masks
    for (uint32_t option : {variant & 1, variant >> 1 & 1, variant & 1, variant % 6,
                            variant % 7 == 0 ? variant % 4 : 0, 10u, 0u}) {
        input.Byte(0).Byte(option);
    }
    input.Byte(0);  // quiet
    input.Byte(0).Byte(width).Byte(0).Byte(7).Byte(0).Byte(code);
    input.Byte(0).Byte(0);  // with flags, of the size that is needed
}

Bytes GuardedConversion(uint32_t from, uint32_t to, uint32_t variant) {
    SeedInput input;
    input.Byte(variant % 16 == 15 ? 255 : variant & 3);
    AddDescriptor(input, QXTextureConverter::kFormats[from].code, 0, 9);
    AddDescriptor(input, QXTextureConverter::kFormats[to].code, variant, variant % 3 == 1 ? 6 : 9);
    return input.Noise(9 * 7 * 4, variant).bytes;
}

void AddGuardedBlocks(SeedFolder const& folder) {
    for (uint32_t call = 0; call < 6; ++call) {
        for (uint32_t format = 0; format < 5; ++format) {
            for (uint32_t flags : {0u, 1u, 2u, 18u}) {
                SeedInput input;
                input.Byte(call).Byte(0).Byte(format).Byte(0).Byte(flags);
                if (call < 3) {
                    // Masks, size, pitch, then side of the memory, and for one call the quick encoder.
                    input.Byte(flags / 2).Byte(0).Byte(0).Byte(9).Byte(0).Byte(6).Byte(0).Byte(1).Byte(1);
                    input.Byte(call == 1 ? 1 : 0).Byte(0);
                } else {
                    // Size and order, then the level or whether there is one buffer.
                    input.Byte(0).Byte(9).Byte(0).Byte(6).Byte(0).Byte(0).Byte(0).Byte(flags == 1 ? 1 : 0);
                }
                input.Byte(0).Byte(1).Noise(200, call + format);
                folder.Add("guarded_texcompress",
                           std::to_string(call) + "-" + std::to_string(format) + "-" + std::to_string(flags),
                           input.bytes);
            }
        }
    }
}

void AddBlocks(SeedFolder const& folder) {
    for (uint32_t format = 0; format < 4; ++format) {
        for (uint32_t flags : {0u, 1u, 2u, 18u}) {
            const std::string name = std::to_string(format) + "-" + std::to_string(flags);
            SeedInput encode;
            encode.Byte(0).Byte(format).Byte(flags).Byte(flags / 2).Byte(1).Byte(8).Byte(6).Byte(0);
            folder.Add("texcompress_encode", "plain-" + name, encode.Noise(200, format).bytes);
            SeedInput decode;
            decode.Byte(1).Byte(format).Byte(9).Byte(6).Byte(flags).Byte(flags % 3).Byte(1);
            folder.Add("texcompress_decode", "level-" + name, decode.Noise(200, format).bytes);
        }
    }
    for (uint32_t variant = 0; variant < 12; ++variant) {
        const std::string name = std::to_string(variant);
        SeedInput encode;
        encode.Byte(1).Byte(variant).Byte(variant % 3).Byte(variant / 2).Byte(variant % 5).Byte(1);
        encode.Byte(8).Byte(6).Byte(0);
        folder.Add("texcompress_encode", "header-" + name, encode.Noise(200, variant).bytes);
        SeedInput decode;
        decode.Byte(0).Byte(variant % 2 == 0 ? 0 : 4).Byte(9).Byte(6).Byte(variant % 3).Byte(0).Byte(1);
        folder.Add("texcompress_decode", "buffer-" + name, decode.Noise(200, variant).bytes);
    }
}

}  // namespace

void AddConversions(SeedFolder const& folder) {
    for (uint32_t from = 0; from < kFormatCount; ++from) {
        // To itself, to the plainest, and to others so that each is met as both.
        for (uint32_t to : {from, 0u, (from + 7) % kFormatCount, (3 * from + 1) % kFormatCount}) {
            const uint32_t variant = from * 5 + to;
            const std::string name = std::to_string(from) + "-" + std::to_string(to);
            folder.Add("qonvert", name, Conversion(from, to, variant));
            folder.Add("guarded_qonvert", name, GuardedConversion(from, to, variant));
        }
    }
    AddBlocks(folder);
    AddGuardedBlocks(folder);
}

}  // namespace zorvan::fuzz
