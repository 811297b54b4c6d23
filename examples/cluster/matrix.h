// Where the matrix comes from. Every rank reads the file, or computes the elements, and keeps its own.
#pragma once

#include "grid.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

/// A whole real matrix, by columns.
struct Whole
{
    int m = 0, n = 0;
    std::vector<float> elements;

    float& operator()(int i, int j) { return elements[std::size_t(j) * std::size_t(m) + std::size_t(i)]; }
    float operator()(int i, int j) const { return elements[std::size_t(j) * std::size_t(m) + std::size_t(i)]; }
};

/// A number in [-1, 1) that depends on (i, j) alone.
inline float scattered(std::uint64_t i, std::uint64_t j)
{
    std::uint64_t x = (i << 32 | j) + 0x9e3779b97f4a7c15;
    x = (x ^ x >> 30) * 0xbf58476d1ce4e5b9;
    x = (x ^ x >> 27) * 0x94d049bb133111eb;
    return float(std::int32_t((x ^ x >> 31) >> 32)) * 0x1p-31f;
}

inline Whole randomMatrix(int n)
{
    Whole a{n, n, std::vector<float>(std::size_t(n) * std::size_t(n))};
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            a(i, j) = scattered(std::uint64_t(i), std::uint64_t(j));
    return a;
}

/// Reads a real general Matrix Market file in coordinate format.
inline Whole readMatrixMarket(const std::string& name)
{
    std::ifstream file(name);
    std::string line;
    if (!std::getline(file, line) || line.rfind("%%MatrixMarket matrix coordinate real general", 0) != 0)
        fail((name + " is no real general Matrix Market file in coordinate format").c_str());
    while (std::getline(file, line) && line[0] == '%') {
    }
    Whole a;
    long entries = 0;
    std::istringstream(line) >> a.m >> a.n >> entries;
    a.elements.resize(std::size_t(a.m) * std::size_t(a.n));
    int i = 0, j = 0;
    float value = 0;
    for (; entries > 0 && file >> i >> j >> value; --entries) {
        if (i < 1 || i > a.m || j < 1 || j > a.n)
            fail((name + " has an entry outside of its matrix").c_str());
        a(i - 1, j - 1) += value;
    }
    if (entries != 0)
        fail((name + " ends too early").c_str());
    return a;
}
