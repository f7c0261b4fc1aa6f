#include "host/output/TiffTagWriter.h"

#include "host/output/TemporaryOutput.h"

#include <cerrno>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr size_t kMostHeadBytes = 64; // of a directory, and of an entry with its padding
constexpr std::uint16_t kOffset = 4;  // types of values: 32 and 64 bits
constexpr std::uint16_t kBigOffset = 16;

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& bytes, std::uint64_t number, size_t count) {
    for (size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
}

// A directory to be written. Values are not looked at, but for those of directories that it leads to.
struct Directory {
    struct Entry {
        std::uint16_t type = 0;
        std::uint64_t count = 0;
        Bytes values; // or, if `isPlaced`, the offset of them in the file
        bool isPlaced = false;
    };
    std::map<std::uint16_t, Entry> entries;
    std::map<std::uint16_t, Directory> directories;

    void add(TiffTag const& tag, size_t depth) {
        std::uint16_t const number = tag.path.at(depth);
        if (depth + 1 < tag.path.size()) return directories[number].add(tag, depth + 1);
        entries[number] = {tag.type, tag.count(), tag.values, false};
    }
};

class Patch {
public:
    explicit Patch(TemporaryOutput const& file) : file_(file), structure_(bytes()) {}

    void add(std::vector<TiffTag> const& tags) {
        std::uint64_t const old = structure_.firstDirectory();
        Directory directory;
        for (TiffStructure::Entry const& entry : structure_.entries(old))
            directory.entries[entry.tag] = {entry.type, entry.count, valuesOf(entry), isOutside(entry)};
        for (TiffTag const& tag : tags)
            directory.add(tag, 0);
        std::uint64_t const made = put(directory, structure_.next(old));
        Bytes start;
        append(start, made, wordBytes());
        write(made_, sizeAtStart_);
        write(start, structure_.isBigTiff() ? 8 : 4);
    }

private:
    TiffBytes bytes() {
        struct stat status {};
        if (fstat(file_.descriptor(), &status) != 0) throw file_.failure(errno);
        sizeAtStart_ = static_cast<std::uint64_t>(status.st_size);
        return {sizeAtStart_, [this](std::uint64_t offset, void* bytes, size_t count) { read(offset, bytes, count); }};
    }

    size_t wordBytes() const { return structure_.isBigTiff() ? 8 : 4; }

    bool isOutside(TiffStructure::Entry const& entry) const {
        return entry.count * tifftags::bytesOf(entry.type) > wordBytes();
    }

    // Those that lie in the entry itself, or their offset.
    Bytes valuesOf(TiffStructure::Entry const& entry) const {
        Bytes values;
        if (isOutside(entry))
            append(values, entry.offset, wordBytes());
        else
            for (std::uint64_t i = 0; i < entry.count * tifftags::bytesOf(entry.type); ++i)
                append(values, structure_.number(entry.offset + i, 1), 1);
        return values;
    }

    // Appends to what is to be written; returns its offset in the file.
    std::uint64_t put(Bytes const& bytes) {
        if ((sizeAtStart_ + made_.size()) % 2 != 0) made_.push_back(0);
        std::uint64_t const offset = sizeAtStart_ + made_.size();
        made_.insert(made_.end(), bytes.begin(), bytes.end());
        return offset;
    }

    std::uint64_t put(Directory& directory, std::uint64_t next) {
        for (auto& [number, inner] : directory.directories) {
            Bytes offset;
            append(offset, put(inner, 0), wordBytes());
            directory.entries[number] = {structure_.isBigTiff() ? kBigOffset : kOffset, 1, std::move(offset), false};
        }
        Bytes written;
        append(written, directory.entries.size(), structure_.isBigTiff() ? 8 : 2);
        for (auto& [number, entry] : directory.entries) {
            append(written, number, 2);
            append(written, entry.type, 2);
            append(written, entry.count, wordBytes());
            if (!entry.isPlaced && entry.values.size() > wordBytes()) {
                std::uint64_t const offset = put(entry.values);
                entry.values.clear();
                append(entry.values, offset, wordBytes());
            }
            entry.values.resize(wordBytes());
            written.insert(written.end(), entry.values.begin(), entry.values.end());
        }
        append(written, next, wordBytes());
        return put(written);
    }

    void read(std::uint64_t offset, void* bytes, size_t count) const {
        auto* to = static_cast<std::uint8_t*>(bytes);
        while (count > 0) {
            ssize_t const got = pread(file_.descriptor(), to, count, static_cast<off_t>(offset));
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) throw file_.failure(errno);
            if (got == 0) throw file_.failure("it became shorter while it was written");
            to += got;
            offset += static_cast<std::uint64_t>(got);
            count -= static_cast<size_t>(got);
        }
    }

    void write(Bytes const& bytes, std::uint64_t offset) const {
        size_t done = 0;
        while (done < bytes.size()) {
            ssize_t const put =
                pwrite(file_.descriptor(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
            if (put < 0 && errno == EINTR) continue;
            if (put < 0) throw file_.failure(errno);
            done += static_cast<size_t>(put);
        }
    }

    TemporaryOutput const& file_;
    std::uint64_t sizeAtStart_ = 0;
    TiffStructure structure_;
    Bytes made_; // behind what the file had
};

} // namespace

size_t tifftagwriter::bytesOf(std::vector<TiffTag> const& tags) {
    size_t bytes = 0;
    for (TiffTag const& tag : tags)
        bytes += tag.values.size() + kMostHeadBytes;
    return bytes;
}

void tifftagwriter::add(TemporaryOutput const& file, std::vector<TiffTag> const& tags) {
    if (!tags.empty()) Patch(file).add(tags);
}
