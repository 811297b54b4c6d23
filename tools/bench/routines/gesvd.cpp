#include "../../timing.h"
#include "../reference.h"
#include "../routine.h"

#include <functional>

namespace tarn::bench {

namespace {

/// A = U S V^H. A is size by size; with all vectors ("A") it is size by size / 2, since a square matrix has no more
/// than "S" gives.
template <char jobu, char jobvt>
struct Gesvd
{
    static constexpr bool values = jobu == 'N';
    enum Operand
    {
        A,
        S, ///< real numbers, in the place of as many elements
        U,
        Vt
    };

    static Dimensions dimensions(int size, int) { return {size, jobu == 'A' ? std::max(1, size / 2) : size, 0, 0}; }
    static double flops(const Dimensions& d) { return tool::gesvdFlops(d.m, d.n, jobu); }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        const int ldu = values || jobu == 'O' ? 1 : d.m, ldvt = values ? 1 : d.n;
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.m, d.n, 1), Matrix<T>(d.n, 1), Matrix<T>(ldu, jobu == 'A' ? d.m : d.n),
                      Matrix<T>(ldvt, d.n)};
        p.overwritten = {A, S, U, Vt};
        const auto calling = [=](auto routine) {
            return [=](const Arrays<T>& x) {
                return call(routine, jobu, jobvt, d.m, d.n, x[A], d.m, reals(x[S]), x[U], ldu, x[Vt], ldvt);
            };
        };
        p.host = calling(select<T>(tarnSgesvd, nullptr, tarnCgesvd, nullptr));
        p.device = calling(select<T>(tarnDeviceSgesvd, nullptr, tarnDeviceCgesvd, nullptr));
        p.reference = [=](const Arrays<T>& x) {
            reference::gesvd<T>(jobu, jobvt, d.m, d.n, x[A], d.m, reals(x[S]), x[U], ldu, x[Vt], ldvt);
        };
        p.error = [](const Problem<T>& before, const Outcome<T>& after) {
            const Matrix<T>& a = before.operands[A];
            const Real<T>* const s = reals(after.operand[S].values.data());
            if (!std::is_sorted(s, s + a.cols, std::greater<>()) || s[a.cols - 1] < 0)
                return std::numeric_limits<double>::infinity();
            if (values)
                return errorOfValues(a, s);
            return error(a, s, after.operand[jobu == 'O' ? A : U], after.operand[Vt]);
        };
        return p;
    }

    template <class T>
    static Real<T>* reals(T* elements)
    {
        return reinterpret_cast<Real<T>*>(elements);
    }
    template <class T>
    static const Real<T>* reals(const T* elements)
    {
        return reinterpret_cast<const Real<T>*>(elements);
    }

    /// |norm2(s) - normF(A)| / (max(m, n) normF(A) eps)
    template <class T>
    static double errorOfValues(const Matrix<T>& a, const Real<T>* s)
    {
        double sum = 0;
        for (int i = 0; i < a.cols; ++i)
            sum += double(s[i]) * s[i];
        return ratio(std::abs(std::sqrt(sum) - normF(a)), std::max(a.rows, a.cols) * normF(a) * epsilon<T>);
    }

    /// The largest of norm2((A - U S V^H) w) / (max(m, n) normF(A) eps) and norm2((I - Q^H Q) w) / (m^(3/2) eps) for
    /// Q = U and Q = V, w a probe
    template <class T>
    static double error(const Matrix<T>& a, const Real<T>* s, const Matrix<T>& u, const Matrix<T>& vt)
    {
        const double longer = std::max(a.rows, a.cols);
        const Matrix<Wide<T>> w = probe<T>(a.cols);
        Matrix<Wide<T>> coefficients = product('N', vt, w), padded(u.cols, 1);
        for (int i = 0; i < a.cols; ++i)
            padded(i, 0) = coefficients(i, 0) * Wide<T>(s[i]);
        const double residual =
            ratio(distance(product('N', u, padded), product('N', a, w)), longer * normF(a) * epsilon<T>);

        const Matrix<Wide<T>> ofU = probe<T>(u.cols);
        const double bound = longer * std::sqrt(longer) * epsilon<T>;
        const double left = ratio(distance(product('C', u, product('N', u, ofU)), ofU), bound);
        const double right = ratio(distance(product('C', vt, coefficients), w), bound);
        return std::max({residual, left, right});
    }
};

template <char jobu, char jobvt>
Routine entry(const char* name)
{
    Routine routine = describe<Gesvd<jobu, jobvt>, float, std::complex<float>>(name, reference::lapack, lapackBound);
    routine.largest = reference::onDevice ? 2048 : 1024;
    return routine;
}

} // namespace

std::vector<Routine> gesvd()
{
    return {entry<'N', 'N'>("gesvd-nn"), entry<'S', 'S'>("gesvd-ss"), entry<'A', 'A'>("gesvd-aa"),
            entry<'O', 'S'>("gesvd-os")};
}

} // namespace tarn::bench
