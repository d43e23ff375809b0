#include "VtRasterStretch_p.h"

namespace VTC::gfx::raster {

namespace {

std::span<const StretchWriterChoice> FindRunnableStretchWriters()
{
#if defined(__x86_64__)
    static const StretchWriterChoice writers[] = {{"avx512", WriteStretchAvx512}, {"portable", WriteStretchPortable}};
    __builtin_cpu_init();
    const bool avx512 = __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
                        __builtin_cpu_supports("bmi2") != 0;
    return std::span<const StretchWriterChoice>(writers).subspan(avx512 ? 0 : 1);
#else
    static const StretchWriterChoice writers[] = {{"portable", WriteStretchPortable}};
    return writers;
#endif
}

}  // namespace

std::span<const StretchWriterChoice> RunnableStretchWriters()
{
    static const std::span<const StretchWriterChoice> runnable = FindRunnableStretchWriters();
    return runnable;
}

StretchWriter ChosenStretchWriter()
{
    static const StretchWriter chosen = RunnableStretchWriters().front().write;
    return chosen;
}

}  // namespace VTC::gfx::raster
