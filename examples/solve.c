/* Solves a system of three equations in single precision. */
#include <tarn_lapack.h>

#include <stdio.h>

static int fail(const char* call, tarnStatus status)
{
    fprintf(stderr, "%s: %s (info %d)\n", call, tarnGetStatusString(status), (int)tarnGetErrorInfo());
    return 1;
}

int main(void)
{
    /* Column by column:  2x +  y -  z =  8,  -3x -  y + 2z = -11,  -2x +  y + 2z = -3 */
    float a[9] = {2, -3, -2, 1, -1, 1, -1, 2, 2};
    float b[3] = {8, -11, -3};
    int pivots[3];

    tarnStatus status = tarnInitialize();
    if (status != tarnNoError)
        return fail("tarnInitialize", status);

    status = tarnSgesv(3, 1, a, 3, pivots, b, 3);
    if (status == tarnDataError)
        fprintf(stderr, "the matrix is singular\n");
    if (status != tarnNoError) {
        const int code = fail("tarnSgesv", status);
        tarnShutdown();
        return code;
    }

    printf("x = %.4f, y = %.4f, z = %.4f\n", b[0], b[1], b[2]);
    tarnShutdown();
    return 0;
}
