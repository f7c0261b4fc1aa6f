#pragma once

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

/// The program velmora as a child process. Its environment is this process's, with changes: an empty value removes a
/// variable.
class Process {
public:
    using Environment = std::map<std::string, std::string>;

    /// The variable that names another folder for what gcov counts: for a process that may be killed while it writes.
    static constexpr char const* kCountsFolder = "GCOV_PREFIX";

    struct Result {
        int exitCode; ///< -1: a signal ended it
        std::string out;
        std::string err;
    };

    explicit Process(std::vector<std::string> arguments, Environment const& changes = {}, size_t maxFileBytes = 0);
    /// Kills it if it still runs.
    ~Process();
    Process(Process const&) = delete;
    Process& operator=(Process const&) = delete;

    void signal(int number) const;
    bool running() const;
    /// Returns once it has slept for half a second without using the processor: it waits for something. False if it
    /// ends before.
    bool waitUntilIdle() const;
    Result wait();

private:
    pid_t child_;
    int out_;
    int err_;
};

/// From now on started processes lose root's right to write to files against their permissions. False if that is
/// impossible.
bool makePermissionsCount();

/// Runs velmora to its end.
Process::Result runVelmora(std::vector<std::string> const& arguments, Process::Environment const& changes = {},
                           size_t maxFileBytes = 0);
