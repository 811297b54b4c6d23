// ormqr, ormlq and ormrq: one scheme over three storages of reflectors.
#include "blas/cpu.h"
#include "blas/letters.h"
#include "frame/exceptions.h"
#include "frame/tuning.h"
#include "lapack/qr/block_reflector.h"
#include "lapack/qr/qr.h"
#include "memory/matrix_view.h"
#include "memory/mirrors.h"

#include <algorithm>
#include <memory>

namespace tarn::qr {

namespace {

/// What differs between the factorisations that Q comes from.
template <class T>
struct Origin
{
    decltype(&cpu::ormqr<T>) multiplyOnHost;
    Storage storage;
    bool ascending; ///< Q = H(1) H(2) ... H(k), with or without ^H on each; else Q = H(k)^H ... H(1)^H
};

template <class T>
constexpr Origin<T> fromQr{cpu::ormqr<T>, {'F', 'C'}, true};
template <class T>
constexpr Origin<T> fromLq{cpu::ormlq<T>, {'F', 'R'}, false};
template <class T>
constexpr Origin<T> fromRq{cpu::ormrq<T>, {'B', 'R'}, true};

/// The arguments of ormqr and its siblings.
template <class T>
struct Product
{
    char side, trans;
    int m, n, k;
    const T* a;
    int lda;
    T* tau;
    T* c;
    int ldc;

    int orderOfQ() const { return side == 'L' ? m : n; }
    bool isEmpty() const { return m == 0 || n == 0 || k == 0; }

    /// Folds the letters and checks everything.
    void check(bool byRow)
    {
        side = upper(side);
        trans = upper(trans);
        require(isOneOf(side, "LR"), -1);
        require(isOneOf(trans, "NTC"), -2);
        require(m >= 0, -3);
        require(n >= 0, -4);
        require(k >= 0 && k <= orderOfQ(), -5);
        require(lda >= std::max(1, byRow ? k : orderOfQ()), -7);
        require(ldc >= std::max(1, m), -10);
        if (isEmpty())
            return;
        require(a != nullptr, -6);
        require(tau != nullptr, -8);
        require(c != nullptr, -9);
    }
};

/// The whole product on the CPU.
template <class T>
void multiplyOnHost(const Origin<T>& origin, const Product<T>& p, const T* tau)
{
    const int nq = p.orderOfQ();
    const int rows = origin.storage.byRow() ? p.k : nq, cols = origin.storage.byRow() ? nq : p.k;
    const std::unique_ptr<T[]> a(new T[std::size_t(rows) * cols]), c(new T[std::size_t(p.m) * p.n]);
    getMatrix(rows, cols, a.get(), rows, p.a, p.lda);
    getMatrix(p.m, p.n, c.get(), p.m, p.c, p.ldc);
    origin.multiplyOnHost(p.side, p.trans, p.m, p.n, p.k, a.get(), rows, tau, c.get(), p.m);
    setMatrix(p.m, p.n, p.c, p.ldc, c.get(), p.m);
}

/// Block by block, in the order in which the reflectors act on C.
template <class T>
void multiplyBlocked(const Origin<T>& origin, const Product<T>& p, int nb, const T* tau)
{
    const Storage storage = origin.storage;
    const bool left = p.side == 'L', notran = p.trans == 'N', byRow = storage.byRow();
    const bool forward = (left != notran) == origin.ascending;
    const char trans = !byRow ? p.trans : notran ? 'C' : 'N'; // rows hold the conjugates of the vectors
    const MatrixView<const T> A{p.a, byRow ? p.k : p.orderOfQ(), byRow ? p.orderOfQ() : p.k, p.lda};
    const MatrixView<T> C{p.c, p.m, p.n, p.ldc};
    const int ldPanel = byRow ? nb : p.orderOfQ();
    const std::unique_ptr<T[]> hostPanel(new T[std::size_t(p.orderOfQ()) * nb]);
    BlockReflector<T> H(storage, nb);

    const int lastBlock = (p.k - 1) / nb;
    for (int block = 0; block <= lastBlock; ++block) {
        const int i = 1 + nb * (forward ? block : lastBlock - block);
        const int ib = std::min(nb, p.k - i + 1);
        // Rows or columns of C, from start to end, that the reflectors i to i + ib - 1 touch.
        const bool downwards = storage.direct == 'F';
        const int start = downwards ? i : 1, end = downwards ? p.orderOfQ() : p.orderOfQ() - p.k + i + ib - 1;
        const int length = end - start + 1;

        const T* const v = byRow ? A.at(i, start) : A.at(start, i);
        getMatrix(byRow ? ib : length, byRow ? length : ib, hostPanel.get(), ldPanel, v, A.ld);
        H.form(length, ib, hostPanel.get(), ldPanel, tau + i - 1);
        if (left)
            H.apply('L', trans, length, p.n, ib, v, A.ld, C.at(start, 1), C.ld);
        else
            H.apply('R', trans, p.m, length, ib, v, A.ld, C.at(1, start), C.ld);
    }
}

template <class T>
void multiply(const Origin<T>& origin, Product<T> p)
{
    p.check(origin.storage.byRow());
    if (p.isEmpty())
        return;
    const int nb = blockSize<T>(Blocked::qr);
    HostMirror<T> tauHost({p.k, 1, 1}, p.tau, p.k, MirrorIn | MirrorOut);
    if (nb >= p.k)
        multiplyOnHost(origin, p, tauHost.data());
    else
        multiplyBlocked(origin, p, nb, tauHost.data());
}

} // namespace

template <class T>
void ormqr(char side, char trans, int m, int n, int k, const T* a, int lda, T* tau, T* c, int ldc)
{
    multiply(fromQr<T>, {side, trans, m, n, k, a, lda, tau, c, ldc});
}

template <class T>
void ormlq(char side, char trans, int m, int n, int k, const T* a, int lda, T* tau, T* c, int ldc)
{
    multiply(fromLq<T>, {side, trans, m, n, k, a, lda, tau, c, ldc});
}

template <class T>
void ormrq(char side, char trans, int m, int n, int k, const T* a, int lda, T* tau, T* c, int ldc)
{
    multiply(fromRq<T>, {side, trans, m, n, k, a, lda, tau, c, ldc});
}

#define TARN_INSTANTIATE(T)                                                                                            \
    template void ormqr(char, char, int, int, int, const T*, int, T*, T*, int);                                        \
    template void ormlq(char, char, int, int, int, const T*, int, T*, T*, int);                                        \
    template void ormrq(char, char, int, int, int, const T*, int, T*, T*, int);

TARN_INSTANTIATE(float)
TARN_INSTANTIATE(Complex<float>)

} // namespace tarn::qr
