#pragma once
/// Launches of kernels that are PTX.

#include <memory>
#include <string>

#include <cuda_runtime.h>

#include "ptx/program.h"

namespace tarn::soft {

/// A kernel as the CUDA build registered it.
struct RegisteredKernel
{
    std::string name; ///< as the call log shows it
    std::shared_ptr<const ptx::Module> module;
    const ptx::Kernel* code;
};

/// Queues a launch on the default stream; `arguments` holds an address for each parameter. A fault of the kernel is
/// reported on stderr and makes its execution fail: with cudaErrorIllegalAddress, cudaErrorMisalignedAddress, or for
/// what a GPU would not notice cudaErrorLaunchFailure.
///
/// TARN_EMULATED_CHECKS=0 in the environment leaves out the search for races and for reads of unwritten memory;
/// TARN_EMULATED_COUNTERS=FILE writes what all launches cost to FILE when the process ends.
cudaError_t launchKernel(const RegisteredKernel& kernel, dim3 grid, dim3 block, void** arguments);

} // namespace tarn::soft
