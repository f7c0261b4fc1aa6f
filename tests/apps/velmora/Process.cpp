#include "tests/apps/velmora/Process.h"

#include "tests/support/TemporaryFolder.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <linux/capability.h>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

int temporaryFile() {
    std::string name = "/tmp/velmora-output-XXXXXX";
    int const file = mkstemp(name.data());
    if (file < 0) throw std::runtime_error("no temporary file");
    unlink(name.c_str());
    return file;
}

// "S 12 3" of a process that sleeps, after 12 ticks of its own and 3 of the kernel for it.
std::string stateOf(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);
    // The program's name, in parentheses, may contain blanks.
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    constexpr size_t kTicks = 11; // of the fields from the state on
    std::vector<std::string> const all(std::istream_iterator<std::string>(fields), {});
    if (all.size() < kTicks + 2) throw std::runtime_error("no state of process " + std::to_string(process));
    return all[0] + " " + all[kTicks] + " " + all[kTicks + 1];
}

std::string contentOf(int file) {
    std::string content;
    std::array<char, 4096> buffer{};
    lseek(file, 0, SEEK_SET);
    for (ssize_t count = 0; (count = read(file, buffer.data(), buffer.size())) > 0;)
        content.append(buffer.data(), static_cast<size_t>(count));
    return content;
}

void limitFileSize(size_t bytes) {
    if (bytes == 0) return;
    rlimit const limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
}

// The loader splits LD_PRELOAD at blanks, and takes folders in LD_LIBRARY_PATH as they are.
void preload(std::filesystem::path const& library) {
    char const* const folders = std::getenv("LD_LIBRARY_PATH");
    std::string const more = folders == nullptr ? "" : std::string(":") + folders;
    setenv("LD_LIBRARY_PATH", (library.parent_path().string() + more).c_str(), 1);
    setenv("LD_PRELOAD", library.filename().c_str(), 1);
}

// For stores that the program keeps: the user's own cache stays as it is.
std::string const& cacheHome() {
    static TemporaryFolder const kFolder;
    static std::string const kPath = kFolder.path();
    return kPath;
}

// The driver's programs stay where they are: most runs would compile all of them again.
void setCaches() {
    char const* const caches = std::getenv("XDG_CACHE_HOME");
    char const* const home = std::getenv("HOME");
    std::string const ofUser = caches != nullptr ? caches : home != nullptr ? std::string(home) + "/.cache" : "";
    if (!ofUser.empty()) setenv("MESA_SHADER_CACHE_DIR", ofUser.c_str(), 0);
    setenv("XDG_CACHE_HOME", cacheHome().c_str(), 1);
}

void change(Process::Environment const& changes) {
    setCaches();
    // Without this variable, drivers that ask for a window system write a line of their own.
    setenv("XDG_RUNTIME_DIR", "/tmp", 0);
    // Under AddressSanitizer a library may be loaded before it; its leak check crashes, because it does not follow the
    // thread-local storage of SwiftShader's own allocator.
    char const* const options = std::getenv("ASAN_OPTIONS");
    std::string const more = ":verify_asan_link_order=0:intercept_tls_get_addr=0";
    setenv("ASAN_OPTIONS", ((options == nullptr ? "" : options) + more).c_str(), 1);
    for (auto const& [name, value] : changes) {
        if (value.empty())
            unsetenv(name.c_str());
        else if (name == "LD_PRELOAD")
            preload(value);
        else
            setenv(name.c_str(), value.c_str(), 1);
    }
}

} // namespace

Process::Process(std::vector<std::string> arguments, Environment const& changes, size_t maxFileBytes)
    : out_(temporaryFile()), err_(temporaryFile()) {
    arguments.insert(arguments.begin(), VELMORA_PROGRAM);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (auto& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    cacheHome(); // made by this process, which removes it
    child_ = fork();
    if (child_ < 0) throw std::runtime_error("no child process");
    if (child_ > 0) return;
    dup2(out_, STDOUT_FILENO);
    dup2(err_, STDERR_FILENO);
    change(changes);
    limitFileSize(maxFileBytes);
    // A shell starts background processes, and nohup its command, with signals ignored.
    for (int const number : {SIGINT, SIGTERM, SIGHUP})
        std::signal(number, SIG_DFL);
    // Not execv, in whose place gcov first writes what it has counted since the fork: nothing.
    execvpe(pointers[0], pointers.data(), environ);
    _exit(127);
}

Process::~Process() {
    if (child_ > 0) {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }
    close(out_);
    close(err_);
}

void Process::signal(int number) const {
    kill(child_, number);
}

bool Process::running() const {
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(child_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == 0;
}

bool Process::waitUntilIdle() const {
    std::string before;
    for (int quiet = 0; quiet < 50; ++quiet) {
        if (!running()) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::string const now = stateOf(child_);
        if (now != before || now.front() != 'S') quiet = 0;
        before = now;
    }
    return true;
}

Process::Result Process::wait() {
    int status = 0;
    while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {}
    child_ = 0;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(out_), contentOf(err_)};
}

bool makePermissionsCount() {
    // The set takes effect at an execv only: this process keeps its own.
    return geteuid() != 0 ||
           (prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE) == 0 && prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH) == 0);
}

Process::Result runVelmora(std::vector<std::string> const& arguments, Process::Environment const& changes,
                           size_t maxFileBytes) {
    if (maxFileBytes == 0) return Process(arguments, changes).wait();
    // gcov would spoil its counts by writing a part of them.
    TemporaryFolder const counts;
    Process::Environment all = changes;
    all.emplace(Process::kCountsFolder, counts.path(""));
    return Process(arguments, all, maxFileBytes).wait();
}
