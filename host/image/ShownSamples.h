#pragma once

#include "host/image/SampleSource.h"
#include "host/image/SrgbConversion.h"

#include <memory>

/// A source with its colours converted, where there is a conversion.
std::unique_ptr<SampleSource> convertedSamples(std::unique_ptr<SampleSource> source,
                                               SrgbConversion::Choice const& choice);

/// A source turned upright, as its orientation tag says. What cannot be read in any order is held as a whole, where
/// rows of the file are not rows of the picture from the top: facts().heldBytes says so.
std::unique_ptr<SampleSource> uprightSamples(std::unique_ptr<SampleSource> source);

/// Facts of a picture that is turned upright.
ImageFacts uprightFacts(ImageFacts facts);

/// Facts of a picture whose colours have been converted.
ImageFacts convertedFacts(ImageFacts facts, SrgbConversion::Choice const& choice);
