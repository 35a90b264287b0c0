// Where nodes lie in the picture.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "core/node.h"
#include "tools/zorvan/report.h"
#include "tools/zorvan/result.h"

namespace zorvan::tool {

class PlaceProbe;

// Follows the zero points of some nodes' own units through the frames that are drawn while this lives.
class NodePlaces {
  public:
    NodePlaces();
    ~NodePlaces();
    NodePlaces(NodePlaces const&) = delete;
    NodePlaces& operator=(NodePlaces const&) = delete;

    // Adds the first node of that name in the tree, or the node at a path such as "/root/children/3".
    Status Follow(Node& root, std::string const& nameOrPath);
    // Notes where the nodes lay in the frame just drawn, on a surface of so many times the picture's pixels
    // in each direction.
    void Record(uint32_t frame, int supersample);

    // Each frame's places in pixels from the picture's top left, for nodes that were drawn.
    bool IsEmpty() const { return nodes_.empty(); }
    Json ToJson() const;
    void Print(std::FILE* stream) const;

  private:
    struct Point {
        double x, y;
    };
    struct Frame {
        uint32_t number;
        std::vector<std::optional<Point>> points;  // of each node
    };
    struct FollowedNode {
        std::string name;
        RefT<PlaceProbe> probe;
    };

    std::vector<FollowedNode> nodes_;
    std::vector<Frame> frames_;
};

}  // namespace zorvan::tool
