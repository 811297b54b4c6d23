// Conversion of matrices between single and double precision. Narrowing reports whether a result is out of range.
#include "lapack/element_wise.h"
#include "lapack/kernels.h"

#include <cmath>

namespace tarn::kernel {

namespace {

/// True for infinities and NaNs.
__device__ __forceinline__ bool isBeyondRange(float x) { return !(fabsf(x) < INFINITY); }

__device__ __forceinline__ bool isBeyondRange(Complex<float> x)
{
    return isBeyondRange(x.real()) || isBeyondRange(x.imag());
}

/// to := from, rounded to nearest.
template <class R, class S>
__device__ __forceinline__ void convert(R& to, S from)
{
    to = R(from);
}

template <class R, class S>
__device__ __forceinline__ void convert(Complex<R>& to, Complex<S> from)
{
    to = Complex<R>(R(from.real()), R(from.imag()));
}

/// Which elements of a matrix a conversion is for: all, or a triangle with its diagonal.
enum class Part
{
    all,
    upper,
    lower
};

/// The kernels' common body; sets *overflow if a narrowed element is infinite or NaN, and never clears it. The flag is
/// touched after the elements, so that a CPU converts whole vectors.
template <class Map, class Src, class Dst>
__device__ __forceinline__ void convertElements(Part part, int m, int n, const Src* src, int lds, Dst* dst, int ldd,
                                                [[maybe_unused]] int* overflow)
{
    constexpr bool narrows = isDouble<Src> && !isDouble<Dst>;
    const MatrixBlock block;
    const int r0 = Map::firstRow(), c0 = Map::firstColumn();
    [[maybe_unused]] Private<int, MatrixBlock::threads> lost;
    block.each([&](int tx, int ty) {
        const int i = r0 + tx, j = c0 + ty;
        const bool wanted =
            i < m && j < n && (part == Part::all || (part == Part::upper && i <= j) || (part == Part::lower && j <= i));
        Dst result(0);
        if (wanted) {
            convert(result, src[offset(i, j, lds)]);
            dst[offset(i, j, ldd)] = result;
        }
        if constexpr (narrows)
            lost[MatrixBlock::x * ty + tx] = isBeyondRange(result);
    });
    if constexpr (narrows)
        block.each([&](int tx, int ty) {
            if (lost[MatrixBlock::x * ty + tx])
                atomicMax(overflow, 1);
        });
}

} // namespace

/// dst := src in the precision of dst, m by n.
template <class Map, class Src, class Dst>
__global__ void PrecisionConvert_k(int m, int n, const Src* src, int lds, Dst* dst, int ldd, int* overflow)
{
    convertElements<Map>(Part::all, m, n, src, lds, dst, ldd, overflow);
}

/// As PrecisionConvert_k for the upper or lower triangle, with its diagonal, of a matrix of order n.
template <class Map, class Src, class Dst>
__global__ void PrecisionConvertTriangular_k(bool upper, int n, const Src* src, int lds, Dst* dst, int ldd,
                                             int* overflow)
{
    convertElements<Map>(upper ? Part::upper : Part::lower, n, n, src, lds, dst, ldd, overflow);
}

template <class Src, class Dst>
void PrecisionConvert(int m, int n, const Src* src, int lds, Dst* dst, int ldd, int* overflow)
{
    if (m > 0 && n > 0)
        launchOnMatrix<&PrecisionConvert_k<velk::Map2D, Src, Dst>>(m, n, m, n, src, lds, dst, ldd, overflow);
}

template <class Src, class Dst>
void PrecisionConvertTriangular(bool upper, int n, const Src* src, int lds, Dst* dst, int ldd, int* overflow)
{
    if (n > 0)
        launchOnMatrix<&PrecisionConvertTriangular_k<velk::TriangularMap2D, Src, Dst>>(n, n, upper, n, src, lds, dst,
                                                                                       ldd, overflow);
}

#define TARN_WRAPPERS(Src, Dst)                                                                                        \
    template void PrecisionConvert(int, int, const Src*, int, Dst*, int, int*);                                        \
    template void PrecisionConvertTriangular(bool, int, const Src*, int, Dst*, int, int*);

TARN_WRAPPERS(float, double)
TARN_WRAPPERS(double, float)
TARN_WRAPPERS(Complex<float>, Complex<double>)
TARN_WRAPPERS(Complex<double>, Complex<float>)

} // namespace tarn::kernel
