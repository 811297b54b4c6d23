#pragma once
/// What the launch glue needs of the software device to run kernels that are compiled for the CPU.

#include <functional>

#include <cuda_runtime.h>

#pragma GCC visibility push(default)

/// Translates a device address of the current device for use inside a kernel. Null stays null. An address outside every
/// live allocation (its end still counts as inside) gives cudaErrorInvalidValue; nothing is latched.
cudaError_t softdevDeviceView(const void* address, void** view) noexcept;

/// Latches `code` for the calling thread and returns it: how the glue refuses a launch.
cudaError_t softdevFail(cudaError_t code) noexcept;

/// Queues a kernel on the default stream of the current device: `runBlock` is called once per block, on any thread,
/// with blockIdx, blockDim and gridDim set. Runs nothing and latches cudaErrorInvalidConfiguration if a grid extent is
/// 0 or above the device's limit, if `block` differs from `kernelBlock`, the shape that the kernel was written for, or
/// if a block has more than 1024 threads. `name` is copied.
cudaError_t softdevLaunch(const char* name, dim3 grid, dim3 block, dim3 kernelBlock, std::function<void()> runBlock);

/// Waits for, and gives back, the turn to compute with all threads of the CPU BLAS, which the device does too.
void softdevTakeCpuTurn();
void softdevLeaveCpuTurn() noexcept;

/// How many callers work at a time; waits for a seat, but not for long, and says whether there was one; gives it back.
int softdevSeats() noexcept;
bool softdevTakeSeat();
void softdevLeaveSeat() noexcept;

#pragma GCC visibility pop
