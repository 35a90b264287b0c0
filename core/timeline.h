// An animated group of nodes.
#pragma once

#include <vector>

#include "core/camera.h"
#include "core/playback.h"
#include "core/track.h"
#include "core/transform_node.h"

namespace zorvan {

struct PlaybackMode {
    enum Enum : uint32_t { Once = 0, Loop = 1, PingPong = 2 };
};

// While it plays, a timeline's frame follows from its parent's time: (time - start) x rate, folded into
// the length by the playback mode; before its start it holds frame 0. Nested timelines take the folded
// time, so they loop with their parent. Times are in steps of 1/65536 s: a time at most one step short of a
// whole frame shows that frame.
class ZORVAN_CORE_API Timeline : public TransformNode, public Playback {
  public:
    Timeline() { rendersChildren_ = true; }
    // Copies the camera with its children, and the tracks, which find their nodes in the copy.
    Timeline(Timeline const& other);
    ~Timeline() override;

    uint32_t IsKindOf(ClassId id) override;
    void Update(GraphicsDevice& device, RealFixed const& time) override;
    void Update(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta, bool force) override;
    bool Load(Deserializer& reader) override;

  protected:
    void RegisterProperties() override;
    // The tracks at the current frame, then the own place, the camera that stands on it, the children.
    void InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                        bool force) override;
    // Renders the children.
    void InternalRender(GraphicsDevice& device) override;
    // Asks the children, inside the same camera and depth state as for drawing.
    void InternalSelect(GraphicsDevice& device) override;
    void InternalSave(Serializer& writer) override;

  public:
    // Attaches a node; the tracks that name it or its descendants move them from the next update on.
    virtual bool AttachAndUpdate(Node* node);
    // Goes on from the current frame, in the direction it had.
    void Play() override;
    void Stop() override;
    // In frames, from 0 to the length.
    RealFixed GetFrame() const override;
    // Jumps to a frame, limited to the length, and goes on from there when playing.
    void SetFrame(RealFixed const& frame) override;
    // Puts the timeline at a time of its parent and updates its subtree, whether it plays or not.
    virtual void UpdateSynchronous(GraphicsDevice& device, RealFixed const& time);

  protected:
    // Sets the frame from the parent's time in seconds; delta is the time since the last update.
    virtual void ProcessPlaybackMode(RealFixed const& time, RealFixed const& delta);
    // Binds the tracks when the subtree changed, and applies them at the current frame.
    virtual void UpdateTree(GraphicsDevice& device);
    // Binds the tracks to the properties of the nodes that they name.
    virtual void BuildUpdateTree();

  public:
    Camera* GetCamera() const { return camera_.Get(); }
    // Takes a reference and becomes the camera's parent; null for none. Ignores an ancestor. When another
    // node takes the camera over, this timeline goes on showing its view, but its tracks leave it alone.
    void SetCamera(Camera* camera);
    bool IsPlaying() const { return playing_; }
    std::vector<Track> const& GetTracks() const { return tracks_; }

    // Frames; 0 means that the timeline does not fold its time, and so does a negative length. Scene data
    // gives 0 or more.
    PropertyT<RealFixed> length{OwnProperties()};
    // Frames per second, 0 or more in scene data; a negative rate runs backwards from frame 0.
    PropertyT<RealFixed> rate{OwnProperties(), RealFixed::FromInt(30)};
    PropertyT<uint32_t> mode{OwnProperties(), PlaybackMode::Loop};
    // Time of the parent, in seconds, at which frame 0 shows.
    PropertyT<RealFixed> start{OwnProperties()};

  protected:
    RefT<Camera> camera_;

  private:
    // Frames since the start at a time of the parent, in 1/65536.
    int64_t FramesAt(RealFixed time) const;
    // The position folded into the length, in 1/65536 frames.
    int64_t FoldedPosition() const;
    void JumpTo(int64_t target);
    // What the tracks can move: this timeline and all below it, cameras included.
    NodeNames NamesBelow();
    bool LoadMode(Deserializer& reader);
    bool LoadCamera(Deserializer& reader);
    bool LoadTracks(Deserializer& reader);

    std::vector<Track> tracks_;
    int64_t position_ = 0;  // frames without folding, in 1/65536
    int64_t jump_ = 0;      // what stops and jumps added to the frames since the start
    RealFixed lastTime_;
    uint32_t boundVersion_ = 0;  // of the tree to which the tracks are bound
    bool playing_ = true;
    bool bound_ = false;
};

}  // namespace zorvan
