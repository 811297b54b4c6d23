#include "condition.h"

#include "lapack.h"

#include <fmt/format.h>

#include <cstdio>

namespace tarn::tool {

namespace {

/// Workspace of the estimators: elements of T, and what stands beside them, integers for real T and reals for complex.
template <class T>
struct Workspace
{
    using Beside = std::conditional_t<isComplex<T>, Real<T>, int>;

    explicit Workspace(int n) : work(4 * std::size_t(n)), beside(2 * std::size_t(n)) {}

    std::vector<T> work;
    std::vector<Beside> beside;
};

} // namespace

template <class T>
double reciprocalConditionOfLu(const Matrix<T>& lu, double norm)
{
    const int n = lu.rows, ld = lu.ld();
    if (n == 0)
        return 1;
    Workspace<T> w(n);
    const auto normA = Real<T>(norm);
    Real<T> rcond = 0;
    int info = 0;
    if constexpr (isComplex<T>)
        cgecon_("1", &n, lu.values.data(), &ld, &normA, &rcond, w.work.data(), w.beside.data(), &info, 1);
    else
        sgecon_("1", &n, lu.values.data(), &ld, &normA, &rcond, w.work.data(), w.beside.data(), &info, 1);
    return rcond;
}

template <class T>
double reciprocalConditionOfTriangle(char uplo, int n, const Matrix<T>& factors)
{
    if (n == 0)
        return 1;
    Workspace<T> w(n);
    const int ld = factors.ld();
    Real<T> rcond = 0;
    int info = 0;
    if constexpr (isComplex<T>)
        ctrcon_("1", &uplo, "N", &n, factors.values.data(), &ld, &rcond, w.work.data(), w.beside.data(), &info, 1, 1,
                1);
    else
        strcon_("1", &uplo, "N", &n, factors.values.data(), &ld, &rcond, w.work.data(), w.beside.data(), &info, 1, 1,
                1);
    return rcond;
}

template <class T>
void warnOfCondition(const std::string& file, double rcond)
{
    if (!(rcond >= epsilon<T>))
        fmt::print(stderr,
                   "tarn: warning: {}: the matrix is singular to {} precision (condition about {:.2g}): the solution "
                   "may have no correct digit\n",
                   file, select<T>("single", "double", "single", "double"), 1 / rcond);
}

template double reciprocalConditionOfLu(const Matrix<float>&, double);
template double reciprocalConditionOfLu(const Matrix<std::complex<float>>&, double);
template double reciprocalConditionOfTriangle(char, int, const Matrix<float>&);
template double reciprocalConditionOfTriangle(char, int, const Matrix<std::complex<float>>&);
template void warnOfCondition<float>(const std::string&, double);
template void warnOfCondition<double>(const std::string&, double);

} // namespace tarn::tool
