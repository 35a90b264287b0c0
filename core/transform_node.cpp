#include "core/transform_node.h"

#include "core/graphics_device.h"
#include "core/trig.h"
#include "core/visitor.h"

namespace zorvan {
namespace {

using Matrix = Matrix4T<RealFixed>;
using Vector3 = Vector3T<RealFixed>;

constexpr PropertyRange kTransferModes = {0, int32_t{kTransferModeCount} - 1, "", true};

// Rotation about x, then y, then z, of column vectors.
Matrix RotationMatrix(Vector3 const& degrees) {
    Matrix result = Matrix::Identity;
    const RealFixed angles[3] = {degrees.x, degrees.y, degrees.z};
    for (int axis = 0; axis < 3; ++axis) {
        if (angles[axis].raw == 0) {
            continue;
        }
        const SinCos turn = SinCosDegrees(angles[axis]);
        const int from = (axis + 1) % 3;
        const int to = (axis + 2) % 3;
        Matrix step = Matrix::Identity;
        step[5 * from] = turn.cos;
        step[4 * from + to] = turn.sin;
        step[4 * to + from] = -turn.sin;
        step[5 * to] = turn.cos;
        Multiply(result, result, step);
    }
    return result;
}

Matrix LocalMatrix(TransformNode const& node) {
    Matrix local = RotationMatrix(node.rotation.Get());
    const RealFixed scales[3] = {node.scale.Get().x, node.scale.Get().y, node.scale.Get().z};
    for (int column = 0; column < 3; ++column) {
        if (scales[column] == kOne<RealFixed>) {
            continue;
        }
        for (int row = 0; row < 3; ++row) {
            // Zero and one stay exact; the product would drop the scale's last bit.
            RealFixed& element = local[4 * column + row];
            element = element == kOne<RealFixed> ? scales[column] : element * scales[column];
        }
    }
    const Vector3& place = node.position.Get();
    const Vector3& origin = node.origin.Get();
    Matrix hold = Matrix::Identity;
    hold[12] = -origin.x;
    hold[13] = -origin.y;
    hold[14] = -origin.z;
    Multiply(local, hold, local);
    local[12] += place.x;
    local[13] += place.y;
    local[14] += place.z;
    return local;
}

}  // namespace

TransformNode::TransformNode(TransformNode const& other)
    : Node(other),
      position(OwnProperties(), other.position.Get()),
      rotation(OwnProperties(), other.rotation.Get()),
      scale(OwnProperties(), other.scale.Get()),
      origin(OwnProperties(), other.origin.Get()),
      opacity(OwnProperties(), other.opacity.Get()),
      transferMode(OwnProperties(), other.transferMode.Get()),
      depth(OwnProperties(), other.depth.Get()),
      rendersChildren_(other.rendersChildren_),
      worldMatrix_(other.worldMatrix_) {
    for (Mask* mask : other.masks_) {
        TransformNode::AddMask(mask);
    }
}

TransformNode::~TransformNode() {
    for (Mask* mask : masks_) {
        Release(mask);
    }
}

Node* TransformNode::Clone() {
    return new TransformNode(*this);
}

char const* TransformNode::GetClassName() {
    return "TransformNode";
}

ClassId TransformNode::GetClassId() {
    return MakeClassId(u"TransformNode");
}

void TransformNode::Visit(Visitor& visitor) {
    visitor.VisitTransformNode(*this);
    visitor.VisitChildren(GetChildren());
}

Node* TransformNode::CloneDeep() {
    return CloneChildren(*this, Clone());
}

uint32_t TransformNode::IsKindOf(ClassId id) {
    return id == MakeClassId(u"TransformNode") || Node::IsKindOf(id);
}

Matrix4T<RealFixed> const& TransformNode::GetWorldMatrix() const {
    return worldMatrix_;
}

void TransformNode::RegisterProperties() {
    PropertyList& list = OwnProperties();
    list.Add("position", position);
    list.Add("rotation", rotation);
    list.Add("scale", scale);
    list.Add("origin", origin);
    list.Add("opacity", opacity);
    list.Add("transferMode", transferMode, &kTransferModes);
    list.Add("depth", depth);
}

void TransformNode::InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                                   bool force) {
    UpdateChildren(device, time, delta, UpdateOwn(force));
}

bool TransformNode::UpdateOwn(bool force) {
    if (!OwnProperties().TakeTouched() && !force) {
        return false;
    }
    CalculateTransform();
    Node const* parent = GetParent();
    effectiveOpacity_ = parent == nullptr ? opacity.Get() : opacity.Get() * parent->GetEffectiveOpacity();
    return true;
}

void TransformNode::UpdateChildren(GraphicsDevice& device, RealFixed time, RealFixed delta, bool force) {
    PushEffect(device);
    Node::InternalUpdate(device, time, delta, force);
    PopEffect(device);
}

void TransformNode::CalculateTransform() {
    Node const* parent = GetParent();
    worldMatrix_ = LocalMatrix(*this);
    if (parent != nullptr) {
        Multiply(worldMatrix_, worldMatrix_, parent->GetWorldMatrix());
    }
}

void TransformNode::Render(GraphicsDevice& device) {
    if (device.IsSelecting()) {
        if (IsSelect(device)) {
            device.PushSelected(this);
        }
        InternalSelect(device);
    } else {
        InternalRender(device);
    }
    if (rendersChildren_) {
        return;
    }
    for (uint32_t i = 0; i < GetChildren().Count(); ++i) {
        GetChildren()[i]->Render(device);
    }
}

void TransformNode::InternalRender(GraphicsDevice&) {}

bool TransformNode::IsSelect(GraphicsDevice&) {
    return false;
}

void TransformNode::AddMask(Mask* mask) {
    if (mask != nullptr && masks_.Append(mask)) {
        Retain(mask);
    }
}

void TransformNode::PushEffect(GraphicsDevice& device) {
    if (effectDepth_++ > 0) {
        return;
    }
    effectPushed_ = transferMode.Get() != kNoTransferMode;
    if (effectPushed_) {
        const uint32_t parent = device.effectKeys.IsEmpty() ? kEffectKeyBasis : device.effectKeys.Last();
        device.transferModes.Append(transferMode.Get());
        device.effectKeys.Append((parent * kEffectKeyPrime) ^ transferMode.Get());
    }
}

void TransformNode::PopEffect(GraphicsDevice& device) {
    if (effectDepth_ == 0 || --effectDepth_ > 0) {
        return;
    }
    if (effectPushed_) {
        device.transferModes.RemoveLast();
        device.effectKeys.RemoveLast();
    }
}

void TransformNode::InternalSave(Serializer& writer) {
    if (!masks_.IsEmpty()) {
        writer.Write("masks", static_cast<int32_t>(masks_.Count()));
    }
}

bool TransformNode::InternalLoad(Deserializer& reader) {
    uint32_t masks = 0;
    reader.Read("masks", masks);
    constexpr uint32_t kMostMasks = 64;
    if (masks > kMostMasks) {
        reader.Fail("masks", "got " + std::to_string(masks) + " masks, expected at most 64");
        return false;
    }
    constexpr uint64_t kMaskBytes = 48;
    if (!reader.TakeMemory("masks", masks * kMaskBytes, "masks")) {
        return false;
    }
    for (uint32_t i = 0; i < masks; ++i) {
        AddMask(new Mask);
    }
    return !reader.Failed();
}

}  // namespace zorvan
