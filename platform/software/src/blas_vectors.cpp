/// The matrix-vector and vector routines of cuBLAS.

#include "blas_call.h"
#include "cublas_v2.h"
#include "fortran_blas.h"

using namespace tarn::soft;

namespace {

/// Writes zeros into y. A CPU BLAS may compute 0 * y where beta is 0, which keeps a NaN; cuBLAS does not read y then.
template <class T>
void clear(T* y, int n, int inc)
{
    const std::int64_t step = std::abs(std::int64_t{inc});
    for (std::int64_t i = 0; i < n; ++i)
        y[i * step] = T{};
}

/// y = alpha A x + beta y for a product that `multiply(beta)` computes.
template <class T, class Multiply>
cublasStatus_t submitProduct(BlasArguments& args, double elements, T beta, T* y, int n, int incy, Multiply multiply)
{
    return args.submit(elements, [=] {
        if (isZero(beta))
            clear(y, n, incy);
        multiply();
    });
}

template <class T, class Fortran>
cublasStatus_t gemv(const char* name, Fortran* fortran, cublasHandle_t handle, cublasOperation_t trans, int m, int n,
                    const T* alphaPtr, const T* A, int lda, const T* x, int incx, const T* betaPtr, T* y, int incy)
{
    const BlasCall call(name, handle, trans, m, n, scalar(alphaPtr), A, lda, x, incx, scalar(betaPtr), y, incy);
    return call.compute(handle, [&](BlasArguments& args) {
        const char t = letter(trans);
        args.require(t);
        args.dimensions(m, n);
        const T alpha = args.scalar(alphaPtr), beta = args.scalar(betaPtr);
        const bool empty = m == 0 || n == 0;
        const int nx = trans == CUBLAS_OP_N ? n : m, ny = trans == CUBLAS_OP_N ? m : n;
        const T* a = args.matrix(A, m, n, lda);
        const T* in = args.vector(x, empty ? 0 : nx, incx);
        T* out = args.vector(y, empty ? 0 : ny, incy);
        if (empty)
            return args.nothing();
        return submitProduct(args, double(m) * n, beta, out, ny, incy,
                             [=] { fortran(&t, &m, &n, &alpha, a, &lda, in, &incx, &beta, out, &incy, 1); });
    });
}

/// symv and hemv.
template <class T, class Fortran>
cublasStatus_t symv(const char* name, Fortran* fortran, cublasHandle_t handle, cublasFillMode_t uplo, int n,
                    const T* alphaPtr, const T* A, int lda, const T* x, int incx, const T* betaPtr, T* y, int incy)
{
    const BlasCall call(name, handle, uplo, n, scalar(alphaPtr), A, lda, x, incx, scalar(betaPtr), y, incy);
    return call.compute(handle, [&](BlasArguments& args) {
        const char u = letter(uplo);
        args.require(u);
        args.dimensions(n, n);
        const T alpha = args.scalar(alphaPtr), beta = args.scalar(betaPtr);
        const T* a = args.matrix(A, n, n, lda);
        const T* in = args.vector(x, n, incx);
        T* out = args.vector(y, n, incy);
        if (n == 0)
            return args.nothing();
        return submitProduct(args, double(n) * n, beta, out, n, incy,
                             [=] { fortran(&u, &n, &alpha, a, &lda, in, &incx, &beta, out, &incy, 1); });
    });
}

template <class T, class Fortran>
cublasStatus_t trmv(const char* name, Fortran* fortran, cublasHandle_t handle, cublasFillMode_t uplo,
                    cublasOperation_t trans, cublasDiagType_t diag, int n, const T* A, int lda, T* x, int incx)
{
    const BlasCall call(name, handle, uplo, trans, diag, n, A, lda, x, incx);
    return call.compute(handle, [&](BlasArguments& args) {
        const char u = letter(uplo), t = letter(trans), d = letter(diag);
        args.require(u && t && d);
        args.dimensions(n, n);
        const T* a = args.matrix(A, n, n, lda);
        T* inout = args.vector(x, n, incx);
        if (n == 0)
            return args.nothing();
        return args.submit(double(n) * n, [=] { fortran(&u, &t, &d, &n, a, &lda, inout, &incx, 1, 1, 1); });
    });
}

/// What the routines over two vectors share: `work(x, y)` on translated addresses, nothing for n <= 0. An increment of
/// 0 stands for one element, as in BLAS.
template <class T, class U, class Routine>
cublasStatus_t overVectors(BlasArguments& args, int n, const T* x, int incx, const U* y, int incy, Routine work)
{
    if (n <= 0)
        return args.nothing();
    T* first = args.vector(x, incx == 0 ? 1 : n, incx == 0 ? 1 : incx);
    U* second = args.vector(y, incy == 0 ? 1 : n, incy == 0 ? 1 : incy);
    return args.submit(2.0 * n, [=] { work(first, second); });
}

template <class T, class Fortran>
cublasStatus_t axpy(const char* name, Fortran* fortran, cublasHandle_t handle, int n, const T* alphaPtr, const T* x,
                    int incx, T* y, int incy)
{
    return BlasCall(name, handle, n, scalar(alphaPtr), x, incx, y, incy).compute(handle, [&](BlasArguments& args) {
        const T alpha = args.scalar(alphaPtr);
        return overVectors(args, n, x, incx, y, incy,
                           [=](const T* in, T* out) { fortran(&n, &alpha, in, &incx, out, &incy); });
    });
}

/// copy and swap.
template <class T, class Fortran, class Source>
cublasStatus_t move(const char* name, Fortran* fortran, cublasHandle_t handle, int n, Source* x, int incx, T* y,
                    int incy)
{
    return BlasCall(name, handle, n, x, incx, y, incy).compute(handle, [&](BlasArguments& args) {
        return overVectors<T, T>(args, n, x, incx, y, incy,
                                 [=](T* first, T* second) { fortran(&n, first, &incx, second, &incy); });
    });
}

template <class T, class Fortran>
cublasStatus_t scal(const char* name, Fortran* fortran, cublasHandle_t handle, int n, const float* alphaPtr, T* x,
                    int incx)
{
    return BlasCall(name, handle, n, scalar(alphaPtr), x, incx).compute(handle, [&](BlasArguments& args) {
        const float alpha = args.scalar(alphaPtr);
        if (n <= 0 || incx <= 0)
            return args.nothing();
        T* inout = args.vector(x, n, incx);
        return args.submit(n, [=] { fortran(&n, &alpha, inout, &incx); });
    });
}

// x' = c x + s y and y' = c y - conj(s) x for one pair. The complex routine with a complex sine belongs to LAPACK, not
// to BLAS.
void rotatePair(float& x, float& y, float c, float s)
{
    const float turned = c * x + s * y;
    y = c * y - s * x;
    x = turned;
}
void rotatePair(cuComplex& x, cuComplex& y, float c, cuComplex s)
{
    const cuComplex turned{c * x.x + s.x * y.x - s.y * y.y, c * x.y + s.x * y.y + s.y * y.x};
    y = {c * y.x - s.x * x.x - s.y * x.y, c * y.y - s.x * x.y + s.y * x.x};
    x = turned;
}

template <class T>
cublasStatus_t rot(const char* name, cublasHandle_t handle, int n, T* x, int incx, T* y, int incy, const float* cPtr,
                   const T* sPtr)
{
    const BlasCall call(name, handle, n, x, incx, y, incy, scalar(cPtr), scalar(sPtr));
    return call.compute(handle, [&](BlasArguments& args) {
        const float c = args.scalar(cPtr);
        const T s = args.scalar(sPtr);
        return overVectors(args, n, x, incx, y, incy, [=](T* first, T* second) {
            // A negative increment runs through its vector from the far end.
            T* p = incx < 0 ? first - std::int64_t{n - 1} * incx : first;
            T* q = incy < 0 ? second - std::int64_t{n - 1} * incy : second;
            for (int i = 0; i < n; ++i, p += incx, q += incy)
                rotatePair(*p, *q, c, s);
        });
    });
}

} // namespace

