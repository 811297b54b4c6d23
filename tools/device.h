// The device that the library runs on, as the tool describes it.
#pragma once

#include <string>

namespace tarn::tool {

/// "NVIDIA H200, capability 9.0, 132 multiprocessors, 139.8 GiB"; device counts from 0. Raises Failure.
std::string describeDevice(int device);

/// The device that is current on the calling thread. Raises Failure.
int currentDevice();

/// Number of devices, 0 where there is none or no driver.
int deviceCount();

} // namespace tarn::tool
