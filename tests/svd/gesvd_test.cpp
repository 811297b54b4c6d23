// gesvd: all pairs of jobs on shapes that take every path, in both forms; values and vectors of special matrices; what
// is left alone.
#include "lapack/svd/gesvd_path.h"
#include "support/api.h"
#include "support/device.h"
#include "support/forms.h"
#include "svd/checks.h"
#include "tarn_core.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <set>

namespace {

using namespace test;
using C = tarn::Complex<float>;

/// All legal pairs of jobs, u first.
constexpr const char* jobPairs[] = {"NN", "NS", "NA", "NO", "ON", "OS", "OA", "SN",
                                    "SS", "SA", "SO", "AN", "AS", "AA", "AO"};

/// The arguments of one call, and what they have become. The arrays of the vectors are larger than any job needs.
template <class T>
struct Decomposition
{
    Decomposition(const Matrix<T>& input, const char* jobs, Form form)
        : A(input), k(std::min(A.m, A.n)), a(A), u(Matrix<T>::random(A.m, A.m + 2, A.m + 3, 5)),
          vt(Matrix<T>::random(A.n, A.n + 2, A.n + 1, 6)), u0(u), vt0(vt), s(k), jobu(jobs[0]), jobvt(jobs[1])
    {
        const auto routine = form == Form::host ? Api<T>::gesvd : Api<T>::deviceGesvd;
        status = callIn(
            form,
            [&](auto* pa, float* ps, auto* pu, auto* pvt) {
                return routine(jobu, jobvt, A.m, A.n, pa, a.ld, ps, pu, u.ld, pvt, vt.ld);
            },
            a.elements(), s, u.elements(), vt.elements());
    }

    bool hasLeft() const { return jobu != 'N'; }
    bool hasRight() const { return jobvt != 'N'; }
    WideMatrix left() const { return corner(widened(jobu == 'O' ? a : u), A.m, jobu == 'A' ? A.m : k); }
    WideMatrix right() const { return corner(widened(jobvt == 'O' ? a : vt), jobvt == 'A' ? A.n : k, A.n); }

