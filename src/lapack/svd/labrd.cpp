// Each round makes a reflector of one column and one of one row, and with each a matrix-vector product of the whole
// trailing matrix. That product runs on the device, against A as it was before the panel; the host adds meanwhile what
// the earlier reflectors of the panel change about it.
//
// For m >= n round i begins with column i from the diagonal on and goes on with row i from column i + 1 on. For m < n
// the row comes first, from the diagonal on, and the column starts at row i + 1. Column i and row i are otherwise
// treated alike in both cases: where a column starts at row `top`, top - 1 row reflectors are there already.
#include "lapack/svd/labrd.h"

#include "blas/cpu.h"
#include "lapack/kernels.h"
#include "memory/transfer.h"

#include <device_glue.h>

#include <algorithm>
#include <vector>

namespace tarn::svd {

namespace {

/// n elements, inc apart, in a row or a column of a matrix.
template <class T>
struct Line
{
    T* data;
    int n;
    int inc;

    T* at(int i) const { return data + std::int64_t(i - 1) * inc; }
};

/// M(first:last, j)
template <class T>
Line<T> inColumn(const MatrixView<T>& M, int j, int first, int last)
{
    return {M.at(first, j), last - first + 1, 1};
}

/// M(i, first:last)
template <class T>
Line<T> inRow(const MatrixView<T>& M, int i, int first, int last)
{
    return {M.at(i, first), last - first + 1, M.ld};
}

/// M(i1:i2, j1:j2)
template <class T>
MatrixView<T> part(const MatrixView<T>& M, int i1, int i2, int j1, int j2)
{
    return {M.at(i1, j1), i2 - i1 + 1, j2 - j1 + 1, M.ld};
}

void conjugate(Line<float>) {}
void conjugate(Line<Complex<float>> x) { cpu::lacgv(x.n, x.data, x.inc); }

/// Conjugates a line for the length of a scope.
template <class T>
class Conjugated
{
public:
    explicit Conjugated(Line<T> line) : line_(line) { conjugate(line_); }
    ~Conjugated() { conjugate(line_); }
    Conjugated(const Conjugated&) = delete;
    Conjugated& operator=(const Conjugated&) = delete;
    operator Line<T>() const { return line_; }

private:
    Line<T> line_;
};

/// Elements of a matrix that a CPU BLAS still multiplies on the calling thread. Where the large product keeps the cores
/// busy, its other threads are not worth waking for the products of a panel: at orders 1000 and 2000 on two cores,
/// waiting for them more than doubled the time of the whole reduction.
constexpr int forOneThread = 4000;

/// y := alpha op(M) x + beta y, M long and narrow, in pieces along its long side. An empty sum counts as 0, while gemv
/// would leave y alone.
template <class T>
void multiply(char trans, T alpha, MatrixView<T> M, Line<T> x, T beta, Line<T> y)
{
    if (x.n == 0 && beta == T(0))
        std::fill_n(y.data, y.n, T(0));
    const bool tall = M.rows >= M.cols, piecesOfY = tall == (trans == 'N');
    const int all = tall ? M.rows : M.cols, narrow = tall ? M.cols : M.rows;
    const int most = platform::sharesCores ? forOneThread / std::max(1, narrow) : std::max(1, all);
    for (int first = 1; first <= all; first += most) {
        const int count = std::min(most, all - first + 1);
        cpu::gemv(trans, tall ? count : narrow, tall ? narrow : count, alpha, tall ? M.at(first, 1) : M.at(1, first),
                  M.ld, piecesOfY ? x.data : x.at(first), x.inc, piecesOfY || first == 1 ? beta : T(1),
                  piecesOfY ? y.at(first) : y.data, y.inc);
    }
}

/// y := y - op(M) x
template <class T>
void subtractProduct(char trans, MatrixView<T> M, Line<T> x, Line<T> y)
{
    multiply(trans, T(-1), M, x, T(1), y);
}

/// y := alpha op(M) x
template <class T>
void setProduct(char trans, T alpha, MatrixView<T> M, Line<T> x, Line<T> y)
{
    multiply(trans, alpha, M, x, T(0), y);
}

/// Replaces a line by the vector of the reflector that maps it to a multiple of its first axis, and returns that
/// multiple.
template <class T>
Real<T> makeReflector(Line<T> x, T* tau)
{
    T alpha = *x.data;
    cpu::larfg(x.n, &alpha, x.at(std::min(2, x.n)), x.inc, tau);
    *x.data = T(1);
    if constexpr (isComplex<T>)
        return alpha.real();
    else
        return alpha;
}

template <class T>
class PanelReduction
{
public:
    explicit PanelReduction(BidiagonalPanel<T>& panel)
        : P(panel), m(P.A.rows), n(P.A.cols), nb(P.X.cols), work_(std::max(m, n))
    {}

