/// When queued work runs.

#include <atomic>
#include <chrono>
#include <thread>

#include "cublas_v2.h"
#include "fixture.h"

#include <sys/wait.h>
#include <unistd.h>

using OrderTest = SoftdevTest;

// Long enough for the device's thread to run what it may run.
static void giveDeviceTime() { std::this_thread::sleep_for(std::chrono::milliseconds(10)); }

// At the tail of the queue, a copy must not have touched its page-locked side until somebody waits, be it worth a
// thread of its own or not.
TEST_F(OrderTest, PageLockedCopiesAreLate)
{
    for (const bool hold : {false, true})
        for (const std::size_t count : {1, 1 << 20}) {
            softdevSetHold(hold);
            cudaStream_t stream;
            ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
            DeviceArray<int> device(count);
            PinnedArray<int> up(count), down(count);
            const std::size_t bytes = count * sizeof(int);
            up[0] = 1;
            down[0] = 7;
            ASSERT_EQ(cudaMemcpyAsync(device, up, bytes, cudaMemcpyHostToDevice, stream), cudaSuccess);
            giveDeviceTime();
            up[0] = 2;
            ASSERT_EQ(cudaStreamSynchronize(stream), cudaSuccess);
            ASSERT_EQ(cudaMemcpy2DAsync(down, bytes, device, bytes, bytes, 1, cudaMemcpyDeviceToHost, stream),
                      cudaSuccess);
            giveDeviceTime();
            EXPECT_EQ(down[0], 7);
            ASSERT_EQ(cudaStreamSynchronize(stream), cudaSuccess);
            EXPECT_EQ(down[0], 2);
            EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
        }
}

TEST_F(OrderTest, PageableAsyncCopyIsDoneAtReturn)
{
    softdevSetHold(true);
    DeviceArray<int> device(1);
    int seen = 0, host = 5;
    int* inside = view<int>(device);
    ASSERT_EQ(launch(1, [&seen, inside] { seen = *inside = 4; }), cudaSuccess);
    ASSERT_EQ(cudaMemcpyAsync(device, &host, sizeof host, cudaMemcpyHostToDevice), cudaSuccess);
    host = 6;
    EXPECT_EQ(seen, 4) << "the copy overtook the kernel";
    EXPECT_EQ(device.download()[0], 5);
}

// Between two places of the device the host does not wait, on the host it does.
TEST_F(OrderTest, OnlyCopiesThatTouchPageableMemoryAreWaitedFor)
{
    softdevSetHold(true);
    const DeviceArray<int> from(std::vector<int>{5}), to(std::vector<int>{4});
    const PinnedArray<int> pinned(1);
    int host = 0;
    pinned[0] = 2;
    ASSERT_EQ(cudaMemcpy(to, from, sizeof(int), cudaMemcpyDeviceToDevice), cudaSuccess);
    ASSERT_EQ(cudaMemcpyAsync(from, pinned, sizeof(int), cudaMemcpyHostToDevice), cudaSuccess);
    EXPECT_EQ(*view<int>(to), 4);
    EXPECT_EQ(*view<int>(from), 5);
    ASSERT_EQ(cudaMemcpyAsync(&host, pinned, sizeof(int), cudaMemcpyHostToHost), cudaSuccess);
    EXPECT_EQ(host, 2);
    EXPECT_EQ(*view<int>(to), 5);
    EXPECT_EQ(*view<int>(from), 2);
}

// The copies are on two streams; the default stream's work between them orders all.
TEST_F(OrderTest, DefaultStreamOrdersOtherStreams)
{
    softdevSetHold(true);
    cudaStream_t up, down;
    ASSERT_EQ(cudaStreamCreate(&up), cudaSuccess);
    ASSERT_EQ(cudaStreamCreate(&down), cudaSuccess);
    DeviceArray<int> device(2);
    PinnedArray<int> host(4);
    host[0] = 1;
    host[1] = 2;
    ASSERT_EQ(cudaMemcpyAsync(device, host, 8, cudaMemcpyHostToDevice, up), cudaSuccess);
    ASSERT_EQ(cudaMemset(device, 0, 4), cudaSuccess);
    ASSERT_EQ(cudaMemcpyAsync(host + 2, device, 8, cudaMemcpyDeviceToHost, down), cudaSuccess);
    ASSERT_EQ(cudaStreamSynchronize(down), cudaSuccess);
    EXPECT_EQ(host[2], 0);
    EXPECT_EQ(host[3], 2);
    cudaStreamDestroy(up);
    cudaStreamDestroy(down);
}

