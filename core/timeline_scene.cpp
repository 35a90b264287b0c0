// Timelines in scene data.
#include "core/timeline.h"

namespace zorvan {
namespace {

struct ModeName {
    char const* name;
    PlaybackMode::Enum mode;
};

constexpr ModeName kModes[] = {
    {"once", PlaybackMode::Once}, {"loop", PlaybackMode::Loop}, {"ping-pong", PlaybackMode::PingPong}};

}  // namespace

bool Timeline::Load(Deserializer& reader) {
    if (!TransformNode::Load(reader)) {
        return false;
    }
    reader.Read("playing", playing_);
    return LoadMode(reader) && LoadCamera(reader) && LoadTracks(reader);
}

bool Timeline::LoadMode(Deserializer& reader) {
    std::string modeName;
    if (!reader.Read("mode", modeName)) {
        return !reader.Failed();
    }
    for (ModeName const& entry : kModes) {
        if (modeName == entry.name) {
            mode.Set(entry.mode);
            return true;
        }
    }
    reader.Fail("mode", "got \"" + modeName + "\", expected \"once\", \"loop\" or \"ping-pong\"");
    return false;
}

bool Timeline::LoadCamera(Deserializer& reader) {
    if (!reader.Enter("camera")) {
        return !reader.Failed();
    }
    RefT<Node> camera(LoadNode(reader, "Camera"));
    if (camera && !camera->IsKindOf(MakeClassId(u"Camera"))) {
        reader.Fail("class", "got another class, expected Camera");
        camera = nullptr;
    }
    reader.Leave();
    SetCamera(static_cast<Camera*>(camera.Get()));
    return !reader.Failed();
}

bool Timeline::LoadTracks(Deserializer& reader) {
    if (!reader.Has("tracks")) {
        return !reader.Failed();
    }
    const NodeNames names = NamesBelow();
    return ForEachElement(reader, "tracks", [&](uint32_t) {
        Track track;
        if (track.Load(reader, *this, names)) {
            tracks_.push_back(std::move(track));
        }
    });
}

void Timeline::InternalSave(Serializer& writer) {
    TransformNode::InternalSave(writer);
    for (ModeName const& entry : kModes) {
        if (entry.mode == mode.Get()) {
            writer.Write("mode", entry.name);
        }
    }
    if (!playing_) {
        writer.Write("playing", false);
    }
    if (camera_) {
        writer.BeginObject("camera");
        camera_->Save(writer);
        writer.EndObject();
    }
    if (tracks_.empty()) {
        return;
    }
    BuildUpdateTree();
    writer.BeginArray("tracks");
    for (Track const& track : tracks_) {
        if (!track.IsBound()) {
            continue;  // its node left; a scene that names it could not be loaded
        }
        writer.BeginObject(nullptr);
        track.Save(writer);
        writer.EndObject();
    }
    writer.EndArray();
}

}  // namespace zorvan
