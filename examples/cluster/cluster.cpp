// Linear systems, least squares and singular values over many processes with ScaLAPACK, which computes with each
// process' own BLAS and LAPACK. Under `tarn run` these calls go to the device of the process:
//
//   tarn run --report -- mpirun -n 4 cluster gesv A.mtx
//   tarn run --report -- mpirun -n 4 cluster gesv --random 2000
#include "matrix.h"

#include <chrono>
#include <functional>

using Int = const int*;

extern "C" {
void psgesv_(Int n, Int nrhs, float* a, Int ia, Int ja, Int desca, int* ipiv, float* b, Int ib, Int jb, Int descb,
             int* info);
void psgels_(const char* trans, Int m, Int n, Int nrhs, float* a, Int ia, Int ja, Int desca, float* b, Int ib, Int jb,
             Int descb, float* work, Int lwork, int* info, std::size_t);
void psgesvd_(const char* jobu, const char* jobvt, Int m, Int n, float* a, Int ia, Int ja, Int desca, float* s,
              float* u, Int iu, Int ju, Int descu, float* vt, Int ivt, Int jvt, Int descvt, float* work, Int lwork,
              int* info, std::size_t, std::size_t);
void psgemm_(const char* transa, const char* transb, Int m, Int n, Int k, const float* alpha, const float* a, Int ia,
             Int ja, Int desca, const float* b, Int ib, Int jb, Int descb, const float* beta, float* c, Int ic, Int jc,
             Int descc, std::size_t, std::size_t);
float pslange_(const char* norm, Int m, Int n, const float* a, Int ia, Int ja, Int desca, float* work, std::size_t);
}

namespace {

constexpr int one = 1;
constexpr double eps = 0x1p-23;

/// Frobenius norm of the first `rows` rows.
double norm(Distributed& a, int rows)
{
    float unused = 0;
    return pslange_("F", &rows, &a.n, a.data(), &one, &one, a.descriptor.data(), &unused, 1);
}
double norm(Distributed& a) { return norm(a, a.m); }

/// C := alpha op(A) B + beta C; op is "N" or "T". Of B as many rows count as the product has terms.
void multiply(float alpha, char op, Distributed& a, Distributed& b, float beta, Distributed& c)
{
    const int m = op == 'N' ? a.m : a.n, k = op == 'N' ? a.n : a.m;
    psgemm_(&op, "N", &m, &c.n, &k, &alpha, a.data(), &one, &one, a.descriptor.data(), b.data(), &one, &one,
            b.descriptor.data(), &beta, c.data(), &one, &one, c.descriptor.data(), 1, 1);
}

/// Calls routine(work, lwork), which returns info, first for the length of the workspace that it wants.
void withWorkspace(const char* name, const std::function<int(float*, int)>& routine)
{
    float wanted[2] = {};
    int info = routine(wanted, -1);
    const int lwork = int(wanted[0]) + 1;
    std::vector<float> work(std::size_t(std::max(1, lwork)));
    if (info == 0)
        info = routine(work.data(), lwork);
    if (info != 0)
        fail(name, info);
}

/// A problem and what its solution needs.
struct Problem
{
    const Grid& grid;
    const Whole& matrix;
    int block;

    Distributed distribute(int m, int n) const { return {grid, m, n, block}; }

    Distributed A() const
    {
        Distributed a = distribute(matrix.m, matrix.n);
        a.fill([&](int i, int j) { return matrix(i, j); });
        return a;
    }

