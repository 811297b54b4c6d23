/// The cuBLAS calls against products written out.

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <random>

#include "cublas_v2.h"
#include "fixture.h"

namespace {

/// The device's element type of a host type, and the routines over it. The Hermitian routines of the real types are the
/// symmetric ones.
template <class T>
struct Routines;

#define TARN_ROUTINES(T, DeviceT, L, he)                                                                               \
    template <>                                                                                                        \
    struct Routines<T>                                                                                                 \
    {                                                                                                                  \
        using Device = DeviceT;                                                                                        \
        static constexpr auto gemm = cublas##L##gemm_v2;                                                               \
        static constexpr auto trmm = cublas##L##trmm_v2;                                                               \
        static constexpr auto trsm = cublas##L##trsm_v2;                                                               \
        static constexpr auto symm = cublas##L##symm_v2;                                                               \
        static constexpr auto syrk = cublas##L##syrk_v2;                                                               \
        static constexpr auto syr2k = cublas##L##syr2k_v2;                                                             \
        static constexpr auto hemm = cublas##L##he##mm_v2;                                                             \
        static constexpr auto herk = cublas##L##he##rk_v2;                                                             \
        static constexpr auto her2k = cublas##L##he##r2k_v2;                                                           \
        static constexpr auto gemv = cublas##L##gemv_v2;                                                               \
        static constexpr auto hemv = cublas##L##he##mv_v2;                                                             \
    };
TARN_ROUTINES(float, float, S, sy)
TARN_ROUTINES(double, double, D, sy)
TARN_ROUTINES(std::complex<float>, cuComplex, C, he)
TARN_ROUTINES(std::complex<double>, cuDoubleComplex, Z, he)

float conj(float x) { return x; }
double conj(double x) { return x; }
using std::conj;

template <class T>
using Real = decltype(std::abs(T{}));

template <class T>
constexpr bool isComplex = !std::is_same_v<T, Real<T>>;

template <class T>
const auto* dev(const T* p)
{
    return reinterpret_cast<const typename Routines<T>::Device*>(p);
}
template <class T>
auto* dev(T* p)
{
    return reinterpret_cast<typename Routines<T>::Device*>(p);
}

/// A column-major matrix with a few rows of padding.
template <class T>
struct Matrix
{
    int rows, cols, ld;
    std::vector<T> data;

    Matrix(int m, int n, T value = T{}) : rows(m), cols(n), ld(m + 3), data(std::size_t(ld) * std::size_t(n) + 1, value)
    {}

    template <class Entry>
    static Matrix of(int m, int n, Entry entry)
    {
        Matrix result(m, n);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i)
                result(i, j) = entry(i, j);
        return result;
    }
    static Matrix random(int m, int n)
    {
        static std::mt19937 engine(7);
        std::uniform_real_distribution<Real<T>> uniform(-1, 1);
        return of(m, n, [&](int, int) {
            if constexpr (isComplex<T>)
                return T{uniform(engine), uniform(engine)};
            else
                return uniform(engine);
        });
    }

    T& operator()(int i, int j) { return data[std::size_t(j) * std::size_t(ld) + std::size_t(i)]; }
    T operator()(int i, int j) const { return data[std::size_t(j) * std::size_t(ld) + std::size_t(i)]; }
};

template <class T>
Matrix<T> op(cublasOperation_t trans, const Matrix<T>& a)
{
    if (trans == CUBLAS_OP_N)
        return a;
    return Matrix<T>::of(a.cols, a.rows, [&](int i, int j) { return trans == CUBLAS_OP_T ? a(j, i) : conj(a(j, i)); });
}

template <class T>
Matrix<T> product(const Matrix<T>& a, const Matrix<T>& b)
{
    Matrix<T> c(a.rows, b.cols);
    for (int j = 0; j < c.cols; ++j)
        for (int k = 0; k < a.cols; ++k)
            for (int i = 0; i < c.rows; ++i)
                c(i, j) += a(i, k) * b(k, j);
    return c;
}

bool stored(cublasFillMode_t uplo, int i, int j) { return uplo == CUBLAS_FILL_MODE_UPPER ? i <= j : i >= j; }

