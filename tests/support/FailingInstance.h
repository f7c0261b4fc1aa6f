#pragma once

#include "tests/support/FailingAllocations.h"
#include "tests/support/ForwardingInstance.h"

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <utility>

/// The exception of a FailingInstance.
struct StandInFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// An instance that forwards every operation to another one, counts them, and fails one of them on demand: any
/// operation of the backend may fail, if only for want of memory. Allocations fail on demand (FailingAllocations.h)
/// outside the operations only.
class FailingInstance final : public ForwardingInstance<FailingInstance> {
public:
    enum class When {
        Before, ///< nothing of the operation is done
        Midway, ///< a tile to be stored exists, without its pixels; of other operations nothing is done
        After   ///< the whole operation is done
    };

    FailingInstance(std::shared_ptr<RenderBackendInstance> instance, RenderContext const& context)
        : ForwardingInstance(std::move(instance), context) {}

    /// The n-th operation from now on throws StandInFailure; 0: none does.
    void failAt(size_t n, When when = When::Before) {
        calls_ = 0;
        failing_ = n;
        when_ = when;
    }
    /// Number of operations since failAt().
    size_t calls() const { return calls_; }

    void setTile(size_t tile, Bytes const& pixels, Sizes const& size, size_t offset) override {
        if (when_ == When::Midway && calls_ + 1 == failing_) forwarded().setTile(tile, {}, size, 0);
        ForwardingInstance::setTile(tile, pixels, size, offset);
    }

private:
    friend ForwardingInstance<FailingInstance>;

    template <class Operation>
    auto call(char const* /*member*/, Operation const& operation) const -> decltype(operation()) {
        failing_allocations::Pause const pause; // GL drivers crash when allocations fail
        bool const fails = ++calls_ == failing_;
        if (fails && when_ != When::After) throw StandInFailure("this operation was to fail");
        if constexpr (std::is_void_v<decltype(operation())>) {
            operation();
            if (fails) throw StandInFailure("this operation was to fail when done");
        } else {
            auto result = operation();
            if (fails) throw StandInFailure("this operation was to fail when done");
            return result;
        }
    }

    size_t mutable calls_ = 0;
    size_t failing_ = 0;
    When when_ = When::Before;
};
