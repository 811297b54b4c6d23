/* The least that a program needs: a call between initialisation and shutdown, and its status. */
#include <stdio.h>

#include <tarn_lapack.h>

/* Solves A X = B and puts X in place of B; returns whether that succeeded. */
static int solve(int n, int nrhs, float* a, int lda, int* ipiv, float* b, int ldb)
{
    tarnInitialize();
    tarnStatus status = tarnSgesv(n, nrhs, a, lda, ipiv, b, ldb); /* A X = B, X in place of B */
    if (status != tarnNoError)
        fprintf(stderr, "%s (info %d)\n", tarnGetStatusString(status), tarnGetErrorInfo());
    tarnShutdown();
    return status == tarnNoError;
}

int main(void)
{
    float a[4] = {1, 0, 1, 1}, b[2] = {3, 2};
    int ipiv[2];
    return !(solve(2, 1, a, 2, ipiv, b, 2) && b[0] == 1 && b[1] == 2);
}
