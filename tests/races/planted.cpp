// Kernels with a barrier that can be left out: what the race check must report, and what it must not.
// Usage: planted read-after-write|write-after-read sound|planted
#include <lapack/cu/basic>

#include <cstdio>
#include <string_view>

namespace {

constexpr int threads = 64;
using Line = tarn::Block<threads>;

/// out[t] := (t + 1) mod threads: every thread reads what its neighbour wrote.
template <bool sound>
__global__ void readAfterWrite(int* out)
{
    __shared__ int work[threads];
    const Line block;
    block.each([&](int t) {
        work[t] = t; // read-after-write: first
    });
    if (sound)
        block.sync();
    block.each([&](int t) {
        out[t] = work[(t + 1) % threads]; // read-after-write: second
    });
}

/// The same by way of registers, back into the array: no thread may write before its neighbour has read.
template <bool sound>
__global__ void writeAfterRead(int* out)
{
    __shared__ int work[threads];
    const Line block;
    tarn::Private<int, threads> neighbour;
    block.each([&](int t) { work[t] = t; });
    block.sync();
    block.each([&](int t) {
        neighbour[t] = work[(t + 1) % threads]; // write-after-read: first
    });
    if (sound)
        block.sync();
    block.each([&](int t) {
        work[t] = neighbour[t]; // write-after-read: second
    });
    block.each([&](int t) { out[t] = work[t]; });
}

/// True if the kernel gives the right result, which it does on a CPU with the barrier and without.
template <auto Kernel>
bool run()
{
    int* device = nullptr;
    int host[threads];
    if (cudaMalloc(&device, sizeof host) != cudaSuccess)
        return false;
    for (int repetition = 0; repetition < 3; ++repetition)
        tarn::platform::launch<Kernel, Line>(dim3(1), dim3(threads), device);
    if (cudaMemcpy(host, device, sizeof host, cudaMemcpyDeviceToHost) != cudaSuccess)
        return false;
    cudaFree(device);
    for (int t = 0; t < threads; ++t)
        if (host[t] != (t + 1) % threads)
            return false;
    return true;
}

template <bool sound>
int runNamed(std::string_view name)
{
    if (name == "read-after-write")
        return run<&readAfterWrite<sound>>() ? 0 : 1;
    if (name == "write-after-read")
        return run<&writeAfterRead<sound>>() ? 0 : 1;
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    tarn::race::enabled = true;
    return std::string_view(argv[2]) == "sound" ? runNamed<true>(argv[1]) : runNamed<false>(argv[1]);
}
