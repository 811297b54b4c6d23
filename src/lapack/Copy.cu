// Copies of single elements, vectors and matrices on the device, between real and complex where that makes sense.
#include "lapack/element_wise.h"
#include "lapack/kernels.h"

namespace tarn::kernel {

namespace {

using Single = Block<1>;

} // namespace

/// *dst := *src. One thread.
template <class T>
__global__ void CopySingle_k(T* dst, const T* src)
{
    const Single block;
    block.each([&](int) { *dst = *src; });
}

/// *dst := real part of *src. One thread.
template <class T>
__global__ void CopyComplexToReal_k(Real<T>* dst, const T* src)
{
    const Single block;
    block.each([&](int) { *dst = src->real(); });
}

/// *dst := *src, with a zero imaginary part. One thread.
template <class T>
__global__ void CopyRealToComplex_k(T* dst, const Real<T>* src)
{
    const Single block;
    block.each([&](int) { CopyRealToComplexPtr_kd(dst, src); });
}

/// dst[k incDst] := src[k incSrc], k below n.
template <class Map, class T>
__global__ void CopyVector_k(int n, T* dst, int incDst, const T* src, int incSrc)
{
    forEachItem<Map>(n, [&](std::int64_t k) { dst[k * incDst] = src[k * incSrc]; });
}

/// As CopyVector_k from a real vector; imaginary parts become 0.
template <class Map, class T>
__global__ void CopyVectorRealToComplex_k(int n, T* dst, int incDst, const Real<T>* src, int incSrc)
{
    forEachItem<Map>(n, [&](std::int64_t k) { CopyRealToComplexPtr_kd(dst + k * incDst, src + k * incSrc); });
}

/// dst := src, m by n.
template <class T>
__global__ void CopyMatrix_k(int m, int n, T* dst, int ldd, const T* src, int lds)
{
    forEachElement<velk::Map2D>(m, n, [&](int i, int j) { dst[offset(i, j, ldd)] = src[offset(i, j, lds)]; });
}

template <class T>
void CopySingle(T* dst, const T* src)
{
    platform::launch<&CopySingle_k<T>, Single>(dim3(1), dim3(1), dst, src);
}

template <class T>
void CopyComplexToReal(Real<T>* dst, const T* src)
{
    platform::launch<&CopyComplexToReal_k<T>, Single>(dim3(1), dim3(1), dst, src);
}

template <class T>
void CopyRealToComplex(T* dst, const Real<T>* src)
{
    platform::launch<&CopyRealToComplex_k<T>, Single>(dim3(1), dim3(1), dst, src);
}

template <class T>
void CopyVector(int n, T* dst, int incDst, const T* src, int incSrc)
{
    if (n > 0 && incDst > 0 && incSrc > 0)
        launchOnVector<&CopyVector_k<velk::Map1D, T>>(n, n, dst, incDst, src, incSrc);
}

template <class T>
void CopyVectorRealToComplex(int n, T* dst, int incDst, const Real<T>* src, int incSrc)
{
    if (n > 0 && incDst > 0 && incSrc > 0)
        launchOnVector<&CopyVectorRealToComplex_k<velk::Map1D, T>>(n, n, dst, incDst, src, incSrc);
}

template <class T>
void CopyMatrix(int m, int n, T* dst, int ldd, const T* src, int lds)
{
    if (m > 0 && n > 0)
        launchOnMatrix<&CopyMatrix_k<T>>(m, n, m, n, dst, ldd, src, lds);
}

#define TARN_COPY(T)                                                                                                   \
    template void CopySingle(T*, const T*);                                                                            \
    template void CopyRealToComplex(T*, const Real<T>*);                                                               \
    template void CopyVector(int, T*, int, const T*, int);                                                             \
    template void CopyVectorRealToComplex(int, T*, int, const Real<T>*, int);                                          \
    template void CopyMatrix(int, int, T*, int, const T*, int);

TARN_COPY(float)
TARN_COPY(double)
TARN_COPY(Complex<float>)
TARN_COPY(Complex<double>)
template void CopyComplexToReal(float*, const Complex<float>*);
template void CopyComplexToReal(double*, const Complex<double>*);

} // namespace tarn::kernel
