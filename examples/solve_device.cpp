// Solves three equations with the matrix and the right-hand side in device memory. The same source runs on a GPU and on
// the software device.
#include <cuda_runtime.h>
#include <tarn_lapack.h>

#include <cstdio>

int main()
{
    const float a[] = {2, -3, -2, 1, -1, 1, -1, 2, 2}; // column by column
    float b[] = {8, -11, -3};
    int* pivots = nullptr;
    float *deviceA = nullptr, *deviceB = nullptr;

    if (const tarnStatus status = tarnInitialize(); status != tarnNoError) {
        std::fprintf(stderr, "%s\n", tarnGetStatusString(status));
        return 1;
    }
    cudaMalloc(&deviceA, sizeof a);
    cudaMalloc(&deviceB, sizeof b);
    cudaMalloc(&pivots, 3 * sizeof(int));
    cudaMemcpy(deviceA, a, sizeof a, cudaMemcpyHostToDevice);
    cudaMemcpy(deviceB, b, sizeof b, cudaMemcpyHostToDevice);

    const tarnStatus status = tarnDeviceSgesv(3, 1, deviceA, 3, pivots, deviceB, 3);
    if (status != tarnNoError) {
        std::fprintf(stderr, "%s (info %d)\n", tarnGetStatusString(status), int(tarnGetErrorInfo()));
        return 1;
    }
    cudaMemcpy(b, deviceB, sizeof b, cudaMemcpyDeviceToHost);
    std::printf("x = %.4f, y = %.4f, z = %.4f\n", b[0], b[1], b[2]);

    cudaFree(deviceA);
    cudaFree(deviceB);
    cudaFree(pivots);
    tarnShutdown();
}
