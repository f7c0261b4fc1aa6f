#pragma once

#include "tests/support/RecordingGl.h"

#include <string>
#include <type_traits>

/// Arguments of GL calls as readable texts. The table of names depends on the parameter: 0 is GL_POINTS, GL_NONE,
/// GL_ZERO, GL_FALSE or just 0.
namespace recording {

struct Enum {
    GLenum value;
};
struct Mode {
    GLenum value; // of a draw
};
struct Boolean {
    GLboolean value;
};
struct ClearMask {
    GLbitfield value;
};
struct MapAccess {
    GLbitfield value;
};
/// The names that a call deletes: 1, or {1, 2}.
struct NameList {
    GLsizei count;
    GLuint const* names;
};
/// Client memory, or a byte offset if a buffer is bound.
struct Pointer {
    void const* value = nullptr;
    bool offset = false;
};

std::string enumName(GLenum value);

RecordingGl::Argument argument(Enum value);
RecordingGl::Argument argument(Mode value);
RecordingGl::Argument argument(Boolean value);
RecordingGl::Argument argument(ClearMask value);
RecordingGl::Argument argument(MapAccess value);
RecordingGl::Argument argument(NameList value);
RecordingGl::Argument argument(Pointer value);
RecordingGl::Argument argument(float value);
RecordingGl::Argument argument(char const* value);

template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
RecordingGl::Argument argument(Integer value) {
    return {std::to_string(value), static_cast<double>(value)};
}

} // namespace recording
