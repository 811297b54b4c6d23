// The host side of the bidiagonal QR iteration: the recurrences on the bidiagonal matrix, and the plane rotations that
// they make.
#pragma once

#include "memory/matrix_view.h"

#include <cstdint>
#include <vector>

namespace tarn::svd {

/// A rotation of columns 1 and 2 of a block, for the right and for the left vectors.
struct PairRotation
{
    float cosRight, sinRight, cosLeft, sinLeft;
};

/// Implicit zero-shift QR on an upper bidiagonal matrix B of order n, with the tests, shifts and constants of LAPACK's
/// sbdsqr. One round of the iteration is:
///
///     findBlock, solvePair              a block of order 2 is solved directly
///     findBlock, deflate, sweep         else it is deflated, or swept once
///
/// The block in work is B(first:last, first:last), none of whose off-diagonal elements is negligible. `last` only
/// falls: what lies beyond it has converged. Indices count from 1.
class BidiagonalQr
{
public:
    explicit BidiagonalQr(int n);

    // The matrix: n diagonal elements, and off-diagonal elements of which n - 1 are used.
    float* d() { return d_.data(); }
    float* e() { return e_.data(); }

    /// The rotations of a sweep in four sequences of n - 1 places; 4 n elements. A sweep downwards rotates the right
    /// vectors by the first pair of sequences (cosines, sines) and the left ones by the second, a sweep upwards the
    /// other way round. The first rotation of the block stands in the first place.
    const std::vector<float>& rotations() const { return rotations_; }

    /// B is lower bidiagonal: makes it upper, by a sweep that rotates the left vectors by the first pair.
    void makeUpper();

    /// Sets the threshold, when B is there and upper.
    void begin();

    bool converged() const { return last_ <= 1; }
    bool exhausted() const { return iterations_ > maxIterations_; }

    /// Finds the last block that has not converged. False if the last element has converged by itself instead.
    bool findBlock();
    int first() const { return first_; }
    int order() const { return last_ - first_ + 1; }

    /// Solves a block of order 2, which has converged then.
    PairRotation solvePair();

    /// Chooses the direction if the block is new, and looks for an element of it that is negligible against its
    /// neighbours. True if there was one, which is 0 now.
    bool deflate();

    /// Chases the bulge once through the block.
    void sweep();
    bool downwards() const { return downwards_; }

    /// Number of off-diagonal elements that are not 0.
    int unconverged() const;

private:
    /// The block in the order in which the bulge passes: D(0), E(0), D(1), ..., E(order - 2), D(order - 1).
    struct Chase
    {
        float *d, *e;
        int step;

        float& D(int t) const { return d[std::int64_t(t) * step]; }
        float& E(int t) const { return e[std::int64_t(t) * step]; }
    };

    VectorView<float> diagonal() { return {d_.data(), n_}; }
    VectorView<float> offDiagonal() { return {e_.data(), n_ - 1}; }
    Chase chase();
    float shift(const Chase& chase) const;
    void sweepWithoutShift(const Chase& chase);
    void sweepWithShift(const Chase& chase, float shift);
    void record(int t, float cos1, float sin1, float cos2, float sin2);

    const int n_;
    const std::int64_t maxIterations_;
    std::vector<float> d_, e_, rotations_;
    float threshold_ = 0;         ///< off-diagonal elements up to it are negligible
    std::int64_t iterations_ = 0; ///< rotations of one side, over all sweeps
    int first_ = 1, last_;
    int oldFirst_ = -1, oldLast_ = -1; ///< the block of the latest sweep
    bool downwards_ = true;
    float largest_ = 0, smallest_ = 0; ///< of B's elements in the block; an estimate of its least singular value
};

} // namespace tarn::svd
