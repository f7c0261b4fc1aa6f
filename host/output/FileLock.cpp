#include "host/output/FileLock.h"

#include <cerrno>
#include <fcntl.h>

namespace {

// The lock covers one byte, far from the data and from the bytes that SQLite locks, because network file systems may
// keep others from writing to locked bytes.
bool lock(int descriptor, filelock::Kind kind, int command) {
    struct flock range {};
    range.l_type = kind == filelock::Kind::Shared ? F_RDLCK : F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_start = off_t{1} << 62;
    range.l_len = 1;
    int done = 0;
    while ((done = fcntl(descriptor, command, &range)) != 0 && errno == EINTR) {}
    return done == 0;
}

} // namespace

bool filelock::take(int descriptor, Kind kind) {
    return lock(descriptor, kind, F_OFD_SETLK);
}

bool filelock::await(int descriptor, Kind kind) {
    return lock(descriptor, kind, F_OFD_SETLKW);
}

bool filelock::isMissing(int errorNumber) {
    return errorNumber == EINVAL || errorNumber == ENOLCK || errorNumber == ENOSYS || errorNumber == EOPNOTSUPP;
}
