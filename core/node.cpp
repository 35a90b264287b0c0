#include "core/node.h"

namespace zorvan {
namespace {

// Scenes name the classes of the core; those of a back end carry its suffix.
std::string CoreClassName(Node& node) {
    std::string name = node.GetClassName();
    constexpr std::string_view kSuffix = "GL";
    if (name.size() > kSuffix.size() && name.ends_with(kSuffix)) {
        name.resize(name.size() - kSuffix.size());
    }
    return name;
}

}  // namespace

Node::~Node() {
    for (Node* child : children_) {
        child->parent_ = nullptr;
        Release(child);
    }
}

uint32_t Node::IsKindOf(ClassId id) {
    return id == MakeClassId(u"Node");
}

void Node::SetUserData(void* data) {
    userData_ = data;
}

void* Node::GetUserData() {
    return userData_;
}

void const* Node::GetUserData() const {
    return userData_;
}

bool Node::Attach(Node* child) {
    return Insert(child, children_.Count());
}

bool Node::AttachBefore(Node* child, Node* sibling) {
    const uint32_t index = children_.IndexOf(sibling);
    return index != List<Node*>::kNotFound && child != sibling && Insert(child, index);
}

bool Node::AttachAfter(Node* child, Node* sibling) {
    const uint32_t index = children_.IndexOf(sibling);
    return index != List<Node*>::kNotFound && child != sibling && Insert(child, index + 1);
}

bool Node::Insert(Node* child, uint32_t index) {
    if (child == nullptr) {
        return false;
    }
    for (Node* ancestor = this; ancestor != nullptr; ancestor = ancestor->parent_) {
        if (ancestor == child) {
            return false;
        }
    }
    if (!children_.Append(child)) {
        return false;
    }
    Retain(child);
    for (uint32_t i = children_.Count() - 1; i > index; --i) {
        std::swap(children_[i], children_[i - 1]);
    }
    if (child->parent_ == this) {
        // The child moves within this list: its old entry is the one beside the new one.
        for (uint32_t i = 0; i < children_.Count(); ++i) {
            if (children_[i] == child && i != index) {
                children_.RemoveAt(i);
                Release(child);
                break;
            }
        }
    } else if (child->parent_ != nullptr) {
        child->parent_->Detach(child);
    }
    child->SetParent(this);
    return true;
}

bool Node::Detach(Node* child) {
    const uint32_t index = children_.IndexOf(child);
    if (index == List<Node*>::kNotFound) {
        return false;
    }
    children_.RemoveAt(index);
    child->SetParent(nullptr);
    Release(child);
    return true;
}

void Node::TreeChanged(Node* top) {
    for (Node* node = top; node != nullptr; node = node->parent_) {
        ++node->treeVersion_;
    }
}

void Node::SetParent(Node* parent) {
    TreeChanged(parent_);
    parent_ = parent;
    TreeChanged(parent_);
    properties_.Touch();
}

Matrix4T<RealFixed> const& Node::GetWorldMatrix() const {
    return Matrix4T<RealFixed>::Identity;
}

void Node::Update(GraphicsDevice& device, RealFixed const& time) {
    Update(device, time, RealFixed{}, false);
}

void Node::Update(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta, bool force) {
    properties_.EnsureRegistered();
    InternalUpdate(device, time, delta, force);
}

void Node::Render(GraphicsDevice& device) {
    InternalRender(device);
    for (uint32_t i = 0; i < children_.Count(); ++i) {
        children_[i]->Render(device);
    }
}

void Node::RegisterProperties() {}

void Node::InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta, bool force) {
    for (uint32_t i = 0; i < children_.Count(); ++i) {
        children_[i]->Update(device, time, delta, force);
    }
}

void Node::InternalRender(GraphicsDevice&) {}

void Node::InternalSelect(GraphicsDevice&) {}

void Node::Save(Serializer& writer) {
    writer.Write("class", CoreClassName(*this));
    if (!name.empty()) {
        writer.Write("name", name);
    }
    GetProperties().Save(writer);
    InternalSave(writer);
    if (children_.IsEmpty()) {
        return;
    }
    writer.BeginArray("children");
    for (Node* child : children_) {
        writer.BeginObject(nullptr);
        child->Save(writer);
        writer.EndObject();
    }
    writer.EndArray();
}

bool Node::Load(Deserializer& reader) {
    reader.Read("name", name);
    if (!GetProperties().Load(reader) || !InternalLoad(reader)) {
        return false;
    }
    return ForEachElement(reader, "children", [&](uint32_t) { Attach(RefT<Node>(LoadNode(reader)).Get()); });
}

void Node::InternalSave(Serializer&) {}

bool Node::InternalLoad(Deserializer&) {
    return true;
}

Node* CloneChildren(Node& source, Node* copy) {
    for (Node* child : source.GetChildren()) {
        copy->Attach(RefT<Node>(child->CloneDeep()).Get());
    }
    return copy;
}

}  // namespace zorvan
