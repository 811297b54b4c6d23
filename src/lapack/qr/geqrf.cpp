#include "blas/blas.h"
#include "blas/letters.h"
#include "frame/exceptions.h"
#include "frame/tuning.h"
#include "lapack/kernels.h"
#include "lapack/qr/panel.h"
#include "lapack/qr/qr.h"
#include "memory/matrix_view.h"
#include "memory/memory_pool.h"
#include "memory/mirrors.h"
#include "memory/transfer.h"

#include <algorithm>
#include <memory>

namespace tarn::qr {

namespace {

/// The block reflector of one panel after the other on the device. T goes there as a full matrix, so that nothing but
/// general products is needed: C := C - V ((T^H V^H) C).
template <class T>
class TrailingUpdate
{
public:
    TrailingUpdate(MatrixView<T> matrix, int nb)
        : A(matrix), nb_(nb), deviceT_(acquire(nb)), savedBlock_(acquire(nb)), work1_(acquire(A.rows)),
          work2_(acquire(A.cols))
    {}

    /// Takes the panel in A(i:m, i:i+nb-1) and its factor: the upper triangle at hostT, which is overwritten.
    void begin(int i, T* hostT)
    {
        transposeTriangle(hostT);
        setMatrix(nb_, nb_, deviceT_.data(), nb_, hostT, nb_);
        if constexpr (isComplex<T>)
            kernel::ConjugateMatrix(nb_, nb_, deviceT_.data(), nb_);
        kernel::CopyMatrix(nb_, nb_, savedBlock_.data(), nb_, A.at(i, i), A.ld);
        kernel::MakeTriangular('L', 'U', nb_, nb_, A.at(i, i), A.ld);
        blas::gemm('N', transChar<T>('C'), nb_, A.rows - i + 1, nb_, T(1), deviceT_.data(), nb_, A.at(i, i), A.ld, T(0),
                   work1_.data(), nb_);
    }

    /// Applies the reflector to A(i:m, c:c+w-1).
    void apply(int i, int c, int w)
    {
        const int rows = A.rows - i + 1;
        blas::gemm('N', 'N', nb_, w, rows, T(1), work1_.data(), nb_, A.at(i, c), A.ld, T(0), work2_.data(), nb_);
        blas::gemm('N', 'N', rows, w, nb_, T(-1), A.at(i, i), A.ld, work2_.data(), nb_, T(1), A.at(i, c), A.ld);
    }

    /// Puts R and the vectors back into the diagonal block.
    void end(int i) { kernel::CopyMatrix(nb_, nb_, A.at(i, i), A.ld, savedBlock_.data(), nb_); }

private:
    PoolBlock<T> acquire(int columns) { return MemoryPool<T>::instance().acquire(std::int64_t(nb_) * columns); }

    /// Makes the upper triangle a lower one with zeros above.
    void transposeTriangle(T* t) const
    {
        const MatrixView<T> factor{t, nb_, nb_, nb_};
        for (int c = 2; c <= nb_; ++c)
            for (int r = 1; r < c; ++r) {
                *factor.at(c, r) = *factor.at(r, c);
                *factor.at(r, c) = T(0);
            }
    }

    MatrixView<T> A;
    int nb_;
    PoolBlock<T> deviceT_, savedBlock_, work1_, work2_;
};

/// Factorises panels of nb columns while more than nb reflectors are left; returns the column that it has come to. The
/// columns of the next panel are updated first and sent to the host; while the CPU factorises them, the device updates
/// the rest. hostPanel is filled anew only after it has been sent, which the synchronous copy to the device sees to.
template <class T>
int factorisePanels(MatrixView<T> A, int nb, T* tau)
{
    const int m = A.rows, n = A.cols, k = std::min(m, n);
    velk::ManagedMemory<T, velk::PageLockedAllocator<T>> hostPanel;
    hostPanel.reset({m, nb, 1});
    std::vector<T> hostT(std::size_t(nb) * nb);
    TrailingUpdate<T> update(A, nb);
    const StreamHandle copyStream = StreamHandle::create();

    int i = 1;
    getMatrix(m, nb, hostPanel.data(), m, A.at(1, 1), A.ld, copyStream);
    for (; i <= k - nb; i += nb) {
        const int rows = m - i + 1;
        const int next = std::min(n - i - nb + 1, nb), rest = n - i - nb + 1 - next;

        copyStream.synchronize();
        factorisePanel({hostPanel.data(), rows, nb, m}, tau + i - 1, {hostT.data(), nb, nb, nb});
        setMatrix(rows, nb, A.at(i, i), A.ld, hostPanel.data(), m);
        update.begin(i, hostT.data());

        update.apply(i, i + nb, next);
        getMatrix(rows - nb, next, hostPanel.data(), m, A.at(i + nb, i + nb), A.ld, copyStream);

        if (rest > 0)
            update.apply(i, i + nb + next, rest);
        update.end(i);
    }
    copyStream.synchronize(); // the last look-ahead is of no use, but it must not outlive its buffer
    return i;
}

/// Factorises what is left of A on the CPU.
template <class T>
void factoriseLast(MatrixView<T> A, T* tau)
{
    const std::unique_ptr<T[]> host(new T[std::size_t(A.rows) * A.cols]);
    getMatrix(A.rows, A.cols, host.get(), A.rows, A.data, A.ld);
    factoriseOnHost<T>({host.get(), A.rows, A.cols, A.rows}, tau);
    setMatrix(A.rows, A.cols, A.data, A.ld, host.get(), A.rows);
}

} // namespace

void checkGeqrf(int m, int n, const void* a, int lda, const void* tau)
{
    require(m >= 0, -1);
    require(n >= 0, -2);
    require(lda >= std::max(1, m), -4);
    if (std::max(m, n) <= 1 || std::min(m, n) == 0)
        return;
    require(a != nullptr, -3);
    require(tau != nullptr, -5);
}

template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau)
{
    checkGeqrf(m, n, a, lda, tau);
    const int k = std::min(m, n);
    if (k == 0)
        return;
    const int nb = blockSize<T>(Blocked::qr);
    const MatrixView<T> A{a, m, n, lda};
    HostMirror<T> tauHost({k, 1, 1}, tau, k, MirrorIn | MirrorOut);

    // The last block takes all columns to its right along.
    const int i = k > nb ? factorisePanels(A, nb, tauHost.data()) : 1;
    factoriseLast<T>({A.at(i, i), m - i + 1, n - i + 1, lda}, tauHost.data() + i - 1);
}

template void geqrf(int, int, float*, int, float*);
template void geqrf(int, int, Complex<float>*, int, Complex<float>*);

} // namespace tarn::qr
