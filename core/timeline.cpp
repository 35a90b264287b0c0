#include "core/timeline.h"

#include <algorithm>

#include "core/graphics_device.h"

namespace zorvan {
namespace {

constexpr PropertyRange kFromZero = {0, PropertyRange::kNoBound};

constexpr int64_t kFrame = 65536;
constexpr int64_t kFineFrame = kFrame * 65536;  // in the unit of a time multiplied with a rate

// Remainder with the sign of the divisor.
int64_t FloorModulo(int64_t value, int64_t divisor) {
    const int64_t rest = value % divisor;
    return rest < 0 ? rest + divisor : rest;
}

// Positions and lengths in 1/65536 frames; a length of 0 folds nothing.
int64_t Fold(int64_t position, int64_t length, uint32_t mode) {
    if (length <= 0) {
        return std::clamp<int64_t>(position, 0, INT64_MAX / kFrame);  // room for its seconds
    }
    switch (mode) {
        case PlaybackMode::Loop:
            return FloorModulo(position, length);
        case PlaybackMode::PingPong: {
            const int64_t there = FloorModulo(position, 2 * length);
            return there <= length ? there : 2 * length - there;
        }
        default:
            return std::clamp<int64_t>(position, 0, length);
    }
}

RealFixed Saturate(int64_t raw) {
    return RealFixed::FromRaw(static_cast<int32_t>(std::clamp<int64_t>(raw, INT32_MIN, INT32_MAX)));
}

Timeline* AsTimeline(Node* node) {
    return node->IsKindOf(MakeClassId(u"Timeline")) ? static_cast<Timeline*>(node) : nullptr;
}

void CollectNames(Node* node, NodeNames& names) {
    if (!node->name.empty()) {
        names.emplace(node->name, node);
    }
    // A camera that another node took over belongs to that one's subtree.
    Timeline* timeline = AsTimeline(node);
    Camera* camera = timeline == nullptr ? nullptr : timeline->GetCamera();
    if (camera != nullptr && camera->GetParent() == timeline) {
        CollectNames(camera, names);
    }
    for (Node* child : node->GetChildren()) {
        CollectNames(child, names);
    }
}

}  // namespace

Timeline::Timeline(Timeline const& other)
    : TransformNode(other),
      Playback(other),
      length(OwnProperties(), other.length.Get()),
      rate(OwnProperties(), other.rate.Get()),
      mode(OwnProperties(), other.mode.Get()),
      start(OwnProperties(), other.start.Get()),
      tracks_(other.tracks_),
      position_(other.position_),
      jump_(other.jump_),
      lastTime_(other.lastTime_),
      playing_(other.playing_) {
    if (other.camera_) {
        SetCamera(static_cast<Camera*>(other.camera_->CloneDeep()));
    }
}

Timeline::~Timeline() {
    SetCamera(nullptr);
}

uint32_t Timeline::IsKindOf(ClassId id) {
    return id == MakeClassId(u"Timeline") || TransformNode::IsKindOf(id);
}

void Timeline::SetCamera(Camera* camera) {
    for (Node const* node = this; node != nullptr; node = node->GetParent()) {
        if (node == camera) {
            return;
        }
    }
    RefT<Camera> next(camera);
    if (camera != nullptr && camera->GetParent() != nullptr) {
        camera->GetParent()->Detach(camera);
    }
    if (camera_ && camera_->GetParent() == this) {  // another timeline may have taken it over
        camera_->SetParent(nullptr);
    }
    camera_ = next;
    if (camera_) {
        camera_->SetParent(this);
    }
}

bool Timeline::AttachAndUpdate(Node* node) {
    bound_ = false;
    return Attach(node);
}

int64_t Timeline::FramesAt(RealFixed time) const {
    const int64_t elapsed = std::max<int64_t>(int64_t{time.raw} - start.Get().raw, 0);
    const int64_t frames = elapsed * rate.Get().raw;
    const int64_t missing = kFineFrame - FloorModulo(frames, kFineFrame);
    return (missing <= rate.Get().raw ? frames + missing : frames) >> 16;
}

int64_t Timeline::FoldedPosition() const {
    return Fold(position_, length.Get().raw, mode.Get());
}

void Timeline::Play() {
    playing_ = true;
    JumpTo(position_);
}

void Timeline::Stop() {
    playing_ = false;
}

RealFixed Timeline::GetFrame() const {
    return Saturate(FoldedPosition());
}

void Timeline::SetFrame(RealFixed const& frame) {
    const int64_t last = length.Get().raw > 0 ? length.Get().raw : INT32_MAX;
    JumpTo(std::clamp<int64_t>(frame.raw, 0, last));
}

void Timeline::JumpTo(int64_t target) {
    position_ = target;
    jump_ = target - FramesAt(lastTime_);
}

void Timeline::Update(GraphicsDevice& device, RealFixed const& time) {
    Update(device, time, time - lastTime_, false);
}

void Timeline::Update(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta, bool force) {
    ProcessPlaybackMode(time, delta);
    TransformNode::Update(device, time, delta, force);
}

void Timeline::UpdateSynchronous(GraphicsDevice& device, RealFixed const& time) {
    const RealFixed delta = time - lastTime_;
    lastTime_ = time;
    JumpTo(FramesAt(time));
    TransformNode::Update(device, time, delta, false);
}

void Timeline::ProcessPlaybackMode(RealFixed const& time, RealFixed const&) {
    lastTime_ = time;
    if (playing_) {
        position_ = FramesAt(time) + jump_;
    }
}

void Timeline::InternalUpdate(GraphicsDevice& device, RealFixed const&, RealFixed const& delta, bool force) {
    UpdateTree(device);
    const bool changed = UpdateOwn(force);
    const RealFixed local = Saturate(DivideOrZero(FoldedPosition() * 65536, rate.Get().raw));
    if (camera_) {
        camera_->Update(device, local, delta, changed);
    }
    UpdateChildren(device, local, delta, changed);
}

void Timeline::UpdateTree(GraphicsDevice&) {
    const RealFixed frame = GetFrame();
    for (Track& track : tracks_) {
        // Looked at for each one: what listens to a track's property may change the tree.
        if (!bound_ || boundVersion_ != GetTreeVersion()) {
            BuildUpdateTree();
        }
        track.Apply(frame);
    }
}

NodeNames Timeline::NamesBelow() {
    NodeNames names;
    CollectNames(this, names);
    return names;
}

void Timeline::BuildUpdateTree() {
    bound_ = true;
    boundVersion_ = GetTreeVersion();
    if (tracks_.empty()) {
        return;
    }
    const NodeNames names = NamesBelow();
    for (Track& track : tracks_) {
        track.Bind(*this, names);
    }
}

void Timeline::InternalRender(GraphicsDevice& device) {
    for (uint32_t i = 0; i < GetChildren().Count(); ++i) {
        GetChildren()[i]->Render(device);
    }
}

void Timeline::InternalSelect(GraphicsDevice& device) {
    if (camera_) {
        device.PushCamera(camera_.Get());
    }
    device.PushCameraDepth(depth.Get());
    device.SetCameraDepth(depth.Get());
    Timeline::InternalRender(device);  // the children ask too: the device is in selection mode
    device.PopCameraDepth(depth.Get());
    if (camera_) {
        device.PopCamera();
    }
}

void Timeline::RegisterProperties() {
    TransformNode::RegisterProperties();
    PropertyList& list = OwnProperties();
    list.Add("length", length, &kFromZero);
    list.Add("rate", rate, &kFromZero);
    list.Add("start", start);
}

}  // namespace zorvan
