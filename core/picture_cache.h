// The image files of one loading, decoded and kept once however often they are named.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "core/geometry.h"
#include "core/image.h"
#include "core/memory_budget.h"
#include "core/texture.h"

namespace zorvan {

class PictureCache {
  public:
    // A decoded file, which counts in the budget as long as it lives.
    struct Picture : Referenced {
        explicit Picture(MemoryBudget& budget) : claim(budget) {}
        Image image;
        MemoryClaim claim;
    };

    // The budget must outlive the cache and its pictures.
    explicit PictureCache(MemoryBudget& budget) : budget_(budget) {}

    // The picture of a file: from the cache, or decoded. Null after a failure; error then says why, without
    // the file's name.
    RefT<Picture> Read(std::string const& path, std::string& error);
    // Width and height of a file's picture; decodes it the first time. False after a failure.
    bool ReadSize(std::string const& path, SizeT<int32_t>& size, std::string& error);

    // A texture that was loaded under this key, which says all that its pixels follow from; null for none.
    Texture* FindTexture(std::string const& key) const;
    void AddTexture(std::string const& key, Texture& texture);

  private:
    // The pictures that were decoded first go first; the last one stays.
    void DropBeyond(uint64_t mostBytes);

    MemoryBudget& budget_;
    std::vector<std::pair<std::string, RefT<Picture>>> pictures_;
    std::map<std::string, SizeT<int32_t>> sizes_;
    std::map<std::string, RefT<Texture>> textures_;
};

}  // namespace zorvan
