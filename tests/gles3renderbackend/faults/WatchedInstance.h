#pragma once

#include "gles3renderbackend/Gles3RenderBackendInstance.h"
#include "tests/support/ForwardingInstance.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>

namespace faults {

/// What a failure of an operation may be.
class Judge {
public:
    static Judge& instance();

    /// The members that were called so far: how their names begin in the list of exported ones, behind the class.
    std::set<std::string> const& used() const { return used_; }
    void use(char const* member);

    /// While true, std::bad_alloc may come out of every operation.
    void letMemoryRunOut(bool may) { memoryRunsOut_ = may; }

    /// Something happens before the n-th operation from now on that does not erase, n from 0, and may throw. Empty:
    /// nothing does.
    void interrupt(size_t n, std::function<void()> event);
    /// The operations since then.
    size_t operations() const { return operations_; }

    /// Runs an operation. A failure that docs/ERRORS.md does not know fails the test; it comes out all the same.
    template <class Operation>
    auto watch(char const* member, Operation const& operation) -> decltype(operation()) {
        use(member);
        step(member);
        try {
            return operation();
        } catch (...) {
            judge(member);
            throw;
        }
    }

private:
    Judge();
    void step(char const* member);
    void judge(char const* member) const; // the exception in flight
    bool isDocumented(std::string const& text) const;

    std::string documented_;
    std::set<std::string> used_;
    bool memoryRunsOut_ = false;
    size_t operations_ = 0;
    size_t eventful_ = 0;
    std::function<void()> event_;
};

/// An instance of the backend that hands every operation on and lets the Judge look at what it throws.
class WatchedInstance final : public ForwardingInstance<WatchedInstance> {
public:
    WatchedInstance(std::shared_ptr<RenderBackendInstance> instance, RenderContext const& context)
        : ForwardingInstance(std::move(instance), context) {}

    /// The operations that the interface does not have.
    Gles3Target& target(size_t id) {
        return call("Instance::target(", [&]() -> Gles3Target& { return gles().target(id); });
    }
    void inputTextureRange(FilterSource const& source, Filter const& filter, size_t width, size_t height,
                           double* range) {
        call("Instance::inputTextureRange(", [&] {
            gles().inputTextureRange(source, filter, width, height, 0, 0, 0, 0, range[0], range[1], range[2], range[3]);
        });
    }

private:
    friend ForwardingInstance<WatchedInstance>;

    Gles3RenderBackendInstance& gles() const { return dynamic_cast<Gles3RenderBackendInstance&>(forwarded()); }

    template <class Operation>
    static auto call(char const* member, Operation const& operation) -> decltype(operation()) {
        return Judge::instance().watch(member, operation);
    }
    template <class Operation>
    static auto query(char const* member, Operation const& operation) -> decltype(operation()) {
        return Judge::instance().watch(member, operation);
    }
};

} // namespace faults
