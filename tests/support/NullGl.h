#pragma once

#include <cstddef>

/// A GL library that draws nothing, allocates nothing and never fails, for programs that link NullGl.cpp.
namespace null_gl {

/// Objects that were made and are not deleted.
size_t livingObjects();

} // namespace null_gl
