// Mirrors: scope objects that hold a caller's array on the other side of the bus for the length of one routine.
#pragma once

#include "frame/error_state.h"
#include "frame/thread_state.h"
#include "memory/allocators.h"
#include "memory/managed_memory.h"

#include <tarndev/Complex>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <vector>

/// What a mirror copies: in at construction, back at destruction. 0 mirrors nothing.
enum MirrorFlags : unsigned
{
    MirrorIn = 2,
    MirrorOut = 4
};

namespace tarn {

/// Flags of a result C := ... + beta C: the old C is sent only if it counts.
template <class T>
unsigned mirrorByBeta(T beta)
{
    return beta == T(0) ? MirrorOut : MirrorIn | MirrorOut;
}

/// Extent of an array X for which op(X) is m by n, op(X) = X for trans "N" and its transpose otherwise.
inline Extent transposedExtent(char trans, int m, int n) { return trans == 'N' ? Extent{m, n, 1} : Extent{n, m, 1}; }

/// The device copy of a caller's host array, of memory kind A. The copy back happens at destruction, unless the routine
/// was marked as failed or the mirror dies because of an exception: a failed routine leaves the caller's array as it
/// was. A failing copy back is not reported.
template <class T, class A>
class HostArrayMirror
{
public:
    HostArrayMirror(const HostArrayMirror&) = delete;
    HostArrayMirror& operator=(const HostArrayMirror&) = delete;

    /// Device address, null if nothing is mirrored.
    T* data() const { return memory_.data(); }
    unsigned flags() const { return flags_; }

protected:
    /// e: shape of the array, hostLd: distance of its columns in elements. Raises if the device has no memory for the
    /// copy, or if it cannot be filled.
    HostArrayMirror(Extent e, T* host, int hostLd, unsigned flags)
        : host_(host), hostLd_(hostLd), flags_(count(e) == 0 ? 0 : flags), unwinding_(std::uncaught_exceptions())
    {
        if (!flags_)
            return;
        memory_.reset(e);
        if (flags_ & MirrorIn)
            memory_.upload(host_, e.rows, e.cols, hostLd_);
    }

    ~HostArrayMirror()
    {
        if (!(flags_ & MirrorOut) || hasFailed() || std::uncaught_exceptions() > unwinding_)
            return;
        postponeCudaError(takeCudaError()); // which is not the copy's
        try {
            memory_.download(host_, memory_.extent().rows, memory_.extent().cols, hostLd_);
        } catch (...) {
            // The routine's status is decided by now.
        }
    }

    const velk::ManagedMemory<T, A>& memory() const { return memory_; }

private:
    velk::ManagedMemory<T, A> memory_;
    T* host_;
    int hostLd_;
    unsigned flags_;
    int unwinding_; ///< exceptions in flight at construction
};

} // namespace tarn

/// Device copy of a host matrix, with the library's own leading dimension.
template <class T>
class DeviceMirror : public tarn::HostArrayMirror<T, tarn::BlasAllocator<T>>
{
public:
    DeviceMirror(Extent e, T* host, int hostLd, unsigned flags)
        : tarn::HostArrayMirror<T, tarn::BlasAllocator<T>>(e, host, hostLd, flags), rows_(e.rows)
    {}

    /// Leading dimension to go with data(). An empty matrix has one too that is legal for its number of rows.
    int deviceLd() const { return std::max({this->memory().ld(), rows_, 1}); }

private:
    int rows_;
};

/// Packed device copy of a host vector of n elements, incx elements apart. A negative increment counts from the far end
/// of the array, here and there. An increment of 0 mirrors one element, with an increment that no routine accepts.
template <class T>
class DeviceVectorMirror : public tarn::HostArrayMirror<T, velk::CudaAllocator<T>>
{
public:
    DeviceVectorMirror(int n, T* x, int incx, unsigned flags)
        : tarn::HostArrayMirror<T, velk::CudaAllocator<T>>({1, incx == 0 ? std::min(n, 1) : n, 1}, x,
                                                           std::max(1, std::abs(incx)), flags),
          inc_(incx > 0   ? 1
               : incx < 0 ? -1
                          : 0)
    {}

    /// Increment to go with data(): 1, -1 or 0, as the sign of incx.
    int deviceInc() const { return inc_; }

private:
    int inc_;
};

/// Packed host copy of a caller's device array, leading dimension ld, for data that the CPU works on. It is copied back
/// at destruction even if the routine failed: pivots found before a failure reach the caller.
template <class T>
class HostMirror
{
public:
    HostMirror(Extent e, T* device, int ld, unsigned flags) : hostCopy_(count(e)), flags_(flags)
    {
        memory_.reset(e, device, true);
        memory_.setLd(ld);
        if ((flags_ & MirrorIn) && !memory_.empty())
            memory_.download(data(), e.rows, e.cols, e.rows);
    }

    ~HostMirror()
    {
        if (!(flags_ & MirrorOut) || memory_.empty())
            return;
        tarn::postponeCudaError(tarn::takeCudaError());
        try {
            memory_.upload(data(), memory_.extent().rows, memory_.extent().cols, memory_.extent().rows);
        } catch (const velk::CudaRuntimeException& failure) {
            tarn::postponeCudaError(failure.code());
        } catch (...) {
            tarn::postponeCudaError(cudaErrorMemoryAllocation);
        }
    }

    HostMirror(const HostMirror&) = delete;
    HostMirror& operator=(const HostMirror&) = delete;

    T* data() { return hostCopy_.data(); }

private:
    velk::ManagedMemory<T, tarn::BlasAllocator<T>> memory_;
    std::vector<T> hostCopy_;
    unsigned flags_;
};
