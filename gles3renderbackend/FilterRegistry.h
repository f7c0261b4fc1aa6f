#pragma once

#include "gles3renderbackend/Gles3RenderBackend.h"

/// Registers every filter class of this library under its names.
void registerBuiltInFilters(Gles3RenderBackend::FilterRegistry& registry);
