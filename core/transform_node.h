// A node with a place in space, opacity and a transfer mode. On its own it groups its children.
#pragma once

#include "core/mask.h"
#include "core/node.h"
#include "core/transfer_mode.h"

namespace zorvan {

class ZORVAN_CORE_API TransformNode : public Node {
  public:
    TransformNode() = default;
    TransformNode(TransformNode const& other);
    ~TransformNode() override;

    Node* Clone() override;
    char const* GetClassName() override;
    ClassId GetClassId() override;
    void Visit(Visitor& visitor) override;
    Node* CloneDeep() override;
    uint32_t IsKindOf(ClassId id) override;
    Matrix4T<RealFixed> const& GetWorldMatrix() const override;
    // Draws this node, then its children. In the device's selection mode asks instead of drawing, and
    // pushes this node on the device's list of selected nodes when IsSelect says so.
    void Render(GraphicsDevice& device) override;

  protected:
    void RegisterProperties() override;
    void InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                        bool force) override;
    void InternalRender(GraphicsDevice& device) override;
    void InternalSave(Serializer& writer) override;
    bool InternalLoad(Deserializer& reader) override;

  public:
    // Takes a reference; null is ignored.
    virtual void AddMask(Mask* mask);

  protected:
    // World matrix from the own place and the parent's world matrix.
    virtual void CalculateTransform();
    // Whether the device's selection point lies on what this node draws.
    virtual bool IsSelect(GraphicsDevice& device);

  public:
    // Put this node's transfer mode in force on the device and take it back. Calls nest; only the
    // outermost pair changes the device, and a node without a transfer mode changes nothing.
    void PushEffect(GraphicsDevice& device);
    void PopEffect(GraphicsDevice& device);

    List<Mask*>& GetMasks() { return masks_; }

    PropertyT<Vector3T<RealFixed>> position{OwnProperties()};
    // Degrees about x, then y, then z.
    PropertyT<Vector3T<RealFixed>> rotation{OwnProperties()};
    PropertyT<Vector3T<RealFixed>> scale{OwnProperties(),
                                         {kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>}};
    // The point that position, rotation and scale take hold of.
    PropertyT<Vector3T<RealFixed>> origin{OwnProperties()};
    PropertyT<RealFixed> opacity{OwnProperties(), kOne<RealFixed>};
    // 0 to 36, or kNoTransferMode; other numbers blend as if there were none.
    PropertyT<uint32_t> transferMode{OwnProperties(), kNoTransferMode};
    // True draws with the default camera unless a timeline above says otherwise.
    PropertyT<bool> depth{OwnProperties(), false};

  protected:
    // The two steps of InternalUpdate: the own place and opacity where they or the ancestors' changed
    // (true then), and the children inside this node's effect.
    bool UpdateOwn(bool force);
    void UpdateChildren(GraphicsDevice& device, RealFixed time, RealFixed delta, bool force);

    // Set by classes whose InternalRender renders the children itself.
    bool rendersChildren_ = false;

  private:
    List<Mask*> masks_;
    Matrix4T<RealFixed> worldMatrix_ = Matrix4T<RealFixed>::Identity;
    uint32_t effectDepth_ = 0;
    bool effectPushed_ = false;
};

}  // namespace zorvan
