// What our functions print when a test calls them.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "common/print.h"

template <typename Print>
std::string printed(Print print) {
    standard_output.flush();  // what an earlier test left
    testing::internal::CaptureStdout();
    print();
    standard_output.flush();
    return testing::internal::GetCapturedStdout();
}
