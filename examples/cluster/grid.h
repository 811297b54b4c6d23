// What a ScaLAPACK program needs around its calls: the process grid, and matrices dealt over it in square blocks.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <vector>

extern "C" {
void Cblacs_pinfo(int* rank, int* ranks);
void Cblacs_get(int context, int what, int* value);
void Cblacs_gridinit(int* context, const char* order, int rows, int cols);
void Cblacs_gridinfo(int context, int* rows, int* cols, int* row, int* col);
void Cblacs_gridexit(int context);
void Cblacs_exit(int keepMpi);
int numroc_(const int* n, const int* block, const int* me, const int* first, const int* processes);
void descinit_(int* descriptor, const int* m, const int* n, const int* mb, const int* nb, const int* firstRow,
               const int* firstCol, const int* context, const int* ld, int* info);
}

/// Ends the program, on all ranks, as mpirun sees to.
[[noreturn]] inline void fail(const char* what, int info = 0)
{
    std::fprintf(stderr, "%s (info %d)\n", what, info);
    std::exit(1);
}

/// The processes of this run, arranged as rows x cols, as square as their number allows.
class Grid
{
public:
    Grid()
    {
        Cblacs_pinfo(&rank, &ranks);
        for (rows = int(std::sqrt(double(ranks))); ranks % rows != 0; --rows) {
        }
        cols = ranks / rows;
        Cblacs_get(-1, 0, &context);
        Cblacs_gridinit(&context, "Row", rows, cols);
        Cblacs_gridinfo(context, &rows, &cols, &row, &col);
    }
    ~Grid()
    {
        Cblacs_gridexit(context);
        Cblacs_exit(0);
    }
    Grid(const Grid&) = delete;
    Grid& operator=(const Grid&) = delete;

    bool isFirst() const { return rank == 0; }

    int rank, ranks, context, rows, cols, row, col;
};

/// An m by n matrix in blocks of that order, dealt cyclically over the rows and columns of the grid. Each process holds
/// its blocks as one matrix, stored by columns.
class Distributed
{
public:
    Distributed(const Grid& grid, int rows, int cols, int blockOrder)
        : m(rows), n(cols), grid_(grid), block_(blockOrder)
    {
        const int first = 0;
        localRows_ = numroc_(&m, &block_, &grid.row, &first, &grid.rows);
        localCols_ = numroc_(&n, &block_, &grid.col, &first, &grid.cols);
        const int ld = std::max(1, localRows_);
        int info = 0;
        descinit_(descriptor.data(), &m, &n, &block_, &block_, &first, &first, &grid.context, &ld, &info);
        if (info != 0)
            fail("descinit", info);
        elements.resize(std::size_t(ld) * std::size_t(std::max(1, localCols_)));
    }

    /// Sets each element (i, j) that this process holds, both from 0, to value(i, j).
    template <class Value>
    void fill(const Value& value)
    {
        each([&](int i, int j, float& x) { x = value(i, j); });
    }

    /// Calls visit(i, j, element) for each element that this process holds.
    template <class Visit>
    void each(const Visit& visit)
    {
        for (int j = 0; j < localCols_; ++j)
            for (int i = 0; i < localRows_; ++i)
                visit(whole(i, grid_.row, grid_.rows), whole(j, grid_.col, grid_.cols),
                      elements[std::size_t(j) * std::size_t(std::max(1, localRows_)) + std::size_t(i)]);
    }

    float* data() { return elements.data(); }

    int m, n;
    std::array<int, 9> descriptor{};
    std::vector<float> elements;

private:
    /// The index in the whole matrix of a local index.
    int whole(int local, int me, int processes) const
    {
        return (local / block_ * processes + me) * block_ + local % block_;
    }

    const Grid& grid_;
    int block_, localRows_ = 0, localCols_ = 0;
};
