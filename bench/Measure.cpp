// velmora-measure RESULT PROGRAM ARGUMENT...: runs a program to its end and writes its seconds and its largest resident
// memory in MB into the file RESULT. Exits with the program's exit code, with 127 if it cannot be started.
#include <chrono>
#include <cstdio>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr double kBytesPerKibibyte = 1024;
constexpr double kBytesPerMegabyte = 1e6;
constexpr int kNotStarted = 127;

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: velmora-measure RESULT PROGRAM ARGUMENT...\n", stderr);
        return 2;
    }
    auto const start = std::chrono::steady_clock::now();
    pid_t const child = fork();
    if (child == 0) {
        execvp(argv[2], argv + 2);
        std::perror(argv[2]);
        _exit(kNotStarted);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) {
        std::perror("velmora-measure");
        return kNotStarted;
    }
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
    double const megabytes = static_cast<double>(usage.ru_maxrss) * kBytesPerKibibyte / kBytesPerMegabyte;
    std::FILE* const result = std::fopen(argv[1], "w");
    if (result == nullptr || std::fprintf(result, "%.1f %.0f\n", seconds.count(), megabytes) < 0 ||
        std::fclose(result) != 0) {
        std::perror(argv[1]);
        return kNotStarted;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : kNotStarted;
}
