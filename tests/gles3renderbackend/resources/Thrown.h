#pragma once

#include <exception>
#include <string>
#include <typeinfo>

/// The whole text of the exception that the action throws. Of another type than Exception itself, or no exception: a
/// text that says so.
template <class Exception, class Action>
std::string thrownBy(Action const& action) {
    try {
        action();
    } catch (std::exception const& exception) {
        std::string const text = exception.what();
        return typeid(exception) == typeid(Exception) ? text : "an exception of another type: " + text;
    }
    return "nothing was thrown";
}
