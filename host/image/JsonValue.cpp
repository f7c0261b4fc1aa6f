#include "host/image/JsonValue.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

namespace {

using Library = nlohmann::json;
using TakesObject = std::function<bool(JsonValue const&)>;

// The bytes of a file, one after the other.
class Bytes {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = char const*;
    using reference = char const&;

    struct Block {
        explicit Block(InputFile& source) : file(source), bytes(size_t{1} << 20U) { fill(); }

        void fill() {
            std::int64_t const count = file.readAt(offset, bytes.data(), bytes.size());
            end = count < 0 ? 0 : static_cast<size_t>(count);
            offset += end;
            at = 0;
        }

        InputFile& file;
        std::vector<char> bytes;
        std::uint64_t offset = 0;
        size_t at = 0;
        size_t end = 0;
    };

    Bytes() = default; // the end
    explicit Bytes(Block& block) : block_(&block) {}

    reference operator*() const { return block_->bytes[block_->at]; }
    Bytes& operator++() {
        if (++block_->at == block_->end) block_->fill();
        return *this;
    }
    bool isEnd() const { return block_ == nullptr || block_->end == 0; }
    bool operator==(Bytes const& other) const { return isEnd() == other.isEnd(); }
    bool operator!=(Bytes const& other) const { return !(*this == other); }

private:
    Block* block_ = nullptr;
};

// Without the library's own words for the kind of error.
std::string reasonOf(std::string_view text) {
    size_t const end = text.find("] ");
    return std::string(end == std::string_view::npos ? text : text.substr(end + 2));
}

// What the parser finds, from the first byte to the last.
class Builder : public nlohmann::json_sax<Library> {
public:
    explicit Builder(TakesObject const& takesObject) : takesObject_(takesObject) {}

    JsonValue root;

    bool null() override { return add(JsonValue()); }
    bool boolean(bool /*value*/) override { return add(JsonValue(JsonValue::Kind::Boolean)); }
    bool number_integer(std::int64_t value) override { return add(JsonValue(value)); }
    bool number_unsigned(std::uint64_t value) override {
        if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return add(JsonValue(static_cast<double>(value)));
        return add(JsonValue(static_cast<std::int64_t>(value)));
    }
    bool number_float(double value, std::string const& /*text*/) override { return add(JsonValue(value)); }
    bool string(std::string& value) override { return add(JsonValue(std::move(value))); }
    bool binary(Library::binary_t& /*value*/) override { return false; } // JSON has none

    bool start_object(size_t /*members*/) override { return open(JsonValue(JsonValue::Kind::Object)); }
    bool key(std::string& name) override {
        open_.back().name = std::move(name);
        return true;
    }
    bool end_object() override {
        bool const isTaken = takesObject_(open_.back().value);
        return close(isTaken);
    }
    bool start_array(size_t /*values*/) override { return open(JsonValue(JsonValue::Kind::List)); }
    bool end_array() override { return close(false); }

    bool parse_error(size_t /*at*/, std::string const& /*token*/, Library::exception const& error) override {
        throw JsonValue::Malformed(reasonOf(error.what()));
    }

private:
    // An object or a list that is not closed yet, and the name of the member that comes next.
    struct Open {
        JsonValue value;
        std::string name;
    };

    bool open(JsonValue&& value) {
        if (open_.size() == JsonValue::kMostDepth)
            throw JsonValue::Malformed("it is nested more than " + std::to_string(JsonValue::kMostDepth) + " deep");
        open_.push_back({std::move(value), ""});
        return true;
    }

    bool close(bool isDropped) {
        JsonValue value = std::move(open_.back().value);
        open_.pop_back();
        return isDropped || add(std::move(value));
    }

    bool add(JsonValue&& value) {
        if (open_.empty())
            root = std::move(value);
        else if (open_.back().value.isList())
            open_.back().value.append(std::move(value));
        else
            open_.back().value.append(std::move(open_.back().name), std::move(value));
        return true;
    }

    TakesObject const& takesObject_;
    std::vector<Open> open_;
};

} // namespace

JsonValue JsonValue::read(InputFile& file, std::function<bool(JsonValue const&)> const& takesObject) {
    Bytes::Block block(file);
    Builder builder(takesObject);
    try {
        Library::sax_parse(Bytes(block), Bytes(), &builder);
    } catch (Malformed const&) {
        file.rethrow(); // what the file lacks may be what could not be read
        throw;
    }
    file.rethrow();
    return std::move(builder.root);
}

JsonValue JsonValue::parse(std::vector<std::uint8_t> const& text) {
    TakesObject const none = [](JsonValue const&) { return false; };
    Builder builder(none);
    Library::sax_parse(text.begin(), text.end(), &builder);
    return std::move(builder.root);
}

std::string JsonValue::quoted(std::string const& text) {
    return Library(text).dump(-1, ' ', true, Library::error_handler_t::replace);
}

std::optional<std::int64_t> JsonValue::integer() const {
    return kind_ == Kind::Integer ? std::optional(integer_) : std::nullopt;
}

std::optional<double> JsonValue::number() const {
    if (kind_ == Kind::Integer) return static_cast<double>(integer_);
    return kind_ == Kind::Number ? std::optional(number_) : std::nullopt;
}

JsonValue const& JsonValue::at(std::string const& name) const {
    static JsonValue const none;
    auto const found =
        std::find_if(members_.rbegin(), members_.rend(), [&](Member const& member) { return member.name == name; });
    return found == members_.rend() ? none : found->value;
}

void JsonValue::append(std::string&& name, JsonValue&& value) {
    members_.push_back({std::move(name), std::move(value)});
}
