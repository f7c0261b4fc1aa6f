#pragma once

#include <string>

/// A bar that says how long something on the screen is in the picture: 1, 2 or 5 times a power of ten.
struct ScaleBar {
    double pixels = 0; ///< of the screen; 0: there is no such bar
    std::string text;  ///< "50 µm", in UTF-8
};

/// The longest bar of at most `maxPixels` pixels of the screen. zoom: pixels of the screen per pixel of the picture.
/// micronsPerPixel: of the picture; 0: not known, the bar then counts whole pixels of the picture.
ScaleBar scaleBar(double maxPixels, double zoom, double micronsPerPixel);

/// A length as a person reads it, in nm, µm, mm or m, with so many digits at most.
std::string lengthText(double microns, int digits);
/// "512 px".
std::string pixelsText(double pixels, int digits);