/// The matrix of which one triangle is stored.
template <class T>
Matrix<T> whole(cublasFillMode_t uplo, const Matrix<T>& a, bool hermitian)
{
    return Matrix<T>::of(a.rows, a.cols, [&](int i, int j) {
        const T entry = stored(uplo, i, j) ? a(i, j) : a(j, i);
        if (!hermitian)
            return entry;
        return i == j ? T(std::real(entry)) : stored(uplo, i, j) ? entry : conj(entry);
    });
}

/// alpha AB + beta C; C counts for nothing, not even as NaN, if beta is 0.
template <class T>
Matrix<T> update(T alpha, const Matrix<T>& ab, T beta, const Matrix<T>& c)
{
    return Matrix<T>::of(c.rows, c.cols,
                         [&](int i, int j) { return alpha * ab(i, j) + (beta == T{} ? T{} : beta * c(i, j)); });
}

/// Compares where `in(i, j)`; elsewhere, and in the padding, `result` must be `before`, bit for bit.
template <class T, class In>
void expectEqual(const Matrix<T>& expected, const std::vector<T>& result, const Matrix<T>& before, int depth, In in)
{
    const Real<T> bound = 20 * Real<T>(depth + 2) * std::numeric_limits<Real<T>>::epsilon();
    for (std::size_t p = 0; p < result.size(); ++p) {
        const int i = int(p) % before.ld, j = int(p) / before.ld;
        if (i < before.rows && j < before.cols && in(i, j))
            ASSERT_LE(std::abs(result[p] - expected(i, j)), bound) << i << ' ' << j;
        else
            ASSERT_EQ(0, std::memcmp(&result[p], &before.data[p], sizeof(T))) << i << ' ' << j;
    }
}

template <class T>
void expectEqual(const Matrix<T>& expected, const std::vector<T>& result, const Matrix<T>& before, int depth)
{
    expectEqual(expected, result, before, depth, [](int, int) { return true; });
}

template <class T>
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

    /// The C of a beta: with NaN everywhere if it must not be read.
    static Matrix<T> start(int m, int n, T beta)
    {
        return beta == T{} ? Matrix<T>(m, n, T(std::numeric_limits<Real<T>>::quiet_NaN())) : Matrix<T>::random(m, n);
    }

    cublasHandle_t handle;
    const T factor = T(Real<T>(1.25)) - Matrix<T>::random(1, 1)(0, 0);
    const T betas[2] = {T{}, T(Real<T>(-0.75))};
};

using Types = testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(BlasTest, Types);

constexpr cublasOperation_t operations[] = {CUBLAS_OP_N, CUBLAS_OP_T, CUBLAS_OP_C};
constexpr cublasFillMode_t triangles[] = {CUBLAS_FILL_MODE_LOWER, CUBLAS_FILL_MODE_UPPER};
constexpr cublasSideMode_t sides[] = {CUBLAS_SIDE_LEFT, CUBLAS_SIDE_RIGHT};
constexpr int orders[] = {1, 7, 40, 130}; ///< the BLAS has kernels of their own for small and for threaded products

} // namespace

