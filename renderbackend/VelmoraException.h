#pragma once

#include "renderbackend/Export.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>

/// Every failure of the backend. what() is a tagged text that a program can parse:
///
///     #Name:could not map PBO range#Location:void* Gles3Pbo::mapRange(size_t offset, size_t size)
///     #Description:out of memory
///
/// on one line. The name says what failed, the location is the signature of the operation that failed. A field ends at
/// the next "#", so a field's text must not contain one. formatExceptionMessage() turns the text into human-readable
/// lines.
class VELMORA_EXPORT VelmoraException : public std::runtime_error {
public:
    /// Takes a message that is already tagged, unchanged.
    explicit VelmoraException(std::string const& message);
    VelmoraException(std::string const& name, std::string const& location);
    VelmoraException(std::string const& name, std::string const& location, std::string const& description);
    VelmoraException(std::string const& name, std::string const& location, std::int32_t errorNumber);
    VelmoraException(std::string const& name, std::string const& location, std::string const& description,
                     std::int32_t errorNumber);
    VelmoraException(VelmoraException const&) = default;
    VelmoraException& operator=(VelmoraException const&) = default;
    ~VelmoraException() override;
};

/// A failure on a named stream. For hosts; the backend never throws it.
class VELMORA_EXPORT VelmoraIOException : public VelmoraException {
public:
    VelmoraIOException(std::string const& name, std::string const& location, std::string const& streamName,
                       std::int32_t errorNumber);
    VelmoraIOException(std::string const& name, std::string const& location, std::string const& streamName,
                       std::string const& description, std::int32_t errorNumber);
    VelmoraIOException(VelmoraIOException const&) = default;
    VelmoraIOException& operator=(VelmoraIOException const&) = default;
    ~VelmoraIOException() override;
};

/// A request beyond a bound.
class VELMORA_EXPORT VelmoraRangeException : public VelmoraException {
public:
    VelmoraRangeException(std::string const& name, std::string const& location, size_t limit);
    VelmoraRangeException(VelmoraRangeException const&) = default;
    VelmoraRangeException& operator=(VelmoraRangeException const&) = default;
    ~VelmoraRangeException() override;

    /// The bound that the request exceeded.
    size_t limit() const { return limit_; }
    /// The signature of the operation that failed, as in the message.
    std::string const& location() const { return location_; }

private:
    size_t limit_;
    std::string location_;
};

/// A property that was read before it was set. For hosts; the backend never throws it.
class VELMORA_EXPORT VelmoraPropertyNotSetException : public VelmoraException {
public:
    VelmoraPropertyNotSetException(std::string const& name, std::string const& location);
    VelmoraPropertyNotSetException(std::string const& name, std::string const& location,
                                   std::string const& description);
    VelmoraPropertyNotSetException(VelmoraPropertyNotSetException const&) = default;
    VelmoraPropertyNotSetException& operator=(VelmoraPropertyNotSetException const&) = default;
    ~VelmoraPropertyNotSetException() override;
};

/// The tagged text of an exception and of every exception nested in it, outermost first. Any thread. Reads errno once,
/// if a nested exception is a std::exception that is not ours. Throws nothing but std::bad_alloc.
VELMORA_EXPORT std::string collectExceptionMessage(std::exception const& exception);

/// The collected text as human-readable lines:
///
///     outer name (inner name)
///       Location:     outer location<-inner location
///       Description:  outer description, inner description
///       Streamname:   stream
///       Error number: 2
VELMORA_EXPORT std::string formatExceptionMessage(std::exception const& exception);
