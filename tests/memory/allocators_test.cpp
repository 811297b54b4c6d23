// Leading dimensions, the copies of each kind of memory, and the handle that owns a block.
#include "frame/device_table.h"
#include "frame/error_state.h"
#include "frame/machine.h"
#include "frame/tuning.h"
#include "memory/allocators.h"
#include "memory/managed_memory.h"
#include "support/matrix.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

using namespace test;
using C = tarn::Complex<float>;
using Z = tarn::Complex<double>;

class LeadingDimension : public OnMachine
{
protected:
    static void use(DeviceKind device)
    {
        ASSERT_EQ(cudaSetDevice(device), cudaSuccess);
        tarn::bindThreadDevice();
    }
};

TEST_F(LeadingDimension, WorkedRows)
{
    use(firstGeneration);
    EXPECT_EQ(tarn::leadingDimensionFor<float>(512), 512);
    EXPECT_EQ(tarn::leadingDimensionFor<float>(384), 416);
    EXPECT_EQ(tarn::leadingDimensionFor<int>(384), 416);
    EXPECT_EQ(tarn::leadingDimensionFor<double>(192), 240);
    EXPECT_EQ(tarn::leadingDimensionFor<C>(192), 224);
    EXPECT_EQ(tarn::leadingDimensionFor<Z>(96), 144);
    use(modern);
    EXPECT_EQ(tarn::leadingDimensionFor<float>(1), 96);
    EXPECT_EQ(tarn::leadingDimensionFor<float>(1000), 1056);
    EXPECT_EQ(tarn::leadingDimensionFor<float>(1500), 1632);
    EXPECT_EQ(tarn::leadingDimensionFor<int>(512), 544);
    EXPECT_EQ(tarn::leadingDimensionFor<double>(256), 320);
    EXPECT_EQ(tarn::leadingDimensionFor<C>(256), 320);
    EXPECT_EQ(tarn::leadingDimensionFor<Z>(128), 160);
}

template <class T>
void expectAlignedOffTheStride(int strideBytes)
{
    const int align = tarn::baseBlockSize<T>(tarn::currentCapability());
    for (int rows = 1; rows <= 3000; ++rows) {
        const int ld = tarn::leadingDimensionFor<T>(rows);
        ASSERT_GE(ld, rows);
        ASSERT_LT(ld - rows, 2 * align) << rows;
        ASSERT_EQ(ld % align, 0) << rows;
        ASSERT_NE(ld * sizeof(T) % strideBytes, 0u) << rows;
    }
}

TEST_F(LeadingDimension, IsAlignedAndOffTheStrideForAllRows)
{
    for (const auto& [device, stride] : {std::pair{firstGeneration, 1536}, {modern, 2048}}) {
        use(device);
        expectAlignedOffTheStride<float>(stride);
        expectAlignedOffTheStride<double>(stride);
        expectAlignedOffTheStride<C>(stride);
        expectAlignedOffTheStride<Z>(stride);
        expectAlignedOffTheStride<int>(stride);
    }
}

/// An allocator and its element type.
template <class A, class E>
struct Kind
{
    using Allocator = A;
    using T = E;
};

using Kinds = testing::Types<Kind<velk::CudaAllocator<float>, float>, Kind<velk::CudaAllocator<unsigned>, unsigned>,
                             Kind<velk::CudaPitchAllocator<C>, C>, Kind<tarn::BlasAllocator<double>, double>,
                             Kind<tarn::BlasAllocator<Z>, Z>, Kind<tarn::BlasAllocator<int>, int>,
                             Kind<velk::PageLockedAllocator<float>, float>, Kind<velk::PageLockedAllocator<C>, C>>;

/// An allocation of 7 rows, 5 columns and 2 slices.
template <class K>
class Allocator : public testing::Test
{
protected:
    using Element = typename K::T;

    void SetUp() override
    {
        tarn::bindThreadDevice();
        memory = allocator.allocate(extent);
    }
    void TearDown() override { allocator.release(memory, count(extent)); }

    static std::vector<Element> numbers(int n, int first)
    {
        std::vector<Element> x;
        for (int k = 0; k < n; ++k)
            x.push_back(Element(first + k));
        return x;
    }

    std::vector<Element> whole()
    {
        std::vector<Element> x(count(extent));
        allocator.copyOut(x.data(), memory, extent);
        return x;
    }

