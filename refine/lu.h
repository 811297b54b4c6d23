// What is done with LU factors in host memory: systems solved, conditions estimated. The work is of order n^2 a column
// and done by the CPU, where the factors are, unless there are many columns.
#pragma once

#include "elements.h"
#include "lapack.h"

#include <cctype>
#include <vector>

namespace tarn::refine {

using tool::call;
using tool::isComplex;
using tool::Real;
using tool::select;

/// From so many columns on, products and triangular systems repay sending their matrix to the device.
constexpr int manyColumns = 256;

/// op(A) X = B by the factors and pivots of xGETRF, X in place of B, by the device. Single precision only.
template <class T>
tarnStatus solveOnDevice(char trans, int n, int nrhs, const T* lu, int ldlu, const int* pivots, T* x, int ldx)
{
    constexpr auto laswp = select<T>(&tool::slaswp_, nullptr, &tool::claswp_, nullptr);
    constexpr auto trsm = select<T>(&tarnStrsm, nullptr, &tarnCtrsm, nullptr);
    T* const factors = const_cast<T*>(lu); // which trsm only reads
    const auto triangle = [&](char uplo, char diag) {
        return call(trsm, 'L', uplo, trans, diag, n, nrhs, T(1), factors, ldlu, x, ldx);
    };
    const auto interchange = [&](int direction) {
        const int first = 1;
        laswp(&nrhs, x, &ldx, &first, &n, pivots, &direction);
    };
    const bool plain = trans == 'N';
    if (plain)
        interchange(1);
    tarnStatus status = plain ? triangle('L', 'U') : triangle('U', 'N');
    if (status == tarnNoError)
        status = plain ? triangle('U', 'N') : triangle('L', 'U');
    if (!plain)
        interchange(-1);
    return status;
}

/// op(A) X = B by the factors and pivots of xGETRF, X in place of B. trans is "N", "T" or "C".
template <class T>
tarnStatus solve(char trans, int n, int nrhs, const T* lu, int ldlu, const int* pivots, T* x, int ldx)
{
    if constexpr (std::is_same_v<Real<T>, float>)
        if (nrhs >= manyColumns)
            return solveOnDevice(trans, n, nrhs, lu, ldlu, pivots, x, ldx);
    int info = 0;
    select<T>(&tool::sgetrs_, &tool::dgetrs_, &tool::cgetrs_, &tool::zgetrs_)(&trans, &n, &nrhs, lu, &ldlu, pivots, x,
                                                                              &ldx, &info, 1);
    return tarnNoError;
}

/// An estimate of 1 / (norm1(op(A)) norm1(op(A)^-1)) from the factors and norm1(op(A)); 1 for n = 0. xGECON.
template <class T>
double reciprocalCondition(char trans, int n, const T* lu, int ldlu, double norm)
{
    using Beside = std::conditional_t<isComplex<T>, Real<T>, int>;
    std::vector<T> work(4 * std::size_t(n));
    std::vector<Beside> beside(2 * std::size_t(n));
    const char kind = trans == 'N' ? '1' : 'I'; // norm1(A^T) is the infinity norm of A
    const auto normA = Real<T>(norm);
    Real<T> rcond = 0;
    int info = 0;
    select<T>(&tool::sgecon_, &tool::dgecon_, &tool::cgecon_, &tool::zgecon_)(&kind, &n, lu, &ldlu, &normA, &rcond,
                                                                              work.data(), beside.data(), &info, 1);
    return n == 0 ? 1 : rcond;
}

} // namespace tarn::refine
