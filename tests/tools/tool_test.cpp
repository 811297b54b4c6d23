// Runs the tool as a user does.
#include "cpu_blas.h"
#include "matrix_market.h"
#include "scratch.h"
#include "support/device.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <sstream>

namespace {

class Tool : public testing::Test
{
protected:
    struct Run
    {
        int status;
        std::string out, err;

        bool hasOneErrorLine() const
        {
            return err.compare(0, 6, "tarn: ") == 0 && std::count(err.begin(), err.end(), '\n') == 1 &&
                   err.back() == '\n';
        }
    };

    /// Runs the tool; environment is what stands before the command: "env NAME=value".
    Run run(const std::string& arguments, const std::string& environment = "") const
    {
        const std::string command =
            environment + " " TARN_TOOL " " + arguments + " >" + scratch.path("out") + " 2>" + scratch.path("err");
        const int raw = std::system(command.c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, scratch.read("out"), scratch.read("err")};
    }

    /// Expects a failure of one line that holds the cause.
    void expectFailure(const std::string& arguments, const std::string& cause, int status = 1) const
    {
        const Run result = run(arguments);
        EXPECT_EQ(result.status, status) << arguments;
        EXPECT_TRUE(result.hasOneErrorLine()) << result.err;
        EXPECT_NE(result.err.find(cause), std::string::npos) << result.err;
    }

    std::string matrix(const std::string& name, const std::string& header, const std::string& body) const
    {
        return scratch.write(name, "%%MatrixMarket matrix " + header + "\n" + body);
    }

    const test::Scratch scratch;
};

TEST_F(Tool, WarnsOfSlowCpuKernelsThatItWouldNotChoose)
{
    if (!tarn::tool::cpuBlas().switchable || tarn::tool::betterCore("Prescott").empty())
        GTEST_SKIP() << "this CPU or its BLAS has one kind of kernels only";
    const Run chosen = run("info", "env -u OPENBLAS_CORETYPE"), forced = run("info", "env OPENBLAS_CORETYPE=Prescott");
    EXPECT_EQ(chosen.status, 0) << chosen.err;
    EXPECT_EQ(chosen.out.find("warning:"), std::string::npos) << chosen.out;
    EXPECT_NE(forced.out.find("\nwarning: the CPU BLAS uses kernels for 'Prescott'"), std::string::npos) << forced.out;
}

TEST_F(Tool, SolvesAndWritesTheSolution)
{
    const std::string a = matrix("a.mtx", "coordinate real general", "2 2 3\n1 1 2\n2 1 1\n2 2 4\n");
    const std::string b = matrix("b.mtx", "array real general", "2 2\n2\n9\n0\n8\n");
    const std::string x = "%%MatrixMarket matrix array ";

    EXPECT_EQ(run("solve " + a + " --rhs " + b + " --out " + scratch.path("x.mtx")).status, 0);
    EXPECT_EQ(scratch.read("x.mtx"), x + "real general\n2 2\n1\n2\n0\n2\n");
    EXPECT_EQ(run("solve " + a + " --complex --out " + scratch.path("x.mtx")).status, 0);
    EXPECT_EQ(scratch.read("x.mtx"), x + "complex general\n2 1\n1 0\n1 0\n") << "without B the solution is all ones";

    const std::string z = matrix("z.mtx", "coordinate complex hermitian", "2 2 3\n1 1 2 0\n2 1 0 1\n2 2 2 0\n");
    const Run run_z = run("solve " + z + " --rhs " + b + " --json");
    ASSERT_EQ(run_z.status, 0) << run_z.err;
    const nlohmann::json report = nlohmann::json::parse(run_z.out);
    EXPECT_EQ(report["type"], "c");
    EXPECT_EQ(report["n"], 2);
    EXPECT_EQ(report["nrhs"], 2);
    EXPECT_GT(report["seconds"], 0);
    EXPECT_LT(report["backward_error"], 30);
}

TEST_F(Tool, SolvesARealProblem)
{
    const Run result = run("solve " TARN_DATA "/utm300.mtx --rhs " TARN_DATA "/utm300_b.mtx --json");
    ASSERT_EQ(result.status, 0) << result.err;
    const nlohmann::json report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report["n"], 300);
    EXPECT_LT(report["backward_error"], 30);
}

