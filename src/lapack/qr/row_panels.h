// What the LQ and the RQ factorisation share: panels of rows, factorised on the CPU.
#pragma once

#include "blas/cpu.h"
#include "lapack/qr/block_reflector.h"
#include "memory/matrix_view.h"
#include "memory/transfer.h"

#include <memory>

namespace tarn::qr {

/// A factorisation on the CPU.
template <class T>
using FactoriseRows = void (*)(int m, int n, T* a, int lda, T* tau);

/// Factorises a block of the device on the CPU, where nothing else is left.
template <class T>
void factoriseLast(MatrixView<T> A, FactoriseRows<T> factorise, T* tau)
{
    const std::unique_ptr<T[]> host(new T[std::size_t(A.rows) * A.cols]);
    getMatrix(A.rows, A.cols, host.get(), A.rows, A.data, A.ld);
    factorise(A.rows, A.cols, host.get(), A.rows, tau);
    setMatrix(A.rows, A.cols, A.data, A.ld, host.get(), A.rows);
}

/// Steps of a factorisation of A by rows. Everything waits for everything: there is no look-ahead.
template <class T>
class RowPanels
{
public:
    /// storage: how it leaves the reflectors of a panel of nb rows.
    RowPanels(MatrixView<T> matrix, FactoriseRows<T> cpuRoutine, Storage storage, int nb)
        : A(matrix), factorise_(cpuRoutine), nb_(nb), hostPanel_(new T[std::size_t(nb) * matrix.cols]), H(storage, nb)
    {}

    /// Factorises the nb rows of A that begin at (row, col) and take `cols` columns; then applies their reflectors from
    /// the right to `others` rows of the same columns, from row `other` on.
    void factorise(int row, int col, int cols, T* tau, int other, int others)
    {
        T* const host = hostPanel_.get();
        getMatrix(nb_, cols, host, nb_, A.at(row, col), A.ld);
        factorise_(nb_, cols, host, nb_, tau);
        setMatrix(nb_, cols, A.at(row, col), A.ld, host, nb_);
        H.form(cols, nb_, host, nb_, tau);
        H.apply('R', 'N', others, cols, nb_, A.at(row, col), A.ld, A.at(other, col), A.ld);
    }

private:
    MatrixView<T> A;
    FactoriseRows<T> factorise_;
    int nb_;
    std::unique_ptr<T[]> hostPanel_;
    BlockReflector<T> H;
};

} // namespace tarn::qr
