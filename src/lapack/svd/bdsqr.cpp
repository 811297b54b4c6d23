#include "blas/cpu.h"
#include "blas/cublas.h"
#include "blas/letters.h"
#include "frame/exceptions.h"
#include "lapack/kernels.h"
#include "lapack/svd/bidiagonal_qr.h"
#include "lapack/svd/svd.h"
#include "memory/memory_pool.h"
#include "memory/transfer.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace tarn::svd {

namespace {

void checkBdsqr(char uplo, int n, int ncvt, int nru, int ncc, const void* d, const void* e, const void* vt, int ldvt,
                const void* u, int ldu, int ldc)
{
    require(isOneOf(uplo, "UL"), -1);
    require(n >= 0, -2);
    require(ncvt >= 0, -3);
    require(nru >= 0, -4);
    require(ncc >= 0, -5);
    require(ldvt >= (ncvt > 0 ? std::max(1, n) : 1), -9);
    require(ldu >= std::max(1, nru), -11);
    require(ldc >= (ncc > 0 ? std::max(1, n) : 1), -13);
    if (ncc > 0)
        featureNotImplemented();
    if (n == 0)
        return;
    require(d != nullptr, -6);
    require(n == 1 || e != nullptr, -7);
    require(ncvt == 0 || vt != nullptr, -8);
    require(nru == 0 || u != nullptr, -10);
}

/// (x, y) := (c x + s y, c y - s x)
void rotate(int n, float* x, float* y, float c, float s) { cublas::rot(n, x, 1, y, 1, c, s); }
void rotate(int n, Complex<float>* x, Complex<float>* y, float c, float s)
{
    cublas::rot(n, x, 1, y, 1, c, Complex<float>(s, 0));
}

void negate(int n, float* x) { cublas::scal(n, -1.0f, x, 1); }
void negate(int n, Complex<float>* x) { cublas::csscal(n, -1.0f, x, 1); }

/// The singular vectors on the device. The right ones are held transposed between construction and restore, so that
/// all rotations are of columns, which are contiguous. Sweeps wait until there are enough for one pass over the
/// vectors, or until something else is to be done.
template <class T>
class Vectors
{
public:
    Vectors(int n, int ncvt, T* vt, int ldvt, int nru, T* u, int ldu)
        : n_(n), vt_{vt, n, ncvt, ldvt}, V{vt, ncvt, n, ldvt}, U{u, nru, n, ldu},
          rotations_(MemoryPool<float>::instance().acquire(4 * std::int64_t(n) * kernel::sweepsInPass))
    {
        hostRotations_.reserve(4 * std::size_t(n) * kernel::sweepsInPass);
        if (ncvt == 0)
            return;
        if (ncvt == n) {
            kernel::TransposeInplace(n, vt, ldvt);
            return;
        }
        buffer_.reset({ncvt, n, 1});
        V = {buffer_.data(), ncvt, n, ncvt};
        kernel::Transpose(V.data, V.ld, vt, ldvt, n, ncvt);
    }

    /// Puts the right vectors back into their place.
    void restore()
    {
        applySweeps();
        if (V.rows == 0)
            return;
        if (V.rows == n_)
            kernel::TransposeInplace(n_, V.data, V.ld);
        else
            kernel::Transpose(vt_.data, vt_.ld, V.data, V.ld, V.rows, V.cols);
    }

    /// The rotations that make B upper.
    void makeUpper(const BidiagonalQr& B)
    {
        add(B, {0, n_});
        send();
        apply('F', 0, U);
        waiting_ = 0;
    }

    /// The rotations of a sweep.
    void sweep(const BidiagonalQr& B)
    {
        if (downwards_ != B.downwards())
            applySweeps();
        downwards_ = B.downwards();
        add(B, {B.first() - 1, B.order()});
        if (waiting_ == kernel::sweepsInPass)
            applySweeps();
    }

    /// Columns j and j + 1.
    void rotatePair(int j, const PairRotation& r)
    {
        applySweeps();
        if (V.rows > 0)
            rotate(V.rows, V.at(1, j), V.at(1, j + 1), r.cosRight, r.sinRight);
        if (U.rows > 0)
            rotate(U.rows, U.at(1, j), U.at(1, j + 1), r.cosLeft, r.sinLeft);
    }

    /// Turns the sign of right vector j.
    void negateRight(int j)
    {
        applySweeps();
        if (V.rows > 0)
            negate(V.rows, V.at(1, j));
    }

    void exchange(int i, int j)
    {
        applySweeps();
        if (V.rows > 0)
            cublas::swap(V.rows, V.at(1, i), 1, V.at(1, j), 1);
        if (U.rows > 0)
            cublas::swap(U.rows, U.at(1, i), 1, U.at(1, j), 1);
    }

private:
    void add(const BidiagonalQr& B, kernel::SweepColumns columns)
    {
        if (waiting_ == 0)
            hostRotations_.clear();
        sweeps_[waiting_++] = columns;
        hostRotations_.insert(hostRotations_.end(), B.rotations().begin(), B.rotations().end());
    }

