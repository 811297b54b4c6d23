// The Fortran names. All arguments come by reference; the lengths of character arguments come last, by value. They are
// handed on as they are: callers from C leave them out.
#include "answer.h"
#include "families/gemm.h"
#include "families/lu.h"
#include "families/matrix_vector.h"
#include "families/qr.h"
#include "families/rank_update.h"
#include "families/svd.h"
#include "families/symm.h"
#include "families/triangular.h"
#include "table.h"

using namespace tarn::dropin;
using Length = std::size_t;

#define TARN_FORTRAN_GEMM(name, device, T, S)                                                                          \
    TARN_API void name##_(const char* transa, const char* transb, const int* m, const int* n, const int* k,            \
                          const T* alpha, T* a, const int* lda, T* b, const int* ldb, const T* beta, T* c,             \
                          const int* ldc, Length la, Length lb)                                                        \
    {                                                                                                                  \
        fortran<decltype(device)>(                                                                                     \
            name##Routine,                                                                                             \
            Gemm<T>{letter(transa), letter(transb), *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc}, transa,     \
            transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, la, lb);                                             \
    }

#define TARN_FORTRAN_TRIANGULAR(name, device, T, S)                                                                    \
    TARN_API void name##_(const char* side, const char* uplo, const char* transa, const char* diag, const int* m,      \
                          const int* n, const T* alpha, T* a, const int* lda, T* b, const int* ldb, Length ls,         \
                          Length lu, Length lt, Length ld)                                                             \
    {                                                                                                                  \
        fortran<decltype(device)>(                                                                                     \
            name##Routine,                                                                                             \
            Triangular<T>{letter(side), letter(uplo), letter(transa), letter(diag), *m, *n, *alpha, a, *lda, b, *ldb}, \
            side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb, ls, lu, lt, ld);                                    \
    }

#define TARN_FORTRAN_SYMM(name, device, T, S)                                                                          \
    TARN_API void name##_(const char* side, const char* uplo, const int* m, const int* n, const T* alpha, T* a,        \
                          const int* lda, T* b, const int* ldb, const T* beta, T* c, const int* ldc, Length ls,        \
                          Length lu)                                                                                   \
    {                                                                                                                  \
        fortran<decltype(device)>(                                                                                     \
            name##Routine, Symm<T>{letter(side), letter(uplo), *m, *n, *alpha, a, *lda, b, *ldb, *beta, c, *ldc},      \
            side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc, ls, lu);                                            \
    }

#define TARN_FORTRAN_SYRK(name, device, T, S)                                                                          \
    TARN_API void name##_(const char* uplo, const char* trans, const int* n, const int* k, const S* alpha, T* a,       \
                          const int* lda, const S* beta, T* c, const int* ldc, Length lu, Length lt)                   \
    {                                                                                                                  \
        fortran<decltype(device)>(name##Routine,                                                                       \
                                  Syrk<T, S>{letter(uplo), letter(trans), *n, *k, *alpha, a, *lda, *beta, c, *ldc},    \
                                  uplo, trans, n, k, alpha, a, lda, beta, c, ldc, lu, lt);                             \
    }

#define TARN_FORTRAN_SYR2K(name, device, T, S)                                                                         \
    TARN_API void name##_(const char* uplo, const char* trans, const int* n, const int* k, const T* alpha, T* a,       \
                          const int* lda, T* b, const int* ldb, const S* beta, T* c, const int* ldc, Length lu,        \
                          Length lt)                                                                                   \
    {                                                                                                                  \
        fortran<decltype(device)>(                                                                                     \
            name##Routine, Syr2k<T, S>{letter(uplo), letter(trans), *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc}, \
            uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc, lu, lt);                                           \
    }

#define TARN_FORTRAN_GEMV(name, device, T, S)                                                                          \
    TARN_API void name##_(const char* trans, const int* m, const int* n, const T* alpha, T* a, const int* lda, T* x,   \
                          const int* incx, const T* beta, T* y, const int* incy, Length lt)                            \
    {                                                                                                                  \
        fortran<decltype(device)>(name##Routine,                                                                       \
                                  Gemv<T>{letter(trans), *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy}, trans,   \
                                  m, n, alpha, a, lda, x, incx, beta, y, incy, lt);                                    \
    }

#define TARN_FORTRAN_SYMV(name, device, T, S)                                                                          \
    TARN_API void name##_(const char* uplo, const int* n, const T* alpha, T* a, const int* lda, T* x, const int* incx, \
                          const T* beta, T* y, const int* incy, Length lu)                                             \
    {                                                                                                                  \
        fortran<decltype(device)>(name##Routine,                                                                       \
                                  Symv<T>{letter(uplo), *n, *alpha, a, *lda, x, *incx, *beta, y, *incy}, uplo, n,      \
                                  alpha, a, lda, x, incx, beta, y, incy, lu);                                          \
    }

