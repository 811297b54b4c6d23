// Non-owning views with one-based addressing, the indices in which LAPACK's algorithms are written.
#pragma once

#include <cstdint>

/// A rows by cols column-major matrix with leading dimension ld, on host or device.
template <class T>
struct MatrixView
{
    T* data;
    int rows;
    int cols;
    int ld;

    /// Address of element (i, j), one-based.
    T* at(int i, int j) const { return data + (i - 1) + std::int64_t(j - 1) * ld; }
};

/// A contiguous vector of n elements, on host or device.
template <class T>
struct VectorView
{
    T* data;
    int n;

    /// Address of element i, one-based.
    T* at(int i) const { return data + (i - 1); }
};
