#include "apps/velmora/view/Script.h"

#include "host/Failures.h"
#include "host/HostError.h"
#include "host/image/InputFile.h"

#include <SDL.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>
#include <utility>

namespace {

struct Range {
    int least;
    int most;
};

// Beyond any window, and few enough events that they are made in no time.
constexpr Range kPlace{-100'000, 100'000};
constexpr Range kNotches{-1000, 1000};
constexpr Range kSide{1, 16384};
constexpr Range kMilliseconds{0, 3'600'000};
constexpr Range kNone{0, 0};

constexpr size_t kMaxBytes = 1'000'000;

struct Form {
    char const* word;
    Script::Action action;
    size_t numbers;
    std::array<Range, 4> ranges; // of the numbers
    bool text;
};

constexpr std::array<Form, 12> kForms{{
    {"key", Script::Action::Key, 0, {kNone, kNone, kNone, kNone}, true},
    {"type", Script::Action::Type, 0, {kNone, kNone, kNone, kNone}, true},
    {"wheel", Script::Action::Wheel, 3, {kPlace, kPlace, kNotches, kNone}, false},
    {"drag", Script::Action::Drag, 4, {kPlace, kPlace, kPlace, kPlace}, false},
    {"drop", Script::Action::Drop, 0, {kNone, kNone, kNone, kNone}, true},
    {"resize", Script::Action::Resize, 2, {kSide, kSide, kNone, kNone}, false},
    {"minimise", Script::Action::Minimise, 0, {kNone, kNone, kNone, kNone}, false},
    {"restore", Script::Action::Restore, 0, {kNone, kNone, kNone, kNone}, false},
    {"wait", Script::Action::Wait, 0, {kNone, kNone, kNone, kNone}, false},
    {"sleep", Script::Action::Sleep, 1, {kMilliseconds, kNone, kNone, kNone}, false},
    {"screenshot", Script::Action::Screenshot, 0, {kNone, kNone, kNone, kNone}, true},
    {"quit", Script::Action::Quit, 0, {kNone, kNone, kNone, kNone}, false},
}};

// Where a line is wrong, with its name and number before the sentence.
class Line {
public:
    Line(std::string const& text, std::string where) : words_(text), where_(std::move(where)) {}

    Script::Line parsed() {
        std::string word;
        words_ >> word;
        auto const* const form =
            std::find_if(kForms.begin(), kForms.end(), [&](Form const& one) { return word == one.word; });
        if (form == kForms.end()) throw wrong("'" + word + "' is nothing that the viewer can do");
        Script::Line line{form->action, {}, ""};
        if (form->text)
            line.text = restOf(*form);
        else
            line.numbers = numbersOf(*form);
        if (form->action == Script::Action::Key && Script::keyOf(line.text).code == SDLK_UNKNOWN)
            throw wrong("'" + line.text + "' is no key");
        if (form->action == Script::Action::Type && line.text.size() >= SDL_TEXTINPUTEVENT_TEXT_SIZE)
            throw wrong("type takes at most " + std::to_string(SDL_TEXTINPUTEVENT_TEXT_SIZE - 1) + " bytes");
        return line;
    }

private:
    HostError wrong(std::string const& what) const { return {HostError::Kind::Usage, where_ + ": " + what}; }

    std::string restOf(Form const& form) {
        std::string text;
        std::getline(words_ >> std::ws, text);
        text.erase(text.find_last_not_of(" \t\r") + 1);
        if (text.empty()) throw wrong(std::string(form.word) + " takes a name");
        return text;
    }

    std::vector<int> numbersOf(Form const& form) {
        std::vector<std::string> const texts{std::istream_iterator<std::string>(words_), {}};
        if (texts.size() != form.numbers) throw otherNumbers(form);
        std::vector<int> numbers;
        for (size_t i = 0; i < texts.size(); ++i)
            numbers.push_back(numberOf(texts[i], form, form.ranges.at(i)));
        return numbers;
    }

    int numberOf(std::string const& text, Form const& form, Range const& range) const {
        int number = 0;
        auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        bool const tooLarge = error == std::errc::result_out_of_range;
        if ((error != std::errc() && !tooLarge) || end != text.data() + text.size()) throw otherNumbers(form);
        if (tooLarge || number < range.least || number > range.most)
            throw wrong(std::string(form.word) + ": " + text + " is not within " + std::to_string(range.least) +
                        " to " + std::to_string(range.most));
        return number;
    }

    HostError otherNumbers(Form const& form) const {
        return wrong(std::string(form.word) + " takes " + std::to_string(form.numbers) + " whole numbers");
    }

    std::istringstream words_;
    std::string where_;
};

} // namespace

Script::Key Script::keyOf(std::string const& name) {
    std::string const control = "Ctrl+";
    bool const isHeld = name.rfind(control, 0) == 0;
    return {SDL_GetKeyFromName(name.substr(isHeld ? control.size() : 0).c_str()), isHeld};
}

std::vector<Script::Line> Script::parse(std::string const& text, std::string const& name) {
    std::vector<Line> lines;
    std::istringstream stream(text);
    std::string line;
    for (size_t number = 1; std::getline(stream, line); ++number) {
        line.erase(std::min(line.find('#'), line.size()));
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        lines.push_back(::Line(line, name + ", line " + std::to_string(number)).parsed());
    }
    return lines;
}

// Pipes are read too, such as those that shells make.
std::vector<Script::Line> Script::read(std::string const& path) {
    std::error_code failed;
    if (std::filesystem::is_directory(path, failed)) throw failures::cannotOpen(path, "it is a folder");
    std::ifstream file(path);
    if (!file.is_open()) throw failures::cannotOpen(path, failures::reasonOf(errno));
    std::string text;
    std::array<char, 4096> part{};
    while (file.read(part.data(), part.size()), file.gcount() > 0) {
        text.append(part.data(), static_cast<size_t>(file.gcount()));
        if (text.size() > kMaxBytes)
            throw HostError(HostError::Kind::Usage, path + " is no script: it has more than a million bytes");
    }
    if (file.bad()) throw readFailure(path, std::strerror(errno));
    return parse(text, path);
}
