// symv and hemv.
#include "blas/blas.h"
#include "blas/checks.h"
#include "blas/cublas.h"
#include "frame/device_table.h"
#include "frame/error_state.h"
#include "lapack/kernels.h"
#include "memory/memory_pool.h"

namespace tarn::blas {

namespace {

constexpr int kernelFrom = 1200;
constexpr int atomicsFrom = 20; ///< capability with atomic additions of floats in global memory

/// The kernel path: partial sums meet in y by atomic additions, or in a workspace where the device has none.
template <class T>
void multiplyByKernel(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    if (currentCapability() >= atomicsFrom) {
        kernel::symv(uplo, n, alpha, a, lda, x, incx, beta, y, incy, static_cast<T*>(nullptr));
        return;
    }
    const PoolBlock<T> work = MemoryPool<T>::instance().acquire(kernel::symvWorkspace(n));
    kernel::symv(uplo, n, alpha, a, lda, x, incx, beta, y, incy, work.data());
    // The next user of the block may be on another stream.
    velk::throwOnCudaError(cudaDeviceSynchronize());
}

} // namespace

template <class T>
void symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    checkSymv(uplo, n, a, lda, x, incx, y, incy);
    if (n >= kernelFrom)
        multiplyByKernel(uplo, n, alpha, a, lda, x, incx, beta, y, incy);
    else
        cublas::symv(uplo, n, alpha, a, lda, x, incx, beta, y, incy);
}

template <class T>
void hemv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    checkSymv(uplo, n, a, lda, x, incx, y, incy);
    if (n >= kernelFrom)
        multiplyByKernel(uplo, n, alpha, a, lda, x, incx, beta, y, incy);
    else
        cublas::hemv(uplo, n, alpha, a, lda, x, incx, beta, y, incy);
}

#define TARN_SYMV(name, T) template void name(char, int, T, const T*, int, const T*, int, T, T*, int);

TARN_SYMV(symv, float)
TARN_SYMV(symv, double)
TARN_SYMV(hemv, Complex<float>)
TARN_SYMV(hemv, Complex<double>)

} // namespace tarn::blas
