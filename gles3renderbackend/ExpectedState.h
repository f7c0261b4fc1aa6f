#pragma once

#include <cstddef>

/// The GL state that operations expect of their host, checked when they are entered: builds with VELMORA_CHECKED end
/// the program if it differs, as for any precondition; other builds check nothing and make no GL call. docs/GL_STATE.md
/// says what is expected, set and left per operation. GL thread only.
namespace expectedState {

#ifdef VELMORA_CHECKED

/// For drawing triangles: nothing between a fragment and its texel, whole texture units, no array but ours. units:
/// texture units that are sampled, from 0 on.
void forDrawing(size_t units);
/// For drawing a mask. Blending, scissor and depth are the host's to set.
void forMasking();
/// For clearing a whole target, or a rectangle, for which the operation sets the scissor anyway.
void forClearing();
void forClearingRectangle();
/// For reading pixels into host memory.
void forReading();
/// For uploading pixels from host memory, or allocating an image without them.
void forUploading();
/// For uploading pixels from the upload ring.
void forStaging();

/// Whether state is being checked on this thread. The tests' GL recorder does not record those calls.
inline thread_local bool beingLookedAt = false;

#else

inline void forDrawing(size_t /*units*/) {}
inline void forMasking() {}
inline void forClearing() {}
inline void forClearingRectangle() {}
inline void forReading() {}
inline void forUploading() {}
inline void forStaging() {}

#endif

} // namespace expectedState
