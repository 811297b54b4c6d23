// The library behind the drop-in. It is loaded and initialised by the first call that is to go to the device, so that a
// program that makes none pays for nothing, and may fork before.
#pragma once

#include "call.h"

#include <string>

namespace tarn::dropin {

/// How many times the calling thread is inside of the library or of a CPU routine whose calls are not to be answered
/// anew. The CPU LAPACK calls the BLAS by the names that the drop-in answers, for the library's panels too.
extern thread_local int suspended __attribute__((tls_model("initial-exec")));

class Suspension
{
public:
    Suspension() { ++suspended; }
    ~Suspension() { --suspended; }
    Suspension(const Suspension&) = delete;
    Suspension& operator=(const Suspension&) = delete;
};

/// Whether calls can go to the device; brings it up if nobody has. Once false it stays so: the library is not there,
/// does not start, or this is a child of a process that forked after it had started, in which no device works.
bool deviceIsUp();

/// After a failed call: whether it failed because the program, which uses the library too, had shut it down, and that
/// it is up again.
bool comesUpAgain();

/// The function of that name of the library; null if it is not loaded.
void* libraryFunction(const char* name);

/// The routine of that name in the CPU LAPACK that the library itself was linked to, which is loaded for it but not
/// initialised; null if there is none.
void* libraryCpuRoutine(const char* name);

/// What the calls went to, for the report: a device, or why there was none; "" if no call asked for it.
std::string deviceDescription();

/// Makes the device that this process is to use current on the calling thread, and afterwards the one that was.
///
/// TARN_BLAS_DEVICE names it. Without that the processes of a machine that MPI or a batch system started are dealt over
/// its devices by their local rank; any other uses what is current.
class DeviceScope
{
public:
    DeviceScope();
    ~DeviceScope();
    DeviceScope(const DeviceScope&) = delete;
    DeviceScope& operator=(const DeviceScope&) = delete;

private:
    int before_ = -1; ///< -1: nothing was changed
};

/// Has forks answered: to be called once, when the drop-in is loaded. inChild runs in every forked child.
void watchForks(void (*inChild)());

} // namespace tarn::dropin
