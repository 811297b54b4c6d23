// The arithmetic behind the benchmark's errors, and what comes of an unsound one.
#include "bench/problem.h"
#include "bench/trial.h"

#include "command_line.h"
#include "support/device.h"

#include <gtest/gtest.h>

#include <sstream>

/// In this program, in place of the library's: a trmm that does nothing.
extern "C" tarnStatus tarnStrmm(char, char, char, char, int, int, float, float*, int, float*, int)
{
    return tarnNoError;
}

namespace {

using namespace tarn::bench;
using Z = std::complex<double>;

TEST(Bench, ProductAgreesWithItsDefinition)
{
    const Matrix<Z> a = randomMatrix<Z>(5, 3, 1);
    for (const char op : {'N', 'T', 'C'}) {
        const bool plain = op == 'N';
        const auto x = tarn::tool::convert<Wide<Z>>(randomMatrix<Z>(plain ? 3 : 5, 2, 2));
        const Matrix<Wide<Z>> y = product(op, a, x, Wide<Z>(2, 1));
        for (int i = 0; i < y.rows; ++i) {
            for (int k = 0; k < y.cols; ++k) {
                Wide<Z> sum = 0;
                for (int j = 0; j < x.rows; ++j) {
                    const Wide<Z> element = plain ? Wide<Z>(a(i, j)) : Wide<Z>(a(j, i));
                    sum += (op == 'C' ? std::conj(element) : element) * x(j, k);
                }
                EXPECT_LT(std::abs(y(i, k) - Wide<Z>(2, 1) * sum), 1e-15) << op;
            }
        }
    }
}

TEST(Bench, ProbeSeesEveryEntry)
{
    for (const int wrong : {0, 7, 39}) {
        Matrix<float> e(50, 40);
        e(11, wrong) = -0.25f;
        EXPECT_EQ(normF(product('N', e, probe<float>(40))), 0.25);
    }
    const Matrix<float> e = randomMatrix<float>(300, 200, 1);
    const double estimate = normF(product('N', e, probe<float>(200)));
    EXPECT_NEAR(estimate / normF(e), 1, 0.2);
}

TEST(Bench, ExtrapolatesOperationsAndWaits)
{
    const auto flops = [](double n) { return n * n * n; };
    const auto seconds = [&](double n) { return 1e-10 * flops(n) + 1e-4 * n; };
    EXPECT_NEAR(extrapolated(flops(8000), {flops(500), flops(1000)}, {seconds(500), seconds(1000)}), 52, 1e-6);
    // What grew faster than the operations counts as operations; what did not grow does not make them free.
    EXPECT_NEAR(extrapolated(flops(8000), {flops(500), flops(1000)}, {0.001, 0.1}), 51.2, 1e-6);
    EXPECT_GT(extrapolated(flops(8000), {flops(500), flops(1000)}, {0.1, 0.1}), 51.2 / 8);
}

TEST(Bench, FailsWhereAnErrorIsUnsound)
{
    if (test::onEmulatedGpu)
        GTEST_SKIP() << "cuBLAS, which it measures beside, needs a GPU";
    const auto bench = [](const char* routine) {
        const char* arguments[] = {"tarn", "bench", "--size", "100", "--repeat", "1", "--routine", routine};
        testing::internal::CaptureStdout();
        const int status = tarn::tool::runTool(8, const_cast<char**>(arguments));
        return std::pair(status, testing::internal::GetCapturedStdout());
    };
    const auto [status, table] = bench("gesvd-nn,trmm");
    EXPECT_EQ(status, 1);
    std::istringstream lines(table);
    std::string heading, line;
    std::getline(lines, heading);
    for (const char* end : {"", "", " UNSOUND", ""}) { // host and device pointers of each
        std::getline(lines, line);
        EXPECT_EQ(line.size(), heading.size() + std::string(end).size()) << "the columns hold:\n" << table;
        EXPECT_EQ(line.substr(heading.size()), end) << table;
    }
    EXPECT_EQ(bench("trsm").first, 0);
}

TEST(Bench, NormsCarryNaN)
{
    Matrix<float> a = randomMatrix<float>(4, 4, 1);
    a(1, 2) = std::nanf("");
    EXPECT_TRUE(std::isnan(norm1(a)));
    EXPECT_TRUE(std::isnan(normF(a)));
}

} // namespace
