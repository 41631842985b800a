#pragma once
// The processing paths a test can select on this processor, and a guard that
// gives back the load-time choice when the test ends, whatever it selected.
// Where the processor has AVX-512VL, the AVX2 path runs twice: with the
// sixteen registers of AVX2 and with the thirty-two of AVX-512VL, which the
// cut filters compile their four-lane loops for separately.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dsp/simd/VectorPath.h"

namespace aftest {

class VectorPathGuard {
public:
    VectorPathGuard() : saved_(AF::vectorPath()), savedRegisters_(AF::extendedRegisters()) {}
    ~VectorPathGuard() {
        AF::setVectorPath(saved_);
        AF::setExtendedRegisters(savedRegisters_);
    }
    VectorPathGuard(const VectorPathGuard&) = delete;
    VectorPathGuard& operator=(const VectorPathGuard&) = delete;

private:
    AF::VectorPath saved_;
    bool savedRegisters_;
};

inline std::string vectorPathName(AF::VectorPath path) {
    switch (path) {
        case AF::VectorPath::scalar: return "plain";
        case AF::VectorPath::sse2: return "sse2";
        case AF::VectorPath::avx2: return "avx2";
    }
    return "?";
}

// Every vector path this processor runs, narrowest first (the plain loop not included).
inline std::vector<AF::VectorPath> availableVectorPaths() {
    std::vector<AF::VectorPath> paths;
    if (AF::widestVectorPath() != AF::VectorPath::scalar) paths.push_back(AF::VectorPath::sse2);
    if (AF::widestVectorPath() == AF::VectorPath::avx2) paths.push_back(AF::VectorPath::avx2);
    return paths;
}

// Runs `check(path)` on every vector path, each under a trace naming it, and
// stops at the first fatal failure; skips the test where there is none.
template <class Check>
void forEveryVectorPath(Check&& check) {
    const auto paths = availableVectorPaths();
    if (paths.empty()) GTEST_SKIP() << "no vector instruction set on this processor";
    const VectorPathGuard guard;
    for (AF::VectorPath path : paths) {
        const bool both = path == AF::VectorPath::avx2 && AF::extendedRegistersAvailable();
        for (bool extended : {false, true}) {
            if (extended && !both) continue;
            AF::setExtendedRegisters(extended);
            SCOPED_TRACE(vectorPathName(path) + (extended ? " with the AVX-512VL registers" : ""));
            check(path);
            if (::testing::Test::HasFatalFailure()) return;
        }
    }
}

}  // namespace aftest
