// The text that describes a device, on a machine of devices with memories of many sizes.
#include "support/device.h"
#include "tarn_core.h"
#include "tarn_lapack.h"

#include <cstring>
#include <string>

namespace {

using namespace test;

constexpr std::size_t MiB = std::size_t(1) << 20, GiB = std::size_t(1) << 30;

struct Described
{
    std::size_t memory;
    const char* text;
};

constexpr Described described[] = {{3 * GiB, "3 GB"},          {1023 * MiB, "1023 MB"}, {1024 * MiB, "1 GB"},
                                   {5 * GiB / 4, "1 GB"},      {7 * GiB / 4, "2 GB"},   {1 * MiB, "1 MB"},
                                   {1 * MiB - 4096, "1020 KB"}};

/// The text that the library gives for a device, in a buffer of `size` bytes that was full of 'x'.
std::string info(int device, int size)
{
    std::string buffer(std::size_t(size) + 1, 'x');
    EXPECT_EQ(tarnGetDeviceInfo(device, buffer.data(), size), tarnNoError);
    EXPECT_EQ(buffer.back(), 'x') << "the byte behind the buffer";
    EXPECT_EQ(buffer[std::size_t(size) - 1], '\0');
    return buffer.c_str();
}

int infoOf(tarnStatus status)
{
    EXPECT_EQ(status, tarnArgumentError);
    return tarnGetErrorInfo();
}

class DeviceInfo : public WithControls
{
protected:
    static void SetUpTestSuite()
    {
        std::vector<SoftdevDevice> devices;
        for (const Described& each : described) {
            devices.push_back(softdevDefaultDevice());
            devices.back().name = "device " + std::to_string(devices.size() - 1);
            devices.back().memory = each.memory;
        }
        softdevSetDevices(devices);
    }
};

TEST_F(DeviceInfo, GivesNameAndMemory)
{
    for (int i = 0; i < int(std::size(described)); ++i)
        EXPECT_EQ(info(i, 100), "device " + std::to_string(i) + " (" + described[i].text + ")");
}

TEST_F(DeviceInfo, IsCutToTheBuffer)
{
    const std::string whole = "device 0 (3 GB)";
    for (const int size : {1, 2, 9, 15, 16, 17})
        EXPECT_EQ(info(0, size), whole.substr(0, std::size_t(size) - 1));
}

TEST(DeviceInfoArguments, AreCheckedInOrder)
{
    int count = 0;
    char buffer[4];
    EXPECT_EQ(tarnGetDeviceCount(&count), tarnNoError);
    EXPECT_EQ(infoOf(tarnGetDeviceInfo(-1, nullptr, 0)), -1);
    EXPECT_EQ(infoOf(tarnGetDeviceInfo(count, buffer, 4)), -1);
    EXPECT_EQ(infoOf(tarnGetDeviceInfo(0, nullptr, 0)), -2);
    EXPECT_EQ(infoOf(tarnGetDeviceInfo(0, buffer, 0)), -3);
    EXPECT_EQ(infoOf(tarnGetDeviceInfo(0, buffer, -4)), -3);
    EXPECT_EQ(tarnGetLastStatus(), tarnArgumentError);
}

TEST_F(DeviceInfo, FailuresOfTheRuntimeAreReported)
{
    char buffer[4];
    softdevFailCall("cudaGetDeviceCount", 1, cudaErrorUnknown);
    EXPECT_EQ(tarnGetDeviceInfo(0, buffer, 4), tarnRuntimeError);
    EXPECT_EQ(tarnGetErrorInfo(), int(cudaErrorUnknown));
    softdevFailCall("cudaGetDeviceCount", 1, cudaErrorMemoryAllocation);
    EXPECT_EQ(tarnGetDeviceInfo(0, buffer, 4), tarnInsufficientMemory);
}

} // namespace
