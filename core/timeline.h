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
// the length by the playback mode. Nested timelines take the folded time, so they loop with their parent.
class ZORVAN_CORE_API Timeline : public TransformNode, public Playback {
  public:
    Timeline();
    Timeline(Timeline const& other);
    ~Timeline() override;

    bool IsKindOf(ClassId id) override;
    void Update(GraphicsDevice& device, RealFixed const& time) override;
    void Update(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta, bool force) override;
    bool Load(Deserializer& reader) override;

  protected:
    void RegisterProperties() override;
    // The camera, then the tracks at the current frame, then the children.
    void InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                        bool force) override;
    // Renders the children.
    void InternalRender(GraphicsDevice& device) override;
    // Asks the children, inside the same camera and depth state as for drawing.
    void InternalSelect(GraphicsDevice& device) override;
    void InternalSave(Serializer& writer) override;

  public:
    // Attaches a node and brings it up to date with the next update, tracks included.
    virtual bool AttachAndUpdate(Node* node);
    void Play() override;
    void Stop() override;
    // In frames, from 0 to the length.
    RealFixed GetFrame() const override;
    void SetFrame(RealFixed const& frame) override;
    // Puts the timeline at a time of its parent and updates its subtree, whether it plays or not.
    virtual void UpdateSynchronous(GraphicsDevice& device, RealFixed const& time);

  protected:
    // Sets the frame from the parent's time in seconds; delta is the time since the last update.
    virtual void ProcessPlaybackMode(RealFixed const& time, RealFixed const& delta);
    // Applies every bound track at the current frame.
    virtual void UpdateTree(GraphicsDevice& device);
    // Binds the tracks to the properties of the nodes that they name.
    virtual void BuildUpdateTree();

  public:
    Camera* GetCamera() const { return camera_.Get(); }
    // Takes a reference; null for none.
    void SetCamera(Camera* camera);
    bool IsPlaying() const { return playing_; }
    std::vector<Track> const& GetTracks() const { return tracks_; }

    // Frames; 0 means that the timeline does not fold its time.
    PropertyT<RealFixed> length{OwnProperties()};
    // Frames per second.
    PropertyT<RealFixed> rate{OwnProperties(), RealFixed::FromInt(30)};
    PropertyT<uint32_t> mode{OwnProperties(), PlaybackMode::Loop};
    // Time of the parent, in seconds, at which frame 0 shows.
    PropertyT<RealFixed> start{OwnProperties()};

  protected:
    RefT<Camera> camera_;

  private:
    std::vector<Track> tracks_;
    RealFixed frame_;
    RealFixed lastTime_;
    bool playing_ = true;
    bool bound_ = false;
};

}  // namespace zorvan
