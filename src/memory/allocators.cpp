#include "memory/allocators.h"

#include "frame/device_table.h"
#include "frame/error_state.h"
#include "frame/tuning.h"
#include "memory/transfer.h"

#include <tarndev/Complex>

#include <algorithm>
#include <cstring>

namespace velk {

namespace {

template <class T>
std::size_t bytes(std::int64_t elements)
{
    return sizeof(T) * std::size_t(elements);
}

template <class T>
T* mallocDevice(std::int64_t elements)
{
    void* p = nullptr;
    CudaErrorGuard guard;
    guard.check(cudaMalloc(&p, bytes<T>(elements)));
    return static_cast<T*>(p);
}

template <class T>
void copyLinear(T* dst, const T* src, std::int64_t elements, cudaMemcpyKind kind)
{
    CudaErrorGuard guard;
    guard.check(cudaMemcpy(dst, src, bytes<T>(elements), kind));
}

template <class T>
void copyBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size, cudaMemcpyKind kind)
{
    CudaErrorGuard guard;
    guard.check(copy3D(dst, bytes<T>(dstPitch.column), bytes<T>(dstPitch.slice), src, bytes<T>(srcPitch.column),
                       bytes<T>(srcPitch.slice), bytes<T>(size.rows), size.cols, size.slices, kind));
}

/// Pitch of an allocation of extent e whose columns are ld elements apart.
BlockPitch blockPitch(Extent e, int ld) { return {ld, std::int64_t(ld) * e.cols}; }

/// The run of linear indices [first, first + elements) of a pitched allocation, cut where columns end:
/// copy(offset in the allocation, offset in the run, length) for each piece.
template <class Copy>
void forEachPiece(Extent e, int ld, std::int64_t first, std::int64_t elements, Copy&& copy)
{
    for (std::int64_t done = 0; done < elements;) {
        const std::int64_t column = (first + done) / e.rows, row = (first + done) % e.rows;
        const std::int64_t length = std::min<std::int64_t>(e.rows - row, elements - done);
        copy(column * ld + row, done, length);
        done += length;
    }
}

} // namespace

template <class T>
T* CudaAllocator<T>::allocate(Extent e)
{
    return mallocDevice<T>(count(e));
}

template <class T>
void CudaAllocator<T>::release(T* p, std::int64_t)
{
    const ReleaseScope scope;
    cudaFree(p);
}

template <class T>
void CudaAllocator<T>::copyIn(T* dst, const T* src, Extent e)
{
    copyLinear(dst, src, count(e), cudaMemcpyHostToDevice);
}

template <class T>
void CudaAllocator<T>::copyInRange(T* dst, const T* src, Extent, std::int64_t first, std::int64_t elements)
{
    copyLinear(dst + first, src, elements, cudaMemcpyHostToDevice);
}

template <class T>
void CudaAllocator<T>::copyInBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size)
{
    copyBlock(dst, dstPitch, src, srcPitch, size, cudaMemcpyHostToDevice);
}

template <class T>
void CudaAllocator<T>::copyOut(T* dst, const T* src, Extent e)
{
    copyLinear(dst, src, count(e), cudaMemcpyDeviceToHost);
}

template <class T>
void CudaAllocator<T>::copyOutRange(T* dst, const T* src, Extent, std::int64_t first, std::int64_t elements)
{
    copyLinear(dst, src + first, elements, cudaMemcpyDeviceToHost);
}

template <class T>
void CudaAllocator<T>::copyOutBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size)
{
    copyBlock(dst, dstPitch, src, srcPitch, size, cudaMemcpyDeviceToHost);
}

template <class T>
T* CudaPitchAllocator<T>::allocate(Extent e)
{
    void* p = nullptr;
    std::size_t pitchBytes = 0;
    CudaErrorGuard guard;
    guard.check(cudaMallocPitch(&p, &pitchBytes, bytes<T>(e.rows), std::size_t(e.cols) * e.slices));
    pitch_ = pitchBytes;
    return static_cast<T*>(p);
}

template <class T>
void CudaPitchAllocator<T>::release(T* p, std::int64_t)
{
    const ReleaseScope scope;
    cudaFree(p);
}

template <class T>
void CudaPitchAllocator<T>::copyIn(T* dst, const T* src, Extent e)
{
    copyBlock(dst, blockPitch(e, pitch(e)), src, blockPitch(e, e.rows), e, cudaMemcpyHostToDevice);
}

template <class T>
void CudaPitchAllocator<T>::copyInRange(T* dst, const T* src, Extent e, std::int64_t first, std::int64_t elements)
{
    forEachPiece(e, pitch(e), first, elements, [&](std::int64_t at, std::int64_t done, std::int64_t length) {
        copyLinear(dst + at, src + done, length, cudaMemcpyHostToDevice);
    });
}

