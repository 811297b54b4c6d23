/// The matrix-matrix routines of cuBLAS. Each template checks and translates the arguments of one routine for every
/// element type and is given the Fortran routine of that type; R is the type of the scalars that are real in the
/// Hermitian routines.

#include <cstring>

#include "blas_call.h"
#include "cublas_v2.h"
#include "fortran_blas.h"

using namespace tarn::soft;

namespace {

/// The rows of op(A) are those of A.
bool plain(cublasOperation_t op) { return op == CUBLAS_OP_N; }

/// Work of an m by n by k product; complex elements count four times.
template <class T>
double productWork(double m, double n, double k)
{
    return m * n * k * (isComplex<T> ? 4 : 1) / 4 + m * n;
}

template <class T, class Fortran>
cublasStatus_t gemm(const char* name, Fortran* fortran, cublasHandle_t handle, cublasOperation_t transa,
                    cublasOperation_t transb, int m, int n, int k, const T* alphaPtr, const T* A, int lda, const T* B,
                    int ldb, const T* betaPtr, T* C, int ldc)
{
    const BlasCall call(name, handle, transa, transb, m, n, k, scalar(alphaPtr), A, lda, B, ldb, scalar(betaPtr), C,
                        ldc);
    return call.compute(handle, [&](BlasArguments& args) {
        const char ta = letter(transa), tb = letter(transb);
        args.require(ta && tb);
        args.dimensions(m, n, k);
        const T alpha = args.scalar(alphaPtr), beta = args.scalar(betaPtr);
        const bool emptyResult = m == 0 || n == 0;
        const T* a = args.matrix(A, plain(transa) ? m : k, emptyResult ? 0 : plain(transa) ? k : m, lda);
        const T* b = args.matrix(B, plain(transb) ? k : n, emptyResult ? 0 : plain(transb) ? n : k, ldb);
        T* c = args.matrix(C, m, n, ldc);
        if (emptyResult)
            return args.nothing();
        const int depth = isZero(alpha) ? 0 : k;
        return args.submit(productWork<T>(m, n, depth),
                           [=] { fortran(&ta, &tb, &m, &n, &depth, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1); });
    });
}

/// trmm and trsm, in place in B.
template <class T, class Fortran>
cublasStatus_t triangular(BlasArguments& args, Fortran* fortran, cublasSideMode_t side, cublasFillMode_t uplo,
                          cublasOperation_t trans, cublasDiagType_t diag, int m, int n, const T* alphaPtr, const T* A,
                          int lda, const T* source, int sourceLd, T* B, int ldb)
{
    const char s = letter(side), u = letter(uplo), t = letter(trans), d = letter(diag);
    args.require(s && u && t && d);
    args.dimensions(m, n);
    const int order = side == CUBLAS_SIDE_LEFT ? m : n;
    const T alpha = args.scalar(alphaPtr);
    const T* a = args.matrix(A, order, m == 0 || n == 0 ? 0 : order, lda);
    const T* from = args.matrix(source, m, n, sourceLd);
    T* b = args.matrix(B, m, n, ldb);
    args.require(from != b || sourceLd == ldb);
    if (m == 0 || n == 0)
        return args.nothing();
    return args.submit(productWork<T>(m, n, order), [=] {
        for (int j = 0; from != b && j < n; ++j)
            std::memcpy(b + std::size_t(j) * std::size_t(ldb), from + std::size_t(j) * std::size_t(sourceLd),
                        std::size_t(m) * sizeof(T));
        fortran(&s, &u, &t, &d, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1, 1);
    });
}

template <class T, class Fortran>
cublasStatus_t symm(const char* name, Fortran* fortran, cublasHandle_t handle, cublasSideMode_t side,
                    cublasFillMode_t uplo, int m, int n, const T* alphaPtr, const T* A, int lda, const T* B, int ldb,
                    const T* betaPtr, T* C, int ldc)
{
    const BlasCall call(name, handle, side, uplo, m, n, scalar(alphaPtr), A, lda, B, ldb, scalar(betaPtr), C, ldc);
    return call.compute(handle, [&](BlasArguments& args) {
        const char s = letter(side), u = letter(uplo);
        args.require(s && u);
        args.dimensions(m, n);
        const int order = side == CUBLAS_SIDE_LEFT ? m : n;
        const T alpha = args.scalar(alphaPtr), beta = args.scalar(betaPtr);
        const T* a = args.matrix(A, order, m == 0 || n == 0 ? 0 : order, lda);
        const T* b = args.matrix(B, m, n, ldb);
        T* c = args.matrix(C, m, n, ldc);
        if (m == 0 || n == 0)
            return args.nothing();
        return args.submit(productWork<T>(m, n, order),
                           [=] { fortran(&s, &u, &m, &n, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1); });
    });
}

/// A rank-k update takes transposition from symmetric complex matrices and conjugation from Hermitian ones; for real
/// matrices they are the same.
template <class T>
bool updateOperation(cublasOperation_t trans, bool hermitian)
{
    return letter(trans) && (!isComplex<T> || trans != (hermitian ? CUBLAS_OP_T : CUBLAS_OP_C));
}

template <class T, class R, class Fortran>
cublasStatus_t syrk(const char* name, Fortran* fortran, cublasHandle_t handle, cublasFillMode_t uplo,
                    cublasOperation_t trans, int n, int k, const R* alphaPtr, const T* A, int lda, const R* betaPtr,
                    T* C, int ldc)
{
    const BlasCall call(name, handle, uplo, trans, n, k, scalar(alphaPtr), A, lda, scalar(betaPtr), C, ldc);
    return call.compute(handle, [&](BlasArguments& args) {
        const char u = letter(uplo), t = letter(trans);
        args.require(u && updateOperation<T>(trans, !std::is_same_v<T, R>));
        args.dimensions(n, k);
        const R alpha = args.scalar(alphaPtr), beta = args.scalar(betaPtr);
        const T* a = args.matrix(A, plain(trans) ? n : k, n == 0 ? 0 : plain(trans) ? k : n, lda);
        T* c = args.matrix(C, n, n, ldc);
        if (n == 0)
            return args.nothing();
        return args.submit(productWork<T>(n, n, k),
                           [=] { fortran(&u, &t, &n, &k, &alpha, a, &lda, &beta, c, &ldc, 1, 1); });
    });
}

template <class T, class R, class Fortran>
cublasStatus_t syr2k(const char* name, Fortran* fortran, cublasHandle_t handle, cublasFillMode_t uplo,
                     cublasOperation_t trans, int n, int k, const T* alphaPtr, const T* A, int lda, const T* B, int ldb,
                     const R* betaPtr, T* C, int ldc)
{
    const BlasCall call(name, handle, uplo, trans, n, k, scalar(alphaPtr), A, lda, B, ldb, scalar(betaPtr), C, ldc);
    return call.compute(handle, [&](BlasArguments& args) {
        const char u = letter(uplo), t = letter(trans);
        args.require(u && updateOperation<T>(trans, !std::is_same_v<T, R>));
        args.dimensions(n, k);
        const T alpha = args.scalar(alphaPtr);
        const R beta = args.scalar(betaPtr);
        const int rows = plain(trans) ? n : k, cols = n == 0 ? 0 : plain(trans) ? k : n;
        const T* a = args.matrix(A, rows, cols, lda);
        const T* b = args.matrix(B, rows, cols, ldb);
        T* c = args.matrix(C, n, n, ldc);
        if (n == 0)
            return args.nothing();
        return args.submit(productWork<T>(n, n, 2.0 * k),
                           [=] { fortran(&u, &t, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1); });
    });
}

} // namespace