#define TARN_FORTRAN_GETRF(name, device, T, S)                                                                         \
    TARN_API void name##_(const int* m, const int* n, T* a, const int* lda, int* ipiv, int* info)                      \
    {                                                                                                                  \
        fortran<decltype(device)>(name##Routine, Getrf<T>{*m, *n, a, *lda, ipiv, info}, m, n, a, lda, ipiv, info);     \
    }

#define TARN_FORTRAN_GESV(name, device, T, S)                                                                          \
    TARN_API void name##_(const int* n, const int* nrhs, T* a, const int* lda, int* ipiv, T* b, const int* ldb,        \
                          int* info)                                                                                   \
    {                                                                                                                  \
        fortran<decltype(device)>(name##Routine, Gesv<T>{*n, *nrhs, a, *lda, ipiv, b, *ldb, info}, n, nrhs, a, lda,    \
                                  ipiv, b, ldb, info);                                                                 \
    }

#define TARN_FORTRAN_GEQRF(name, device, T, S)                                                                         \
    TARN_API void name##_(const int* m, const int* n, T* a, const int* lda, T* tau, T* work, const int* lwork,         \
                          int* info)                                                                                   \
    {                                                                                                                  \
        fortran<decltype(device)>(name##Routine, Geqrf<T>{*m, *n, a, *lda, tau, work, *lwork, info}, m, n, a, lda,     \
                                  tau, work, lwork, info);                                                             \
    }

#define TARN_FORTRAN_GELS(name, device, T, S)                                                                          \
    TARN_API void name##_(const char* trans, const int* m, const int* n, const int* nrhs, T* a, const int* lda, T* b,  \
                          const int* ldb, T* work, const int* lwork, int* info, Length lt)                             \
    {                                                                                                                  \
        fortran<decltype(device)>(name##Routine,                                                                       \
                                  Gels<T>{letter(trans), *m, *n, *nrhs, a, *lda, b, *ldb, work, *lwork, info}, trans,  \
                                  m, n, nrhs, a, lda, b, ldb, work, lwork, info, lt);                                  \
    }

#define TARN_FORTRAN_GGLSE(name, device, T, S)                                                                         \
    TARN_API void name##_(const int* m, const int* n, const int* p, T* a, const int* lda, T* b, const int* ldb, T* c,  \
                          T* d, T* x, T* work, const int* lwork, int* info)                                            \
    {                                                                                                                  \
        fortran<decltype(device)>(name##Routine, Gglse<T>{*m, *n, *p, a, *lda, b, *ldb, c, d, x, work, *lwork, info},  \
                                  m, n, p, a, lda, b, ldb, c, d, x, work, lwork, info);                                \
    }

#define TARN_FORTRAN_REAL_GESVD(name, device, T, S)                                                                    \
    TARN_API void name##_(const char* jobu, const char* jobvt, const int* m, const int* n, T* a, const int* lda, S* s, \
                          T* u, const int* ldu, T* vt, const int* ldvt, T* work, const int* lwork, int* info,          \
                          Length lu, Length lv)                                                                        \
    {                                                                                                                  \
        fortran<decltype(device)>(name##Routine,                                                                       \
                                  Gesvd<T>{letter(jobu), letter(jobvt), *m, *n, a, *lda, s, u, *ldu, vt, *ldvt, work,  \
                                           *lwork, nullptr, info},                                                     \
                                  jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt, work, lwork, info, lu, lv);          \
    }

#define TARN_FORTRAN_COMPLEX_GESVD(name, device, T, S)                                                                 \
    TARN_API void name##_(const char* jobu, const char* jobvt, const int* m, const int* n, T* a, const int* lda, S* s, \
                          T* u, const int* ldu, T* vt, const int* ldvt, T* work, const int* lwork, S* rwork,           \
                          int* info, Length lu, Length lv)                                                             \
    {                                                                                                                  \
        fortran<decltype(device)>(                                                                                     \
            name##Routine,                                                                                             \
            Gesvd<T>{letter(jobu), letter(jobvt), *m, *n, a, *lda, s, u, *ldu, vt, *ldvt, work, *lwork, rwork, info},  \
            jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt, work, lwork, rwork, info, lu, lv);                         \
    }

#define TARN_FORTRAN(name, device, FAMILY, T, S) TARN_FORTRAN_##FAMILY(name, device, T, S)

extern "C" {
TARN_DROPIN_BLAS(TARN_FORTRAN)
TARN_DROPIN_LAPACK(TARN_FORTRAN)
}
