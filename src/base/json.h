#pragma once

// Strict JSON for records. One field table per record drives reading and writing:
//
//     template <> struct JsonFields<Tag> {
//         static constexpr auto fields = std::make_tuple(
//             required("id", &Tag::id), optional("primaryID", &Tag::primaryID), ...);
//     };
//
// Required keys must be present and of the right type; an absent or null optional key gives an
// absent value and is left out on writing; unknown keys are ignored. The first failure ends the
// decoding of the whole document and names its coding path, for example "stamps[3].labels[0]".
//
// This header pulls in RapidJSON: include it from .cpp files that define codecs, not from headers.

#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/base64.h"
#include "base/bytes.h"
#include "base/cow.h"
#include "base/date.h"
#include "base/geometry.h"
#include "base/json_style.h"
#include "base/result.h"
#include "base/utf8_text.h"
#include "base/uuid.h"

namespace tembrix {

template <class Record>
struct JsonFields;  // specialized in each codec

namespace json {

enum class Presence { required, optional };

template <class Record, class Member, Presence presence_>
struct Field {
    std::string_view key;
    Member Record::*member;
    static constexpr Presence presence = presence_;
};

template <class Record, class Member>
constexpr auto required(std::string_view key, Member Record::*member) {
    return Field<Record, Member, Presence::required>{key, member};
}
template <class Record, class Member>
constexpr auto optional(std::string_view key, std::optional<Member> Record::*member) {
    return Field<Record, std::optional<Member>, Presence::optional>{key, member};
}

using Value = rapidjson::Value;

// The current position of decoding. The text is built only if decoding fails.
class Path {
  public:
    void push(std::size_t index) { steps_.emplace_back("[" + std::to_string(index) + "]"); }
    void push(std::string_view key) { steps_.emplace_back(key); }

    // Steps are added innermost first, while the failure is returned.
    std::string text() const {
        std::string text;
        for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) {
            if (!text.empty() && step->front() != '[')
                text += '.';
            text += *step;
        }
        return text.empty() ? "the document" : text;
    }

  private:
    std::vector<std::string> steps_;
};

struct Failure {
    Path path;
    std::string reason;

    bool fail(const char* why) {
        reason = why;
        return false;
    }
};

// Whether a text is written without escapes: ASCII without control characters, quotes and
// backslashes.
inline bool isPlain(std::string_view text) {
    constexpr std::uint64_t ones = 0x0101010101010101;
    constexpr std::uint64_t highs = ones * 0x80;
    std::uint64_t marks = 0;  // the high bit of each byte that is not plain
    const auto look = [&marks](std::uint64_t eight) {
        const std::uint64_t quote = eight ^ (ones * '"');
        const std::uint64_t backslash = eight ^ (ones * '\\');
        marks |= eight | ((eight - ones * 0x20) & ~eight) | ((quote - ones) & ~quote) |
                 ((backslash - ones) & ~backslash);
    };
    std::uint64_t eight = 0;
    while (text.size() >= sizeof eight) {
        std::memcpy(&eight, text.data(), sizeof eight);
        look(eight);
        text.remove_prefix(sizeof eight);
    }
    eight = ones * ' ';
    std::memcpy(&eight, text.data(), text.size());
    look(eight);
    return (marks & highs) == 0;
}

inline std::string_view textOf(const Value& text) {
    return {text.GetString(), text.GetStringLength()};
}

inline bool read(const Value& v, std::string& out, Failure& f) {
    if (!v.IsString())
        return f.fail("expected text");
    out = textOf(v);
    return true;
}
inline bool read(const Value& v, double& out, Failure& f) {
    if (!v.IsNumber())
        return f.fail("expected a number");
    out = v.GetDouble();
    return true;
}
inline bool read(const Value& v, int& out, Failure& f) {
    if (!v.IsInt())
        return f.fail("expected an integer");
    out = v.GetInt();
    return true;
}
inline bool read(const Value& v, bool& out, Failure& f) {
    if (!v.IsBool())
        return f.fail("expected true or false");
    out = v.GetBool();
    return true;
}
inline bool read(const Value& v, Uuid& out, Failure& f) {
    if (!v.IsString())
        return f.fail("expected a UUID");
    const auto id = Uuid::parse(textOf(v));
    if (!id)
        return f.fail("expected a UUID");
    out = *id;
    return true;
}
inline bool read(const Value& v, Bytes& out, Failure& f) {
    if (!v.IsString())
        return f.fail("expected Base64 text");
    auto bytes = base64Decode(textOf(v));
    if (!bytes)
        return f.fail("expected Base64 text");
    out = std::move(*bytes);
    return true;
}
inline bool read(const Value& v, Date& out, Failure& f) {
    if (!v.IsNumber())
        return f.fail("expected a date");
    out = Date::fromSecondsSince2001(v.GetDouble());
    return true;
}
inline bool read(const Value& v, Point& out, Failure& f) {
    if (!v.IsArray() || v.Size() != 2 || !v[0].IsNumber() || !v[1].IsNumber())
        return f.fail("expected a point [x, y]");
    out = {v[0].GetDouble(), v[1].GetDouble()};
    return true;
}
inline bool read(const Value& v, std::map<std::string, std::string>& out, Failure& f) {
    if (!v.IsObject())
        return f.fail("expected an object of texts");
    for (const auto& member : v.GetObject()) {
        std::string text;
        if (!read(member.value, text, f)) {
            f.path.push(textOf(member.name));
            return false;
        }
        out.insert_or_assign(std::string(textOf(member.name)), std::move(text));
    }
    return true;
}

template <class T>
bool read(const Value& v, std::vector<T>& out, Failure& f);
template <class T>
bool read(const Value& v, Cow<T>& out, Failure& f);
template <class Record>
requires requires {
    JsonFields<Record>::fields;
}
bool read(const Value& v, Record& out, Failure& f);

template <class T>
bool read(const Value& v, std::vector<T>& out, Failure& f) {
    if (!v.IsArray())
        return f.fail("expected an array");
    out.clear();
    out.reserve(v.Size());
    for (rapidjson::SizeType i = 0; i < v.Size(); ++i) {
        if (!read(v[i], out.emplace_back(), f)) {
            f.path.push(std::size_t{i});
            return false;
        }
    }
    return true;
}

template <class T>
bool read(const Value& v, Cow<T>& out, Failure& f) {
    return read(v, out.write(), f);
}

// Finds the members of an object. Usually they are in the order of the field table, so each search
// starts after the previous result.
class Members {
  public:
    explicit Members(const Value& object)
        : begin_(object.MemberBegin()), end_(object.MemberEnd()), next_(begin_) {}

