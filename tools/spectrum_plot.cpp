#include "spectrum_plot.h"

#include "json.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace tarn::tool {

namespace {

/// The decades from 10^bottom to 10^top, which hold all values that count.
struct LogAxis
{
    explicit LogAxis(const Spectrum& spectrum)
    {
        if (spectrum.largest() <= 0)
            return; // no value stands on it
        double least = spectrum.noise();
        for (const double value : spectrum.values)
            if (value > spectrum.noise() / 1000)
                least = std::min(least, value);
        bottom = int(std::floor(std::log10(least)));
        top = std::max(bottom + 1, int(std::ceil(std::log10(spectrum.largest()))));
    }

    bool isBelow(double value) const { return value < std::pow(10.0, bottom); }

    /// From 0 at the bottom, where values below it stand too, to 1 at the top.
    double height(double value) const
    {
        return isBelow(value) ? 0 : (std::log10(value) - bottom) / double(top - bottom);
    }

    int bottom = -1, top = 0;
};

/// A round number: a step that makes at most that many of a whole.
int stepOf(int whole, int atMost)
{
    for (int decade = 1;; decade *= 10)
        for (const int factor : {1, 2, 5})
            if (whole / atMost < factor * decade)
                return factor * decade;
}

/// Text as it may stand between tags.
std::string escaped(const std::string& text)
{
    std::string out;
    for (const char c : validUtf8(text)) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else
            out += c >= 0 && c < ' ' ? '?' : c;
    }
    return out;
}

/// The picture piece by piece, in pixels.
class SvgPlot
{
public:
    SvgPlot(const Spectrum& spectrum, const std::string& title)
        : spectrum_(spectrum), axis_(spectrum), count_(int(spectrum.values.size()))
    {
        add("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" height=\"{1}\" "
            "font-family=\"sans-serif\" font-size=\"12\">\n<title>{2}</title>\n"
            "<rect width=\"{0}\" height=\"{1}\" fill=\"white\"/>\n",
            width, height, escaped(title));
        text(left, 26, "start", escaped(title), " font-size=\"15\"");
        text(left, 44, "start",
             fmt::format("{} x {}, condition {:.3g}, numerical rank {} of {}", spectrum.m, spectrum.n,
                         spectrum.condition(), spectrum.rank(), count_),
             " fill=\"#555\"");
    }

    std::string draw()
    {
        drawVerticalAxis();
        drawHorizontalAxis();
        if (spectrum_.noise() > 0)
            drawNoise();
        drawValues();
        return svg_ + "</svg>\n";
    }

private:
    static constexpr int width = 640, height = 450;
    static constexpr double left = 76, right = 616, upper = 60, lower = 380; ///< of the plotted area

    double x(int i) const { return left + (right - left) * (count_ == 1 ? 0.5 : double(i) / (count_ - 1)); }
    double y(double value) const { return lower - (lower - upper) * axis_.height(value); }

    template <class... Arguments>
    void add(fmt::format_string<Arguments...> format, Arguments&&... arguments)
    {
        fmt::format_to(std::back_inserter(svg_), format, std::forward<Arguments>(arguments)...);
    }

    void text(double atX, double atY, const char* anchor, const std::string& words, const std::string& extra = "")
    {
        add("<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\"{}>{}</text>\n", atX, atY, anchor, extra, words);
    }

    void line(double x1, double y1, double x2, double y2, const char* stroke)
    {
        add("<line x1=\"{:.1f}\" y1=\"{:.1f}\" x2=\"{:.1f}\" y2=\"{:.1f}\" stroke=\"{}\"/>\n", x1, y1, x2, y2, stroke);
    }

    void drawVerticalAxis()
    {
        const int step = stepOf(axis_.top - axis_.bottom, 10);
        for (int decade = axis_.bottom; decade <= axis_.top && spectrum_.largest() > 0; ++decade) {
            const double power = std::pow(10.0, decade);
            if ((decade - axis_.bottom) % step == 0) {
                line(left, y(power), right, y(power), "#ddd");
                text(left - 9, y(power) + 4, "end", fmt::format("1e{}", decade));
            }
            line(left - 6, y(power), left, y(power), "#555");
            for (int part = 2; part < 10 && step == 1 && decade < axis_.top; ++part)
                line(left - 3, y(part * power), left, y(part * power), "#555");
        }
        line(left, upper, left, lower, "#555");
        text(18, (upper + lower) / 2, "middle", "singular value",
             fmt::format(" transform=\"rotate(-90 18 {})\"", (upper + lower) / 2));
    }

    void drawHorizontalAxis()
    {
        line(left, lower, right, lower, "#555");
        const int step = stepOf(count_, 8);
        for (int index = 1; index <= count_; index = index == 1 && step > 1 ? step : index + step) {
            line(x(index - 1), lower, x(index - 1), lower + 6, "#555");
            text(x(index - 1), lower + 20, "middle", std::to_string(index));
        }
        text((left + right) / 2, lower + 38, "middle", "index of the singular value");
    }

    void drawNoise()
    {
        const double at = y(spectrum_.noise());
        add("<line x1=\"{}\" y1=\"{:.1f}\" x2=\"{}\" y2=\"{:.1f}\" stroke=\"#c33\" stroke-dasharray=\"6 4\"/>\n", left,
            at, right, at);
        text(left + 6, at - 6, "start", "rounding: max(m, n) eps s1", " fill=\"#c33\"");
    }

    void drawValues()
    {
        int below = 0;
        for (int i = 0; i < count_; ++i) {
            const double value = spectrum_.values[std::size_t(i)];
            if (axis_.isBelow(value)) {
                ++below;
                add("<path d=\"M{:.2f} {}h8l-4 7z\" fill=\"white\" stroke=\"#c33\"/>\n", x(i) - 4, lower - 8);
            } else {
                add("<circle cx=\"{:.2f}\" cy=\"{:.2f}\" r=\"{}\" fill=\"#1b66b0\"/>\n", x(i), y(value),
                    count_ <= 60 ? 3 : 2);
            }
        }
        if (below == 0)
            return;
        const auto zeros = std::count(spectrum_.values.begin(), spectrum_.values.end(), 0.0f);
        add("<path d=\"M{} {}h8l-4 7z\" fill=\"white\" stroke=\"#c33\"/>\n", left, lower + 50);
        text(left + 14, lower + 58, "start",
             zeros == below ? fmt::format("zero: {}", zeros)
                            : fmt::format("below 1e{}: {}, of which zero: {}", axis_.bottom, below, zeros),
             " fill=\"#c33\"");
    }

    const Spectrum& spectrum_;
    const LogAxis axis_;
    const int count_;
    std::string svg_;
};

} // namespace

std::string svgPlot(const Spectrum& spectrum, const std::string& title) { return SvgPlot(spectrum, title).draw(); }

std::string textPlot(const Spectrum& spectrum, int lines)
{
    constexpr int width = 40;
    const int count = int(spectrum.values.size());
    const LogAxis axis(spectrum);
    std::string text;
    lines = std::min(lines, count);
    for (int line = 0; line < lines; ++line) {
        const int i = lines == 1 ? 0 : int(std::int64_t(count - 1) * line / (lines - 1));
        const double value = spectrum.values[std::size_t(i)];
        const int bar = std::max(1, int(std::lround(width * axis.height(value))));
        text += fmt::format("   s[{:>5}]  {:9.3e}  {}\n", i + 1, value,
                            axis.isBelow(value) ? "<" : std::string(std::size_t(bar), '#'));
    }
    return text;
}

} // namespace tarn::tool
