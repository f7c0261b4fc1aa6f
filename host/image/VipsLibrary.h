#pragma once

#include <array>
#include <string>

/// libvips, as far as this program lets files reach it.
namespace vipslibrary {

/// A loader of libvips that may read files. Others are blocked: some are there for other uses than pictures, and those
/// for which nobody vouches take any file that nothing else knows.
struct Loader {
    char const* nickname;  ///< "pngload"
    char const* className; ///< "VipsForeignLoadPng"
    char const* format;    ///< for a person: "PNG"
    char const* pageNoun;  ///< what pictures in one file are called
    bool paged;            ///< whether it takes a page's number
    bool readsAnywhere;    ///< whether regions may be read in any order; of TIFF the file decides
};

/// In the order in which files are tried: formats that are told by their first bytes first.
constexpr std::array<Loader, 10> kLoaders{{
    {"pngload", "VipsForeignLoadPng", "PNG", "frames", false, false},
    {"webpload", "VipsForeignLoadWebp", "WebP", "frames", true, false},
    {"openslideload", "VipsForeignLoadOpenslide", "slide", "pictures", false, true},
    {"jpegload", "VipsForeignLoadJpeg", "JPEG", "pictures", false, false},
    {"tiffload", "VipsForeignLoadTiff", "TIFF", "pages", true, false},
    {"gifload", "VipsForeignLoadNsgif", "GIF", "frames", true, false},
    {"jp2kload", "VipsForeignLoadJp2k", "JPEG 2000", "pictures", false, true},
    {"heifload", "VipsForeignLoadHeif", "HEIF", "pictures", true, false},
    {"pdfload", "VipsForeignLoadPdf", "PDF", "pages", true, true},
    {"radload", "VipsForeignLoadRad", "Radiance", "pictures", false, false},
}};

/// Starts it, once: with these loaders and no other, and without lines of its own on stderr.
void start();

} // namespace vipslibrary
