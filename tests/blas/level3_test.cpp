// Level 3: every letter, type and form against a reference, below and above the sizes at which the recursions begin;
// what must not be read or written; empty products.
#include "blas/reference.h"
#include "blas/routines.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace test;
using C = tarn::Complex<float>;
using Z = tarn::Complex<double>;

constexpr double bound = 3;
constexpr int pad = 3;

template <class T>
class Level3 : public testing::Test
{
protected:
    const Initialized library;
};

using Types = testing::Types<float, double, C, Z>;
TYPED_TEST_SUITE(Level3, Types);

/// alpha and beta; S is the type of a beta that is real for every T.
template <class T, class S = T>
struct Scalars
{
    T alpha;
    S beta;
};

template <class T, class S = T>
std::vector<Scalars<T, S>> allScalars()
{
    const T alphas[] = {T(0), T(1), scalar<T>(-0.7, 0.4)};
    const S betas[] = {S(0), S(1), scalar<S>(0.6, -1.3)};
    std::vector<Scalars<T, S>> all;
    for (const T alpha : alphas)
        for (const S beta : betas)
            all.push_back({alpha, beta});
    return all;
}

/// For large problems: beta 0, and both general.
template <class T, class S = T>
std::vector<Scalars<T, S>> fewScalars()
{
    return {{scalar<T>(-0.7, 0.4), S(0)}, {scalar<T>(1.1, 0.9), scalar<S>(0.6, -1.3)}};
}

/// The forms in which a problem with a matrix of that order runs: both, or if it is large, one of them per triangle.
std::vector<Form> formsOf(int order, char uplo)
{
    if (order < 500)
        return {onHost, onDevice};
    return {upper(uplo) == 'U' ? onHost : onDevice};
}

/// The rows by cols result of a routine: NaN where it must not be read.
template <class T, class S>
Matrix<T> oldResult(int rows, int cols, S beta)
{
    auto old = Matrix<T>::random(rows, cols, rows + pad, 3);
    if (beta == S(0))
        old.each([](T& x) { x = notANumber<T>(); });
    return old;
}

/// A triangle that is well conditioned, NaN in the other one, and on a diagonal that counts as ones.
template <class T>
Matrix<T> triangle(int n, char uplo, char diag)
{
    auto A = Matrix<T>::random(n, n, n + pad, 1);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            A(i, j) = i == j ? scalar<T>(2 + 0.5 * wide(A(i, j)).real(), 0.5) : T(tarn::Real<T>(1.0 / n) * A(i, j));
    poisonOtherTriangle(uplo, A);
    if (upper(diag) == 'U')
        for (int i = 0; i < n; ++i)
            A(i, i) = notANumber<T>();
    return A;
}

/// Garbage in the imaginary part of the diagonal of a Hermitian matrix, where it must not count.
template <class T>
void spoilDiagonal(Matrix<T>& A)
{
    if constexpr (tarn::isComplex<T>)
        for (int i = 0; i < A.n; ++i)
            A(i, i).imag(100);
}

struct Sizes
{
    int m, n, k;
};

// ---- gemm ----

template <class T>
void expectGemm(char transa, char transb, Sizes size, Scalars<T> s)
{
    const auto [m, n, k] = size;
    const bool plainA = upper(transa) == 'N', plainB = upper(transb) == 'N';
    const int rowsA = plainA ? m : k, rowsB = plainB ? k : n;
    const auto A = Matrix<T>::random(rowsA, plainA ? k : m, rowsA + pad, 1);
    const auto B = Matrix<T>::random(rowsB, plainB ? n : k, rowsB + pad, 2);
    const auto old = oldResult<T>(m, n, s.beta);
    const auto left = general(transa, A), right = general(transb, B);
    for (const Form form : bothForms) {
        SCOPED_TRACE(testing::Message() << form << " " << transa << transb << " " << m << " " << n << " " << k);
        auto a = A, b = B, c = old;
        ASSERT_EQ(Routines<T>::gemm[form](transa, transb, m, n, k, native(s.alpha), Placed(form, a).address(), a.ld,
                                          Placed(form, b).address(), b.ld, native(s.beta), Placed(form, c).address(),
                                          c.ld),
                  tarnNoError);
        EXPECT_LE(ratio(c, {{s.alpha, left, right}}, s.beta, old), bound);
        EXPECT_TRUE(c.paddingIntact() && identical(a, A) && identical(b, B));
    }
}

