// All copies between host and device: the strided engine in bytes, and typed helpers for vectors and panels.
#pragma once

#include "memory/stream.h"

#include <cstddef>

/// Copies height rows of width bytes, the rows dstPitch and srcPitch bytes apart: as one linear copy if the data is
/// contiguous, as one two-dimensional copy if the pitches allow it, else row by row up to the first failure.
cudaError_t copy2D(void* dst, std::size_t dstPitch, const void* src, std::size_t srcPitch, std::size_t width,
                   std::size_t height, cudaMemcpyKind kind, bool async = false, cudaStream_t stream = nullptr);

/// Copies depth slices of height rows of width bytes, synchronously; pitches and slice steps in bytes.
cudaError_t copy3D(void* dst, std::size_t dstPitch, std::size_t dstSlice, const void* src, std::size_t srcPitch,
                   std::size_t srcSlice, std::size_t width, std::size_t height, std::size_t depth, cudaMemcpyKind kind);

/// copy3D from host to host.
void hostCopy3D(void* dst, std::size_t dstPitch, std::size_t dstSlice, const void* src, std::size_t srcPitch,
                std::size_t srcSlice, std::size_t width, std::size_t height, std::size_t depth);

/// Typed copies for float, int and Complex<float>, sizes in elements. Without a stream, or with one whose handle is
/// null, they are synchronous; with one the data is there once the stream is synchronised, and the host side must be
/// page-locked for the copy to run beside other work. An empty shape makes no CUDA call. They raise on a CUDA error.
template <class T>
void setVector(int n, T* device, const T* host);
template <class T>
void getVector(int n, T* host, const T* device, const StreamHandle& stream = {});
template <class T>
void setMatrix(int rows, int cols, T* device, int deviceLd, const T* host, int hostLd, const StreamHandle& stream = {});
template <class T>
void getMatrix(int rows, int cols, T* host, int hostLd, const T* device, int deviceLd, const StreamHandle& stream = {});
