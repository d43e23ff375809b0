#include "VtBlendKernels_p.h"

#include "VtBlendKernelSet_p.h"

namespace VTC::EspecialFillDetail {

namespace Kernels {

namespace {

constexpr BlendStep kPortableSteps[] = {BlendBytesPortable};
#if defined(__x86_64__)
constexpr BlendStep kSse2Steps[] = {BlendBytesSse2, BlendBytesPortable};
constexpr BlendStep kAvx2Steps[] = {BlendBytesAvx2, BlendBytesSse2, BlendBytesPortable};
#endif

std::span<const BlendTable> FindRunnableTables()
{
#if defined(__x86_64__)
    static const BlendTable tables[] = {
        {"avx2", kAvx2Steps}, {"sse2", kSse2Steps}, {"portable", kPortableSteps}};
    __builtin_cpu_init();
    const bool avx2 = __builtin_cpu_supports("avx2") != 0;
    return std::span<const BlendTable>(tables).subspan(avx2 ? 0 : 1);
#else
    static const BlendTable tables[] = {{"portable", kPortableSteps}};
    return tables;
#endif
}

}  // namespace

std::span<const BlendTable> RunnableTables()
{
    static const std::span<const BlendTable> runnable = FindRunnableTables();
    return runnable;
}

const BlendTable& ChosenTable()
{
    static const BlendTable& chosen = RunnableTables().front();
    return chosen;
}

void BlendBytesWith(const BlendTable& table, const unsigned char* source, unsigned char* target, std::size_t count,
                    unsigned transparency, std::uint32_t keepMask)
{
    std::size_t done = 0;
    for (const BlendStep step : table.steps)
        done = step(done, source, target, count, transparency, keepMask);
}

}  // namespace Kernels

void BlendBytes(const unsigned char* source, unsigned char* target, std::size_t count, unsigned transparency,
                std::uint32_t keepMask)
{
    Kernels::BlendBytesWith(Kernels::ChosenTable(), source, target, count, transparency, keepMask);
}

}  // namespace VTC::EspecialFillDetail
