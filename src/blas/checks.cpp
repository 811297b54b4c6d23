#include "blas/checks.h"

#include "blas/letters.h"
#include "frame/exceptions.h"

#include <algorithm>

namespace tarn {

namespace {

/// Folds the letter and requires it to be one of `allowed`.
void requireLetter(char& letter, const char* allowed, tarnInfo position)
{
    letter = upper(letter);
    require(isOneOf(letter, allowed), position);
}

void requireNotNull(const void* pointer, tarnInfo position) { require(pointer != nullptr, position); }

void requireIncrement(int increment)
{
    if (increment < 1)
        featureNotImplemented();
}

/// side, uplo, transa, diag, m, n: the common head of trsm and trmm.
void checkTriangularHead(char& side, char& uplo, char& transa, char& diag, int m, int n)
{
    requireLetter(side, "LR", -1);
    requireLetter(uplo, "LU", -2);
    requireLetter(transa, "NTC", -3);
    requireLetter(diag, "UN", -4);
    require(m >= 0, -5);
    require(n >= 0, -6);
}

void checkTriangularPointers(int m, int n, const void* a, const void* b)
{
    if (m == 0 || n == 0)
        return;
    requireNotNull(a, -8);
    requireNotNull(b, -10);
}

/// The whole of syrk and herk, which differ in the transposition letters that they take.
void checkRankK(const char* letters, char& uplo, char& trans, int n, int k, const void* a, int lda, const void* c,
                int ldc)
{
    requireLetter(uplo, "UL", -1);
    requireLetter(trans, letters, -2);
    require(n >= 0, -3);
    require(k >= 0, -4);
    require(lda >= std::max(1, trans == 'N' ? n : k), -7);
    require(ldc >= std::max(1, n), -10);
    if (n == 0 || k == 0)
        return;
    requireNotNull(a, -6);
    requireNotNull(c, -9);
}

/// The whole of syr2k and her2k.
void checkRank2K(const char* letters, char& uplo, char& trans, int n, int k, const void* a, int lda, const void* b,
                 int ldb, const void* c, int ldc)
{
    requireLetter(uplo, "LU", -1);
    requireLetter(trans, letters, -2);
    require(n >= 0, -3);
    require(k >= 0, -4);
    const int rows = trans == 'N' ? n : k;
    require(lda >= rows, -7);
    require(ldb >= rows, -9);
    require(ldc >= n, -12);
    if (n == 0 || k == 0)
        return;
    requireNotNull(a, -6);
    requireNotNull(b, -8);
    requireNotNull(c, -11);
}

} // namespace

void checkGemm(char& transa, char& transb, int m, int n, int k, const void* a, int lda, const void* b, int ldb,
               const void* c, int ldc)
{
    requireLetter(transa, "NTC", -1);
    requireLetter(transb, "NTC", -2);
    require(m >= 0, -3);
    require(n >= 0, -4);
    require(k >= 0, -5);
    require(lda >= (transa == 'N' ? m : k), -8);
    require(ldb >= (transb == 'N' ? k : n), -10);
    require(ldc >= m, -13);
    if (m == 0 || n == 0 || k == 0)
        return;
    requireNotNull(a, -7);
    requireNotNull(b, -9);
    requireNotNull(c, -12);
}

void checkTrsm(char& side, char& uplo, char& transa, char& diag, int m, int n, const void* a, int lda, const void* b,
               int ldb)
{
    checkTriangularHead(side, uplo, transa, diag, m, n);
    require(lda >= (side == 'L' ? m : n), -9);
    require(ldb >= m, -11);
    checkTriangularPointers(m, n, a, b);
}

void checkTrmm(char& side, char& uplo, char& transa, char& diag, int m, int n, const void* a, int lda, const void* b,
               int ldb)
{
    checkTriangularHead(side, uplo, transa, diag, m, n);
    require(lda >= std::max(1, side == 'L' ? m : n), -9);
    require(ldb >= std::max(1, m), -11);
    checkTriangularPointers(m, n, a, b);
}

void checkSymm(char& side, char& uplo, int m, int n, const void* a, int lda, const void* b, int ldb, const void* c,
               int ldc)
{
    requireLetter(side, "LR", -1);
    requireLetter(uplo, "UL", -2);
    require(m >= 0, -3);
    require(n >= 0, -4);
    require(lda >= (side == 'L' ? m : n), -7);
    require(ldb >= m, -9);
    require(ldc >= m, -12);
    if (m == 0 || n == 0)
        return;
    requireNotNull(a, -6);
    requireNotNull(b, -8);
    requireNotNull(c, -11);
}

void checkHemm(char& side, char& uplo, int m, int n, const void* a, int lda, const void* b, int ldb, const void* c,
               int ldc)
{
    checkSymm(side, uplo, m, n, a, lda, b, ldb, c, ldc);
}

void checkSyrk(char& uplo, char& trans, int n, int k, const void* a, int lda, const void* c, int ldc)
{
    checkRankK("TN", uplo, trans, n, k, a, lda, c, ldc);
}

void checkHerk(char& uplo, char& trans, int n, int k, const void* a, int lda, const void* c, int ldc)
{
    checkRankK("NTC", uplo, trans, n, k, a, lda, c, ldc);
}

void checkSyr2k(char& uplo, char& trans, int n, int k, const void* a, int lda, const void* b, int ldb, const void* c,
                int ldc)
{
    checkRank2K("NT", uplo, trans, n, k, a, lda, b, ldb, c, ldc);
}

void checkHer2k(char& uplo, char& trans, int n, int k, const void* a, int lda, const void* b, int ldb, const void* c,
                int ldc)
{
    checkRank2K("NC", uplo, trans, n, k, a, lda, b, ldb, c, ldc);
}

void checkGemv(char& trans, int m, int n, const void* a, int lda, const void* x, const void* y)
{
    requireLetter(trans, "NTC", -1);
    require(m >= 0, -2);
    require(n >= 0, -3);
    requireNotNull(a, -5);
    require(lda >= std::max(1, m), -6);
    requireNotNull(x, -7);
    requireNotNull(y, -10);
}

void checkSymv(char& uplo, int n, const void* a, int lda, const void* x, int incx, const void* y, int incy)
{
    requireLetter(uplo, "UL", -1);
    require(n >= 0, -2);
    requireNotNull(a, -4);
    require(lda >= std::max(1, n), -5);
    requireNotNull(x, -6);
    requireIncrement(incx);
    requireNotNull(y, -9);
    requireIncrement(incy);
}

} // namespace tarn