    const Value* find(std::string_view key) {
        for (auto member = next_; member != end_; ++member) {
            if (textOf(member->name) == key) {
                next_ = member + 1;
                return &member->value;
            }
        }
        for (auto member = begin_; member != next_; ++member) {
            if (textOf(member->name) == key)
                return &member->value;
        }
        return nullptr;
    }

  private:
    Value::ConstMemberIterator begin_;
    Value::ConstMemberIterator end_;
    Value::ConstMemberIterator next_;
};

template <class Record, class FieldType>
bool readField(Members& members, Record& out, const FieldType& field, Failure& f) {
    const Value* const found = members.find(field.key);
    if constexpr (FieldType::presence == Presence::optional) {
        auto& member = out.*field.member;
        if (!found || found->IsNull()) {
            member.reset();
            return true;
        }
        if (read(*found, member.emplace(), f))
            return true;
    } else {
        if (found ? read(*found, out.*field.member, f) : f.fail("required key is missing"))
            return true;
    }
    f.path.push(field.key);
    return false;
}

template <class Record>
requires requires {
    JsonFields<Record>::fields;
}
bool read(const Value& v, Record& out, Failure& f) {
    if (!v.IsObject())
        return f.fail("expected an object");
    Members members(v);
    return std::apply(
        [&](const auto&... field) { return (readField(members, out, field, f) && ...); },
        JsonFields<Record>::fields);
}

template <class Writer>
void writeText(Writer& w, const std::string& text) {
    w.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

// A document with invalid UTF-8 could not be decoded, so such bytes are replaced.
template <class Writer>
void write(Writer& w, const std::string& text) {
    if (isPlain(text))
        w.plainText(text);
    else if (isUtf8(text))
        writeText(w, text);
    else
        writeText(w, sanitizedUtf8(text));
}
template <class Writer>
void write(Writer& w, double number) {
    w.Double(number);
}
template <class Writer>
void write(Writer& w, int number) {
    w.Int(number);
}
template <class Writer>
void write(Writer& w, bool flag) {
    w.Bool(flag);
}
template <class Writer>
void write(Writer& w, const Uuid& id) {
    w.plainText(id.text());
}
template <class Writer>
void write(Writer& w, const Bytes& bytes) {
    w.plainText(base64Encode(bytes));
}
template <class Writer>
void write(Writer& w, const Date& date) {
    w.Double(date.secondsSince2001());
}
template <class Writer>
void write(Writer& w, const Point& point) {
    w.StartArray();
    w.Double(point.x);
    w.Double(point.y);
    w.EndArray();
}
template <class Writer>
void write(Writer& w, const std::map<std::string, std::string>& texts) {
    w.StartObject();
    for (const auto& [key, text] : texts) {
        write(w, key);
        write(w, text);
    }
    w.EndObject();
}

template <class Writer, class T>
void write(Writer& w, const std::vector<T>& list);
template <class Writer, class T>
void write(Writer& w, const Cow<T>& value);
template <class Writer, class Record>
requires requires {
    JsonFields<Record>::fields;
}
void write(Writer& w, const Record& record);

template <class Writer, class T>
void write(Writer& w, const std::vector<T>& list) {
    w.StartArray();
    for (const auto& element : list)
        write(w, element);
    w.EndArray();
}

template <class Writer, class T>
void write(Writer& w, const Cow<T>& value) {
    write(w, *value);
}

template <class Writer>
void writeKey(Writer& w, std::string_view key) {
    w.plainText(key);  // keys are written like texts
}

template <class Writer, class Record, class FieldType>
void writeField(Writer& w, const Record& record, const FieldType& field) {
    const auto& member = record.*field.member;
    if constexpr (FieldType::presence == Presence::optional) {
        if (!member)
            return;
        writeKey(w, field.key);
        write(w, *member);
    } else {
        writeKey(w, field.key);
        write(w, member);
    }
}

template <class Writer, class Record>
requires requires {
    JsonFields<Record>::fields;
}
void write(Writer& w, const Record& record) {
    w.StartObject();
    std::apply([&](const auto&... field) { (writeField(w, record, field), ...); },
               JsonFields<Record>::fields);
    w.EndObject();
}

}  // namespace json

// Errors: domain "json"; the text contains the coding path and the expected type.
template <class T>
Result<T> decodeJson(BytesView bytes) {
    const std::string_view source = asText(bytes);
    // Checked in one pass, which is faster than in the parser. A zero byte would end parsing.
    if (!isUtf8(source) || source.find('\0') != std::string_view::npos)
        return Error{"json", 1, "The document is not UTF-8 text."};
    // Parsed in place, so that texts are not copied twice. Full precision: a double must be read
    // exactly as it was written. Iterative: deep nesting must fail instead of overflowing the
    // stack.
    std::string text(source);
    rapidjson::Document document;
    document.ParseInsitu<rapidjson::kParseFullPrecisionFlag | rapidjson::kParseIterativeFlag>(
        text.data());
    if (document.HasParseError())
        return Error{"json", 1,
                     std::string(rapidjson::GetParseError_En(document.GetParseError())) +
                         " At byte " + std::to_string(document.GetErrorOffset()) + "."};
    T value{};
    json::Failure failure;
    if (!json::read(static_cast<const json::Value&>(document), value, failure))
        return Error{"json", 2, failure.path.text() + ": " + failure.reason};
    return value;
}

namespace json {

// A writer that records whether it was given a number that JSON cannot represent.
template <class Base>
class FiniteWriter : public Base {
  public:
    using Base::Base;
    bool Double(double number) {
        finite_ = Base::Double(number) && finite_;
        return finite_;
    }
    bool finite() const { return finite_; }

