// Named, observable, animatable values of scene objects.
#pragma once

#include <string>
#include <type_traits>
#include <vector>

#include "core/api.h"
#include "core/event.h"
#include "core/geometry.h"
#include "core/list.h"
#include "core/serializer.h"

namespace zorvan {

class PropertyBase;

// A value at one key of an animation track: up to four numbers (whole numbers and truth values as they
// stand in raw), or a texture.
struct KeyValue {
    RealFixed numbers[4];
    RefT<Texture> texture;
};

// What a property may be set to by scene data, as a plain value and as a track's key alike: whole bounds,
// both included, for each of its numbers. Blends of keys lie between them, so they stay inside.
struct PropertyRange {
    static constexpr int32_t kNoBound = INT32_MAX;

    int32_t least, most;
    char const* unit = "";  // "pixels", for errors
    bool orNone = false;    // 0xFFFFFFFF too

    // In 1/65536 for the properties that 16.16 holds, plain otherwise.
    bool Holds(int64_t value, int64_t one) const {
        return (orNone && value == UINT32_MAX) ||
               (value >= least * one && (most == kNoBound || value <= most * one));
    }
    // "0 to 36 or \"none\"", "0 or more pixels"
    std::string Text() const;
};

// The properties of one object, in the order of their registration.
class ZORVAN_CORE_API PropertyList {
  public:
    // Registers the owner's properties; called once, before the first access by name, load, save,
    // update or change, and never from a constructor.
    using Register = void (*)(void* owner);

    PropertyList(void* owner, Register registerOwner) : owner_(owner), register_(registerOwner) {}
    PropertyList(PropertyList const&) = delete;
    PropertyList& operator=(PropertyList const&) = delete;

    void EnsureRegistered() {
        if (!registered_) {
            registered_ = true;
            register_(owner_);
        }
    }

    // name and range must outlive the list. Without a range scene data may set all that the type holds.
    // A range binds scene data only: PropertyT::Set takes every value as it is.
    void Add(char const* name, PropertyBase& property, PropertyRange const* range = nullptr) {
        entries_.Append({name, &property, range});
    }
    // Null when there is no such property.
    PropertyBase* Find(std::string_view name);
    // Of a property with one.
    PropertyRange const* FindRange(std::string_view name);

    // Reads the properties that the current object holds; false when one of them is wrong.
    bool Load(Deserializer& reader);
    void Save(Serializer& writer);

    // Whether a property was set since the last call; true at first.
    bool TakeTouched() { return std::exchange(touched_, false); }
    void Touch() { touched_ = true; }

  private:
    struct Entry {
        char const* name;
        PropertyBase* property;
        PropertyRange const* range;
        bool operator==(Entry const&) const = default;
    };

    Entry const* FindEntry(std::string_view name);

    void* owner_;
    Register register_;
    List<Entry> entries_;
    bool registered_ = false;
    bool touched_ = true;
};

class ZORVAN_CORE_API PropertyBase {
  public:
    virtual ~PropertyBase();

    // A missing key leaves the value; false for a wrong one, and for a value outside the range (null for
    // none), be it read or left.
    virtual bool Load(Deserializer& reader, char const* key, PropertyRange const* range) = 0;
    virtual void Save(Serializer& writer, char const* key) const = 0;

    // Animation. A property without components cannot be animated; one that does not blend steps.
    virtual uint32_t KeyComponents() const { return 0; }
    virtual bool Blends() const { return false; }
    // Reads a key's value under key; false (and a recorded error) when it is missing, wrong or outside the
    // range (null for none).
    virtual bool LoadKey(Deserializer& reader, char const* key, PropertyRange const* range,
                         KeyValue& value) const;
    virtual void SaveKey(Serializer& writer, char const* key, KeyValue const& value) const;
    virtual void Apply(KeyValue const& value);
};

// One value. Reading it is direct; Set stores and notifies, for an equal value too. Set takes every value as
// it is: ranges hold for scene data. A scene that is saved with a value outside its range cannot be loaded.
template <typename T>
class PropertyT final : public PropertyBase {
  public:
    explicit PropertyT(PropertyList& list, T value = T{}) : list_(&list), value_(std::move(value)) {}
    // A copy takes the value alone: subscribers stay with the original.
    PropertyT(PropertyT const&) = delete;
    PropertyT& operator=(PropertyT const&) = delete;

    T const& Get() const { return value_; }
    operator T const&() const { return value_; }

    void Set(T const& value) {
        list_->EnsureRegistered();
        value_ = value;
        list_->Touch();
        changed.Fire(value_);
    }

    bool Load(Deserializer& reader, char const* key, PropertyRange const* range) override;
    void Save(Serializer& writer, char const* key) const override;
    uint32_t KeyComponents() const override;
    bool Blends() const override;
    bool LoadKey(Deserializer& reader, char const* key, PropertyRange const* range,
                 KeyValue& value) const override;
    void SaveKey(Serializer& writer, char const* key, KeyValue const& value) const override;
    void Apply(KeyValue const& value) override;

    EventT<T const&> changed;

  private:
    PropertyList* list_;
    T value_;
};

// Instantiated in property.cpp.
extern template class ZORVAN_CORE_API PropertyT<bool>;
extern template class ZORVAN_CORE_API PropertyT<int32_t>;
extern template class ZORVAN_CORE_API PropertyT<uint32_t>;
extern template class ZORVAN_CORE_API PropertyT<RealFixed>;
extern template class ZORVAN_CORE_API PropertyT<Vector3T<RealFixed>>;
extern template class ZORVAN_CORE_API PropertyT<ColorT<RealFixed>>;
extern template class ZORVAN_CORE_API PropertyT<RectangleT<RealFixed>>;
extern template class ZORVAN_CORE_API PropertyT<SizeT<RealFixed>>;
extern template class ZORVAN_CORE_API PropertyT<MStringT<wchar_t>>;
extern template class ZORVAN_CORE_API PropertyT<std::vector<uint8_t>>;
extern template class ZORVAN_CORE_API PropertyT<RefT<Font>>;

}  // namespace zorvan