TEST_F(Tool, TellsHowFarASolutionCanBeTrusted)
{
    const auto report = [&](const std::string& arguments, bool warns) {
        const Run result = run(arguments + " --json");
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err.find("singular to single precision") != std::string::npos, warns) << result.err;
        return nlohmann::json::parse(result.out);
    };
    // diag(1, 1e-3) and its first column twice: condition 1000, and singular but for rounding.
    const std::string diagonal = matrix("d.mtx", "coordinate real general", "2 2 2\n1 1 1\n2 2 1e-3\n");
    const std::string b = matrix("b.mtx", "array real general", "2 1\n1\n1\n");
    const nlohmann::json known = report("solve " + diagonal, false);
    EXPECT_NEAR(known["rcond"], 1e-3, 1e-9);
    EXPECT_LT(known["forward_error"], 1e-3);
    EXPECT_FALSE(report("solve " + diagonal + " --rhs " + b, false).contains("forward_error"));
    EXPECT_NEAR(report("solve --complex " + diagonal, false)["rcond"], 1e-3, 1e-9);
    EXPECT_NEAR(report("lstsq " + diagonal, false)["rcond"], 1e-3, 1e-9);

    std::string hilbert = "12 12\n";
    for (int i = 0; i < 144; ++i)
        hilbert += std::to_string(1.0 / (i / 12 + i % 12 + 1)) + "\n";
    const nlohmann::json worthless = report("solve --single " + matrix("h.mtx", "array real general", hilbert), true);
    EXPECT_LT(worthless["backward_error"], 30) << "which says nothing about the digits";
    EXPECT_GT(worthless["forward_error"], 0.01);
    // The third column is the sum of the others; six rows, and the same as a problem of least norm.
    const std::string tall = "6 3\n1\n2\n3\n4\n5\n6\n.3\n.1\n.7\n.2\n.9\n.4\n1.3\n2.1\n3.7\n4.2\n5.9\n6.4\n";
    report("lstsq " + matrix("t.mtx", "array real general", tall), true);
    const std::string text = run("lstsq " + scratch.path("t.mtx")).out;
    EXPECT_NE(text.find("\ncondition       "), std::string::npos) << text;
}

