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

/// The options for a file that holds more than a picture of 8 or 16 bits.
struct Choice {
    size_t page = 0;            ///< 0: it has only one
    char const* bands = "";     ///< in the form of --bands
    char const* range = "";     ///< in the form of --range
    char const* converted = ""; ///< why nothing but the product tells what becomes of the colours; empty: they stay
};

struct Format {
    char const* name;   ///< for the test's name
    char const* file;   ///< as collected; for a converted file its source
    char const* ending; ///< of the converted file, with libvips' options: ".tif[tile]"; empty: as collected
    size_t bands;       ///< as a person who knows the file expects
    size_t bits;
    Choice choice = {};
};

std::vector<Format> const& all();

void PrintTo(Format const& format, std::ostream* out);

/// The folder of the pictures, or why the test cannot run: "FILE is missing: SCRIPT fetches it".
struct Located {
    std::string path;
    std::string missing;
};

/// The file of a format; a converted one is made in `folder`.
Located locate(Format const& format, std::string const& folder);

/// Whether a missing picture fails a test: VELMORA_REQUIRE_PHOTOGRAPHS in the environment.
bool areRequired();

/// Every sample of a file, of 16 bits where it has 16, or of what is chosen of it.
std::unique_ptr<PixelSource> open(std::string const& path, Choice const& choice = {});
/// The same as 8 bits.
std::unique_ptr<PixelSource> openAsShown(std::string const& path, Choice const& choice);
/// The middle of the picture, at most `side` pixels wide and high.
testpictures::Picture middleOf(std::string const& path, size_t side, Choice const& choice = {});

/// The same from the file's own samples, read without the product.
filesamples::Samples expected(std::string const& path, Choice const& choice);

} // namespace formatpictures
