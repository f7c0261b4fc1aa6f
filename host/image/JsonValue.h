#pragma once

#include "host/image/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// A value of JSON (RFC 8259). The values of the library that reads it take memory to be destroyed, and end the program
/// where there is none; these do not.
class JsonValue {
public:
    struct Member;
    using List = std::vector<JsonValue>;
    using Object = std::vector<Member>;
    enum class Kind { Null, Boolean, Integer, Number, Text, List, Object };

    /// A sentence on what is wrong in a file.
    struct Malformed : std::runtime_error {
        using std::runtime_error::runtime_error;
    };

    /// Nested deeper than so, a file is refused.
    static constexpr size_t kMostDepth = 64;

    /// Objects for which takesObject returns true are left out: a file may have more of them than there is memory.
    /// Throws Malformed, what the callback throws, and HostError where the file cannot be read.
    static JsonValue read(InputFile& file, std::function<bool(JsonValue const&)> const& takesObject);
    /// Throws Malformed.
    static JsonValue parse(std::vector<std::uint8_t> const& text);
    /// A text as JSON has it, in quotation marks, in ASCII; what is no UTF-8 is replaced by U+FFFD.
    static std::string quoted(std::string const& text);

    /// Of that kind, empty.
    explicit JsonValue(Kind kind = Kind::Null) : kind_(kind) {}
    explicit JsonValue(std::int64_t number) : kind_(Kind::Integer), integer_(number) {}
    explicit JsonValue(double number) : kind_(Kind::Number), number_(number) {}
    explicit JsonValue(std::string&& text) : kind_(Kind::Text), text_(std::move(text)) {}

    bool isNull() const { return kind_ == Kind::Null; }
    bool isObject() const { return kind_ == Kind::Object; }
    bool isList() const { return kind_ == Kind::List; }
    bool isText() const { return kind_ == Kind::Text; }
    /// Empty where it is none.
    std::string const& text() const { return text_; }
    std::optional<std::int64_t> integer() const;
    std::optional<double> number() const;
    List const& list() const { return list_; }
    Object const& members() const { return members_; }
    /// The last member of that name, null where there is none.
    JsonValue const& at(std::string const& name) const;

    /// To a list.
    void append(JsonValue&& value) { list_.push_back(std::move(value)); }
    /// To an object.
    void append(std::string&& name, JsonValue&& value);

private:
    Kind kind_;
    std::int64_t integer_ = 0;
    double number_ = 0;
    std::string text_;
    List list_;
    Object members_;
};

struct JsonValue::Member {
    std::string name;
    JsonValue value;
};
