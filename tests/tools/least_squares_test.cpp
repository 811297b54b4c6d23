// Least squares on data from surveying: the library and the CPU LAPACK against double precision.
#include "curve_fit.h"
#include "failure.h"
#include "lapack.h"
#include "least_squares.h"
#include "matrix_market.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace {

using namespace tarn::tool;

class Survey : public testing::Test
{
protected:
    static Matrix<double> read(const std::string& file)
    {
        const char* const moved = std::getenv("TARN_DATA");
        return std::get<0>(readMatrixMarket((moved ? moved : TARN_DATA_FOLDER) + file));
    }

    /// norm2(x - y) / norm2(y) over the first rows of x.
    static double errorOf(const Matrix<float>& x, const Matrix<double>& y)
    {
        double sum = 0, scale = 0;
        for (int i = 0; i < y.rows; ++i) {
            sum += (x(i, 0) - y(i, 0)) * (x(i, 0) - y(i, 0));
            scale += y(i, 0) * y(i, 0);
        }
        return std::sqrt(sum / scale);
    }

    const Library library;
    const Matrix<double> a = read("/well1850.mtx"), b = read("/well1850_b.mtx");
};

template <class T>
Matrix<T> gels(FortranGels<T>* routine, const Matrix<double>& a, const Matrix<double>& b)
{
    Matrix<T> factors = convert<T>(a), x = convert<T>(b), solution(a.cols, 1);
    const int one = 1;
    int info = -1;
    withWorkspace<T>([&](T* work, const int* lwork) {
        routine("N", &a.rows, &a.cols, &one, factors.values.data(), &a.rows, x.values.data(), &x.rows, work, lwork,
                &info, 1);
    });
    EXPECT_EQ(info, 0);
    std::copy_n(x.column(0), a.cols, solution.column(0));
    return solution;
}

TEST_F(Survey, GelsIsAsGoodAsTheCpu)
{
    const Matrix<double> exact = gels<double>(dgels_, a, b);
    Matrix<float> factors = convert<float>(a), x = convert<float>(b);
    ASSERT_EQ(tarnSgels('N', a.rows, a.cols, 1, factors.values.data(), a.rows, x.values.data(), b.rows), tarnNoError);
    const double cpu = errorOf(gels<float>(sgels_, a, b), exact);
    EXPECT_LT(errorOf(x, exact), 1e-5);
    EXPECT_LT(errorOf(x, exact), 10 * cpu + 1e-6);
}

/// p of the observations, equally far apart, are to hold exactly.
template <class T, class Routine>
Matrix<T> gglse(const Matrix<double>& all, const Matrix<double>& values, int p, const Routine& routine)
{
    Matrix<T> a(all.rows - p, all.cols), b(p, all.cols), c(all.rows - p, 1), d(p, 1), x(all.cols, 1);
    for (int i = 0, step = all.rows / p, row = 0, constraint = 0; i < all.rows; ++i) {
        const bool exact = i % step == 0 && constraint < p;
        for (int j = 0; j < all.cols; ++j)
            (exact ? b(constraint, j) : a(row, j)) = T(all(i, j));
        (exact ? d(constraint++, 0) : c(row++, 0)) = T(values(i, 0));
    }
    EXPECT_EQ(routine(a, b, c, d, x), 0);
    return x;
}

template <class T>
auto cpuGglse(FortranGglse<T>* routine)
{
    return [routine](Matrix<T>& a, Matrix<T>& b, Matrix<T>& c, Matrix<T>& d, Matrix<T>& x) {
        int info = -1;
        withWorkspace<T>([&](T* work, const int* lwork) {
            routine(&a.rows, &a.cols, &b.rows, a.values.data(), &a.rows, b.values.data(), &b.rows, c.values.data(),
                    d.values.data(), x.values.data(), work, lwork, &info);
        });
        return info;
    };
}

TEST_F(Survey, GglseIsAsGoodAsTheCpu)
{
    for (const int p : {20, 110}) {
        const Matrix<double> exact = gglse<double>(a, b, p, cpuGglse<double>(dgglse_));
        const Matrix<float> cpu = gglse<float>(a, b, p, cpuGglse<float>(sgglse_));
        const Matrix<float> ours = gglse<float>(a, b, p, [](auto& a1, auto& b1, auto& c, auto& d, auto& x) {
            return tarnSgglse(a1.rows, a1.cols, b1.rows, a1.values.data(), a1.rows, b1.values.data(), b1.rows,
                              c.values.data(), d.values.data(), x.values.data());
        });
        EXPECT_LT(errorOf(ours, exact), 1e-5) << p;
        EXPECT_LT(errorOf(ours, exact), 10 * errorOf(cpu, exact) + 1e-6) << p;
    }
}

