#include "tools/zorvan/node_places.h"

#include <utility>

#include "core/graphics_device.h"
#include "core/transform_node.h"
#include "tools/common/printable.h"
#include "tools/zorvan/describe_node.h"

namespace zorvan::tool {

// A child of the node: when its turn to be drawn comes, the cameras around the node are in force.
class PlaceProbe : public TransformNode {
  public:
    std::optional<Vector2T<DoubleRealFixed>> place;

  protected:
    void InternalRender(GraphicsDevice& device) override {
        device.SetCameraDepth(depth.Get());
        const Vector4T<RealFixed> zero{RealFixed{}, RealFixed{}, RealFixed{}, kOne<RealFixed>};
        place = device.ProjectCoordinate(GetWorldMatrix(), zero);
    }
};

namespace {

Node* Find(Node& node, std::string const& nameOrPath) {
    if (node.name == nameOrPath || NodePath(node) == nameOrPath) {
        return &node;
    }
    for (Node* child : node.GetChildren()) {
        if (Node* found = Find(*child, nameOrPath)) {
            return found;
        }
    }
    return nullptr;
}

double ToPixels(DoubleRealFixed value) {
    return static_cast<double>(value.raw) / 4294967296.0;
}

}  // namespace

NodePlaces::NodePlaces() = default;

NodePlaces::~NodePlaces() {
    for (FollowedNode const& node : nodes_) {
        if (Node* parent = node.probe->GetParent()) {
            parent->Detach(node.probe.Get());
        }
    }
}

Status NodePlaces::Follow(Node& root, std::string const& nameOrPath) {
    Node* node = nameOrPath.empty() ? nullptr : Find(root, nameOrPath);
    if (node == nullptr) {
        return Failure{ExitCode::Usage, "--locate: got '" + nameOrPath +
                                            "', expected a node's name, or a path such as /root/children/0"};
    }
    const RefT<PlaceProbe> probe(new PlaceProbe);
    if (auto const* drawn = dynamic_cast<TransformNode const*>(node)) {
        probe->depth.Set(drawn->depth.Get());
    }
    node->Attach(probe.Get());
    nodes_.push_back({nameOrPath, probe});
    return std::nullopt;
}

void NodePlaces::Record(uint32_t frame, int supersample) {
    if (nodes_.empty()) {
        return;
    }
    Frame places{frame, {}};
    for (FollowedNode const& node : nodes_) {
        if (const auto place = std::exchange(node.probe->place, std::nullopt)) {
            places.points.push_back(
                Point{ToPixels(place->x) / supersample, ToPixels(place->y) / supersample});
        } else {
            places.points.emplace_back();
        }
    }
    frames_.push_back(std::move(places));
}

Json NodePlaces::ToJson() const {
    Json list = Json::array();
    for (Frame const& frame : frames_) {
        Json nodes = Json::object();
        for (size_t i = 0; i < nodes_.size(); ++i) {
            std::optional<Point> const& point = frame.points[i];
            nodes[nodes_[i].name] = point ? Json::array({point->x, point->y}) : Json();
        }
        list.push_back({{"frame", frame.number}, {"nodes", nodes}});
    }
    return list;
}

void NodePlaces::Print(std::FILE* stream) const {
    for (Frame const& frame : frames_) {
        for (size_t i = 0; i < nodes_.size(); ++i) {
            const std::string name = tools::Printable(nodes_[i].name);
            if (std::optional<Point> const& point = frame.points[i]) {
                std::fprintf(stream, "frame %u: %s at %.2f, %.2f\n", frame.number, name.c_str(), point->x,
                             point->y);
            } else {
                std::fprintf(stream, "frame %u: %s is not drawn\n", frame.number, name.c_str());
            }
        }
    }
}

}  // namespace zorvan::tool
