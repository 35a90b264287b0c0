// Animation of one property.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/api.h"
#include "core/property.h"
#include "core/texture.h"

namespace zorvan {

class Node;

enum class Interpolation : uint8_t { Step, Linear, Smooth };

struct TrackKey {
    RealFixed frame;
    KeyValue value;
};

// The nodes of a subtree by name: of several with one name the first in drawing order.
using NodeNames = std::unordered_map<std::string_view, Node*>;

// Keys of one property of one node, in rising order of frames. Before the first and after the last key
// their values hold.
class ZORVAN_CORE_API Track {
  public:
    // Reads a track from the reader's current object: "node" (one of names, or none for root), "property",
    // "interpolation" and "keys", whose values keep to the property's range. False after an error.
    bool Load(Deserializer& reader, Node& root, NodeNames const& names);
    // Only when bound: a key is written as its property says.
    void Save(Serializer& writer) const;

    // Finds the node and the property; false when there are none. Both must live until the next Bind
    // or the last Apply.
    bool Bind(Node& root, NodeNames const& names);
    bool IsBound() const { return property_ != nullptr; }
    // Sets the bound property to its value at a frame. Sets nothing when not bound, or when the value is
    // the one of the last call.
    void Apply(RealFixed frame);

    std::string nodeName;  // empty for the timeline itself
    std::string propertyName;
    Interpolation interpolation = Interpolation::Linear;
    std::vector<TrackKey> keys;

  private:
    static constexpr size_t kNone = static_cast<size_t>(-1);

    bool LoadKeys(Deserializer& reader);
    bool LoadKey(Deserializer& reader);
    // Index of the last key at or before a frame; 0 before the first.
    size_t KeyAt(RealFixed frame) const;
    void ApplyBlend(size_t key, RealFixed frame);

    PropertyBase* property_ = nullptr;
    PropertyRange const* range_ = nullptr;  // of the bound property
    size_t current_ = 0;                    // the key that held last time: time mostly moves on a little
    size_t applied_ = kNone;                // the key whose value was set last, kNone after a blend
    RealFixed blended_[4];                  // the blend that was set last
    bool isBlended_ = false;
};

}  // namespace zorvan
