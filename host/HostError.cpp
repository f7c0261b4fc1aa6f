#include "host/HostError.h"

#include "host/PlainText.h"

#include <sstream>

HostError::HostError(Kind kind, std::string const& text) : std::runtime_error(onOneLine(text)), kind_(kind) {}

std::string onOneLine(std::string const& text) {
    constexpr auto kBlank = " \t\r";
    std::istringstream lines(text);
    std::string line;
    std::string joined;
    while (std::getline(lines, line)) {
        size_t const first = line.find_first_not_of(kBlank);
        if (first == std::string::npos) continue;
        size_t const last = line.find_last_not_of(kBlank);
        if (!joined.empty()) joined += "; ";
        joined += line.substr(first, last - first + 1);
    }
    return terminalText(joined);
}
