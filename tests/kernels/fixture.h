// What the tests of the device modules share: the element types, the device, and comparisons with plain loops.
#pragma once

#include "frame/device_table.h"
#include "frame/exceptions.h"
#include "support/device.h"
#include "support/matrix.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

namespace test {

/// True in the build that checks for races, where kernels are slow: sizes that add no new case are left out there.
#ifdef __SANITIZE_THREAD__
inline constexpr bool raceChecked = true;
#else
inline constexpr bool raceChecked = false;
#endif

/// Info of the argument error that the call raises, 1 if it raises nothing.
inline int infoOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const tarn::InfoException& failure) {
        EXPECT_EQ(failure.status(), tarnArgumentError);
        return failure.info();
    }
    return 1;
}

inline float conjugate(float x) { return x; }
inline double conjugate(double x) { return x; }
template <class R>
tarn::Complex<R> conjugate(tarn::Complex<R> x)
{
    return {x.real(), -x.imag()};
}

template <class T>
class KernelTest : public testing::Test
{
protected:
    void SetUp() override { tarn::bindThreadDevice(); }
    void TearDown() override
    {
        EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
        EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    }
};

using ElementTypes = testing::Types<float, double, tarn::Complex<float>, tarn::Complex<double>>;

/// Shapes on and off the 16 by 16 tile.
constexpr std::pair<int, int> shapes[] = {{1, 1}, {16, 16}, {17, 33}, {33, 17}, {257, 17}, {17, 257}, {64, 48}};

/// Downloads a matrix from where `upload` put it.
template <class T>
void download(Matrix<T>& A, const DeviceArray<T>& device)
{
    A.elements() = device.download();
}

/// device(a, lda) on a random m by n matrix must do what host(A) does to the matrix, bit by bit, and leave alone the
/// padding and two tiles of columns behind the last.
template <class T, class OnDevice, class OnHost>
void expectSame(int m, int n, const OnDevice& device, const OnHost& host)
{
    SCOPED_TRACE(testing::Message() << m << " x " << n);
    auto A = Matrix<T>::random(m, n + 32, m + 3, unsigned(m + n)), expected = A;
    const DeviceArray<T> a(A.elements());
    device(a.data(), A.ld);
    download(A, a);
    expected.n = n;
    host(expected);
    EXPECT_TRUE(identical(A, expected));
}

/// f(i, j, A(i, j)) for every element.
template <class T, class F>
void visit(Matrix<T>& A, const F& f)
{
    for (int j = 0; j < A.n; ++j)
        for (int i = 0; i < A.m; ++i)
            f(i, j, A(i, j));
}

} // namespace test
