// Fortran names of the CPU BLAS and LAPACK: 32-bit integers, hidden lengths of character arguments at the end.
#pragma once

#include <algorithm>
#include <complex>
#include <cstddef>
#include <vector>

namespace tarn::tool {

template <class T>
using FortranGemm = void(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                         const T* alpha, const T* a, const int* lda, const T* b, const int* ldb, const T* beta, T* c,
                         const int* ldc, std::size_t, std::size_t);
template <class T>
using FortranTrsm = void(const char* side, const char* uplo, const char* transa, const char* diag, const int* m,
                         const int* n, const T* alpha, const T* a, const int* lda, T* b, const int* ldb, std::size_t,
                         std::size_t, std::size_t, std::size_t);
template <class T>
using FortranTrmm = FortranTrsm<T>;
template <class T>
using FortranSymm = void(const char* side, const char* uplo, const int* m, const int* n, const T* alpha, const T* a,
                         const int* lda, const T* b, const int* ldb, const T* beta, T* c, const int* ldc, std::size_t,
                         std::size_t);
/// S is the type of alpha and beta: real for herk.
template <class T, class S = T>
using FortranSyrk = void(const char* uplo, const char* trans, const int* n, const int* k, const S* alpha, const T* a,
                         const int* lda, const S* beta, T* c, const int* ldc, std::size_t, std::size_t);
/// S is the type of beta: real for her2k.
template <class T, class S = T>
using FortranSyr2k = void(const char* uplo, const char* trans, const int* n, const int* k, const T* alpha, const T* a,
                          const int* lda, const T* b, const int* ldb, const S* beta, T* c, const int* ldc, std::size_t,
                          std::size_t);
template <class T>
using FortranGemv = void(const char* trans, const int* m, const int* n, const T* alpha, const T* a, const int* lda,
                         const T* x, const int* incx, const T* beta, T* y, const int* incy, std::size_t);
template <class T>
using FortranSymv = void(const char* uplo, const int* n, const T* alpha, const T* a, const int* lda, const T* x,
                         const int* incx, const T* beta, T* y, const int* incy, std::size_t);
template <class T>
using FortranGetrf = void(const int* m, const int* n, T* a, const int* lda, int* ipiv, int* info);
template <class T>
using FortranGetrs = void(const char* trans, const int* n, const int* nrhs, const T* a, const int* lda, const int* ipiv,
                          T* b, const int* ldb, int* info, std::size_t);
template <class T>
using FortranLaswp = void(const int* n, T* a, const int* lda, const int* k1, const int* k2, const int* ipiv,
                          const int* incx);
template <class T>
using FortranGesv = void(const int* n, const int* nrhs, T* a, const int* lda, int* ipiv, T* b, const int* ldb,
                         int* info);
template <class T>
using FortranGeqrf = void(const int* m, const int* n, T* a, const int* lda, T* tau, T* work, const int* lwork,
                          int* info);
template <class T>
using FortranGels = void(const char* trans, const int* m, const int* n, const int* nrhs, T* a, const int* lda, T* b,
                         const int* ldb, T* work, const int* lwork, int* info, std::size_t);
template <class T>
using FortranGglse = void(const int* m, const int* n, const int* p, T* a, const int* lda, T* b, const int* ldb, T* c,
                          T* d, T* x, T* work, const int* lwork, int* info);
template <class T>
using FortranGesvd = void(const char* jobu, const char* jobvt, const int* m, const int* n, T* a, const int* lda, T* s,
                          T* u, const int* ldu, T* vt, const int* ldvt, T* work, const int* lwork, int* info,
                          std::size_t, std::size_t);
template <class T>
using FortranComplexGesvd = void(const char* jobu, const char* jobvt, const int* m, const int* n, std::complex<T>* a,
                                 const int* lda, T* s, std::complex<T>* u, const int* ldu, std::complex<T>* vt,
                                 const int* ldvt, std::complex<T>* work, const int* lwork, T* rwork, int* info,
                                 std::size_t, std::size_t);
/// R is the type of norms, W of the second workspace: int for real T, R for complex T.
template <class T, class R = T, class W = int>
using FortranGecon = void(const char* norm, const int* n, const T* a, const int* lda, const R* anorm, R* rcond, T* work,
                          W* work2, int* info, std::size_t);
template <class T, class R = T, class W = int>
using FortranTrcon = void(const char* norm, const char* uplo, const char* diag, const int* n, const T* a,
                          const int* lda, R* rcond, T* work, W* work2, int* info, std::size_t, std::size_t,
                          std::size_t);

extern "C" {
FortranGemm<float> sgemm_;
FortranGemm<double> dgemm_;
FortranGemm<std::complex<float>> cgemm_;
FortranGemm<std::complex<double>> zgemm_;
FortranTrsm<float> strsm_;
FortranTrsm<double> dtrsm_;
FortranTrsm<std::complex<float>> ctrsm_;
FortranTrsm<std::complex<double>> ztrsm_;
FortranTrmm<float> strmm_;
FortranTrmm<double> dtrmm_;
FortranTrmm<std::complex<float>> ctrmm_;
FortranTrmm<std::complex<double>> ztrmm_;
FortranSymm<float> ssymm_;
FortranSymm<double> dsymm_;
FortranSymm<std::complex<float>> csymm_;
FortranSymm<std::complex<double>> zsymm_;
FortranSymm<std::complex<float>> chemm_;
FortranSymm<std::complex<double>> zhemm_;
FortranSyrk<float> ssyrk_;
FortranSyrk<double> dsyrk_;
FortranSyrk<std::complex<float>> csyrk_;
FortranSyrk<std::complex<double>> zsyrk_;
FortranSyrk<std::complex<float>, float> cherk_;
FortranSyrk<std::complex<double>, double> zherk_;
FortranSyr2k<float> ssyr2k_;
FortranSyr2k<double> dsyr2k_;
FortranSyr2k<std::complex<float>> csyr2k_;
FortranSyr2k<std::complex<double>> zsyr2k_;
FortranSyr2k<std::complex<float>, float> cher2k_;
FortranSyr2k<std::complex<double>, double> zher2k_;
FortranGemv<float> sgemv_;
FortranGemv<double> dgemv_;
FortranGemv<std::complex<float>> cgemv_;
FortranGemv<std::complex<double>> zgemv_;
FortranSymv<float> ssymv_;
FortranSymv<double> dsymv_;
FortranSymv<std::complex<float>> chemv_;
FortranSymv<std::complex<double>> zhemv_;
FortranGetrf<float> sgetrf_;
FortranGetrf<double> dgetrf_;
FortranGetrf<std::complex<float>> cgetrf_;
FortranGetrf<std::complex<double>> zgetrf_;
FortranGetrs<float> sgetrs_;
FortranGetrs<double> dgetrs_;
FortranGetrs<std::complex<float>> cgetrs_;
FortranGetrs<std::complex<double>> zgetrs_;
FortranLaswp<float> slaswp_;
FortranLaswp<std::complex<float>> claswp_;
FortranGesv<float> sgesv_;
FortranGesv<double> dgesv_;
FortranGesv<std::complex<float>> cgesv_;
FortranGeqrf<float> sgeqrf_;
FortranGeqrf<std::complex<float>> cgeqrf_;
FortranGels<float> sgels_;
FortranGels<double> dgels_;
FortranGels<std::complex<float>> cgels_;
FortranGels<std::complex<double>> zgels_;
FortranGglse<float> sgglse_;
FortranGglse<double> dgglse_;
FortranGglse<std::complex<float>> cgglse_;
FortranGesvd<float> sgesvd_;
FortranGesvd<double> dgesvd_;
FortranComplexGesvd<float> cgesvd_;
FortranGecon<float> sgecon_;
FortranGecon<double> dgecon_;
FortranGecon<std::complex<float>, float, float> cgecon_;
FortranGecon<std::complex<double>, double, double> zgecon_;
FortranTrcon<float> strcon_;
FortranTrcon<double> dtrcon_;
FortranTrcon<std::complex<float>, float, float> ctrcon_;
}

/// Calls call(work, lwork) twice: first with lwork -1, which asks for the best length of the workspace, then with it.
template <class T, class Call>
void withWorkspace(const Call& call)
{
    T length = 0;
    int lwork = -1;
    call(&length, &lwork);
    lwork = int(std::real(length));
    std::vector<T> work(std::size_t(std::max(1, lwork)));
    call(work.data(), &lwork);
}

} // namespace tarn::tool
