// dsgesv and zcgesv: the exported functions, and the choice between refinement and the double-precision solver.
#include "refinement.h"

#include "tarn_refine.h"

#include <new>

namespace tarn::refine {

namespace {

/// Below this order the CPU's double-precision solver is done before single precision gains anything.
constexpr int smallOrder = 256;

/// With fewer rows than this for each right-hand side, refinements cost more than the factorisation saves.
#ifdef TARN_REFINE_ROWS_PER_COLUMN
constexpr std::int64_t rowsPerColumn = TARN_REFINE_ROWS_PER_COLUMN;
#else
constexpr std::int64_t rowsPerColumn = 0;
#endif

static_assert(tarnIterNotConverged == -Refinement<double>::mostSteps - 1);

/// The position of the first wrong argument, negative; 0 if all are right.
template <class W>
tarnInfo wrongArgument(const System<W>& s)
{
    const int least = std::max(1, s.n);
    if (s.trans != 'N' && s.trans != 'T' && s.trans != 'C')
        return -1;
    if (s.n < 0)
        return -2;
    if (s.nrhs < 0)
        return -3;
    if (!s.a && s.n > 0)
        return -4;
    if (s.lda < least)
        return -5;
    const bool empty = s.n == 0 || s.nrhs == 0;
    if (!s.b && !empty)
        return -6;
    if (s.ldb < least)
        return -7;
    if (!s.x && !empty)
        return -8;
    return s.ldx < least ? -9 : 0;
}

tarnStatus fail(tarnStatus status, tarnInfo info)
{
    tarnSetErrorInfo(info);
    tarnSetLastStatus(status);
    return status;
}

/// By the double-precision solver of the CPU.
template <class W>
tarnStatus solveInDouble(const System<W>& s, double norm1, double& rcond)
{
    std::vector<W> lu(std::size_t(s.n) * std::size_t(s.n));
    std::vector<int> pivots(s.n);
    for (int j = 0; j < s.n; ++j)
        std::copy_n(s.a + offset(0, j, s.lda), s.n, lu.data() + offset(0, j, s.n));
    int info = 0;
    select<W>(nullptr, &tool::dgetrf_, nullptr, &tool::zgetrf_)(&s.n, &s.n, lu.data(), &s.n, pivots.data(), &info);
    if (info > 0)
        return fail(tarnDataError, info);
    for (int j = 0; j < s.nrhs; ++j)
        std::copy_n(s.b + offset(0, j, s.ldb), s.n, s.x + offset(0, j, s.ldx));
    rcond = reciprocalCondition(s.trans, s.n, lu.data(), s.n, norm1);
    return solve(s.trans, s.n, s.nrhs, lu.data(), s.n, pivots.data(), s.x, s.ldx);
}

/// By factors in single precision. Where these cannot serve, how.iter says why.
template <class W>
tarnStatus solveByRefinement(const System<W>& s, Rounded<W>& a, tarnRefinement& how)
{
    using T = Narrow<W>;
    std::vector<int> pivots(s.n);
    const tarnStatus status =
        call(select<T>(&tarnSgetrf, nullptr, &tarnCgetrf, nullptr), s.n, s.n, a.values.data(), s.n, pivots.data());
    if (status == tarnDataError) {
        how.iter = tarnIterSingular;
        return tarnNoError;
    }
    if (status != tarnNoError)
        return status;
    how.rcond = reciprocalCondition(s.trans, s.n, a.values.data(), s.n, a.norm1);
    return Refinement<W>(s, a.values.data(), pivots.data(), a.normInf).run(how.iter);
}

template <class W>
tarnStatus choose(const System<W>& s, tarnRefinement& how)
{
    how = {0, 1};
    if (s.n == 0)
        return tarnNoError;
    double norm1;
    {
        Rounded<W> rounded(s);
        norm1 = rounded.norm1;
        if (s.n < smallOrder || s.n < rowsPerColumn * s.nrhs)
            how.iter = tarnIterSmall;
        else if (!rounded.fits)
            how.iter = tarnIterRange;
        else if (const tarnStatus status = solveByRefinement(s, rounded, how); status != tarnNoError || how.iter >= 0)
            return status;
    }
    how.rcond = 0;
    return solveInDouble(s, norm1, how.rcond);
}

template <class W>
tarnStatus gesv(System<W> s, tarnRefinement* how) noexcept
{
    int device;
    if (const tarnStatus status = tarnGetExecutingDevice(&device); status != tarnNoError)
        return status;
    s.trans = char(std::toupper(static_cast<unsigned char>(s.trans)));
    if (const tarnInfo info = wrongArgument(s); info != 0)
        return fail(tarnArgumentError, info);
    tarnRefinement dropped;
    try {
        const tarnStatus status = choose(s, how ? *how : dropped);
        return status == tarnNoError ? fail(tarnNoError, 0) : status;
    } catch (const std::bad_alloc&) {
        return fail(tarnInsufficientMemory, 0);
    }
}

/// The elements of a complex array of the C interface.
const std::complex<double>* elements(const tarnDoubleComplex* p)
{
    return reinterpret_cast<const std::complex<double>*>(p);
}

} // namespace

} // namespace tarn::refine

using namespace tarn::refine;

tarnStatus tarnDsgesv(char trans, int n, int nrhs, const double* a, int lda, const double* b, int ldb, double* x,
                      int ldx, tarnRefinement* how)
{
    return gesv<double>({trans, n, nrhs, a, lda, b, ldb, x, ldx}, how);
}

tarnStatus tarnZcgesv(char trans, int n, int nrhs, const tarnDoubleComplex* a, int lda, const tarnDoubleComplex* b,
                      int ldb, tarnDoubleComplex* x, int ldx, tarnRefinement* how)
{
    return gesv<std::complex<double>>(
        {trans, n, nrhs, elements(a), lda, elements(b), ldb, reinterpret_cast<std::complex<double>*>(x), ldx}, how);
}
