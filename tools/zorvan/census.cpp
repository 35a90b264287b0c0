#include "tools/zorvan/census.h"

#include <algorithm>

#include "core/timeline.h"
#include "core/visitor.h"

namespace zorvan::tool {
namespace {

class Counter final : public Visitor {
  public:
    void VisitNode(Node&) override { Count(); }
    void VisitTransformNode(TransformNode& node) override {
        Count();
        if (node.IsKindOf(MakeClassId(u"Sprite"))) {
            ++census.sprites;
        } else if (node.IsKindOf(MakeClassId(u"Text"))) {
            ++census.texts;
        } else {
            ++census.groups;
        }
    }
    void VisitCamera(Camera&) override {
        Count();
        ++census.cameras;
    }
    void VisitLight(Light&) override { Count(); }
    void VisitTimeline(Timeline& timeline) override {
        Count();
        ++census.timelines;
        census.tracks += static_cast<uint32_t>(timeline.GetTracks().size());
        if (timeline.GetCamera() != nullptr) {
            Descend(*timeline.GetCamera());
        }
    }
    void VisitChildren(List<Node*>& children) override {
        for (Node* child : children) {
            Descend(*child);
        }
    }

    void Descend(Node& node) {
        ++depth_;
        node.Visit(*this);
        --depth_;
    }

    Census census;

  private:
    void Count() {
        ++census.nodes;
        census.depth = std::max(census.depth, depth_);
    }

    uint32_t depth_ = 0;
};

}  // namespace

Census CountNodes(Node& root) {
    Counter counter;
    counter.Descend(root);
    return counter.census;
}

}  // namespace zorvan::tool
