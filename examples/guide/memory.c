/* A call that device memory does not suffice for, and what can be done about it. */
#include <tarn_lapack.h>

#include <stdio.h>
#include <stdlib.h>

int main(void)
{
    const int n = 300;
    float* a = calloc((size_t)n * n, sizeof *a);
    float* b = calloc(n, sizeof *b);
    int* ipiv = calloc(n, sizeof *ipiv);
    if (!a || !b || !ipiv || tarnInitialize() != tarnNoError)
        return 1;
    for (int i = 0; i < n; ++i) {
        a[i + (size_t)n * i] = 2;
        b[i] = 4;
    }

    tarnStatus status = tarnSgesv(n, 1, a, n, ipiv, b, n);
    if (status == tarnInsufficientMemory) {
        tarnFreeBuffers(); /* a and b are unchanged: the call may be made again */
        status = tarnSgesv(n, 1, a, n, ipiv, b, n);
    }

    printf("x(1) = %.4f\n", b[0]);
    const int right = status == tarnNoError && b[0] == 2 && b[n - 1] == 2;
    tarnShutdown();
    free(a);
    free(b);
    free(ipiv);
    return !right;
}
