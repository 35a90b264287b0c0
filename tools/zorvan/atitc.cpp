#include "tools/zorvan/atitc.h"

#include <cstdio>
#include <cstring>
#include <vector>

#include "core/pixel_format.h"
#include "texcompress/texcompress.h"

namespace zorvan::tool {
namespace {

using Decoder = decltype(ATI_TC_DecodeImage_Seperate_Header);
constexpr char const* kDecoderName = "ATI_TC_DecodeImage_Seperate_Header";

bool Decode(Texture& texture, Decoder& decoder) {
    const bool alpha = texture.format.Get() == TextureFormat::AtcRgbaExplicitAlpha;
    const auto width = static_cast<uint32_t>(texture.width.Get());
    const auto height = static_cast<uint32_t>(texture.height.Get());
    const _ATITC_HEADER header = {TXC_FORMAT_ATC, width, height, alpha ? TXC_FLAG_ALPHA : TXC_FLAG_RGB,
                                  sizeof(_ATITC_HEADER)};
    uint32_t size = 0;
    if (decoder(&header, nullptr, TXC_ORDER_RGB, nullptr, &size) != TXC_OK) {
        return false;
    }
    std::vector<uint8_t> pixels(size);
    if (decoder(&header, texture.pixels.data, TXC_ORDER_RGB, pixels.data(), &size) != TXC_OK ||
        !texture.SizePixelStore(size)) {
        return false;
    }
    std::memcpy(texture.pixels.data, pixels.data(), size);
    texture.format.Set(alpha ? TextureFormat::Rgba8888 : TextureFormat::Rgb888);
    return texture.levels.Append({width, height, 0, size});
}

}  // namespace

bool IsAtitc(Texture const& texture) {
    const uint32_t format = texture.format.Get();
    return format == TextureFormat::AtcRgb || format == TextureFormat::AtcRgbaExplicitAlpha;
}

void WarnOfAtitc(Scene const& scene, std::string const& glExtensions) {
    if (glExtensions.find("GL_AMD_compressed_ATC_texture") != std::string::npos) {
        return;
    }
    size_t count = 0;
    Texture const* first = nullptr;
    for (RefT<Texture> const& texture : scene.textures) {
        if (IsAtitc(*texture)) {
            first = count++ == 0 ? texture.Get() : first;
        }
    }
    if (first == nullptr) {
        return;
    }
    const std::string others = count == 1 ? "" : " and " + std::to_string(count - 1) + " more";
    std::fprintf(stderr,
                 "zorvan: warning: this driver cannot show ATITC textures: '%s' (%s)%s will draw black; "
                 "--decode-atitc shows them\n",
                 first->name.c_str(), TextureFormatName(first->format.Get()), others.c_str());
}

Status DecodeAtitc(Scene& scene, Plugin const& plugin) {
    Decoder* decoder = nullptr;
    for (RefT<Texture> const& texture : scene.textures) {
        if (!IsAtitc(*texture)) {
            continue;
        }
        decoder = decoder == nullptr ? plugin.FindFunction<Decoder>(kDecoderName) : decoder;
        if (decoder == nullptr) {
            return Failure{ExitCode::Unsupported, plugin.GetPath() + ": the plug-in has no function '" +
                                                      kDecoderName + "', which --decode-atitc needs"};
        }
        if (!Decode(*texture, *decoder)) {
            return Failure{ExitCode::Runtime,
                           "texture '" + texture->name + "': the plug-in's decoder refused it"};
        }
    }
    return std::nullopt;
}

}  // namespace zorvan::tool