extern "C" {

#define TARN_GEMV(L, l, T)                                                                                             \
    cublasStatus_t cublas##L##gemv_v2(cublasHandle_t handle, cublasOperation_t trans, int m, int n, const T* alpha,    \
                                      const T* A, int lda, const T* x, int incx, const T* beta, T* y, int incy)        \
    {                                                                                                                  \
        return gemv<T>("cublas" #L "gemv_v2", TARN_DIRECT(l##gemv_), handle, trans, m, n, alpha, A, lda, x, incx,      \
                       beta, y, incy);                                                                                 \
    }
TARN_GEMV(S, s, float)
TARN_GEMV(D, d, double)
TARN_GEMV(C, c, cuComplex)
TARN_GEMV(Z, z, cuDoubleComplex)

#define TARN_SYMV(L, l, s, T)                                                                                          \
    cublasStatus_t cublas##L##s##mv_v2(cublasHandle_t handle, cublasFillMode_t uplo, int n, const T* alpha,            \
                                       const T* A, int lda, const T* x, int incx, const T* beta, T* y, int incy)       \
    {                                                                                                                  \
        return symv<T>("cublas" #L#s "mv_v2", TARN_DIRECT(l##s##mv_), handle, uplo, n, alpha, A, lda, x, incx, beta,   \
                       y, incy);                                                                                       \
    }
