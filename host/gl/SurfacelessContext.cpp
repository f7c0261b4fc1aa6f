#include "host/gl/SurfacelessContext.h"

#include "host/HostError.h"

#include <stdexcept>

SurfacelessContext::SurfacelessContext() try {
} catch (std::runtime_error const& error) {
    throw HostError(HostError::Kind::NoGlContext,
                    std::string("no OpenGL ES 3 context: ") + error.what() +
                        "; install a GL driver, for example Debian's libegl1 and libgl1-mesa-dri");
}

SurfacelessContext::~SurfacelessContext() = default;

size_t SurfacelessContext::width() const {
    return egl_.width();
}

size_t SurfacelessContext::height() const {
    return egl_.height();
}