/// What a stream reads of what another one wrote, without waiting for it, for each of many orders; then the same with
/// the default stream between them.
static int staleReads(bool ordered)
{
    cudaStream_t write, read;
    EXPECT_EQ(cudaStreamCreate(&write), cudaSuccess);
    EXPECT_EQ(cudaStreamCreate(&read), cudaSuccess);
    DeviceArray<int> device(std::vector<int>(2, 0)), other(1);
    PinnedArray<int> host(2);
    int stale = 0;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        softdevSetOrder(seed);
        host[0] = int(seed);
        host[1] = 0;
        EXPECT_EQ(cudaMemcpyAsync(device, host, sizeof(int), cudaMemcpyHostToDevice, write), cudaSuccess);
        EXPECT_EQ(cudaMemcpyAsync(device + 1, device, sizeof(int), cudaMemcpyDeviceToDevice, write), cudaSuccess);
        if (ordered) {
            EXPECT_EQ(cudaMemset(other, 0, sizeof(int)), cudaSuccess);
        }
        EXPECT_EQ(cudaMemcpyAsync(host + 1, device + 1, sizeof(int), cudaMemcpyDeviceToHost, read), cudaSuccess);
        EXPECT_EQ(cudaStreamSynchronize(read), cudaSuccess);
        stale += host[1] != int(seed);
        EXPECT_EQ(cudaStreamSynchronize(write), cudaSuccess);
        EXPECT_EQ(device.download()[1], int(seed)) << "each stream keeps its own order";
    }
    cudaStreamDestroy(write);
    cudaStreamDestroy(read);
    return stale;
}

TEST_F(OrderTest, ADrawnOrderShowsAMissingWaitBetweenStreams)
{
    for (const bool hold : {false, true}) {
        softdevSetHold(hold);
        const int stale = staleReads(false);
        EXPECT_TRUE(4 <= stale && stale < 20) << stale;
        EXPECT_EQ(staleReads(true), 0) << "the default stream orders both";
    }
}

TEST_F(OrderTest, HeldWorkRunsNoFurtherThanAWaitNeeds)
{
    softdevSetHold(true);
    cudaStream_t stream;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    DeviceArray<int> device(1);
    PinnedArray<int> host(1);
    std::atomic<int> ran{0};
    ASSERT_EQ(launch(64, [&ran] { ran += blockIdx.x == 0; }), cudaSuccess);
    ASSERT_EQ(cudaMemcpyAsync(device, host, sizeof(int), cudaMemcpyHostToDevice, stream), cudaSuccess);
    ASSERT_EQ(launch(1, [&ran] { ++ran; }), cudaSuccess);
    giveDeviceTime();
    EXPECT_EQ(ran, 0);
    ASSERT_EQ(cudaStreamSynchronize(stream), cudaSuccess);
    EXPECT_EQ(ran, 1);
    ASSERT_EQ(cudaStreamSynchronize(nullptr), cudaSuccess);
    EXPECT_EQ(ran, 2);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
}

/// Reads what the device may be writing.
__attribute__((no_sanitize("thread"))) static int peek(const volatile int* address) { return *address; }

