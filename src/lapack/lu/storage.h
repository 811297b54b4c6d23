// The two storages in which the LU factorisation works. Both offer the same steps on a working matrix W, m by n, whose
// panels travel between the device and a page-locked host buffer; indices are one-based.
//
//   fetchPanel(j, w)         W(j:m, j:j+w-1) -> host buffer, leading dimension m - j + 1; asynchronous
//   sendPanel(j, w)          the host buffer towards the device; asynchronous
//   placePanel(j, w)         host buffer, sent and arrived -> W(j:m, j:j+w-1)
//   interchange(c, w, j, jb) rows j to j+jb-1 of W(:, c:c+w-1) exchanged with the rows that their pivots name
//   solve(j, jb, c, w)       W(j:j+jb-1, c:c+w-1) := L^-1 W(j:j+jb-1, c:c+w-1), L the unit triangle at W(j, j)
//   update(j, jb, c, w)      W(j+jb:m, c:c+w-1) -= W(j+jb:m, j:j+jb-1) W(j:j+jb-1, c:c+w-1)
#pragma once

#include "blas/blas.h"
#include "lapack/kernels.h"
#include "memory/allocators.h"
#include "memory/managed_memory.h"
#include "memory/matrix_view.h"
#include "memory/transfer.h"

namespace tarn::lu {

template <class T>
using HostPanel = velk::ManagedMemory<T, velk::PageLockedAllocator<T>>;

/// W in the caller's storage, A itself.
template <class T>
class NaturalStorage
{
public:
    NaturalStorage(MatrixView<T> matrix, int) : A(matrix) {}

    void begin() {}
    void end() {}

    void fetchPanel(int j, int w, HostPanel<T>& host, const StreamHandle& stream)
    {
        const int rows = A.rows - j + 1;
        getMatrix(rows, w, host.data(), rows, A.at(j, j), A.ld, stream);
    }

    void sendPanel(int j, int w, const HostPanel<T>& host, const StreamHandle& stream)
    {
        const int rows = A.rows - j + 1;
        setMatrix(rows, w, A.at(j, j), A.ld, host.data(), rows, stream);
    }

    void placePanel(int, int) {}

    void interchange(int c, int w, int j, int jb, const int* pivots)
    {
        kernel::LASWP(w, A.at(1, c), A.ld, j, j + jb - 1, pivots, 1);
    }

    void solve(int j, int jb, int c, int w)
    {
        blas::trsm('L', 'L', 'N', 'U', jb, w, T(1), A.at(j, j), A.ld, A.at(j, c), A.ld);
    }

    void update(int j, int jb, int c, int w)
    {
        const int below = A.rows - j - jb + 1;
        blas::gemm('N', 'N', below, w, jb, T(-1), A.at(j + jb, j), A.ld, A.at(j, c), A.ld, T(1), A.at(j + jb, c), A.ld);
    }

private:
    MatrixView<T> A;
};

/// W transposed: the array S at A holds W^T between begin and end, so that row interchanges of W exchange columns of S,
/// which are contiguous. Panels pass through a device buffer in natural layout. W is square.
template <class T>
class TransposedStorage
{
public:
    TransposedStorage(MatrixView<T> matrix, int nb) : S(matrix) { devicePanel.reset({S.rows, nb, 1}); }

    void begin() { kernel::TransposeInplace(S.rows, S.data, S.ld); }
    void end() { kernel::TransposeInplace(S.rows, S.data, S.ld); }

    void fetchPanel(int j, int w, HostPanel<T>& host, const StreamHandle& stream)
    {
        const int rows = S.rows - j + 1;
        kernel::Transpose(devicePanel.data(), rows, S.at(j, j), S.ld, w, rows);
        getMatrix(rows, w, host.data(), rows, devicePanel.data(), rows, stream);
    }

    void sendPanel(int j, int w, const HostPanel<T>& host, const StreamHandle& stream)
    {
        const int rows = S.rows - j + 1;
        setMatrix(rows, w, devicePanel.data(), rows, host.data(), rows, stream);
    }

    void placePanel(int j, int w)
    {
        const int rows = S.rows - j + 1;
        kernel::Transpose(S.at(j, j), S.ld, devicePanel.data(), rows, rows, w);
    }

    void interchange(int c, int w, int j, int jb, const int* pivots)
    {
        kernel::LASWPCOL(w, S.at(c, 1), S.ld, j, j + jb - 1, pivots, 1);
    }

    void solve(int j, int jb, int c, int w)
    {
        blas::trsm('R', 'U', 'N', 'U', w, jb, T(1), S.at(j, j), S.ld, S.at(c, j), S.ld);
    }

    void update(int j, int jb, int c, int w)
    {
        const int below = S.rows - j - jb + 1;
        blas::gemm('N', 'N', w, below, jb, T(-1), S.at(c, j), S.ld, S.at(j, j + jb), S.ld, T(1), S.at(c, j + jb), S.ld);
    }

private:
    MatrixView<T> S;
    velk::ManagedMemory<T, velk::CudaAllocator<T>> devicePanel;
};

} // namespace tarn::lu