TEST(CurveFit, TheCurveIsInItsBasisAndTheNoiseIsWhatWasAskedFor)
{
    // Without noise the coefficients of f reproduce samples and given points; they fall by a factor of 1.22 each.
    const CurveFit smooth = noisySamples(400, 120, 5, 0);
    Matrix<double> x(120, 1);
    std::copy_n(gels<double>(dgels_, smooth.basis, smooth.samples).column(0), 120, x.column(0));
    EXPECT_LT(curveError(smooth, x), 1e-8);
    EXPECT_LT(deviation(smooth, x), 1e-8);
    const CurveFit noisy = noisySamples(4000, 1, 2, 0.05);
    double sum = 0;
    for (int i = 0; i < 4000; ++i)
        sum += (noisy.samples(i, 0) - noisy.exact(i, 0)) * (noisy.samples(i, 0) - noisy.exact(i, 0));
    EXPECT_NEAR(std::sqrt(sum / 4000), 0.05, 0.005);
    EXPECT_EQ(noisy.values(0, 0), 1.0 / 26);
    EXPECT_EQ(noisy.constraints(1, 0), 1);
}

/// Matrix of elements from -1 to 1, from a fixed seed.
Matrix<float> randomMatrix(int rows, int cols)
{
    Matrix<float> a(rows, cols);
    std::mt19937 engine(rows + cols);
    std::uniform_real_distribution<float> element(-1, 1);
    std::generate(a.values.begin(), a.values.end(), [&] { return element(engine); });
    return a;
}

/// What double precision makes of a problem has a small backward error, and the same times 1.001 a large one.
void expectToSeeAnErrorOfAThousandth(const Matrix<float>& a, const Matrix<float>& b)
{
    const Matrix<double> rhs = convert<double>(b);
    Matrix<double> padded(std::max(a.rows, a.cols), b.cols);
    std::copy_n(rhs.column(0), a.rows, padded.column(0));
    Matrix<float> x = convert<float>(gels<double>(dgels_, convert<double>(a), padded));
    EXPECT_LT(leastSquaresBackwardError(a, b, x), 1);
    for (float& element : x.values)
        element *= 1.001f;
    EXPECT_GT(leastSquaresBackwardError(a, b, x), 10);
    std::fill(x.values.begin(), x.values.end(), 0.f);
    EXPECT_GT(leastSquaresBackwardError(a, b, x), 10);
}

TEST_F(Survey, TheBackwardErrorSeesAThousandth)
{
    expectToSeeAnErrorOfAThousandth(convert<float>(a), convert<float>(b));
    for (const auto& [m, n] : {std::pair{20000, 20}, {300, 290}, {64, 64}, {20, 2000}})
        expectToSeeAnErrorOfAThousandth(randomMatrix(m, n), randomMatrix(m, 1));

    for (const int p : {20, 110}) {
        Matrix<float> equations, constraints, c, d;
        Matrix<float> x = convert<float>(gglse<double>(a, b, p, [&](auto& a1, auto& b1, auto& c1, auto& d1, auto& x1) {
            equations = convert<float>(a1), constraints = convert<float>(b1);
            c = convert<float>(c1), d = convert<float>(d1);
            return cpuGglse<double>(dgglse_)(a1, b1, c1, d1, x1);
        }));
        EXPECT_LT(constrainedBackwardError(equations, c, constraints, d, x), 1) << p;
        for (float& element : x.values)
            element *= 1.001f;
        EXPECT_GT(constrainedBackwardError(equations, c, constraints, d, x), 10) << p;
    }
}

/// The errors that the tool prints must see a wrong solution of each kind.
TEST(BackwardErrors, SeeWhatIsWrong)
{
    Matrix<float> tall(3, 2), wide(1, 2), b(3, 1), one(1, 1), x(2, 1);
    tall.values = {1, 1, 1, 0, 1, 2};
    b.values = {0, 3, 0};
    x.values = {1, 0};
    EXPECT_LT(leastSquaresBackwardError(tall, b, x), 1);
    x(1, 0) = 0.01f;
    EXPECT_GT(leastSquaresBackwardError(tall, b, x), 1000);

    wide.values = {1, 2};
    one.values = {5};
    x.values = {1, 2};
    EXPECT_LT(leastSquaresBackwardError(wide, one, x), 1);
    x.values = {5, 0}; // a solution, but not the shortest
    EXPECT_GT(leastSquaresBackwardError(wide, one, x), 1000);

    Matrix<float> first(1, 2);
    first.values = {1, 0};
    x.values = {5, -2.4f};
    EXPECT_LT(constrainedBackwardError(tall, b, first, one, x), 1);
    x(1, 0) = -2.3f;
    EXPECT_GT(constrainedBackwardError(tall, b, first, one, x), 1000);
    x.values = {5.1f, -2.46f};
    EXPECT_GT(constrainedBackwardError(tall, b, first, one, x), 1000);
}

} // namespace
