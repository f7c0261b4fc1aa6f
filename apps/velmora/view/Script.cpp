#include "apps/velmora/view/Script.h"

#include "host/HostError.h"

#include <SDL.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

struct Form {
    char const* word;
    Script::Deed deed;
    std::size_t numbers;
    bool text;
};

constexpr std::array<Form, 10> kForms{{
    {"key", Script::Deed::Key, 0, true},
    {"wheel", Script::Deed::Wheel, 3, false},
    {"drag", Script::Deed::Drag, 4, false},
    {"resize", Script::Deed::Resize, 2, false},
    {"minimise", Script::Deed::Minimise, 0, false},
    {"restore", Script::Deed::Restore, 0, false},
    {"wait", Script::Deed::Wait, 0, false},
    {"sleep", Script::Deed::Sleep, 1, false},
    {"screenshot", Script::Deed::Screenshot, 0, true},
    {"quit", Script::Deed::Quit, 0, false},
}};

// Empty where the line is one of its form.
std::string complaint(Script::Line const& line, Form const& form, bool more) {
    bool const negative = std::any_of(line.numbers.begin(), line.numbers.end(), [](int number) { return number < 0; });
    if (line.numbers.size() != form.numbers || more || (form.text && line.text.empty()))
        return std::string(form.word) + " takes " +
               (form.text ? "a name" : std::to_string(form.numbers) + " whole numbers");
    if (form.deed == Script::Deed::Key && SDL_GetKeyFromName(line.text.c_str()) == SDLK_UNKNOWN)
        return "'" + line.text + "' is no key";
    if ((form.deed == Script::Deed::Resize || form.deed == Script::Deed::Sleep) && negative)
        return std::string(form.word) + " takes no negative numbers";
    return "";
}

Script::Line parseLine(std::string const& text, std::string const& where) {
    auto const fail = [&](std::string const& what) { return HostError(HostError::Kind::Usage, where + ": " + what); };
    std::istringstream words(text);
    std::string word;
    words >> word;
    auto const* const form =
        std::find_if(kForms.begin(), kForms.end(), [&](Form const& one) { return word == one.word; });
    if (form == kForms.end()) throw fail("'" + word + "' is nothing that the viewer can do");
    Script::Line line{form->deed, {}, ""};
    int number = 0;
    while (line.numbers.size() < form->numbers && words >> number)
        line.numbers.push_back(number);
    if (form->text) {
        std::getline(words >> std::ws, line.text);
        line.text.erase(line.text.find_last_not_of(" \t\r") + 1);
    }
    words.clear();
    bool const more = static_cast<bool>(words >> word);
    std::string const wrong = complaint(line, *form, more);
    if (!wrong.empty()) throw fail(wrong);
    return line;
}

} // namespace

std::vector<Script::Line> Script::parse(std::string const& text, std::string const& name) {
    std::vector<Line> lines;
    std::istringstream stream(text);
    std::string line;
    for (std::size_t number = 1; std::getline(stream, line); ++number) {
        line.erase(std::min(line.find('#'), line.size()));
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        lines.push_back(parseLine(line, name + ", line " + std::to_string(number)));
    }
    return lines;
}

std::vector<Script::Line> Script::read(std::string const& path) {
    std::ifstream file(path);
    std::string const text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.good() && !file.eof()) throw HostError(HostError::Kind::MissingFile, "cannot open '" + path + "'");
    return parse(text, path);
}