    BlockPitch pitch(int cols = 5)
    {
        const std::int64_t ld = allocator.pitch(extent);
        return {ld, ld * cols};
    }

    const Extent extent{7, 5, 2};
    typename K::Allocator allocator;
    Element* memory = nullptr;
};

TYPED_TEST_SUITE(Allocator, Kinds);

TYPED_TEST(Allocator, WholeAndRunCopiesCrossColumnsAndSlices)
{
    using Elements = std::vector<typename TypeParam::T>;
    EXPECT_GE(this->allocator.pitch(this->extent), 7);
    Elements expected = this->numbers(70, 1);
    this->allocator.copyIn(this->memory, expected.data(), this->extent);
    EXPECT_EQ(this->whole(), expected);

    for (const auto& [first, length] : {std::pair{9, 30}, {0, 1}, {6, 2}, {69, 1}, {14, 7}, {0, 70}}) {
        SCOPED_TRACE(testing::Message() << first << ", " << length);
        const Elements run = this->numbers(length, 1000 + first);
        this->allocator.copyInRange(this->memory, run.data(), this->extent, first, length);
        std::copy(run.begin(), run.end(), expected.begin() + first);
        EXPECT_EQ(this->whole(), expected);
        Elements back(length);
        this->allocator.copyOutRange(back.data(), this->memory, this->extent, first, length);
        EXPECT_EQ(back, run);
    }
}

TYPED_TEST(Allocator, BlockCopiesTouchTheBlockOnly)
{
    using Elements = std::vector<typename TypeParam::T>;
    Elements expected = this->numbers(70, 1);
    this->allocator.copyIn(this->memory, expected.data(), this->extent);

    // A 3 by 2 by 2 block at row 4, column 1, from an array of leading dimension 5 with 3 columns per slice.
    const Elements host = this->numbers(30, 500);
    auto* const corner = this->memory + 4 + this->allocator.pitch(this->extent);
    this->allocator.copyInBlock(corner, this->pitch(), host.data(), {5, 15}, {3, 2, 2});
    for (int slice = 0; slice < 2; ++slice)
        for (int j = 0; j < 2; ++j)
            for (int i = 0; i < 3; ++i)
                expected[35 * slice + 7 * (j + 1) + i + 4] = host[15 * slice + 5 * j + i];
    EXPECT_EQ(this->whole(), expected);

    Elements back = this->numbers(30, 900), block = back;
    for (int slice = 0; slice < 2; ++slice)
        for (int j = 0; j < 2; ++j)
            for (int i = 0; i < 3; ++i)
                block[15 * slice + 5 * j + i] = host[15 * slice + 5 * j + i];
    this->allocator.copyOutBlock(back.data(), {5, 15}, corner, this->pitch(), {3, 2, 2});
    EXPECT_EQ(back, block);
}

class AllocatorCalls : public OnMachine
{};

TEST_F(AllocatorCalls, EachKindMakesItsOwn)
{
    const Extent extent{100, 3, 2};
    velk::CudaAllocator<double> packed;
    velk::CudaPitchAllocator<C> pitched;
    tarn::BlasAllocator<float> blas;
    velk::PageLockedAllocator<float> pageLocked;
    softdevLogStart();
    packed.release(packed.allocate(extent), 600);
    pitched.release(pitched.allocate(extent), 600);
    blas.release(blas.allocate(extent), 600);
    float* const memory = pageLocked.allocate(extent);
    std::vector<float> host(600);
    pageLocked.copyIn(memory, host.data(), extent);
    pageLocked.copyInBlock(memory, {100, 300}, host.data(), {50, 150}, {20, 3, 1});
    pageLocked.copyOutRange(host.data(), memory, extent, 7, 200);
    pageLocked.release(memory, 600);

    std::vector<std::string> names;
    std::vector<long long> sizes;
    for (const SoftdevCall& call : softdevLogTake())
        if (call.name.rfind("cudaGet", 0) != 0) {
            names.push_back(call.name);
            sizes.push_back(call.ints.back());
        }
    EXPECT_EQ(names, (std::vector<std::string>{"cudaMalloc", "cudaFree", "cudaMallocPitch", "cudaFree", "cudaMalloc",
                                               "cudaFree", "cudaMallocHost", "cudaFreeHost"}));
    EXPECT_EQ(sizes[0], 600 * 8);
    EXPECT_EQ(sizes[2], 6) << "the height";
    EXPECT_EQ(sizes[4], 192 * 6 * 4);
    EXPECT_EQ(sizes[6], 600 * 4);
    EXPECT_EQ(blas.pitch(extent), 192);
    EXPECT_EQ(packed.pitch(extent), 100);
}

