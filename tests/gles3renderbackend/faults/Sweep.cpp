#include "tests/gles3renderbackend/faults/Sweep.h"

#include "gles3renderbackend/Gl.h"
#include "renderbackend/VelmoraException.h"
#include "tests/support/GlFaultPlan.h"
#include "tests/support/LongRun.h"
#include "tests/support/Watchdog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <optional>
#include <set>

namespace faults {

namespace {

constexpr size_t kRare = 1;
constexpr size_t kTablesKept = 10; // by a filter
constexpr char const* kOtherBytes = "other bytes than before the fault";
constexpr std::chrono::seconds kLongestScenario{60};
constexpr size_t kMostCallsAfterLoss = 10000; // the longest scenario makes a tenth of them

// After these the documents send the host to createInstance.
bool wantsInstanceAnew(std::string const& text) {
    return text.rfind("#Name:could not map PBO range#", 0) == 0 ||
           text.rfind("#Name:could not unmap PBO range#", 0) == 0;
}

// These say so where they fail, and no operation goes on without what they were to give.
bool mustComeOut(std::string const& function) {
    static std::set<std::string> const functions{
        "glGenTextures",   "glGenBuffers",     "glGenFramebuffers", "glCreateShader",
        "glCreateProgram", "glMapBufferRange", "glUnmapBuffer",     "glCheckFramebufferStatus",
        "glGetShaderiv",   "glCompileShader",  "glLinkProgram"};
    return functions.count(function) != 0;
}

GLint integer(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

// docs/GL_STATE.md: what later operations of the backend expect, it leaves so itself.
void expectStateLeft() {
    EXPECT_EQ(integer(GL_PIXEL_UNPACK_BUFFER_BINDING), 0);
    EXPECT_EQ(integer(GL_UNPACK_ROW_LENGTH), 0);
    EXPECT_EQ(glIsEnabled(GL_SCISSOR_TEST), GL_FALSE);
    EXPECT_EQ(glIsEnabled(GL_BLEND), GL_FALSE);
    for (GLuint index = 0; index < 8; ++index) {
        GLint enabled = 0;
        glGetVertexAttribiv(index, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
        EXPECT_EQ(enabled, 0) << "vertex attribute array " << index;
    }
}

class Sweep {
public:
    Sweep(Scenario const& scenario, Surroundings const& surroundings)
        : scenario_(scenario), surroundings_(surroundings), expected_(scenario.play(stage_)) {
        settle();
        EXPECT_TRUE(scenario_.play(stage_) == expected_) << "the same every time, without a fault";
        sources_ = stage_.sourcePixels();
        surface_ = stage_.surfacePixels();
        envelopes_ = stage_.storedEnvelopes();
        living_ = surroundings_.living();
    }
    Sweep(Sweep const&) = delete;
    Sweep& operator=(Sweep const&) = delete;

    Stage& stage() { return stage_; }
    Tally& tally() { return tally_; }

    // Whether a failure came out.
    bool attempt() {
        ++tally_.faults;
        stage_.nextKey();
        try {
            scenario_.play(stage_);
        } catch (std::exception const&) { // the Judge has looked at it
            ++tally_.thrown;
            return true;
        }
        return false;
    }

    // mayBeSpoilt: GL failed in silence, and told the host.
    void expectUnharmed(bool mayBeSpoilt = false) {
        expectStateLeft();
        surroundings_.tidyUp();
        EXPECT_EQ(stage_.storedEnvelopes(), envelopes_) << "a stored set stays";
        // The one scenario that draws there draws all of it.
        bool const drawsThere = scenario_.name == "Surface";
        EXPECT_TRUE(drawsThere || stage_.surfacePixels() == surface_) << "on the host's surface";
        ++tally_.repeated;
        if (auto const failure = playedAgain()) {
            ASSERT_TRUE(*failure == kOtherBytes ? mayBeSpoilt : wantsInstanceAnew(*failure)) << *failure;
            ++tally_.cured;
            stage_.clear();
            EXPECT_EQ(surroundings_.living(), Living()) << "after the instance";
            stage_.anew();
            auto const another = playedAgain();
            ASSERT_FALSE(another) << *another;
            settle();
        }
        EXPECT_TRUE(stage_.sourcePixels() == sources_) << "of targets that the scenario does not write to";
        EXPECT_EQ(surroundings_.living(), living_);
    }

    void end() {
        surroundings_.tidyUp();
        stage_.clear();
        EXPECT_EQ(surroundings_.living(), Living()) << "after the instance";
    }

private:
    // Until filters have all the tables that they keep, and each new one takes the place of another.
    void settle() {
        for (size_t i = 0; scenario_.keepsFilter && i < kTablesKept; ++i) {
            stage_.nextKey();
            scenario_.play(stage_);
        }
    }

    // What is wrong: the text of what it throws, or kOtherBytes.
    std::optional<std::string> playedAgain() {
        try {
            if (scenario_.play(stage_) != expected_) return kOtherBytes;
        } catch (std::exception const& failure) {
            return failure.what();
        }
        return std::nullopt;
    }

    Scenario const& scenario_;
    Surroundings const& surroundings_;
    Stage stage_;
    Bytes expected_;
    Bytes sources_;
    Bytes surface_;
    size_t envelopes_ = 0;
    Living living_;
    Tally tally_;
};

// The calls that are to fail.
std::vector<size_t> chosen(std::vector<std::string> const& calls, size_t step) {
    std::map<std::string, size_t> count;
    for (auto const& function : calls)
        ++count[function];
    std::vector<size_t> result;
    for (size_t n = 0; n < calls.size(); ++n)
        if (isExhaustiveRun() || n % step == 0 || count[calls[n]] <= kRare) result.push_back(n);
    return result;
}

} // namespace

Tally& Tally::operator+=(Tally const& other) {
    calls += other.calls;
    faults += other.faults;
    thrown += other.thrown;
    repeated += other.repeated;
    cured += other.cured;
    return *this;
}

void Tally::report(std::string const& heading) const {
    std::cout << heading << ": " << calls << " calls, " << faults << " faults, " << thrown << " came out, " << repeated
              << " repetitions, " << cured << " on an instance made anew\n";
    ::testing::Test::RecordProperty("calls", std::to_string(calls));
    ::testing::Test::RecordProperty("faults", std::to_string(faults));
    ::testing::Test::RecordProperty("repetitions", std::to_string(repeated));
}

Tally sweepGl(Scenario const& scenario, Surroundings const& surroundings, size_t step) {
    auto& plan = GlFaultPlan::instance();
    Sweep sweep(scenario, surroundings);
    plan.count();
    scenario.play(sweep.stage());
    plan.stop();
    auto const calls = plan.calls();
    sweep.tally().calls = calls.size();
    for (size_t const n : chosen(calls, step)) {
        for (GlFault const fault : GlFaultPlan::waysOf(calls[n])) {
            for (bool const forEver : {false, true}) {
                std::string const what = scenario.name + ", call " + std::to_string(n) + ", " + calls[n] +
                                         (fault == GlFault::Refused ? ", refused" : ", out of memory") +
                                         (forEver ? " for ever" : "");
                SCOPED_TRACE(what);
                backendtest::Watchdog const watchdog(what, kLongestScenario);
                plan.play(n, fault, forEver);
                bool const thrown = sweep.attempt();
                plan.stop();
                EXPECT_TRUE(thrown || !mustComeOut(calls[n])) << "nothing was thrown";
                EXPECT_GE(plan.failures(), 1U) << "the fault was not played";
                bool const isSilent = !thrown && fault == GlFault::OutOfMemory;
                EXPECT_TRUE(!isSilent || glGetError() == GL_OUT_OF_MEMORY) << "the host is not told";
                sweep.expectUnharmed(isSilent && scenario.keepsFilter);
                if (::testing::Test::HasFatalFailure()) return sweep.tally();
            }
        }
    }
    sweep.end();
    return sweep.tally();
}

namespace {

// All of them, or without VELMORA_LONG so many, equally far from one another.
std::vector<size_t> places(size_t count, size_t sample) {
    std::vector<size_t> result;
    size_t const wanted = isLongRun() ? count : std::min(count, sample);
    for (size_t i = 0; i < wanted; ++i)
        result.push_back((2 * i + 1) * count / (2 * wanted));
    return result;
}

// What a scenario reads on a backend of its own, and the calls of GL and operations on its way.
struct Undisturbed {
    explicit Undisturbed(Scenario const& scenario) {
        Stage stage;
        GlFaultPlan::instance().count();
        Judge::instance().interrupt(0, {});
        bytes = scenario.play(stage);
        GlFaultPlan::instance().stop();
        calls = GlFaultPlan::instance().calls();
        operations = Judge::instance().operations();
    }

    Bytes bytes;
    std::vector<std::string> calls;
    size_t operations = 0;
};

// After instance and backend are destroyed.
void expectNewStart(Scenario const& scenario, Surroundings const& surroundings, Bytes const& expected, Tally& tally) {
    EXPECT_EQ(surroundings.living(), Living()) << "after instance and backend";
    surroundings.newContext();
    ++tally.repeated;
    {
        Stage stage;
        EXPECT_TRUE(scenario.play(stage) == expected) << "in a new context";
        surroundings.tidyUp();
    }
    surroundings.newContext();
}

// The host's answer to a context that is gone.
struct GiveUp {};

} // namespace

Tally sweepLostContexts(Scenario const& scenario, Surroundings const& surroundings, size_t sample) {
    auto& plan = GlFaultPlan::instance();
    Undisturbed const undisturbed(scenario);
    surroundings.newContext();
    Tally tally;
    tally.calls = undisturbed.calls.size();
    for (size_t const n : places(undisturbed.calls.size(), sample)) {
        std::string const what =
            scenario.name + ", the context lost with call " + std::to_string(n) + ", " + undisturbed.calls[n];
        SCOPED_TRACE(what);
        backendtest::Watchdog const watchdog(what, kLongestScenario);
        ++tally.faults;
        {
            Stage stage;
            plan.play(n, GlFault::ContextLost, true);
            try {
                scenario.play(stage);
            } catch (std::exception const&) { // the Judge has looked at it
                ++tally.thrown;
            }
            EXPECT_TRUE(plan.isContextLost()) << "the fault was not played";
            EXPECT_LT(plan.failures(), kMostCallsAfterLoss) << "as if it waited for an answer";
        }
        plan.stop();
        expectNewStart(scenario, surroundings, undisturbed.bytes, tally);
        if (::testing::Test::HasFailure()) break;
    }
    return tally;
}

Tally sweepEndedContexts(Scenario const& scenario, Surroundings const& surroundings, std::function<void()> const& end,
                         bool goesOn, size_t sample) {
    auto& judge = Judge::instance();
    Undisturbed const undisturbed(scenario);
    surroundings.newContext();
    Tally tally;
    tally.calls = undisturbed.operations;
    for (size_t const n : places(undisturbed.operations, sample)) {
        std::string const what = scenario.name + ", the context ended before operation " + std::to_string(n);
        SCOPED_TRACE(what);
        backendtest::Watchdog const watchdog(what, kLongestScenario);
        bool ended = false;
        ++tally.faults;
        {
            Stage stage;
            judge.interrupt(n, [&] {
                end();
                ended = true;
                if (!goesOn) throw GiveUp();
            });
            try {
                scenario.play(stage);
            } catch (GiveUp const&) {         // NOLINT(bugprone-empty-catch): all that it had is destroyed by now
            } catch (std::exception const&) { // the Judge has looked at it
                ++tally.thrown;
            }
            judge.interrupt(0, {});
        }
        EXPECT_TRUE(ended);
        expectNewStart(scenario, surroundings, undisturbed.bytes, tally);
        if (::testing::Test::HasFailure()) break;
    }
    return tally;
}

Tally sweepAllocations(Scenario const& scenario, Surroundings const& surroundings, Allocations const& allocations,
                       size_t step) {
    Sweep sweep(scenario, surroundings);
    Judge::instance().letMemoryRunOut(true);
    size_t n = 0;
    for (;; n += isExhaustiveRun() ? 1 : step) {
        std::string const what = scenario.name + ", allocation " + std::to_string(n);
        SCOPED_TRACE(what);
        backendtest::Watchdog const watchdog(what, kLongestScenario);
        allocations.failAfter(n);
        bool const failed = sweep.attempt();
        if (allocations.stop()) {
            EXPECT_FALSE(failed) << "without a failing allocation";
            --sweep.tally().faults;
            break;
        }
        sweep.expectUnharmed();
        if (::testing::Test::HasFatalFailure()) return sweep.tally();
    }
    Judge::instance().letMemoryRunOut(false);
    sweep.tally().calls = n;
    sweep.end();
    return sweep.tally();
}

} // namespace faults