TYPED_TEST(Level3, Gemm)
{
    using T = TypeParam;
    for (const char transa : {'N', 'T', 'C', 'n', 't', 'c'})
        for (const char transb : {'N', 'T', 'C'})
            expectGemm<T>(transa, transb, {17, 33, 65}, fewScalars<T>()[1]);
    for (const auto s : allScalars<T>())
        for (const int k : {0, 1, 40})
            expectGemm<T>('N', 'c', {31, 2, k}, s);
}

// ---- trsm and trmm ----

template <class T, bool solve>
void expectTriangular(char side, char uplo, char trans, char diag, int m, int n, T alpha)
{
    const auto* const routine = solve ? Routines<T>::trsm : Routines<T>::trmm;
    const auto A = triangle<T>(upper(side) == 'L' ? m : n, uplo, diag);
    const auto B = Matrix<T>::random(m, n, m + pad, 2);
    const auto full = triangular(uplo, trans, diag, A);
    for (const Form form : formsOf(A.n, uplo)) {
        SCOPED_TRACE(testing::Message() << form << " " << side << uplo << trans << diag << " " << m << " " << n);
        auto a = A, b = B;
        ASSERT_EQ(routine[form](side, uplo, trans, diag, m, n, native(alpha), Placed(form, a).address(), a.ld,
                                Placed(form, b).address(), b.ld),
                  tarnNoError);
        const auto factor = general('N', solve ? b : B);
        const Term<T> term = upper(side) == 'L' ? Term<T>{alpha, full, factor} : Term<T>{alpha, factor, full};
        if (solve) {
            // op(A) X is to be alpha B; the terms are what it is made of.
            auto scaled = general('N', B);
            scaled.each([&](T& x) { x *= alpha; });
            EXPECT_LE(ratio(scaled, {{T(1), term.left, term.right}}, T(0), B), bound);
        } else {
            EXPECT_LE(ratio(b, {term}, T(0), B), bound);
        }
        EXPECT_TRUE(b.paddingIntact() && identical(a, A));
    }
}

/// Side "L" with `left` rows and leftN columns, side "R" with rightM rows and `right` columns.
template <class T, bool solve>
void expectTriangularOf(int left, int leftN, int rightM, int right, const std::string& diagonals)
{
    const T alpha = scalar<T>(1.5, -0.5);
    for (const char uplo : {'U', 'L'})
        for (const char trans : {'N', 'T', 'C'})
            for (const char diag : diagonals) {
                expectTriangular<T, solve>('L', uplo, trans, diag, left, leftN, alpha);
                expectTriangular<T, solve>('R', uplo, trans, diag, rightM, right, alpha);
            }
    expectTriangular<T, solve>('l', 'u', 'c', 'u', left, leftN, T(1));
    expectTriangular<T, solve>('r', 'l', 't', 'n', rightM, right, T(0));
}

TYPED_TEST(Level3, TrsmDirect) { expectTriangularOf<TypeParam, true>(65, 7, 12, 33, "NU"); }

TYPED_TEST(Level3, TrsmRecursive) { expectTriangularOf<TypeParam, true>(515, 512, 513, 600, "N"); }

TYPED_TEST(Level3, TrmmDirect) { expectTriangularOf<TypeParam, false>(65, 7, 12, 33, "NU"); }

TYPED_TEST(Level3, TrmmRecursive) { expectTriangularOf<TypeParam, false>(1024, 3, 2, 1155, "U"); }

// ---- symm and hemm ----

