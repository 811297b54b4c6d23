// A machine with one device of each kind that the library treats in its own way. The library reads the device table
// once per process, so a test program that includes this has the machine for good.
#pragma once

#include "frame/device_table.h"
#include "support/device.h"

namespace test {

/// The devices of the machine by their CUDA numbers.
enum DeviceKind
{
    modern,          ///< capability 9.0, overlap of copies and kernels
    firstGeneration, ///< capability 1.3, no overlap
    withoutDouble,   ///< capability 1.2
    tiny,            ///< 9.0 with 1 MiB
    small,           ///< 9.0 with 32 MiB: less than two first fills of pools
    vast,            ///< 9.0 with 64 GiB, of which only pages that somebody touches take memory
    narrow           ///< 9.0 with at most 16 blocks along x
};

class Machine : public testing::Environment
{
public:
    void SetUp() override
    {
        if (!hasControls)
            return;
        std::vector<SoftdevDevice> devices(narrow + 1, deviceOf(9, 0));
        devices[firstGeneration] = deviceOf(1, 3);
        devices[withoutDouble] = deviceOf(1, 2);
        devices[tiny].memory = std::size_t(1) << 20;
        devices[small].memory = std::size_t(32) << 20;
        devices[vast].memory = std::size_t(64) << 30;
        devices[narrow].maxGrid[0] = 16;
        ASSERT_TRUE(softdevSetDevices(devices));
    }
};

inline testing::Environment* const theMachine = testing::AddGlobalTestEnvironment(new Machine);

/// Base of tests that use the devices of the machine. Each starts on `modern`.
class OnMachine : public WithControls
{
protected:
    void SetUp() override
    {
        WithControls::SetUp();
        if (hasControls)
            tarn::bindThreadDevice();
    }
    void TearDown() override
    {
        WithControls::TearDown();
        if (hasControls)
            cudaSetDevice(modern);
    }
};

} // namespace test