  private:
    bool finite_ = true;
};

class CompactWriter : public FiniteWriter<rapidjson::Writer<rapidjson::StringBuffer>> {
  public:
    using FiniteWriter::FiniteWriter;
    // Writes a key or a text for which isPlain() is true.
    bool plainText(std::string_view text) {
        Prefix(rapidjson::kStringType);
        char* const out = os_->Push(text.size() + 2);
        out[0] = '"';
        std::memcpy(out + 1, text.data(), text.size());
        out[text.size() + 1] = '"';
        return EndValue(true);
    }
};

class PrettyWriter : public FiniteWriter<rapidjson::PrettyWriter<rapidjson::StringBuffer>> {
  public:
    using FiniteWriter::FiniteWriter;
    bool plainText(std::string_view text) {
        return String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }
};

inline Error notFinite() {
    return {"json", 3, "a number is not finite"};
}

}  // namespace json

// Fails only if a number is not finite. Errors: domain "json".
template <class T>
Result<Bytes> encodeJson(const T& value, JsonStyle style) {
    constexpr std::size_t firstRoom = std::size_t{64} * 1024;  // bytes; most documents need no more
    rapidjson::StringBuffer buffer(nullptr, firstRoom);
    bool finite = true;
    if (style == JsonStyle::pretty) {
        json::PrettyWriter writer(buffer);
        writer.SetIndent(' ', 2);
        json::write(writer, value);
        finite = writer.finite();
    } else {
        json::CompactWriter writer(buffer);
        json::write(writer, value);
        finite = writer.finite();
    }
    if (!finite)
        return json::notFinite();
    const auto* begin = reinterpret_cast<const std::uint8_t*>(buffer.GetString());
    return Bytes(begin, begin + buffer.GetSize());
}

}  // namespace tembrix
