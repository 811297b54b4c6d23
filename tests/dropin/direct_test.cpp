// The library's own CPU work: nothing in the process can stand before it. This program has routines of those names.
#include "dropin/fortran.h"
#include "support/api.h"
#include "support/device.h"
#include "support/residuals.h"

#include <dlfcn.h>

#include <atomic>

namespace {

using namespace test;

std::atomic<int> asked{0};

/// Stands before the routine `name` and answers with it, as the drop-in library does.
template <class Routine, class... Args>
void standBefore(const char* name, Args... args)
{
    ++asked;
    reinterpret_cast<Routine*>(dlsym(RTLD_NEXT, name))(args...);
}

} // namespace

extern "C" TARN_API void sgetrf_(Ints m, Ints n, float* a, Ints lda, int* ipiv, int* info)
{
    standBefore<Getrf>("sgetrf_", m, n, a, lda, ipiv, info);
}

extern "C" TARN_API void sgemm_(const char* ta, const char* tb, Ints m, Ints n, Ints k, const float* alpha,
                                const float* a, Ints lda, const float* b, Ints ldb, const float* beta, float* c,
                                Ints ldc, std::size_t la, std::size_t lb)
{
    standBefore<Gemm>("sgemm_", ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, la, lb);
}

namespace {

TEST(Direct, PanelsAndProductsAskTheCpuLapackItself)
{
    const Initialized library;
    const int n = 300;
    Matrix<float> A = Matrix<float>::random(n, n, n), B = A, C(n, n);
    std::vector<int> pivots(n);
    const Matrix<float> before = A;
    EXPECT_EQ(tarnSgemm('N', 'N', n, n, n, 1, A.data(), n, B.data(), n, 0, C.data(), n), tarnNoError);
    EXPECT_EQ(tarnSgetrf(n, n, A.data(), n, pivots.data()), tarnNoError);
    EXPECT_LT(luRatio(before, A, pivots), 30);
    EXPECT_EQ(asked, 0);
    // That the names of this program come first for everyone else is what makes this a test.
    void* const process = dlopen(nullptr, RTLD_NOW);
    EXPECT_EQ(dlsym(process, "sgetrf_"), reinterpret_cast<void*>(&sgetrf_));
}

} // namespace
