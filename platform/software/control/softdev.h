#pragma once
/// Control of the software device and of the emulated GPU: the part that is not CUDA's. Tests use it to set up
/// machines, to read what was called, to make calls fail and to count what is alive.

#include <cstddef>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

// ---- devices -----------------------------------------------------------------------------------------------------

/// One device of the machine.
struct SoftdevDevice
{
    std::string name;
    int major, minor;   ///< compute capability
    std::size_t memory; ///< bytes
    int maxGrid[3];     ///< largest grid extents
    int asyncEngines;   ///< 0: the device cannot overlap copies with kernels
};

/// The default device: capability 9.0, two copy engines, 8 GiB, named "tarn software device".
SoftdevDevice softdevDefaultDevice();

/// Replaces the machine's devices (by none, if empty) and makes device 0 current on every thread. Returns false and
/// changes nothing while an allocation, stream or cuBLAS handle is alive. No other thread may be inside a CUDA call.
bool softdevSetDevices(const std::vector<SoftdevDevice>& devices);

/// Sets the versions that the runtime, the driver and cuBLAS report (13000, 13000 and 130000 at first).
void softdevSetVersions(int runtime, int driver, int cublas) noexcept;

// ---- strictness --------------------------------------------------------------------------------------------------

/// Hold mode: queued work runs only when somebody waits for it, and then only as far as the wait needs. Early reuse of
/// a buffer and a missing synchronisation then show every time. On at first in checked builds, else off.
void softdevSetHold(bool hold) noexcept;

/// Eager mode: the device's own thread takes up whatever is queued, at once, as a GPU does. Held work stays held, and
/// late copies late. Off at first: then the thread is woken where that saves time, which on two cores is never.
void softdevSetEager(bool eager) noexcept;

/// The order of work on different streams, as far as the rules leave it open: a number other than 0 draws, for each
/// piece of work that runs, among the streams whose next piece may run. A missing wait between two streams then shows.
/// 0: the order of issue, as at first.
void softdevSetOrder(unsigned seed) noexcept;

/// Sticky errors, as on a GPU: after a failed execution every call that needs the device returns its code, and so does
/// cudaGetLastError, until softdevClearFailures. Off at first on the software device, which reports a failure once; on
/// in the emulated GPU.
void softdevSetSticky(bool sticky) noexcept;

/// Fills fresh device memory with NaN patterns. Always on in checked builds.
void softdevSetPoison(bool poison) noexcept;

/// Whether this is a checked build: NaN patterns in fresh and freed memory, guard zones verified at cudaFree.
bool softdevChecked() noexcept;

// ---- log ---------------------------------------------------------------------------------------------------------

/// One call as it was made, whether it failed or not. A kernel launch stands under the kernel's name, with grid and
/// block extents (x, y, z, x, y, z) as integers.
struct SoftdevCall
{
    std::string name;
    std::vector<long long> ints; ///< integers, enumerators, sizes and pointers, in argument order
    std::vector<double> reals;   ///< scalars alpha, beta, c, s, in argument order; a complex one takes two places
    int device;                  ///< current device of the calling thread
};

/// Empties the log and starts recording.
void softdevLogStart();

/// Stops recording and returns the calls since softdevLogStart, in order.
std::vector<SoftdevCall> softdevLogTake();

// ---- failures ----------------------------------------------------------------------------------------------------

/// Makes the nth call from now (counted from 1) of the function `name` return `code` and do nothing else; a CUDA call
/// or launch latches the code too. A launch counts under every prefix of its kernel's name. A null or empty name counts
/// every call of CUDA, cuBLAS and every launch. With fromThenOn all later calls fail as well.
void softdevFailCall(const char* name, int nth, int code, bool fromThenOn = false);

/// Makes the nth launch from now of a kernel whose name starts with `kernelPrefix` (any, if null or empty) succeed, but
/// its execution fail with `code`: the kernel does not run, and the next synchronising call that waits for it returns
/// and latches the code.
void softdevFailExecution(const char* kernelPrefix, int nth, int code);

/// Forgets all failures that are still to come, and those of executions that no call has returned yet.
void softdevClearFailures() noexcept;

// ---- live counts -------------------------------------------------------------------------------------------------

/// What is alive, over all devices. Bytes are those that were asked for.
struct SoftdevLive
{
    std::size_t allocations, bytes, peakBytes; ///< device memory
    std::size_t hostAllocations, hostBytes;    ///< page-locked memory
    std::size_t streams, handles;
};

SoftdevLive softdevLive() noexcept;

/// Starts the peak anew from the bytes that are alive now.
void softdevResetPeak() noexcept;

#pragma GCC visibility pop