TEST_F(Tool, SolvesInDoublePrecisionWhereSingleIsNotEnough)
{
    const auto report = [&](const std::string& arguments) {
        const Run result = run("solve --json " + arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        return nlohmann::json::parse(result.out);
    };
    const nlohmann::json chosen = report(TARN_DATA "/utm300.mtx");
    EXPECT_EQ(chosen["type"], "d") << "its condition is 1.5e6";
    EXPECT_GT(chosen["iter"], 0);
    EXPECT_LT(chosen["forward_error"], 1e-9);
    EXPECT_EQ(report(TARN_DATA "/utm300.mtx --complex")["type"], "z");
    const nlohmann::json single = report("--single " TARN_DATA "/utm300.mtx");
    EXPECT_EQ(single["type"], "s");
    EXPECT_FALSE(single.contains("iter"));

    // Condition 3 needs no more than asked for; a third has 17 digits.
    const std::string three = matrix("three.mtx", "array real general", "2 2\n3\n0\n0\n1\n");
    const std::string b = matrix("b.mtx", "array real general", "2 1\n1\n1\n");
    EXPECT_EQ(report(three)["type"], "s");
    EXPECT_EQ(report("--refine " + three + " --rhs " + b + " --out " + scratch.path("x.mtx"))["iter"], -1);
    EXPECT_EQ(scratch.read("x.mtx"), "%%MatrixMarket matrix array real general\n2 1\n0.33333333333333331\n1\n");
    // Condition 1e5, but of values that single precision holds.
    const std::string exact = matrix("exact.mtx", "array real general", "2 2\n131072\n0\n0\n1\n");
    EXPECT_EQ(report(exact)["type"], "s");
    // Singular in single precision; in double as well.
    EXPECT_LT(report(matrix("close.mtx", "array real general", "2 2\n1\n1\n1\n1.000000001\n"))["forward_error"], 1e-6);
    const std::string close = matrix("closer.mtx", "array real general", "2 2\n1\n1\n1\n1.0000000000000002\n");
    EXPECT_NE(run("solve " + close).err.find("singular to double precision"), std::string::npos);
    expectFailure("solve --refine " + matrix("zero.mtx", "array real general", "2 2\n1\n2\n2\n4\n"),
                  "zero.mtx: the matrix is singular: U(2, 2)");
}

TEST_F(Tool, RefusesBadSystemsInOneLine)
{
    const std::string square = matrix("a.mtx", "array real general", "2 2\n1\n0\n0\n1\n");
    const std::string wide = matrix("wide.mtx", "array real general", "1 2\n1\n2\n");
    const std::string singular = matrix("zero.mtx", "array real general", "2 2\n1\n2\n2\n4\n");
    const std::string broken = matrix("broken.mtx", "array real general", "2 2\n1\nx\n0\n1\n");
    const std::string huge = matrix("huge.mtx", "array real general", "1 1\n1e300\n");
    expectFailure("solve " + scratch.path("none.mtx"), "none.mtx: No such file");
    expectFailure("solve " + broken, "broken.mtx:4: the value is 'x'");
    expectFailure("solve " + wide, "wide.mtx: the matrix is 1 x 2, not square");
    expectFailure("solve " + square + " --rhs " + wide, "wide.mtx: the right-hand side has 1 rows");
    expectFailure("solve " + singular, "zero.mtx: the matrix is singular: U(2, 2)");
    expectFailure("solve --json " + singular, "zero.mtx: the matrix is singular: U(2, 2)");
    expectFailure("solve " + huge, "huge.mtx: entry (1, 1) is too large for single precision");
    expectFailure("solve " + square + " --rhs " + matrix("empty.mtx", "array real general", "2 0\n"),
                  "empty.mtx: the right-hand side has no columns");
    expectFailure("demo --data " + scratch.path("none"), "none/utm300.mtx: No such file");
}

TEST_F(Tool, WritesFilesAsAWholeOrNotAtAll)
{
    const std::string a = matrix("a.mtx", "array real general", "1 1\n4.0D0\n");
    const std::string singular = matrix("zero.mtx", "array real general", "1 1\n0\n");
    const std::string x = "%%MatrixMarket matrix array real general\n1 1\n1\n", kept = scratch.write("kept.mtx", "old");
    expectFailure("solve " + singular + " --out " + kept, "the matrix is singular");
    EXPECT_EQ(scratch.read("kept.mtx"), "old");
    std::filesystem::create_symlink("kept.mtx", scratch.path("link.mtx"));
    EXPECT_EQ(run("solve " + a + " --out " + scratch.path("link.mtx")).status, 0);
    EXPECT_EQ(scratch.read("kept.mtx"), x);
    EXPECT_TRUE(std::filesystem::is_symlink(scratch.path("link.mtx")));
    EXPECT_EQ(run("solve " + a + " --out " + scratch.path("x.mtx.gz")).status, 0);
    EXPECT_EQ(scratch.read("x.mtx.gz").substr(0, 2), "\x1f\x8b");
    EXPECT_EQ(std::get<0>(tarn::tool::readMatrixMarket(scratch.path("x.mtx.gz")))(0, 0), 1);
    for (const auto& entry : std::filesystem::directory_iterator(scratch.path("")))
        EXPECT_NE(entry.path().filename().string()[0], '.') << entry << " is left";

    const Run piped = run("solve " + a + " --out -");
    EXPECT_EQ(piped.out, x);
    EXPECT_NE(piped.err.find("backward error"), std::string::npos) << piped.err;
    const Run redirected = run("solve " + a + " --out /dev/stdout");
    EXPECT_EQ(redirected.out, x) << "into a file that is not replaced under the shell";

    // Before the matrix is read, so before any work.
    expectFailure("solve none.mtx --out " + scratch.path("no/x.mtx"), "no/x.mtx: No such file");
    expectFailure("lstsq none.mtx --out " + scratch.path(""), "/: Is a directory");
    expectFailure("svd none.mtx --plot " + scratch.path("no/s.svg"), "no/s.svg: No such file");
    expectFailure("svd none.mtx --plot - --rank 1 --out -", "cannot both go to -", 2);
    expectFailure("svd none.mtx --plot s.png", "s.png is not the name of an SVG file", 2);
    expectFailure("solve " + a + " --out /dev/full", "/dev/full: No space left");
    EXPECT_EQ(std::system((TARN_TOOL " info >/dev/full 2>" + scratch.path("err")).c_str()), 256);
    EXPECT_EQ(scratch.read("err"), "tarn: standard output: No space left on device\n");

    const Run named = run("solve --json " + scratch.write("\xff.mtx", scratch.read("a.mtx")));
    EXPECT_NE(std::string(nlohmann::json::parse(named.out)["matrix"]).find("\ufffd.mtx"), std::string::npos);
}

TEST_F(Tool, SolvesLeastSquaresProblems)
{
    const std::string x = "%%MatrixMarket matrix array ", out = " --out " + scratch.path("x.mtx");
    // The points (0, 1), (1, 3), (2, 5) lie on a line; (0, 0), (1, 3), (2, 0) are off theirs by -1, 2, -1.
    const std::string line = matrix("line.mtx", "array real general", "3 2\n1\n1\n1\n0\n1\n2\n");
    const std::string points = matrix("points.mtx", "array real general", "3 2\n1\n3\n5\n0\n3\n0\n");
    const Run fit = run("lstsq " + line + " --rhs " + points + " --json" + out);
    ASSERT_EQ(fit.status, 0) << fit.err;
    const nlohmann::json report = nlohmann::json::parse(fit.out);
    EXPECT_EQ(report["routine"], "gels");
    EXPECT_EQ(report["m"], 3);
    EXPECT_EQ(report["n"], 2);
    EXPECT_EQ(report["nrhs"], 2);
    EXPECT_NEAR(report["residual"], std::sqrt(6.0), 1e-5);
    EXPECT_LT(report["backward_error"], 30);

    // Of all x with x1 + 2 x2 = 5 the shortest; without a right-hand side x1 + 2 x2 = 3.
    const std::string plane = matrix("plane.mtx", "array real general", "1 2\n1\n2\n");
    const std::string five = matrix("five.mtx", "array real general", "1 1\n5\n");
    EXPECT_EQ(run("lstsq " + plane + " --rhs " + five + out).status, 0);
    const tarn::tool::AnyMatrix shortest = tarn::tool::readMatrixMarket(scratch.path("x.mtx"));
    EXPECT_NEAR(std::get<0>(shortest)(0, 0), 1, 1e-6);
    EXPECT_NEAR(std::get<0>(shortest)(1, 0), 2, 1e-6);
    EXPECT_EQ(run("lstsq " + line + " --complex" + out).status, 0);
    EXPECT_EQ(scratch.read("x.mtx").rfind(x + "complex general\n2 1\n", 0), 0u);

    // Of the lines through (0, 5) the one that comes closest to (0, 0), (1, 3), (2, 0).
    const std::string bump = matrix("bump.mtx", "array real general", "3 1\n0\n3\n0\n");
    const std::string intercept = matrix("intercept.mtx", "coordinate real general", "1 2 1\n1 1 1\n");
    const Run bound = run("lstsq " + line + " --rhs " + bump + " --constraints " + intercept + " --constraint-rhs " +
                          five + " --json" + out);
    ASSERT_EQ(bound.status, 0) << bound.err;
    const nlohmann::json constrained = nlohmann::json::parse(bound.out);
    EXPECT_EQ(constrained["routine"], "gglse");
    EXPECT_EQ(constrained["p"], 1);
    EXPECT_LT(constrained["constraint_residual"], 1e-5);
    EXPECT_LT(constrained["backward_error"], 30);
    const tarn::tool::AnyMatrix through = tarn::tool::readMatrixMarket(scratch.path("x.mtx"));
    EXPECT_NEAR(std::get<0>(through)(0, 0), 5, 1e-5);
    EXPECT_NEAR(std::get<0>(through)(1, 0), -2.4, 1e-5); // sum t (y - 5) / sum t^2 = (-2 - 10) / 5

    const Run noEquations = run("lstsq " + matrix("none.mtx", "coordinate real general", "0 1 0\n") +
                                " --constraints " + five + " --constraint-rhs " + five + out);
    EXPECT_EQ(noEquations.status, 0) << noEquations.err;
    EXPECT_EQ(scratch.read("x.mtx"), x + "real general\n1 1\n1\n");
}

TEST_F(Tool, RefusesBadLeastSquaresProblemsInOneLine)
{
    const std::string tall = matrix("tall.mtx", "array real general", "3 2\n1\n1\n1\n0\n0\n0\n");
    const std::string wide = matrix("wide.mtx", "array real general", "1 2\n1\n2\n");
    const std::string row = matrix("row.mtx", "array real general", "2 3\n1\n2\n0\n0\n0\n0\n");
    const std::string one = matrix("one.mtx", "array real general", "1 1\n5\n");
    const std::string pair = matrix("pair.mtx", "array real general", "2 1\n5\n6\n");
    const auto constrained = [](const std::string& a, const std::string& b, const std::string& d) {
        return "lstsq " + a + " --constraints " + b + " --constraint-rhs " + d;
    };
    expectFailure("lstsq " + scratch.path("none.mtx"), "none.mtx: No such file");
    expectFailure("lstsq " + tall, "tall.mtx: the matrix has not full rank: R(2, 2) of its QR factorisation is zero");
    expectFailure("lstsq " + row, "row.mtx: the matrix has not full rank: L(2, 2) of its LQ factorisation is zero");
    expectFailure("lstsq " + tall + " --rhs " + wide, "wide.mtx: the right-hand side has 1 rows, but the matrix has 3");
    expectFailure("lstsq " + tall + " --constraints " + wide, "--constraint-rhs", 2);
    expectFailure(constrained(tall, row, pair), "row.mtx: the constraints have 3 columns, but the matrix has 2");
    expectFailure(constrained(tall, wide, pair), "pair.mtx: the matrix is 2 x 1, but 1 constraint takes 1 x 1");
    expectFailure(constrained(tall, wide, one) + " --rhs " + tall,
                  "tall.mtx: with constraints there is one right-hand");
    expectFailure(constrained(wide, tall, matrix("d.mtx", "array real general", "3 1\n1\n1\n1\n")),
                  "tall.mtx: 3 constraints on 2 unknowns are too many");
    expectFailure(constrained(row, matrix("zero.mtx", "array real general", "1 3\n0\n0\n0\n"), one),
                  "zero.mtx: the constraints are linearly dependent");
    expectFailure(constrained(tall, matrix("first.mtx", "array real general", "1 2\n1\n0\n"), one),
                  "tall.mtx: the equations and the constraints do not determine the unknowns");
    expectFailure(constrained(matrix("flat.mtx", "array real general", "1 3\n1\n1\n1\n"),
                              matrix("c.mtx", "array real general", "1 3\n1\n1\n1\n"), one),
                  "flat.mtx: 1 equation and 1 constraint do not determine 3 unknowns");
}

TEST_F(Tool, DecomposesAMatrixAndFindsTheNearestOfARank)
{
    // diag(4, 2, 1) with its rows permuted, and a row of zeros below.
    const std::string a = matrix("a.mtx", "coordinate real general", "4 3 3\n1 2 2\n2 1 -4\n3 3 1\n");
    const std::string out = " --out " + scratch.path("b.mtx"), plot = " --plot " + scratch.path("s.svg");
    const Run values = run("svd " + a + " --json" + plot),
              vectors = run("svd " + a + " --rank 2 --json --complex" + out);
    ASSERT_EQ(values.status, 0) << values.err;
    ASSERT_EQ(vectors.status, 0) << vectors.err;
    for (const Run& result : {values, vectors}) {
        const nlohmann::json report = nlohmann::json::parse(result.out);
        const std::vector<double> s = report["singular_values"], expected = {4, 2, 1};
        ASSERT_EQ(s.size(), 3u);
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(s[i], expected[i], 1e-5);
        EXPECT_NEAR(report["condition"], 4, 1e-5);
        EXPECT_EQ(report["rank"], 3);
    }
    const nlohmann::json report = nlohmann::json::parse(vectors.out);
    EXPECT_NEAR(report["approximation_error"], 1, 1e-5) << "the value that is left out";
    EXPECT_LT(report["backward_error"], 30);
    EXPECT_LT(report["orthogonality"], 30);
    const auto nearest = std::get<1>(tarn::tool::readMatrixMarket(scratch.path("b.mtx")));
    EXPECT_NEAR(std::abs(nearest(1, 0) + 4.0), 0, 1e-5);
    EXPECT_NEAR(std::abs(nearest(2, 2)), 0, 1e-5);

    const Run singular = run("svd " + matrix("z.mtx", "coordinate real general", "2 2 0\n") + plot);
    EXPECT_NE(singular.out.find("condition       inf\nnumerical rank  0 "), std::string::npos) << singular.out;
    EXPECT_NE(scratch.read("s.svg").find(">zero: 2</text>"), std::string::npos);
    expectFailure("svd " + a + " --rank 4", "--rank 4: the matrix is 4 x 3");
    expectFailure("svd " + a + out, "--out requires --rank", 2);
    expectFailure("svd " + matrix("e.mtx", "coordinate real general", "0 2 0\n"), "0 x 2");
    const std::string large = matrix("l.mtx", "array real general", "2 2\n3e38\n3e38\n3e38\n3e38\n");
    expectFailure("svd " + large + " --plot " + scratch.path("l.svg"), "l.mtx: ");
    EXPECT_EQ(scratch.read("l.svg"), "");
}

/// The numbers behind each occurrence of a text.
std::vector<double> numbersBehind(const std::string& text, const std::string& mark)
{
    std::vector<double> numbers;
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1))
        numbers.push_back(std::atof(text.c_str() + at + mark.size()));
    return numbers;
}

