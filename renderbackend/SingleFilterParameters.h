#pragma once

#include "renderbackend/Export.h"
#include "renderbackend/VelmoraException.h"

#include <cstdint>
#include <utility>

/// The settings of one filter run. Plain data; the host fills a record and passes it to executeFilter or maskRange.
class VELMORA_EXPORT SingleFilterParameters {
public:
    SingleFilterParameters() = default;
    SingleFilterParameters(SingleFilterParameters const&) = default;
    SingleFilterParameters& operator=(SingleFilterParameters const&) = default;
    virtual ~SingleFilterParameters();

    /// This object as the record T. Throws "Filter parameters cast failed" if it is of another type.
    template <class T>
    T& as();
    template <class T>
    T const& as() const;

    /// Sharpening only: each unit halves the gain.
    std::int32_t shiftBits = 0;
};

/// A record that is identified by a key: records with equal keys must have equal settings, because a filter may derive
/// data from the first one and reuse it for the second.
template <class T>
class ComparableSingleFilterParameters : public SingleFilterParameters {
public:
    explicit ComparableSingleFilterParameters(T key = T()) : key_(std::move(key)) {}

    virtual T const& key() const { return key_; }

    bool operator<(ComparableSingleFilterParameters const& other) const { return key() < other.key(); }
    bool operator==(ComparableSingleFilterParameters const& other) const { return key() == other.key(); }

private:
    T key_;
};

template <class T>
T& SingleFilterParameters::as() {
    return const_cast<T&>(static_cast<SingleFilterParameters const&>(*this).as<T>());
}

template <class T>
T const& SingleFilterParameters::as() const {
    if (auto const* record = dynamic_cast<T const*>(this)) return *record;
    // The location has the letter T whatever the record: it names the operation, not the requested type.
    throw VelmoraException("Filter parameters cast failed", "T& SingleFilterParameters::as<T>()");
}
