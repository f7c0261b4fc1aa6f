// An input is the arguments of the program, one per line. Commands do not run.
#include "apps/velmora/Commands.h"
#include "apps/velmora/FilterOptions.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <sstream>

namespace {

// As main() gets them, with the program's name in front.
std::vector<std::string> argumentsOf(std::string const& text) {
    std::vector<std::string> arguments{"velmora"};
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        arguments.push_back(line.substr(0, line.find('\0')));
    return arguments;
}

// Thrown where a command would run.
struct Parsed {};

bool hasFilters(CLI::App const& command) {
    return command.get_option_no_throw("--sharpen") != nullptr;
}

// What a command does with its parsed line before it opens anything.
void takeOptions(CLI::App const& command) {
    if (!hasFilters(command)) return;
    size_t const steps = filterStepsOf(command).size();
    fuzz::require(steps <= command.parse_order().size(), "every step was asked for");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* bytes, size_t size) {
    std::vector<std::string> const arguments = argumentsOf({bytes, bytes + size});
    std::vector<char const*> argv;
    for (std::string const& argument : arguments)
        argv.push_back(argument.c_str());
    auto const program = makeProgram();
    for (CLI::App* const command : program->get_subcommands({}))
        command->parse_complete_callback([command] {
            takeOptions(*command);
            throw Parsed();
        });
    try {
        program->parse(static_cast<int>(argv.size()), argv.data());
    } catch (Parsed const&) {
    } catch (CLI::ParseError const& error) {
        fuzz::require(error.get_exit_code() == 0 || *error.what() != '\0', "a refusal has a text");
    }
    return 0;
}
