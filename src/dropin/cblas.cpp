// The CBLAS names. Options are enumerators and scalars come by value, complex ones by reference.
#include "answer.h"
#include "families/gemm.h"
#include "families/matrix_vector.h"
#include "families/rank_update.h"
#include "families/symm.h"
#include "families/triangular.h"
#include "table.h"

#include <type_traits>

using namespace tarn::dropin;

namespace {

/// Enumerators of the C interface to the BLAS.
constexpr int rowMajor = 101, colMajor = 102;

/// The letter of an enumerator that stands `first` for letters[0], and so on.
char letterOf(int enumerator, int first, const char* letters)
{
    const int index = enumerator - first;
    return index >= 0 && index < int(std::strlen(letters)) ? letters[index] : noLetter;
}

char transLetter(int trans) { return letterOf(trans, 111, "NTC"); }
char uploLetter(int uplo) { return letterOf(uplo, 121, "UL"); }
char diagLetter(int diag) { return letterOf(diag, 131, "NU"); }
char sideLetter(int side) { return letterOf(side, 141, "LR"); }

/// How a scalar is passed.
template <class T>
using Scalar = std::conditional_t<isComplex<T>, const T*, T>;

template <class T>
T value(T scalar)
{
    return scalar;
}
template <class T>
T value(const T* scalar)
{
    return *scalar;
}

/// The call for matrices stored by columns. One of no known order has its first letter spoilt.
template <class Call>
Call inOrder(int order, Call call, char Call::*firstLetter)
{
    if (order == rowMajor)
        call.byColumns();
    else if (order != colMajor)
        call.*firstLetter = noLetter;
    return call;
}

} // namespace

#define TARN_CBLAS_GEMM(name, T, S)                                                                                    \
    TARN_API void cblas_##name(int order, int transa, int transb, int m, int n, int k, Scalar<T> alpha, T* a, int lda, \
                               T* b, int ldb, Scalar<T> beta, T* c, int ldc)                                           \
    {                                                                                                                  \
        cblas(name##Routine,                                                                                           \
              inOrder(order,                                                                                           \
                      Gemm<T>{transLetter(transa), transLetter(transb), m, n, k, value(alpha), a, lda, b, ldb,         \
                              value(beta), c, ldc},                                                                    \
                      &Gemm<T>::transa),                                                                               \
              order, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);                                    \
    }

#define TARN_CBLAS_TRIANGULAR(name, T, S)                                                                              \
    TARN_API void cblas_##name(int order, int side, int uplo, int transa, int diag, int m, int n, Scalar<T> alpha,     \
                               T* a, int lda, T* b, int ldb)                                                           \
    {                                                                                                                  \
        cblas(name##Routine,                                                                                           \
              inOrder(order,                                                                                           \
                      Triangular<T>{sideLetter(side), uploLetter(uplo), transLetter(transa), diagLetter(diag), m, n,   \
                                    value(alpha), a, lda, b, ldb},                                                     \
                      &Triangular<T>::side),                                                                           \
              order, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);                                           \
    }

#define TARN_CBLAS_SYMM(name, T, S)                                                                                    \
    TARN_API void cblas_##name(int order, int side, int uplo, int m, int n, Scalar<T> alpha, T* a, int lda, T* b,      \
                               int ldb, Scalar<T> beta, T* c, int ldc)                                                 \
    {                                                                                                                  \
        cblas(name##Routine,                                                                                           \
              inOrder(order,                                                                                           \
                      Symm<T>{sideLetter(side), uploLetter(uplo), m, n, value(alpha), a, lda, b, ldb, value(beta), c,  \
                              ldc},                                                                                    \
                      &Symm<T>::side),                                                                                 \
              order, side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);                                           \
    }

#define TARN_CBLAS_SYRK(name, T, S)                                                                                    \
    TARN_API void cblas_##name(int order, int uplo, int trans, int n, int k, Scalar<S> alpha, T* a, int lda,           \
                               Scalar<S> beta, T* c, int ldc)                                                          \
    {                                                                                                                  \
        cblas(                                                                                                         \
            name##Routine,                                                                                             \
            inOrder(order,                                                                                             \
                    Syrk<T, S>{uploLetter(uplo), transLetter(trans), n, k, value(alpha), a, lda, value(beta), c, ldc}, \
                    &Syrk<T, S>::uplo),                                                                                \
            order, uplo, trans, n, k, alpha, a, lda, beta, c, ldc);                                                    \
    }

#define TARN_CBLAS_SYR2K(name, T, S)                                                                                   \
    TARN_API void cblas_##name(int order, int uplo, int trans, int n, int k, Scalar<T> alpha, T* a, int lda, T* b,     \
                               int ldb, Scalar<S> beta, T* c, int ldc)                                                 \
    {                                                                                                                  \
        cblas(name##Routine,                                                                                           \
              inOrder(order,                                                                                           \
                      Syr2k<T, S>{uploLetter(uplo), transLetter(trans), n, k, value(alpha), a, lda, b, ldb,            \
                                  value(beta), c, ldc},                                                                \
                      &Syr2k<T, S>::uplo),                                                                             \
              order, uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);                                          \
    }

#define TARN_CBLAS_GEMV(name, T, S)                                                                                    \
    TARN_API void cblas_##name(int order, int trans, int m, int n, Scalar<T> alpha, T* a, int lda, T* x, int incx,     \
                               Scalar<T> beta, T* y, int incy)                                                         \
    {                                                                                                                  \
        cblas(name##Routine,                                                                                           \
              inOrder(order, Gemv<T>{transLetter(trans), m, n, value(alpha), a, lda, x, incx, value(beta), y, incy},   \
                      &Gemv<T>::trans),                                                                                \
              order, trans, m, n, alpha, a, lda, x, incx, beta, y, incy);                                              \
    }

#define TARN_CBLAS_SYMV(name, T, S)                                                                                    \
    TARN_API void cblas_##name(int order, int uplo, int n, Scalar<T> alpha, T* a, int lda, T* x, int incx,             \
                               Scalar<T> beta, T* y, int incy)                                                         \
    {                                                                                                                  \
        cblas(name##Routine,                                                                                           \
              inOrder(order, Symv<T>{uploLetter(uplo), n, value(alpha), a, lda, x, incx, value(beta), y, incy},        \
                      &Symv<T>::uplo),                                                                                 \
              order, uplo, n, alpha, a, lda, x, incx, beta, y, incy);                                                  \
    }

#define TARN_CBLAS(name, device, FAMILY, T, S) TARN_CBLAS_##FAMILY(name, T, S)

extern "C" {
TARN_DROPIN_BLAS(TARN_CBLAS)
}