TYPED_TEST(BlasTest, Gemm)
{
    using T = TypeParam;
    using R = Routines<T>;
    const auto check = [&](cublasOperation_t ta, cublasOperation_t tb, int m, int n, int k, T alpha, T beta, T fill) {
        Matrix<T> a = ta == CUBLAS_OP_N ? Matrix<T>::random(m, k) : Matrix<T>::random(k, m);
        if (alpha == T{})
            a = Matrix<T>(a.rows, a.cols, fill);
        const Matrix<T> b = tb == CUBLAS_OP_N ? Matrix<T>::random(k, n) : Matrix<T>::random(n, k);
        const Matrix<T> c = this->start(m, n, beta);
        const DeviceArray<T> da(a.data), db(b.data), dc(c.data);
        ASSERT_EQ(R::gemm(this->handle, ta, tb, m, n, k, dev(&alpha), dev<T>(da), a.ld, dev<T>(db), b.ld, dev(&beta),
                          dev<T>(dc), c.ld),
                  CUBLAS_STATUS_SUCCESS);
        const Matrix<T> ab = alpha == T{} ? Matrix<T>(m, n) : product(op(ta, a), op(tb, b));
        expectEqual(update(alpha, ab, beta, c), dc.download(), c, k);
    };
    const T nan = T(std::numeric_limits<Real<T>>::quiet_NaN());
    for (const T beta : this->betas) {
        for (const int n : orders)
            for (const cublasOperation_t ta : operations)
                for (const cublasOperation_t tb : operations)
                    ASSERT_NO_FATAL_FAILURE(check(ta, tb, n, n / 2 + 1, n + 2, this->factor, beta, T{}));
        ASSERT_NO_FATAL_FAILURE(check(CUBLAS_OP_N, CUBLAS_OP_T, 30, 20, 0, this->factor, beta, T{}));
        ASSERT_NO_FATAL_FAILURE(check(CUBLAS_OP_N, CUBLAS_OP_N, 30, 20, 10, T{}, beta, nan));
    }
}

TYPED_TEST(BlasTest, SymmetricAndHermitian)
{
    using T = TypeParam;
    using R = Routines<T>;
    const T alpha = this->factor;
    const Real<T> realAlpha = std::real(alpha);
    for (const T beta : this->betas)
        for (const int n : orders)
            for (const cublasFillMode_t uplo : triangles)
                for (const bool hermitian : {false, true}) {
                    const Matrix<T> a = Matrix<T>::random(n, n), b = Matrix<T>::random(n, n);
                    const DeviceArray<T> da(a.data), db(b.data);
                    const Real<T> realBeta = std::real(beta);
                    for (const cublasSideMode_t side : sides) {
                        const Matrix<T> c = this->start(n, n, beta), full = whole(uplo, a, hermitian);
                        const DeviceArray<T> dc(c.data);
                        ASSERT_EQ((hermitian ? R::hemm : R::symm)(this->handle, side, uplo, n, n, dev(&alpha),
                                                                  dev<T>(da), a.ld, dev<T>(db), b.ld, dev(&beta),
                                                                  dev<T>(dc), c.ld),
                                  CUBLAS_STATUS_SUCCESS);
                        const Matrix<T> ab = side == CUBLAS_SIDE_LEFT ? product(full, b) : product(b, full);
                        expectEqual(update(alpha, ab, beta, c), dc.download(), c, n);
                    }
                    for (const bool plain : {true, false}) {
                        const cublasOperation_t flip = hermitian ? CUBLAS_OP_C : CUBLAS_OP_T;
                        const cublasOperation_t trans = plain ? CUBLAS_OP_N : flip;
                        const Matrix<T> left = op(trans, a), right = op(flip, left);
                        const Matrix<T> left2 = op(trans, b), right2 = op(flip, left2);
                        const auto inside = [=](int i, int j) { return stored(uplo, i, j); };
                        const Matrix<T> c = whole(uplo, this->start(n, n, beta), hermitian && beta != T{});
                        const DeviceArray<T> dc(c.data), dc2(c.data);
                        if (hermitian) {
                            R::herk(this->handle, uplo, trans, n, n, &realAlpha, dev<T>(da), a.ld, &realBeta,
                                    dev<T>(dc), c.ld);
                            R::her2k(this->handle, uplo, trans, n, n, dev(&alpha), dev<T>(da), a.ld, dev<T>(db), b.ld,
                                     &realBeta, dev<T>(dc2), c.ld);
                        } else {
                            R::syrk(this->handle, uplo, trans, n, n, dev(&alpha), dev<T>(da), a.ld, dev(&beta),
                                    dev<T>(dc), c.ld);
                            R::syr2k(this->handle, uplo, trans, n, n, dev(&alpha), dev<T>(da), a.ld, dev<T>(db), b.ld,
                                     dev(&beta), dev<T>(dc2), c.ld);
                        }
                        expectEqual(update(hermitian ? T(realAlpha) : alpha, product(left, right), beta, c),
                                    dc.download(), c, n, inside);
                        const Matrix<T> second =
                            update(hermitian ? conj(alpha) : alpha, product(left2, right), beta, c);
                        expectEqual(update(alpha, product(left, right2), T(1), second), dc2.download(), c, 2 * n,
                                    inside);
                    }
                }
}

