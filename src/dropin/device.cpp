#include "device.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include <dlfcn.h>
#include <pthread.h>

namespace tarn::dropin {

thread_local int suspended = 0;

namespace {

enum class State
{
    untouched,
    up,
    unusable
};

/// The functions of the library that the drop-in itself needs.
struct Library
{
    void* handle = nullptr;
    decltype(&tarnInitialize) initialize = nullptr;
    decltype(&tarnGetLastStatus) lastStatus = nullptr;
    decltype(&tarnGetStatusString) statusString = nullptr;
    decltype(&tarnGetErrorInfo) errorInfo = nullptr;
    decltype(&tarnGetDeviceCount) deviceCount = nullptr;
    decltype(&tarnGetDeviceInfo) deviceInfo = nullptr;
    decltype(&tarnGetExecutingDevice) executingDevice = nullptr;
    decltype(&tarnSelectDevice) selectDevice = nullptr;
};

std::atomic<State> state{State::untouched};
thread_local bool starting = false; ///< this thread holds a StartLock
int wantedDevice = -1;              ///< -1: whatever is current

/// Never destroyed: programs compute in their exit handlers too.
struct Shared
{
    std::mutex mutex; ///< guards what follows, and every change of the state
    Library library;
    std::string description;
};

Shared& shared()
{
    static auto& shared = *new Shared;
    return shared;
}

/// Holds the mutex while the library is loaded and started. A driver may fork for that, to run a program that makes its
/// device nodes: such a fork must not wait for the mutex.
class StartLock
{
public:
    StartLock() : lock_(shared().mutex) { starting = true; }
    ~StartLock() { starting = false; }
    StartLock(const StartLock&) = delete;
    StartLock& operator=(const StartLock&) = delete;

private:
    std::lock_guard<std::mutex> lock_;
};

template <class Function>
bool find(void* handle, const char* name, Function*& function)
{
    function = reinterpret_cast<Function*>(dlsym(handle, name));
    return function != nullptr;
}

/// Loads the library, for this alone: its names do not answer other libraries' calls.
bool load(Library& library)
{
    if (library.handle)
        return true;
    void* const handle = dlopen(TARN_LAPACK_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    const bool complete = handle && find(handle, "tarnInitialize", library.initialize) &&
                          find(handle, "tarnGetLastStatus", library.lastStatus) &&
                          find(handle, "tarnGetStatusString", library.statusString) &&
                          find(handle, "tarnGetErrorInfo", library.errorInfo) &&
                          find(handle, "tarnGetDeviceCount", library.deviceCount) &&
                          find(handle, "tarnGetDeviceInfo", library.deviceInfo) &&
                          find(handle, "tarnGetExecutingDevice", library.executingDevice) &&
                          find(handle, "tarnSelectDevice", library.selectDevice);
    library.handle = complete ? handle : nullptr;
    return complete;
}

/// The number that one of the variables holds, -1 if none does.
int numberFrom(std::initializer_list<const char*> variables)
{
    for (const char* variable : variables)
        if (const char* text = std::getenv(variable); text && *text >= '0' && *text <= '9')
            return std::atoi(text);
    return -1;
}

/// The device that the environment asks for, dealt over `count`; -1 if it does not.
int chosenDevice(int count)
{
    const int number = numberFrom(
        {"TARN_BLAS_DEVICE", "OMPI_COMM_WORLD_LOCAL_RANK", "MPI_LOCALRANKID", "PMI_LOCAL_RANK", "SLURM_LOCALID"});
    return number < 0 || count < 1 ? -1 : number % count;
}

/// Initialises the library and tells what came of it.
State start(Shared& s)
{
    if (!load(s.library)) {
        const char* reason = dlerror();
        s.description = reason ? reason : "the library is not complete";
        return State::unusable;
    }
    const tarnStatus status = s.library.initialize();
    if (status != tarnNoError) {
        s.description = s.library.statusString(status);
        return State::unusable;
    }
    int count = 0, current = 0;
    s.library.deviceCount(&count);
    wantedDevice = chosenDevice(count);
    s.library.executingDevice(&current);
    char name[256] = "";
    s.library.deviceInfo(wantedDevice < 0 ? current : wantedDevice, name, sizeof name);
    s.description = "device " + std::to_string(wantedDevice < 0 ? current : wantedDevice) + ": " + name;
    return State::up;
}

void (*childHandler)() = nullptr;

void beforeFork()
{
    if (!starting)
        shared().mutex.lock();
}

void afterForkInParent()
{
    if (!starting)
        shared().mutex.unlock();
}

void afterForkInChild()
{
    if (starting)
        return; // it will become another program
    if (state == State::up) {
        state = State::unusable;
        shared().description = "none, since the process forked after its first call";
    }
    shared().mutex.unlock();
    childHandler();
}

} // namespace

bool deviceIsUp()
{
    const State known = state.load(std::memory_order_acquire);
    if (known != State::untouched)
        return known == State::up;
    const Suspension own; // starting it may call the CPU BLAS
    const StartLock lock;
    if (state == State::untouched) {
        try {
            state = start(shared());
        } catch (...) {
            state = State::unusable; // for lack of memory; the CPU may still have enough
        }
    }
    return state == State::up;
}

bool comesUpAgain()
{
    if (shared().library.lastStatus() != tarnNotInitialized)
        return false;
    const StartLock lock;
    return shared().library.initialize() == tarnNoError;
}

void* libraryFunction(const char* name)
{
    void* const handle = shared().library.handle;
    return handle ? dlsym(handle, name) : nullptr;
}

void* libraryCpuRoutine(const char* name)
{
    const StartLock lock;
    return load(shared().library) ? dlsym(shared().library.handle, name) : nullptr;
}

std::string deviceDescription()
{
    const std::lock_guard lock(shared().mutex);
    return shared().description;
}

tarnInfo errorInfo() { return shared().library.errorInfo(); }

DeviceScope::DeviceScope()
{
    int current = 0;
    if (wantedDevice < 0 || shared().library.executingDevice(&current) != tarnNoError || current == wantedDevice)
        return;
    if (shared().library.selectDevice(wantedDevice) == tarnNoError)
        before_ = current;
}

DeviceScope::~DeviceScope()
{
    if (before_ >= 0)
        shared().library.selectDevice(before_);
}

void watchForks(void (*inChild)())
{
    childHandler = inChild;
    pthread_atfork(beforeFork, afterForkInParent, afterForkInChild);
}

} // namespace tarn::dropin

/// For the library, in whose routines the calling thread hands on all calls, whoever called the routine.
extern "C" TARN_API void tarn_blas_suspend(int step) { tarn::dropin::suspended += step; }
