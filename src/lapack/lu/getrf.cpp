#include "frame/error_state.h"
#include "frame/tuning.h"
#include "lapack/lu/lu.h"
#include "lapack/lu/panel.h"
#include "lapack/lu/storage.h"
#include "memory/mirrors.h"

#include <algorithm>
#include <memory>

namespace tarn::lu {

namespace {

/// Square matrices of more than this order are factorised in transposed storage.
constexpr int naturalUpTo = 512;

/// The whole factorisation on the CPU, for matrices of no more than one panel. Returns as factorisePanel.
template <class T>
int unblocked(MatrixView<T> A, int* ipiv)
{
    const int m = A.rows, n = A.cols;
    const std::unique_ptr<T[]> host(new T[std::size_t(m) * n]);
    HostMirror<int> pivots({std::min(m, n), 1, 1}, ipiv, std::min(m, n), MirrorOut);
    getMatrix(m, n, host.get(), m, A.data, A.ld);
    const int firstSingular = factorisePanel(MatrixView<T>{host.get(), m, n, m}, pivots.data());
    setMatrix(m, n, A.data, A.ld, host.get(), m);
    return firstSingular;
}

/// Right-looking LU in panels of nb columns with look-ahead. The columns of the next panel are updated first and sent
/// to the host; while the CPU factorises them, the device updates the remainder. Returns as factorisePanel.
///
/// hostPanel is filled by a fetch only after the send of the same pass has arrived, which the second wait sees to.
template <class T, template <class> class Storage>
int blocked(MatrixView<T> A, int nb, int* ipiv)
{
    const int m = A.rows, n = A.cols, k = std::min(m, n);
    HostPanel<T> hostPanel;
    hostPanel.reset({m, nb, 1});
    Storage<T> W(A, nb);
    const StreamHandle copyStream = StreamHandle::create();
    HostMirror<int> pivotMirror({k, 1, 1}, ipiv, k, MirrorOut);
    int* const pivots = pivotMirror.data();
    raiseEarlierErrors();
    int firstSingular = 0;

    W.begin();
    W.fetchPanel(1, nb, hostPanel, copyStream);
    for (int j = 1; j <= k; j += nb) {
        const int jb = std::min(k - j + 1, nb);
        const int right = n - j - jb + 1, below = m - j - jb + 1;

        // Panel W(j:m, j:j+jb-1) = P L U on the CPU, and on its way back to the device.
        copyStream.synchronize();
        const int singular = factorisePanel(MatrixView<T>{hostPanel.data(), m - j + 1, jb, m - j + 1}, pivots + j - 1);
        if (singular != 0 && firstSingular == 0)
            firstSingular = singular + j - 1;
        W.sendPanel(j, jb, hostPanel, copyStream);
        std::for_each_n(pivots + j - 1, jb, [j](int& pivot) { pivot += j - 1; });

        // The columns left of it, and the first w to its right, follow the interchanges.
        const int w = std::min(jb, std::max(right, 0));
        W.interchange(1, j - 1, j, jb, pivots);
        W.interchange(j + jb, w, j, jb, pivots);
        copyStream.synchronize();
        W.placePanel(j, jb);

        // Look-ahead: W(j:m, j+jb:j+jb+w-1), the next panel. Its download follows its update without a wait: the copy
        // stream is a blocking one, which the legacy default stream of the kernels orders.
        if (w > 0) {
            W.solve(j, jb, j + jb, w);
            if (below > 0) {
                W.update(j, jb, j + jb, w);
                W.fetchPanel(j + jb, w, hostPanel, copyStream);
            }
        }

        // Remainder: W(j:m, j+2jb:n).
        if (const int rest = right - jb; rest > 0) {
            W.interchange(j + 2 * jb, rest, j, jb, pivots);
            W.solve(j, jb, j + 2 * jb, rest);
            if (below > 0)
                W.update(j, jb, j + 2 * jb, rest);
        }
    }
    W.end();
    return firstSingular;
}

template <class T>
int factorise(MatrixView<T> A, int* ipiv)
{
    const int nb = blockSize<T>(Blocked::getrf);
    if (A.rows == A.cols && A.rows > naturalUpTo)
        return blocked<T, TransposedStorage>(A, nb, ipiv);
    if (nb <= 1 || nb >= std::min(A.rows, A.cols))
        return unblocked(A, ipiv);
    return blocked<T, NaturalStorage>(A, nb, ipiv);
}

} // namespace

void checkGetrf(int m, int n, const void* a, int lda, const int* ipiv)
{
    require(m >= 0, -1);
    require(n >= 0, -2);
    require(lda >= std::max(1, m), -4);
    if (m == 0 || n == 0)
        return;
    require(a != nullptr, -3);
    require(ipiv != nullptr, -5);
}

template <class T>
void getrf(int m, int n, T* a, int lda, int* ipiv)
{
    checkGetrf(m, n, a, lda, ipiv);
    if (m == 0 || n == 0)
        return;
    if (const int firstSingular = factorise(MatrixView<T>{a, m, n, lda}, ipiv); firstSingular != 0)
        dataError(firstSingular);
}

template void getrf(int, int, float*, int, int*);
template void getrf(int, int, Complex<float>*, int, int*);

} // namespace tarn::lu