    /// Column i from row `top` on becomes a reflector v; returns the element of B. Y(i+1:n, i) = tauq(i) A^H v for the
    /// A that all earlier reflectors have changed.
    Real<T> reduceColumn(int i, int top) const
    {
        const int rowsDone = top - 1;
        const Line<T> v = inColumn(P.col, i, top, m), y = inColumn(P.Y, i, i + 1, n), work{work_.data(), n - i, 1};
        const MatrixView<T> V = part(P.col, top, m, 1, i - 1), X = part(P.X, top, m, 1, rowsDone);

        // col(top:m, i) -= V Y(i, 1:i-1)^H + X U(i, :)^H
        P.colArrival.await();
        subtractProduct<T>('N', V, Conjugated<T>(inRow(P.Y, i, 1, i - 1)), v);
        subtractProduct('N', X, inColumn(P.col, i, 1, rowsDone), v);
        const Real<T> element = makeReflector(v, P.tauq.at(i));

        // y = A(top:m, i+1:n)^H v on the device
        setMatrix(v.n, 1, P.A.at(top, i), P.A.ld, v.data, P.col.ld, P.vectorStream);
        kernel::gemv('C', v.n, y.n, T(1), P.A.at(top, i + 1), P.A.ld, P.A.at(top, i), 1, T(0), P.deviceY.at(i + 1, i),
                     1);
        getVector(y.n, y.data, P.deviceY.at(i + 1, i), P.vectorStream);

        // y -= Y V^H v + U X^H v
        const Line<T> ofV = inColumn(P.Y, i, 1, i - 1), ofX = inColumn(P.Y, i, 1, rowsDone);
        setProduct('C', T(1), V, v, ofV);
        setProduct('N', T(-1), part(P.Y, i + 1, n, 1, i - 1), ofV, work);
        setProduct('C', T(1), X, v, ofX);
        P.vectorStream.synchronize();
        cpu::axpy(y.n, T(1), work.data, 1, y.data, 1);
        P.rowArrival.await();
        cpu::copy(nb - i + 1, P.col.at(i, i), 1, P.row.at(i, i), 1);
        subtractProduct('C', part(P.row, 1, rowsDone, i + 1, n), ofX, y);
        cpu::scal(y.n, *P.tauq.at(i), y.data, 1);
        return element;
    }

    /// Row i from column `left` on becomes a reflector u^H; returns the element of B. X(i+1:m, i) = taup(i) A u for the
    /// A that all earlier reflectors have changed.
    Real<T> reduceRow(int i, int left) const
    {
        const int columnsDone = left - 1;
        const Line<T> u = inRow(P.row, i, left, n), x = inColumn(P.X, i, i + 1, m), work{work_.data(), m - i, 1};
        const MatrixView<T> Y = part(P.Y, left, n, 1, columnsDone), U = part(P.row, 1, i - 1, left, n);

        // row(i, left:n) -= V(i, :) Y^H + X(i, 1:i-1) U^H, all of it conjugated
        P.rowArrival.await();
        conjugate(u);
        subtractProduct<T>('N', Y, Conjugated<T>(inRow(P.row, i, 1, columnsDone)), u);
        subtractProduct<T>('C', U, Conjugated<T>(inRow(P.X, i, 1, i - 1)), u);
        const Real<T> element = makeReflector(u, P.taup.at(i));

        // x = A(i+1:m, left:n) u on the device
        cpu::copy(u.n, u.data, u.inc, P.line, 1);
        setMatrix(u.n, 1, P.deviceLine, u.n, P.line, u.n, P.vectorStream);
        kernel::gemv('N', x.n, u.n, T(1), P.A.at(i + 1, left), P.A.ld, P.deviceLine, 1, T(0), P.deviceX.at(i + 1, i),
                     1);
        getVector(x.n, x.data, P.deviceX.at(i + 1, i), P.vectorStream);

        // x -= V Y^H u + X U^H u
        const Line<T> ofY = inColumn(P.X, i, 1, columnsDone), ofU = inColumn(P.X, i, 1, i - 1);
        setProduct('C', T(1), Y, u, ofY);
        P.colArrival.await();
        setProduct('N', T(-1), part(P.col, i + 1, m, 1, columnsDone), ofY, work);
        setProduct('N', T(1), U, u, ofU);
        P.vectorStream.synchronize();
        cpu::axpy(x.n, T(1), work.data, 1, x.data, 1);
        subtractProduct('N', part(P.X, i + 1, m, 1, i - 1), ofU, x);
        cpu::scal(x.n, *P.taup.at(i), x.data, 1);
        conjugate(u);
        cpu::copy(nb - i + 1, P.row.at(i, i), P.row.ld, P.col.at(i, i), P.col.ld);
        return element;
    }

private:
    BidiagonalPanel<T>& P;
    const int m, n, nb;
    mutable std::vector<T> work_;
};

} // namespace

template <class T>
void labrd(BidiagonalPanel<T>& panel)
{
    const PanelReduction<T> reduction(panel);
    const bool upper = panel.A.rows >= panel.A.cols;
    for (int i = 1; i <= panel.X.cols; ++i)
        if (upper) {
            *panel.d.at(i) = reduction.reduceColumn(i, i);
            *panel.e.at(i) = reduction.reduceRow(i, i + 1);
        } else {
            *panel.d.at(i) = reduction.reduceRow(i, i);
            *panel.e.at(i) = reduction.reduceColumn(i, i + 1);
        }
}

template void labrd(BidiagonalPanel<float>&);
template void labrd(BidiagonalPanel<Complex<float>>&);

} // namespace tarn::svd