template <class T, bool hermitian>
void expectSymm(char side, char uplo, int m, int n, Scalars<T> s)
{
    auto A =
        Matrix<T>::random(upper(side) == 'L' ? m : n, upper(side) == 'L' ? m : n, (upper(side) == 'L' ? m : n) + pad);
    if (hermitian)
        spoilDiagonal(A);
    poisonOtherTriangle(uplo, A);
    const auto B = Matrix<T>::random(m, n, m + pad, 2);
    const auto old = oldResult<T>(m, n, s.beta);
    const auto full = symmetric(uplo, hermitian, A), other = general('N', B);
    const Term<T> term = upper(side) == 'L' ? Term<T>{s.alpha, full, other} : Term<T>{s.alpha, other, full};
    for (const Form form : formsOf(A.n, uplo)) {
        SCOPED_TRACE(testing::Message() << form << " " << side << uplo << " " << m << " " << n);
        auto a = A, b = B, c = old;
        const auto call = [&](auto* routine) {
            return routine[form](side, uplo, m, n, native(s.alpha), Placed(form, a).address(), a.ld,
                                 Placed(form, b).address(), b.ld, native(s.beta), Placed(form, c).address(), c.ld);
        };
        if constexpr (hermitian)
            ASSERT_EQ(call(Routines<T>::hemm), tarnNoError);
        else
            ASSERT_EQ(call(Routines<T>::symm), tarnNoError);
        EXPECT_LE(ratio(c, {term}, s.beta, old), bound);
        EXPECT_TRUE(c.paddingIntact() && identical(a, A) && identical(b, B));
    }
}

template <class T, bool hermitian>
void expectSymmWithAllLetters(int m, int n)
{
    for (const char side : {'L', 'R'})
        for (const char uplo : {'U', 'L'})
            expectSymm<T, hermitian>(side, uplo, m, n, fewScalars<T>()[side == 'L']);
}

TYPED_TEST(Level3, Symm)
{
    using T = TypeParam;
    for (const auto s : allScalars<T>())
        expectSymm<T, false>('r', 'l', 20, 33, s);
    expectSymmWithAllLetters<T, false>(65, 30);
    for (const auto s : fewScalars<T>())
        for (const char uplo : {'U', 'L'}) {
            expectSymm<T, false>('L', uplo, 1025, 2, s);
            expectSymm<T, false>('R', uplo, 3, 1200, s);
        }
    if constexpr (tarn::isComplex<T>) {
        for (const auto s : allScalars<T>())
            expectSymm<T, true>('l', 'u', 20, 33, s);
        expectSymmWithAllLetters<T, true>(30, 65);
        expectSymmWithAllLetters<T, true>(1025, 1024);
    }
}

// ---- syrk, herk, syr2k and her2k ----

/// A scalar, real or of the element type, as an element.
template <class T, class S>
T element(S x)
{
    if constexpr (std::is_same_v<S, T>)
        return x;
    else
        return T(x, 0);
}

template <class T>
bool otherTriangleIntact(char uplo, const Matrix<T>& a, const Matrix<T>& b)
{
    for (int j = 0; j < a.n; ++j)
        for (int i = 0; i < a.n; ++i)
            if (!inTriangle(uplo, i, j) && std::memcmp(&a(i, j), &b(i, j), sizeof(T)) != 0)
                return false;
    return true;
}

/// C, of order n, is to become the sum of the terms and beta C in one triangle, and to stay as it was in the other.
template <bool hermitian, class T, class S, class Call>
void expectUpdate(char uplo, const std::vector<Term<T>>& terms, S beta, int n, const Call& call)
{
    auto old = oldResult<T>(n, n, beta);
    if constexpr (hermitian)
        for (int i = 0; i < n; ++i)
            old(i, i).imag(0);
    poisonOtherTriangle(uplo, old);
    const auto before = symmetric(uplo, hermitian, old);
    for (const Form form : formsOf(n, uplo)) {
        SCOPED_TRACE(form);
        auto c = old;
        ASSERT_EQ(call(form, c), tarnNoError);
        EXPECT_LE(ratio(symmetric(uplo, hermitian, c), terms, element<T>(beta), before), bound);
        if constexpr (hermitian) {
            for (int i = 0; i < n; ++i)
                ASSERT_EQ(c(i, i).imag(), 0) << i;
        }
        EXPECT_TRUE(c.paddingIntact() && otherTriangleIntact(uplo, c, old));
    }
}

