#include "apps/velmora/Commands.h"
#include "apps/velmora/ExitCodes.h"
#include "apps/velmora/shared/Interruption.h"
#include "renderbackend/VelmoraException.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

namespace {

// createTarget throws plain std::exceptions; the tags of the text tell the backend's from others.
bool isBackendFailure(std::exception const& error) {
    return std::string(error.what()).rfind("#Name:", 0) == 0;
}

ExitCode fail(ExitCode code, std::string const& message) {
    std::fprintf(stderr, "velmora: %s\n", onOneLine(message).c_str());
    return code;
}

ExitCode interrupted() {
    return fail(kExitInterrupted, "interrupted; nothing was written");
}

// A command's output may be its only result: a full disk behind a redirection is a failure.
void requireWritten() {
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return;
    throw HostError(HostError::Kind::UnwritableOutput,
                    std::string("cannot write to the standard output: ") +
                        (errno != 0 ? std::strerror(errno) : "an earlier write failed") + "; free some space");
}

// With the command, if there is one, because its help has the answer.
std::string nameOf(CLI::App const& program) {
    auto const commands = program.get_subcommands();
    return commands.empty() ? "velmora" : "velmora " + commands.front()->get_name();
}

int run(int argc, char** argv) {
    auto const program = makeProgram();
    try {
        program->parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) return program->exit(error);
        return fail(kExitUsage, std::string(error.what()) + "; see " + nameOf(*program) + " --help");
    }
    requireWritten();
    // Checked here: the parser's own test would hide a misspelt command.
    if (program->get_subcommands().empty()) return fail(kExitUsage, "no command given; see velmora --help");
    return kExitSuccess;
}

int runReported(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (Interrupted const&) {
        return interrupted();
    } catch (HostError const& error) {
        // A failure caused by the signal is reported as the interruption. The same holds below.
        if (interruption::isNoted()) return interrupted();
        return fail(exitCodeOf(error.kind()), error.what());
    } catch (std::bad_alloc const&) {
        return fail(kExitInternalError, "out of memory; choose a smaller region or tile");
    } catch (std::exception const& error) {
        if (interruption::isNoted()) return interrupted();
        if (isBackendFailure(error))
            return fail(kExitBackendFailure, "the render backend failed: " + formatExceptionMessage(error) +
                                                 "; see velmora info for the driver");
        return fail(kExitInternalError, std::string("internal error: ") + error.what() + "; please report it");
    }
}

} // namespace

int main(int argc, char** argv) {
    interruption::listen();
    try {
        return runReported(argc, argv);
    } catch (...) {
        // There was no memory even for the message.
        std::fputs("velmora: out of memory; choose a smaller region or tile\n", stderr);
        return kExitInternalError;
    }
}
