// The settings of a camera; the back end turns them into matrices.
#pragma once

#include "core/transform_node.h"

namespace zorvan {

class ZORVAN_CORE_API Camera : public TransformNode {
  public:
    Camera() = default;
    Camera(Camera const& other);

    uint32_t IsKindOf(ClassId id) override;

    // Sets up a perspective camera like a photographer's: lens (focal length) and film width in
    // millimetres, view size in pixels. With place, the camera also stands where the plane z = 0 maps
    // one to one to pixels, x to the right and y downwards from the top left corner.
    void SetupMillimeter(RealFixed lens, RealFixed film, RealFixed width, RealFixed height, bool place);

  protected:
    void RegisterProperties() override;

  public:
    PropertyT<bool> orthographic{OwnProperties(), false};
    // Degrees; 0 means that the vertical angle alone counts.
    PropertyT<RealFixed> horizontalFieldOfView{OwnProperties()};
    // Degrees, vertical; rewritten from the horizontal angle when that is set.
    PropertyT<RealFixed> fieldOfView{OwnProperties(), RealFixed::FromInt(60)};
    PropertyT<RealFixed> nearPlane{OwnProperties(), kOne<RealFixed>};
    PropertyT<RealFixed> farPlane{OwnProperties(), RealFixed::FromInt(10000)};
    PropertyT<RectangleT<RealFixed>> viewRectangle{
        OwnProperties(), {RealFixed{}, RealFixed{}, kOne<RealFixed>, kOne<RealFixed>}};
};

}  // namespace zorvan
