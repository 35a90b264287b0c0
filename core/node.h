// A node of the scene tree.
#pragma once

#include <string>

#include "core/api.h"
#include "core/class_id.h"
#include "core/list.h"
#include "core/matrix.h"
#include "core/property.h"
#include "core/referenced.h"
#include "core/serializer.h"

namespace zorvan {

class GraphicsDevice;
class Visitor;

// Children are counted references; the parent is not. The order of the virtual operations is part of
// the binary interface with the plug-in.
class ZORVAN_CORE_API Node : public Referenced {
  public:
    Node() : properties_(this, &Node::RegisterOwner) {}
    // Copies name and user data; a copy has neither parent nor children.
    Node(Node const& other)
        : Referenced(other),
          name(other.name),
          properties_(this, &Node::RegisterOwner),
          userData_(other.userData_) {}
    ~Node() override;

    // A copy without children.
    virtual Node* Clone() = 0;
    virtual char const* GetClassName() = 0;
    virtual ClassId GetClassId() = 0;
    virtual void Visit(Visitor& visitor) = 0;
    // A copy with copies of all children.
    virtual Node* CloneDeep() = 0;
    // 1 for the object's class and those above it, else 0.
    virtual uint32_t IsKindOf(ClassId id);

    virtual void SetUserData(void* data);
    virtual void* GetUserData();
    virtual void const* GetUserData() const;

    // Append a child, or insert it beside one; the child leaves its old parent first. False for null,
    // for the node itself or one of its ancestors, for a sibling that is no child, and out of memory.
    virtual bool Attach(Node* child);
    virtual bool AttachBefore(Node* child, Node* sibling);
    virtual bool AttachAfter(Node* child, Node* sibling);
    // Gives the child's reference back; false when it is no child.
    virtual bool Detach(Node* child);

    // Of the last update.
    virtual Matrix4T<RealFixed> const& GetWorldMatrix() const;

    // Brings the subtree up to date; time in seconds. force recomputes what depends on the ancestors.
    virtual void Update(GraphicsDevice& device, RealFixed const& time);
    virtual void Update(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta, bool force);
    virtual void Render(GraphicsDevice& device);

    virtual void Save(Serializer& writer);
    virtual bool Load(Deserializer& reader);

  protected:
    virtual void RegisterProperties();
    virtual void InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                                bool force);
    virtual void InternalRender(GraphicsDevice& device);
    virtual void InternalSelect(GraphicsDevice& device);
    virtual void InternalSave(Serializer& writer);
    virtual bool InternalLoad(Deserializer& reader);

  public:
    Node* GetParent() const { return parent_; }
    // For owners that hold a node outside their list of children, such as a timeline its camera. Does not
    // take the node out of the old parent's list.
    void SetParent(Node* parent);
    List<Node*>& GetChildren() { return children_; }
    List<Node*> const& GetChildren() const { return children_; }
    PropertyList& GetProperties() {
        properties_.EnsureRegistered();
        return properties_;
    }
    // Own opacity times the ancestors', of the last update; 1.0 for a plain node.
    RealFixed GetEffectiveOpacity() const { return effectiveOpacity_; }

    // Changes whenever a node joins or leaves the subtree below this node.
    uint32_t GetTreeVersion() const { return treeVersion_; }

    // UTF-8; tracks find their nodes by it.
    std::string name;

  protected:
    // For the properties' constructors: not yet registered.
    PropertyList& OwnProperties() { return properties_; }

    RealFixed effectiveOpacity_ = kOne<RealFixed>;

  private:
    static void RegisterOwner(void* owner) { static_cast<Node*>(owner)->RegisterProperties(); }
    bool Insert(Node* child, uint32_t index);
    // Counts a change below a node (none for null), there and in all its ancestors.
    static void TreeChanged(Node* top);

    PropertyList properties_;
    Node* parent_ = nullptr;
    List<Node*> children_;
    void* userData_ = nullptr;
    uint32_t treeVersion_ = 0;
};

// Appends copies of source's children to copy and returns copy.
ZORVAN_CORE_API Node* CloneChildren(Node& source, Node* copy);

// Creates and loads the node that the reader's current object describes; its "class" names the core
// class and may be left out where impliedClass gives it. Null after an error. The caller holds no
// reference yet.
ZORVAN_CORE_API Node* LoadNode(Deserializer& reader, char const* impliedClass = nullptr);

}  // namespace zorvan
