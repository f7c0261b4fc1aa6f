#pragma once

#include "host/filter/Enhancement.h"

#include <algorithm>
#include <optional>
#include <variant>
#include <vector>

/// Enhancements that are switched on and off kind by kind, in a fixed order: those given at first, then those added.
class StepSwitches {
public:
    /// All of them on.
    explicit StepSwitches(std::vector<enhancement::Step> const& steps) {
        for (enhancement::Step const& step : steps)
            entries_.push_back({step, true});
    }

    /// Whether a step of the kind is on.
    template <class Kind>
    bool on() const {
        return std::any_of(entries_.begin(), entries_.end(),
                           [](Entry const& entry) { return entry.on && is<Kind>(entry); });
    }

    /// Switches all of the kind off where one is on, else on; where there is none yet, `added` is one.
    template <class Kind>
    void toggle(Kind const& added) {
        bool const after = !on<Kind>();
        bool any = false;
        for (Entry& entry : entries_) {
            if (!is<Kind>(entry)) continue;
            entry.on = after;
            any = true;
        }
        if (!any) entries_.push_back({added, true});
    }

    /// Replaces the last of the kind, on or off, or adds one; it is on then.
    template <class Kind>
    void set(Kind const& step) {
        auto const last = std::find_if(entries_.rbegin(), entries_.rend(), is<Kind>);
        if (last == entries_.rend())
            entries_.push_back({step, true});
        else
            *last = {step, true};
    }

    /// The last of the kind, on or off.
    template <class Kind>
    std::optional<Kind> last() const {
        auto const found = std::find_if(entries_.rbegin(), entries_.rend(), is<Kind>);
        if (found == entries_.rend()) return std::nullopt;
        return std::get<Kind>(found->step);
    }

    /// Those that are on, in order.
    std::vector<enhancement::Step> steps() const {
        std::vector<enhancement::Step> steps;
        for (Entry const& entry : entries_)
            if (entry.on) steps.push_back(entry.step);
        return steps;
    }

private:
    struct Entry {
        enhancement::Step step;
        bool on = true;
    };

    template <class Kind>
    static bool is(Entry const& entry) {
        return std::holds_alternative<Kind>(entry.step);
    }

    std::vector<Entry> entries_;
};
