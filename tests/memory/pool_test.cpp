// The pool of device workspace: what it holds, whom it gives which block, and what becomes of it.
#include "frame/device_table.h"
#include "frame/error_state.h"
#include "frame/machine.h"
#include "memory/memory_pool.h"
#include "support/api.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace {

using namespace test;

constexpr int smallest = 262144, middle = 1048576, large = 2097152; // elements

class Pool : public OnMachine
{
protected:
    void SetUp() override
    {
        OnMachine::SetUp();
        tarn::exactPoolBlocks = false;
    }

    void TearDown() override
    {
        OnMachine::TearDown();
        tarn::freePools();
        EXPECT_EQ(softdevLive().allocations, 0u);
        EXPECT_EQ(softdevLive().streams, 0u);
        EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    }

    template <class T = float>
    static PoolBlock<T> acquire(std::int64_t n, const StreamHandle& stream = {})
    {
        return MemoryPool<T>::instance().acquire(n, stream);
    }

    static constexpr std::size_t fillBytes = sizeof(float) * (large + 4 * middle);
};

TEST_F(Pool, FirstUseFillsItAndRequestsGetTheBestFit)
{
    softdevLogStart();
    std::vector<PoolBlock<float>> held = {acquire(1)};
    std::vector<long long> sizes;
    for (const SoftdevCall& call : softdevLogTake())
        if (call.name == "cudaMalloc")
            sizes.push_back(call.ints.back());
    EXPECT_EQ(sizes, (std::vector<long long>{4 * large, 4 * middle, 4 * middle, 4 * middle, 4 * middle}));
    float* const first = held[0].data();
    EXPECT_EQ(held[0].memory.size(), middle);

    for (const int size : {middle, middle, middle, large, smallest, smallest}) {
        held.push_back(acquire(1));
        EXPECT_EQ(held.back().memory.size(), size);
    }
    held.push_back(acquire(middle)); // a fifth of this size
    std::set<float*> distinct;
    for (const auto& block : held)
        distinct.insert(block.data());
    EXPECT_EQ(distinct.size(), held.size());
    held.clear();

    EXPECT_EQ(acquire(smallest).memory.size(), smallest);
    EXPECT_EQ(acquire(smallest + 1).data(), first) << "the first found of equal fit";
    EXPECT_EQ(acquire(middle).data(), first);
    EXPECT_EQ(acquire(middle + 1).memory.size(), large);
    EXPECT_EQ(acquire(large).memory.size(), large);
    EXPECT_EQ(acquire(large + 1).memory.size(), large + 1) << "exactly what was asked for";
    EXPECT_EQ(softdevLive().allocations, 9u);
}

TEST_F(Pool, EmptyAndNegativeRequestsTouchNoDevice)
{
    softdevLogStart();
    EXPECT_EQ(acquire<double>(0).data(), nullptr);
    EXPECT_TRUE(acquire(0).memory.empty());
    try {
        acquire(-1);
        FAIL();
    } catch (const std::runtime_error& failure) {
        EXPECT_STREQ(failure.what(), "Memory Pool: bad request");
    }
    EXPECT_TRUE(softdevLogTake().empty());
}

TEST_F(Pool, ClearKeepsWhatIsHeldAndTheNextRequestRefillsOnlyAnEmptyPool)
{
    PoolBlock<float> held = acquire(1);
    MemoryPool<float>::instance().clear();
    EXPECT_EQ(softdevLive().allocations, 1u);
    EXPECT_EQ(softdevLive().bytes, sizeof(float) * middle);
    acquire(1);
    EXPECT_EQ(softdevLive().bytes, sizeof(float) * (middle + smallest));
    held = {};
    MemoryPool<float>::instance().clear();
    EXPECT_EQ(softdevLive().allocations, 0u);
    acquire(1);
    EXPECT_EQ(softdevLive().bytes, fillBytes);
}

