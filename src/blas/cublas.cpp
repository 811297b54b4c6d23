#include "blas/cublas.h"

#include "blas/letters.h"
#include "frame/error_state.h"
#include "frame/thread_state.h"

namespace tarn::cublas {

namespace {

/// The cuBLAS functions of an element type.
template <class T>
struct Calls;

template <>
struct Calls<float>
{
    static constexpr auto gemm = cublasSgemm_v2;
    static constexpr auto trsm = cublasStrsm_v2;
    static constexpr auto trmm = cublasStrmm_v2;
    static constexpr auto symm = cublasSsymm_v2;
    static constexpr auto syrk = cublasSsyrk_v2;
    static constexpr auto syr2k = cublasSsyr2k_v2;
    static constexpr auto gemv = cublasSgemv_v2;
    static constexpr auto symv = cublasSsymv_v2;
    static constexpr auto trmv = cublasStrmv_v2;
    static constexpr auto axpy = cublasSaxpy_v2;
    static constexpr auto copy = cublasScopy_v2;
    static constexpr auto swap = cublasSswap_v2;
    static constexpr auto rot = cublasSrot_v2;
};

template <>
struct Calls<double>
{
    static constexpr auto gemm = cublasDgemm_v2;
    static constexpr auto trsm = cublasDtrsm_v2;
    static constexpr auto trmm = cublasDtrmm_v2;
    static constexpr auto symm = cublasDsymm_v2;
    static constexpr auto syrk = cublasDsyrk_v2;
    static constexpr auto syr2k = cublasDsyr2k_v2;
    static constexpr auto gemv = cublasDgemv_v2;
    static constexpr auto symv = cublasDsymv_v2;
};

template <>
struct Calls<Complex<float>>
{
    static constexpr auto gemm = cublasCgemm_v2;
    static constexpr auto trsm = cublasCtrsm_v2;
    static constexpr auto trmm = cublasCtrmm_v2;
    static constexpr auto symm = cublasCsymm_v2;
    static constexpr auto hemm = cublasChemm_v2;
    static constexpr auto syrk = cublasCsyrk_v2;
    static constexpr auto herk = cublasCherk_v2;
    static constexpr auto syr2k = cublasCsyr2k_v2;
    static constexpr auto her2k = cublasCher2k_v2;
    static constexpr auto gemv = cublasCgemv_v2;
    static constexpr auto hemv = cublasChemv_v2;
    static constexpr auto trmv = cublasCtrmv_v2;
    static constexpr auto axpy = cublasCaxpy_v2;
    static constexpr auto copy = cublasCcopy_v2;
    static constexpr auto swap = cublasCswap_v2;
    static constexpr auto rot = cublasCrot_v2;
};

template <>
struct Calls<Complex<double>>
{
    static constexpr auto gemm = cublasZgemm_v2;
    static constexpr auto trsm = cublasZtrsm_v2;
    static constexpr auto trmm = cublasZtrmm_v2;
    static constexpr auto symm = cublasZsymm_v2;
    static constexpr auto hemm = cublasZhemm_v2;
    static constexpr auto syrk = cublasZsyrk_v2;
    static constexpr auto herk = cublasZherk_v2;
    static constexpr auto syr2k = cublasZsyr2k_v2;
    static constexpr auto her2k = cublasZher2k_v2;
    static constexpr auto gemv = cublasZgemv_v2;
    static constexpr auto hemv = cublasZhemv_v2;
};

/// Elements and their addresses as cuBLAS names them.
const float* native(const float* p) { return p; }
float* native(float* p) { return p; }
const double* native(const double* p) { return p; }
double* native(double* p) { return p; }
const cuComplex* native(const Complex<float>* p) { return reinterpret_cast<const cuComplex*>(p); }
cuComplex* native(Complex<float>* p) { return reinterpret_cast<cuComplex*>(p); }
const cuDoubleComplex* native(const Complex<double>* p) { return reinterpret_cast<const cuDoubleComplex*>(p); }
cuDoubleComplex* native(Complex<double>* p) { return reinterpret_cast<cuDoubleComplex*>(p); }

cublasSideMode_t sideMode(char side) { return upper(side) == 'R' ? CUBLAS_SIDE_RIGHT : CUBLAS_SIDE_LEFT; }

cublasFillMode_t fillMode(char uplo) { return upper(uplo) == 'U' ? CUBLAS_FILL_MODE_UPPER : CUBLAS_FILL_MODE_LOWER; }

cublasDiagType_t diagType(char diag) { return upper(diag) == 'U' ? CUBLAS_DIAG_UNIT : CUBLAS_DIAG_NON_UNIT; }

cublasOperation_t operation(char trans)
{
    switch (upper(trans)) {
    case 'T':
        return CUBLAS_OP_T;
    case 'C':
        return CUBLAS_OP_C;
    default:
        return CUBLAS_OP_N;
    }
}

} // namespace

template <class T>
cublasStatus_t gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
                    T beta, T* c, int ldc)
{
    return noteCublasStatus(Calls<T>::gemm(cublasHandle(), operation(transa), operation(transb), m, n, k,
                                           native(&alpha), native(a), lda, native(b), ldb, native(&beta), native(c),
                                           ldc));
}

