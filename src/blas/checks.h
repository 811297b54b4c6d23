// Argument checks of the BLAS routines, in the manner of LAPACK: the first bad argument raises tarnArgumentError with
// minus its one-based position in the public parameter list.
//
// Letters are folded to upper case in place first. Pointers are tested last, and for level 3 only if all the dimensions
// that they depend on are non-zero.
#pragma once

namespace tarn {

void checkGemm(char& transa, char& transb, int m, int n, int k, const void* a, int lda, const void* b, int ldb,
               const void* c, int ldc);
void checkTrsm(char& side, char& uplo, char& transa, char& diag, int m, int n, const void* a, int lda, const void* b,
               int ldb);
void checkTrmm(char& side, char& uplo, char& transa, char& diag, int m, int n, const void* a, int lda, const void* b,
               int ldb);
void checkSymm(char& side, char& uplo, int m, int n, const void* a, int lda, const void* b, int ldb, const void* c,
               int ldc);
void checkHemm(char& side, char& uplo, int m, int n, const void* a, int lda, const void* b, int ldb, const void* c,
               int ldc);
void checkSyrk(char& uplo, char& trans, int n, int k, const void* a, int lda, const void* c, int ldc);
void checkHerk(char& uplo, char& trans, int n, int k, const void* a, int lda, const void* c, int ldc);
void checkSyr2k(char& uplo, char& trans, int n, int k, const void* a, int lda, const void* b, int ldb, const void* c,
                int ldc);
void checkHer2k(char& uplo, char& trans, int n, int k, const void* a, int lda, const void* b, int ldb, const void* c,
                int ldc);

/// The increments are not tested, and the pointers whatever the dimensions are.
void checkGemv(char& trans, int m, int n, const void* a, int lda, const void* x, const void* y);

/// symv and hemv. Increments below 1 are not served: they raise FeatNotImplException in their place of the sequence.
void checkSymv(char& uplo, int n, const void* a, int lda, const void* x, int incx, const void* y, int incy);

} // namespace tarn
