#include "frame/exceptions.h"
#include "frame/tuning.h"
#include "lapack/qr/qr.h"
#include "lapack/qr/row_panels.h"
#include "memory/mirrors.h"

#include <algorithm>

namespace tarn::qr {

namespace {

/// Of gelqf and gerqf.
void check(int m, int n, const void* a, int lda, const void* tau)
{
    require(m >= 0, -1);
    require(n >= 0, -2);
    require(lda >= std::max(1, m), -4);
    if (m == 0 || n == 0)
        return;
    require(a != nullptr, -3);
    require(tau != nullptr, -5);
}

} // namespace

/// From the top down; each panel begins on the diagonal.
template <class T>
void gelqf(int m, int n, T* a, int lda, T* tau)
{
    check(m, n, a, lda, tau);
    const int k = std::min(m, n), nb = blockSize<T>(Blocked::qr);
    if (k == 0)
        return;
    HostMirror<T> tauHost({k, 1, 1}, tau, k, MirrorIn | MirrorOut);
    const MatrixView<T> A{a, m, n, lda};

    int i = 1;
    if (nb < k) {
        RowPanels<T> panels(A, cpu::gelqf<T>, {'F', 'R'}, nb);
        for (; i <= k - nb; i += nb)
            panels.factorise(i, i, n - i + 1, tauHost.data() + i - 1, i + nb, m - i - nb + 1);
    }
    factoriseLast<T>({A.at(i, i), m - i + 1, n - i + 1, lda}, cpu::gelqf<T>, tauHost.data() + i - 1);
}

/// From the bottom up; a panel of reflectors i to i + nb - 1 ends, as the triangle, in row m - k + i + nb - 1 and in
/// column n - k + i + nb - 1.
template <class T>
void gerqf(int m, int n, T* a, int lda, T* tau)
{
    check(m, n, a, lda, tau);
    const int k = std::min(m, n), nb = blockSize<T>(Blocked::qr);
    if (k == 0)
        return;
    HostMirror<T> tauHost({k, 1, 1}, tau, k, MirrorIn | MirrorOut);
    const MatrixView<T> A{a, m, n, lda};

    int left = k; // reflectors above the panels
    if (nb < k) {
        RowPanels<T> panels(A, cpu::gerqf<T>, {'B', 'R'}, nb);
        while (left > nb) {
            left -= nb;
            panels.factorise(m - k + left + 1, 1, n - k + left + nb, tauHost.data() + left, 1, m - k + left);
        }
    }
    factoriseLast<T>({a, m - k + left, n - k + left, lda}, cpu::gerqf<T>, tauHost.data());
}

template void gelqf(int, int, float*, int, float*);
template void gelqf(int, int, Complex<float>*, int, Complex<float>*);
template void gerqf(int, int, float*, int, float*);
template void gerqf(int, int, Complex<float>*, int, Complex<float>*);

} // namespace tarn::qr