TEST_F(Tool, PlotsOnALogarithmicAxis)
{
    // Some values stand below what rounding makes of zero, 8.6e-5, and the last two below the axis.
    const std::string a = matrix("a&b.mtx", "coordinate real general",
                                 "7 7 6\n1 1 1e2\n2 2 1\n3 3 1e-2\n4 4 1e-4\n5 5 1e-6\n6 6 1e-12\n");
    ASSERT_EQ(run("svd '" + a + "' --plot " + scratch.path("s.svg")).status, 0);
    const std::string svg = scratch.read("s.svg");
    const std::vector<double> heights = numbersBehind(svg, "\" cy=\""), labels = numbersBehind(svg, ">1e");
    ASSERT_EQ(heights.size(), 5u) << svg;
    for (int i = 1; i < 5; ++i)
        EXPECT_NEAR(heights[i] - heights[i - 1], (heights[4] - heights[0]) / 4, 0.02) << i;
    EXPECT_EQ(labels, (std::vector<double>{-7, -6, -5, -4, -3, -2, -1, 0, 1, 2}));
    EXPECT_NE(svg.find(">below 1e-7: 2, of which zero: 1</text>"), std::string::npos) << svg;
    EXPECT_NE(svg.find("<title>Singular values of a&amp;b.mtx</title>"), std::string::npos) << svg;
}