template <class T, bool hermitian, class S = std::conditional_t<hermitian, tarn::Real<T>, T>>
void expectRankK(char uplo, char trans, int n, int k, Scalars<S> s)
{
    SCOPED_TRACE(testing::Message() << uplo << trans << " " << n << " " << k);
    const bool plain = upper(trans) == 'N';
    auto A = Matrix<T>::random(plain ? n : k, plain ? k : n, (plain ? n : k) + pad);
    const char t = hermitian ? 'C' : 'T';
    const auto left = general(plain ? 'N' : t, A), right = general(plain ? t : 'N', A);
    expectUpdate<hermitian, T>(uplo, {{element<T>(s.alpha), left, right}}, s.beta, n, [&](Form form, Matrix<T>& c) {
        const auto call = [&](auto* routine) {
            return routine[form](uplo, trans, n, k, native(s.alpha), Placed(form, A).address(), A.ld, native(s.beta),
                                 Placed(form, c).address(), c.ld);
        };
        if constexpr (hermitian)
            return call(Routines<T>::herk);
        else
            return call(Routines<T>::syrk);
    });
}

template <class T, bool hermitian, class S = std::conditional_t<hermitian, tarn::Real<T>, T>>
void expectRank2K(char uplo, char trans, int n, int k, Scalars<T, S> s)
{
    SCOPED_TRACE(testing::Message() << uplo << trans << " " << n << " " << k);
    const bool plain = upper(trans) == 'N';
    const int rows = plain ? n : k, cols = plain ? k : n;
    auto A = Matrix<T>::random(rows, cols, rows + pad, 1), B = Matrix<T>::random(rows, cols, rows + pad, 2);
    const char t = hermitian ? 'C' : 'T', transLeft = plain ? 'N' : t, transRight = plain ? t : 'N';
    const auto leftA = general(transLeft, A), rightA = general(transRight, A);
    const auto leftB = general(transLeft, B), rightB = general(transRight, B);
    const T alpha2 = hermitian ? conjugate(s.alpha) : s.alpha;
    const std::vector<Term<T>> terms{{s.alpha, leftA, rightB}, {alpha2, leftB, rightA}};
    expectUpdate<hermitian, T>(uplo, terms, s.beta, n, [&](Form form, Matrix<T>& c) {
        const auto call = [&](auto* routine) {
            return routine[form](uplo, trans, n, k, native(s.alpha), Placed(form, A).address(), A.ld,
                                 Placed(form, B).address(), B.ld, native(s.beta), Placed(form, c).address(), c.ld);
        };
        if constexpr (hermitian)
            return call(Routines<T>::her2k);
        else
            return call(Routines<T>::syr2k);
    });
}

template <class T, bool hermitian>
void expectAllUpdates(const std::string& transRankK, const std::string& transRank2K)
{
    using S = std::conditional_t<hermitian, tarn::Real<T>, T>;
    for (const auto s : allScalars<S>())
        for (const int k : {0, 1, 40})
            expectRankK<T, hermitian>('u', 'n', 33, k, s);
    for (const auto s : allScalars<T, S>())
        for (const int k : {0, 1, 40})
            expectRank2K<T, hermitian>('l', 'n', 33, k, s);
    for (const char uplo : {'U', 'L'}) {
        for (const char trans : transRankK) {
            expectRankK<T, hermitian>(uplo, trans, 65, 30, fewScalars<S>()[1]);
            expectRankK<T, hermitian>(uplo, trans, 1030, 1024, fewScalars<S>()[trans == 'N']);
        }
        for (const char trans : transRank2K) {
            expectRank2K<T, hermitian>(uplo, trans, 65, 30, fewScalars<T, S>()[1]);
            expectRank2K<T, hermitian>(uplo, trans, 1030, 1024, fewScalars<T, S>()[trans == 'N']);
        }
    }
}

TYPED_TEST(Level3, SymmetricUpdates) { expectAllUpdates<TypeParam, false>("NT", "NT"); }

TYPED_TEST(Level3, HermitianUpdates)
{
    if constexpr (tarn::isComplex<TypeParam>)
        expectAllUpdates<TypeParam, true>("NTC", "NC");
    else
        GTEST_SKIP() << "complex types only";
}

} // namespace
