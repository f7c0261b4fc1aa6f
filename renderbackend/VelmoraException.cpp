#include "renderbackend/VelmoraException.h"

#include <cerrno>
#include <cstring>

namespace {

constexpr char const* kName = "#Name:";
constexpr char const* kLocation = "#Location:";
constexpr char const* kStreamName = "#StreamName:";
constexpr char const* kDescription = "#Description:";
constexpr char const* kErrno = "#Errno:";

std::string nameAndLocation(std::string const& name, std::string const& location) {
    return kName + name + kLocation + location;
}

std::string errnoField(std::int32_t errorNumber) {
    return kErrno + std::to_string(errorNumber);
}

// The next value of a tag: advances `position` past it. A value ends at the next "#" of any kind.
bool nextValue(std::string const& text, std::string const& tag, size_t& position, std::string& value) {
    size_t const found = text.find(tag, position);
    if (found == std::string::npos) return false;
    size_t const start = found + tag.size();
    size_t const end = text.find('#', start);
    value = text.substr(start, end == std::string::npos ? end : end - start);
    position = start;
    return true;
}

// Appends all values of a tag, the first after `before`, the others after `between`; returns their number.
size_t appendAll(std::string& report, std::string const& text, char const* tag, char const* before,
                 char const* between) {
    size_t count = 0;
    size_t position = 0;
    std::string value;
    while (nextValue(text, tag, position, value))
        report += (count++ == 0 ? before : between) + value;
    return count;
}

void appendFirst(std::string& report, std::string const& text, char const* tag, char const* before) {
    size_t position = 0;
    std::string value;
    if (nextValue(text, tag, position, value)) report += before + value;
}

std::string nestedMessage(std::nested_exception const& nested) {
    // A std::nested_exception that was made outside a handler is empty; rethrowing it would end the program.
    if (!nested.nested_ptr()) return {};
    try {
        nested.rethrow_nested();
    } catch (VelmoraException const& cause) {
        return collectExceptionMessage(cause);
    } catch (std::exception const& cause) {
        int const errorNumber = errno;
        std::string message = std::string("#Name:STL error#Description:") + cause.what();
        if (errorNumber != 0) message += errnoField(errorNumber) + "->" + std::strerror(errorNumber);
        return message;
    } catch (...) {
        return "#Name:Unknown exception not derived from std::exception";
    }
}

} // namespace

VelmoraException::VelmoraException(std::string const& message) : std::runtime_error(message) {}

VelmoraException::VelmoraException(std::string const& name, std::string const& location)
    : std::runtime_error(nameAndLocation(name, location)) {}

VelmoraException::VelmoraException(std::string const& name, std::string const& location, std::string const& description)
    : std::runtime_error(nameAndLocation(name, location) + kDescription + description) {}

VelmoraException::VelmoraException(std::string const& name, std::string const& location, std::int32_t errorNumber)
    : std::runtime_error(nameAndLocation(name, location) + errnoField(errorNumber)) {}

VelmoraException::VelmoraException(std::string const& name, std::string const& location, std::string const& description,
                                   std::int32_t errorNumber)
    : std::runtime_error(nameAndLocation(name, location) + kDescription + description + errnoField(errorNumber)) {}

VelmoraException::~VelmoraException() = default;

VelmoraIOException::VelmoraIOException(std::string const& name, std::string const& location,
                                       std::string const& streamName, std::int32_t errorNumber)
    : VelmoraException(nameAndLocation(name, location) + kStreamName + streamName + errnoField(errorNumber)) {}

VelmoraIOException::VelmoraIOException(std::string const& name, std::string const& location,
                                       std::string const& streamName, std::string const& description,
                                       std::int32_t errorNumber)
    : VelmoraException(nameAndLocation(name, location) + kStreamName + streamName + kDescription + description +
                       errnoField(errorNumber)) {}

VelmoraIOException::~VelmoraIOException() = default;

VelmoraRangeException::VelmoraRangeException(std::string const& name, std::string const& location, size_t limit)
    : VelmoraException(name, location), limit_(limit), location_(location) {}

VelmoraRangeException::~VelmoraRangeException() = default;

VelmoraPropertyNotSetException::VelmoraPropertyNotSetException(std::string const& name, std::string const& location)
    : VelmoraException(name, location) {}

VelmoraPropertyNotSetException::VelmoraPropertyNotSetException(std::string const& name, std::string const& location,
                                                               std::string const& description)
    : VelmoraException(name, location, description) {}

VelmoraPropertyNotSetException::~VelmoraPropertyNotSetException() = default;

std::string collectExceptionMessage(std::exception const& exception) {
    std::string message = exception.what();
    if (auto const* nested = dynamic_cast<std::nested_exception const*>(&exception)) message += nestedMessage(*nested);
    return message;
}

std::string formatExceptionMessage(std::exception const& exception) {
    std::string const text = collectExceptionMessage(exception);
    std::string report;
    size_t const names = appendAll(report, text, kName, "", " (");
    if (names > 1) report.append(names - 1, ')');
    appendAll(report, text, kLocation, "\n  Location:     ", "<-");
    appendAll(report, text, kDescription, "\n  Description:  ", ", ");
    appendFirst(report, text, kStreamName, "\n  Streamname:   ");
    appendFirst(report, text, kErrno, "\n  Error number: ");
    return report;
}
