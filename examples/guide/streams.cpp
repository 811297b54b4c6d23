// A device form after work on a stream of the program's own.
#include <cuda_runtime.h>
#include <tarn_lapack.h>

#include <cstdio>
#include <vector>

int main()
{
    const int n = 200;
    const std::size_t bytes = sizeof(float) * n * n;
    std::vector<float> a(n * n, 1), c(n * n);
    float *deviceA = nullptr, *deviceC = nullptr;
    if (tarnInitialize() != tarnNoError)
        return 1;
    cudaMalloc(&deviceA, bytes);
    cudaMalloc(&deviceC, bytes);

    cudaStream_t stream;
    cudaStreamCreate(&stream);
    cudaMemcpyAsync(deviceA, a.data(), bytes, cudaMemcpyHostToDevice, stream);

    cudaStreamSynchronize(stream); // needed if the stream was made with cudaStreamNonBlocking
    tarnStatus status = tarnDeviceSgemm('N', 'N', n, n, n, 1, deviceA, n, deviceA, n, 0, deviceC, n);

    // The routine has waited: any stream may use C now.
    cudaMemcpyAsync(c.data(), deviceC, bytes, cudaMemcpyDeviceToHost, stream);
    cudaStreamSynchronize(stream);

    std::printf("C(1, 1) = %.0f\n", c[0]);
    cudaStreamDestroy(stream);
    cudaFree(deviceA);
    cudaFree(deviceC);
    tarnShutdown();
    return status != tarnNoError || c[0] != n || c[n * n - 1] != n;
}
