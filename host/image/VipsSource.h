#pragma once

#include "host/image/InputFile.h"

#include <vips/vips8>

#include <cstdint>
#include <memory>
#include <vector>

/// A file as libvips' decoders read it: through InputFile, so that a failure of the disk is known as one, a check can
/// stop any decoder, and nothing is mapped into memory, where a failure would end the program.
class VipsSourceOfFile {
public:
    /// Bytes of the file at the offsets `zeros` are read as 0.
    VipsSourceOfFile(std::shared_ptr<InputFile> file, std::vector<std::uint64_t> zeros);
    VipsSourceOfFile(VipsSourceOfFile const&) = delete;
    VipsSourceOfFile& operator=(VipsSourceOfFile const&) = delete;
    ~VipsSourceOfFile();

    VipsSource* get() const { return VIPS_SOURCE(source_); }

private:
    static gint64 read(VipsSourceCustom* source, void* bytes, gint64 count, VipsSourceOfFile* self);
    static gint64 seek(VipsSourceCustom* source, gint64 offset, int whence, VipsSourceOfFile* self);

    std::shared_ptr<InputFile> file_;
    std::vector<std::uint64_t> zeros_;
    std::uint64_t position_ = 0;
    VipsSourceCustom* source_;
};
