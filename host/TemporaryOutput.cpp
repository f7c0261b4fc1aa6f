#include "host/TemporaryOutput.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// The file that the name stands for: a rename must replace what a link points to, not the link.
fs::path resolved(std::string const& path) {
    std::error_code ignored;
    fs::path const target = fs::is_symlink(path, ignored) ? fs::weakly_canonical(path, ignored) : fs::path(path);
    return target.empty() ? fs::path(path) : target;
}

mode_t newFileMode() {
    mode_t const mask = umask(0);
    umask(mask);
    return static_cast<mode_t>(0666) & ~mask;
}

} // namespace

TemporaryOutput::TemporaryOutput(std::string const& path) : path_(path), target_(resolved(path)) {
    std::error_code missing;
    auto const status = fs::status(target_, missing);
    if (fs::exists(status) && !fs::is_regular_file(status)) throw failure("it is not a regular file");
    // From here on nothing allocates: a file that is there has an owner.
    temporary_ = (target_.parent_path() / ("." + target_.filename().string() + ".XXXXXX")).string();
    descriptor_ = mkstemp(temporary_.data());
    if (descriptor_ < 0) throw failure(errno);
    // mkstemp makes a file for its owner alone; the result is an ordinary one.
    fchmod(descriptor_, newFileMode());
}

TemporaryOutput::~TemporaryOutput() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

void TemporaryOutput::finish() {
    // The data must be on the disk before the name is: a power cut may otherwise leave a named, empty file.
    if (fsync(descriptor_) != 0) throw failure(errno);
    int const closed = close(descriptor_);
    descriptor_ = -1;
    if (closed != 0) throw failure(errno);
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) throw failure(errno);
    temporary_.clear();
}

HostError TemporaryOutput::failure(std::string const& reason) const {
    return HostError(HostError::Kind::UnwritableOutput,
                     "cannot write '" + path_ + "': " + reason + "; check the folder, its permissions and free space");
}

HostError TemporaryOutput::failure(int errorNumber) const {
    return failure(std::generic_category().message(errorNumber));
}
