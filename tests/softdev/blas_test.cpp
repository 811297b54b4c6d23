/// The cuBLAS calls: what they refuse, and when they read. Their results are tested through the library's routines.

#include "cublas_v2.h"
#include "fixture.h"

namespace {

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
