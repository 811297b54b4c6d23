#include "blas/cpu.h"

#include "blas/fortran.h"
#include "blas/letters.h"
#include "frame/exceptions.h"

#include <direct_call.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace tarn::cpu {

namespace {

/// The CPU routines of an element type, bound directly: none of this work is for who stands before the CPU LAPACK.
template <class T>
struct Calls;

template <>
struct Calls<float>
{
    static inline const auto getrf = TARN_DIRECT(sgetrf_);
    static inline const auto laswp = TARN_DIRECT(slaswp_);
    static inline const auto geqr2 = TARN_DIRECT(sgeqr2_);
    static inline const auto gelqf = TARN_DIRECT(sgelqf_);
    static inline const auto gerqf = TARN_DIRECT(sgerqf_);
    static inline const auto gebd2 = TARN_DIRECT(sgebd2_);
    static inline const auto orgqr = TARN_DIRECT(sorgqr_);
    static inline const auto orglq = TARN_DIRECT(sorglq_);
    static inline const auto ormqr = TARN_DIRECT(sormqr_);
    static inline const auto ormlq = TARN_DIRECT(sormlq_);
    static inline const auto ormrq = TARN_DIRECT(sormrq_);
    static inline const auto larfg = TARN_DIRECT(slarfg_);
    static inline const auto larft = TARN_DIRECT(slarft_);
    static inline const auto larfb = TARN_DIRECT(slarfb_);
    static inline const auto gemm = TARN_DIRECT(sgemm_);
    static inline const auto trmm = TARN_DIRECT(strmm_);
    static inline const auto trsm = TARN_DIRECT(strsm_);
    static inline const auto gemv = TARN_DIRECT(sgemv_);
    static inline const auto axpy = TARN_DIRECT(saxpy_);
    static inline const auto copy = TARN_DIRECT(scopy_);
    static inline const auto scal = TARN_DIRECT(sscal_);
};

template <>
struct Calls<Complex<float>>
{
    static inline const auto getrf = TARN_DIRECT(cgetrf_);
    static inline const auto laswp = TARN_DIRECT(claswp_);
    static inline const auto geqr2 = TARN_DIRECT(cgeqr2_);
    static inline const auto gelqf = TARN_DIRECT(cgelqf_);
    static inline const auto gerqf = TARN_DIRECT(cgerqf_);
    static inline const auto gebd2 = TARN_DIRECT(cgebd2_);
    static inline const auto orgqr = TARN_DIRECT(cungqr_);
    static inline const auto orglq = TARN_DIRECT(cunglq_);
    static inline const auto ormqr = TARN_DIRECT(cunmqr_);
    static inline const auto ormlq = TARN_DIRECT(cunmlq_);
    static inline const auto ormrq = TARN_DIRECT(cunmrq_);
    static inline const auto larfg = TARN_DIRECT(clarfg_);
    static inline const auto larft = TARN_DIRECT(clarft_);
    static inline const auto larfb = TARN_DIRECT(clarfb_);
    static inline const auto gemm = TARN_DIRECT(cgemm_);
    static inline const auto trmm = TARN_DIRECT(ctrmm_);
    static inline const auto trsm = TARN_DIRECT(ctrsm_);
    static inline const auto gemv = TARN_DIRECT(cgemv_);
    static inline const auto axpy = TARN_DIRECT(caxpy_);
    static inline const auto copy = TARN_DIRECT(ccopy_);
    static inline const auto scal = TARN_DIRECT(cscal_);
};

template <class T>
std::unique_ptr<T[]> workspace(int elements)
{
    return std::unique_ptr<T[]>(new T[std::max(elements, 1)]);
}

thread_local bool holdsTurn = false; ///< so that work within work does not wait for itself

template <class Call>
void inTurn(double flops, const Call& call)
{
    const Turn turn(flops);
    call();
}

float realPart(float x) { return x; }
float realPart(Complex<float> x) { return x.real(); }

/// call(work, lwork, &info), first with lwork = -1 for the size that it wants, then with that many elements.
template <class T, class Call>
void withWorkspace(Call&& call)
{
    int info = 0;
    T wanted{};
    call(&wanted, -1, &info);
    checkInfo(info);
    const int lwork = std::max(int(realPart(wanted)), 1);
    const auto work = workspace<T>(lwork);
    call(work.get(), lwork, &info);
    checkInfo(info);
}

/// The common form of gelqf and gerqf.
template <class T, class Routine>
void factorise(Routine routine, int m, int n, T* a, int lda, T* tau)
{
    inTurn(2.0 * m * n * std::min(m, n), [&] {
        withWorkspace<T>([&](T* work, int lwork, int* info) { routine(&m, &n, a, &lda, tau, work, &lwork, info); });
    });
}

/// The common form of orgqr and orglq.
template <class T, class Routine>
void generate(Routine routine, int m, int n, int k, T* a, int lda, const T* tau)
{
    inTurn(2.0 * m * n * k, [&] {
        withWorkspace<T>([&](T* work, int lwork, int* info) { routine(&m, &n, &k, a, &lda, tau, work, &lwork, info); });
    });
}

/// The common form of ormqr, ormlq and ormrq.
template <class T, class Routine>
void multiply(Routine routine, char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c,
              int ldc)
{
    trans = transChar<T>(trans);
    inTurn(2.0 * m * n * k, [&] {
        withWorkspace<T>([&](T* work, int lwork, int* info) {
            routine(&side, &trans, &m, &n, &k, a, &lda, tau, c, &ldc, work, &lwork, info, 1, 1);
        });
    });
}

} // namespace

