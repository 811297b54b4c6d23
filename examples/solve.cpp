// Solves three equations by the C++ interface, and shows what becomes of a system that has no solution.
#include <tarn.hpp>

#include <cstdio>
#include <exception>
#include <vector>

namespace {

void solve(std::vector<float> a)
{
    // Column by column:  2x +  y -  z =  8,  -3x -  y + 2z = -11,  -2x +  y + 2z = -3
    std::vector<float> b = {8, -11, -3};
    std::vector<int> pivots(b.size());
    const int n = int(b.size());

    tarn::gesv(tarn::MatrixView(a.data(), n, n), {pivots.data(), n}, {b.data(), n, 1});
    std::printf("x = %.4f, y = %.4f, z = %.4f\n", b[0], b[1], b[2]);
}

} // namespace

int main()
try {
    const tarn::Session session;
    solve({2, -3, -2, 1, -1, 1, -1, 2, 2});
    try {
        solve({1, 2, 3, 2, 4, 6, 0, 0, 1}); // the second column is twice the first
    } catch (const tarn::Error& error) {
        if (error.status() != tarnDataError)
            throw;
        std::printf("singular: pivot %d is zero\n", int(error.info()));
    }
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
