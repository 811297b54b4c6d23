// Square systems: in single precision, by given factors, and in double precision by refinement.
#include "api.h"
#include "lu.h"
#include "module.h"

#include "tarn_refine.h"

#include <nanobind/stl/complex.h>
#include <nanobind/stl/tuple.h>

#include <cmath>
#include <cstring>

namespace tarn::python {

namespace {

/// Whether an element is neither infinite nor NaN, by bits, so that a loop over many runs in vectors.
template <class R>
bool finite(R x)
{
    using Bits = std::conditional_t<sizeof(R) == 4, std::uint32_t, std::uint64_t>;
    constexpr Bits exponent = sizeof(R) == 4 ? Bits(0x7f800000u) : Bits(0x7ff0000000000000ull);
    Bits bits;
    std::memcpy(&bits, &x, sizeof x);
    return (bits & exponent) != exponent;
}

template <class T>
bool allFinite(std::int64_t count, const T* x)
{
    const auto* parts = reinterpret_cast<const Real<T>*>(x);
    bool all = true;
    for (std::int64_t i = 0; i < count * (isComplex<T> ? 2 : 1); ++i)
        all &= finite(parts[i]);
    return all;
}

template <class T>
bool allFinite(int m, int n, const T* a, int ld)
{
    for (int j = 0; j < n; ++j)
        if (!allFinite(m, a + std::int64_t(j) * ld))
            return false;
    return true;
}

/// norm1(op(A)) of a matrix that lies as m by n columns.
template <class T>
double norm1(char trans, int n, const T* a)
{
    std::vector<double> rowSums(n);
    double columnNorm = 0, rowNorm = 0;
    for (int j = 0; j < n; ++j) {
        double sum = 0;
        for (int i = 0; i < n; ++i) {
            const double size = std::abs(a[i + std::int64_t(j) * n]);
            rowSums[i] += size;
            sum += size;
        }
        columnNorm = std::max(columnNorm, sum);
    }
    for (const double sum : rowSums)
        rowNorm = std::max(rowNorm, sum);
    return trans == 'N' ? columnNorm : rowNorm;
}

constexpr const char* notFinite = "array must not contain infs or NaNs";

template <class T>
void requireFinite(int m, int n, const T* a, int ld)
{
    if (!allFinite(m, n, a, ld))
        throw nb::value_error(notFinite);
}

/// getrf of an n by n matrix, in place; pivots on the host, one-based.
template <class T>
int factor(bool device, int m, int n, T* a, int* pivots)
{
    constexpr const char* name = select<T>("tarnSgetrf", nullptr, "tarnCgetrf", nullptr);
    const int k = std::min(m, n);
    const auto getrf = Lapack<T>::getrf.at(device);
    if (!device)
        return infoOf(call(getrf, m, n, a, std::max(1, m), pivots), name);
    const DeviceBuffer<int> onDevice(k);
    const int info = infoOf(call(getrf, m, n, a, std::max(1, m), onDevice.data()), name);
    copyMatrix(k, 1, pivots, std::max(1, k), onDevice.data(), std::max(1, k), cudaMemcpyDeviceToHost);
    return info;
}

/// op(A) X = B by factors in device memory. The interchanges are made on the host, where the pivots are.
template <class T>
void solveFactoredOnDevice(char trans, int n, int nrhs, const T* lu, const int* pivots, T* x)
{
    constexpr const char* name = select<T>("tarnDeviceStrsm", nullptr, "tarnDeviceCtrsm", nullptr);
    T* const factors = const_cast<T*>(lu); // which trsm only reads
    const auto triangle = [&](char uplo, char diag) {
        infoOf(call(Blas<T>::trsm.device, 'L', uplo, trans, diag, n, nrhs, T(1), factors, n, x, n), name);
    };
    const auto interchange = [&](int direction) {
        std::vector<T> host = downloaded(n, nrhs, x, n);
        const int first = 1;
        select<T>(&tool::slaswp_, nullptr, &tool::claswp_, nullptr)(&nrhs, host.data(), &n, &first, &n, pivots,
                                                                    &direction);
        copyMatrix(n, nrhs, x, n, host.data(), n, cudaMemcpyHostToDevice);
    };
    if (trans == 'N') {
        interchange(1);
        triangle('L', 'U');
        triangle('U', 'N');
    } else {
        triangle('U', 'N');
        triangle('L', 'U');
        interchange(-1);
    }
}

template <class T>
void solveFactored(bool device, char trans, int n, int nrhs, const T* lu, const int* pivots, T* x)
{
    if (n == 0 || nrhs == 0)
        return;
    if (device)
        solveFactoredOnDevice(trans, n, nrhs, lu, pivots, x);
    else
        infoOf(refine::solve(trans, n, nrhs, lu, n, pivots, x, n), "tarnStrsm");
}

/// op(A) X = B in single precision: A becomes its factors, X stands in place of B. (info, rcond)
template <class T>
std::tuple<int, double> solveSingle(char trans, const Array<T>& a, const Array<T>& x, bool check)
{
    const nb::gil_scoped_release released;
    initialize();
    const bool device = onDevice(a);
    const int n = rows(a), nrhs = cols(x);
    const bool estimate = check || !device;
    double norm = 0, rcond = std::numeric_limits<double>::quiet_NaN();
    if (estimate) {
        const std::vector<T> copy = device ? downloaded(n, n, a.data(), std::max(1, n)) : std::vector<T>();
        const T* host = device ? copy.data() : a.data();
        if (check)
            requireFinite(n, n, host, n);
        norm = norm1(trans, n, host);
    }
    if (check && !device)
        requireFinite(n, nrhs, x.data(), n);
    std::vector<int> pivots(n);
    if (const int info = factor(device, n, n, a.data(), pivots.data()); info > 0)
        return {info, 0};
    if (estimate) {
        const std::vector<T> copy = device ? downloaded(n, n, a.data(), std::max(1, n)) : std::vector<T>();
        rcond = refine::reciprocalCondition(trans, n, device ? copy.data() : a.data(), n, norm);
    }
    solveFactored(device, trans, n, nrhs, a.data(), pivots.data(), x.data());
    return {0, rcond};
}

/// op(A) X = B in double precision. (info, rcond, iter)
template <class W>
std::tuple<int, double, int> solveDouble(bool transposed, const Readable<W>& a, const Array<const W>& b,
                                         const Array<W>& x, bool check)
{
    const nb::gil_scoped_release released;
    initialize();
    const Layout layout = layoutOf(a);
    const int n = rows(a), nrhs = cols(b);
    if (check) {
        requireFinite(n, n, a.data(), layout.ld);
        requireFinite(n, nrhs, b.data(), n);
    }
    const char trans = layout.transposed == transposed ? 'N' : 'T';
    tarnRefinement how{};
    tarnStatus status;
    const int ld = std::max(1, n);
    if constexpr (isComplex<W>) {
        const auto elements = [](const W* p) { return reinterpret_cast<const tarnDoubleComplex*>(p); };
        status = tarnZcgesv(trans, n, nrhs, elements(a.data()), layout.ld, elements(b.data()), ld, tool::toC(x.data()),
                            ld, &how);
    } else {
        status = tarnDsgesv(trans, n, nrhs, a.data(), layout.ld, b.data(), ld, x.data(), ld, &how);
    }
    const int info = infoOf(status, isComplex<W> ? "tarnZcgesv" : "tarnDsgesv");
    return {info, how.rcond, how.iter};
}

/// getrf in place; pivots count from 0. The info.
template <class T>
int factorise(const Array<T>& a, const Array<int>& pivots)
{
    const nb::gil_scoped_release released;
    initialize();
    const int k = std::min(rows(a), cols(a));
    const int info = factor(onDevice(a), rows(a), cols(a), a.data(), pivots.data());
    for (int i = 0; i < k; ++i)
        --pivots.data()[i];
    return info;
}

/// op(A) X = B by factors and pivots that count from 0, X in place of B.
template <class T>
void solveByFactors(char trans, const Array<const T>& lu, const Array<const int>& pivots, const Array<T>& x)
{
    const nb::gil_scoped_release released;
    initialize();
    const int n = rows(lu);
    std::vector<int> oneBased(n);
    for (int i = 0; i < n; ++i) {
        if (pivots.data()[i] < 0 || pivots.data()[i] >= n)
            throw nb::value_error("a pivot is out of range");
        oneBased[i] = pivots.data()[i] + 1;
    }
    solveFactored(onDevice(lu), trans, n, cols(x), lu.data(), oneBased.data(), x.data());
}

/// Whether a contiguous array holds neither infinities nor NaNs.
template <class T>
bool isFinite(const nb::ndarray<const T>& x)
{
    const nb::gil_scoped_release released;
    return allFinite(std::int64_t(x.size()), x.data());
}

template <class T>
void addSingle(nb::module_& m)
{
    m.def("solve_single", &solveSingle<T>, nb::arg("trans"), nb::arg("a").noconvert(), nb::arg("x").noconvert(),
          nb::arg("check"));
    m.def("getrf", &factorise<T>, nb::arg("a").noconvert(), nb::arg("pivots").noconvert());
    m.def("getrs", &solveByFactors<T>, nb::arg("trans"), nb::arg("lu").noconvert(), nb::arg("pivots").noconvert(),
          nb::arg("x").noconvert());
    m.def("all_finite", &isFinite<T>, nb::arg("x").noconvert());
}

template <class W>
void addDouble(nb::module_& m)
{
    m.def("solve_double", &solveDouble<W>, nb::arg("transposed"), nb::arg("a").noconvert(), nb::arg("b").noconvert(),
          nb::arg("x").noconvert(), nb::arg("check"));
    m.def("all_finite", &isFinite<W>, nb::arg("x").noconvert());
}

} // namespace

void addSolvers(nb::module_& m)
{
    addDouble<double>(m);
    addDouble<std::complex<double>>(m);
    addSingle<float>(m);
    addSingle<std::complex<float>>(m);
}

} // namespace tarn::python