Turn::Turn(double flops)
{
    constexpr double worthThreads = 5e5; // below, a CPU BLAS uses one thread
    if (flops <= worthThreads || holdsTurn)
        return;
    turn_.emplace();
    holdsTurn = true;
}

Turn::~Turn()
{
    if (turn_)
        holdsTurn = false;
}

template <class T>
void getrf(int m, int n, T* a, int lda, int* ipiv)
{
    int info = 0;
    inTurn(double(m) * n * std::min(m, n), [&] { Calls<T>::getrf(&m, &n, a, &lda, ipiv, &info); });
    checkInfo(info);
}

template <class T>
void laswp(int n, T* a, int lda, int k1, int k2, const int* ipiv)
{
    // It takes the threads of the CPU BLAS however small its work is.
    const Turn turn(std::numeric_limits<double>::infinity());
    const int step = 1;
    Calls<T>::laswp(&n, a, &lda, &k1, &k2, ipiv, &step);
}

template <class T>
void geqr2(int m, int n, T* a, int lda, T* tau)
{
    const auto work = workspace<T>(n);
    int info = 0;
    inTurn(2.0 * m * n * std::min(m, n), [&] { Calls<T>::geqr2(&m, &n, a, &lda, tau, work.get(), &info); });
    checkInfo(info);
}

template <class T>
void gelqf(int m, int n, T* a, int lda, T* tau)
{
    factorise(Calls<T>::gelqf, m, n, a, lda, tau);
}

template <class T>
void gerqf(int m, int n, T* a, int lda, T* tau)
{
    factorise(Calls<T>::gerqf, m, n, a, lda, tau);
}

template <class T>
void gebd2(int m, int n, T* a, int lda, Real<T>* d, Real<T>* e, T* tauq, T* taup)
{
    const auto work = workspace<T>(std::max(m, n));
    int info = 0;
    inTurn(4.0 * m * n * std::min(m, n),
           [&] { Calls<T>::gebd2(&m, &n, a, &lda, d, e, tauq, taup, work.get(), &info); });
    checkInfo(info);
}

template <class T>
void orgqr(int m, int n, int k, T* a, int lda, const T* tau)
{
    generate(Calls<T>::orgqr, m, n, k, a, lda, tau);
}

template <class T>
void orglq(int m, int n, int k, T* a, int lda, const T* tau)
{
    generate(Calls<T>::orglq, m, n, k, a, lda, tau);
}

template <class T>
void ormqr(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c, int ldc)
{
    multiply(Calls<T>::ormqr, side, trans, m, n, k, a, lda, tau, c, ldc);
}

template <class T>
void ormlq(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c, int ldc)
{
    multiply(Calls<T>::ormlq, side, trans, m, n, k, a, lda, tau, c, ldc);
}

template <class T>
void ormrq(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c, int ldc)
{
    multiply(Calls<T>::ormrq, side, trans, m, n, k, a, lda, tau, c, ldc);
}

template <class T>
void larfg(int n, T* alpha, T* x, int incx, T* tau)
{
    Calls<T>::larfg(&n, alpha, x, &incx, tau);
}

template <class T>
void larft(char direct, char storev, int n, int k, const T* v, int ldv, const T* tau, T* t, int ldt)
{
    inTurn(double(n) * k * k, [&] { Calls<T>::larft(&direct, &storev, &n, &k, v, &ldv, tau, t, &ldt, 1, 1); });
}