TEST_F(Pool, AFullDeviceGivesTheFreeBlocksBackFirst)
{
    ASSERT_EQ(cudaSetDevice(small), cudaSuccess);
    constexpr int most = 7 << 20; // elements: 28 of 32 MiB, so that the first fill but for the block held must go
    const PoolBlock<float> first = acquire(1);
    EXPECT_EQ(acquire(most).memory.size(), most);
    EXPECT_EQ(softdevLive().bytes, sizeof(float) * (middle + most));
    EXPECT_THROW(acquire(most + 1), velk::CudaMemoryException) << "the block held is in the way";
    EXPECT_EQ(softdevLive().bytes, sizeof(float) * middle) << "the free ones are gone all the same";

    const PoolBlock<float> second = acquire(most);
    EXPECT_THROW(acquire(large), velk::CudaMemoryException) << "nothing is free any more";
    EXPECT_THROW(acquire((std::int64_t(1) << 32) + 1), velk::CudaMemoryException) << "a size of more than 32 bits";
    EXPECT_EQ(softdevLive().allocations, 2u);
}

TEST_F(Pool, OtherElementTypesStayInTheWay)
{
    ASSERT_EQ(cudaSetDevice(small), cudaSuccess);
    acquire(1);
    EXPECT_EQ(softdevLive().bytes, fillBytes);
    EXPECT_THROW(acquire<double>(1), velk::CudaMemoryException);
    EXPECT_EQ(softdevLive().bytes, fillBytes);
    tarn::freePools();
    EXPECT_EQ(softdevLive().allocations, 0u);
}

TEST_F(Pool, AFirstFillThatFailsKeepsWhatItGot)
{
    softdevFailCall("cudaMalloc", 3, 32);
    EXPECT_THROW(acquire(1), velk::CudaMemoryException);
    EXPECT_EQ(softdevLive().bytes, sizeof(float) * (large + middle));
    EXPECT_EQ(acquire(1).memory.size(), middle);
    EXPECT_EQ(softdevLive().allocations, 2u) << "used as they are, without another fill";

    softdevFailCall("cudaMalloc", 1, 719);
    EXPECT_THROW(acquire(3 * middle), velk::CudaRuntimeException) << "only a lack of memory is worth another try";
    EXPECT_EQ(softdevLive().allocations, 2u);
}

TEST_F(Pool, EachDeviceAndElementTypeHasItsOwn)
{
    const PoolBlock<float> here = acquire(1);
    const PoolBlock<tarn::Complex<double>> wide = acquire<tarn::Complex<double>>(1);
    ASSERT_EQ(cudaSetDevice(narrow), cudaSuccess);
    softdevLogStart();
    const PoolBlock<float> there = acquire(1);
    for (const SoftdevCall& call : softdevLogTake())
        EXPECT_EQ(call.device, narrow);
    EXPECT_EQ(softdevLive().bytes, 2 * fillBytes + 4 * fillBytes);
}

TEST_F(Pool, ABlockIsHandedOverWhenItsStreamIsDone)
{
    const auto waits = [](const StreamHandle& stream) {
        softdevLogStart();
        const PoolBlock<float> block = acquire(large, stream); // there is one of this size
        EXPECT_TRUE(block.stream == stream);
        std::vector<long long> streams;
        for (const SoftdevCall& call : softdevLogTake())
            if (call.name == "cudaStreamSynchronize")
                streams.push_back(call.ints[0]);
        return streams;
    };
    using Streams = std::vector<long long>;
    const auto number = [](const StreamHandle& stream) { return reinterpret_cast<long long>(stream.raw()); };
    const StreamHandle kept = StreamHandle::create();
    EXPECT_EQ(waits({}), Streams{}) << "the same, the default stream";
    EXPECT_EQ(waits(kept), Streams{0}) << "away from the default stream";
    EXPECT_EQ(waits(kept), Streams{});
    EXPECT_EQ(waits(StreamHandle::create()), Streams{number(kept)}) << "away from a stream that somebody uses";
    EXPECT_EQ(waits({}), Streams{}) << "nobody can use a stream whose only handle is the block's";
    EXPECT_EQ(softdevLive().streams, 1u);
}