TEST_F(Tool, ShowsProgressOnATerminalOnly)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const int ours = open(ptsname(terminal), O_RDWR | O_NOCTTY); // what was written outlives the tool
    const std::string bench = TARN_TOOL " bench --routine gesv --size 40 --threads 1,1,1 >" + scratch.path("out");
    ASSERT_EQ(std::system(("env TERM=xterm " + bench + " 2>" + ptsname(terminal)).c_str()), 0);
    char text[4096] = "";
    ASSERT_GT(read(terminal, text, sizeof text - 1), 0);
    close(ours);
    close(terminal);
    EXPECT_NE(std::string(text).find("\r\033[Kmeasuring under load: "), std::string::npos) << text;
    EXPECT_NE(std::string(text).find(" % done, about "), std::string::npos) << text;
    const std::string end = "\r\033[K";
    EXPECT_EQ(std::string(text).substr(std::string(text).size() - end.size()), end) << "the line is gone";
}

TEST_F(Tool, MeasuresUnderLoad)
{
    const Run result = run("bench --routine gesv --size 40 --threads 2,3");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "") << "no progress without a terminal";
    std::istringstream lines(result.out);
    std::string heading, routine, type;
    std::getline(lines, heading);
    for (const int threads : {2, 3}) {
        int size = 0, callers = 0;
        double calls = 0, share = 0;
        ASSERT_TRUE(lines >> routine >> type >> size >> callers >> calls >> share) << result.out;
        EXPECT_EQ(callers, threads);
        EXPECT_GT(calls, 10);
        EXPECT_GT(share, 0.01);
        std::getline(lines, heading);
    }
}

