/* Solves one system in single precision, and in double precision by the same factorisation and refinement. */
#include <tarn_refine.h>

#include <math.h>
#include <stdio.h>

enum
{
    n = 500
};

/* The largest deviation of x from 1, which all of it should be. */
static double error(const double* x)
{
    double most = 0;
    for (int i = 0; i < n; ++i)
        most = fmax(most, fabs(x[i] - 1));
    return most;
}

int main(void)
{
    /* The Lehmer matrix, a(i, j) = min(i, j) / max(i, j): its condition is about n^2. */
    static double a[n * n], b[n], x[n];
    static float single[n * n], y[n];
    static int pivots[n];
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            a[i + j * n] = i < j ? (i + 1.0) / (j + 1) : (j + 1.0) / (i + 1);
            single[i + j * n] = (float)a[i + j * n];
            b[i] += a[i + j * n];
        }
    for (int i = 0; i < n; ++i)
        y[i] = (float)b[i];

    tarnStatus status = tarnInitialize();
    if (status == tarnNoError)
        status = tarnSgesv(n, 1, single, n, pivots, y, n);
    for (int i = 0; i < n; ++i)
        x[i] = y[i];
    printf("single precision: error %.1e\n", error(x));

    tarnRefinement how;
    if (status == tarnNoError)
        status = tarnDsgesv('N', n, 1, a, n, b, n, x, n, &how);
    if (status != tarnNoError) {
        fprintf(stderr, "%s (info %d)\n", tarnGetStatusString(status), (int)tarnGetErrorInfo());
        return 1;
    }
    if (how.iter < 0)
        printf("solved by the CPU in double precision: ");
    else
        printf("after %d refinements: ", how.iter);
    printf("error %.1e, condition about %.1e\n", error(x), 1 / how.rcond);

    tarnShutdown();
    return 0;
}
