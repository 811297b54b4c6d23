// gemm.
#pragma once

#include "call.h"

#include <utility>

namespace tarn::dropin {

/// C := alpha op(A) op(B) + beta C, op(A) m by k, op(B) k by n.
template <class T>
struct Gemm
{
    using Device = tarnStatus(char, char, int, int, int, T, T*, int, T*, int, T, T*, int);

    char transa, transb;
    int m, n, k;
    T alpha;
    T* a;
    int lda;
    T* b;
    int ldb;
    T beta;
    T* c;
    int ldc;

    static constexpr Kind kind() { return Kind::level3; }
    double flops() const { return 2 * operations<T> * m * n * k; }
    double bytes() const { return sizeof(T) * (double(m) * k + double(k) * n + 2.0 * m * n); }
    Size size() const { return {m, n, k}; }

    bool wellFormed() const
    {
        return isOneOf(transa, "NTC") && isOneOf(transb, "NTC") && m > 0 && n > 0 && k > 0 && !isZero(alpha) &&
               fits(lda, transa == 'N' ? m : k) && fits(ldb, transb == 'N' ? k : n) && fits(ldc, m);
    }

    Outcome run(Device* device) const
    {
        return outcome(device(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc));
    }

    /// C^T = alpha op(B)^T op(A)^T + beta C^T.
    void byColumns()
    {
        std::swap(transa, transb);
        std::swap(m, n);
        std::swap(a, b);
        std::swap(lda, ldb);
    }
};

} // namespace tarn::dropin
