#pragma once

/// Whether the tests are built as in the preset release. Those with sanitizers take several times as long.
#ifdef NDEBUG
constexpr bool kOptimisedBuild = true;
#else
constexpr bool kOptimisedBuild = false;
#endif
