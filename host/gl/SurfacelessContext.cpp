#include "host/gl/SurfacelessContext.h"

#include "host/Failures.h"

#include <stdexcept>

SurfacelessContext::SurfacelessContext() try {
} catch (std::runtime_error const& error) {
    throw failures::noGlContext(error.what());
}

SurfacelessContext::~SurfacelessContext() = default;

size_t SurfacelessContext::width() const {
    return egl_.width();
}

size_t SurfacelessContext::height() const {
    return egl_.height();
}
