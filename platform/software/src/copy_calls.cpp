#include <algorithm>

#include "cuda_call.h"
#include "handles.h"
#include "host_memory.h"
#include "memory_copy.h"

using namespace tarn::soft;

namespace {

enum class Side
{
    host,
    device
};

/// One operand of a copy: `height` rows of `width` bytes, a pitch apart.
struct Operand
{
    const void* address;
    std::size_t pitch;
    Side side;
};

/// A copy as the caller gave it.
struct Copy
{
    void* dst;
    std::size_t dstPitch;
    const void* src;
    std::size_t srcPitch;
    std::size_t width, height;
    cudaMemcpyKind kind;
    bool pitched = true; ///< came as a two-dimensional copy

    bool empty() const { return width == 0 || height == 0; }
};

Copy linear(void* dst, const void* src, std::size_t bytes, cudaMemcpyKind kind)
{
    return {dst, bytes, src, bytes, bytes, 1, kind, false};
}

/// A copy that passed all checks, with addresses that can be read and written.
struct CheckedCopy
{
    char* dst;
    const char* src;
    std::size_t dstPitch, srcPitch, width, height;
    bool touchesHost;
    bool pageLocked; ///< the host side, if there is one, is page-locked

    void operator()() const { copyRows(dst, dstPitch, src, srcPitch, width, height); }

    /// At some 10 bytes/ns.
    std::int64_t cost() const { return static_cast<std::int64_t>(width * height / 10); }
};

/// Bytes from the first to behind the last that an operand covers; 0 if that does not fit the address space.
std::size_t span(const Copy& copy, std::size_t pitch)
{
    std::size_t bytes;
    if (__builtin_mul_overflow(copy.height - 1, pitch, &bytes) || __builtin_add_overflow(bytes, copy.width, &bytes))
        return 0;
    return bytes;
}

/// Checks one side; gives the address to use in its place, or null.
char* resolve(Device& device, const Copy& copy, const Operand& operand, bool& pageLocked)
{
    const std::size_t bytes = span(copy, operand.pitch);
    if (!operand.address || bytes == 0)
        return nullptr;
    if (operand.side == Side::device)
        return device.memory.holds(operand.address, bytes) ? device.memory.arena().inner(operand.address) : nullptr;
    const HostRange range = classifyHostRange(operand.address, bytes);
    if (range == HostRange::crossing || machine().touchesDevice(operand.address, bytes))
        return nullptr;
    pageLocked = pageLocked && range == HostRange::pageLocked;
    return static_cast<char*>(const_cast<void*>(operand.address));
}

Side sideOf(const void* address) { return machine().owner(address) ? Side::device : Side::host; }

cudaError_t check(Device& device, const Copy& copy, CheckedCopy& result)
{
    if (copy.kind < cudaMemcpyHostToHost || copy.kind > cudaMemcpyDefault)
        return cudaErrorInvalidMemcpyDirection;
    const auto [least, largest] = std::minmax(copy.dstPitch, copy.srcPitch);
    if (copy.pitched && (least < copy.width || largest > maxCopyPitch))
        return cudaErrorInvalidPitchValue;
    Side dst = copy.kind == cudaMemcpyHostToHost || copy.kind == cudaMemcpyDeviceToHost ? Side::host : Side::device;
    Side src = copy.kind == cudaMemcpyHostToHost || copy.kind == cudaMemcpyHostToDevice ? Side::host : Side::device;
    if (copy.kind == cudaMemcpyDefault) {
        dst = sideOf(copy.dst);
        src = sideOf(copy.src);
    }
    bool pageLocked = true;
    char* to = resolve(device, copy, {copy.dst, copy.dstPitch, dst}, pageLocked);
    const char* from = resolve(device, copy, {copy.src, copy.srcPitch, src}, pageLocked);
    if (!to || !from)
        return cudaErrorInvalidValue;
    result = {
        to,        from, copy.dstPitch, copy.srcPitch, copy.width, copy.height, dst == Side::host || src == Side::host,
        pageLocked};
    return cudaSuccess;
}

/// A copy on the default stream. The host waits for it only if host memory takes part.
cudaError_t copySynchronously(Device& device, const Copy& copy)
{
    if (copy.empty())
        return cudaSuccess;
    CheckedCopy work;
    if (const cudaError_t refused = check(device, copy, work))
        return refused;
    if (work.touchesHost)
        return device.queue.runNow(work);
    device.submit({[work] { return work(), cudaSuccess; }, work.cost(), false});
    return cudaSuccess;
}

/// A copy on a stream, null being the default stream. Page-locked memory is read and written late; with pageable memory
/// the host waits.
cudaError_t copyAsynchronously(Device& current, const Copy& copy, cudaStream_t stream)
{
    Device* device = &current;
    if (stream) {
        const auto known = streams().find(stream);
        if (!known)
            return cudaErrorInvalidResourceHandle;
        device = known->device;
    }
    if (copy.empty())
        return cudaSuccess;
    CheckedCopy work;
    if (const cudaError_t refused = check(*device, copy, work))
        return refused;
    if (work.touchesHost && !work.pageLocked)
        return device->queue.runNow(work, stream);
    Work queued{[work] { return work(), cudaSuccess; }, work.cost(), work.touchesHost};
    if (!stream) {
        device->submit(std::move(queued));
        return cudaSuccess;
    }
    const Ticket ticket = device->queue.submit(std::move(queued), stream);
    streams().update(stream, [&](Stream& entry) { entry.last = std::max(entry.last, ticket); });
    return cudaSuccess;
}

} // namespace

