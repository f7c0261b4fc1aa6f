#include "host/Failures.h"

#include <cerrno>
#include <system_error>

namespace {

constexpr auto kInstallADriver = "; install a GL driver, for example Debian's libegl1 and libgl1-mesa-dri";

} // namespace

std::string failures::reasonOf(int error) {
    return error == ENOENT ? "no such file" : std::generic_category().message(error);
}

HostError failures::cannotOpen(std::string const& path, std::string const& reason) {
    return {HostError::Kind::MissingFile, "cannot open '" + path + "': " + reason + "; check the path"};
}

HostError failures::noGlContext(std::string const& reason) {
    return {HostError::Kind::NoGlContext, "no OpenGL ES 3 context: " + reason + kInstallADriver};
}

HostError failures::noGlContextForWindow(std::string const& reason) {
    return {HostError::Kind::NoGlContext, "no OpenGL ES 3 context for a window: " + reason + kInstallADriver};
}
