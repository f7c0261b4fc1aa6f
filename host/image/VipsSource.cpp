#include "host/image/VipsSource.h"

#include <cstdio>
#include <utility>

VipsSourceOfFile::VipsSourceOfFile(std::shared_ptr<InputFile> file, std::vector<std::uint64_t> zeros)
    : file_(std::move(file)), zeros_(std::move(zeros)), source_(vips_source_custom_new()) {
    g_signal_connect(source_, "read", G_CALLBACK(read), this);
    g_signal_connect(source_, "seek", G_CALLBACK(seek), this);
}

VipsSourceOfFile::~VipsSourceOfFile() {
    // libvips may hold the source for longer than this object lives.
    g_signal_handlers_disconnect_by_data(source_, this);
    g_object_unref(source_);
}

gint64 VipsSourceOfFile::read(VipsSourceCustom*, void* bytes, gint64 count, VipsSourceOfFile* self) {
    std::uint64_t const start = self->position_;
    std::int64_t const got = self->file_->readAt(start, bytes, static_cast<size_t>(count));
    if (got <= 0) return got;
    self->position_ += static_cast<std::uint64_t>(got);
    for (std::uint64_t const zero : self->zeros_)
        if (zero >= start && zero < self->position_) static_cast<std::uint8_t*>(bytes)[zero - start] = 0;
    return got;
}

gint64 VipsSourceOfFile::seek(VipsSourceCustom*, gint64 offset, int whence, VipsSourceOfFile* self) {
    gint64 from = 0;
    if (whence == SEEK_CUR) from = static_cast<gint64>(self->position_);
    if (whence == SEEK_END) from = static_cast<gint64>(self->file_->size());
    if (from + offset < 0) return -1;
    self->position_ = static_cast<std::uint64_t>(from + offset);
    return from + offset;
}
