#include "tests/gles3renderbackend/faults/WatchedInstance.h"

#include "renderbackend/VelmoraException.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <new>
#include <string_view>
#include <typeinfo>
#include <utility>

namespace {

std::string contentsOf(char const* path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string nameIn(std::string const& text) {
    size_t const start = text.find(':') + 1;
    return text.substr(start, text.find('#', start) - start);
}

bool isErasing(std::string_view member) {
    std::string_view const erase = "Instance::erase";
    std::string_view const clear = "Instance::clearT";
    return member.substr(0, erase.size()) == erase || member.substr(0, clear.size()) == clear;
}

} // namespace

namespace faults {

Judge& Judge::instance() {
    static Judge judge;
    return judge;
}

Judge::Judge() : documented_(contentsOf(VELMORA_ERRORS_MD)) {}

bool Judge::isDocumented(std::string const& text) const {
    return documented_.find('`' + nameIn(text) + '`') != std::string::npos;
}

// Takes memory the first time only: a scenario is played before memory runs out.
void Judge::use(char const* member) {
    static std::set<void const*> known;
    if (known.count(member) != 0) return;
    known.insert(member);
    used_.insert(member);
}

void Judge::interrupt(size_t n, std::function<void()> event) {
    operations_ = 0;
    eventful_ = n;
    event_ = std::move(event);
}

void Judge::step(char const* member) {
    if (isErasing(member)) return; // destructors erase, and cannot throw
    if (operations_++ == eventful_ && event_) std::exchange(event_, {})();
}

void Judge::judge(char const* member) const {
    std::string const operation(member);
    bool const erases = isErasing(member);
    try {
        throw;
    } catch (VelmoraException const& failure) {
        EXPECT_FALSE(erases) << operation << " throws " << failure.what();
        EXPECT_TRUE(isDocumented(failure.what()))
            << operation << " throws what docs/ERRORS.md does not have: " << failure.what();
    } catch (std::bad_alloc const&) {
        EXPECT_TRUE(memoryRunsOut_ && !erases) << operation << " throws std::bad_alloc";
    } catch (std::exception const& failure) {
        EXPECT_EQ(operation, "Instance::createTarget(") << " throws " << typeid(failure).name() << failure.what();
        std::string const text = failure.what();
        EXPECT_TRUE(text.rfind("#Name:", 0) == 0 ? isDocumented(text) : memoryRunsOut_) << text;
    } catch (...) {
        ADD_FAILURE() << operation << " throws what is no std::exception";
    }
}

} // namespace faults
