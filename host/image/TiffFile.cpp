#include "host/image/TiffFile.h"

TiffFile::TiffFile(InputFile& file, char const* mode) : client_{&file} {
    tiff_ = TIFFClientOpenExt(file.path().c_str(), mode, &client_, Client::read, Client::write, Client::seek,
                              Client::close, Client::size, Client::map, Client::unmap, message_.options().get());
    if (tiff_ == nullptr) throw failure();
}

TiffFile::~TiffFile() {
    if (tiff_ != nullptr) TIFFClose(tiff_);
}

HostError TiffFile::failure() const {
    client_.file->rethrow();
    return unreadableImage(client_.file->path(), *message_.text() == 0 ? "it is no TIFF file" : message_.text());
}

tmsize_t TiffFile::Client::read(thandle_t handle, void* bytes, tmsize_t count) {
    // Offsets in a header are not trusted: the system would call some of them invalid.
    if (of(handle).position >= of(handle).file->size()) return 0;
    auto const got = of(handle).file->readAt(of(handle).position, bytes, static_cast<size_t>(count));
    if (got > 0) of(handle).position += static_cast<std::uint64_t>(got);
    return got;
}

toff_t TiffFile::Client::seek(thandle_t handle, toff_t offset, int whence) {
    Client& client = of(handle);
    if (whence == SEEK_SET) client.position = offset;
    if (whence == SEEK_CUR) client.position += offset;
    if (whence == SEEK_END) client.position = client.file->size() + offset;
    return client.position;
}
