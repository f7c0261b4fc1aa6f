#pragma once

#include <cstddef>

/// A GL library that draws nothing, allocates nothing and never fails, for programs that link NullGl.cpp.
namespace null_gl {

/// Number of objects that were made and not deleted.
size_t livingObjects();

} // namespace null_gl
