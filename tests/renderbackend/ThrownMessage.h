#pragma once

#include "renderbackend/VelmoraException.h"

#include <gtest/gtest.h>
#include <string>

/// The whole text of the VelmoraException that an operation throws; fails the test if it throws none.
template <class Operation>
std::string thrownMessage(Operation const& operation) {
    try {
        operation();
    } catch (VelmoraException const& exception) {
        return exception.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}