template <class T>
void larfb(char side, char trans, char direct, char storev, int m, int n, int k, const T* v, int ldv, const T* t,
           int ldt, T* c, int ldc)
{
    trans = transChar<T>(trans);
    const int ldwork = std::max(1, side == 'L' ? n : m);
    const auto work = workspace<T>(ldwork * k);
    inTurn(4.0 * m * n * k, [&] {
        Calls<T>::larfb(&side, &trans, &direct, &storev, &m, &n, &k, v, &ldv, t, &ldt, c, &ldc, work.get(), &ldwork, 1,
                        1, 1, 1);
    });
}

void lacgv(int n, Complex<float>* x, int incx) { clacgv_(&n, x, &incx); }

void lartg(float f, float g, float* cs, float* sn, float* r) { TARN_DIRECT(slartg_)(&f, &g, cs, sn, r); }

void las2(float f, float g, float h, float* ssmin, float* ssmax) { TARN_DIRECT(slas2_)(&f, &g, &h, ssmin, ssmax); }

void lasv2(float f, float g, float h, float* ssmin, float* ssmax, float* snr, float* csr, float* snl, float* csl)
{
    TARN_DIRECT(slasv2_)(&f, &g, &h, ssmin, ssmax, snr, csr, snl, csl);
}

void lasq1(int n, float* d, float* e)
{
    const auto work = workspace<float>(4 * n);
    int info = 0;
    TARN_DIRECT(slasq1_)(&n, d, e, work.get(), &info);
    checkInfo(info);
}

template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
          T* c, int ldc)
{
    transa = transChar<T>(transa);
    transb = transChar<T>(transb);
    inTurn(2.0 * m * n * k,
           [&] { Calls<T>::gemm(&transa, &transb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1); });
}

template <class T>
void trmm(char side, char uplo, char trans, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb)
{
    trans = transChar<T>(trans);
    inTurn(double(m) * n * (side == 'L' ? m : n),
           [&] { Calls<T>::trmm(&side, &uplo, &trans, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1, 1); });
}

template <class T>
void trsm(char side, char uplo, char trans, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb)
{
    trans = transChar<T>(trans);
    inTurn(double(m) * n * (side == 'L' ? m : n),
           [&] { Calls<T>::trsm(&side, &uplo, &trans, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1, 1); });
}

template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    trans = transChar<T>(trans);
    inTurn(2.0 * m * n, [&] { Calls<T>::gemv(&trans, &m, &n, &alpha, a, &lda, x, &incx, &beta, y, &incy, 1); });
}

template <class T>
void axpy(int n, T alpha, const T* x, int incx, T* y, int incy)
{
    Calls<T>::axpy(&n, &alpha, x, &incx, y, &incy);
}

template <class T>
void copy(int n, const T* x, int incx, T* y, int incy)
{
    Calls<T>::copy(&n, x, &incx, y, &incy);
}

template <class T>
void scal(int n, T alpha, T* x, int incx)
{
    Calls<T>::scal(&n, &alpha, x, &incx);
}

#define TARN_CPU(T)                                                                                                    \
    template void getrf(int, int, T*, int, int*);                                                                      \
    template void laswp(int, T*, int, int, int, const int*);                                                           \
    template void geqr2(int, int, T*, int, T*);                                                                        \
    template void gelqf(int, int, T*, int, T*);                                                                        \
    template void gerqf(int, int, T*, int, T*);                                                                        \
    template void gebd2(int, int, T*, int, Real<T>*, Real<T>*, T*, T*);                                                \
    template void orgqr(int, int, int, T*, int, const T*);                                                             \
    template void orglq(int, int, int, T*, int, const T*);                                                             \
    template void ormqr(char, char, int, int, int, const T*, int, const T*, T*, int);                                  \
    template void ormlq(char, char, int, int, int, const T*, int, const T*, T*, int);                                  \
    template void ormrq(char, char, int, int, int, const T*, int, const T*, T*, int);                                  \
    template void larfg(int, T*, T*, int, T*);                                                                         \
    template void larft(char, char, int, int, const T*, int, const T*, T*, int);                                       \
    template void larfb(char, char, char, char, int, int, int, const T*, int, const T*, int, T*, int);                 \
    template void gemm(char, char, int, int, int, T, const T*, int, const T*, int, T, T*, int);                        \
    template void trmm(char, char, char, char, int, int, T, const T*, int, T*, int);                                   \
    template void trsm(char, char, char, char, int, int, T, const T*, int, T*, int);                                   \
    template void gemv(char, int, int, T, const T*, int, const T*, int, T, T*, int);                                   \
    template void axpy(int, T, const T*, int, T*, int);                                                                \
    template void copy(int, const T*, int, T*, int);                                                                   \
    template void scal(int, T, T*, int);

TARN_CPU(float)
TARN_CPU(Complex<float>)

} // namespace tarn::cpu
