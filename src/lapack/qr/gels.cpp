#include "blas/letters.h"
#include "frame/exceptions.h"
#include "lapack/kernels.h"
#include "lapack/qr/qr.h"
#include "memory/matrix_view.h"
#include "memory/memory_pool.h"

#include <algorithm>

namespace tarn::qr {

void checkGels(char& trans, int m, int n, int nrhs, const void* a, int lda, const void* b, int ldb)
{
    trans = upper(trans);
    require(isOneOf(trans, "NTC"), -1);
    require(m >= 0, -2);
    require(n >= 0, -3);
    require(nrhs >= 0, -4);
    require(lda >= std::max(1, m), -6);
    require(ldb >= std::max({1, m, n}), -8);
    if (std::min({m, n, nrhs}) != 0)
        require(a != nullptr, -5);
    // B is written whatever A is: it becomes zero where A has no elements.
    if (std::max(m, n) != 0 && nrhs != 0)
        require(b != nullptr, -7);
}

template <class T>
void gels(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb)
{
    checkGels(trans, m, n, nrhs, a, lda, b, ldb);
    const MatrixView<T> B{b, std::max(m, n), nrhs, ldb};
    const auto clearFrom = [&](int row) { kernel::SetMatrixZero(B.rows - row + 1, nrhs, B.at(row, 1), ldb); };
    if (std::min({m, n, nrhs}) == 0)
        return kernel::LASET('F', B.rows, nrhs, T(0), T(0), b, ldb);

    const PoolBlock<T> tau = MemoryPool<T>::instance().acquire(std::min(m, n));
    if (m >= n) {
        geqrf(m, n, a, lda, tau.data());
        if (trans == 'N') {
            // X = R^-1 (Q^H B)
            ormqr('L', 'C', m, nrhs, n, a, lda, tau.data(), b, ldb);
            trtrs('U', 'N', 'N', n, nrhs, a, lda, b, ldb);
        } else {
            // X = Q (R^-H B, 0)
            trtrs('U', 'C', 'N', n, nrhs, a, lda, b, ldb);
            clearFrom(n + 1);
            ormqr('L', 'N', m, nrhs, n, a, lda, tau.data(), b, ldb);
        }
    } else {
        gelqf(m, n, a, lda, tau.data());
        if (trans == 'N') {
            // X = Q^H (L^-1 B, 0)
            trtrs('L', 'N', 'N', m, nrhs, a, lda, b, ldb);
            clearFrom(m + 1);
            ormlq('L', 'C', n, nrhs, m, a, lda, tau.data(), b, ldb);
        } else {
            // X = L^-H (Q B)
            ormlq('L', 'N', n, nrhs, m, a, lda, tau.data(), b, ldb);
            trtrs('L', 'C', 'N', m, nrhs, a, lda, b, ldb);
        }
    }
}

template void gels(char, int, int, int, float*, int, float*, int);
template void gels(char, int, int, int, Complex<float>*, int, Complex<float>*, int);

} // namespace tarn::qr