extern "C" {

cudaError_t cudaMemcpy(void* dst, const void* src, std::size_t count, cudaMemcpyKind kind)
{
    return CudaCall("cudaMemcpy", dst, src, count, kind).onDevice([&](Device& device) {
        return copySynchronously(device, linear(dst, src, count, kind));
    });
}

cudaError_t cudaMemcpyAsync(void* dst, const void* src, std::size_t count, cudaMemcpyKind kind, cudaStream_t stream)
{
    return CudaCall("cudaMemcpyAsync", dst, src, count, kind, stream).onDevice([&](Device& device) {
        return copyAsynchronously(device, linear(dst, src, count, kind), stream);
    });
}

cudaError_t cudaMemcpy2D(void* dst, std::size_t dpitch, const void* src, std::size_t spitch, std::size_t width,
                         std::size_t height, cudaMemcpyKind kind)
{
    return CudaCall("cudaMemcpy2D", dst, dpitch, src, spitch, width, height, kind).onDevice([&](Device& device) {
        return copySynchronously(device, {dst, dpitch, src, spitch, width, height, kind});
    });
}

cudaError_t cudaMemcpy2DAsync(void* dst, std::size_t dpitch, const void* src, std::size_t spitch, std::size_t width,
                              std::size_t height, cudaMemcpyKind kind, cudaStream_t stream)
{
    const CudaCall call("cudaMemcpy2DAsync", dst, dpitch, src, spitch, width, height, kind, stream);
    return call.onDevice([&](Device& device) {
        return copyAsynchronously(device, {dst, dpitch, src, spitch, width, height, kind}, stream);
    });
}

cudaError_t cudaMemset(void* devPtr, int value, std::size_t count)
{
    return CudaCall("cudaMemset", devPtr, value, count).onDevice([&](Device& device) {
        if (count == 0)
            return cudaSuccess;
        if (!device.memory.holds(devPtr, count))
            return cudaErrorInvalidValue;
        char* memory = device.memory.arena().inner(devPtr);
        device.submit({[=] { return fillMemory(memory, value, count), cudaSuccess; },
                       static_cast<std::int64_t>(count / 10), false});
        return cudaSuccess;
    });
}
}
