#pragma once

#include <array>
#include <string>

/// libvips, restricted to the loaders that files may reach.
namespace vipslibrary {

/// A loader of libvips that may read files. Others are blocked: some do not read pictures, and the unsupported ones
/// accept any file that no other loader knows.
struct Loader {
    char const* nickname;  ///< "pngload"
    char const* className; ///< "VipsForeignLoadPng"
    char const* format;    ///< human-readable: "PNG"
    char const* pageNoun;  ///< the format's word for pictures in one file
    bool paged;            ///< whether it takes a page number
    bool readsAnywhere;    ///< whether regions may be read in any order; for TIFF it depends on the file
};

/// In the order in which files are tried: formats with a signature first.
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

/// Starts libvips, once: with these loaders only, and without output of its own on stderr.
void start();

} // namespace vipslibrary
