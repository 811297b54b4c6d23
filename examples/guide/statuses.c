/* Statuses and infos: a wrong argument, a singular matrix, and a message for each. */
#include <tarn_lapack.h>

#include <stdio.h>

static void explain(const char* call, tarnStatus status)
{
    const tarnInfo info = tarnGetErrorInfo(); /* before the next call, which records its own */
    char text[256];
    tarnGetErrorInfoString(status, info, text, sizeof text);
    fprintf(stderr, "%s: %s\n", call, text);
}

int main(void)
{
    float a[4] = {1, 2, 2, 4}, b[2] = {3, 6}; /* the second column is twice the first */
    int pivots[2], asExpected = 1;
    if (tarnInitialize() != tarnNoError)
        return 1;

    tarnStatus status = tarnSgesv(2, 1, a, 1, pivots, b, 2); /* lda below 2 */
    asExpected &= status == tarnArgumentError && tarnGetErrorInfo() == -4 && a[1] == 2 && b[1] == 6;
    explain("tarnSgesv", status);

    status = tarnSgesv(2, 1, a, 2, pivots, b, 2);
    if (status == tarnDataError)
        printf("U(%d, %d) is zero\n", (int)tarnGetErrorInfo(), (int)tarnGetErrorInfo());
    asExpected &= status == tarnDataError && tarnGetErrorInfo() == 2 && a[0] == 2 && b[0] == 3 && b[1] == 6;
    explain("tarnSgesv", status);

    tarnShutdown();
    return !asExpected;
}
