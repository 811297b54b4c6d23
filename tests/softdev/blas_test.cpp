/// The cuBLAS calls: what they refuse, and when they read. Their results are tested through the library's routines.

#include <cstring>

#include "cublas_v2.h"
#include "fixture.h"

namespace {

/// Arguments of any routine over a matrix, enumerators by their numbers: right ones for arrays of 16 elements.
struct Arguments
{
    const float *in, *alpha;
    float* out;
    int side = 0, uplo = 0, trans = 0, transb = 0, diag = 1, m = 4, n = 4, k = 4, ld = 4, inc = 1;
};

/// A routine, and which arguments it reads: [s]ide, [u]plo, [t]rans, trans[b], [d]iag, m, n, k,
/// [a]lpha, [l]d, [i]nc.
struct Routine
{
    const char *name, *reads;
    cublasStatus_t (*call)(cublasHandle_t, const Arguments&);
};

constexpr cublasSideMode_t side(const Arguments& x) { return cublasSideMode_t(x.side); }
constexpr cublasFillMode_t uplo(const Arguments& x) { return cublasFillMode_t(x.uplo); }
constexpr cublasOperation_t trans(const Arguments& x) { return cublasOperation_t(x.trans); }
constexpr cublasDiagType_t diag(const Arguments& x) { return cublasDiagType_t(x.diag); }

const Routine routines[] = {
    {"gemm", "tbmnkal",
     [](cublasHandle_t handle, const Arguments& x) {
         return cublasSgemm_v2(handle, trans(x), cublasOperation_t(x.transb), x.m, x.n, x.k, x.alpha, x.in, x.ld, x.in,
                               x.ld, x.alpha, x.out, x.ld);
     }},
    {"symm", "sumnal",
     [](cublasHandle_t handle, const Arguments& x) {
         return cublasSsymm_v2(handle, side(x), uplo(x), x.m, x.n, x.alpha, x.in, x.ld, x.in, x.ld, x.alpha, x.out,
                               x.ld);
     }},
    {"syrk", "utnkal",
     [](cublasHandle_t handle, const Arguments& x) {
         return cublasSsyrk_v2(handle, uplo(x), trans(x), x.n, x.k, x.alpha, x.in, x.ld, x.alpha, x.out, x.ld);
     }},
    {"syr2k", "utnkal",
     [](cublasHandle_t handle, const Arguments& x) {
         return cublasSsyr2k_v2(handle, uplo(x), trans(x), x.n, x.k, x.alpha, x.in, x.ld, x.in, x.ld, x.alpha, x.out,
                                x.ld);
     }},
    {"trmm", "sutdmnal",
     [](cublasHandle_t handle, const Arguments& x) {
         return cublasStrmm_v2(handle, side(x), uplo(x), trans(x), diag(x), x.m, x.n, x.alpha, x.in, x.ld, x.out, x.ld,
                               x.out, x.ld);
     }},
    {"trsm", "sutdmnal",
     [](cublasHandle_t handle, const Arguments& x) {
         return cublasStrsm_v2(handle, side(x), uplo(x), trans(x), diag(x), x.m, x.n, x.alpha, x.in, x.ld, x.out, x.ld);
     }},
    {"gemv", "tmnail",
     [](cublasHandle_t handle, const Arguments& x) {
         return cublasSgemv_v2(handle, trans(x), x.m, x.n, x.alpha, x.in, x.ld, x.in, x.inc, x.alpha, x.out, x.inc);
     }},
    {"symv", "unail",
     [](cublasHandle_t handle, const Arguments& x) {
         return cublasSsymv_v2(handle, uplo(x), x.n, x.alpha, x.in, x.ld, x.in, x.inc, x.alpha, x.out, x.inc);
     }},
    {"trmv", "utdnil",
     [](cublasHandle_t handle, const Arguments& x) {
         return cublasStrmv_v2(handle, uplo(x), trans(x), diag(x), x.n, x.in, x.ld, x.out, x.inc);
     }},
};

class BlasTest : public SoftdevTest
{
protected:
    void SetUp() override
    {
        SoftdevTest::SetUp();
        ASSERT_EQ(cublasCreate_v2(&handle), CUBLAS_STATUS_SUCCESS);
        ASSERT_EQ(cublasSetPointerMode_v2(handle, CUBLAS_POINTER_MODE_HOST), CUBLAS_STATUS_SUCCESS);
    }
    void TearDown() override
    {
        EXPECT_EQ(cublasDestroy_v2(handle), CUBLAS_STATUS_SUCCESS);
        SoftdevTest::TearDown();
    }

    cublasHandle_t handle;
};

} // namespace

