#pragma once
// The two kinds of failure afx reports. Each ends the program with one line on
// stderr ("afx: error: ...") and its own exit status.
#include <stdexcept>
#include <string>

namespace afx {

// The command line asks for something that cannot be done: exit status 2.
struct UsageError : std::runtime_error {
    explicit UsageError(const std::string& what) : std::runtime_error(what) {}
};

// The request is sound but the world refused it (files, module): exit status 1.
struct RunError : std::runtime_error {
    explicit RunError(const std::string& what) : std::runtime_error(what) {}
};

inline constexpr int kExitRunFailure = 1;
inline constexpr int kExitUsage = 2;

}  // namespace afx
