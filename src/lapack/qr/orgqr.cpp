// orgqr and orglq: one scheme, over vectors that stand as columns or as rows.
#include "blas/cpu.h"
#include "frame/exceptions.h"
#include "frame/tuning.h"
#include "lapack/kernels.h"
#include "lapack/qr/block_reflector.h"
#include "lapack/qr/qr.h"
#include "memory/matrix_view.h"
#include "memory/mirrors.h"

#include <algorithm>
#include <memory>

namespace tarn::qr {

namespace {

/// A matrix as a set of vectors, its columns or its rows, and what differs with that.
template <class T>
struct Vectors
{
    MatrixView<T> A;
    Storage storage;
    decltype(&cpu::orgqr<T>) cpuRoutine; ///< orgqr or orglq
    char side, trans;                    ///< how H acts on later vectors

    bool byRow() const { return storage.byRow(); }
    int length() const { return byRow() ? A.cols : A.rows; }
    int count() const { return byRow() ? A.rows : A.cols; }

    /// Element i of vector j.
    T* at(int i, int j) const { return byRow() ? A.at(j, i) : A.at(i, j); }

    /// Makes `elements` elements of `vectors` vectors zero, from element i of vector j on.
    void clear(int i, int j, int elements, int vectors) const
    {
        kernel::SetMatrixZero(byRow() ? vectors : elements, byRow() ? elements : vectors, at(i, j), A.ld);
    }

    /// The block from element i of vector i on, of `vectors` vectors, to the host and back, packed.
    void fetch(int i, int vectors, T* host) const
    {
        getMatrix(rows(i, vectors), cols(i, vectors), host, rows(i, vectors), at(i, i), A.ld);
    }
    void put(int i, int vectors, const T* host) const
    {
        setMatrix(rows(i, vectors), cols(i, vectors), at(i, i), A.ld, host, rows(i, vectors));
    }

    /// Forms the vectors of that block, on the host, from its first k reflectors.
    void formOnHost(int i, int vectors, int k, T* host, const T* tau) const
    {
        cpuRoutine(rows(i, vectors), cols(i, vectors), k, host, rows(i, vectors), tau);
    }

    int rows(int i, int vectors) const { return byRow() ? vectors : A.rows - i + 1; }
    int cols(int i, int vectors) const { return byRow() ? A.cols - i + 1 : vectors; }
};

/// Replaces the k reflectors in the first vectors of V by the vectors of Q, from the last block to the first. What does
/// not fill a block of nb is formed on the CPU as a whole.
template <class T>
void generate(const Vectors<T>& V, int k, T* tauDevice)
{
    const int nb = blockSize<T>(Blocked::qr);
    const int blocks = nb < k ? (k - 1) / nb : 0, kk = blocks * nb;
    HostMirror<T> tauHost({k, 1, 1}, tauDevice, k, MirrorIn | MirrorOut);
    const T* const tau = tauHost.data();

    V.clear(1, kk + 1, kk, V.count() - kk);
    {
        const int vectors = V.count() - kk;
        const std::unique_ptr<T[]> host(new T[std::size_t(V.length() - kk) * vectors]);
        V.fetch(kk + 1, vectors, host.get());
        V.formOnHost(kk + 1, vectors, k - kk, host.get(), tau + kk);
        V.put(kk + 1, vectors, host.get());
    }
    if (blocks == 0)
        return;

    const std::unique_ptr<T[]> hostPanel(new T[std::size_t(V.length()) * nb]);
    BlockReflector<T> H(V.storage, nb);
    for (int i = kk - nb + 1; i >= 1; i -= nb) {
        const int length = V.length() - i + 1, later = V.count() - i - nb + 1;
        V.fetch(i, nb, hostPanel.get());
        H.form(length, nb, hostPanel.get(), V.rows(i, nb), tau + i - 1);
        H.apply(V.side, V.trans, V.byRow() ? later : length, V.byRow() ? length : later, nb, V.at(i, i), V.A.ld,
                V.at(i, i + nb), V.A.ld);
        // Meanwhile the block's own vectors, whose reflectors are still on the host.
        V.formOnHost(i, nb, nb, hostPanel.get(), tau + i - 1);
        V.put(i, nb, hostPanel.get());
        V.clear(1, i, i - 1, nb);
    }
}

} // namespace

template <class T>
void orgqr(int m, int n, int k, T* a, int lda, T* tau)
{
    require(m >= 0, -1);
    require(n >= 0 && n <= m, -2);
    require(k >= 0 && k <= n, -3);
    require(lda >= std::max(1, m), -5);
    if (n == 0)
        return;
    require(a != nullptr, -4);
    require(tau != nullptr, -6);
    generate<T>({{a, m, n, lda}, {'F', 'C'}, cpu::orgqr<T>, 'L', 'N'}, k, tau);
}

template <class T>
void orglq(int m, int n, int k, T* a, int lda, T* tau)
{
    require(m >= 0, -1);
    require(n >= m, -2);
    require(k >= 0 && k <= m, -3);
    require(lda >= std::max(1, m), -5);
    if (m == 0)
        return;
    require(a != nullptr, -4);
    require(tau != nullptr, -6);
    generate<T>({{a, m, n, lda}, {'F', 'R'}, cpu::orglq<T>, 'R', 'C'}, k, tau);
}

template void orgqr(int, int, int, float*, int, float*);
template void orgqr(int, int, int, Complex<float>*, int, Complex<float>*);
template void orglq(int, int, int, float*, int, float*);
template void orglq(int, int, int, Complex<float>*, int, Complex<float>*);

} // namespace tarn::qr
