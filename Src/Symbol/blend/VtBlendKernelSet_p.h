#pragma once

// The byte blend of BlendBytes per instruction set, one file each, and the
// table that chains them: the widest set first, each step going as far as
// whole vectors of its width reach, the portable formula finishing the rest.

#include <cstddef>
#include <cstdint>
#include <span>

namespace VTC::EspecialFillDetail::Kernels {

// Blends bytes from `from` on as far as this set's whole vectors reach, and
// returns where it stopped.
using BlendStep = std::size_t (*)(std::size_t from, const unsigned char* source, unsigned char* target,
                                  std::size_t count, unsigned transparency, std::uint32_t keepMask);

// VtBlendKernelsPortable.cpp: every byte, one at a time.
std::size_t BlendBytesPortable(std::size_t from, const unsigned char* source, unsigned char* target,
                               std::size_t count, unsigned transparency, std::uint32_t keepMask);
#if defined(__x86_64__)
// VtBlendKernelsSse2.cpp: 16 bytes a step.
std::size_t BlendBytesSse2(std::size_t from, const unsigned char* source, unsigned char* target,
                           std::size_t count, unsigned transparency, std::uint32_t keepMask);
// VtBlendKernelsAvx2.cpp: 32 bytes a step; only where the processor has AVX2.
std::size_t BlendBytesAvx2(std::size_t from, const unsigned char* source, unsigned char* target,
                           std::size_t count, unsigned transparency, std::uint32_t keepMask);
#endif

struct BlendTable {
    const char* name;
    std::span<const BlendStep> steps;  // the last one is the portable formula
};

// Every table this processor can run, widest first.
std::span<const BlendTable> RunnableTables();
// The widest of them, chosen on first use.
const BlendTable& ChosenTable();
// Blends `count` bytes through every step of `table`.
void BlendBytesWith(const BlendTable& table, const unsigned char* source, unsigned char* target, std::size_t count,
                    unsigned transparency, std::uint32_t keepMask);

}  // namespace VTC::EspecialFillDetail::Kernels
