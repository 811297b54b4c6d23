/* Solves three equations with the matrix and the right-hand side in device memory. The same source runs on a GPU and on
 * the software device. */
#include <cuda_runtime.h>
#include <tarn_lapack.h>

#include <stdio.h>

static int solve(void)
{
    /* Column by column:  2x +  y -  z =  8,  -3x -  y + 2z = -11,  -2x +  y + 2z = -3 */
    const float a[9] = {2, -3, -2, 1, -1, 1, -1, 2, 2};
    float b[3] = {8, -11, -3};
    float *deviceA = NULL, *deviceB = NULL;
    int* pivots = NULL;
    tarnStatus status = tarnInsufficientMemory;

    if (cudaMalloc((void**)&deviceA, sizeof a) == cudaSuccess &&
        cudaMalloc((void**)&deviceB, sizeof b) == cudaSuccess &&
        cudaMalloc((void**)&pivots, 3 * sizeof *pivots) == cudaSuccess) {
        cudaMemcpy(deviceA, a, sizeof a, cudaMemcpyHostToDevice);
        cudaMemcpy(deviceB, b, sizeof b, cudaMemcpyHostToDevice);
        status = tarnDeviceSgesv(3, 1, deviceA, 3, pivots, deviceB, 3);
        cudaMemcpy(b, deviceB, sizeof b, cudaMemcpyDeviceToHost);
    }
    cudaFree(deviceA);
    cudaFree(deviceB);
    cudaFree(pivots);

    if (status != tarnNoError) {
        fprintf(stderr, "%s (info %d)\n", tarnGetStatusString(status), (int)tarnGetErrorInfo());
        return 1;
    }
    printf("x = %.4f, y = %.4f, z = %.4f\n", b[0], b[1], b[2]);
    return 0;
}

int main(void)
{
    const tarnStatus status = tarnInitialize();
    if (status != tarnNoError) {
        fprintf(stderr, "tarnInitialize: %s\n", tarnGetStatusString(status));
        return 1;
    }
    const int code = solve();
    tarnShutdown();
    return code;
}
