#pragma once

#include "host/HostError.h"
#include "host/image/ImageReader.h"
#include "host/image/SampleSource.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/reading/FileSamples.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

/// A folder for picture files, and functions that read them.
class ImageFixture : public testing::Test {
protected:
    using Options = ImageReader::Options;
    using Samples = filesamples::Samples;

    std::string path(std::string const& name) const { return folder_.path(name); }

    /// The file's own samples, without any loss.
    static Options lossless() {
        Options options;
        options.samples = ImageReader::Samples::kAsStored;
        options.lossless = true;
        return options;
    }
    static Options withPage(size_t page) {
        Options options = lossless();
        options.selection.page = page;
        return options;
    }
    static Options withBands(std::vector<size_t> const& bands) {
        Options options = lossless();
        options.selection.bands = bands;
        return options;
    }
    static Options withRange(double low, double high) {
        Options options = lossless();
        options.selection.range = SampleRange{low, high};
        return options;
    }
    static Options withAutomaticRange() {
        Options options = lossless();
        options.selection.automaticRange = true;
        return options;
    }
    static Options toSrgb() {
        Options options = lossless();
        options.selection.toSrgb = true;
        return options;
    }
    /// For display: colours are converted.
    static Options shown() {
        Options options = lossless();
        options.lossless = false;
        return options;
    }

    static Samples samplesOf(PixelSource& source, Region const& region) {
        std::vector<std::uint8_t> pixels;
        source.read(region, pixels);
        Samples samples{region.width, region.height, source.bands(), {}};
        for (size_t i = 0; i < pixels.size(); i += source.sampleBytes()) {
            std::uint16_t wide = pixels[i];
            if (source.sampleBytes() == 2) std::memcpy(&wide, &pixels[i], sizeof(wide));
            samples.values.push_back(wide);
        }
        return samples;
    }

    static Samples readAll(std::string const& path, Options const& options = lossless()) {
        ImageReader reader(path, options);
        return samplesOf(reader, {0, 0, reader.width(), reader.height()});
    }

    static std::vector<double> valuesOf(std::string const& path, Options const& options = lossless()) {
        return readAll(path, options).values;
    }

    /// The error of opening and reading the whole file.
    static HostError failure(std::string const& path, Options const& options = lossless()) {
        try {
            readAll(path, options);
        } catch (HostError const& error) {
            return error;
        }
        throw std::logic_error(path + " was read without an error");
    }

    static std::string refusal(std::string const& path, Options const& options = lossless()) {
        HostError const error = failure(path, options);
        EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage) << error.what();
        return error.what();
    }

    static std::string misuse(std::string const& path, Options const& options) {
        HostError const error = failure(path, options);
        EXPECT_EQ(error.kind(), HostError::Kind::Usage) << error.what();
        return error.what();
    }

    /// What the file says of its picture's making, a line each.
    static std::vector<std::string> propertiesOf(std::string const& path) {
        auto const source = openSamples(std::make_shared<InputFile>(path), {});
        std::vector<std::string> lines;
        for (ImageProperty const& one : source->facts().properties)
            lines.push_back(one.name + ": " + one.value);
        return lines;
    }

    static bool has(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

    /// Equal to the independent reader's result.
    static void expectOwnSamples(std::string const& path, Options const& options = lossless(), size_t page = 1) {
        EXPECT_EQ(filesamples::difference(readAll(path, options), filesamples::read(path, page)), "") << path;
    }

    TemporaryFolder folder_;
};
