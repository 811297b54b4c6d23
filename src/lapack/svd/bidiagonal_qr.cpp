#include "lapack/svd/bidiagonal_qr.h"

#include "blas/cpu.h"

#include <algorithm>
#include <cmath>

namespace tarn::svd {

namespace {

constexpr float eps = 0x1p-24f, safeMinimum = 0x1p-126f;
/// Relative accuracy of a value: max(10, min(100, eps^(-1/8))) eps, where eps^(-1/8) is 8.
constexpr float tol = 10 * eps;

/// The estimate of a least singular value goes on past the off-diagonal element e to the diagonal element d.
float carryOn(float estimate, float d, float e) { return std::abs(d) * (estimate / (estimate + std::abs(e))); }

} // namespace

BidiagonalQr::BidiagonalQr(int n)
    : n_(n), maxIterations_(6 * std::int64_t(n) * n), d_(n), e_(n), rotations_(4 * std::size_t(n)), last_(n)
{}

void BidiagonalQr::makeUpper()
{
    const auto d = diagonal(), e = offDiagonal();
    for (int i = 1; i < n_; ++i) {
        float cs, sn, r;
        cpu::lartg(*d.at(i), *e.at(i), &cs, &sn, &r);
        *d.at(i) = r;
        *e.at(i) = sn * *d.at(i + 1);
        *d.at(i + 1) *= cs;
        rotations_[i - 1] = cs;
        rotations_[n_ - 1 + i - 1] = sn;
    }
}

void BidiagonalQr::begin()
{
    const auto d = diagonal(), e = offDiagonal();
    float least = std::abs(*d.at(1)), estimate = least;
    for (int i = 2; i <= n_ && least != 0; ++i) {
        estimate = carryOn(estimate, *d.at(i), *e.at(i - 1));
        least = std::min(estimate, least);
    }
    least /= std::sqrt(float(n_));
    // In this order of arguments a NaN gives the floor: an element that was set to 0 is always negligible, so that each
    // round without a sweep brings the iteration forward, whatever B holds.
    threshold_ = std::max(6.0f * n_ * n_ * safeMinimum, tol * least);
}

bool BidiagonalQr::findBlock()
{
    const auto d = diagonal(), e = offDiagonal();
    largest_ = std::abs(*d.at(last_));
    for (int l = last_ - 1; l >= 1; --l) {
        if (std::abs(*e.at(l)) <= threshold_) {
            *e.at(l) = 0;
            first_ = l + 1;
            if (first_ < last_)
                return true;
            --last_;
            return false;
        }
        largest_ = std::max({largest_, std::abs(*d.at(l)), std::abs(*e.at(l))});
    }
    first_ = 1;
    return true;
}

PairRotation BidiagonalQr::solvePair()
{
    float *const d = diagonal().at(first_), *const e = offDiagonal().at(first_);
    PairRotation r;
    float least, largest;
    cpu::lasv2(d[0], e[0], d[1], &least, &largest, &r.sinRight, &r.cosRight, &r.sinLeft, &r.cosLeft);
    d[0] = largest;
    e[0] = 0;
    d[1] = least;
    last_ -= 2;
    return r;
}

BidiagonalQr::Chase BidiagonalQr::chase()
{
    if (downwards_)
        return {diagonal().at(first_), offDiagonal().at(first_), 1};
    return {diagonal().at(last_), offDiagonal().at(last_ - 1), -1};
}

bool BidiagonalQr::deflate()
{
    // From the large end to the small one.
    if (first_ > oldLast_ || last_ < oldFirst_)
        downwards_ = std::abs(*diagonal().at(first_)) >= std::abs(*diagonal().at(last_));

    const Chase B = chase();
    const int end = order() - 1;
    const auto negligible = [&](int t, float against) {
        const bool small = std::abs(B.E(t)) <= tol * against;
        if (small)
            B.E(t) = 0;
        return small;
    };
    if (negligible(end - 1, std::abs(B.D(end))))
        return true;
    float estimate = std::abs(B.D(0));
    smallest_ = estimate;
    for (int t = 0; t < end; ++t) {
        if (negligible(t, estimate))
            return true;
        estimate = carryOn(estimate, B.D(t + 1), B.E(t));
        smallest_ = std::min(smallest_, estimate);
    }
    return false;
}

/// The least singular value of the last two rows of the chase, or 0 where a shift would cost the small values their
/// relative accuracy or would not count.
float BidiagonalQr::shift(const Chase& B) const
{
    if (n_ * tol * (smallest_ / largest_) <= std::max(eps, 0.01f * tol))
        return 0;
    const int end = order() - 1;
    const float start = std::abs(B.D(0));
    float shift, other;
    cpu::las2(B.D(end - 1), B.E(end - 1), B.D(end), &shift, &other);
    const float ratio = shift / start;
    return start > 0 && ratio * ratio < eps ? 0 : shift;
}

void BidiagonalQr::sweep()
{
    oldFirst_ = first_;
    oldLast_ = last_;
    iterations_ += last_ - first_;
    const Chase B = chase();
    const float s = shift(B);
    if (s == 0)
        sweepWithoutShift(B);
    else
        sweepWithShift(B, s);
    if (float& tail = B.E(order() - 2); std::abs(tail) <= threshold_)
        tail = 0;
}

void BidiagonalQr::sweepWithoutShift(const Chase& B)
{
    const int end = order() - 1;
    float cs = 1, sn = 0, r, oldCs = 1, oldSn = 0;
    for (int t = 0; t < end; ++t) {
        cpu::lartg(B.D(t) * cs, B.E(t), &cs, &sn, &r);
        if (t > 0)
            B.E(t - 1) = oldSn * r;
        cpu::lartg(oldCs * r, B.D(t + 1) * sn, &oldCs, &oldSn, &B.D(t));
        record(t, cs, sn, oldCs, oldSn);
    }
    const float h = B.D(end) * cs;
    B.D(end) = h * oldCs;
    B.E(end - 1) = h * oldSn;
}

void BidiagonalQr::sweepWithShift(const Chase& B, float shift)
{
    const int end = order() - 1;
    float f = (std::abs(B.D(0)) - shift) * (std::copysign(1.0f, B.D(0)) + shift / B.D(0)), g = B.E(0);
    for (int t = 0; t < end; ++t) {
        float cosR, sinR, cosL, sinL, r;
        cpu::lartg(f, g, &cosR, &sinR, &r);
        if (t > 0)
            B.E(t - 1) = r;
        f = cosR * B.D(t) + sinR * B.E(t);
        B.E(t) = cosR * B.E(t) - sinR * B.D(t);
        g = sinR * B.D(t + 1);
        B.D(t + 1) *= cosR;
        cpu::lartg(f, g, &cosL, &sinL, &B.D(t));
        f = cosL * B.E(t) + sinL * B.D(t + 1);
        B.D(t + 1) = cosL * B.D(t + 1) - sinL * B.E(t);
        if (t < end - 1) {
            g = sinL * B.E(t + 1);
            B.E(t + 1) *= cosL;
        }
        record(t, cosR, sinR, cosL, sinL);
    }
    B.E(end - 1) = f;
}

/// The rotations of step t of a chase. Upwards they come in the opposite order and turn the other way.
void BidiagonalQr::record(int t, float cos1, float sin1, float cos2, float sin2)
{
    float* const place = rotations_.data() + (downwards_ ? t : order() - 2 - t);
    const std::int64_t sequence = n_ - 1;
    place[0] = cos1;
    place[sequence] = downwards_ ? sin1 : -sin1;
    place[2 * sequence] = cos2;
    place[3 * sequence] = downwards_ ? sin2 : -sin2;
}

int BidiagonalQr::unconverged() const
{
    return int(std::count_if(e_.begin(), e_.end() - 1, [](float x) { return x != 0; }));
}

} // namespace tarn::svd