// A kernel that waits for the host proves that the device works on its own and that no asynchronous call waits for it.
static void expectWorkBesideTheHost(unsigned blocks)
{
    cudaStream_t stream;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    DeviceArray<int> device(std::vector<int>(1, 3));
    PinnedArray<int> host(1);
    host[0] = 0;
    std::atomic<bool> started{false}, open{false};
    const auto gate = [&] {
        started = true;
        while (!open)
            std::this_thread::yield();
    };
    ASSERT_EQ(launch(blocks, gate), cudaSuccess);
    for (int i = 0; i < 1000 && !started; ++i)
        giveDeviceTime();
    EXPECT_TRUE(started) << "work waits for the host";
    ASSERT_EQ(cudaMemcpyAsync(host, device, sizeof(int), cudaMemcpyDeviceToHost, stream), cudaSuccess);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    EXPECT_EQ(cudaStreamSynchronize(stream), cudaErrorInvalidResourceHandle);
    EXPECT_EQ(peek(host), 0);
    open = true;
    for (int i = 0; i < 1000 && peek(host) == 0; ++i)
        giveDeviceTime();
    EXPECT_EQ(peek(host), 3) << "work of a destroyed stream was lost";
}

TEST_F(OrderTest, LongWorkRunsBesideTheHost)
{
    if (std::thread::hardware_concurrency() <= 2)
        GTEST_SKIP() << "host and device take turns on so few cores";
    expectWorkBesideTheHost(64);
}

TEST_F(OrderTest, EagerWorkRunsBesideTheHost)
{
    softdevSetEager(true);
    expectWorkBesideTheHost(1);
}

// A copy too small to wake the device for runs all the same once its stream, and so the one way to wait for it, is
// gone.
TEST_F(OrderTest, DestroyingAStreamSetsItsWorkGoing)
{
    cudaStream_t stream;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    DeviceArray<int> device(std::vector<int>(1, 3));
    PinnedArray<int> host(1);
    host[0] = 0;
    ASSERT_EQ(cudaMemcpyAsync(host, device, sizeof(int), cudaMemcpyDeviceToHost, stream), cudaSuccess);
    giveDeviceTime();
    EXPECT_EQ(peek(host), 0);
    ASSERT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    for (int i = 0; i < 1000 && peek(host) == 0; ++i)
        giveDeviceTime();
    EXPECT_EQ(peek(host), 3);
}

TEST_F(OrderTest, StaleStreamsAreRefused)
{
    cudaStream_t stream, next;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    ASSERT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    ASSERT_EQ(cudaStreamCreate(&next), cudaSuccess);
    DeviceArray<int> device(1);
    PinnedArray<int> host(1);
    EXPECT_EQ(cudaMemcpyAsync(device, host, 4, cudaMemcpyHostToDevice, stream), cudaErrorInvalidResourceHandle);
    EXPECT_EQ(cudaMemcpy2DAsync(device, 4, host, 4, 4, 1, cudaMemcpyHostToDevice, stream),
              cudaErrorInvalidResourceHandle);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaErrorInvalidResourceHandle);
    EXPECT_EQ(cudaStreamDestroy(next), cudaSuccess);
}

// x <- 2 x over and over, by kernels and by cuBLAS, from several threads, each on a device of its own or two on one.
TEST_F(OrderTest, ThreadsAndDevicesDoNotMixUp)
{
    ASSERT_TRUE(softdevSetDevices({softdevDefaultDevice(), softdevDefaultDevice()}));
    const auto work = [](int index) {
        ASSERT_EQ(cudaSetDevice(index % 2), cudaSuccess);
        cublasHandle_t handle;
        ASSERT_EQ(cublasCreate_v2(&handle), CUBLAS_STATUS_SUCCESS);
        const int n = 1000;
        const float two = 2;
        for (int round = 0; round < 50; ++round) {
            const DeviceArray<float> x(std::vector<float>(n, float(index + 1)));
            float* inside = view<float>(x);
            const auto doubled = [=] {
                for (int i = int(blockIdx.x); i < n; i += int(gridDim.x))
                    inside[i] *= 2;
            };
            for (int step = 0; step < 4; ++step) {
                ASSERT_EQ(launch(10, doubled), cudaSuccess);
                ASSERT_EQ(cublasSscal_v2(handle, n, &two, x, 1), CUBLAS_STATUS_SUCCESS);
            }
            ASSERT_EQ(x.download(), std::vector<float>(n, 256 * float(index + 1)));
        }
        ASSERT_EQ(cublasDestroy_v2(handle), CUBLAS_STATUS_SUCCESS);
    };
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index)
        threads.emplace_back(work, index);
    for (std::thread& thread : threads)
        thread.join();
}

