#include "core/track.h"

#include <algorithm>

#include "core/node.h"
#include "core/transform_node.h"

namespace zorvan {
namespace {

struct InterpolationName {
    char const* name;
    Interpolation interpolation;
};

constexpr InterpolationName kInterpolations[] = {
    {"step", Interpolation::Step}, {"linear", Interpolation::Linear}, {"smooth", Interpolation::Smooth}};

bool LoadInterpolation(Deserializer& reader, Interpolation& interpolation) {
    std::string name;
    if (!reader.Read("interpolation", name)) {
        return !reader.Failed();
    }
    for (InterpolationName const& entry : kInterpolations) {
        if (name == entry.name) {
            interpolation = entry.interpolation;
            return true;
        }
    }
    reader.Fail("interpolation", "got \"" + name + "\", expected \"step\", \"linear\" or \"smooth\"");
    return false;
}

// How far a frame lies between two others, in 1/65536.
int64_t Fraction(RealFixed frame, RealFixed from, RealFixed to) {
    return DivideOrZero((int64_t{frame.raw} - from.raw) * 65536, int64_t{to.raw} - from.raw);
}

// 3t^2 - 2t^3: starts and ends at rest.
int64_t Smooth(int64_t t) {
    return (((t * t) >> 16) * (3 * 65536 - 2 * t)) >> 16;
}

}  // namespace

bool Track::Load(Deserializer& reader, Node& root, NodeNames const& names) {
    reader.Read("node", nodeName);
    if (!reader.Read("property", propertyName)) {
        reader.Fail(nullptr, "got a track without \"property\", expected the name of a property");
        return false;
    }
    if (!LoadInterpolation(reader, interpolation)) {
        return false;
    }
    if (!nodeName.empty() && names.count(nodeName) == 0) {
        reader.Fail("node", "got \"" + nodeName + "\", expected the name of a node in this timeline");
        return false;
    }
    if (!Bind(root, names)) {
        reader.Fail("property",
                    "got \"" + propertyName + "\", expected a property of the node that can be animated");
        return false;
    }
    return LoadKeys(reader);
}

bool Track::LoadKeys(Deserializer& reader) {
    if (!reader.Has("keys")) {
        reader.Fail(nullptr, "got a track without \"keys\", expected an array of them");
        return false;
    }
    ForEachElement(reader, "keys", [&](uint32_t) { LoadKey(reader); });
    if (keys.empty()) {
        reader.Fail("keys", "got no keys, expected at least one");
    }
    return !reader.Failed();
}

bool Track::LoadKey(Deserializer& reader) {
    TrackKey key;
    if (!reader.Read("frame", key.frame)) {
        reader.Fail(nullptr, "got a key without \"frame\", expected its number");
        return false;
    }
    if (key.frame.raw < 0 || (!keys.empty() && key.frame <= keys.back().frame)) {
        reader.Fail("frame", "got a frame out of order, expected rising frames from 0");
        return false;
    }
    if (!property_->LoadKey(reader, "value", range_, key.value)) {
        return false;
    }
    // Twice: the table of keys grows by doubling.
    if (!reader.TakeMemory(nullptr, 2 * sizeof(TrackKey), "a key")) {
        return false;
    }
    keys.push_back(std::move(key));
    return true;
}

void Track::Save(Serializer& writer) const {
    if (!nodeName.empty()) {
        writer.Write("node", nodeName);
    }
    writer.Write("property", propertyName);
    for (InterpolationName const& entry : kInterpolations) {
        if (entry.interpolation == interpolation) {
            writer.Write("interpolation", entry.name);
        }
    }
    writer.BeginArray("keys");
    for (TrackKey const& key : keys) {
        writer.BeginObject(nullptr);
        writer.Write("frame", key.frame);
        property_->SaveKey(writer, "value", key.value);
        writer.EndObject();
    }
    writer.EndArray();
}

bool Track::Bind(Node& root, NodeNames const& names) {
    Node* node = &root;
    if (!nodeName.empty()) {
        const auto found = names.find(nodeName);
        node = found == names.end() ? nullptr : found->second;
    }
    property_ = node == nullptr ? nullptr : node->GetProperties().Find(propertyName);
    if (property_ != nullptr && property_->KeyComponents() == 0) {
        property_ = nullptr;
    }
    range_ = property_ == nullptr ? nullptr : node->GetProperties().FindRange(propertyName);
    applied_ = kNone;
    isBlended_ = false;
    return property_ != nullptr;
}

size_t Track::KeyAt(RealFixed frame) const {
    const auto holds = [&](size_t key) {
        return key < keys.size() && keys[key].frame <= frame &&
               (key + 1 == keys.size() || frame < keys[key + 1].frame);
    };
    for (size_t key : {current_, current_ + 1}) {
        if (holds(key)) {
            return key;
        }
    }
    const auto after = std::upper_bound(keys.begin(), keys.end(), frame,
                                        [](RealFixed f, TrackKey const& key) { return f < key.frame; });
    return after == keys.begin() ? 0 : static_cast<size_t>(after - keys.begin()) - 1;
}

void Track::Apply(RealFixed frame) {
    if (property_ == nullptr || keys.empty()) {
        return;
    }
    current_ = KeyAt(frame);
    const bool between = current_ + 1 < keys.size() && frame > keys[current_].frame;
    if (between && interpolation != Interpolation::Step && property_->Blends()) {
        ApplyBlend(current_, frame);
        return;
    }
    if (applied_ != current_) {
        property_->Apply(keys[current_].value);
        applied_ = current_;
        isBlended_ = false;
    }
}

void Track::ApplyBlend(size_t key, RealFixed frame) {
    TrackKey const& from = keys[key];
    TrackKey const& to = keys[key + 1];
    int64_t t = Fraction(frame, from.frame, to.frame);
    if (interpolation == Interpolation::Smooth) {
        t = Smooth(t);
    }
    KeyValue value;
    for (uint32_t i = 0; i < 4; ++i) {
        const int64_t a = from.value.numbers[i].raw;
        const int64_t b = to.value.numbers[i].raw;
        value.numbers[i].raw = static_cast<int32_t>(a + (((b - a) * t) >> 16));
    }
    if (isBlended_ && std::equal(blended_, blended_ + 4, value.numbers)) {
        return;
    }
    // The neighbour's value may be the same: then it stands already.
    const bool isFrom = std::equal(value.numbers, value.numbers + 4, from.value.numbers);
    if (isFrom && applied_ == key) {
        return;
    }
    property_->Apply(value);
    std::copy(value.numbers, value.numbers + 4, blended_);
    isBlended_ = true;
    applied_ = kNone;
}

}  // namespace zorvan