    void send() { setVector(int(hostRotations_.size()), rotations_.data(), hostRotations_.data()); }

    /// The sweeps that wait, on both matrices.
    void applySweeps()
    {
        if (waiting_ == 0)
            return;
        send();
        apply(downwards_ ? 'F' : 'B', downwards_ ? 0 : 1, V);
        apply(downwards_ ? 'F' : 'B', downwards_ ? 1 : 0, U);
        waiting_ = 0;
    }

    /// The sweeps that wait on M, by a pair of the sequences (cosines, sines).
    void apply(char direct, int pair, MatrixView<T> M)
    {
        const float* const cosines = rotations_.data() + 2 * pair * std::int64_t(n_ - 1);
        const float* const sines = cosines + n_ - 1;
        const std::int64_t stride = 4 * std::int64_t(n_);
        if (M.rows == 0)
            return;
        if (waiting_ == kernel::sweepsInPass)
            kernel::SWEEPS(direct, M.rows, sweeps_, cosines, sines, stride, M.data, M.ld);
        else
            for (int k = 0; k < waiting_; ++k)
                kernel::LASR('R', 'V', direct, M.rows, sweeps_[k].order, cosines + k * stride, sines + k * stride,
                             M.at(1, sweeps_[k].first + 1), M.ld);
    }

    const int n_;
    const MatrixView<T> vt_;
    MatrixView<T> V;
    const MatrixView<T> U;
    kernel::SweepColumns sweeps_[kernel::sweepsInPass]; ///< that wait
    int waiting_ = 0;
    bool downwards_ = true;            ///< they go
    std::vector<float> hostRotations_; ///< theirs, 4 n elements each
    const PoolBlock<float> rotations_;
    velk::ManagedMemory<T, velk::CudaAllocator<T>> buffer_; ///< V where it cannot be transposed in place
};

template <class T>
void iterate(BidiagonalQr& B, Vectors<T>& vectors)
{
    while (!B.converged() && !B.exhausted()) {
        if (!B.findBlock())
            continue;
        if (B.order() == 2) {
            const int j = B.first();
            vectors.rotatePair(j, B.solvePair());
        } else if (!B.deflate()) {
            B.sweep();
            vectors.sweep(B);
        }
    }
}

template <class T>
void makePositive(int n, float* d, Vectors<T>& vectors)
{
    for (int i = 1; i <= n; ++i)
        if (d[i - 1] < 0) {
            d[i - 1] = -d[i - 1];
            vectors.negateRight(i);
        }
}

/// Into descending order with one exchange per value: each moves vectors on the device.
template <class T>
void sortDescending(int n, float* d, Vectors<T>& vectors)
{
    for (int last = n; last > 1; --last) {
        int least = 1;
        for (int j = 2; j <= last; ++j)
            if (d[j - 1] <= d[least - 1])
                least = j;
        if (least != last) {
            std::swap(d[least - 1], d[last - 1]);
            vectors.exchange(least, last);
        }
    }
}

} // namespace

template <class T>
void bdsqr(char uplo, int n, int ncvt, int nru, int ncc, Real<T>* d, Real<T>* e, T* vt, int ldvt, T* u, int ldu, T*,
           int ldc)
{
    uplo = upper(uplo);
    checkBdsqr(uplo, n, ncvt, nru, ncc, d, e, vt, ldvt, u, ldu, ldc);
    if (n == 0)
        return;
    BidiagonalQr B(n);
    getVector(n, B.d(), d);
    getVector(n - 1, B.e(), e);
    const auto deliver = [&] {
        setVector(n, d, B.d());
        setVector(n - 1, e, B.e());
    };
    if (ncvt == 0 && nru == 0) {
        cpu::lasq1(n, B.d(), B.e());
        return deliver();
    }

    Vectors<T> vectors(n, ncvt, vt, ldvt, nru, u, ldu);
    if (uplo == 'L') {
        B.makeUpper();
        vectors.makeUpper(B);
    }
    B.begin();
    iterate(B, vectors);
    if (B.converged())
        makePositive(n, B.d(), vectors);
    sortDescending(n, B.d(), vectors);
    vectors.restore();
    deliver();
    if (!B.converged())
        dataError(B.unconverged());
}

template void bdsqr(char, int, int, int, int, float*, float*, float*, int, float*, int, float*, int);
template void bdsqr(char, int, int, int, int, float*, float*, Complex<float>*, int, Complex<float>*, int,
                    Complex<float>*, int);

} // namespace tarn::svd