TARN_SYMV(S, s, sy, float)
TARN_SYMV(D, d, sy, double)
TARN_SYMV(C, c, he, cuComplex)
TARN_SYMV(Z, z, he, cuDoubleComplex)

#define TARN_VECTORS(L, l, T)                                                                                          \
    cublasStatus_t cublas##L##trmv_v2(cublasHandle_t handle, cublasFillMode_t uplo, cublasOperation_t trans,           \
                                      cublasDiagType_t diag, int n, const T* A, int lda, T* x, int incx)               \
    {                                                                                                                  \
        return trmv<T>("cublas" #L "trmv_v2", TARN_DIRECT(l##trmv_), handle, uplo, trans, diag, n, A, lda, x, incx);   \
    }                                                                                                                  \
    cublasStatus_t cublas##L##axpy_v2(cublasHandle_t handle, int n, const T* alpha, const T* x, int incx, T* y,        \
                                      int incy)                                                                        \
    {                                                                                                                  \
        return axpy<T>("cublas" #L "axpy_v2", TARN_DIRECT(l##axpy_), handle, n, alpha, x, incx, y, incy);              \
    }                                                                                                                  \
    cublasStatus_t cublas##L##copy_v2(cublasHandle_t handle, int n, const T* x, int incx, T* y, int incy)              \
    {                                                                                                                  \
        return move<T>("cublas" #L "copy_v2", TARN_DIRECT(l##copy_), handle, n, x, incx, y, incy);                     \
    }                                                                                                                  \
    cublasStatus_t cublas##L##swap_v2(cublasHandle_t handle, int n, T* x, int incx, T* y, int incy)                    \
    {                                                                                                                  \
        return move<T>("cublas" #L "swap_v2", TARN_DIRECT(l##swap_), handle, n, x, incx, y, incy);                     \
    }                                                                                                                  \
    cublasStatus_t cublas##L##rot_v2(cublasHandle_t handle, int n, T* x, int incx, T* y, int incy, const float* c,     \
                                     const T* s)                                                                       \
    {                                                                                                                  \
        return rot<T>("cublas" #L "rot_v2", handle, n, x, incx, y, incy, c, s);                                        \
    }
TARN_VECTORS(S, s, float)
TARN_VECTORS(C, c, cuComplex)

cublasStatus_t cublasSscal_v2(cublasHandle_t handle, int n, const float* alpha, float* x, int incx)
{
    return scal<float>("cublasSscal_v2", TARN_DIRECT(sscal_), handle, n, alpha, x, incx);
}

cublasStatus_t cublasCsscal_v2(cublasHandle_t handle, int n, const float* alpha, cuComplex* x, int incx)
{
    return scal<cuComplex>("cublasCsscal_v2", TARN_DIRECT(csscal_), handle, n, alpha, x, incx);
}
}
