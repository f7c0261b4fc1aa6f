// An input is the text of a viewer script.
#include "apps/velmora/view/Script.h"
#include "host/HostError.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>

namespace {

void requireUsageError(HostError const& error) {
    std::string const text = error.what();
    fuzz::require(error.kind() == HostError::Kind::Usage, "a script is refused as a wrong usage");
    fuzz::require(text.rfind("script, line ", 0) == 0, "a refusal names the script and the line");
    fuzz::require(text.find('\n') == std::string::npos, "a refusal is one line");
}

void requireSensible(Script::Line const& line) {
    bool const named = line.action == Script::Action::Key || line.action == Script::Action::Screenshot;
    fuzz::require(named != line.text.empty(), "keys and screenshots have names, and nothing else has");
    fuzz::require(line.text.find('\n') == std::string::npos && line.text.find('#') == std::string::npos,
                  "a name ends with its line");
    fuzz::require(std::all_of(line.numbers.begin(), line.numbers.end(),
                              [](int number) { return number >= -100'000 && number <= 3'600'000; }),
                  "numbers are those that a window needs");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    std::string const text(bytes, bytes + size);
    try {
        std::vector<Script::Line> const lines = Script::parse(text, "script");
        fuzz::require(lines.size() <= static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) + 1,
                      "there are not more actions than lines");
        std::for_each(lines.begin(), lines.end(), requireSensible);
    } catch (HostError const& error) {
        requireUsageError(error);
    }
    return 0;
}
