// Potential flow past a circular cylinder by source panels: a boundary-element system whose exact solution is known.
#pragma once

#include "dense.h"

#include <vector>

namespace tarn::tool {

/**
 * The unit circle as a polygon of n equal panels, each with a constant source strength, in a stream of speed 1 along x.
 *
 *   A sigma = b      no flow through any panel's midpoint; A(i, j) is the normal velocity there due to a unit strength
 * on panel j (1/2 for i = j), b(i) minus the stream's normal velocity speed            t(i) + (T sigma)(i): tangential
 * velocity at the midpoints, T(i, j) that due to panel j exactSpeed       minus 2 sin(theta(i)), the speed on the
 * circle, counted counter-clockwise
 */
struct PanelSystem
{
    Matrix<double> normal;     ///< A, n by n
    Matrix<double> tangential; ///< T, n by n
    Matrix<double> rhs;        ///< b, n by 1
    Matrix<double> stream;     ///< t, n by 1: the stream's own tangential velocity
    Matrix<double> exactSpeed; ///< n by 1
};

/// Influence coefficients of n panels, n >= 3; about n^2 logarithms and arc tangents.
PanelSystem cylinderPanels(int n);

/// Largest difference between the speed from these strengths (n by 1) and the exact one, relative to the top speed 2.
double surfaceSpeedError(const PanelSystem& system, const Matrix<double>& strengths);

} // namespace tarn::tool
