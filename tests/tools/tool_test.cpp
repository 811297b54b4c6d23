// Runs the tool as a user does.
#include "cpu_blas.h"
#include "scratch.h"

#include <nlohmann/json.hpp>

#include <sys/wait.h>

#include <algorithm>
#include <map>

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
    expectFailure("solve " + square + " --out " + scratch.path("no/x.mtx"), "no/x.mtx: No such file");
    expectFailure("demo --data " + scratch.path("none"), "none/utm300.mtx: No such file");
}

TEST_F(Tool, MeasuresEveryRoutineInEveryType)
{
    const Run result = run("bench --type sdcz --size 96:130:33,7 --repeat 1 --json");
    ASSERT_EQ(result.status, 0) << result.err;
    std::map<std::string, int> rows;
    for (const nlohmann::json& row : nlohmann::json::parse(result.out)) {
        const std::string routine = row["routine"], type = row["type"];
        ++rows[routine + " " + type];
        EXPECT_LT(row["error"], routine == "getrf" || routine == "gesv" ? 30 : 3) << row;
        EXPECT_GT(row["seconds"], 0) << row;
        EXPECT_GT(row["reference_seconds"], 0) << row;
        EXPECT_NEAR(row["ratio"], double(row["seconds"]) / double(row["reference_seconds"]), 1e-6) << row;
    }
    const std::pair<const char*, const char*> all[] = {
        {"gemm", "sdcz"},  {"symm", "sdcz"}, {"hemm", "cz"},   {"syrk", "sdcz"}, {"herk", "cz"},
        {"syr2k", "sdcz"}, {"her2k", "cz"},  {"trmm", "sdcz"}, {"trsm", "sdcz"}, {"gemv", "sdcz"},
        {"symv", "sd"},    {"hemv", "cz"},   {"getrf", "sc"},  {"gesv", "sc"}};
    const std::string listed = "\n" + run("bench --list").out;
    for (const auto& [routine, types] : all)
        EXPECT_NE(listed.find(std::string("\n") + routine + " " + types + " "), std::string::npos) << listed;
    for (const auto& [routine, types] : all)
        for (const char type : std::string(types))
            // Three sizes, on host and on device pointers.
            EXPECT_EQ(rows[std::string(routine) + " " + type], 6) << routine << " " << type;
    EXPECT_EQ(rows.size(), 42u) << "no type of a routine beyond these";
}

TEST_F(Tool, RefusesBadCommandLinesInOneLine)
{
    expectFailure("", "a subcommand is required", 2);
    expectFailure("nonsense", "nonsense", 2);
    expectFailure("solve", "matrix is required", 2);
    expectFailure("bench --json --csv", "excludes", 2);
    expectFailure("bench --routine gemm,nonsense", "nonsense: there is no such routine");
    expectFailure("bench --type q", "--type q");
    expectFailure("bench --routine gesv --type d", "gesv exists in sc only");
    for (const char* size : {"0", "5:4:1", "3:9", "1:2:3:4", "12x", "-4"})
        expectFailure(std::string("bench --size=") + size, std::string("--size ") + size);
    const Run help = run("bench --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("getrf"), std::string::npos);
}

} // namespace
