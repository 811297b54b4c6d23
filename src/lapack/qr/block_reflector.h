// Block reflectors H = I - V T V^H on the device, of vectors whose triangular factor T the CPU forms.
#pragma once

#include "blas/cpu.h"
#include "lapack/qr/qr.h"
#include "memory/memory_pool.h"
#include "memory/transfer.h"

#include <vector>

namespace tarn::qr {

/// How the vectors of a block stand in a matrix: direct and storev as for larfb.
struct Storage
{
    char direct, storev;

    bool byRow() const { return storev == 'R'; }
};

/// The triangular factor of one block after the other, nb by nb, on the device.
template <class T>
class BlockReflector
{
public:
    /// For up to nb reflectors at a time.
    BlockReflector(Storage storage, int nb)
        : storage_(storage), nb_(nb), hostT_(std::size_t(nb) * nb), deviceT_(MemoryPool<T>::instance().acquire(nb * nb))
    {}

    /// Forms T of ib reflectors of the given length, whose vectors stand in the host array v, and sends it. Waits for
    /// the device.
    void form(int length, int ib, const T* v, int ldv, const T* tau)
    {
        cpu::larft(storage_.direct, storage_.storev, length, ib, v, ldv, tau, hostT_.data(), nb_);
        setMatrix(nb_, nb_, deviceT_.data(), nb_, hostT_.data(), nb_);
    }

    /// C := op(H) C or C op(H) as larfb, with the ib vectors of form at v in device memory.
    void apply(char side, char trans, int m, int n, int ib, const T* v, int ldv, T* c, int ldc) const
    {
        larfb(side, trans, storage_.direct, storage_.storev, m, n, ib, v, ldv, deviceT_.data(), nb_, c, ldc);
    }

private:
    Storage storage_;
    int nb_;
    std::vector<T> hostT_;
    PoolBlock<T> deviceT_;
};

} // namespace tarn::qr