    /// A times a vector of ones, and something that A cannot reach where it has more rows than columns.
    Distributed B() const
    {
        Distributed b = distribute(matrix.m, 1);
        b.fill([&](int i, int) {
            double sum = 0;
            for (int j = 0; j < matrix.n; ++j)
                sum += matrix(i, j);
            return float(sum) + (matrix.m > matrix.n ? scattered(std::uint64_t(i), 1) : 0);
        });
        return b;
    }
};

/// norm(B - A X) / (n norm(A) norm(X) eps)
double gesv(const Problem& problem)
{
    Distributed a = problem.A(), x = problem.B();
    if (a.m != a.n)
        fail("gesv wants a square matrix");
    std::vector<int> pivots(a.elements.size() + std::size_t(problem.block));
    int info = 0;
    psgesv_(&a.n, &one, a.data(), &one, &one, a.descriptor.data(), pivots.data(), x.data(), &one, &one,
            x.descriptor.data(), &info);
    if (info != 0)
        fail("psgesv", info);
    Distributed original = problem.A(), r = problem.B();
    multiply(-1, 'N', original, x, 1, r);
    return norm(r) / (a.n * norm(original) * norm(x) * eps);
}

/// norm(A^T R) / (norm(A) norm(R) eps), R = B - A X
double gels(const Problem& problem)
{
    Distributed a = problem.A(), x = problem.B();
    if (a.m <= a.n)
        fail("gels wants more rows than columns");
    withWorkspace("psgels", [&](float* work, int lwork) {
        int info = 0;
        psgels_("N", &a.m, &a.n, &one, a.data(), &one, &one, a.descriptor.data(), x.data(), &one, &one,
                x.descriptor.data(), work, &lwork, &info, 1);
        return info;
    });
    Distributed original = problem.A(), r = problem.B(), gradient = problem.distribute(a.n, 1);
    multiply(-1, 'N', original, x, 1, r);
    multiply(1, 'T', original, r, 0, gradient);
    return norm(gradient) / (norm(original) * norm(r) * eps);
}

/// norm(A - U S V^T) / (max(m, n) norm(A) eps)
double gesvd(const Problem& problem)
{
    Distributed a = problem.A();
    const int k = std::min(a.m, a.n);
    Distributed u = problem.distribute(a.m, k), vt = problem.distribute(k, a.n);
    std::vector<float> s(static_cast<std::size_t>(k));
    withWorkspace("psgesvd", [&](float* work, int lwork) {
        int info = 0;
        psgesvd_("V", "V", &a.m, &a.n, a.data(), &one, &one, a.descriptor.data(), s.data(), u.data(), &one, &one,
                 u.descriptor.data(), vt.data(), &one, &one, vt.descriptor.data(), work, &lwork, &info, 1, 1);
        return info;
    });
    u.each([&](int, int j, float& x) { x *= s[std::size_t(j)]; });
    Distributed r = problem.A();
    const double size = norm(r);
    multiply(-1, 'N', u, vt, 1, r);
    return norm(r) / (std::max(a.m, a.n) * size * eps);
}

struct Routine
{
    const char* name;
    double (*solve)(const Problem&);
    double bound; ///< of a sound error
};
constexpr Routine routines[] = {{"gesv", gesv, 30}, {"gels", gels, 10}, {"gesvd", gesvd, 30}};

[[noreturn]] void usage() { fail("Usage: cluster gesv|gels|gesvd FILE.mtx|--random N [block order, else 192]"); }

} // namespace

int main(int argc, char** argv)
{
    const Grid grid;
    if (argc < 3)
        usage();
    const bool isRandom = std::strcmp(argv[2], "--random") == 0;
    const int blockAt = isRandom ? 4 : 3;
    const int block = argc > blockAt ? std::atoi(argv[blockAt]) : 192;
    if ((isRandom && argc < 4) || block < 1)
        usage();
    const Whole matrix = isRandom ? randomMatrix(std::atoi(argv[3])) : readMatrixMarket(argv[2]);
    for (const Routine& routine : routines) {
        if (std::strcmp(routine.name, argv[1]) != 0)
            continue;
        const auto start = std::chrono::steady_clock::now();
        const double error = routine.solve({grid, matrix, block});
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        if (grid.isFirst())
            std::printf("%s of %d x %d on %d x %d ranks, blocks of %d: error %.3g (sound up to %g), %.2f s\n", argv[1],
                        matrix.m, matrix.n, grid.rows, grid.cols, block, error, routine.bound, elapsed.count());
        return error <= routine.bound ? 0 : 1;
    }
    usage();
}
