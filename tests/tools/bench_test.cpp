// The arithmetic behind the benchmark's errors.
#include "bench/problem.h"

#include <gtest/gtest.h>

namespace {

using namespace tarn::bench;
using Z = std::complex<double>;

TEST(Bench, ProductAgreesWithItsDefinition)
{
    const Matrix<Z> a = randomMatrix<Z>(5, 3, 1);
    for (const char op : {'N', 'T', 'C'}) {
        const bool plain = op == 'N';
        const auto x = tarn::tool::convert<Wide<Z>>(randomMatrix<Z>(plain ? 3 : 5, 2, 2));
        const Matrix<Wide<Z>> y = product(op, a, x, Wide<Z>(2, 1));
        for (int i = 0; i < y.rows; ++i) {
            for (int k = 0; k < y.cols; ++k) {
                Wide<Z> sum = 0;
                for (int j = 0; j < x.rows; ++j) {
                    const Wide<Z> element = plain ? Wide<Z>(a(i, j)) : Wide<Z>(a(j, i));
                    sum += (op == 'C' ? std::conj(element) : element) * x(j, k);
                }
                EXPECT_LT(std::abs(y(i, k) - Wide<Z>(2, 1) * sum), 1e-15) << op;
            }
        }
    }
}

TEST(Bench, ProbeSeesEveryEntry)
{
    for (const int wrong : {0, 7, 39}) {
        Matrix<float> e(50, 40);
        e(11, wrong) = -0.25f;
        EXPECT_EQ(normF(product('N', e, probe<float>(40))), 0.25);
    }
    const Matrix<float> e = randomMatrix<float>(300, 200, 1);
    const double estimate = normF(product('N', e, probe<float>(200)));
    EXPECT_NEAR(estimate / normF(e), 1, 0.2);
}

TEST(Bench, NormsCarryNaN)
{
    Matrix<float> a = randomMatrix<float>(4, 4, 1);
    a(1, 2) = std::nanf("");
    EXPECT_TRUE(std::isnan(norm1(a)));
    EXPECT_TRUE(std::isnan(normF(a)));
}

} // namespace