    Matrix<T> A;
    int k;
    Matrix<T> a, u, vt, u0, vt0;
    std::vector<float> s;
    char jobu, jobvt;
    tarnStatus status;
};

/// True if A is as before outside its first rows and columns.
template <class T>
bool sameOutside(const Matrix<T>& before, Matrix<T> after, int rows, int cols)
{
    for (int j = 0; j < cols; ++j)
        for (int i = 0; i < rows; ++i)
            after(i, j) = before(i, j);
    return identical(before, after);
}

/// Everything that holds after a decomposition, given the singular values of A in double precision.
template <class T>
void expectDecomposition(const Decomposition<T>& D, const std::vector<double>& expected)
{
    ASSERT_EQ(D.status, tarnNoError);
    const WideMatrix A = widened(D.A);
    const std::vector<float>& s = D.s;
    for (int i = 0; i < D.k; ++i)
        EXPECT_NEAR(s[i], expected[i], 30 * eps<T> * expected[0]) << i;
    EXPECT_TRUE(std::is_sorted(s.rbegin(), s.rend()));
    EXPECT_GE(s.back(), 0);
    EXPECT_LT(D.hasLeft() ? orthogonality(D.left()) : 0, 30);
    EXPECT_LT(D.hasRight() ? orthogonality(adjoint(D.right())) : 0, 30);

    // A = U S V^H, or by one kind of vectors alone A A^H = U S^2 U^H and A^H A = V S^2 V^H.
    const WideMatrix S = bidiagonal(s), squares = product(S, S);
    const auto gramRatio = [&](const WideMatrix& M, const WideMatrix& V) {
        const double error = distance(product(adjoint(M), product(M, V)), product(V, squares));
        return error == 0 ? 0 : error / (std::max(M.m, M.n) * eps<T> * norm1(M) * norm1(adjoint(M)));
    };
    if (D.hasLeft() && D.hasRight()) {
        EXPECT_LT(decompositionRatio(A, corner(D.left(), D.A.m, D.k), S, corner(D.right(), D.k, D.A.n)), 30);
    } else if (D.hasLeft()) {
        EXPECT_LT(gramRatio(adjoint(A), corner(D.left(), D.A.m, D.k)), 30);
    } else if (D.hasRight()) {
        EXPECT_LT(gramRatio(A, adjoint(corner(D.right(), D.k, D.A.n))), 30);
    }

    EXPECT_TRUE(D.a.paddingIntact());
    const auto used = [&](char job, int all) { return job == 'A' ? all : job == 'S' ? D.k : 0; };
    EXPECT_TRUE(sameOutside(D.u0, D.u, D.A.m, used(D.jobu, D.A.m)));
    EXPECT_TRUE(sameOutside(D.vt0, D.vt, used(D.jobvt, D.A.n), D.A.n));
}

template <class T>
void expectDecompositions(const Matrix<T>& A, std::initializer_list<const char*> jobs)
{
    SCOPED_TRACE(testing::Message() << A.m << " x " << A.n);
    const auto expected = singularValues(widened(A));
    for (const char* pair : jobs) {
        SCOPED_TRACE(pair);
        expectDecomposition(Decomposition<T>(A, pair, Form::host), expected);
    }
}

template <class T>
class Gesvd : public testing::Test
{
protected:
    const Initialized library;
};

using Types = testing::Types<float, C>;
TYPED_TEST_SUITE(Gesvd, Types);

TYPED_TEST(Gesvd, EveryPairOfJobsOnEveryPath)
{
    using T = TypeParam;
    std::set<int> paths;
    for (const auto& [m, n] : {std::pair{120, 70}, {70, 120}, {80, 70}, {70, 80}, {37, 37}}) {
        const auto A = Matrix<T>::random(m, n, m + 2, m + 2 * n);
        const auto expected = singularValues(widened(A));
        for (const char* jobs : jobPairs)
            for (const Form form : {Form::host, Form::device}) {
                SCOPED_TRACE(testing::Message() << jobs << ", " << m << " x " << n << ", form " << int(form));
                paths.insert(tarn::svd::gesvdPath(jobs[0], jobs[1], m, n));
                expectDecomposition(Decomposition<T>(A, jobs, form), expected);
            }
    }
    EXPECT_EQ(paths.size(), 20u);
    EXPECT_EQ(*paths.rbegin(), 19);
}

TEST(GesvdPath, FollowsJobsAndShape)
{
    // For m >= n; the mirrored jobs give the next number for m < n.
    const std::map<std::string, int> paths = {{"NN", 0},  {"NS", 0},  {"NA", 0},  {"NO", 0},  {"ON", 2},
                                              {"OS", 4},  {"OA", 4},  {"SN", 6},  {"SO", 8},  {"SS", 10},
                                              {"SA", 10}, {"AN", 12}, {"AO", 14}, {"AS", 16}, {"AA", 16}};
    for (const auto& [jobs, path] : paths)
        for (const auto& [longer, shorter, factorsFirst] :
             {std::tuple{8, 5, true}, {7, 5, false}, {1, 1, true}, {2, 2, false}, {16, 10, true}, {15, 10, false}}) {
            EXPECT_EQ(tarn::svd::gesvdPath(jobs[0], jobs[1], longer, shorter), factorsFirst ? path : 18);
            if (longer > shorter) {
                EXPECT_EQ(tarn::svd::gesvdPath(jobs[1], jobs[0], shorter, longer), factorsFirst ? path + 1 : 19);
            }
        }
}

TYPED_TEST(Gesvd, OddShapes)
{
    using T = TypeParam;
    const std::pair<int, int> shapes[] = {{1, 1}, {9, 1},   {1, 9},   {2, 2},   {3, 2},    {8, 5},    {7, 5},
                                          {5, 8}, {32, 32}, {33, 33}, {33, 34}, {200, 33}, {32, 100}, {150, 65}};
    for (const auto& [m, n] : shapes)
        expectDecompositions(Matrix<T>::random(m, n, m, 3), {"NN", "SS", "AA", "ON", "SO"});
}

TYPED_TEST(Gesvd, SpecialSpectra)
{
    using T = TypeParam;
    const int k = 60;
    std::vector<double> graded(k), repeated(k), deficient(k), zero(k);
    for (int i = 0; i < k; ++i) {
        graded[i] = std::pow(10.0, -6.0 * i / (k - 1));
        repeated[i] = i < 20 ? 3 : i < 40 ? 1 : 1e-3;
        deficient[i] = i % 4 == 0 ? 0 : 1.0 / (1 + i);
    }
    for (const auto& s : {graded, repeated, deficient, zero})
        for (const auto& [m, n] : {std::pair{k, k}, {2 * k, k}, {k, k + 5}}) {
            // The columns or rows of a reflection I - 2 v v^T / (v^T v), scaled by s.
            const auto v = Matrix<double>::random(std::max(m, n), 1, std::max(m, n), 9).elements();
            double square = 0;
            for (const double x : v)
                square += x * x;
            Matrix<T> A(m, n, m);
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i)
                    A(i, j) = float(s[m >= n ? j : i] * ((i == j) - 2 * v[i] * v[j] / square)) * T(1);
            expectDecompositions(A, {"SS", "NN", "AA"});
        }
}

TYPED_TEST(Gesvd, WhatIsNotFiniteEndsAndDoesNotLookLikeAResult)
{
    using T = TypeParam;
    for (const float bad : {NAN, INFINITY})
        for (const auto& [m, n] : {std::pair{40, 40}, {90, 40}, {40, 90}, {2, 2}, {3, 1}})
            for (const char* jobs : {"SS", "NN"}) {
                SCOPED_TRACE(testing::Message() << bad << " in " << m << " x " << n << ", " << jobs);
                auto A = Matrix<T>::random(m, n, m);
                A(m / 2, n / 3) = bad * T(1);
                const Decomposition<T> D(A, jobs, Form::host);
                const bool isFinite =
                    std::all_of(D.s.begin(), D.s.end(), [](float value) { return std::isfinite(value); });
                EXPECT_TRUE(D.status == tarnDataError || (D.status == tarnNoError && !isFinite));
            }
    expectDecompositions(Matrix<T>::random(50, 40, 50), {"SS"});
}

