#include "panel_method.h"

namespace tarn::tool {

namespace {

constexpr double pi = 3.14159265358979323846;

/// A straight panel from (x0, y0), its length, and its unit tangent (tx, ty); the outward normal is (ty, -tx).
struct Panel
{
    double x0, y0, length, tx, ty;

    double midX() const { return x0 + 0.5 * length * tx; }
    double midY() const { return y0 + 0.5 * length * ty; }
};

/// Counter-clockwise, the first midpoint on the positive x axis.
std::vector<Panel> circle(int n)
{
    std::vector<Panel> panels(n);
    const double step = 2 * pi / n;
    for (int j = 0; j < n; ++j) {
        const double middle = j * step, start = middle - 0.5 * step;
        panels[j] = {std::cos(start), std::sin(start), 2 * std::sin(0.5 * step), -std::sin(middle), std::cos(middle)};
    }
    return panels;
}

/// Normal and tangential velocity at a panel's midpoint due to unit source strength on another panel.
struct Influence
{
    double normal, tangential;
};

/// In the source panel's frame (xi along it, eta outward) the velocity is ln(r1 / r2) / (2 pi) along xi, and the angle
/// under which the panel is seen over 2 pi along eta.
Influence influence(const Panel& at, const Panel& source)
{
    const double dx = at.midX() - source.x0, dy = at.midY() - source.y0;
    const double xi = dx * source.tx + dy * source.ty;
    const double eta = dx * source.ty - dy * source.tx;
    const double xi2 = xi - source.length;
    const double along = std::log((xi * xi + eta * eta) / (xi2 * xi2 + eta * eta)) / (4 * pi);
    const double outward = std::atan2(eta * source.length, eta * eta + xi * xi2) / (2 * pi);
    const double u = along * source.tx + outward * source.ty;
    const double v = along * source.ty - outward * source.tx;
    return {u * at.ty - v * at.tx, u * at.tx + v * at.ty};
}

} // namespace

PanelSystem cylinderPanels(int n)
{
    const std::vector<Panel> panels = circle(n);
    PanelSystem system = {Matrix<double>(n, n), Matrix<double>(n, n), Matrix<double>(n, 1), Matrix<double>(n, 1),
                          Matrix<double>(n, 1)};
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const Influence ij = i == j ? Influence{0.5, 0.0} : influence(panels[i], panels[j]);
            system.normal(i, j) = ij.normal;
            system.tangential(i, j) = ij.tangential;
        }
        // The stream (1, 0) along the outward normal (ty, -tx) and along the tangent.
        system.rhs(j, 0) = -panels[j].ty;
        system.stream(j, 0) = panels[j].tx;
        system.exactSpeed(j, 0) = 2 * panels[j].tx;
    }
    return system;
}

double surfaceSpeedError(const PanelSystem& system, const Matrix<double>& strengths)
{
    const int n = strengths.rows;
    Matrix<long double> speed = convert<long double>(system.stream);
    multiplyAdd<double>(speed, 1.0L, 'N', system.tangential, convert<long double>(strengths));
    double worst = 0;
    for (int i = 0; i < n; ++i) {
        const double error = std::abs(double(speed(i, 0)) - system.exactSpeed(i, 0)) / 2;
        if (!(error <= worst))
            worst = error;
        if (std::isnan(error))
            return error;
    }
    return worst;
}

} // namespace tarn::tool
