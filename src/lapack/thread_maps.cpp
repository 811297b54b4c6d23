#include "lapack/thread_maps.h"

#include "frame/device_table.h"

namespace velk {

namespace {

std::int64_t ceilDiv(std::int64_t n, std::int64_t d) { return (n + d - 1) / d; }

std::int64_t halvedTo(std::int64_t limit, std::int64_t extent)
{
    while (extent > limit)
        extent /= 2;
    return extent;
}

} // namespace

Shape gridFor1D(int n, int threads, int limit)
{
    const std::int64_t x = halvedTo(limit, ceilDiv(n, threads));
    const std::int64_t y = halvedTo(limit, ceilDiv(n, threads * x));
    const std::int64_t z = ceilDiv(n, threads * x * y);
    return {unsigned(x), unsigned(y), unsigned(z)};
}

Shape Map1D::threads() const
{
    if (threads_ != 0)
        return {threads_, 1, 1};
    switch (blockClass_) {
    case 2:
        return {64, 1, 1};
    case 3:
        return {16, 1, 1};
    default:
        return {256, 1, 1};
    }
}

Shape Map1D::blocks() const { return gridFor1D(count_, int(threads().x), tarn::maxGridSize()[0]); }

Shape Map2D::threads() const
{
    if (threadsX_ == 0)
        return {16, 16, 1};
    return {threadsX_, threadsY_, 1};
}

Shape Map2D::blocks() const
{
    const Shape shape = threads();
    return {unsigned(ceilDiv(rows_, shape.x)), unsigned(ceilDiv(columns_, shape.y)), 1};
}

template <int N>
Shape StaticMap1D<N>::blocks() const
{
    return gridFor1D(count_, N, tarn::maxGridSize()[0]);
}

template class StaticMap1D<128>;
template class StaticMap1D<32>;
template class StaticMap1D<64>;

} // namespace velk
