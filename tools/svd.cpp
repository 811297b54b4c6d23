#include "bench/trial.h"
#include "commands.h"
#include "failure.h"
#include "json.h"
#include "least_squares.h"
#include "output.h"
#include "progress.h"
#include "single_precision.h"
#include "singular_values.h"
#include "spectrum_plot.h"
#include "timing.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <optional>

namespace tarn::tool {

namespace {

/// A = U S V^H with the first min(m, n) vectors of each kind, or the values alone.
template <class T>
struct Decomposition
{
    Spectrum spectrum;
    Matrix<T> u, vt;
    double seconds = 0;
};

/// What is printed besides the spectrum.
struct Quality
{
    double seconds = 0;
    std::optional<double> backwardError, orthogonality, approximationError;
};

template <class T>
Decomposition<T> decompose(const SvdOptions& options, Matrix<T> a)
{
    const int m = a.rows, n = a.cols, k = std::min(m, n);
    const char job = options.wantsVectors() ? 'S' : 'N';
    Decomposition<T> result{{m, n, std::vector<float>(k)}, {}, {}};
    if (job == 'S') {
        result.u = Matrix<T>(m, k);
        result.vt = Matrix<T>(k, n);
    }
    const Phase phase("decomposing", bench::expectedSeconds(job == 'S' ? "gesvd-ss" : "gesvd-nn", letter<T>,
                                                            {std::max(m, n), k, 0, 0}));
    tarnStatus status = tarnNoError;
    result.seconds = secondsOf([&] {
        status = call(select<T>(tarnSgesvd, nullptr, tarnCgesvd, nullptr), job, job, m, n, a.values.data(), a.ld(),
                      result.spectrum.values.data(), result.u.values.data(), result.u.ld(), result.vt.values.data(),
                      result.vt.ld());
    });
    if (const tarnInfo info = tarnGetErrorInfo(); status == tarnDataError && info > 0) {
        // With vectors the info counts the values that are missing, without it is a code of the routine that finds
        // them.
        const std::string missing = job == 'S' ? fmt::format(": {} values are not there", info) : "";
        throw Failure(options.matrix + ": the iteration did not converge" + missing);
    }
    check(status, isComplex<T> ? "tarnCgesvd" : "tarnSgesvd");
    const auto& values = result.spectrum.values;
    if (!std::all_of(values.begin(), values.end(), [](float value) { return std::isfinite(value); }))
        throw Failure(options.matrix + ": the singular values do not fit single precision");
    return result;
}

/// Columns scaled by the singular values: the first k columns of U S.
template <class T>
Matrix<T> scaled(const Decomposition<T>& d, int k)
{
    Matrix<T> us(d.u.rows, k);
    for (int j = 0; j < k; ++j)
        for (int i = 0; i < us.rows; ++i)
            us(i, j) = d.u(i, j) * d.spectrum.values[j];
    return us;
}

/// The nearest matrix of rank k: the sum of the first k terms of U S V^H.
template <class T>
Matrix<T> approximation(const Decomposition<T>& d, int k)
{
    Matrix<T> us = scaled(d, k), vt = d.vt, b(d.u.rows, d.vt.cols);
    check(call(select<T>(tarnSgemm, nullptr, tarnCgemm, nullptr), 'N', 'N', b.rows, b.cols, k, T(1), us.values.data(),
               us.ld(), vt.values.data(), vt.ld(), T(0), b.values.data(), b.ld()),
          isComplex<T> ? "tarnCgemm" : "tarnSgemm");
    return b;
}

/// norm1(I - Q^H Q), with the columns of Q.
template <class T>
double orthogonalityOf(const Matrix<T>& q)
{
    Matrix<Wide<T>> gram(q.cols, q.cols);
    multiplyAdd(gram, Wide<T>(-1), 'C', q, convert<Wide<T>>(q));
    for (int i = 0; i < gram.rows; ++i)
        gram(i, i) += 1;
    return norm1(gram);
}

template <class T>
std::pair<Spectrum, Quality> run(const SvdOptions& options, const AnyMatrix& file)
{
    const Matrix<T> a = toSingle<T>(options.matrix, file);
    const Library library;
    const Decomposition<T> d = decompose(options, a);
    Quality quality{d.seconds, {}, {}, {}};
    if (options.wantsVectors()) {
        const double longer = std::max(a.rows, a.cols), norm = normF(a);
        Phase phase("checking");
        Matrix<Wide<T>> rest = convert<Wide<T>>(a);
        multiplyAdd(rest, Wide<T>(-1), 'N', scaled(d, int(d.spectrum.values.size())), convert<Wide<T>>(d.vt));
        quality.backwardError = norm == 0 ? normF(rest) : normF(rest) / (longer * norm * epsilon<T>);
        phase.done(1.0 / 3);
        const double ofU = orthogonalityOf(d.u);
        phase.done(2.0 / 3);
        quality.orthogonality = std::max(ofU, orthogonalityOf(adjoint(d.vt))) / (longer * epsilon<T>);
    }
    if (options.rank > 0) {
        const Matrix<T> nearest = approximation(d, options.rank);
        quality.approximationError = distance(a, nearest);
        if (!options.out.empty())
            writeMatrixMarket(options.out, nearest);
    }
    if (!options.plot.empty())
        writeText(options.plot, svgPlot(d.spectrum, "Singular values of " + withoutFolder(options.matrix)));
    return {d.spectrum, quality};
}

void printJson(const SvdOptions& options, char type, const Spectrum& s, const Quality& quality)
{
    nlohmann::ordered_json object = {{"matrix", options.matrix},
                                     {"routine", "gesvd"},
                                     {"type", std::string(1, type)},
                                     {"m", s.m},
                                     {"n", s.n},
                                     {"seconds", quality.seconds},
                                     {"singular_values", s.values},
                                     {"condition", nullptr},
                                     {"rank", s.rank()}};
    if (std::isfinite(s.condition()))
        object["condition"] = s.condition();
    if (quality.backwardError) {
        object["backward_error"] = *quality.backwardError;
        object["orthogonality"] = *quality.orthogonality;
    }
    if (quality.approximationError) {
        object["approximation_rank"] = options.rank;
        object["approximation_error"] = *quality.approximationError;
    }
    object["status"] = tarnGetStatusString(tarnNoError);
    printObject(object);
}

void printText(const SvdOptions& options, char type, const Spectrum& s, const Quality& quality)
{
    fmt::print("matrix          {} x {}, {} single precision\n", s.m, s.n, type == 'c' ? "complex" : "real");
    fmt::print("time            {:.6f} s, {}\n", quality.seconds,
               options.wantsVectors() ? "values and vectors" : "values");
    fmt::print("largest value   {:.8g}\nsmallest value  {:.8g}\n", s.largest(), s.smallest());
    fmt::print("condition       {:.4g}\n", s.condition());
    fmt::print("numerical rank  {}   values above max(m, n) eps s1 = {:.3g}, eps = 2^-23\n", s.rank(), s.noise());
    if (quality.backwardError) {
        fmt::print("backward error  {:.3g}   normF(A - U S V') / (max(m, n) normF(A) eps)\n", *quality.backwardError);
        fmt::print("orthogonality   {:.3g}   the larger norm1(I - Q' Q) / (max(m, n) eps) of Q = U and Q = V\n",
                   *quality.orthogonality);
    }
    if (quality.approximationError)
        fmt::print("rank {:<11}{:.6g}   normF(A - B) of the nearest matrix B; by the values {:.6g}\n", options.rank,
                   *quality.approximationError, s.tail(options.rank));
    fmt::print("status          {}\n", tarnGetStatusString(tarnNoError));
    if (!options.out.empty())
        fmt::print("approximation   {}\n", options.out);
    if (!options.plot.empty())
        fmt::print("plot            {}\n", options.plot);
    fmt::print("\n{}", textPlot(s, 16));
}

} // namespace

int runSvd(const SvdOptions& options)
{
    if (!options.out.empty() && options.out == options.plot)
        throw UsageError("--out and --plot cannot both go to " + options.out);
    reserveOutput(options.out);
    reserveOutput(options.plot);
    const AnyMatrix file = readMatrixMarket(options.matrix);
    const auto [m, n] = shapeOf(file);
    if (m == 0 || n == 0)
        throw Failure(fmt::format("{}: the matrix is {} x {}: it has no singular values", options.matrix, m, n));
    if (options.rank > std::min(m, n))
        throw Failure(fmt::format("--rank {}: the matrix is {} x {}", options.rank, m, n));
    const bool complex = options.complex || holdsComplex(file);
    const auto [spectrum, quality] = complex ? run<std::complex<float>>(options, file) : run<float>(options, file);
    (options.json ? printJson : printText)(options, complex ? 'c' : 's', spectrum, quality);
    return 0;
}

} // namespace tarn::tool
