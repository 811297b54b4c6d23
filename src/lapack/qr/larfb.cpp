#include "blas/blas.h"
#include "blas/cublas.h"
#include "blas/letters.h"
#include "frame/exceptions.h"
#include "lapack/kernels.h"
#include "lapack/qr/qr.h"
#include "memory/memory_pool.h"

#include <algorithm>

namespace tarn::qr {

namespace {

void checkLarfb(char& side, char& trans, char& direct, char& storev, int m, int n, int k, const void* v, int ldv,
                const void* t, int ldt, const void* c, int ldc)
{
    side = upper(side);
    trans = upper(trans);
    direct = upper(direct);
    storev = upper(storev);
    require(isOneOf(side, "LR"), -1);
    require(isOneOf(trans, "NTC"), -2);
    require(isOneOf(direct, "FB"), -3);
    require(isOneOf(storev, "CR"), -4);
    require(m >= 0, -5);
    require(n >= 0, -6);
    require(k >= 0, -7);
    if (m == 0 || n == 0 || k == 0)
        return;
    const int rowsOfV = storev == 'R' ? k : side == 'L' ? m : n;
    require(v != nullptr, -8);
    require(ldv >= std::max(1, rowsOfV), -9);
    require(t != nullptr, -10);
    require(ldt >= k, -11);
    require(c != nullptr, -12);
    require(ldc >= std::max(1, m), -13);
}

} // namespace

/// With X the matrix of columns V (storev "C") or V^H ("R"), split into its unit triangle X1 and the rest X2, and C
/// split alike into C1 and C2 along the side on which H stands:
///
///   side "L"   W = C^H X op(T)^H, C := C - X W^H
///   side "R"   W = C X op(T),     C := C - W X^H
template <class T>
void larfb(char side, char trans, char direct, char storev, int m, int n, int k, const T* v, int ldv, const T* t,
           int ldt, T* c, int ldc)
{
    checkLarfb(side, trans, direct, storev, m, n, k, v, ldv, t, ldt, c, ldc);
    if (m == 0 || n == 0 || k == 0)
        return;
    const bool left = side == 'L', columns = storev == 'C', forward = direct == 'F';
    const int p = left ? m : n; // length of a reflector
    const int q = left ? n : m;
    const PoolBlock<T> work = MemoryPool<T>::instance().acquire(std::int64_t(q) * k);
    T* const w = work.data();

    // The triangle comes first in forward order and last in backward order.
    const std::int64_t first = forward ? 0 : p - k, second = forward ? k : 0;
    const std::int64_t alongV = columns ? 1 : ldv, alongC = left ? 1 : ldc;
    const T *const v1 = v + first * alongV, *const v2 = v + second * alongV;
    T *const c1 = c + first * alongC, *const c2 = c + second * alongC;

    const char h = transChar<T>('C');
    const char triangleOfV = columns == forward ? 'L' : 'U', triangleOfT = forward ? 'U' : 'L';
    const char toX = columns ? 'N' : h, toXh = columns ? h : 'N'; // X and X^H from V
    const char opT = (trans == 'N') == left ? h : 'N';
    const bool hasRest = p > k;

    if (left)
        kernel::ConjugateTranspose(w, q, c1, ldc, k, q);
    else
        kernel::CopyMatrix(q, k, w, q, c1, ldc);
    cublas::trmm('R', triangleOfV, toX, 'U', q, k, T(1), v1, ldv, w, q);
    if (hasRest)
        blas::gemm(left ? h : 'N', toX, q, k, p - k, T(1), c2, ldc, v2, ldv, T(1), w, q);
    cublas::trmm('R', triangleOfT, opT, 'N', q, k, T(1), t, ldt, w, q);
    if (hasRest && left)
        blas::gemm(toX, h, p - k, q, k, T(-1), v2, ldv, w, q, T(1), c2, ldc);
    else if (hasRest)
        blas::gemm('N', toXh, q, p - k, k, T(-1), w, q, v2, ldv, T(1), c2, ldc);
    cublas::trmm('R', triangleOfV, toXh, 'U', q, k, T(1), v1, ldv, w, q);
    if (left)
        kernel::SubtractMatrix('N', 'C', k, q, c1, ldc, w, q);
    else
        kernel::SubtractMatrix('N', 'N', q, k, c1, ldc, w, q);
}

template void larfb(char, char, char, char, int, int, int, const float*, int, const float*, int, float*, int);
template void larfb(char, char, char, char, int, int, int, const Complex<float>*, int, const Complex<float>*, int,
                    Complex<float>*, int);

} // namespace tarn::qr
