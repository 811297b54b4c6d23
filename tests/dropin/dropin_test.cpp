// The drop-in library in front of the CPU LAPACK of this program: the link order puts it there.
#include "dropin/fortran.h"
#include "families/svd.h"
#include "support/device.h"
#include "support/residuals.h"

#include "tarn_lapack.h"

#include <direct_call.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

/// Of the drop-in's own objects that a family needs; here for the stand-in of a device.
tarnInfo tarn::dropin::errorInfo() { return 1; }

namespace {

/// The drop-in reads its variables when it is loaded: starts the program anew with a limit that lets tiny calls stay on
/// the CPU, and with calls counted.
[[gnu::constructor]] void startWithLimits(int, char** argv, char**)
{
    if (std::getenv("TARN_BLAS_MIN_FLOPS"))
        return;
    setenv("TARN_BLAS_MIN_FLOPS", "1000", 1);
    setenv("TARN_BLAS_MIN_FLOPS_PER_BYTE", "0", 1);
    setenv("TARN_BLAS_LOG", "/dev/null", 1);
    execv("/proc/self/exe", argv);
}

using namespace test;
using Floats = Matrix<float>;

/// The routine of the CPU LAPACK behind the drop-in.
template <class Routine>
Routine* onCpu(Routine*, const char* name)
{
    static void* const library = tarn::handleOfObjectAt(reinterpret_cast<const void*>(&tarnGetVersion));
    return reinterpret_cast<Routine*>(dlsym(library, name));
}
#define ON_CPU(name) onCpu(&name, #name)

class Dropin : public WithControls
{
protected:
    /// The calls of the device that the body makes.
    static std::vector<SoftdevCall> logOf(const std::function<void()>& body)
    {
        softdevLogStart();
        body();
        return softdevLogTake();
    }
};

void gemm(Gemm* routine, Floats& A, Floats& B, Floats& C)
{
    const float one = 1, zero = 0;
    routine("n", "N", &C.m, &C.n, &A.n, &one, A.data(), &A.ld, B.data(), &B.ld, &zero, C.data(), &C.ld, 1, 1);
}

/// A linear system with what gesv leaves of it.
struct System
{
    explicit System(int n) : A(Floats::random(n, n, n + 1)), B(Floats::random(n, 2, n)), pivots(std::size_t(n)) {}

    void solve(Gesv* routine) { routine(&A.n, &B.n, A.data(), &A.ld, pivots.data(), B.data(), &B.ld, &info); }

