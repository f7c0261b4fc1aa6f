#pragma once

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "gles3renderbackend/Gles3RenderBackendInstance.h"
#include "renderbackend/Filter.h"
#include "renderbackend/RenderContext.h"
#include "renderbackend/VelmoraException.h"

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

/// Code shared by the tests of the backend and its instance, with and without a GL context.
namespace backendtest {

using Sizes = std::vector<size_t>;
using Bytes = std::vector<unsigned char>;

constexpr size_t kDefaultBudget = 256000000;

/// The host's window. Its size may change at any time.
class Surface final : public RenderContext {
public:
    Surface(size_t surfaceWidth, size_t surfaceHeight) : widthTexels(surfaceWidth), heightTexels(surfaceHeight) {}

    size_t width() const override { return widthTexels; }
    size_t height() const override { return heightTexels; }

    size_t widthTexels;
    size_t heightTexels;
};

/// The text of the VelmoraException that a call throws. An exception of another class, derived ones included, says so.
template <class Call>
std::string failureOf(Call const& call) {
    try {
        call();
    } catch (std::exception const& failure) {
        bool const exact = typeid(failure) == typeid(VelmoraException);
        return (exact ? "" : std::string(typeid(failure).name()) + ": ") + failure.what();
    }
    return "nothing was thrown";
}

/// A filter that copies one input, without borders or scale.
inline Filter namedFilter(std::string const& name) {
    return {name, 0, 0, 0, 0, 0, 1, 0, 1, 1, 1, 1, 1, 1, RenderBackend::NEAREST};
}

/// Reads the id, which only the instance's own classes see.
class InstanceId : public RenderBackendInstance {
public:
    static size_t of(RenderBackendInstance const& instance) { return (instance.*&InstanceId::id)(); }
};

inline Gles3RenderBackendInstance& gles3(std::shared_ptr<RenderBackendInstance> const& instance) {
    return dynamic_cast<Gles3RenderBackendInstance&>(*instance);
}

} // namespace backendtest
