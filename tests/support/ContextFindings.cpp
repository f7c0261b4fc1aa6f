#include "tests/support/ContextFindings.h"

#include "tests/support/EnabledVertexArrays.h"
#include "tests/support/GlErrors.h"

#include <EGL/egl.h>

#include <utility>

namespace {

std::vector<std::string>& noted() {
    static std::vector<std::string> all;
    return all;
}

} // namespace

void context_findings::look() {
    if (eglGetCurrentContext() == EGL_NO_CONTEXT) return;
    for (auto const& findings : {enabled_vertex_arrays::findings(), gl_errors::findings()})
        noted().insert(noted().end(), findings.begin(), findings.end());
}

std::vector<std::string> context_findings::take() {
    look();
    return std::exchange(noted(), {});
}
