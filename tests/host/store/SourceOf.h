#pragma once

#include "host/image/PixelSource.h"

#include <algorithm>
#include <memory>
#include <utility>

/// The pixels of another picture, with metadata that tests can change.
class SourceOf : public PixelSource {
public:
    explicit SourceOf(std::unique_ptr<PixelSource> source) : source_(std::move(source)) {}

    size_t width() const override { return source_->width(); }
    size_t height() const override { return source_->height(); }
    size_t bands() const override { return source_->bands(); }
    std::string description() const override { return source_->description(); }

protected:
    void readInto(Region const& region, std::uint8_t* pixels) override {
        std::vector<std::uint8_t> buffer;
        source_->read(region, buffer);
        std::copy(buffer.begin(), buffer.end(), pixels);
    }

private:
    std::unique_ptr<PixelSource> source_;
};