// Grids of all shapes, small enough for one thread and large enough for all, and one whose blocks take longer than
// those of the launch before: every block runs once, with its coordinates.
TEST_F(OrderTest, EveryBlockRunsOnce)
{
    const auto none = std::chrono::microseconds(0), longer = std::chrono::microseconds(20);
    struct
    {
        dim3 grid;
        std::chrono::microseconds pause;
    } const launches[] = {
        {dim3(1), none}, {dim3(7, 5, 3), none}, {dim3(40000, 2, 1), none}, {dim3(4), none}, {dim3(4), longer},
    };
    for (const auto& [grid, pause] : launches) {
        std::vector<std::atomic<int>> runs(std::size_t(grid.x) * grid.y * grid.z);
        std::atomic<int> largest{0}, strange{0};
        const auto body = [&, extent = grid, time = pause] {
            ++runs[blockIdx.x + extent.x * (blockIdx.y + std::size_t(extent.y) * blockIdx.z)];
            strange += gridDim.y != extent.y || blockDim.y != 4;
            atomicMax(reinterpret_cast<int*>(&largest), int(blockIdx.x));
            if (time != none)
                std::this_thread::sleep_for(time);
        };
        ASSERT_EQ(softdevLaunch("Grid_k", grid, dim3(8, 4), dim3(8, 4), body), cudaSuccess);
        ASSERT_EQ(cudaDeviceSynchronize(), cudaSuccess);
        for (const auto& count : runs)
            ASSERT_EQ(count, 1);
        EXPECT_EQ(largest, int(grid.x) - 1);
        EXPECT_EQ(strange, 0);
    }
}

TEST_F(OrderTest, AtomicsLoseNothing)
{
    DeviceArray<float> sum(std::vector<float>(1, 0));
    DeviceArray<double> sum2(std::vector<double>(1, 0));
    DeviceArray<unsigned long long> bits(std::vector<unsigned long long>(1, 0));
    const auto body = [s = view<float>(sum), d = view<double>(sum2), b = view<unsigned long long>(bits)] {
        atomicAdd(s, 1.0f);
        atomicAdd(d, 0.5);
        unsigned long long seen = atomicCAS(b, 0, 0), before;
        do {
            before = seen;
            seen = atomicCAS(b, before,
                             static_cast<unsigned long long>(
                                 __double_as_longlong(__longlong_as_double(static_cast<long long>(before)) + 2)));
        } while (seen != before);
    };
    ASSERT_EQ(launch(20000, body), cudaSuccess);
    EXPECT_EQ(sum.download()[0], 20000);
    EXPECT_EQ(sum2.download()[0], 10000);
    EXPECT_EQ(__longlong_as_double(static_cast<long long>(bits.download()[0])), 40000);
}

template <class R>
void expectRunsAreAdded()
{
    const std::vector<R> values = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    constexpr int blocks = 3000;
    for (const int first : {0, 1, 3})
        for (const int count : {0, 1, 4, 9}) {
            DeviceArray<R> sums(std::vector<R>(16, 0));
            const auto body = [&values, to = view<R>(sums) + first, count] {
                softAtomicAddRun(to, values.data(), count);
            };
            ASSERT_EQ(launch(blocks, body), cudaSuccess);
            const std::vector<R> added = sums.download();
            for (int k = 0; k < 16; ++k)
                ASSERT_EQ(added[k], k < first || k >= first + count ? 0 : blocks * values[k - first]) << first << count;
        }
}

TEST_F(OrderTest, RunsOfAtomicsLoseNothing)
{
    expectRunsAreAdded<float>();
    expectRunsAreAdded<double>();
}

// A child that forks off while the device's thread sleeps, and ends in the ordinary way.
TEST_F(OrderTest, AForkedChildEnds)
{
    softdevSetEager(true);
    DeviceArray<int> device(1);
    int* inside = view<int>(device);
    ASSERT_EQ(launch(1, [inside] { *inside = 4; }), cudaSuccess);
    giveDeviceTime();
    const pid_t child = fork();
    if (child == 0) {
        alarm(20); // ends a child that hangs
        std::exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(device.download()[0], 4) << "the parent goes on";
}
