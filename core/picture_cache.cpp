#include "core/picture_cache.h"

#include <filesystem>

#include "core/file_bytes.h"
#include "core/image_codecs.h"
#include "core/image_file.h"

namespace zorvan {
namespace {

// An eighth of the budget's limit: what pictures may take only because they may be wanted again.
constexpr uint64_t kKeptShare = 8;

}  // namespace

RefT<PictureCache::Picture> PictureCache::Read(std::string const& path, std::string& error) {
    for (auto const& [name, picture] : pictures_) {
        if (name == path) {
            return picture;
        }
    }
    MemoryClaim file(budget_);
    std::error_code unknown;
    const uintmax_t size = std::filesystem::file_size(path, unknown);
    if (!unknown && !file.Take(size)) {
        error = budget_.Refusal("the file");
        return {};
    }
    const RefT<Picture> picture(new Picture(budget_));
    error = ReadImage(path, picture->image, &picture->claim);
    if (!error.empty()) {
        return {};
    }
    sizes_[path] = {static_cast<int32_t>(picture->image.width), static_cast<int32_t>(picture->image.height)};
    pictures_.emplace_back(path, picture);
    DropBeyond(budget_.Limit() / kKeptShare);
    return picture;
}

bool PictureCache::ReadSize(std::string const& path, SizeT<int32_t>& size, std::string& error) {
    if (!sizes_.contains(path) && !Read(path, error)) {
        return false;
    }
    size = sizes_[path];
    return true;
}

Texture* PictureCache::FindTexture(std::string const& key) const {
    const auto found = textures_.find(key);
    return found == textures_.end() ? nullptr : found->second.Get();
}

void PictureCache::AddTexture(std::string const& key, Texture& texture) {
    textures_[key] = &texture;
}

void PictureCache::DropBeyond(uint64_t mostBytes) {
    uint64_t bytes = 0;
    for (auto const& [name, picture] : pictures_) {
        bytes += picture->claim.Bytes();
    }
    size_t dropped = 0;
    for (; bytes > mostBytes && dropped + 1 < pictures_.size(); ++dropped) {
        bytes -= pictures_[dropped].second->claim.Bytes();
    }
    pictures_.erase(pictures_.begin(), pictures_.begin() + static_cast<std::ptrdiff_t>(dropped));
}

}  // namespace zorvan