TEST_F(AllocatorCalls, FailuresAreRaisedByTheirKind)
{
    velk::CudaAllocator<float> packed;
    velk::CudaPitchAllocator<float> pitched;
    velk::PageLockedAllocator<float> pageLocked;
    const Extent extent{4, 4, 1};
    softdevFailCall("cudaMalloc", 1, 2);
    try {
        packed.allocate(extent);
        FAIL();
    } catch (const velk::CudaMemoryException& failure) {
        EXPECT_STREQ(failure.what(), "out of memory");
    }
    softdevFailCall("cudaMallocPitch", 1, 32);
    EXPECT_THROW(pitched.allocate(extent), velk::CudaMemoryException);
    softdevFailCall("cudaMallocHost", 1, 801);
    try {
        pageLocked.allocate(extent);
        FAIL();
    } catch (const velk::CudaRuntimeException& failure) {
        EXPECT_EQ(failure.code(), 801);
        EXPECT_STREQ(failure.what(), "operation not supported");
    }

    // An error that is left over from earlier work is raised before the call is made.
    EXPECT_NE(cudaSetDevice(99), cudaSuccess);
    softdevLogStart();
    EXPECT_THROW(packed.allocate(extent), velk::CudaRuntimeException);
    EXPECT_EQ(countCalls(softdevLogTake(), "cudaMalloc"), 0);
    EXPECT_EQ(softdevLive().allocations, 0u);
}

using Managed = velk::ManagedMemory<float, tarn::BlasAllocator<float>>;

TEST(ManagedMemory, CopiesShareTheBlockAndOffsetsAreZeroBased)
{
    tarn::bindThreadDevice();
    Managed memory;
    EXPECT_TRUE(memory.empty());
    EXPECT_EQ(memory.data(), nullptr);
    std::vector<float> packed(12);
    std::iota(packed.begin(), packed.end(), 1.f);
    memory.reset({4, 3, 1}, packed.data());
    EXPECT_EQ(memory.size(), 12);
    EXPECT_EQ(memory.ld(), tarn::leadingDimensionFor<float>(4));
    EXPECT_FALSE(memory.isShared());

    Managed other = memory;
    EXPECT_TRUE(memory.isShared());
    const float block[] = {100, 101, -1, 102, 103, -1};
    other.upload(block, 2, 2, 3, 1, 1);
    other = {};
    EXPECT_FALSE(memory.isShared());
    std::vector<float> back(15, -5.f);
    memory.download(back.data(), 4, 3, 5);
    EXPECT_EQ(back, (std::vector<float>{1, 2, 3, 4, -5, 5, 100, 101, 8, -5, 9, 102, 103, 12, -5}));
    memory.download(back.data(), 1, 2, 1, 3, 1);
    EXPECT_EQ(back[0], 8);
    EXPECT_EQ(back[1], 12);
}

TEST_F(AllocatorCalls, ManagedMemoryReleasesBeforeItAllocates)
{
    const std::size_t bytes = sizeof(float) * 96 * 10;
    softdevResetPeak();
    {
        Managed memory;
        memory.reset({10, 10, 1});
        memory.reset({11, 10, 1});
        EXPECT_EQ(softdevLive().bytes, bytes);
        EXPECT_EQ(softdevLive().peakBytes, bytes) << "never two blocks at once";

        softdevFailCall("cudaMalloc", 1, 2);
        EXPECT_THROW(memory.reset({10, 10, 1}), velk::CudaMemoryException);
        EXPECT_TRUE(memory.empty());
        EXPECT_EQ(softdevLive().allocations, 0u);

        memory.reset({10, 10, 1});
        const Managed keeper = memory;
        memory.reset({0, 10, 1});
        EXPECT_TRUE(memory.empty());
        EXPECT_EQ(softdevLive().allocations, 1u);

        Managed looker;
        looker.reset({5, 5, 1}, keeper.data(), true);
        EXPECT_EQ(looker.data(), keeper.data());
        looker.reset({10, 10, 1});
        EXPECT_EQ(softdevLive().allocations, 2u) << "a foreign block is not freed";
    }
    EXPECT_EQ(softdevLive().allocations, 0u);
}

} // namespace
