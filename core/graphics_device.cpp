#include "core/graphics_device.h"

namespace zorvan {

GraphicsDevice::~GraphicsDevice() = default;

uint32_t GraphicsDevice::Initialize(void* window, DeviceFormat::Enum format, SizeT<int> const& size) {
    if (size.width < 1 || size.height < 1) {
        return 0;
    }
    window_ = window;
    format_ = format;
    size_ = size;
    viewport_ = {0, 0, size.width, size.height};
    return 1;
}

void GraphicsDevice::Reset(RectangleT<int> const& viewport) {
    const SizeT<int> size = SizeOf(viewport);
    SetViewport(viewport.left, viewport.top, size.width, size.height);
    opacities_.Clear();
    transforms_.Clear();
    transferModes.Clear();
    effectKeys.Clear();
    selected_ = nullptr;
}

void GraphicsDevice::SetClearColor(ColorT<RealFixed> const& color) {
    clearColor_ = color;
}

ColorT<RealFixed> GraphicsDevice::GetClearColor() {
    return clearColor_;
}

void GraphicsDevice::Clear() {}

void GraphicsDevice::SetViewport(RectangleT<int> const& viewport) {
    viewport_ = viewport;
}

void GraphicsDevice::SetViewport(int x, int y, int width, int height) {
    viewport_ = {x, y, WrappingAdd(x, width), WrappingAdd(y, height)};
}

RectangleT<int> GraphicsDevice::GetViewport() const {
    return viewport_;
}

void GraphicsDevice::SetRenderMode() {
    selected_ = nullptr;
}

void GraphicsDevice::SetSelectionMode(Vector2T<RealFixed> const& point, List<Node*>* selected) {
    selectionPoint_ = point;
    selected_ = selected;
}

Vector2T<RealFixed> GraphicsDevice::GetSelectionPoint() {
    return selectionPoint_;
}

void GraphicsDevice::PushSelected(Node* node) {
    if (selected_ != nullptr) {
        selected_->Append(node);
    }
}

void GraphicsDevice::PushOpacity(RealFixed const& opacity) {
    opacities_.Append(opacity);
}

void GraphicsDevice::PopOpacity() {
    opacities_.RemoveLast();
}

void GraphicsDevice::MergeOpacity(RealFixed const& opacity) {
    opacities_.Append(GetOpacity() * opacity);
}

RealFixed GraphicsDevice::GetOpacity() {
    return opacities_.IsEmpty() ? kOne<RealFixed> : opacities_.Last();
}

void GraphicsDevice::PushTransformMatrix(Matrix4T<RealFixed> const& matrix) {
    transforms_.Append(matrix);
}

void GraphicsDevice::PopTransformMatrix() {
    transforms_.RemoveLast();
}

Matrix4T<RealFixed> const& GraphicsDevice::GetTransformMatrix() const {
    return transforms_.IsEmpty() ? Matrix4T<RealFixed>::Identity : transforms_.Last();
}

void GraphicsDevice::MergeTransformMatrix(Matrix4T<RealFixed> const& matrix) {
    transforms_.Append(matrix * GetTransformMatrix());
}

}  // namespace zorvan
