#include "tests/apps/velmora/Faults.h"

#include "tests/support/TemporaryFolder.h"

#include <sstream>
#include <stdexcept>

Process::Environment Fault::environment() const {
    return {{"LD_PRELOAD", VELMORA_FAULTY_FILES},
            {"VELMORA_FAULT_CALLS", calls},
            {"VELMORA_FAULT_MISSING", missing},
            {"VELMORA_FAULT_FOLDER", folder},
            {"VELMORA_FAULT_FIRST", std::to_string(first)},
            {"VELMORA_FAULT_LAST", std::to_string(last)},
            {"VELMORA_FAULT_ERRNO", std::to_string(reason)},
            {"VELMORA_FAULT_SHORT", shortens ? "1" : ""},
            {"VELMORA_FAULT_WAIT", wait}};
}

std::vector<std::string> callsOf(std::vector<std::string> const& arguments, Fault fault,
                                 Process::Environment environment) {
    TemporaryFolder const folder;
    fault.first = 0;
    environment["VELMORA_FAULT_COUNTED"] = folder.path("counted");
    writeFile(folder.path("counted"), "");
    auto const result = runFaulty(arguments, fault, environment);
    if (result.exitCode != 0) throw std::runtime_error("the run without a fault fails: " + result.err);
    std::istringstream lines(readFile(folder.path("counted")));
    std::vector<std::string> calls;
    for (std::string line; std::getline(lines, line);)
        calls.push_back(line);
    return calls;
}

size_t countCalls(std::vector<std::string> const& arguments, Fault const& fault,
                  Process::Environment const& environment) {
    return callsOf(arguments, fault, environment).size();
}

Process::Result runFaulty(std::vector<std::string> const& arguments, Fault const& fault,
                          Process::Environment environment) {
    environment.merge(fault.environment());
    return runVelmora(arguments, environment);
}
