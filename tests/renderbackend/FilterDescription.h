#pragma once

#include "renderbackend/Filter.h"

#include <cstddef>
#include <string>
#include <vector>

/// The arguments of the long constructor by name; by default the identity on 8-bit RGBA pixels.
struct FilterDescription {
    std::string name = "test";
    size_t invalidLeft = 0;
    size_t invalidRight = 0;
    size_t invalidTop = 0;
    size_t invalidBottom = 0;
    size_t inputPosX0 = 0;
    size_t inputPosXStride = 1;
    size_t inputPosY0 = 0;
    size_t inputPosYStride = 1;
    size_t scaleXNum = 1;
    size_t scaleXDen = 1;
    size_t scaleYNum = 1;
    size_t scaleYDen = 1;
    size_t numTexturesIn = 1;
    size_t bitsPerPixelIn = 32;
    size_t bitsPerPixelOut = 32;
    size_t componentsIn = 4;
    size_t componentsOut = 4;
    size_t alignXIn = 1;
    size_t alignXOut = 1;
    size_t alignYIn = 1;
    size_t alignYOut = 1;
    std::vector<bool> signedIn = {false};
    bool signedOut = false;
    size_t bitDepthIn = 8;
    RenderBackend::ImageFiltering filtering = RenderBackend::NEAREST;

    Filter filter() const {
        return Filter(name, invalidLeft, invalidRight, invalidTop, invalidBottom, inputPosX0, inputPosXStride,
                      inputPosY0, inputPosYStride, scaleXNum, scaleXDen, scaleYNum, scaleYDen, numTexturesIn,
                      bitsPerPixelIn, bitsPerPixelOut, componentsIn, componentsOut, alignXIn, alignXOut, alignYIn,
                      alignYOut, signedIn, signedOut, bitDepthIn, filtering);
    }
};
