#pragma once

// The blend kernels' interface for white-box tests and benchmarks: every
// kernel table the processor can run and the one chosen. Code outside the
// module reaches the kernels through this header and the target
// LqBlendKernelsTesting only; their own headers stay off its include path.

#include "../VtBlendKernelSet_p.h"
#include "../VtBlendKernels_p.h"