template <class T>
cublasStatus_t trsm(char side, char uplo, char trans, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
                    int ldb)
{
    return noteCublasStatus(Calls<T>::trsm(cublasHandle(), sideMode(side), fillMode(uplo), operation(trans),
                                           diagType(diag), m, n, native(&alpha), native(a), lda, native(b), ldb));
}

template <class T>
cublasStatus_t trmm(char side, char uplo, char trans, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
                    int ldb)
{
    // The v2 interface multiplies out of place; B as input and output gives the product in place.
    return noteCublasStatus(Calls<T>::trmm(cublasHandle(), sideMode(side), fillMode(uplo), operation(trans),
                                           diagType(diag), m, n, native(&alpha), native(a), lda, native(b), ldb,
                                           native(b), ldb));
}

template <class T>
cublasStatus_t symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c,
                    int ldc)
{
    return noteCublasStatus(Calls<T>::symm(cublasHandle(), sideMode(side), fillMode(uplo), m, n, native(&alpha),
                                           native(a), lda, native(b), ldb, native(&beta), native(c), ldc));
}

template <class T>
cublasStatus_t hemm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c,
                    int ldc)
{
    return noteCublasStatus(Calls<T>::hemm(cublasHandle(), sideMode(side), fillMode(uplo), m, n, native(&alpha),
                                           native(a), lda, native(b), ldb, native(&beta), native(c), ldc));
}

template <class T>
cublasStatus_t syrk(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c, int ldc)
{
    return noteCublasStatus(Calls<T>::syrk(cublasHandle(), fillMode(uplo), operation(trans), n, k, native(&alpha),
                                           native(a), lda, native(&beta), native(c), ldc));
}

template <class T>
cublasStatus_t herk(char uplo, char trans, int n, int k, Real<T> alpha, const T* a, int lda, Real<T> beta, T* c,
                    int ldc)
{
    return noteCublasStatus(Calls<T>::herk(cublasHandle(), fillMode(uplo), operation(trans), n, k, &alpha, native(a),
                                           lda, &beta, native(c), ldc));
}

template <class T>
cublasStatus_t syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
                     T* c, int ldc)
{
    return noteCublasStatus(Calls<T>::syr2k(cublasHandle(), fillMode(uplo), operation(trans), n, k, native(&alpha),
                                            native(a), lda, native(b), ldb, native(&beta), native(c), ldc));
}

template <class T>
cublasStatus_t her2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
                     Real<T> beta, T* c, int ldc)
{
    return noteCublasStatus(Calls<T>::her2k(cublasHandle(), fillMode(uplo), operation(trans), n, k, native(&alpha),
                                            native(a), lda, native(b), ldb, &beta, native(c), ldc));
}

template <class T>
cublasStatus_t gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
                    int incy)
{
    return noteCublasStatus(Calls<T>::gemv(cublasHandle(), operation(trans), m, n, native(&alpha), native(a), lda,
                                           native(x), incx, native(&beta), native(y), incy));
}

template <class T>
cublasStatus_t symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    return noteCublasStatus(Calls<T>::symv(cublasHandle(), fillMode(uplo), n, native(&alpha), native(a), lda, native(x),
                                           incx, native(&beta), native(y), incy));
}

