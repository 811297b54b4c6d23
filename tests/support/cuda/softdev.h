// On a GPU there is no software device to control: tests that need its controls skip themselves (OnSoftwareDevice), and
// these stand-ins let them compile.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#define TARN_NO_SOFTDEV 1

struct SoftdevDevice
{
    std::string name;
    int major, minor;
    std::size_t memory;
    int maxGrid[3];
    int asyncEngines;
};

struct SoftdevCall
{
    std::string name;
    std::vector<long long> ints;
    std::vector<double> reals;
    int device;
};

struct SoftdevLive
{
    std::size_t allocations, bytes, peakBytes, hostAllocations, hostBytes, streams, handles;
};

/// A variable, so that the compiler cannot tell that it stays empty and warn of what tests do with its elements.
inline std::vector<SoftdevCall> softdevNoCalls;

inline SoftdevDevice softdevDefaultDevice() { return {}; }
inline bool softdevSetDevices(const std::vector<SoftdevDevice>&) { return false; }
inline void softdevSetVersions(int, int, int) {}
inline void softdevSetHold(bool) {}
inline void softdevSetEager(bool) {}
inline void softdevSetPoison(bool) {}
inline bool softdevChecked() { return false; }
inline void softdevLogStart() {}
inline std::vector<SoftdevCall> softdevLogTake() { return softdevNoCalls; }
inline void softdevFailCall(const char*, int, int, bool = false) {}
inline void softdevFailExecution(const char*, int, int) {}
inline void softdevClearFailures() {}
inline SoftdevLive softdevLive() { return {}; }
inline void softdevResetPeak() {}