TYPED_TEST(BlasTest, TriangularProductAndSolve)
{
    using T = TypeParam;
    using R = Routines<T>;
    const T alpha = this->factor, inverse = T(1) / alpha;
    for (const cublasSideMode_t side : sides)
        for (const cublasFillMode_t uplo : triangles)
            for (const cublasOperation_t trans : operations)
                for (const cublasDiagType_t diag : {CUBLAS_DIAG_NON_UNIT, CUBLAS_DIAG_UNIT}) {
                    const int m = 33, n = 21, order = side == CUBLAS_SIDE_LEFT ? m : n;
                    // Small beside the diagonal, so that the solve is well conditioned.
                    Matrix<T> a = Matrix<T>::random(order, order);
                    a = Matrix<T>::of(order, order,
                                      [&](int i, int j) { return i == j ? a(i, j) + T(3) : a(i, j) / T(20); });
                    const Matrix<T> triangle = Matrix<T>::of(order, order, [&](int i, int j) {
                        return i == j && diag == CUBLAS_DIAG_UNIT ? T(1) : stored(uplo, i, j) ? a(i, j) : T{};
                    });
                    const Matrix<T> b = Matrix<T>::random(m, n), c(m, n);
                    const DeviceArray<T> da(a.data), db(b.data), dc(c.data);
                    const auto arguments = [&](auto routine, const T& scale, auto... rest) {
                        ASSERT_EQ(routine(this->handle, side, uplo, trans, diag, m, n, dev(&scale), dev<T>(da), a.ld,
                                          rest...),
                                  CUBLAS_STATUS_SUCCESS);
                    };
                    const Matrix<T> applied = op(trans, triangle);
                    const Matrix<T> ab = side == CUBLAS_SIDE_LEFT ? product(applied, b) : product(b, applied);
                    const Matrix<T> expected = update(alpha, ab, T{}, b);
                    arguments(R::trmm, alpha, dev<T>(db), b.ld, dev<T>(dc), c.ld);
                    expectEqual(expected, dc.download(), c, 4 * order);
                    ASSERT_EQ(db.download(), b.data) << "B is only read";
                    arguments(R::trmm, alpha, dev<T>(db), b.ld, dev<T>(db), b.ld);
                    expectEqual(expected, db.download(), b, 4 * order);
                    arguments(R::trsm, inverse, dev<T>(db), b.ld);
                    expectEqual(b, db.download(), b, 8 * order);
                }
}

TYPED_TEST(BlasTest, MatrixTimesVector)
{
    using T = TypeParam;
    using R = Routines<T>;
    const T alpha = this->factor;
    const int incx = -2, incy = 3;
    const auto strided = [](const Matrix<T>& v, int inc, T padding) {
        std::vector<T> result(std::size_t((v.rows - 1) * std::abs(inc) + 1), padding);
        for (int i = 0; i < v.rows; ++i)
            result[std::size_t((inc < 0 ? i - v.rows + 1 : i) * inc)] = v(i, 0);
        return result;
    };
    const auto check = [&](const Matrix<T>& full, T beta, auto multiply) {
        const Matrix<T> x = Matrix<T>::random(full.cols, 1), y = this->start(full.rows, 1, beta);
        const DeviceArray<T> dx(strided(x, incx, T(9))), dy(strided(y, incy, T(5)));
        ASSERT_EQ(multiply(dev<T>(dx), dev<T>(dy)), CUBLAS_STATUS_SUCCESS);
        const std::vector<T> result = dy.download();
        const std::vector<T> expected = strided(update(alpha, product(full, x), beta, y), incy, T(5));
        for (std::size_t i = 0; i < result.size(); ++i)
            ASSERT_LE(std::abs(result[i] - expected[i]), 20 * full.cols * std::numeric_limits<Real<T>>::epsilon());
    };
    for (const T beta : this->betas)
        for (const int n : orders) {
            const Matrix<T> a = Matrix<T>::random(n, n / 2 + 1), h = Matrix<T>::random(n, n);
            const DeviceArray<T> da(a.data), dh(h.data);
            for (const cublasOperation_t trans : operations)
                check(op(trans, a), beta, [&](auto* x, auto* y) {
                    return R::gemv(this->handle, trans, a.rows, a.cols, dev(&alpha), dev<T>(da), a.ld, x, incx,
                                   dev(&beta), y, incy);
                });
            for (const cublasFillMode_t uplo : triangles)
                check(whole(uplo, h, true), beta, [&](auto* x, auto* y) {
                    return R::hemv(this->handle, uplo, n, dev(&alpha), dev<T>(dh), h.ld, x, incx, dev(&beta), y, incy);
                });
        }
}