// Vectors with negative increments run from their far ends.
TEST_F(BlasTest, VectorsRunEitherWay)
{
    const std::vector<float> x{1, 2, 3}, y{4, 5, 6};
    const DeviceArray<float> dx(x), dy(y);
    const float c = 0.5f, s = 2;
    ASSERT_EQ(cublasScopy_v2(handle, 3, dx, 1, dy, -1), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(dy.download(), (std::vector<float>{3, 2, 1}));
    ASSERT_EQ(cublasSrot_v2(handle, 3, dx, 1, dy, -1, &c, &s), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(dx.download(), (std::vector<float>{2.5f, 5, 7.5f}));
    EXPECT_EQ(dy.download(), (std::vector<float>{-4.5f, -3, -1.5f}));
    ASSERT_EQ(cublasSaxpy_v2(handle, 3, &s, dy, -1, dx, 1), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(dx.download(), (std::vector<float>{-0.5f, -1, -1.5f}));
    ASSERT_EQ(cublasSswap_v2(handle, 3, dx, 1, dy, -1), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(dx.download(), (std::vector<float>{-1.5f, -3, -4.5f}));
    ASSERT_EQ(cublasSrot_v2(handle, 2, dx, -2, dy, 1, &c, &s), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(dx.download(), (std::vector<float>{-2.75f, -3, -5.25f}));
}

TEST_F(BlasTest, TriangularProductsMayLeaveBAlone)
{
    const std::vector<float> b{1, 2, 3, 4};
    const DeviceArray<float> da(std::vector<float>{2, 0, 0, 3}), db(b), dc(std::vector<float>(4));
    const float one = 1;
    ASSERT_EQ(cublasStrmm_v2(handle, CUBLAS_SIDE_LEFT, CUBLAS_FILL_MODE_UPPER, CUBLAS_OP_N, CUBLAS_DIAG_NON_UNIT, 2, 2,
                             &one, da, 2, db, 2, dc, 2),
              CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(dc.download(), (std::vector<float>{2, 6, 6, 12}));
    EXPECT_EQ(db.download(), b);
}

// What is wrong is told at the call, and the result stays as it was.
TEST_F(BlasTest, BadArgumentsAreRefused)
{
    const DeviceArray<float> a(std::vector<float>(100, 1)), c(std::vector<float>(100, 2));
    const float one = 1;
    float onHost[100];
    const auto gemm = [&](cublasHandle_t h, int op, int m, int lda, const float* x, const float* y,
                          const float* alpha) {
        return cublasSgemm_v2(h, cublasOperation_t(op), CUBLAS_OP_N, m, 10, 10, alpha, x, lda, a, 10, &one,
                              const_cast<float*>(y), 10);
    };
    ASSERT_EQ(gemm(handle, 0, 10, 10, a, c, &one), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(gemm(nullptr, 0, 10, 10, a, c, &one), CUBLAS_STATUS_NOT_INITIALIZED);
    EXPECT_EQ(gemm(cublasHandle_t(&one), 0, 10, 10, a, c, &one), CUBLAS_STATUS_NOT_INITIALIZED);
    EXPECT_EQ(gemm(handle, 3, 10, 10, a, c, &one), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(gemm(handle, 0, -1, 10, a, c, &one), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(gemm(handle, 0, 10, 9, a, c, &one), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(gemm(handle, 0, 10, 10, onHost, c, &one), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(gemm(handle, 0, 10, 10, a, onHost, &one), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(gemm(handle, 0, 10, 10, a, nullptr, &one), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(gemm(handle, 0, 10, 10, a + 1, c, &one), CUBLAS_STATUS_INVALID_VALUE) << "past the end of A";
    EXPECT_EQ(gemm(handle, 0, 10, 10, a, c, nullptr), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(gemm(handle, 0, 0, 10, nullptr, nullptr, &one), CUBLAS_STATUS_SUCCESS) << "nothing is read";
    EXPECT_EQ(cublasSgemv_v2(handle, CUBLAS_OP_N, 10, 10, &one, a, 10, a, 0, &one, c, 1), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(cublasStrmm_v2(handle, CUBLAS_SIDE_LEFT, CUBLAS_FILL_MODE_UPPER, CUBLAS_OP_N, CUBLAS_DIAG_UNIT, 9, 9,
                             &one, a, 10, c, 9, c, 10),
              CUBLAS_STATUS_INVALID_VALUE)
        << "in place, but with two layouts";
    EXPECT_EQ(cublasSetPointerMode_v2(handle, CUBLAS_POINTER_MODE_DEVICE), CUBLAS_STATUS_NOT_SUPPORTED);
    EXPECT_EQ(c.download(), std::vector<float>(100, 12));
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
}

// Each routine with one argument wrong, then with one dimension empty and nothing where its arrays should be.
TEST_F(BlasTest, EachRoutineChecksWhatItReads)
{
    struct
    {
        char letter;
        int Arguments::*argument;
        int bad;
    } const table[] = {
        {'s', &Arguments::side, 2},   {'u', &Arguments::uplo, 2}, {'t', &Arguments::trans, 3},
        {'b', &Arguments::transb, 3}, {'d', &Arguments::diag, 2}, {'m', &Arguments::m, -1},
        {'n', &Arguments::n, -1},     {'k', &Arguments::k, -1},   {'l', &Arguments::ld, 3},
        {'i', &Arguments::inc, 0},
    };
    const std::vector<float> before(16, 2);
    const DeviceArray<float> a(std::vector<float>(16, 1));
    DeviceArray<float> c(before);
    const float one = 1;
    for (const Routine& routine : routines) {
        const auto expectRefused = [&](char letter, const Arguments& arguments) {
            SCOPED_TRACE(testing::Message() << routine.name << ", " << letter);
            const bool reads = std::strchr(routine.reads, letter);
            c.upload(before);
            EXPECT_EQ(routine.call(handle, arguments), reads ? CUBLAS_STATUS_INVALID_VALUE : CUBLAS_STATUS_SUCCESS);
            EXPECT_EQ(c.download() == before, reads);
        };
        for (const auto& [letter, argument, bad] : table) {
            Arguments arguments{a, &one, c};
            arguments.*argument = bad;
            expectRefused(letter, arguments);
            if (!std::strchr("mn", letter) || !std::strchr(routine.reads, letter))
                continue;
            arguments = {nullptr, &one, nullptr};
            EXPECT_EQ(routine.call(handle, arguments), CUBLAS_STATUS_INVALID_VALUE) << routine.name;
            arguments.*argument = 0;
            EXPECT_EQ(routine.call(handle, arguments), CUBLAS_STATUS_SUCCESS) << routine.name << ", " << letter;
        }
        expectRefused('a', {a, nullptr, c});
    }
}

// Transposition updates a symmetric complex matrix, conjugation a Hermitian one.
TEST_F(BlasTest, ComplexUpdatesTakeOneOfTheTwoTranspositions)
{
    const DeviceArray<cuComplex> a(16), c(16);
    const cuComplex one{1, 0};
    const float real = 1;
    for (const cublasOperation_t op : {CUBLAS_OP_T, CUBLAS_OP_C}) {
        const auto symmetric = op == CUBLAS_OP_T ? CUBLAS_STATUS_SUCCESS : CUBLAS_STATUS_INVALID_VALUE;
        const auto hermitian = op == CUBLAS_OP_C ? CUBLAS_STATUS_SUCCESS : CUBLAS_STATUS_INVALID_VALUE;
        const auto u = CUBLAS_FILL_MODE_UPPER;
        EXPECT_EQ(cublasCsyrk_v2(handle, u, op, 4, 4, &one, a, 4, &one, c, 4), symmetric);
        EXPECT_EQ(cublasCsyr2k_v2(handle, u, op, 4, 4, &one, a, 4, a, 4, &one, c, 4), symmetric);
        EXPECT_EQ(cublasCherk_v2(handle, u, op, 4, 4, &real, a, 4, &real, c, 4), hermitian);
        EXPECT_EQ(cublasCher2k_v2(handle, u, op, 4, 4, &one, a, 4, a, 4, &real, c, 4), hermitian);
    }
}

// As in BLAS: nothing is done for n below 1, and an increment of 0 stands for one element.
TEST_F(BlasTest, VectorsMayBeEmptyOrOneElement)
{
    const std::vector<float> x{3}, y{4, 5, 6};
    const DeviceArray<float> dx(x), dy(y);
    const float two = 2;
    EXPECT_EQ(cublasSaxpy_v2(handle, -1, &two, nullptr, 1, nullptr, 1), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(cublasSscal_v2(handle, 0, &two, nullptr, 1), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(cublasSscal_v2(handle, 3, &two, dy, -1), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(cublasSscal_v2(handle, 4, &two, dy, 1), CUBLAS_STATUS_INVALID_VALUE) << "past the end";
    EXPECT_EQ(dy.download(), y);
    EXPECT_EQ(cublasSaxpy_v2(handle, 3, &two, dx, 0, dy, 1), CUBLAS_STATUS_SUCCESS) << "x has one element";
    EXPECT_EQ(dy.download(), (std::vector<float>{10, 11, 12}));
    EXPECT_EQ(cublasSaxpy_v2(handle, 3, &two, dy, 1, dx, 0), CUBLAS_STATUS_SUCCESS) << "and here y";
    EXPECT_EQ(dx.download(), (std::vector<float>{69}));
}

TEST_F(BlasTest, HandlesAreChecked)
{
    int version;
    EXPECT_EQ(cublasCreate_v2(nullptr), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(cublasDestroy_v2(nullptr), CUBLAS_STATUS_NOT_INITIALIZED);
    EXPECT_EQ(cublasGetVersion_v2(handle, nullptr), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(cublasGetVersion_v2(handle, &version), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(cublasSetPointerMode_v2(nullptr, CUBLAS_POINTER_MODE_HOST), CUBLAS_STATUS_NOT_INITIALIZED);
    EXPECT_EQ(cublasSetPointerMode_v2(handle, cublasPointerMode_t(2)), CUBLAS_STATUS_INVALID_VALUE);
}

// Scalars belong to the call, not to its execution.
TEST_F(BlasTest, ScalarsAreReadAtTheCall)
{
    softdevSetHold(true);
    const DeviceArray<float> x(std::vector<float>(10, 1));
    float alpha = 3;
    ASSERT_EQ(cublasSscal_v2(handle, 10, &alpha, x, 1), CUBLAS_STATUS_SUCCESS);
    alpha = 5;
    EXPECT_EQ(x.download(), std::vector<float>(10, 3));
}
