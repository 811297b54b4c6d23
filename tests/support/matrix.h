// Host matrices with padding rows, and the norms of backward errors.
#pragma once

#include <tarndev/Complex>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace test {

inline std::complex<double> wide(float x) { return x; }
inline std::complex<double> wide(double x) { return x; }
inline std::complex<double> wide(tarn::Complex<float> x) { return {x.real(), x.imag()}; }
inline std::complex<double> wide(tarn::Complex<double> x) { return {x.real(), x.imag()}; }

/// Machine epsilon in the sense of the test ratios: 2^-23 or 2^-52.
template <class T>
inline constexpr double eps = sizeof(tarn::Real<T>) == 4 ? 0x1p-23 : 0x1p-52;

/// Random elements with parts in (-1, 1), from a fixed seed.
template <class T>
class Random
{
public:
    explicit Random(unsigned seed = 1) : engine_(seed) {}

    T operator()()
    {
        if constexpr (tarn::isComplex<T>) {
            const auto re = part();
            return T(re, part());
        } else {
            return part();
        }
    }

private:
    using R = tarn::Real<T>;

    /// As std::uniform_real_distribution draws it. Built by clang that takes two logarithms for each number.
    R part()
    {
        R x = R(engine_()) * R(0x1p-32);
        if constexpr (sizeof(R) == 8)
            x = (x + R(engine_())) * R(0x1p-32);
        return 2 * std::min(x, 1 - std::numeric_limits<R>::epsilon() / 2) - 1;
    }

    std::mt19937 engine_;
};

/// A column-major m by n matrix with ld - m padding rows of a fixed bit pattern, a signalling NaN.
template <class T>
class Matrix
{
public:
    Matrix(int rows, int cols, int leading) : m(rows), n(cols), ld(leading), elements_(std::size_t(leading) * cols)
    {
        if (!elements_.empty())
            std::memset(static_cast<void*>(elements_.data()), padding, elements_.size() * sizeof(T));
        each([](T& x) { x = T(0); });
    }
    Matrix(int rows, int cols) : Matrix(rows, cols, rows) {}

    static Matrix random(int rows, int cols, int leading, unsigned seed = 1)
    {
        Matrix a(rows, cols, leading);
        Random<T> next(seed);
        a.each([&](T& x) { x = next(); });
        return a;
    }

    T& operator()(int i, int j) { return elements_[std::size_t(j) * ld + i]; }
    const T& operator()(int i, int j) const { return elements_[std::size_t(j) * ld + i]; }
    T* data() { return elements_.data(); }
    const std::vector<T>& elements() const { return elements_; }
    std::vector<T>& elements() { return elements_; }

    template <class F>
    void each(F&& f)
    {
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i)
                f((*this)(i, j));
    }

    /// True if no byte of the padding rows has changed.
    bool paddingIntact() const
    {
        for (int j = 0; j < n; ++j)
            for (int i = m; i < ld; ++i) {
                const auto* bytes = reinterpret_cast<const unsigned char*>(&(*this)(i, j));
                for (std::size_t k = 0; k < sizeof(T); ++k)
                    if (bytes[k] != padding)
                        return false;
            }
        return true;
    }

    /// True if all bytes are equal, padding rows included.
    friend bool identical(const Matrix& a, const Matrix& b)
    {
        return a.elements_.size() == b.elements_.size() &&
               (a.elements_.empty() ||
                std::memcmp(a.elements_.data(), b.elements_.data(), a.elements_.size() * sizeof(T)) == 0);
    }

    int m, n, ld;

private:
    static constexpr unsigned char padding = 0xff;
    std::vector<T> elements_;
};

/// The same matrix in double precision, packed, for references.
template <class T>
Matrix<tarn::Complex<double>> widened(const Matrix<T>& a)
{
    Matrix<tarn::Complex<double>> b(a.m, a.n);
    for (int j = 0; j < a.n; ++j)
        for (int i = 0; i < a.m; ++i) {
            const auto x = wide(a(i, j));
            b(i, j) = tarn::Complex<double>(x.real(), x.imag());
        }
    return b;
}

/// Largest column sum of absolute values.
template <class T>
double norm1(const Matrix<T>& a)
{
    double largest = 0;
    for (int j = 0; j < a.n; ++j) {
        double sum = 0;
        for (int i = 0; i < a.m; ++i)
            sum += std::abs(wide(a(i, j)));
        if (std::isnan(sum)) // must show
            return sum;
        largest = std::max(largest, sum);
    }
    return largest;
}

} // namespace test
