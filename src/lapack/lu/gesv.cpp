#include "blas/blas.h"
#include "blas/letters.h"
#include "frame/error_state.h"
#include "frame/exceptions.h"
#include "frame/thread_state.h"
#include "lapack/kernels.h"
#include "lapack/lu/lu.h"
#include "memory/mirrors.h"

#include <algorithm>

namespace tarn::lu {

namespace {

void checkGetrs(char trans, int n, int nrhs, const void* a, int lda, const int* ipiv, const void* b, int ldb)
{
    require(trans == 'N' || trans == 'T' || trans == 'C', -1);
    require(n >= 0, -2);
    require(nrhs >= 0, -3);
    require(lda >= std::max(1, n), -5);
    require(ldb >= std::max(1, n), -8);
    if (n == 0 || nrhs == 0)
        return;
    require(a != nullptr, -4);
    require(ipiv != nullptr, -6);
    require(b != nullptr, -7);
}

} // namespace

void checkGesv(int n, int nrhs, const void* a, int lda, const int* ipiv, const void* b, int ldb)
{
    require(n >= 0, -1);
    require(nrhs >= 0, -2);
    require(lda >= std::max(1, n), -4);
    require(ldb >= std::max(1, n), -7);
    if (n == 0)
        return;
    require(a != nullptr, -3);
    require(ipiv != nullptr, -5);
    require(b != nullptr, -6);
}

template <class T>
void getrs(char trans, int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb)
{
    trans = upper(trans);
    checkGetrs(trans, n, nrhs, a, lda, ipiv, b, ldb);
    if (n == 0 || nrhs == 0)
        return;
    if (trans != 'N')
        featureNotImplemented();

    // B := U^-1 L^-1 P B; the interchanges read their pivots on the host. Pivots that did not arrive would lead a
    // kernel out of the matrix.
    {
        HostMirror<int> pivots({n, 1, 1}, ipiv, n, MirrorIn);
        velk::throwOnCudaError(takePostponedError());
        kernel::LASWP(nrhs, b, ldb, 1, n, pivots.data(), 1);
    }
    blas::trsm('L', 'L', 'N', 'U', n, nrhs, T(1), a, lda, b, ldb);
    blas::trsm('L', 'U', 'N', 'N', n, nrhs, T(1), a, lda, b, ldb);
}

template <class T>
void gesv(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb)
{
    checkGesv(n, nrhs, a, lda, ipiv, b, ldb);
    getrf(n, n, a, lda, ipiv);
    getrs('N', n, nrhs, a, lda, ipiv, b, ldb);
}

template void getrs(char, int, int, float*, int, int*, float*, int);
template void getrs(char, int, int, Complex<float>*, int, int*, Complex<float>*, int);
template void gesv(int, int, float*, int, int*, float*, int);
template void gesv(int, int, Complex<float>*, int, int*, Complex<float>*, int);

} // namespace tarn::lu
