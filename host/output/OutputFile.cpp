#include "host/output/OutputFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using Kind = HostError::Kind;

// Endings of names that users would take for pictures.
constexpr std::array<std::string_view, 48> kPictureEndings{
    ".apng", ".avif", ".bif",  ".bmp",  ".cr2", ".dcm",     ".dng", ".exr",  ".fit",  ".fits", ".fts", ".gif",
    ".hdr",  ".heic", ".heif", ".j2c",  ".j2k", ".jp2",     ".jpc", ".jpe",  ".jpeg", ".jpf",  ".jpg", ".jph",
    ".jpx",  ".jxl",  ".mrxs", ".ndpi", ".nef", ".nii",     ".pbm", ".pdf",  ".pfm",  ".pgm",  ".png", ".pnm",
    ".ppm",  ".psd",  ".scn",  ".svg",  ".svs", ".svslide", ".tif", ".tiff", ".v",    ".vips", ".vms", ".webp"};

std::string endingOf(std::string const& path) {
    std::string ending = fs::path(path).extension().string();
    auto const lowerCase = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    };
    std::transform(ending.begin(), ending.end(), ending.begin(), lowerCase);
    return ending;
}

bool namesPicture(std::string const& path) {
    return std::find(kPictureEndings.begin(), kPictureEndings.end(), endingOf(path)) != kPictureEndings.end();
}

// The endings that such a name must have; empty if the name fits.
std::string misfitOf(std::string const& path, OutputFile::Ending ending) {
    bool const png = endingOf(path) == ".png";
    bool const tiff = namesTiff(path);
    switch (ending) {
    case OutputFile::Ending::Any:
        return "";
    case OutputFile::Ending::Png:
        return png ? "" : "what is written is a PNG; choose a name that ends in .png";
    case OutputFile::Ending::Tiff:
        return tiff ? "" : "what is written is a TIFF; choose a name that ends in .tif or .tiff";
    case OutputFile::Ending::PngOrTiff:
        return png || tiff ? "" : "what is written is a PNG or a TIFF; choose a name that ends in .png, .tif or .tiff";
    case OutputFile::Ending::NotOfAPicture:
        return namesPicture(path) ? "what is written is a tile store, and no picture; choose a name that ends in .vlm"
                                  : "";
    }
    return "";
}

std::string adviceOn(int errorNumber) {
    switch (errorNumber) {
    case ENOSPC:
    case EDQUOT:
        return "free some space, or choose another folder";
    case EACCES:
    case EPERM:
    case EROFS:
        return "choose a folder that may be written to";
    case ENOENT:
    case ENOTDIR:
        return "make the folder first, or choose another";
    case ENAMETOOLONG:
        return "choose a shorter name";
    default:
        return "check the folder, its permissions and free space";
    }
}

std::string kindOf(mode_t mode) {
    if (S_ISDIR(mode)) return "a folder";
    if (S_ISFIFO(mode)) return "a FIFO";
    if (S_ISSOCK(mode)) return "a socket";
    return "a device";
}

HostError unwritable(OutputFile const& file, std::string const& reason, std::string const& advice) {
    return HostError(Kind::UnwritableOutput, "cannot write '" + file.path + "': " + reason + "; " + advice);
}

// Folders whose names stand for open files of a process.
bool namesStream(fs::path const& path) {
    std::string const name = path.lexically_normal().string();
    return name.rfind("/proc/", 0) == 0 || name.rfind("/dev/fd/", 0) == 0;
}

bool isSame(struct stat const& one, struct stat const& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

void requireOther(OutputFile const& file, struct stat const& target) {
    for (std::string const& name : file.sources) {
        struct stat source {};
        if (stat(name.c_str(), &source) == 0 && isSame(source, target))
            throw unwritable(file, "it is the input itself", "choose another name");
    }
}

// Checked early: hours of work may lie between now and the first byte.
void requireFolder(OutputFile const& file, fs::path const& target) {
    fs::path const folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) throw file.failure(errno);
}

} // namespace

bool namesTiff(std::string const& path) {
    std::string const ending = endingOf(path);
    return ending == ".tif" || ending == ".tiff";
}

fs::path OutputFile::target() const {
    constexpr int kMaxLinks = 40;
    fs::path target(path);
    for (int links = 0; links <= kMaxLinks; ++links) {
        if (namesStream(target)) throw unwritable(*this, "it is a stream, not a regular file", "choose another name");
        std::error_code noLink;
        fs::path const next = fs::read_symlink(target, noLink);
        if (noLink) return target;
        target = next.is_absolute() ? next : target.parent_path() / next;
    }
    throw failure(ELOOP);
}

HostError OutputFile::failure(std::string const& reason) const {
    return unwritable(*this, reason, adviceOn(0));
}

HostError OutputFile::failure(int errorNumber) const {
    return unwritable(*this, std::generic_category().message(errorNumber), adviceOn(errorNumber));
}

void requireUsable(OutputFile const& file, OutputFile::Ending ending) {
    if (file.path.empty()) throw HostError(Kind::Usage, "the name of the file to write is empty; choose another");
    fs::path const target = file.target();
    struct stat status {};
    bool const exists = stat(target.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) throw file.failure(errno);
    if (exists && !S_ISREG(status.st_mode))
        throw unwritable(file, "it is " + kindOf(status.st_mode) + ", not a regular file", "choose another name");
    if (!target.has_filename()) throw unwritable(file, "that is the name of a folder", "choose another name");
    if (exists) requireOther(file, status);
    std::string const misfit = misfitOf(file.path, ending);
    if (!misfit.empty()) throw HostError(Kind::Usage, "cannot write '" + file.path + "': " + misfit);
    if (exists && !file.replace)
        throw HostError(Kind::UnwritableOutput,
                        "'" + file.path + "' exists already; choose another name, or replace it with --force");
    requireFolder(file, target);
}
