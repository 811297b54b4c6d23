#include "memory/transfer.h"

#include "frame/device_table.h"
#include "frame/error_state.h"

#include <tarndev/Complex>

#include <cstring>

namespace {

using Byte = unsigned char;

template <class T>
void copyMatrix(int rows, int cols, T* dst, int dstLd, const T* src, int srcLd, cudaMemcpyKind kind,
                const StreamHandle& stream)
{
    if (rows == 0 || cols == 0)
        return;
    velk::CudaErrorGuard guard;
    guard.check(copy2D(dst, sizeof(T) * dstLd, src, sizeof(T) * srcLd, sizeof(T) * rows, cols, kind,
                       stream.raw() != nullptr, stream.raw()));
}

void hostCopySlice(Byte* dst, std::size_t dstPitch, const Byte* src, std::size_t srcPitch, std::size_t width,
                   std::size_t height)
{
    if (dstPitch == width && srcPitch == width) {
        std::memcpy(dst, src, width * height);
        return;
    }
    for (std::size_t row = 0; row < height; ++row)
        std::memcpy(dst + row * dstPitch, src + row * srcPitch, width);
}

} // namespace

cudaError_t copy2D(void* dst, std::size_t dstPitch, const void* src, std::size_t srcPitch, std::size_t width,
                   std::size_t height, cudaMemcpyKind kind, bool async, cudaStream_t stream)
{
    const auto linear = [&](void* to, const void* from, std::size_t bytes) {
        return async ? cudaMemcpyAsync(to, from, bytes, kind, stream) : cudaMemcpy(to, from, bytes, kind);
    };
    if (dstPitch == srcPitch && dstPitch == width)
        return linear(dst, src, width * height);
    if (dstPitch < tarn::maxCopyPitch() && srcPitch < tarn::maxCopyPitch())
        return async ? cudaMemcpy2DAsync(dst, dstPitch, src, srcPitch, width, height, kind, stream)
                     : cudaMemcpy2D(dst, dstPitch, src, srcPitch, width, height, kind);
    for (std::size_t row = 0; row < height; ++row) {
        const cudaError_t result =
            linear(static_cast<Byte*>(dst) + row * dstPitch, static_cast<const Byte*>(src) + row * srcPitch, width);
        if (result != cudaSuccess)
            return result;
    }
    return cudaSuccess;
}

cudaError_t copy3D(void* dst, std::size_t dstPitch, std::size_t dstSlice, const void* src, std::size_t srcPitch,
                   std::size_t srcSlice, std::size_t width, std::size_t height, std::size_t depth, cudaMemcpyKind kind)
{
    if (dstPitch == width && srcPitch == width && dstSlice == width * height && srcSlice == width * height)
        return cudaMemcpy(dst, src, width * height * depth, kind);
    for (std::size_t slice = 0; slice < depth; ++slice) {
        const cudaError_t result =
            copy2D(static_cast<Byte*>(dst) + slice * dstSlice, dstPitch,
                   static_cast<const Byte*>(src) + slice * srcSlice, srcPitch, width, height, kind);
        if (result != cudaSuccess)
            return result;
    }
    return cudaSuccess;
}

void hostCopy3D(void* dst, std::size_t dstPitch, std::size_t dstSlice, const void* src, std::size_t srcPitch,
                std::size_t srcSlice, std::size_t width, std::size_t height, std::size_t depth)
{
    if (dstPitch == width && srcPitch == width && dstSlice == width * height && srcSlice == width * height) {
        std::memcpy(dst, src, width * height * depth);
        return;
    }
    for (std::size_t slice = 0; slice < depth; ++slice)
        hostCopySlice(static_cast<Byte*>(dst) + slice * dstSlice, dstPitch,
                      static_cast<const Byte*>(src) + slice * srcSlice, srcPitch, width, height);
}

template <class T>
void setVector(int n, T* device, const T* host)
{
    copyMatrix(n, 1, device, n, host, n, cudaMemcpyHostToDevice, {});
}

template <class T>
void getVector(int n, T* host, const T* device, const StreamHandle& stream)
{
    copyMatrix(n, 1, host, n, device, n, cudaMemcpyDeviceToHost, stream);
}

template <class T>
void setMatrix(int rows, int cols, T* device, int deviceLd, const T* host, int hostLd, const StreamHandle& stream)
{
    copyMatrix(rows, cols, device, deviceLd, host, hostLd, cudaMemcpyHostToDevice, stream);
}

template <class T>
void getMatrix(int rows, int cols, T* host, int hostLd, const T* device, int deviceLd, const StreamHandle& stream)
{
    copyMatrix(rows, cols, host, hostLd, device, deviceLd, cudaMemcpyDeviceToHost, stream);
}

#define TARN_TRANSFERS(T)                                                                                              \
    template void setVector(int, T*, const T*);                                                                        \
    template void getVector(int, T*, const T*, const StreamHandle&);                                                   \
    template void setMatrix(int, int, T*, int, const T*, int, const StreamHandle&);                                    \
    template void getMatrix(int, int, T*, int, const T*, int, const StreamHandle&);

TARN_TRANSFERS(float)
TARN_TRANSFERS(int)
TARN_TRANSFERS(tarn::Complex<float>)
