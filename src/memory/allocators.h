// The kinds of memory that matrices live in. An allocator obtains, releases and copies one kind; ManagedMemory holds
// one.
#pragma once

#include "memory/extent.h"

#include <cstddef>
#include <cstdint>

namespace velk {

/// One kind of memory for elements T. Extents, counts, offsets and leading dimensions are in elements. What goes
/// through CUDA raises on failure: CudaMemoryException for the memory codes, CudaRuntimeException for all others.
template <class T>
class ManagedMemoryAllocatorInterface
{
public:
    virtual ~ManagedMemoryAllocatorInterface() = default;

    virtual T* allocate(Extent e) = 0;
    /// Raises nothing.
    virtual void release(T* p, std::int64_t elements) = 0;
    /// Copies between a packed host array and the whole allocation.
    virtual void copyIn(T* dst, const T* src, Extent e) = 0;
    /// Copies `elements` from linear index `first` of the allocation on; both sides are addressed from there.
    virtual void copyInRange(T* dst, const T* src, Extent e, std::int64_t first, std::int64_t elements) = 0;
    /// Copies a strided block of extent size.
    virtual void copyInBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size) = 0;
    virtual void copyOut(T* dst, const T* src, Extent e) = 0;
    virtual void copyOutRange(T* dst, const T* src, Extent e, std::int64_t first, std::int64_t elements) = 0;
    virtual void copyOutBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size) = 0;
    /// Leading dimension of an allocation of extent e.
    virtual int pitch(Extent e) const = 0;
    virtual void setPitch(int leadingDimension) = 0;
};

/// Packed device memory.
template <class T>
class CudaAllocator : public ManagedMemoryAllocatorInterface<T>
{
public:
    T* allocate(Extent e) override;
    void release(T* p, std::int64_t elements) override;
    void copyIn(T* dst, const T* src, Extent e) override;
    void copyInRange(T* dst, const T* src, Extent e, std::int64_t first, std::int64_t elements) override;
    void copyInBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size) override;
    void copyOut(T* dst, const T* src, Extent e) override;
    void copyOutRange(T* dst, const T* src, Extent e, std::int64_t first, std::int64_t elements) override;
    void copyOutBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size) override;
    int pitch(Extent e) const override { return e.rows; }
    void setPitch(int) override {}
};

/// Device memory with the pitch that the CUDA runtime chooses.
template <class T>
class CudaPitchAllocator : public ManagedMemoryAllocatorInterface<T>
{
public:
    T* allocate(Extent e) override;
    void release(T* p, std::int64_t elements) override;
    void copyIn(T* dst, const T* src, Extent e) override;
    void copyInRange(T* dst, const T* src, Extent e, std::int64_t first, std::int64_t elements) override;
    void copyInBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size) override;
    void copyOut(T* dst, const T* src, Extent e) override;
    void copyOutRange(T* dst, const T* src, Extent e, std::int64_t first, std::int64_t elements) override;
    void copyOutBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size) override;
    int pitch(Extent) const override { return int(pitch_ / sizeof(T)); }
    void setPitch(int leadingDimension) override { pitch_ = leadingDimension * sizeof(T); }

private:
    std::size_t pitch_ = 0; ///< bytes
};

/// Page-locked host memory, the staging buffers of panels. No copy of it makes a CUDA call.
template <class T>
class PageLockedAllocator : public ManagedMemoryAllocatorInterface<T>
{
public:
    T* allocate(Extent e) override;
    void release(T* p, std::int64_t elements) override;
    void copyIn(T* dst, const T* src, Extent e) override;
    void copyInRange(T* dst, const T* src, Extent e, std::int64_t first, std::int64_t elements) override;
    void copyInBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size) override;
    void copyOut(T* dst, const T* src, Extent e) override;
    void copyOutRange(T* dst, const T* src, Extent e, std::int64_t first, std::int64_t elements) override;
    void copyOutBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size) override;
    int pitch(Extent e) const override { return e.rows; }
    void setPitch(int) override {}
};

} // namespace velk

namespace tarn {

/// Leading dimension for `rows` rows on the current device: a multiple of the element type's base block size, moved on
/// by one such block if it is a multiple of 1536 (capability up to 1.3) or 2048 bytes, so that column starts do not
/// fall on one memory partition.
template <class T>
int leadingDimensionFor(int rows);

/// Device memory for matrices, with leading dimension leadingDimensionFor(rows).
template <class T>
class BlasAllocator : public velk::CudaPitchAllocator<T>
{
public:
    T* allocate(Extent e) override;
};

} // namespace tarn
