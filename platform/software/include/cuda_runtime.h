#pragma once
/// The CUDA runtime calls of the software device: the published names, signatures and numeric values of CUDA 13, as far
/// as this system uses them, for C and C++. A missing call is missing on purpose: using it is a link error.

#ifdef __cplusplus
#    include <cstddef>
#    define SOFTDEV_DEFAULT(value) = value
#    define SOFTDEV_INT : int /* so that a value that is none of the enumerators may be passed, and is refused */
#else
#    define SOFTDEV_DEFAULT(value)
#    define SOFTDEV_INT
#endif
#include <stddef.h>

#define CUDART_VERSION 13000

#pragma GCC visibility push(default)

enum cudaError
{
    cudaSuccess = 0,
    cudaErrorInvalidValue = 1,
    cudaErrorMemoryAllocation = 2,
    cudaErrorInitializationError = 3,
    cudaErrorCudartUnloading = 4,
    cudaErrorInvalidConfiguration = 9,
    cudaErrorInvalidPitchValue = 12,
    cudaErrorInvalidDevicePointer = 17,
    cudaErrorInvalidMemcpyDirection = 21,
    cudaErrorInsufficientDriver = 35,
    cudaErrorNoDevice = 100,
    cudaErrorInvalidDevice = 101,
    cudaErrorInvalidResourceHandle = 400,
    cudaErrorIllegalAddress = 700,
    cudaErrorLaunchOutOfResources = 701,
    cudaErrorMisalignedAddress = 716,
    cudaErrorLaunchFailure = 719,
    cudaErrorNotSupported = 801,
    cudaErrorUnknown = 999
};
typedef enum cudaError cudaError_t;

enum cudaMemcpyKind SOFTDEV_INT
{
    cudaMemcpyHostToHost = 0,
    cudaMemcpyHostToDevice = 1,
    cudaMemcpyDeviceToHost = 2,
    cudaMemcpyDeviceToDevice = 3,
    cudaMemcpyDefault = 4
};

typedef struct CUstream_st* cudaStream_t;

#ifdef __cplusplus
struct uint3
{
    unsigned int x, y, z;
};

struct dim3
{
    unsigned int x, y, z;
    constexpr dim3(unsigned int vx = 1, unsigned int vy = 1, unsigned int vz = 1) : x(vx), y(vy), z(vz) {}
    constexpr dim3(uint3 v) : x(v.x), y(v.y), z(v.z) {}
    constexpr operator uint3() const { return {x, y, z}; }
};

struct alignas(8) float2
{
    float x, y;
};

struct alignas(16) double2
{
    double x, y;
};
#endif

struct cudaDeviceProp
{
    char name[256];
    size_t totalGlobalMem;    ///< bytes
    size_t sharedMemPerBlock; ///< bytes
    int regsPerBlock;
    int warpSize;
    size_t memPitch; ///< largest pitch of a copy, bytes
    int maxThreadsPerBlock;
    int maxThreadsDim[3];
    int maxGridSize[3];
    int major;
    int minor;
    int multiProcessorCount;
    int asyncEngineCount;
};

#ifdef __cplusplus
extern "C" {
#endif
cudaError_t cudaRuntimeGetVersion(int* version);
cudaError_t cudaDriverGetVersion(int* version);
cudaError_t cudaGetDeviceCount(int* count);
cudaError_t cudaGetDeviceProperties(struct cudaDeviceProp* prop, int device);
cudaError_t cudaGetDevice(int* device);
cudaError_t cudaSetDevice(int device);
cudaError_t cudaDeviceSynchronize(void);
cudaError_t cudaGetLastError(void);
const char* cudaGetErrorString(cudaError_t error);

cudaError_t cudaMalloc(void** devPtr, size_t size);
cudaError_t cudaMallocPitch(void** devPtr, size_t* pitch, size_t width, size_t height);
cudaError_t cudaFree(void* devPtr);
cudaError_t cudaMallocHost(void** ptr, size_t size);
cudaError_t cudaFreeHost(void* ptr);

cudaError_t cudaMemcpy(void* dst, const void* src, size_t count, enum cudaMemcpyKind kind);
cudaError_t cudaMemcpyAsync(void* dst, const void* src, size_t count, enum cudaMemcpyKind kind,
                            cudaStream_t stream SOFTDEV_DEFAULT(0));
cudaError_t cudaMemcpy2D(void* dst, size_t dpitch, const void* src, size_t spitch, size_t width, size_t height,
                         enum cudaMemcpyKind kind);
cudaError_t cudaMemcpy2DAsync(void* dst, size_t dpitch, const void* src, size_t spitch, size_t width, size_t height,
                              enum cudaMemcpyKind kind, cudaStream_t stream SOFTDEV_DEFAULT(0));
cudaError_t cudaMemset(void* devPtr, int value, size_t count);

cudaError_t cudaStreamCreate(cudaStream_t* stream);
cudaError_t cudaStreamDestroy(cudaStream_t stream);
cudaError_t cudaStreamSynchronize(cudaStream_t stream);
#ifdef __cplusplus
}
#endif

#pragma GCC visibility pop

#ifdef __cplusplus
template <class T>
inline cudaError_t cudaMalloc(T** devPtr, size_t size)
{
    return cudaMalloc(reinterpret_cast<void**>(devPtr), size);
}

template <class T>
inline cudaError_t cudaMallocPitch(T** devPtr, size_t* pitch, size_t width, size_t height)
{
    return cudaMallocPitch(reinterpret_cast<void**>(devPtr), pitch, width, height);
}

template <class T>
inline cudaError_t cudaMallocHost(T** ptr, size_t size)
{
    return cudaMallocHost(reinterpret_cast<void**>(ptr), size);
}

#    include "softdev_kernel.h"
#endif
#undef SOFTDEV_DEFAULT
