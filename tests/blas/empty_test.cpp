// Problems with nothing in them, or with nothing to do: the routines succeed, and leave alone what they must.
#include "blas/routines.h"
#include "tarn_core.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

class Empty : public testing::Test
{
protected:
    const Initialized library;
    float one[4] = {1, 2, 3, 4};
};

TEST_F(Empty, DimensionsOf0)
{
    for (const int m : {0, 3})
        for (const int n : {0, 3}) {
            if (m != 0 && n != 0)
                continue;
            EXPECT_EQ(tarnSgemm('N', 'T', m, n, 2, 1, nullptr, m, nullptr, n, 0, nullptr, m), tarnNoError);
            EXPECT_EQ(tarnStrsm('L', 'U', 'N', 'N', m, n, 1, nullptr, m, nullptr, m), tarnNoError);
            EXPECT_EQ(tarnStrmm('R', 'L', 'T', 'U', m, n, 1, nullptr, 3, nullptr, 3), tarnNoError);
            EXPECT_EQ(tarnSsymm('R', 'U', m, n, 1, nullptr, n, nullptr, m, 0, nullptr, m), tarnNoError);
            EXPECT_EQ(tarnSgemv('N', m, n, 1, one, 3, one, 1, 0, one, 1), tarnNoError);
            EXPECT_EQ(tarnSgemv('T', m, n, 1, one, 3, one, 1, 0, one, -2), tarnNoError);
        }
    EXPECT_EQ(tarnSsymv('U', 0, 1, one, 1, one, 1, 0, one, 1), tarnNoError);
    EXPECT_EQ(tarnSsyrk('U', 'N', 0, 3, 1, nullptr, 1, 0, nullptr, 1), tarnNoError);
    EXPECT_EQ(tarnSsyr2k('L', 'T', 0, 3, 1, nullptr, 3, nullptr, 3, 0, nullptr, 0), tarnNoError);
    EXPECT_EQ(one[0], 1); // y of an empty gemv is left alone, even with beta 0
}

/// With k = 0 the operands may be null; the result is scaled by beta all the same, and may be null itself.
TEST_F(Empty, ProductsOfDepth0)
{
    EXPECT_EQ(tarnSgemm('N', 'N', 2, 2, 0, 1, nullptr, 2, nullptr, 0, 2, one, 2), tarnNoError);
    EXPECT_EQ(std::vector<float>(one, one + 4), (std::vector<float>{2, 4, 6, 8}));
    EXPECT_EQ(tarnSsyrk('L', 'N', 2, 0, 1, nullptr, 2, 0.5f, one, 2), tarnNoError);
    EXPECT_EQ(std::vector<float>(one, one + 4), (std::vector<float>{1, 2, 6, 4}));
    EXPECT_EQ(tarnSsyr2k('U', 'T', 2, 0, 1, nullptr, 0, nullptr, 0, 0, one, 2), tarnNoError);
    EXPECT_EQ(std::vector<float>(one, one + 4), (std::vector<float>{0, 2, 0, 0}));
    EXPECT_EQ(tarnSgemm('N', 'N', 2, 2, 0, 1, nullptr, 2, nullptr, 0, 2, nullptr, 2), tarnNoError);
    EXPECT_EQ(tarnSsyrk('L', 'N', 2, 0, 1, nullptr, 2, 2, nullptr, 2), tarnNoError);
    EXPECT_EQ(tarnSsyr2k('L', 'N', 2, 0, 1, nullptr, 2, nullptr, 2, 2, nullptr, 2), tarnNoError);
}

TEST_F(Empty, DeviceFormsOfDimension0)
{
    const DeviceArray<float> a(std::vector<float>{1, 2, 3, 4});
    EXPECT_EQ(tarnDeviceSgemm('N', 'N', 0, 2, 2, 1, a.data(), 0, a.data(), 2, 0, a.data(), 0), tarnNoError);
    EXPECT_EQ(tarnDeviceStrsm('L', 'U', 'N', 'N', 0, 0, 1, nullptr, 0, nullptr, 0), tarnNoError);
    EXPECT_EQ(tarnDeviceStrmm('L', 'U', 'N', 'N', 2, 0, 1, nullptr, 2, nullptr, 2), tarnNoError);
    EXPECT_EQ(tarnDeviceSsymm('L', 'U', 0, 2, 1, nullptr, 0, nullptr, 0, 0, nullptr, 0), tarnNoError);
    EXPECT_EQ(tarnDeviceSsyr2k('U', 'T', 0, 2, 1, nullptr, 2, nullptr, 2, 0, nullptr, 0), tarnNoError);
    EXPECT_EQ(tarnDeviceSgemv('T', 0, 2, 1, a.data(), 1, a.data(), 1, 0, a.data(), 1), tarnNoError);
    EXPECT_EQ(tarnDeviceSsymv('U', 0, 1, a.data(), 1, a.data(), 1, 0, a.data(), 1), tarnNoError);
    EXPECT_EQ(tarnDeviceSsyrk('U', 'N', 2, 0, 1, nullptr, 2, 2, a.data(), 2), tarnNoError);
    EXPECT_EQ(a.download(), (std::vector<float>{2, 2, 6, 8}));
    EXPECT_EQ(tarnDeviceSgemm('N', 'N', 2, 2, 0, 1, nullptr, 2, nullptr, 0, 0.5f, a.data(), 2), tarnNoError);
    EXPECT_EQ(tarnDeviceSsyr2k('U', 'T', 2, 0, 1, nullptr, 0, nullptr, 0, 2, a.data(), 2), tarnNoError);
    EXPECT_EQ(a.download(), (std::vector<float>{2, 1, 6, 8}));
}

} // namespace