    Floats A, B;
    std::vector<int> pivots;
    int info = -99;
};

TEST_F(Dropin, SmallCallsStayOnTheCpu)
{
    for (const int n : {4, 16}) {
        Floats A = Floats::random(n, n, n), B = A, C(n, n);
        EXPECT_EQ(logOf([&] { gemm(sgemm_, A, B, C); }).empty(), n == 4);
        System system(n);
        EXPECT_EQ(logOf([&] { system.solve(sgesv_); }).empty(), n == 4);
    }
}

/// Whichever call of the device fails, the caller gets what the CPU makes of the arrays as they were.
TEST_F(Dropin, FailuresAreAnsweredByTheCpu)
{
    const System problem(300);
    System expected = problem;
    expected.solve(ON_CPU(sgesv_));
    for (const char* call : {"cudaMalloc", "cudaMemcpy2DAsync", "cublasStrsm_v2"}) {
        for (int nth = 1; nth <= 2; ++nth) {
            System system = problem;
            softdevFailCall(call, nth, cudaErrorMemoryAllocation);
            const auto log = logOf([&] { system.solve(sgesv_); });
            softdevClearFailures();
            ASSERT_GE(countCalls(log, call), nth) << call << ": the failure did not happen";
            EXPECT_TRUE(identical(system.A, expected.A) && identical(system.B, expected.B)) << call << nth;
            EXPECT_EQ(system.info, 0);
        }
    }
}

/// What LAPACK refuses it refuses itself, and the device sees none of it.
TEST_F(Dropin, WrongArgumentsStayOnTheCpu)
{
    const int n = 40, less = n - 1, more = n + 1, none = 0, length = 5000;
    const float one = 1;
    const Floats before = Floats::random(n, n, n);
    Floats A = before, B = before, C = before;
    std::vector<float> c(n), d(more), x(more), work(length);
    const auto log = logOf([&] {
        for (const int wrong : {0, 1, 2}) {
            const auto ld = [&](int which) { return which == wrong ? &less : &n; };
            sgemm_("N", "T", &n, &n, &n, &one, A.data(), ld(0), B.data(), ld(1), &one, C.data(), ld(2), 1, 1);
        }
        int info = 0;
        for (const int wrong : {6, 8}) {
            sgels_("N", &n, &n, &n, A.data(), wrong == 6 ? &less : &n, B.data(), wrong == 8 ? &less : &n, work.data(),
                   &length, &info, 1);
            EXPECT_EQ(info, -wrong);
        }
        struct
        {
            int info;
            const int *m, *p, *lda, *ldb;
        } const constrained[] = {
            {-3, &n, &more, &n, &more}, {-3, &less, &none, &n, &n}, {-5, &n, &n, &less, &n}, {-7, &n, &n, &n, &less}};
        for (const auto& [wrong, m, p, lda, ldb] : constrained) {
            sgglse_(m, &n, p, A.data(), lda, B.data(), ldb, c.data(), d.data(), x.data(), work.data(), &length, &info);
            EXPECT_EQ(info, wrong);
        }
    });
    EXPECT_TRUE(log.empty());
    EXPECT_TRUE(identical(A, before) && identical(B, before) && identical(C, before));
}

/// A program that uses the library itself may shut it down.
TEST_F(Dropin, ComesUpAgainAfterTheProgramsShutdown)
{
    System first(40), second(40);
    first.solve(sgesv_);
    EXPECT_EQ(tarnInitialize(), tarnNoError);
    tarnShutdown();
    const auto log = logOf([&] { second.solve(sgesv_); });
    EXPECT_GT(countCalls(log, "cublasStrsm_v2"), 0);
    EXPECT_TRUE(identical(first.B, second.B));
}

/// Where the iteration does not converge, LAPACK leaves things behind that the library does not: the CPU begins anew.
TEST_F(Dropin, SvdWithoutConvergenceBeginsAnew)
{
    Floats A = Floats::random(5, 4, 7), U(5, 4), V(4, 4);
    const Floats before = A;
    float s[4], work[100];
    int info = 0;
    const tarn::dropin::Gesvd<float> call{'S', 'S',      A.m, A.n,  A.data(), A.ld,    s,    U.data(),
                                          5,   V.data(), 4,   work, 100,      nullptr, &info};
    const auto diverges = [](char, char, int m, int n, float* a, int lda, float*, float*, int, float*, int) {
        for (int j = 0; j < n; ++j)
            std::fill_n(a + j * lda, m, 0.0f);
        return tarnDataError;
    };
    EXPECT_EQ(call.run(+diverges), tarn::dropin::Outcome::failed);
    EXPECT_TRUE(identical(A, before));
    A(2, 1) = NAN; // LAPACK has its own way with these, and with matrices near the ends of the range
    EXPECT_EQ(call.run(+diverges), tarn::dropin::Outcome::declined);
}

/// info of singular matrices is that of the CPU, and work(1) the length of the workspace that it asks for.
TEST_F(Dropin, InfoAndWorkAreThoseOfTheCpu)
{
    const int m = 40, n = 30, p = 10, columns = 2, length = 5000, query = -1;
    const auto answers = [&](bool isSingular, int lwork, auto* gesv, auto* geqrf, auto* gels, auto* gglse) {
        std::vector<float> tau(m), x(n), work(length), lengths;
        std::vector<int> infos;
        Floats A = Floats::random(m, n, m), B = Floats::random(m, columns, m), D = Floats::random(p, n, p);
        Floats Q = A, L = A;
        System system(m);
        if (isSingular)
            for (int i = 0; i < m; ++i)
                system.A(i, 7) = A(i, 3) = 0;
        int info = -99;
        const auto note = [&] {
            infos.push_back(info);
            lengths.push_back(work[0]);
        };
        system.solve(gesv);
        infos.push_back(system.info);
        geqrf(&m, &n, Q.data(), &m, tau.data(), work.data(), &lwork, &info);
        note();
        gels("N", &m, &n, &columns, A.data(), &m, B.data(), &m, work.data(), &lwork, &info, 1);
        note();
        gglse(&m, &n, &p, L.data(), &m, D.data(), &p, B.data(), tau.data(), x.data(), work.data(), &lwork, &info);
        note();
        return std::make_pair(infos, lengths);
    };
    const auto byDropin = [&](bool isSingular, int lwork) {
        return answers(isSingular, lwork, sgesv_, sgeqrf_, sgels_, sgglse_);
    };
    const auto byCpu = [&](bool isSingular, int lwork) {
        return answers(isSingular, lwork, ON_CPU(sgesv_), ON_CPU(sgeqrf_), ON_CPU(sgels_), ON_CPU(sgglse_));
    };
    EXPECT_EQ(byDropin(true, length).first, byCpu(true, length).first);
    EXPECT_EQ(byDropin(true, length).first, (std::vector<int>{8, 0, 4, 0}));
    EXPECT_EQ(byDropin(false, length).second, byCpu(false, query).second);
}

/// Runs body in a child process and returns the report that it writes.
std::string reportOf(const std::function<bool()>& body)
{
    const std::string file = testing::TempDir() + "/dropin_test." + std::to_string(getpid());
    std::remove(file.c_str());
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        setenv("TARN_BLAS_LOG", file.c_str(), 1);
        std::exit(body() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    std::remove(file.c_str());
    return text.str();
}

bool solves()
{
    const System problem(60);
    System system = problem;
    system.solve(sgesv_);
    return system.info == 0 && solveRatio(problem.A, problem.B, system.B) < 30;
}

bool contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

/// These run in a process of their own, which does not use the device before its last test.
///
/// The CPU LAPACK calls sgemm_ while it works for a panel. That goes neither to the device nor into the report, whether
/// the program calls the drop-in or the library itself.
TEST(DropinReport, PanelsDoNotComeBack)
{
    const int n = 300, length = n * 64;
    Floats A = Floats::random(n, n, n);
    std::vector<float> tau(n), work(length);
    int info = 0;
    const auto factorise = [&](Geqrf* geqrf) {
        geqrf(&n, &n, A.data(), &n, tau.data(), work.data(), &length, &info);
        return info == 0;
    };
    const std::string byDropin = reportOf([&] { return factorise(sgeqrf_); });
    EXPECT_TRUE(contains(byDropin, "{\"name\": \"sgeqrf\", \"device\": {\"calls\": 1,")) << byDropin;
    EXPECT_FALSE(contains(byDropin, "sgemm")) << byDropin;
    const auto directly = [&] {
        return tarnInitialize() == tarnNoError && tarnSgeqrf(n, n, A.data(), n, tau.data()) == tarnNoError;
    };
    EXPECT_EQ(reportOf(directly), "");
    // By itself the CPU LAPACK does call what the drop-in answers.
    EXPECT_TRUE(contains(reportOf([&] { return factorise(ON_CPU(sgeqrf_)); }), "sgemm"));
}

/// A child of a process that has not used the device may use it. One of a process that has cannot, and computes on the
/// CPU.
TEST(DropinReport, ChildrenBeforeAndAfterTheFirstCall)
{
    const std::string before = reportOf(solves);
    EXPECT_TRUE(contains(before, "\"device\": \"device 0")) << before;
    EXPECT_TRUE(contains(before, "{\"name\": \"sgesv\", \"device\": {\"calls\": 1,")) << before;
    EXPECT_TRUE(solves());
    const std::string after = reportOf(solves);
    EXPECT_TRUE(contains(after, "forked")) << after;
    EXPECT_TRUE(contains(after, "{\"name\": \"sgesv\", \"device\": {\"calls\": 0,")) << after;
}

/// The first calls of a process, on several threads at a time. This test runs in a process of its own.
TEST(DropinThreads, FirstCallsAtATime)
{
    constexpr int threads = 8;
    std::vector<std::thread> callers;
    std::vector<char> good(threads);
    for (char& result : good)
        callers.emplace_back([&result] {
            result = true;
            for (int call = 0; call < 5; ++call)
                result = result && solves();
        });
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(std::count(good.begin(), good.end(), true), threads);
}

} // namespace
