#include "singular_values.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tarn::tool {

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

} // namespace tarn::tool
