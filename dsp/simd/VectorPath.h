#pragma once
// Which instruction set the multi-channel loops use: several channels per
// instruction with SSE2 (two channels of doubles) or AVX2 (four), or the plain
// per-channel loop. Every vector loop computes, lane by lane, the very
// operations of the plain loop in the same order with the same roundings, so
// the choice changes speed only, never a bit of the output.
//
// The widest set the processor offers is chosen once at load; the environment
// variable AF_FORCE_SCALAR=1 keeps the plain loop. Tests may switch at run time.
// The effects and the platform library's buffer loops both ask here (each
// library holds its own copy of the choice, made by this same code).
namespace AF {

enum class VectorPath { scalar, sse2, avx2 };

// The path the processing calls take now (one relaxed atomic load).
VectorPath vectorPath() noexcept;

// The widest path this processor runs, ignoring AF_FORCE_SCALAR.
VectorPath widestVectorPath() noexcept;

// For tests and benchmarks: selects a path, limited to what the processor runs.
void setVectorPath(VectorPath path) noexcept;

// Whether the four-lane cut filter loops of the AVX2 path are compiled for
// AVX-512VL: the same 256-bit operations, but thirty-two vector registers
// instead of sixteen, so that two sections of six or sixteen channels keep
// their recursions in registers. Chosen at load where the processor has it.
bool extendedRegisters() noexcept;
// Whether the processor has them at all.
bool extendedRegistersAvailable() noexcept;
// For tests and benchmarks: switches them off, or on where available.
void setExtendedRegisters(bool on) noexcept;

}  // namespace AF
