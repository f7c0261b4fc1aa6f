#pragma once

#include "host/image/ImageSelection.h"
#include "host/image/SampleSource.h"

#include <functional>
#include <optional>
#include <string>

/// Says what a file holds that cannot be taken whole, and which options take a part of it.
namespace imagerefusal {

/// Throws HostError (usage) where the file lacks what is selected, or where it does not go together.
void requireSelectable(std::string const& path, ImageFacts const& facts, ImageSelection const& selection);

/// The smallest and the largest sample of what is selected: "from 3 to 5", or what there is instead.
using SamplesText = std::function<std::string()>;

/// Throws HostError (unreadable image) where something would be lost without having been asked for. The text of the
/// samples is only made where it is needed.
void requireNothingLost(std::string const& path, ImageFacts const& facts, ImageSelection const& selection,
                        SamplesText const& samples);

/// Throws HostError (unreadable image) where reading the file takes more memory than a picture may.
void requireMemory(std::string const& path, ImageFacts const& facts);

} // namespace imagerefusal
