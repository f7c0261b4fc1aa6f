#pragma once

#include "host/image/ImageSelection.h"
#include "host/image/SampleSource.h"

#include <functional>
#include <optional>
#include <string>

/// Refuses files that cannot be taken whole, and says which options take a part.
namespace imagerefusal {

/// Throws HostError (usage) if the file lacks what is selected, or if the selections exclude one another.
void requireSelectable(std::string const& path, ImageFacts const& facts, ImageSelection const& selection);

/// The range of the selected samples, "from 3 to 5", or a text about samples without a range.
using SamplesText = std::function<std::string()>;

/// Throws HostError (unreadable image) if something would be lost that no option gave up. `samples` is called only if
/// its text is needed.
void requireNothingLost(std::string const& path, ImageFacts const& facts, ImageSelection const& selection,
                        SamplesText const& samples);

/// The same for a picture whose samples are only shown: they may be of any type, bands of any meaning, and pages
/// planes of a stack, but colours not of another colour space.
void requireShowable(std::string const& path, ImageFacts const& facts, ImageSelection const& selection);

/// Throws HostError (unreadable image) if reading the file would exceed the memory budget of a picture.
void requireMemory(std::string const& path, ImageFacts const& facts);

} // namespace imagerefusal