extern "C" {

#define TARN_GEMM(L, l, T)                                                                                             \
    cublasStatus_t cublas##L##gemm_v2(cublasHandle_t handle, cublasOperation_t transa, cublasOperation_t transb,       \
                                      int m, int n, int k, const T* alpha, const T* A, int lda, const T* B, int ldb,   \
                                      const T* beta, T* C, int ldc)                                                    \
    {                                                                                                                  \
        return gemm<T>("cublas" #L "gemm_v2", TARN_DIRECT(l##gemm_), handle, transa, transb, m, n, k, alpha, A, lda,   \
                       B, ldb, beta, C, ldc);                                                                          \
    }
TARN_GEMM(S, s, float)
TARN_GEMM(D, d, double)
TARN_GEMM(C, c, cuComplex)
TARN_GEMM(Z, z, cuDoubleComplex)

#define TARN_TRIANGULAR(L, l, T)                                                                                       \
    cublasStatus_t cublas##L##trmm_v2(cublasHandle_t handle, cublasSideMode_t side, cublasFillMode_t uplo,             \
                                      cublasOperation_t trans, cublasDiagType_t diag, int m, int n, const T* alpha,    \
                                      const T* A, int lda, const T* B, int ldb, T* C, int ldc)                         \
    {                                                                                                                  \
        const BlasCall call("cublas" #L "trmm_v2", handle, side, uplo, trans, diag, m, n, scalar(alpha), A, lda, B,    \
                            ldb, C, ldc);                                                                              \
        return call.compute(handle, [&](BlasArguments& args) {                                                         \
            return triangular<T>(args, TARN_DIRECT(l##trmm_), side, uplo, trans, diag, m, n, alpha, A, lda, B, ldb, C, \
                                 ldc);                                                                                 \
        });                                                                                                            \
    }                                                                                                                  \
    cublasStatus_t cublas##L##trsm_v2(cublasHandle_t handle, cublasSideMode_t side, cublasFillMode_t uplo,             \
                                      cublasOperation_t trans, cublasDiagType_t diag, int m, int n, const T* alpha,    \
                                      const T* A, int lda, T* B, int ldb)                                              \
    {                                                                                                                  \
        const BlasCall call("cublas" #L "trsm_v2", handle, side, uplo, trans, diag, m, n, scalar(alpha), A, lda, B,    \
                            ldb);                                                                                      \
        return call.compute(handle, [&](BlasArguments& args) {                                                         \
            return triangular<T>(args, TARN_DIRECT(l##trsm_), side, uplo, trans, diag, m, n, alpha, A, lda, B, ldb, B, \
                                 ldb);                                                                                 \
        });                                                                                                            \
    }
TARN_TRIANGULAR(S, s, float)
TARN_TRIANGULAR(D, d, double)
TARN_TRIANGULAR(C, c, cuComplex)
TARN_TRIANGULAR(Z, z, cuDoubleComplex)

#define TARN_SYMMETRIC(L, l, s, T, R)                                                                                  \
    cublasStatus_t cublas##L##s##mm_v2(cublasHandle_t handle, cublasSideMode_t side, cublasFillMode_t uplo, int m,     \
                                       int n, const T* alpha, const T* A, int lda, const T* B, int ldb, const T* beta, \
                                       T* C, int ldc)                                                                  \
    {                                                                                                                  \
        return symm<T>("cublas" #L#s "mm_v2", TARN_DIRECT(l##s##mm_), handle, side, uplo, m, n, alpha, A, lda, B, ldb, \
                       beta, C, ldc);                                                                                  \
    }                                                                                                                  \
    cublasStatus_t cublas##L##s##rk_v2(cublasHandle_t handle, cublasFillMode_t uplo, cublasOperation_t trans, int n,   \
                                       int k, const R* alpha, const T* A, int lda, const R* beta, T* C, int ldc)       \
    {                                                                                                                  \
        return syrk<T, R>("cublas" #L#s "rk_v2", TARN_DIRECT(l##s##rk_), handle, uplo, trans, n, k, alpha, A, lda,     \
                          beta, C, ldc);                                                                               \
    }                                                                                                                  \
    cublasStatus_t cublas##L##s##r2k_v2(cublasHandle_t handle, cublasFillMode_t uplo, cublasOperation_t trans, int n,  \
                                        int k, const T* alpha, const T* A, int lda, const T* B, int ldb,               \
                                        const R* beta, T* C, int ldc)                                                  \
    {                                                                                                                  \
        return syr2k<T, R>("cublas" #L#s "r2k_v2", TARN_DIRECT(l##s##r2k_), handle, uplo, trans, n, k, alpha, A, lda,  \
                           B, ldb, beta, C, ldc);                                                                      \
    }
TARN_SYMMETRIC(S, s, sy, float, float)
TARN_SYMMETRIC(D, d, sy, double, double)
TARN_SYMMETRIC(C, c, sy, cuComplex, cuComplex)
TARN_SYMMETRIC(Z, z, sy, cuDoubleComplex, cuDoubleComplex)
TARN_SYMMETRIC(C, c, he, cuComplex, float)
TARN_SYMMETRIC(Z, z, he, cuDoubleComplex, double)
}
