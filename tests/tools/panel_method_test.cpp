#include "panel_method.h"

#include "lapack.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

using tarn::tool::Matrix;
using tarn::tool::PanelSystem;

Matrix<double> solve(const PanelSystem& system)
{
    Matrix<double> factors = system.normal, x = system.rhs;
    std::vector<int> pivots(x.rows);
    const int n = x.rows, one = 1;
    int info = -1;
    tarn::tool::dgesv_(&n, &one, factors.values.data(), &n, pivots.data(), x.values.data(), &n, &info);
    EXPECT_EQ(info, 0);
    return x;
}

TEST(PanelMethod, CoefficientsObeyTheFlowOfASource)
{
    constexpr int n = 200;
    const PanelSystem system = tarn::tool::cylinderPanels(n);
    for (int j : {0, 1, 57, n - 1}) {
        // All that a panel of unit strength sends out leaves the polygon of equal sides: the sum of the normal
        // velocities is 1 up to the error of the midpoint rule.
        const double* column = system.normal.column(j);
        EXPECT_NEAR(std::accumulate(column, column + n, 0.0), 1.0, 0.02);
        // A body of equal panels is the same seen from each: the matrices are circulant.
        EXPECT_NEAR(system.normal((j + 3) % n, j), system.normal(3, 0), 1e-12);
        EXPECT_NEAR(system.tangential((j + 3) % n, j), system.tangential(3, 0), 1e-12);
        EXPECT_EQ(system.normal(j, j), 0.5);
        EXPECT_EQ(system.tangential(j, j), 0.0);
    }
    // Right opposite, a panel of length L looks like a point source of strength L in the distance 2.
    const double length = 2 * std::sin(std::acos(-1.0) / n);
    EXPECT_NEAR(std::abs(system.normal(n / 2, 0)), length / (2 * std::acos(-1.0) * 2), 1e-5);
}

TEST(PanelMethod, SolutionIsTheFlowPastTheCylinder)
{
    const PanelSystem system = tarn::tool::cylinderPanels(200);
    Matrix<double> strengths = solve(system);
    EXPECT_LE(surfaceSpeedError(system, strengths), 1e-3);
    // The body neither makes nor swallows fluid.
    EXPECT_NEAR(std::accumulate(strengths.values.begin(), strengths.values.end(), 0.0), 0.0, 1e-10);
    strengths.values[17] += 0.5;
    EXPECT_GT(surfaceSpeedError(system, strengths), 1e-3) << "the error must see a wrong strength";
}

} // namespace