template <class T>
void CudaPitchAllocator<T>::copyInBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size)
{
    copyBlock(dst, dstPitch, src, srcPitch, size, cudaMemcpyHostToDevice);
}

template <class T>
void CudaPitchAllocator<T>::copyOut(T* dst, const T* src, Extent e)
{
    copyBlock(dst, blockPitch(e, e.rows), src, blockPitch(e, pitch(e)), e, cudaMemcpyDeviceToHost);
}

template <class T>
void CudaPitchAllocator<T>::copyOutRange(T* dst, const T* src, Extent e, std::int64_t first, std::int64_t elements)
{
    forEachPiece(e, pitch(e), first, elements, [&](std::int64_t at, std::int64_t done, std::int64_t length) {
        copyLinear(dst + done, src + at, length, cudaMemcpyDeviceToHost);
    });
}

template <class T>
void CudaPitchAllocator<T>::copyOutBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size)
{
    copyBlock(dst, dstPitch, src, srcPitch, size, cudaMemcpyDeviceToHost);
}

template <class T>
T* PageLockedAllocator<T>::allocate(Extent e)
{
    void* p = nullptr;
    CudaErrorGuard guard;
    guard.check(cudaMallocHost(&p, bytes<T>(count(e))));
    return static_cast<T*>(p);
}

template <class T>
void PageLockedAllocator<T>::release(T* p, std::int64_t)
{
    const ReleaseScope scope;
    cudaFreeHost(p);
}

template <class T>
void PageLockedAllocator<T>::copyIn(T* dst, const T* src, Extent e)
{
    std::memcpy(static_cast<void*>(dst), src, bytes<T>(count(e)));
}

template <class T>
void PageLockedAllocator<T>::copyInRange(T* dst, const T* src, Extent, std::int64_t first, std::int64_t elements)
{
    std::memcpy(static_cast<void*>(dst + first), src, bytes<T>(elements));
}

template <class T>
void PageLockedAllocator<T>::copyInBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size)
{
    hostCopy3D(dst, bytes<T>(dstPitch.column), bytes<T>(dstPitch.slice), src, bytes<T>(srcPitch.column),
               bytes<T>(srcPitch.slice), bytes<T>(size.rows), size.cols, size.slices);
}

template <class T>
void PageLockedAllocator<T>::copyOut(T* dst, const T* src, Extent e)
{
    copyIn(dst, src, e);
}

template <class T>
void PageLockedAllocator<T>::copyOutRange(T* dst, const T* src, Extent, std::int64_t first, std::int64_t elements)
{
    std::memcpy(static_cast<void*>(dst), src + first, bytes<T>(elements));
}

template <class T>
void PageLockedAllocator<T>::copyOutBlock(T* dst, BlockPitch dstPitch, const T* src, BlockPitch srcPitch, Extent size)
{
    copyInBlock(dst, dstPitch, src, srcPitch, size);
}

template class CudaAllocator<float>;
template class CudaAllocator<double>;
template class CudaAllocator<tarn::Complex<float>>;
template class CudaAllocator<tarn::Complex<double>>;
template class CudaAllocator<int>;
template class CudaAllocator<unsigned int>;

template class CudaPitchAllocator<float>;
template class CudaPitchAllocator<double>;
template class CudaPitchAllocator<tarn::Complex<float>>;
template class CudaPitchAllocator<tarn::Complex<double>>;
template class CudaPitchAllocator<int>;

template class PageLockedAllocator<float>;
template class PageLockedAllocator<tarn::Complex<float>>;

} // namespace velk

namespace tarn {

template <class T>
int leadingDimensionFor(int rows)
{
    constexpr int partitionBytes = 256;
    const int cap = currentCapability();
    const int partitions = cap > 13 ? 8 : 6;
    const int stride = partitions * partitionBytes / int(sizeof(T));
    const int align = baseBlockSize<T>(cap);
    const int ld = (rows + align - 1) / align * align;
    return ld % stride == 0 ? ld + align : ld;
}

template <class T>
T* BlasAllocator<T>::allocate(Extent e)
{
    const int ld = leadingDimensionFor<T>(e.rows);
    this->setPitch(ld);
    return velk::mallocDevice<T>(std::int64_t(ld) * e.cols * e.slices);
}

template int leadingDimensionFor<float>(int);
template int leadingDimensionFor<double>(int);
template int leadingDimensionFor<Complex<float>>(int);
template int leadingDimensionFor<Complex<double>>(int);
template int leadingDimensionFor<int>(int);

template class BlasAllocator<float>;
template class BlasAllocator<double>;
template class BlasAllocator<Complex<float>>;
template class BlasAllocator<Complex<double>>;
template class BlasAllocator<int>;

} // namespace tarn
