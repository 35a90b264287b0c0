#include "core/property.h"

#include <algorithm>
#include <iterator>

#include "core/font.h"
#include "core/json_writer.h"
#include "core/texture.h"

namespace zorvan {

std::string PropertyRange::Text() const {
    return std::to_string(least) + (most == kNoBound ? " or more" : " to " + std::to_string(most)) +
           (*unit != '\0' ? " " : "") + unit + (orNone ? " or \"none\"" : "");
}

PropertyList::Entry const* PropertyList::FindEntry(std::string_view name) {
    EnsureRegistered();
    for (Entry const& entry : entries_) {
        if (name == entry.name) {
            return &entry;
        }
    }
    return nullptr;
}

PropertyBase* PropertyList::Find(std::string_view name) {
    Entry const* entry = FindEntry(name);
    return entry == nullptr ? nullptr : entry->property;
}

PropertyRange const* PropertyList::FindRange(std::string_view name) {
    Entry const* entry = FindEntry(name);
    return entry == nullptr ? nullptr : entry->range;
}

bool PropertyList::Load(Deserializer& reader) {
    EnsureRegistered();
    for (Entry const& entry : entries_) {
        if (!entry.property->Load(reader, entry.name, entry.range)) {
            return false;
        }
    }
    return true;
}

void PropertyList::Save(Serializer& writer) {
    EnsureRegistered();
    for (Entry const& entry : entries_) {
        entry.property->Save(writer, entry.name);
    }
}

PropertyBase::~PropertyBase() = default;

bool PropertyBase::LoadKey(Deserializer& reader, char const* key, PropertyRange const*, KeyValue&) const {
    reader.Fail(key, "got a property that cannot be animated, expected another one");
    return false;
}

void PropertyBase::SaveKey(Serializer&, char const*, KeyValue const&) const {}

void PropertyBase::Apply(KeyValue const&) {}

namespace {

// Types made of RealFixed members only are stored as arrays of numbers.
template <typename T>
constexpr bool kIsNumbers = false;
template <>
constexpr bool kIsNumbers<Vector3T<RealFixed>> = true;
template <>
constexpr bool kIsNumbers<ColorT<RealFixed>> = true;
template <>
constexpr bool kIsNumbers<RectangleT<RealFixed>> = true;
template <>
constexpr bool kIsNumbers<SizeT<RealFixed>> = true;

template <typename T>
constexpr bool kIsWhole =
    std::is_same_v<T, bool> || std::is_same_v<T, int32_t> || std::is_same_v<T, uint32_t>;

template <typename T>
constexpr uint32_t NumberCount() {
    if constexpr (kIsNumbers<T>) {
        return sizeof(T) / sizeof(RealFixed);
    } else {
        return std::is_same_v<T, RealFixed> || kIsWhole<T> ? 1 : 0;
    }
}

template <typename T>
bool ReadValue(Deserializer& reader, char const* key, T& value) {
    if constexpr (kIsNumbers<T>) {
        RealFixed numbers[NumberCount<T>()];
        if (!reader.Read(key, numbers, NumberCount<T>())) {
            return false;
        }
        std::memcpy(static_cast<void*>(&value), numbers, sizeof(value));
        return true;
    } else {
        return reader.Read(key, value);
    }
}

std::string NumberText(RealFixed value) {
    return DecimalText(value);
}
template <typename T>
std::string NumberText(T value) {
    return std::to_string(value);
}

// The first number that lies outside the range is reported.
template <typename T>
bool CheckRange(Deserializer& reader, char const* key, T const& value, PropertyRange const* range) {
    const auto check = [&](auto number, int64_t raw, int64_t one) {
        if (range->Holds(raw, one)) {
            return true;
        }
        reader.Fail(key, "got " + NumberText(number) + ", expected " + range->Text());
        return false;
    };
    if constexpr (NumberCount<T>() > 0) {
        if (range == nullptr) {
            return true;
        }
        if constexpr (kIsWhole<T>) {
            return check(value, static_cast<int64_t>(value), 1);
        } else {
            RealFixed numbers[NumberCount<T>()];
            std::memcpy(static_cast<void*>(numbers), &value, sizeof(value));
            return std::all_of(std::begin(numbers), std::end(numbers),
                               [&](RealFixed number) { return check(number, number.raw, 65536); });
        }
    }
    return true;
}

template <typename T>
void WriteValue(Serializer& writer, char const* key, T const& value) {
    if constexpr (kIsNumbers<T>) {
        RealFixed numbers[NumberCount<T>()];
        std::memcpy(static_cast<void*>(numbers), &value, sizeof(value));
        writer.Write(key, numbers, NumberCount<T>());
    } else {
        writer.Write(key, value);
    }
}

template <typename T>
T FromKey(KeyValue const& key) {
    if constexpr (kIsWhole<T>) {
        return static_cast<T>(key.numbers[0].raw);
    } else {
        T value{};
        std::memcpy(static_cast<void*>(&value), key.numbers, sizeof(value));
        return value;
    }
}

template <typename T>
void ToKey(T const& value, KeyValue& key) {
    if constexpr (kIsWhole<T>) {
        key.numbers[0].raw = static_cast<int32_t>(value);
    } else {
        std::memcpy(static_cast<void*>(key.numbers), &value, sizeof(value));
    }
}

}  // namespace

template <typename T>
bool PropertyT<T>::Load(Deserializer& reader, char const* key, PropertyRange const* range) {
    T value = value_;
    const bool read = ReadValue(reader, key, value);
    if (reader.Failed() || !CheckRange(reader, key, value, range)) {
        return false;
    }
    if (read) {
        Set(value);
    }
    return true;
}

template <typename T>
void PropertyT<T>::Save(Serializer& writer, char const* key) const {
    WriteValue(writer, key, value_);
}

template <typename T>
uint32_t PropertyT<T>::KeyComponents() const {
    return NumberCount<T>();
}

template <typename T>
bool PropertyT<T>::Blends() const {
    return kIsNumbers<T> || std::is_same_v<T, RealFixed>;
}

template <typename T>
bool PropertyT<T>::LoadKey(Deserializer& reader, char const* key, PropertyRange const* range,
                           KeyValue& keyValue) const {
    if constexpr (NumberCount<T>() == 0) {
        return PropertyBase::LoadKey(reader, key, range, keyValue);
    } else {
        T value{};
        if (!ReadValue(reader, key, value)) {
            reader.Fail(key, "got a key without \"value\", expected it");
            return false;
        }
        ToKey(value, keyValue);
        return CheckRange(reader, key, value, range);
    }
}

template <typename T>
void PropertyT<T>::SaveKey(Serializer& writer, char const* key, KeyValue const& value) const {
    if constexpr (NumberCount<T>() > 0) {
        WriteValue(writer, key, FromKey<T>(value));
    }
}

template <typename T>
void PropertyT<T>::Apply(KeyValue const& value) {
    if constexpr (NumberCount<T>() > 0) {
        Set(FromKey<T>(value));
    }
}

template class PropertyT<bool>;
template class PropertyT<int32_t>;
template class PropertyT<uint32_t>;
template class PropertyT<RealFixed>;
template class PropertyT<Vector3T<RealFixed>>;
template class PropertyT<ColorT<RealFixed>>;
template class PropertyT<RectangleT<RealFixed>>;
template class PropertyT<SizeT<RealFixed>>;
template class PropertyT<MStringT<wchar_t>>;
template class PropertyT<std::vector<uint8_t>>;
template class PropertyT<RefT<Font>>;

}  // namespace zorvan
