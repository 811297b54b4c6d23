// The block sizes by routine, element type and device generation.
#include "frame/device_table.h"
#include "frame/machine.h"
#include "frame/tuning.h"

#include <tarndev/Complex>

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace test;
using namespace tarn;

template <class T>
std::vector<int> blockSizes(DeviceKind device)
{
    EXPECT_EQ(cudaSetDevice(device), cudaSuccess);
    bindThreadDevice();
    std::vector<int> sizes;
    for (const Blocked routine : {Blocked::getrf, Blocked::trsm, Blocked::level3, Blocked::qr, Blocked::gebrd})
        sizes.push_back(blockSize<T>(routine));
    return sizes;
}

class Tuning : public OnMachine
{};

TEST_F(Tuning, BlockSizesFollowTheGenerationOfTheThreadsDevice)
{
    using Sizes = std::vector<int>;
    std::thread firstGenerationThread([] {
        EXPECT_EQ(blockSizes<float>(firstGeneration), (Sizes{64, 64, 128, 32, 32}));
        EXPECT_EQ(blockSizes<Complex<float>>(firstGeneration), (Sizes{64, 64, 128, 32, 32}));
        for (const auto& sizes : {blockSizes<double>(firstGeneration), blockSizes<Complex<double>>(firstGeneration)}) {
            EXPECT_EQ(sizes[1], 96);
            EXPECT_EQ(sizes[2], 192);
        }
    });
    EXPECT_EQ(blockSizes<float>(modern), (Sizes{192, 96, 192, 96, 32}));
    EXPECT_EQ(blockSizes<Complex<float>>(modern), (Sizes{128, 64, 192, 64, 32}));
    EXPECT_EQ(blockSizes<double>(modern)[1], 64);
    EXPECT_EQ(blockSizes<double>(modern)[2], 192);
    EXPECT_EQ(blockSizes<Complex<double>>(modern)[1], 32);
    EXPECT_EQ(blockSizes<Complex<double>>(modern)[2], 192);
    firstGenerationThread.join();
}

} // namespace
