#pragma once

#include "host/image/PixelSource.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/reading/FileSamples.h"

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

/// Pictures of many file formats: photographs, tissue, satellite scenes and astronomical frames that
/// scripts/fetch-format-pictures collects, and files that libvips makes of some of them.
namespace formatpictures {

/// What has to be chosen of a file that holds more than a picture of 8 or 16 bits.
struct Choice {
    size_t page = 0;            ///< 0: there is one
    char const* bands = "";     ///< as --bands takes them
    char const* range = "";     ///< as --range takes it
    char const* converted = ""; ///< why nothing but the product tells what becomes of the colours; empty: they stay
};

struct Format {
    char const* name;   ///< for the test's name
    char const* file;   ///< as collected; of a converted one what it is made of
    char const* ending; ///< of the converted file, with libvips' options: ".tif[tile]"; empty: as collected
    size_t bands;       ///< that a person who knows the file expects
    size_t bits;
    Choice choice = {};
};

std::vector<Format> const& all();

void PrintTo(Format const& format, std::ostream* out);

/// Where the pictures are, or what keeps the test from running: "FILE is missing: SCRIPT fetches it".
struct Located {
    std::string path;
    std::string missing;
};

/// The file of a format; a converted one is made in `folder`.
Located locate(Format const& format, std::string const& folder);

/// Whether a missing picture is to fail a test: VELMORA_REQUIRE_PHOTOGRAPHS in the environment.
bool areRequired();

/// Every sample of a file, of 16 bits where it has 16, or of what is chosen of it.
std::unique_ptr<PixelSource> open(std::string const& path, Choice const& choice = {});
/// The same as 8 bits.
std::unique_ptr<PixelSource> openAsShown(std::string const& path, Choice const& choice);
/// The middle of it, at most `side` pixels wide and high.
testpictures::Picture middleOf(std::string const& path, size_t side, Choice const& choice = {});

/// The same from the file's own samples, read without the product.
filesamples::Samples expected(std::string const& path, Choice const& choice);

} // namespace formatpictures
