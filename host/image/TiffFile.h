#pragma once

#include "host/image/InputFile.h"
#include "host/image/TiffMessage.h"

#include <tiffio.h>

#include <cstdint>

/// A TIFF file opened by libtiff through InputFile. One thread at a time.
class TiffFile {
public:
    /// `mode`: libtiff's. Throws HostError (unreadable image), and what the file's check throws.
    TiffFile(InputFile& file, char const* mode);
    TiffFile(TiffFile const&) = delete;
    TiffFile& operator=(TiffFile const&) = delete;
    ~TiffFile();

    TIFF* get() const { return tiff_; }
    InputFile& file() const { return *client_.file; }
    TiffMessage& message() { return message_; }

    /// A tag's value in the current directory; where it is missing, libtiff's default, and `otherwise` where there is
    /// none.
    template <class Value>
    Value value(std::uint32_t tag, Value otherwise = {}) const {
        Value found{};
        return TIFFGetFieldDefaulted(tiff_, tag, &found) == 1 ? found : otherwise;
    }

    /// The reason of a failed call. Throws the exception of a failed read instead, if there was one.
    HostError failure() const;

private:
    // I/O callbacks for libtiff. They write nothing and map nothing: a mapped file that shrinks would end the program.
    struct Client {
        InputFile* file;
        std::uint64_t position = 0;

        static Client& of(thandle_t handle) { return *static_cast<Client*>(handle); }
        static tmsize_t read(thandle_t handle, void* bytes, tmsize_t count);
        static tmsize_t write(thandle_t, void*, tmsize_t) { return -1; }
        static toff_t seek(thandle_t handle, toff_t offset, int whence);
        static int close(thandle_t) { return 0; }
        static toff_t size(thandle_t handle) { return of(handle).file->size(); }
        static int map(thandle_t, void**, toff_t*) { return 0; }
        static void unmap(thandle_t, void*, toff_t) {}
    };

    Client client_;
    TiffMessage message_;
    TIFF* tiff_ = nullptr;
};
