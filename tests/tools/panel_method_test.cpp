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
