#pragma once

#include <cstddef>

/// The GL state that operations expect of their host, looked at when they are entered: builds with VELMORA_CHECKED end
/// the program where it is another, as for any precondition; in other builds nothing is looked at and no GL call is
/// made. docs/GL_STATE.md says what is expected, set and left per operation. GL thread only.
namespace expectedState {

#ifdef VELMORA_CHECKED

/// Where triangles are drawn: nothing between a fragment and its texel, whole texture units, no array but ours.
/// units: texture units that are sampled, from 0 on.
void forDrawing(size_t units);
/// Where a mask is drawn. What blends, limits or hides it is the host's to set.
void forMasking();
/// Where a target is cleared as a whole, or in a rectangle, for which the scissor is set anyway.
void forClearing();
void forClearingRectangle();
/// Where pixels go into host memory.
void forReading();
/// Where pixels come from host memory, or an image is allocated without them.
void forUploading();
/// Where pixels come from the upload ring.
void forStaging();

/// Whether state is being looked at on this thread. The tests' stand-in for GL does not record those calls.
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