template <class T>
cublasStatus_t hemv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    return noteCublasStatus(Calls<T>::hemv(cublasHandle(), fillMode(uplo), n, native(&alpha), native(a), lda, native(x),
                                           incx, native(&beta), native(y), incy));
}

template <class T>
cublasStatus_t trmv(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx)
{
    return noteCublasStatus(Calls<T>::trmv(cublasHandle(), fillMode(uplo), operation(trans), diagType(diag), n,
                                           native(a), lda, native(x), incx));
}

template <class T>
cublasStatus_t axpy(int n, T alpha, const T* x, int incx, T* y, int incy)
{
    return noteCublasStatus(Calls<T>::axpy(cublasHandle(), n, native(&alpha), native(x), incx, native(y), incy));
}

template <class T>
cublasStatus_t copy(int n, const T* x, int incx, T* y, int incy)
{
    return noteCublasStatus(Calls<T>::copy(cublasHandle(), n, native(x), incx, native(y), incy));
}

template <class T>
cublasStatus_t swap(int n, T* x, int incx, T* y, int incy)
{
    return noteCublasStatus(Calls<T>::swap(cublasHandle(), n, native(x), incx, native(y), incy));
}

cublasStatus_t scal(int n, float alpha, float* x, int incx)
{
    return noteCublasStatus(cublasSscal_v2(cublasHandle(), n, &alpha, x, incx));
}

cublasStatus_t csscal(int n, float alpha, Complex<float>* x, int incx)
{
    return noteCublasStatus(cublasCsscal_v2(cublasHandle(), n, &alpha, native(x), incx));
}

template <class T>
cublasStatus_t rot(int n, T* x, int incx, T* y, int incy, Real<T> c, T s)
{
    return noteCublasStatus(Calls<T>::rot(cublasHandle(), n, native(x), incx, native(y), incy, &c, native(&s)));
}

#define TARN_ALL_TYPES(T)                                                                                              \
    template cublasStatus_t gemm(char, char, int, int, int, T, const T*, int, const T*, int, T, T*, int);              \
    template cublasStatus_t trsm(char, char, char, char, int, int, T, const T*, int, T*, int);                         \
    template cublasStatus_t trmm(char, char, char, char, int, int, T, const T*, int, T*, int);                         \
    template cublasStatus_t symm(char, char, int, int, T, const T*, int, const T*, int, T, T*, int);                   \
    template cublasStatus_t syrk(char, char, int, int, T, const T*, int, T, T*, int);                                  \
    template cublasStatus_t syr2k(char, char, int, int, T, const T*, int, const T*, int, T, T*, int);                  \
    template cublasStatus_t gemv(char, int, int, T, const T*, int, const T*, int, T, T*, int);

#define TARN_REAL_TYPES(T) template cublasStatus_t symv(char, int, T, const T*, int, const T*, int, T, T*, int);

#define TARN_COMPLEX_TYPES(T)                                                                                          \
    template cublasStatus_t hemm(char, char, int, int, T, const T*, int, const T*, int, T, T*, int);                   \
    template cublasStatus_t herk(char, char, int, int, Real<T>, const T*, int, Real<T>, T*, int);                      \
    template cublasStatus_t her2k(char, char, int, int, T, const T*, int, const T*, int, Real<T>, T*, int);            \
    template cublasStatus_t hemv(char, int, T, const T*, int, const T*, int, T, T*, int);

#define TARN_LAPACK_TYPES(T)                                                                                           \
    template cublasStatus_t trmv(char, char, char, int, const T*, int, T*, int);                                       \
    template cublasStatus_t axpy(int, T, const T*, int, T*, int);                                                      \
    template cublasStatus_t copy(int, const T*, int, T*, int);                                                         \
    template cublasStatus_t swap(int, T*, int, T*, int);                                                               \
    template cublasStatus_t rot(int, T*, int, T*, int, Real<T>, T);

TARN_ALL_TYPES(float)
TARN_ALL_TYPES(double)
TARN_ALL_TYPES(Complex<float>)
TARN_ALL_TYPES(Complex<double>)
TARN_REAL_TYPES(float)
TARN_REAL_TYPES(double)
TARN_COMPLEX_TYPES(Complex<float>)
TARN_COMPLEX_TYPES(Complex<double>)
TARN_LAPACK_TYPES(float)
TARN_LAPACK_TYPES(Complex<float>)

} // namespace tarn::cublas
