#include "blas/blas.h"
#include "blas/cpu.h"
#include "frame/tuning.h"
#include "lapack/kernels.h"
#include "lapack/svd/labrd.h"
#include "lapack/svd/svd.h"
#include "memory/allocators.h"
#include "memory/managed_memory.h"
#include "memory/transfer.h"

#include <algorithm>
#include <vector>

namespace tarn::svd {

namespace {

/// Memory of kind A for a matrix.
template <class T, template <class> class A>
class Buffer
{
public:
    Buffer(int rows, int cols) { memory_.reset({rows, cols, 1}); }

    /// Its first rows and columns.
    MatrixView<T> view(int rows, int cols) const { return {memory_.data(), rows, cols, memory_.ld()}; }

private:
    velk::ManagedMemory<T, A<T>> memory_;
};

template <class T>
class Reduction
{
public:
    Reduction(MatrixView<T> matrix, int nb)
        : A(matrix), k(std::min(A.rows, A.cols)), nb_(nb), X(A.rows, nb), Y(A.cols, nb), deviceLine(A.cols, 1),
          col(A.rows, nb), row(nb, A.cols), hostX(A.rows, nb), hostY(A.cols, nb), line(A.cols, 1), d(k), e(k), tauq(k),
          taup(k)
    {}

    /// Columns and rows i to i+nb-1, and with them the rest of A.
    void block(int i)
    {
        const int m = A.rows - i + 1, n = A.cols - i + 1, nb = nb_;
        BidiagonalPanel<T> P{
            {A.at(i, i), m, n, A.ld},   col.view(m, nb),        row.view(nb, n),        hostX.view(m, nb),
            hostY.view(n, nb),          X.view(m, nb),          Y.view(n, nb),          line.view(n, 1).data,
            deviceLine.view(n, 1).data, {d.data() + i - 1, nb}, {e.data() + i - 1, nb}, {tauq.data() + i - 1, nb},
            {taup.data() + i - 1, nb},  Arrival(colStream),     Arrival(rowStream),     vectorStream};
        getMatrix(m, nb, P.col.data, P.col.ld, P.A.data, A.ld, colStream);
        getMatrix(nb, n, P.row.data, P.row.ld, P.A.data, A.ld, rowStream);
        labrd(P);
        setMatrix(m, nb, P.A.data, A.ld, P.col.data, P.col.ld);
        setMatrix(nb, n, P.A.data, A.ld, P.row.data, P.row.ld);
        setMatrix(m, nb, P.deviceX.data, P.deviceX.ld, P.X.data, P.X.ld);
        setMatrix(n, nb, P.deviceY.data, P.deviceY.ld, P.Y.data, P.Y.ld);

        // A(i+nb:m, i+nb:n) -= V Y^H + X U^H, with V below and U^H beside the block of P.A
        const int below = m - nb, right = n - nb;
        T* const rest = P.A.at(nb + 1, nb + 1);
        blas::gemm('N', 'C', below, right, nb, T(-1), P.A.at(nb + 1, 1), A.ld, P.deviceY.at(nb + 1, 1), P.deviceY.ld,
                   T(1), rest, A.ld);
        blas::gemm('N', 'N', below, right, nb, T(-1), P.deviceX.at(nb + 1, 1), P.deviceX.ld, P.A.at(1, nb + 1), A.ld,
                   T(1), rest, A.ld);
    }

    /// What is left from (i, i) on, at most nb columns or rows, on the host.
    void last(int i)
    {
        const int m = A.rows - i + 1, n = A.cols - i + 1;
        const MatrixView<T> host = A.rows >= A.cols ? col.view(m, n) : row.view(m, n);
        Real<T>* const offDiagonal = std::min(m, n) == 1 ? nullptr : e.data() + i - 1;
        getMatrix(m, n, host.data, host.ld, A.at(i, i), A.ld);
        cpu::gebd2(m, n, host.data, host.ld, d.data() + i - 1, offDiagonal, tauq.data() + i - 1, taup.data() + i - 1);
        setMatrix(m, n, A.at(i, i), A.ld, host.data, host.ld);
    }

    /// The results to the device. B takes the places in A where the reflectors' leading ones still stand.
    void deliver(Real<T>* deviceD, Real<T>* deviceE, T* deviceTauq, T* deviceTaup) const
    {
        setVector(k, deviceTauq, tauq.data());
        setVector(k, deviceTaup, taup.data());
        setVector(k, deviceD, d.data());
        setVector(k - 1, deviceE, e.data());
        kernel::CopyVectorRealToComplex(k, A.data, A.ld + 1, deviceD, 1);
        if (k > 1)
            kernel::CopyVectorRealToComplex(k - 1, A.rows >= A.cols ? A.at(1, 2) : A.at(2, 1), A.ld + 1, deviceE, 1);
    }

private:
    const MatrixView<T> A;
    const int k, nb_;
    const Buffer<T, BlasAllocator> X, Y, deviceLine;
    const Buffer<T, velk::PageLockedAllocator> col, row, hostX, hostY, line;
    std::vector<Real<T>> d, e;
    std::vector<T> tauq, taup;
    const StreamHandle rowStream = StreamHandle::create(), colStream = StreamHandle::create(),
                       vectorStream = StreamHandle::create();
};

} // namespace

template <class T>
void gebrd(int m, int n, T* a, int lda, Real<T>* d, Real<T>* e, T* tauq, T* taup)
{
    const int k = std::min(m, n), nb = blockSize<T>(Blocked::gebrd);
    Reduction<T> reduction({a, m, n, lda}, nb);
    int i = 1;
    for (; i <= k - nb; i += nb)
        reduction.block(i);
    reduction.last(i);
    reduction.deliver(d, e, tauq, taup);
}

template void gebrd(int, int, float*, int, float*, float*, float*, float*);
template void gebrd(int, int, Complex<float>*, int, float*, float*, Complex<float>*, Complex<float>*);

} // namespace tarn::svd
