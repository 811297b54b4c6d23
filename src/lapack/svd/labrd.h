// The panel step of the bidiagonal reduction.
#pragma once

#include "memory/matrix_view.h"
#include "memory/stream.h"

#include <tarndev/Complex>

namespace tarn::svd {

/// A copy that is waited for once, by the first who asks.
class Arrival
{
public:
    explicit Arrival(const StreamHandle& stream) : stream_(stream) {}
    void await()
    {
        if (!arrived_)
            stream_.synchronize();
        arrived_ = true;
    }

private:
    StreamHandle stream_;
    bool arrived_ = false;
};

/// What a panel of nb columns and nb rows works on. Every index counts from the top left of the trailing matrix A, m by
/// n. The panels hold the first columns and rows of A; both have the nb by nb corner.
template <class T>
struct BidiagonalPanel
{
    MatrixView<T> A;                ///< m by n, device
    MatrixView<T> col, row;         ///< m by nb and nb by n, page-locked host; on their way
    MatrixView<T> X, Y;             ///< m by nb and n by nb, page-locked host
    MatrixView<T> deviceX, deviceY; ///< the same on the device
    T *line, *deviceLine;           ///< n elements, page-locked host and device: on its way a row is packed
    VectorView<Real<T>> d, e;       ///< nb entries each of B, host
    VectorView<T> tauq, taup;       ///< nb scalars each, host
    Arrival colArrival, rowArrival; ///< of the panels
    StreamHandle vectorStream;      ///< for vectors, to the device and back
};

/// Reduces the first nb columns and rows of A, with more than nb of both there. Leaves the reflectors, their leading
/// ones written out, as columns V of the column panel and rows U^H of the row panel, in them and in A; and the X and Y
/// by which the rest of A is to be updated: A(nb+1:m, nb+1:n) -= V Y^H + X U^H. A is read as it stood before the panel.
/// For each column and each row a vector goes to the device, one comes back, and the host waits once.
template <class T>
void labrd(BidiagonalPanel<T>& panel);

} // namespace tarn::svd
