#include "singular_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tarn::tool {

namespace {

/// Decades that hold all values that count, and the height of a value among them.
struct LogAxis
{
    explicit LogAxis(const Spectrum& spectrum)
        : least(std::max(spectrum.noise() / 10, 1e-45)),
          bottom(int(std::floor(log(std::min<double>(spectrum.smallest(), spectrum.noise()))))),
          top(std::max(bottom + 1, int(std::ceil(log(spectrum.largest())))))
    {}

    double log(double value) const { return std::log10(std::max(value, least)); }

    /// From 0 at the bottom to 1 at the top.
    double height(double value) const { return (log(value) - bottom) / (top - bottom); }

    double least;
    int bottom, top;
};

/// Text as it may stand between tags.
std::string escaped(const std::string& text)
{
    std::string out;
    for (const char c : text)
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        default:
            out += c;
        }
    return out;
}

} // namespace

double Spectrum::noise() const { return std::max(m, n) * double(std::numeric_limits<float>::epsilon()) * largest(); }

int Spectrum::rank() const
{
    return int(std::count_if(values.begin(), values.end(), [this](double s) { return s > noise(); }));
}

double Spectrum::tail(int k) const
{
    double sum = 0;
    for (std::size_t i = k; i < values.size(); ++i)
        sum += double(values[i]) * values[i];
    return std::sqrt(sum);
}

std::string svgPlot(const Spectrum& spectrum, const std::string& title)
{
    constexpr double left = 70, right = 610, upper = 50, lower = 370; // of the plotted area, in pixels of 640 x 420
    const int count = int(spectrum.values.size());
    const LogAxis axis(spectrum);
    const auto x = [&](int i) { return left + (right - left) * (count == 1 ? 0.5 : double(i) / (count - 1)); };
    const auto y = [&](double value) { return lower - (lower - upper) * axis.height(value); };

    std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 640 420\" font-family=\"sans-serif\" "
                      "font-size=\"12\">\n<rect width=\"640\" height=\"420\" fill=\"white\"/>\n";
    svg += fmt::format("<text x=\"{}\" y=\"28\" font-size=\"15\">{}</text>\n", left, escaped(title));
    const int step = std::max(1, (axis.top - axis.bottom + 7) / 8);
    for (int decade = axis.bottom; decade <= axis.top; decade += step) {
        const double height = y(std::pow(10.0, decade));
        svg += fmt::format("<line x1=\"{}\" x2=\"{}\" y1=\"{:.1f}\" y2=\"{:.1f}\" stroke=\"#ddd\"/>\n", left, right,
                           height, height);
        svg +=
            fmt::format("<text x=\"{}\" y=\"{:.1f}\" text-anchor=\"end\">1e{}</text>\n", left - 8, height + 4, decade);
    }
    svg += fmt::format("<text x=\"{}\" y=\"{}\">1</text>\n", left, lower + 20);
    svg += fmt::format("<text x=\"{}\" y=\"{}\" text-anchor=\"end\">{}</text>\n", right, lower + 20, count);
    svg += fmt::format("<text x=\"{}\" y=\"{}\" text-anchor=\"middle\">index of the singular value</text>\n",
                       (left + right) / 2, lower + 36);
    const double noise = y(spectrum.noise());
    svg += fmt::format("<line x1=\"{}\" x2=\"{}\" y1=\"{:.1f}\" y2=\"{:.1f}\" stroke=\"#c33\" "
                       "stroke-dasharray=\"6 4\"/>\n",
                       left, right, noise, noise);
    svg += fmt::format("<text x=\"{}\" y=\"{:.1f}\" text-anchor=\"end\" fill=\"#c33\">rounding: max(m, n) eps "
                       "s1</text>\n",
                       right, noise - 6);
    svg += "<g fill=\"#1b66b0\">\n";
    for (int i = 0; i < count; ++i)
        svg += fmt::format("<circle cx=\"{:.2f}\" cy=\"{:.2f}\" r=\"2\"/>\n", x(i), y(spectrum.values[i]));
    return svg + "</g>\n</svg>\n";
}

std::string textPlot(const Spectrum& spectrum, int lines)
{
    constexpr int width = 40;
    const int count = int(spectrum.values.size());
    const LogAxis axis(spectrum);
    std::string text;
    lines = std::min(lines, count);
    for (int line = 0; line < lines; ++line) {
        const int i = lines == 1 ? 0 : int(std::int64_t(count - 1) * line / (lines - 1));
        const int bar = std::max(1, int(std::lround(width * axis.height(spectrum.values[i]))));
        text += fmt::format("   s[{:>5}]  {:9.3e}  {}\n", i + 1, spectrum.values[i], std::string(bar, '#'));
    }
    return text;
}

} // namespace tarn::tool