TEST_F(Tool, MeasuresEveryRoutineInEveryType)
{
    if (test::onEmulatedGpu)
        GTEST_SKIP() << "cuSOLVER, which it measures beside, needs a GPU";
    const Run result = run("bench --type sdcz --size 96:130:33,7 --repeat 1 --json");
    ASSERT_EQ(result.status, 0) << result.err;
    std::map<std::string, int> rows;
    for (const nlohmann::json& row : nlohmann::json::parse(result.out)) {
        const std::string routine = row["routine"], type = row["type"];
        ++rows[routine + " " + type];
        const bool solves = routine == "gels" || routine == "gglse";
        const bool factorises = routine.rfind("ge", 0) == 0 && routine != "gemm" && routine != "gemv";
        EXPECT_EQ(row["bound"], solves ? 10 : factorises ? 30 : 3) << row;
        EXPECT_LT(row["error"], row["bound"]) << row;
        EXPECT_GT(row["seconds"], 0) << row;
        EXPECT_GT(row["reference_seconds"], 0) << row;
        EXPECT_NEAR(row["ratio"], double(row["seconds"]) / double(row["reference_seconds"]), 1e-6) << row;
    }
    const std::pair<const char*, const char*> all[] = {
        {"gemm", "sdcz"},  {"symm", "sdcz"}, {"hemm", "cz"},     {"syrk", "sdcz"},   {"herk", "cz"},
        {"syr2k", "sdcz"}, {"her2k", "cz"},  {"trmm", "sdcz"},   {"trsm", "sdcz"},   {"gemv", "sdcz"},
        {"symv", "sd"},    {"hemv", "cz"},   {"getrf", "sc"},    {"gesv", "sc"},     {"geqrf", "sc"},
        {"gels", "sc"},    {"gglse", "sc"},  {"gesvd-nn", "sc"}, {"gesvd-ss", "sc"}, {"gesvd-aa", "sc"},
        {"gesvd-os", "sc"}};
    const std::string listed = "\n" + run("bench --list").out;
    for (const auto& [routine, types] : all)
        EXPECT_NE(listed.find(std::string("\n") + routine + " " + types + " "), std::string::npos) << listed;
    for (const auto& [routine, types] : all)
        for (const char type : std::string(types))
            // Three sizes, on host and on device pointers.
            EXPECT_EQ(rows[std::string(routine) + " " + type], 6) << routine << " " << type;
    EXPECT_EQ(rows.size(), 56u) << "no type of a routine beyond these";
}

