// What the LQ and the RQ factorisation share: panels of rows, factorised on the CPU.
#pragma once

#include "blas/cpu.h"
#include "lapack/qr/block_reflector.h"
#include "memory/matrix_view.h"
#include "memory/transfer.h"

#include <memory>

namespace tarn::qr {

/// Steps of a factorisation of A by rows. Everything waits for everything: there is no look-ahead.
template <class T>
class RowPanels
{
public:
    using Factorise = void (*)(int m, int n, T* a, int lda, T* tau);

    /// factorise: the factorisation on the CPU.
    RowPanels(MatrixView<T> matrix, Factorise factorise) : A(matrix), factorise_(factorise) {}

    /// Room for panels of nb rows, stored as H says.
    void allowBlocks(Storage storage, int nb)
    {
        nb_ = nb;
        hostPanel_.reset(new T[std::size_t(nb) * A.cols]);
        H = std::make_unique<BlockReflector<T>>(storage, nb);
    }

    /// Factorises the nb rows of A that begin at (row, col) and take `cols` columns; then applies their reflectors from
    /// the right to `others` rows of the same columns, from row `other` on.
    void panel(int row, int col, int cols, T* tau, int other, int others)
    {
        T* const host = hostPanel_.get();
        getMatrix(nb_, cols, host, nb_, A.at(row, col), A.ld);
        factorise_(nb_, cols, host, nb_, tau);
        setMatrix(nb_, cols, A.at(row, col), A.ld, host, nb_);
        H->form(cols, nb_, host, nb_, tau);
        H->apply('R', 'N', others, cols, nb_, A.at(row, col), A.ld, A.at(other, col), A.ld);
    }

    /// Factorises the rows by cols block at (row, col), where nothing else is left.
    void last(int row, int col, int rows, int cols, T* tau) const
    {
        const std::unique_ptr<T[]> host(new T[std::size_t(rows) * cols]);
        getMatrix(rows, cols, host.get(), rows, A.at(row, col), A.ld);
        factorise_(rows, cols, host.get(), rows, tau);
        setMatrix(rows, cols, A.at(row, col), A.ld, host.get(), rows);
    }

private:
    MatrixView<T> A;
    Factorise factorise_;
    int nb_ = 0;
    std::unique_ptr<T[]> hostPanel_;
    std::unique_ptr<BlockReflector<T>> H;
};

} // namespace tarn::qr
