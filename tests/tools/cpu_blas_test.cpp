#include "cpu_blas.h"

#include <gtest/gtest.h>

using tarn::tool::betterCore;

TEST(CpuBlas, NamesABetterCoreOnlyWhereTheCpuIsTakenForAnOlderOne)
{
    EXPECT_EQ(betterCore("Prescott", true, true), "SkylakeX");
    EXPECT_EQ(betterCore("SANDYBRIDGE", true, false), "Haswell");
    EXPECT_EQ(betterCore("Sandybridge", false, false), "");
    for (const char* modern : {"Haswell", "SkylakeX", "Zen", "Cooperlake", "a core of the future"})
        EXPECT_EQ(betterCore(modern, true, true), "") << modern;
}
