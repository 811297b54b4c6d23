// Kernels with a fault that can be left out: what the emulated GPU must report, and what it must not.
// Usage: planted CASE sound|planted; ends with 0 if the kernel ran and gave the right result
#include <lapack/cu/basic>

#include <cstdio>
#include <map>
#include <string>

namespace {

constexpr int threads = 64;
using Line = tarn::Block<threads>;

/// out[t] := (t + 1) mod threads: every thread reads what its neighbour wrote.
template <bool sound>
__global__ void readAfterWrite(int* out, int)
{
    __shared__ int work[threads];
    const Line block;
    block.each([&](int t) { work[t] = t; });
    if (sound)
        block.sync();
    block.each([&](int t) {
        out[t] = work[(t + 1) % threads]; // read-after-write
    });
}

/// The same by way of registers, back into the array: no thread may write before its neighbour has read.
template <bool sound>
__global__ void writeAfterRead(int* out, int)
{
    __shared__ int work[threads];
    const Line block;
    tarn::Private<int, threads> neighbour;
    block.each([&](int t) { work[t] = t; });
    block.sync();
    block.each([&](int t) { neighbour[t] = work[(t + 1) % threads]; });
    if (sound)
        block.sync();
    block.each([&](int t) {
        work[t] = neighbour[t]; // write-after-read
    });
    block.sync();
    block.each([&](int t) { out[t] = work[t]; });
}

/// Blocks that write the same elements.
template <bool sound>
__global__ void blocksMeet(int* out, int)
{
    const Line block;
    block.each([&](int t) {
        if (!sound || blockIdx.x == 0)
            out[t] = (t + 1) % threads; // blocks-meet
    });
}

/// A sum over blocks without an atomic addition.
template <bool sound>
__global__ void plainAdd(int* out, int)
{
    auto* const sum = reinterpret_cast<float*>(out);
    const Line block;
    block.each([&](int t) {
        if (sound)
            atomicAdd(sum + t, 0.f);
        else
            sum[t] += 0.f; // plain-add
    });
}

/// Offset of a column in 32 bits: column 65536 of a matrix with 32768 rows.
template <bool sound>
__global__ void offset32(int* out, int ld)
{
    const Line block;
    const int column = 2 * ld;
    block.each([&](int t) {
        const auto first = sound ? tarn::kernel::offset(0, 0, ld) : std::int64_t(int(unsigned(column) * unsigned(ld)));
        out[first + t] = (t + 1) % threads; // offset-32
    });
}

/// An array that ends one element too early for it.
template <bool sound>
__global__ void oneTooMany(int* out, int)
{
    const Line block;
    block.each([&](int t) {
        out[t] = (t + 1) % threads;
        out[threads + t + !sound] = 0; // one-too-many
    });
}

/// Pairs of elements that begin at an odd one.
template <bool sound>
__global__ void misaligned(int* out, int)
{
    const Line block;
    block.each([&](int t) {
        if (t % 2 == 0 && t + 2 < threads + sound)
            *reinterpret_cast<int2*>(out + t + !sound) = int2{(t + 1) % threads, (t + 2) % threads}; // misaligned
    });
}

/// Shared memory that only half of the block has filled.
template <bool sound>
__global__ void unwrittenShared(int* out, int)
{
    __shared__ int work[threads];
    const Line block;
    block.eachBelow(sound ? threads : threads / 2, [&](int t) { work[t] = t; });
    block.sync();
    block.each([&](int t) {
        out[t] = work[(t + 1) % threads]; // unwritten-shared
    });
}

/// Fresh device memory as a summand.
template <bool sound>
__global__ void unwrittenGlobal(int* out, int)
{
    auto* const values = reinterpret_cast<float*>(out);
    const Line block;
    block.each([&](int t) {
        const float before = sound ? 0.f : values[threads + t];
        values[t] = before + 1.f; // unwritten-global
    });
}

/// A barrier that half of the block passes by.
template <bool sound>
__global__ void halfBarrier(int* out, int)
{
    const Line block;
    if (sound || int(threadIdx.x) < threads / 2)
        block.sync(); // half-barrier
    block.each([&](int t) { out[t] = (t + 1) % threads; });
}

struct Case
{
    void (*sound)(int*, int);
    void (*planted)(int*, int);
    bool ordersThreads; ///< the result is that of the first kernels
};

const std::map<std::string, Case> cases = {
    {"read-after-write", {readAfterWrite<true>, readAfterWrite<false>, true}},
    {"write-after-read", {writeAfterRead<true>, writeAfterRead<false>, true}},
    {"blocks-meet", {blocksMeet<true>, blocksMeet<false>, true}},
    {"plain-add", {plainAdd<true>, plainAdd<false>, false}},
    {"offset-32", {offset32<true>, offset32<false>, true}},
    {"one-too-many", {oneTooMany<true>, oneTooMany<false>, true}},
    {"misaligned", {misaligned<true>, misaligned<false>, true}},
    {"unwritten-shared", {unwrittenShared<true>, unwrittenShared<false>, true}},
    {"unwritten-global", {unwrittenGlobal<true>, unwrittenGlobal<false>, false}},
    {"half-barrier", {halfBarrier<true>, halfBarrier<false>, true}},
};

} // namespace

int main(int argc, char** argv)
{
    const auto found = argc == 3 ? cases.find(argv[1]) : cases.end();
    if (found == cases.end())
        return 2;
    const bool sound = std::string(argv[2]) == "sound";
    const int blocks = std::string(argv[1]) == "blocks-meet" || std::string(argv[1]) == "plain-add" ? 2 : 1;
    int *device = nullptr, host[threads] = {};
    if (cudaMalloc(&device, 2 * sizeof host) != cudaSuccess ||
        cudaMemcpy(device, host, sizeof host, cudaMemcpyHostToDevice) != cudaSuccess)
        return 3;
    (sound ? found->second.sound : found->second.planted)<<<blocks, threads>>>(device, 32768);
    if (const cudaError_t code = cudaMemcpy(host, device, sizeof host, cudaMemcpyDeviceToHost)) {
        std::printf("%s\nstays: %d\n", cudaGetErrorString(code),
                    cudaFree(device) == code && cudaGetLastError() == code);
        return 1;
    }
    for (int t = 0; found->second.ordersThreads && t < threads; ++t)
        if (host[t] != (t + 1) % threads)
            return 4;
    return 0;
}