/// A data error delivers what there is, and nothing that the device's memory held before.
TYPED_TEST(Gesvd, ADataErrorShowsNothingOfEarlierCalls)
{
    using T = TypeParam;
    if (!hasControls)
        GTEST_SKIP() << "needs a device with controls";
    softdevSetPoison(true); // a NaN that no computation makes
    const auto poison = DeviceArray<T>(1).download()[0];
    int errors = 0;
    for (const auto& [m, n] : {std::pair{90, 40}, {40, 90}, {40, 40}})
        for (const char* jobs : {"SS", "AA", "NS", "SN", "OS", "SO"}) {
            SCOPED_TRACE(testing::Message() << jobs << ", " << m << " x " << n);
            auto A = Matrix<T>::random(m, n, m);
            A(m / 2, n / 3) = NAN * T(1);
            const Decomposition<T> D(A, jobs, Form::host);
            errors += D.status == tarnDataError;
            for (Matrix<T> delivered : {D.a, D.u, D.vt})
                delivered.each([&](const T& x) { ASSERT_NE(std::memcmp(&x, &poison, sizeof x), 0); });
        }
    softdevSetPoison(false);
    EXPECT_GT(errors, 10);
}

TYPED_TEST(Gesvd, EmptyProblemsAndUnusedArrays)
{
    using T = TypeParam;
    for (const auto gesvd : {Api<T>::gesvd, Api<T>::deviceGesvd})
        for (const auto& [m, n] : {std::pair{0, 5}, {5, 0}})
            EXPECT_EQ(gesvd('A', 'S', m, n, nullptr, 5, nullptr, nullptr, 5, nullptr, 5), tarnNoError);
    const auto before = Matrix<T>::random(5, 5, 5);
    for (const auto& [m, n, jobs] : {std::tuple{0, 5, "NA"}, {5, 0, "AN"}}) {
        auto u = before, vt = before;
        EXPECT_EQ(Api<T>::gesvd(jobs[0], jobs[1], m, n, nullptr, 5, nullptr, native(u.data()), 5, native(vt.data()), 5),
                  tarnNoError);
        EXPECT_TRUE(identical(u, before) && identical(vt, before));
    }

    auto A = Matrix<T>::random(30, 40, 30);
    const auto expected = singularValues(widened(A));
    std::vector<float> s(30);
    ASSERT_EQ(Api<T>::gesvd('n', 'n', 30, 40, native(A.data()), 30, s.data(), nullptr, 1, nullptr, 1), tarnNoError);
    EXPECT_NEAR(s[0], expected[0], 1e-5 * expected[0]);
}

TYPED_TEST(Gesvd, ArgumentsAreCheckedInOrder)
{
    using T = TypeParam;
    T element{};
    float value = 0;
    struct Call
    {
        const char* jobs;
        int m, n, lda, ldu, ldvt;
        int given; ///< so many of the pointers a, s, u and vt are not null
        int info;
    };
    const Call calls[] = {
        {"XX", -1, -1, 0, 0, 0, 0, -1}, {"SX", -1, -1, 0, 0, 0, 0, -2}, {"Oo", -1, -1, 0, 0, 0, 0, -2},
        {"sa", -1, -1, 0, 0, 0, 0, -3}, {"SA", 5, -1, 0, 0, 0, 0, -4},  {"SA", 5, 3, 4, 0, 0, 0, -6},
        {"SA", 5, 3, 5, 4, 0, 0, -9},   {"NA", 5, 3, 5, 0, 0, 0, -9},   {"SA", 3, 5, 5, 3, 4, 0, -11},
        {"SS", 3, 5, 5, 3, 2, 0, -11},  {"NN", 3, 5, 5, 1, 0, 0, -11},  {"AS", 3, 5, 5, 3, 3, 0, -5},
        {"AS", 3, 5, 5, 3, 3, 1, -7},   {"AS", 3, 5, 5, 3, 3, 2, -8},   {"OS", 3, 5, 5, 1, 3, 3, -10}};
    for (const auto gesvd : {Api<T>::gesvd, Api<T>::deviceGesvd})
        for (const Call& c : calls) {
            const auto given = [&](int nth) { return c.given >= nth ? native(&element) : nullptr; };
            EXPECT_EQ(gesvd(c.jobs[0], c.jobs[1], c.m, c.n, given(1), c.lda, c.given >= 2 ? &value : nullptr, given(3),
                            c.ldu, given(4), c.ldvt),
                      tarnArgumentError);
            EXPECT_EQ(tarnGetErrorInfo(), c.info);
        }
}

} // namespace