TEST_F(Tool, RefusesBadCommandLinesInOneLine)
{
    expectFailure("", "a command is required", 2);
    expectFailure("nonsense", "there is no command 'nonsense', only info, solve, ", 2);
    expectFailure("help nonsense", "there is no command 'nonsense', only info, solve, ", 2);
    expectFailure("--nonsense", "there is no option --nonsense", 2);
    expectFailure("solve a.mtx --nonsense", "(tarn help solve tells more)", 2);
    expectFailure("solve", "matrix is required", 2);
    expectFailure("svd a.mtx --rank 0", "--rank: 0 is not a whole number from 1 to 2147483647 (", 2);
    expectFailure("bench --json --csv", "excludes", 2);
    expectFailure("bench --routine gemm,nonsense", "nonsense: there is no such routine", 2);
    expectFailure("bench --type q", "--type q", 2);
    expectFailure("bench --routine gesv --type d", "gesv exists in sc only", 2);
    for (const char* size : {"0", "5:4:1", "3:9", "1:2:3:4", "12x", "-4"})
        expectFailure(std::string("bench --size=") + size, std::string("--size ") + size, 2);
}

TEST_F(Tool, ExplainsItself)
{
    EXPECT_EQ(run("help").out, run("--help").out);
    const Run help = run("help bench");
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out, run("bench --help").out);
    EXPECT_NE(help.out.find("getrf"), std::string::npos);
    const nlohmann::json info = nlohmann::json::parse(run("info --json").out);
    EXPECT_EQ(info["provider"] == "software", info["cuda_driver"].is_null());
    EXPECT_EQ(info["devices"].at(0)["capability"].get<std::string>().find('.'), 1u);
    EXPECT_GT(info["cpu_blas"]["sgemm_gflops"], 0);
}

} // namespace
