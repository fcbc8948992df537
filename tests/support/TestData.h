// Where the test programs find the real sample images that nobody on the team
// made. Tests that need them call TestData_Path and skip, saying so, when the
// folder is absent.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

inline std::filesystem::path TestData_Dir() {
    if (const char* env = std::getenv("PELLUCIDA_DATA"); env && *env) return env;
    return PELLUCIDA_SHARED_DATA;
}

// The full path of a sample under the data folder, or "" when it is missing.
inline std::string TestData_Path(const std::string& relative) {
    std::filesystem::path p = TestData_Dir() / relative;
    return std::filesystem::exists(p) ? p.string() : std::string();
}

#define PELLUCIDA_REQUIRE_DATA(var, relative)        \
    const std::string var = TestData_Path(relative); \
    if (var.empty()) GTEST_SKIP() << "sample data not found: " << (TestData_Dir() / (relative)).string()
