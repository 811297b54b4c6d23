// Mirrors: what they copy in and back, and when they keep their hands off the caller's array.
#include "frame/device_table.h"
#include "frame/error_state.h"
#include "frame/machine.h"
#include "memory/matrix_view.h"
#include "memory/mirrors.h"
#include "support/matrix.h"

#include <gtest/gtest.h>

#include <numeric>
#include <optional>

namespace {

using namespace test;

class Mirrors : public testing::Test
{
protected:
    void SetUp() override { tarn::bindThreadDevice(); }
};

class MirrorCalls : public OnMachine
{
protected:
    void TearDown() override
    {
        OnMachine::TearDown();
        EXPECT_EQ(softdevLive().allocations, 0u);
    }
};

/// The rows by cols elements at p as the device holds them, packed.
template <class T>
std::vector<T> onDevice(const T* p, int rows, int cols, int ld)
{
    std::vector<T> host(std::size_t(rows) * cols);
    EXPECT_EQ(
        cudaMemcpy2D(host.data(), sizeof(T) * rows, p, sizeof(T) * ld, sizeof(T) * rows, cols, cudaMemcpyDeviceToHost),
        cudaSuccess);
    return host;
}

/// Sets rows by cols elements on the device from a packed array.
template <class T>
void setOnDevice(T* p, int rows, int cols, int ld, const std::vector<T>& host)
{
    EXPECT_EQ(
        cudaMemcpy2D(p, sizeof(T) * ld, host.data(), sizeof(T) * rows, sizeof(T) * rows, cols, cudaMemcpyHostToDevice),
        cudaSuccess);
}

template <class T>
std::vector<T> numbers(int n, int first = 1)
{
    std::vector<T> x;
    for (int k = 0; k < n; ++k)
        x.push_back(T(first + k));
    return x;
}

TEST_F(Mirrors, MatricesGoInAndBackByTheirFlags)
{
    using T = tarn::Complex<double>;
    for (const unsigned flags : {0u, unsigned(MirrorIn), unsigned(MirrorOut), MirrorIn | MirrorOut}) {
        SCOPED_TRACE(flags);
        auto host = Matrix<T>::random(5, 3, 7);
        const auto before = host;
        {
            DeviceMirror<T> mirror({5, 3, 1}, host.data(), host.ld, flags);
            EXPECT_EQ(mirror.flags(), flags);
            EXPECT_EQ(mirror.data() != nullptr, flags != 0);
            if (flags == 0)
                continue;
            EXPECT_EQ(mirror.deviceLd(), tarn::leadingDimensionFor<T>(5));
            if (flags & MirrorIn) {
                const auto copied = onDevice(mirror.data(), 5, 3, mirror.deviceLd());
                for (int j = 0; j < 3; ++j)
                    for (int i = 0; i < 5; ++i)
                        EXPECT_EQ(copied[5 * j + i], before(i, j));
            }
            setOnDevice(mirror.data(), 5, 3, mirror.deviceLd(), numbers<T>(15));
        }
        EXPECT_TRUE(host.paddingIntact());
        if (flags & MirrorOut)
            for (int k = 0; k < 15; ++k)
                EXPECT_EQ(host(k % 5, k / 5), T(1 + k));
        else
            EXPECT_TRUE(identical(host, before));
    }
}

TEST_F(MirrorCalls, NothingIsMirroredWithoutElementsOrFlags)
{
    float x = 1;
    softdevLogStart();
    {
        DeviceMirror<float> noRows({0, 5, 1}, &x, 1, MirrorIn | MirrorOut), noColumns({5, 0, 1}, &x, 5, MirrorOut);
        DeviceMirror<float> noFlags({5, 5, 1}, &x, 5, 0);
        DeviceVectorMirror<float> noVector(0, &x, 3, MirrorIn);
        HostMirror<float> noPivots({0, 1, 1}, &x, 1, MirrorIn | MirrorOut);
        EXPECT_EQ(noRows.data(), nullptr);
        EXPECT_EQ(noRows.flags(), 0u);
        EXPECT_EQ(noRows.deviceLd(), 1);
        EXPECT_GE(noColumns.deviceLd(), 5) << "legal for five rows";
        EXPECT_EQ(noFlags.data(), nullptr);
        EXPECT_EQ(noVector.data(), nullptr);
    }
    EXPECT_TRUE(softdevLogTake().empty());
}

TEST_F(MirrorCalls, OutOnlyDoesNotSendTheOldContents)
{
    std::vector<float> host(100, 1);
    softdevLogStart();
    {
        DeviceMirror<float> mirror({10, 10, 1}, host.data(), 10, MirrorOut);
        EXPECT_EQ(countCalls(softdevLogTake(), "cudaMemcpy2D"), 0);
        setOnDevice(mirror.data(), 10, 10, mirror.deviceLd(), numbers<float>(100));
    }
    EXPECT_EQ(host, numbers<float>(100));

    softdevLogStart();
    {
        std::vector<float> packed(192 * 2);
        DeviceMirror<float> mirror({192, 2, 1}, packed.data(), 192, MirrorIn | MirrorOut);
    }
    const auto log = softdevLogTake();
    EXPECT_EQ(countCalls(log, "cudaMemcpy"), 2) << "where the leading dimensions agree a matrix is one linear copy";
    EXPECT_EQ(countCalls(log, "cudaMemcpy2D"), 0);
}

TEST_F(Mirrors, FailedRoutinesAndExceptionsKeepTheCallersArray)
{
    std::vector<float> host = numbers<float>(6);
    const auto spoil = [](const DeviceMirror<float>& mirror) {
        setOnDevice(mirror.data(), 3, 2, mirror.deviceLd(), std::vector<float>(6, 99.f));
    };
    const auto mirrorOf = [&] { return std::optional<DeviceMirror<float>>(); };

    auto failing = mirrorOf();
    tarn::enterRoutine();
    failing.emplace(Extent{3, 2, 1}, host.data(), 3, MirrorIn | MirrorOut);
    spoil(*failing);
    tarn::markFailed();
    failing.reset();
    tarn::leaveRoutine();
    EXPECT_EQ(host, numbers<float>(6));

    try {
        DeviceMirror<float> mirror({3, 2, 1}, host.data(), 3, MirrorIn | MirrorOut);
        spoil(mirror);
        throw 1;
    } catch (int) {
        EXPECT_EQ(host, numbers<float>(6));
        // Not unwinding any more: a mirror of a handler works as any other.
        DeviceMirror<float> mirror({3, 2, 1}, host.data(), 3, MirrorIn | MirrorOut);
        spoil(mirror);
    }
    EXPECT_EQ(host, std::vector<float>(6, 99.f));
}

TEST_F(Mirrors, VectorsAreGatheredAndScattered)
{
    for (const int incx : {1, 3, -2}) {
        SCOPED_TRACE(incx);
        const int step = std::abs(incx), n = 5;
        std::vector<double> host = numbers<double>(step * n);
        {
            DeviceVectorMirror<double> mirror(n, host.data(), incx, MirrorIn | MirrorOut);
            EXPECT_EQ(mirror.deviceInc(), incx > 0 ? 1 : -1);
            std::vector<double> gathered = onDevice(mirror.data(), n, 1, n);
            for (int k = 0; k < n; ++k)
                EXPECT_EQ(gathered[k], 1 + step * k);
            setOnDevice(mirror.data(), n, 1, n, numbers<double>(n, 100));
        }
        for (int k = 0; k < step * n; ++k)
            EXPECT_EQ(host[k], k % step == 0 ? 100 + k / step : 1 + k);
    }
}

TEST_F(Mirrors, HostMirrorsLookAtTheCallersDeviceArray)
{
    const DeviceArray<int> device(numbers<int>(4 * 3));
    const Extent inside{2, 3, 1}; // of leading dimension 4
    {
        HostMirror<int> mirror(inside, device.data(), 4, MirrorIn);
        EXPECT_EQ(std::vector<int>(mirror.data(), mirror.data() + 6), (std::vector<int>{1, 2, 5, 6, 9, 10}));
        mirror.data()[0] = 99;
    }
    EXPECT_EQ(device.download(), numbers<int>(12)) << "without MirrorOut nothing goes back";

    tarn::enterRoutine();
    {
        HostMirror<int> mirror(inside, device.data(), 4, MirrorOut);
        for (int k = 0; k < 6; ++k)
            mirror.data()[k] = 100 + k;
        tarn::markFailed();
    }
    tarn::leaveRoutine();
    EXPECT_EQ(device.download(), (std::vector<int>{100, 101, 3, 4, 102, 103, 7, 8, 104, 105, 11, 12}))
        << "pivots reach the caller even if the routine failed";
}

TEST_F(MirrorCalls, AHostMirrorThatCannotCopyBackFailsTheRoutine)
{
    const DeviceArray<int> device(4);
    tarn::enterRoutine();
    softdevFailCall("cudaMemcpy", 1, 719);
    {
        HostMirror<int> mirror({4, 1, 1}, device.data(), 4, MirrorOut);
    }
    try {
        tarn::finishRoutine();
        ADD_FAILURE();
    } catch (const velk::CudaRuntimeException& failure) {
        EXPECT_EQ(failure.code(), 719);
    }
    EXPECT_NO_THROW(tarn::finishRoutine());
    tarn::leaveRoutine();
}

TEST(Views, AreOneBasedAndWide)
{
    float x[1];
    const MatrixView<float> A{x, 10, 10, 12};
    EXPECT_EQ(A.at(1, 1), x);
    EXPECT_EQ(A.at(2, 1) - x, 1);
    EXPECT_EQ(A.at(1, 2) - x, 12);
    EXPECT_EQ((VectorView<float>{x, 5}.at(4) - x), 3);
    // Element (70000, 70000) of a matrix of order 70000 lies beyond what 32 bits can count.
    char* const base = reinterpret_cast<char*>(4096);
    const MatrixView<char> large{base, 70000, 70000, 70000};
    EXPECT_EQ(large.at(70000, 70000) - base, 70000ll * 70000 - 1);
    EXPECT_EQ(count({70000, 70000, 1}), 70000ll * 70000);
}

} // namespace