TEST_F(Pool, ExactBlocksHaveTheirGuardsRightBehindThem)
{
    tarn::exactPoolBlocks = true;
    float* used = nullptr;
    {
        const PoolBlock<float> a = acquire(3), b = acquire(5);
        EXPECT_EQ(a.memory.size(), 3);
        EXPECT_EQ(b.memory.size(), 5);
        EXPECT_EQ(softdevLive().bytes, 8 * sizeof(float));
        used = b.data();
    }
    softdevLogStart();
    const PoolBlock<float> c = acquire(2);
    const auto log = softdevLogTake();
    EXPECT_EQ(countCalls(log, "cudaFree"), 2) << "which looks at the guards";
    EXPECT_TRUE(std::any_of(log.begin(), log.end(), [&](const SoftdevCall& call) {
        return call.name == "cudaFree" && call.ints[0] == reinterpret_cast<long long>(used);
    }));
}

/// A free that fails leaks its block, and is nobody else's error.
TEST_F(Pool, AFailingFreeIsNotReported)
{
    for (const auto giveBack : {tarnFreeBuffers, tarnShutdown}) {
        ASSERT_EQ(tarnInitialize(), tarnNoError);
        acquire(1);
        softdevLogStart();
        softdevFailCall("cudaFree", 1, 719);
        giveBack();
        const auto log = softdevLogTake();
        const auto failed =
            std::find_if(log.begin(), log.end(), [](const auto& call) { return call.name == "cudaFree"; });
        ASSERT_NE(failed, log.end());
        float x = 1, y = 0;
        EXPECT_EQ(tarnInitialize(), tarnNoError);
        EXPECT_EQ(tarnSgemm('N', 'N', 1, 1, 1, 2, &x, 1, &x, 1, 0, &y, 1), tarnNoError);
        EXPECT_EQ(y, 2);
        tarnShutdown();
        EXPECT_EQ(cudaFree(reinterpret_cast<void*>(failed->ints[0])), cudaSuccess);
    }
}

TEST_F(Pool, ThreadsNeverShareABlock)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int k = 0; k < 100; ++k) {
                const PoolBlock<float> a = acquire(1), b = acquire(1 + t * middle / 2);
                const float mark = float(100 * t + k);
                float read = 0;
                EXPECT_NE(a.data(), b.data());
                EXPECT_EQ(cudaMemcpy(a.data(), &mark, sizeof mark, cudaMemcpyHostToDevice), cudaSuccess);
                EXPECT_EQ(cudaMemcpy(&read, a.data(), sizeof read, cudaMemcpyDeviceToHost), cudaSuccess);
                EXPECT_EQ(read, mark);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(Pool, LivesUntilTheLastThreadLeavesOrTheBuffersAreFreed)
{
    acquire(1);
    tarnFreeBuffers();
    EXPECT_EQ(softdevLive().allocations, 5u) << "before initialisation it does nothing";

    ASSERT_EQ(tarnInitialize(), tarnNoError);
    std::thread([] {
        EXPECT_EQ(tarnInitialize(), tarnNoError);
        tarnShutdown();
    }).join();
    EXPECT_EQ(softdevLive().allocations, 5u);
    {
        const PoolBlock<float> held = acquire(1);
        tarnFreeBuffers();
        EXPECT_EQ(softdevLive().allocations, 1u);
    }
    acquire<double>(1);
    EXPECT_EQ(softdevLive().allocations, 6u);
    tarnSetLastStatus(tarnDataError);
    tarnFreeBuffers();
    EXPECT_EQ(tarnGetLastStatus(), tarnDataError) << "records nothing";
    EXPECT_EQ(softdevLive().allocations, 0u);
    acquire(1);
    tarnShutdown();
    EXPECT_EQ(softdevLive().allocations, 0u);
}

} // namespace
