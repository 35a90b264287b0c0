// Animation of one property.
#pragma once

#include <string>
#include <vector>

#include "core/api.h"
#include "core/property.h"

namespace zorvan {

class Node;

enum class Interpolation : uint8_t { Step, Linear, Smooth };

struct TrackKey {
    RealFixed frame;
    KeyValue value;
};

// Keys of one property of one node, in rising order of frames. Before the first and after the last key
// their values hold.
class ZORVAN_CORE_API Track {
  public:
    // Reads a track from the reader's current object: "node" (a name inside root's subtree, or none for
    // root itself), "property", "interpolation" and "keys". False after an error.
    bool Load(Deserializer& reader, Node& root);
    void Save(Serializer& writer) const;

    // Finds the node and the property in root's subtree; false when there are none.
    bool Bind(Node& root);
    // Sets the bound property to its value at a frame; nothing when not bound.
    void Apply(RealFixed frame);

    std::string nodeName;  // empty for the timeline itself
    std::string propertyName;
    Interpolation interpolation = Interpolation::Linear;
    std::vector<TrackKey> keys;

  private:
    RefT<Node> node_;
    PropertyBase* property_ = nullptr;
    size_t last_ = 0;  // the key that held last time: time mostly moves on a little
};

}  // namespace zorvan
