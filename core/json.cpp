#include "core/json.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "core/memory_budget.h"

namespace zorvan::json {
namespace {

// Walks over the text and keeps how far the parser has come.
class PlaceIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = char const*;
    using reference = char const&;

    PlaceIterator(char const* at, char const** farthest) : at_(at), farthest_(farthest) {}
    reference operator*() const { return *at_; }
    PlaceIterator& operator++() {
        *farthest_ = ++at_;
        return *this;
    }
    PlaceIterator operator++(int) {
        PlaceIterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(PlaceIterator const& a, PlaceIterator const& b) { return a.at_ == b.at_; }

  private:
    char const* at_;
    char const** farthest_;
};

class TreeBuilder final : public nlohmann::json::json_sax_t {
  public:
    TreeBuilder(std::string_view text, char const* const& farthest, Document& document, ParseError& error,
                MemoryClaim& claim)
        : text_(text), farthest_(farthest), document_(document), error_(error), claim_(claim) {}

    bool null() override { return AddScalar(Type::Null); }
    bool boolean(bool value) override {
        return AddScalar(Type::Bool) && (document_.values.back().integer = value, true);
    }
    bool number_integer(number_integer_t value) override {
        return AddScalar(Type::Integer) && (document_.values.back().integer = value, true);
    }
    bool number_unsigned(number_unsigned_t value) override {
        if (value > INT64_MAX) {
            return number_float(static_cast<double>(value), {});
        }
        return number_integer(static_cast<int64_t>(value));
    }
    bool number_float(number_float_t value, string_t const&) override {
        return AddScalar(Type::Real) && (document_.values.back().real = value, true);
    }
    bool string(string_t& value) override {
        if (!AddScalar(Type::String)) {
            return false;
        }
        document_.values.back().text = {Store(value), static_cast<uint32_t>(value.size())};
        return true;
    }
    bool binary(binary_t&) override { return false; }  // not in JSON text

    bool start_object(size_t) override { return Open(Type::Object); }
    bool start_array(size_t) override { return Open(Type::Array); }
    bool end_object() override {
        Value const& object = document_.values[open_.back()];
        return (object.count < 2 || CheckKeys(object)) && Close();
    }
    bool end_array() override { return Close(); }
    bool key(string_t& value) override {
        keyBegin_ = Store(value);
        keyLength_ = static_cast<uint32_t>(value.size());
        Advance();
        return true;
    }

    bool parse_error(size_t position, std::string const&, nlohmann::json::exception const& error) override {
        // The reason stands last, after the library's own name for the error and the place.
        std::string_view reason = error.what();
        for (std::string_view before : {"] ", ": "}) {
            const size_t found = reason.find(before);
            const bool isPlace = before != ": " || reason.starts_with("parse error");
            if (found != std::string_view::npos && isPlace) {
                reason.remove_prefix(found + before.size());
            }
        }
        return Fail(position > 0 ? position - 1 : 0, std::string(reason));
    }

  private:
    bool Fail(size_t place, std::string message) {
        error_ = {static_cast<uint32_t>(std::min(place, text_.size())), std::move(message)};
        return false;
    }

    // The parser stands behind the last token, or one character further.
    void Advance() { behindToken_ = static_cast<size_t>(farthest_ - text_.data()); }

    // A token starts after the blanks and separators that follow the last one.
    size_t TokenStart() const {
        const size_t start = text_.find_first_not_of(" \t\r\n,:", behindToken_);
        return start == std::string_view::npos ? text_.size() : start;
    }

    uint32_t Store(std::string const& value) {
        const auto begin = static_cast<uint32_t>(document_.strings.size());
        document_.strings += value;
        return begin;
    }

    bool AddScalar(Type type) {
        if (document_.values.size() >= kMostValues) {
            return Fail(TokenStart(), "got too many values, expected at most " + std::to_string(kMostValues));
        }
        if (!MakeRoom()) {
            return Fail(TokenStart(), claim_.Budget().Refusal("the values of the text"));
        }
        Value value;
        value.type = type;
        value.place = static_cast<uint32_t>(TokenStart());
        value.next = static_cast<uint32_t>(document_.values.size()) + 1;
        value.keyBegin = keyBegin_;
        value.keyLength = keyLength_;
        keyLength_ = 0;
        if (!open_.empty()) {
            ++document_.values[open_.back()].count;
        }
        document_.values.push_back(value);
        Advance();
        return true;
    }

    // For one more value. Old and new values lie side by side while the table grows.
    bool MakeRoom() {
        constexpr size_t kFirstRoom = 256;
        std::vector<Value>& values = document_.values;
        const size_t room = values.capacity();
        if (values.size() < room) {
            return true;
        }
        const size_t larger = std::max(kFirstRoom, 2 * room);
        if (!claim_.Take(larger * sizeof(Value))) {
            return false;
        }
        values.reserve(larger);
        claim_.GiveBack(room * sizeof(Value));
        return true;
    }

    bool Open(Type type) {
        if (!AddScalar(type)) {
            return false;
        }
        if (open_.size() >= kDeepestNesting) {
            return Fail(document_.values.back().place, "got deeper nesting, expected at most " +
                                                           std::to_string(kDeepestNesting) +
                                                           " arrays and objects inside each other");
        }
        open_.push_back(static_cast<uint32_t>(document_.values.size()) - 1);
        return true;
    }

    bool Close() {
        document_.values[open_.back()].next = static_cast<uint32_t>(document_.values.size());
        open_.pop_back();
        Advance();
        return true;
    }

    bool CheckKeys(Value const& object) {
        keys_.clear();
        const size_t first = static_cast<size_t>(&object - document_.values.data()) + 1;
        for (size_t i = first; i < document_.values.size(); i = document_.values[i].next) {
            keys_.push_back({document_.Key(document_.values[i]), document_.values[i].place});
        }
        std::sort(keys_.begin(), keys_.end());
        for (size_t i = 1; i < keys_.size(); ++i) {
            if (keys_[i].first == keys_[i - 1].first) {
                return Fail(keys_[i].second, "got the key " + Quote(keys_[i].first) +
                                                 " again, expected each key once in an object");
            }
        }
        return true;
    }

    std::string_view text_;
    char const* const& farthest_;
    Document& document_;
    ParseError& error_;
    MemoryClaim& claim_;
    std::vector<uint32_t> open_;
    std::vector<std::pair<std::string_view, uint32_t>> keys_;
    size_t behindToken_ = 0;
    uint32_t keyBegin_ = 0;
    uint32_t keyLength_ = 0;
};

}  // namespace

bool Parse(std::string_view text, Document& document, ParseError& error, MemoryClaim& claim) {
    char const* farthest = text.data();
    TreeBuilder builder(text, farthest, document, error, claim);
    return nlohmann::json::sax_parse(PlaceIterator(text.data(), &farthest),
                                     PlaceIterator(text.data() + text.size(), &farthest), &builder);
}

std::string Quote(std::string_view text) {
    return nlohmann::json(std::string(text)).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace zorvan::json