using ComplexTest = BlasTest<std::complex<float>>;

TEST_F(ComplexTest, Vectors)
{
    using C = std::complex<float>;
    const int n = 50;
    const auto x = Matrix<C>::random(n, 1).data, y = Matrix<C>::random(n, 1).data;
    const C alpha{0.5f, 2}, s{0.6f, -0.64f};
    const float c = 0.48f;
    const DeviceArray<C> dx(x), dy(y);
    const auto expect = [&](const DeviceArray<C>& result, auto value) {
        const std::vector<C> values = result.download();
        for (std::size_t i = 0; i < n; ++i)
            ASSERT_LE(std::abs(values[i] - value(i)), 1e-5) << i;
    };
    cublasCrot_v2(handle, n, dev<C>(dx), 1, dev<C>(dy), 1, &c, dev(&s));
    expect(dx, [&](std::size_t i) { return c * x[i] + s * y[i]; });
    expect(dy, [&](std::size_t i) { return c * y[i] - std::conj(s) * x[i]; });
    // The same turn backwards, on both vectors from their far ends.
    const C back = -s;
    cublasCrot_v2(handle, n, dev<C>(dx), -1, dev<C>(dy), -1, &c, dev(&back));
    expect(dx, [&](std::size_t i) { return x[i]; });
    cublasCswap_v2(handle, n, dev<C>(dx), 1, dev<C>(dy), 1);
    expect(dy, [&](std::size_t i) { return x[i]; });
    cublasCaxpy_v2(handle, n, dev(&alpha), dev<C>(dx), 1, dev<C>(dy), 1);
    expect(dy, [&](std::size_t i) { return x[i] + alpha * y[i]; });
    cublasCsscal_v2(handle, n, &c, dev<C>(dx), 1);
    expect(dx, [&](std::size_t i) { return c * y[i]; });
    cublasCcopy_v2(handle, n, dev<C>(dx), 1, dev<C>(dy), -1);
    expect(dy, [&](std::size_t i) { return c * y[n - 1 - i]; });
    const Matrix<C> a = Matrix<C>::random(n, n);
    const DeviceArray<C> da(a.data);
    cublasCtrmv_v2(handle, CUBLAS_FILL_MODE_UPPER, CUBLAS_OP_C, CUBLAS_DIAG_UNIT, n, dev<C>(da), a.ld, dev<C>(dx), 1);
    expect(dx, [&](std::size_t i) {
        C sum = c * y[i];
        for (std::size_t k = 0; k < i; ++k)
            sum += std::conj(a(int(k), int(i))) * c * y[k];
        return sum;
    });
}

using RealTest = BlasTest<float>;

// What is wrong is told at the call, and the result stays as it was.
TEST_F(RealTest, BadArgumentsAreRefused)
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
TEST_F(RealTest, ScalarsAreReadAtTheCall)
{
    softdevSetHold(true);
    const DeviceArray<float> x(std::vector<float>(10, 1));
    float alpha = 3;
    ASSERT_EQ(cublasSscal_v2(handle, 10, &alpha, x, 1), CUBLAS_STATUS_SUCCESS);
    alpha = 5;
    EXPECT_EQ(x.download(), std::vector<float>(10, 3));
}
