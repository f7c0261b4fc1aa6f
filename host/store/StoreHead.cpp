#include "host/store/StoreHead.h"

#include "host/Failures.h"
#include "host/store/StoreErrors.h"
#include "host/store/TileStoreFormat.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using storeerrors::damaged;

using storehead::Head;

constexpr std::array<unsigned char, 16> kMagic{'S', 'Q', 'L', 'i', 't', 'e', ' ', 'f',
                                               'o', 'r', 'm', 'a', 't', ' ', '3', '\0'};
constexpr size_t kPageBytesAt = 16;
constexpr size_t kPagesAt = 28;
constexpr size_t kVersionAt = 60;
constexpr size_t kApplicationIdAt = 68;
constexpr size_t kDamagedMarks = 1; // bytes: with more of them damaged it is another file

// Fields of SQLite's file format, section 1.3, that have fixed values in a store.
struct Field {
    size_t offset;
    size_t bytes;
    std::uint32_t expected;
    char const* name;
};

// SQLite would create a log beside the file, or believe one, if the first two were 2. It would take the cache size from
// the file.
constexpr std::array<Field, 10> kFields{{{18, 1, 1, "write version"},
                                         {19, 1, 1, "read version"},
                                         {20, 1, 0, "reserved bytes of a page"},
                                         {21, 1, 64, "largest payload fraction"},
                                         {22, 1, 32, "smallest payload fraction"},
                                         {23, 1, 32, "leaf payload fraction"},
                                         {44, 4, 4, "schema format"},
                                         {48, 4, 0, "size of the cache"},
                                         {52, 4, 0, "vacuum mode"},
                                         {56, 4, 1, "text encoding"}}};

// SQLite's locks lie behind these bytes, whatever the file's size.
constexpr off_t kLocksAt = 0x40000000;
constexpr off_t kLockBytes = 512;

class Descriptor {
public:
    explicit Descriptor(std::string const& path) : value_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    ~Descriptor() {
        if (value_ >= 0) close(value_);
    }
    int value() const { return value_; }

private:
    int value_;
};

Head headOf(Descriptor const& file, std::string const& path) {
    Head head;
    size_t got = 0;
    while (got < head.bytes.size()) {
        ssize_t const count = pread(file.value(), &head.bytes[got], head.bytes.size() - got, static_cast<off_t>(got));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw storeerrors::unreadable(path, failures::reasonOf(errno));
        if (count == 0) break;
        got += static_cast<size_t>(count);
    }
    return head;
}

// Big-endian, like all numbers of SQLite's header.
std::uint32_t numberAt(Head const& head, size_t offset, size_t bytes) {
    std::uint32_t number = 0;
    for (size_t i = 0; i < bytes; ++i)
        number = number << 8 | head.bytes[offset + i];
    return number;
}

bool isDatabase(Head const& head) {
    return std::equal(kMagic.begin(), kMagic.end(), head.bytes.begin());
}

// Number of bytes of the two marks that differ from a store's.
size_t wrongMarks(Head const& head) {
    size_t count = 0;
    for (size_t i = 0; i < kMagic.size(); ++i)
        if (head.bytes[i] != kMagic[i]) ++count;
    for (size_t i = 0; i < 4; ++i)
        if (head.bytes[kApplicationIdAt + i] != (storeformat::kApplicationId >> (24 - 8 * i) & 0xff)) ++count;
    return count;
}

// A store never changes once it has its name, and it is read without SQLite's locks. A program that changes one all the
// same holds one of these locks; a lock of an open file description detects those of this process, too. On a file
// system without locks no program holds one.
bool isLockedForWriting(Descriptor const& file) {
    struct flock lock {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = kLocksAt;
    lock.l_len = kLockBytes;
    return fcntl(file.value(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

bool leadsNowhere(int errorNumber) {
    return errorNumber == ENOENT || errorNumber == ENOTDIR || errorNumber == ELOOP;
}

struct stat statusOf(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) throw failures::cannotOpen(path, failures::reasonOf(errno));
    return status;
}

} // namespace

std::int64_t Head::version() const {
    return static_cast<std::int32_t>(numberAt(*this, kVersionAt, 4));
}

bool storehead::isMarked(std::string const& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        if (leadsNowhere(errno)) return false;
        throw failures::cannotOpen(path, failures::reasonOf(errno));
    }
    // Opening any other kind of file might block, or have side effects.
    if (!S_ISREG(status.st_mode)) return false;
    Descriptor const file(path);
    if (file.value() < 0) throw failures::cannotOpen(path, failures::reasonOf(errno));
    Head const head = headOf(file, path);
    return isDatabase(head) || wrongMarks(head) <= kDamagedMarks;
}

Head storehead::read(std::string const& path) {
    struct stat const status = statusOf(path);
    if (!S_ISREG(status.st_mode)) throw storeerrors::noStore(path);
    Descriptor const file(path);
    if (file.value() < 0) throw storeerrors::unreadable(path, failures::reasonOf(errno));
    Head head = headOf(file, path);
    head.fileBytes = static_cast<size_t>(status.st_size);
    size_t const wrong = wrongMarks(head);
    if (wrong > kDamagedMarks) throw storeerrors::noStore(path);
    if (wrong > 0) throw damaged(path, "the marks at its beginning are not those of a store");
    if (isLockedForWriting(file)) throw storeerrors::locked(path);
    return head;
}

void storehead::requireLayout(Head const& head, std::string const& path, std::int64_t version) {
    for (Field const& field : kFields) {
        std::uint32_t const number = numberAt(head, field.offset, field.bytes);
        if (number != field.expected)
            throw damaged(path, "its head says " + std::to_string(number) + " as its " + field.name + " instead of " +
                                    std::to_string(field.expected));
    }
    size_t const pageBytes = numberAt(head, kPageBytesAt, 2);
    size_t const expected = storeformat::pageBytes(version);
    if (pageBytes != expected)
        throw damaged(path, "its pages have " + std::to_string(pageBytes) + " bytes instead of the " +
                                std::to_string(expected) + " of version " + std::to_string(version));
    // SQLite itself notices a missing page, but not a truncated last one.
    size_t const bytes = numberAt(head, kPagesAt, 4) * pageBytes;
    if (head.fileBytes < bytes)
        throw damaged(path, "it has " + std::to_string(head.fileBytes) + " bytes instead of " + std::to_string(bytes));
}
