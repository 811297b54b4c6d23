#include "blas/cublas.h"
#include "frame/exceptions.h"
#include "lapack/kernels.h"
#include "lapack/qr/qr.h"
#include "memory/matrix_view.h"
#include "memory/memory_pool.h"

#include <algorithm>

namespace tarn::qr {

namespace {

/// On the arguments of ggrqf.
void checkGgrqf(int p, int m, int n, const void* b, int ldb, const void* taub, const void* a, int lda, const void* taua)
{
    require(p >= 0, -1);
    require(m >= 0, -2);
    require(n >= 0, -3);
    require(ldb >= std::max(1, p), -5);
    require(lda >= std::max(1, m), -8);
    if (n == 0)
        return;
    require(p == 0 || b != nullptr, -4);
    require(p == 0 || taub != nullptr, -6);
    require(m == 0 || a != nullptr, -7);
    require(m == 0 || taua != nullptr, -9);
}

/// Solves A X = B for an upper triangular A, one right-hand side; a singular A raises a data error with this info.
template <class T>
void solveOr(tarnInfo infoIfSingular, int n, const T* a, int lda, T* b)
{
    try {
        trtrs('U', 'N', 'N', n, 1, a, lda, b, n);
    } catch (const InfoException& failure) {
        if (failure.info() > 0)
            dataError(infoIfSingular);
        throw;
    }
}

} // namespace

void checkGglse(int m, int n, int p, const void* a, int lda, const void* b, int ldb, const void* c, const void* d,
                const void* x)
{
    require(m >= 0, -1);
    require(n >= 0, -2);
    require(p >= 0 && p <= n && p >= n - m, -3);
    require(lda >= std::max(1, m), -5);
    require(ldb >= std::max(1, p), -7);
    if (n == 0)
        return;
    require(a != nullptr, -4);
    require(p == 0 || b != nullptr, -6);
    require(c != nullptr, -8);
    require(p == 0 || d != nullptr, -9);
    require(x != nullptr, -10);
}

template <class T>
void ggrqf(int p, int m, int n, T* b, int ldb, T* taub, T* a, int lda, T* taua)
{
    checkGgrqf(p, m, n, b, ldb, taub, a, lda, taua);
    const MatrixView<T> B{b, p, n, ldb};
    gerqf(p, n, b, ldb, taub);
    ormrq('R', 'C', m, n, std::min(p, n), B.at(std::max(1, p - n + 1), 1), ldb, taub, a, lda);
    geqrf(m, n, a, lda, taua);
}

/// With B = (0 T) Q and A Q^H = Z R, x = Q^H y: the constraints T y2 = d determine the last p elements of y, and the
/// first n - p rows of R the others, from R11 y1 = c1 - R12 y2 where c stands for Z^H c.
template <class T>
void gglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x)
{
    checkGglse(m, n, p, a, lda, b, ldb, c, d, x);
    if (n == 0)
        return;
    const int free = n - p;
    const PoolBlock<T> taub = MemoryPool<T>::instance().acquire(p);
    const PoolBlock<T> taua = MemoryPool<T>::instance().acquire(std::min(m, n));
    const MatrixView<T> A{a, m, n, lda}, B{b, p, n, ldb};

    // What a data error leaves of x is zero, not what the memory held before.
    kernel::SetVectorZero(n, x, 1);
    ggrqf(p, m, n, b, ldb, taub.data(), a, lda, taua.data());
    ormqr('L', 'C', m, 1, std::min(m, n), a, lda, taua.data(), c, std::max(1, m));

    if (p > 0) {
        solveOr(1, p, B.at(1, free + 1), ldb, d);
        cublas::copy(p, d, 1, x + free, 1);
        cublas::gemv('N', free, p, T(-1), A.at(1, free + 1), lda, d, 1, T(1), c, 1);
    }
    if (free > 0) {
        solveOr(2, free, a, lda, c);
        cublas::copy(free, c, 1, x, 1);
    }

    // Residual: c2 - R22 y2, where R22 is trapezoidal if m < n.
    const int nr = m < n ? m - free : p;
    T* const c2 = c + free;
    if (m < n && nr > 0)
        cublas::gemv('N', nr, n - m, T(-1), A.at(free + 1, m + 1), lda, d + nr, 1, T(1), c2, 1);
    if (nr > 0) {
        cublas::trmv('U', 'N', 'N', nr, A.at(free + 1, free + 1), lda, d, 1);
        cublas::axpy(nr, T(-1), d, 1, c2, 1);
    }

    ormrq('L', 'C', n, 1, p, b, ldb, taub.data(), x, n);
}

template void ggrqf(int, int, int, float*, int, float*, float*, int, float*);
template void ggrqf(int, int, int, Complex<float>*, int, Complex<float>*, Complex<float>*, int, Complex<float>*);
template void gglse(int, int, int, float*, int, float*, int, float*, float*, float*);
template void gglse(int, int, int, Complex<float>*, int, Complex<float>*, int, Complex<float>*, Complex<float>*,
                    Complex<float>*);

} // namespace tarn::qr
