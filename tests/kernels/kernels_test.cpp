// The device modules by their launch wrappers: results against plain loops, bit by bit, and the launches that they
// take.
#include "frame/machine.h"
#include "kernels/fixture.h"
#include "lapack/kernels.h"
#include "lapack/thread_maps.h"

#include <climits>
#include <functional>
#include <numeric>

namespace {

using namespace test;

template <class T>
class Kernels : public KernelTest<T>
{};
TYPED_TEST_SUITE(Kernels, ElementTypes);

TYPED_TEST(Kernels, TransposesEveryShape)
{
    using T = TypeParam;
    const std::pair<int, int> shapes[] = {{1, 1},   {16, 16},  {17, 1},   {1, 17},   {16, 40},
                                          {33, 15}, {257, 40}, {40, 257}, {100, 63}, {128, 128}};
    for (const auto& [m, n] : shapes)
        for (const int pad : {0, 3}) {
            SCOPED_TRACE(testing::Message() << m << " x " << n << " + " << pad);
            const auto A = Matrix<T>::random(m, n, m + pad, m + n);
            Matrix<T> B(n, m, n + pad), H = B;
            const DeviceArray<T> a(A.elements()), b(B.elements()), h(H.elements());
            tarn::kernel::Transpose(b.data(), B.ld, a.data(), A.ld, m, n);
            tarn::kernel::ConjugateTranspose(h.data(), H.ld, a.data(), A.ld, m, n);
            B.elements() = b.download();
            H.elements() = h.download();
            auto expectedB = Matrix<T>(n, m, n + pad), expectedH = expectedB;
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i) {
                    expectedB(j, i) = A(i, j);
                    expectedH(j, i) = conjugate(A(i, j));
                }
            EXPECT_TRUE(identical(B, expectedB));
            EXPECT_TRUE(identical(H, expectedH));
        }
}

class Vast : public OnMachine
{
protected:
    void SetUp() override
    {
        OnMachine::SetUp();
        if (IsSkipped())
            return;
        if (softdevChecked())
            GTEST_SKIP() << "checked builds touch all memory";
        ASSERT_EQ(cudaSetDevice(vast), cudaSuccess);
        tarn::bindThreadDevice();
    }

    static std::vector<float> columnAt(const float* a, std::int64_t offset)
    {
        std::vector<float> column(2);
        EXPECT_EQ(cudaMemcpy(column.data(), a + offset, 2 * sizeof(float), cudaMemcpyDeviceToHost), cudaSuccess);
        return column;
    }
    static void setColumnAt(float* a, std::int64_t offset, const std::vector<float>& column)
    {
        EXPECT_EQ(cudaMemcpy(a + offset, column.data(), 2 * sizeof(float), cudaMemcpyHostToDevice), cudaSuccess);
    }
    using Column = std::vector<float>;
};

/// Columns so far apart that their offsets, in elements, do not fit 32 bits.
TEST_F(Vast, OffsetsHave64Bits)
{
    const int lda = (1 << 30) + 7;
    const DeviceArray<float> matrix(std::size_t(lda) * 3 + 2), packed(8);
    float* const a = matrix.data();
    for (int j = 0; j < 4; ++j)
        setColumnAt(a, std::int64_t(j) * lda, {10.f * j, 10.f * j + 1});
    tarn::kernel::CopyMatrix(2, 4, packed.data(), 2, a, lda);
    EXPECT_EQ(packed.download(), (Column{0, 1, 10, 11, 20, 21, 30, 31}));

    const int rows[] = {2}, columns[] = {4};
    tarn::kernel::LASWP(4, a, lda, 1, 1, rows, 1);
    EXPECT_EQ(columnAt(a, std::int64_t(3) * lda), (Column{31, 30}));
    tarn::kernel::LASWPCOL(2, a, lda, 1, 1, columns, 1);
    EXPECT_EQ(columnAt(a, std::int64_t(3) * lda), (Column{1, 0}));
    EXPECT_EQ(columnAt(a, 0), (Column{31, 30}));
}

/// Interchanges beyond column 65536, which launches count from an origin of their own.
TEST_F(Vast, OriginsOfInterchangesHave64BitOffsets)
{
    const int lda = 40000, k = 70001, pivot = 70003;
    const DeviceArray<float> matrix(std::size_t(lda) * pivot);
    const std::int64_t here = std::int64_t(k - 1) * lda, there = std::int64_t(pivot - 1) * lda;
    setColumnAt(matrix.data(), here, {1, 2});
    setColumnAt(matrix.data(), there, {3, 4});
    std::vector<int> ipiv(k, pivot);
    tarn::kernel::LASWPCOL(2, matrix.data(), lda, k, k, ipiv.data(), 1);
    EXPECT_EQ(columnAt(matrix.data(), here), (Column{3, 4}));
    EXPECT_EQ(columnAt(matrix.data(), there), (Column{1, 2}));
}

TYPED_TEST(Kernels, TransposesInPlace)
{
    using T = TypeParam;
    for (const int n : {1, 2, 15, 16, 17, 32, 33, 257})
        for (const int pad : {0, 5}) {
            SCOPED_TRACE(testing::Message() << n << " + " << pad);
            const auto A = Matrix<T>::random(n, n, n + pad, n);
            auto B = A, H = A, expected = A;
            const DeviceArray<T> b(B.elements()), h(B.elements());
            tarn::kernel::TransposeInplace(n, b.data(), B.ld);
            tarn::kernel::ConjugateTransposeInplace(n, h.data(), H.ld);
            download(B, b);
            download(H, h);
            visit(expected, [&](int i, int j, T& x) { x = A(j, i); });
            EXPECT_TRUE(identical(B, expected));
            expected.each([](T& x) { x = conjugate(x); });
            EXPECT_TRUE(identical(H, expected));
        }
}

TYPED_TEST(Kernels, TransposeArgumentsAreCheckedInOrder)
{
    using T = TypeParam;
    const DeviceArray<T> array(4);
    T* const a = array.data();
    T* const null = nullptr;
    for (const auto transpose : {tarn::kernel::Transpose<T>, tarn::kernel::ConjugateTranspose<T>}) {
        EXPECT_EQ(infoOf([&] { transpose(null, -1, null, -1, -1, -1); }), -1);
        EXPECT_EQ(infoOf([&] { transpose(null, -1, null, -1, 2, -1); }), -2);
        EXPECT_EQ(infoOf([&] { transpose(null, 1, null, 1, 2, 2); }), -4);
        EXPECT_EQ(infoOf([&] { transpose(null, 1, null, 2, 2, 2); }), -6);
        EXPECT_EQ(infoOf([&] { transpose(null, 2, null, 2, 2, 2); }), -3);
        EXPECT_EQ(infoOf([&] { transpose(null, 2, a, 2, 2, 2); }), -5);
        EXPECT_EQ(infoOf([&] { transpose(null, 2, null, 0, 0, 2); }), -3);
        EXPECT_EQ(infoOf([&] { transpose(null, 0, null, 0, 0, 0); }), 1);
        EXPECT_EQ(infoOf([&] { transpose(a, 4, a, 0, 0, 4); }), 1) << "an empty matrix";
    }
    EXPECT_EQ(infoOf([&] { tarn::kernel::TransposeInplace(-1, null, -2); }), -1);
    EXPECT_EQ(infoOf([&] { tarn::kernel::TransposeInplace(2, null, 1); }), -3);
    EXPECT_EQ(infoOf([&] { tarn::kernel::TransposeInplace(2, null, 2); }), -2);
    EXPECT_EQ(infoOf([&] { tarn::kernel::TransposeInplace(0, null, 0); }), 1);
}

/// Applies interchanges k1 to k2 one after the other to the rows, or to the columns, of A.
template <class T>
void interchange(Matrix<T>& A, bool columns, int k1, int k2, const std::vector<int>& ipiv)
{
    for (int k = k1; k <= k2; ++k) {
        const int r = k - 1, p = ipiv[k - 1] - 1;
        for (int i = 0; i < (columns ? A.m : A.n); ++i)
            if (columns)
                std::swap(A(i, r), A(i, p));
            else
                std::swap(A(r, i), A(p, i));
    }
}

/// Compares both wrappers with the plain loop on a matrix of `extent` rows (or columns) to be exchanged, `width` long.
template <class T>
void expectInterchanges(int extent, int width, int k1, int k2, const std::vector<int>& ipiv)
{
    for (const bool columns : {false, true}) {
        SCOPED_TRACE(testing::Message() << (columns ? "columns " : "rows ") << k1 << " to " << k2);
        const int m = columns ? width : extent, n = columns ? extent : width;
        auto A = Matrix<T>::random(m, n, m + 1, 5), expected = A;
        const DeviceArray<T> a(A.elements());
        auto pivots = ipiv;
        const auto apply = columns ? tarn::kernel::LASWPCOL<T> : tarn::kernel::LASWP<T>;
        apply(width, a.data(), A.ld, k1, k2, pivots.data(), 1);
        std::fill(pivots.begin(), pivots.end(), 1); // the wrapper has read them
        A.elements() = a.download();
        interchange(expected, columns, k1, k2, ipiv);
        EXPECT_TRUE(identical(A, expected));
    }
}

/// Pivots as of an LU factorisation: row k is exchanged with one that lies at or below it.
std::vector<int> pivotsBelow(int count, int extent)
{
    std::mt19937 engine(count);
    std::vector<int> ipiv;
    for (int k = 1; k <= count; ++k)
        ipiv.push_back(std::uniform_int_distribution<int>(k, extent)(engine));
    return ipiv;
}

TYPED_TEST(Kernels, InterchangesInOrder)
{
    using T = TypeParam;
    for (const int count : {1, 15, 16, 17, 33, 100}) {
        expectInterchanges<T>(100, 40, 1, count, pivotsBelow(count, 100));
        expectInterchanges<T>(100, 3, (count + 1) / 2, count, pivotsBelow(count, 100));
    }
    expectInterchanges<T>(60, 1000, 1, 40, pivotsBelow(40, 60)); // four blocks, the last with idle threads
    expectInterchanges<T>(5, 256, 1, 5, {1, 2, 3, 4, 5});
    expectInterchanges<T>(5, 4, 3, 2, {5, 5, 5, 5, 5});

    // (a, b, c) by the pivots (2, 3): the second step acts on the result of the first.
    const DeviceArray<T> rows(std::vector<T>{T(1), T(2), T(3)});
    const int pivots[] = {2, 3};
    tarn::kernel::LASWP(1, rows.data(), 3, 1, 2, pivots, 1);
    EXPECT_EQ(rows.download(), (std::vector<T>{T(2), T(3), T(1)}));
}

TYPED_TEST(Kernels, InterchangesReachBeyondSixteenBits)
{
    using T = TypeParam;
    const int extent = 140000;
    std::vector<int> far(40), spread(40), edge(40), tooWide(40);
    for (int k = 0; k < 40; ++k) {
        far[k] = extent - 3 * k;                     // one run can hold these, counted from its lowest
        spread[k] = k % 3 == 0 ? k + 1 : far[k];     // further apart than 16 bits
        edge[k] = 65530 + k;                         // across the border
        tooWide[k] = k % 2 == 0 ? 100 : 100 + 65536; // by one
    }
    for (const auto& ipiv : {far, spread, edge, tooWide}) {
        expectInterchanges<T>(extent, 2, 1, 40, ipiv);
        expectInterchanges<T>(extent, 2, 7, 23, ipiv);
    }
    // Rows and pivots all beyond the border.
    std::vector<int> late(70020, 1);
    for (int k = 70001; k <= 70020; ++k)
        late[k - 1] = k + 60000;
    expectInterchanges<T>(extent, 2, 70001, 70020, late);
}

TYPED_TEST(Kernels, InterchangeArgumentsAreCheckedInOrder)
{
    using T = TypeParam;
    const DeviceArray<T> array(4);
    T* const a = array.data();
    T* const null = nullptr;
    int pivot = 1;
    for (const auto apply : {tarn::kernel::LASWP<T>, tarn::kernel::LASWPCOL<T>}) {
        EXPECT_EQ(infoOf([&] { apply(-1, null, -1, -1, -1, nullptr, 1); }), -1);
        EXPECT_EQ(infoOf([&] { apply(0, null, -1, -1, -1, nullptr, 1); }), 1) << "nothing to do, nothing checked";
        EXPECT_EQ(infoOf([&] { apply(2, null, -1, -1, -1, nullptr, 1); }), -2);
        EXPECT_EQ(infoOf([&] { apply(2, a, -1, -1, -1, nullptr, 1); }), -3);
        EXPECT_EQ(infoOf([&] { apply(2, a, 2, -1, -1, nullptr, 1); }), -4);
        EXPECT_EQ(infoOf([&] { apply(2, a, 2, 1, -1, nullptr, 1); }), -5);
        EXPECT_EQ(infoOf([&] { apply(2, a, 2, 1, 1, nullptr, 1); }), -6);
        EXPECT_EQ(infoOf([&] { apply(2, a, 2, 1, 0, &pivot, 1); }), 1);
    }
    EXPECT_EQ(infoOf([&] { tarn::kernel::LASWPCOL(2, a, 1, 1, 1, &pivot, 1); }), -3);
    EXPECT_EQ(infoOf([&] { tarn::kernel::LASWP(2, a, 1, 1, 1, &pivot, 1); }), 1) << "n counts columns here";
}

class Launches : public OnMachine
{
protected:
    using Shape = std::vector<long long>; ///< grid and block, x, y, z each

    /// The launches of a call, all of this kernel, and nothing else: no wrapper copies, allocates or waits.
    static std::vector<Shape> of(const std::string& kernel, const std::function<void()>& call)
    {
        softdevLogStart();
        call();
        std::vector<Shape> shapes;
        for (const SoftdevCall& logged : softdevLogTake())
            if (logged.name == kernel)
                shapes.push_back(logged.ints);
            else
                EXPECT_TRUE(logged.name == "cudaGetDevice" || logged.name == "cudaGetLastError") << logged.name;
        EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
        return shapes;
    }
};

TEST_F(Launches, AreAsManyAndAsLargeAsTheShapeNeeds)
{
    using Shapes = std::vector<Shape>;
    const DeviceArray<float> array(70000 * 2);
    float* const a = array.data();
    std::vector<int> ipiv(200, 1);
    EXPECT_EQ(of("Transpose_k", [&] { tarn::kernel::Transpose(a + 1000, 40, a, 17, 17, 40); }),
              Shapes{(Shape{2, 3, 1, 16, 16, 1})});
    EXPECT_EQ(of("TransposeInplace_k", [&] { tarn::kernel::TransposeInplace(17, a, 17); }),
              Shapes{(Shape{2, 2, 1, 16, 16, 1})});
    EXPECT_EQ(of("Transpose_k", [&] { tarn::kernel::Transpose(a, 4, a, 0, 0, 4); }), Shapes{});

    const Shape fourBlocks{4, 1, 1, 256, 1, 1};
    EXPECT_EQ(of("KernelLASWP", [&] { tarn::kernel::LASWP(1000, a, 20, 1, 16, ipiv.data(), 1); }), Shapes{fourBlocks});
    EXPECT_EQ(of("KernelLASWP", [&] { tarn::kernel::LASWP(1000, a, 20, 1, 17, ipiv.data(), 1); }),
              Shapes(2, fourBlocks));
    EXPECT_EQ(of("KernelLASWPCOL", [&] { tarn::kernel::LASWPCOL(1000, a, 1000, 5, 5, ipiv.data(), 1); }),
              Shapes{fourBlocks});
    EXPECT_EQ(of("KernelLASWP", [&] { tarn::kernel::LASWP(10, a, 200, 1, 200, ipiv.data(), 1); }).size(), 13u);
    EXPECT_EQ(of("KernelLASWP", [&] { tarn::kernel::LASWP(10, a, 200, 2, 1, ipiv.data(), 1); }), Shapes{});
    EXPECT_EQ(of("KernelLASWP", [&] { tarn::kernel::LASWP(0, a, 200, 1, 9, ipiv.data(), 1); }), Shapes{});

    // Pivots beyond 16 bits share a launch as long as they are close together.
    std::iota(ipiv.begin(), ipiv.end(), 69000);
    EXPECT_EQ(of("KernelLASWP", [&] { tarn::kernel::LASWP(2, a, 70000, 1, 32, ipiv.data(), 1); }).size(), 2u);
    ipiv[3] = 4;
    EXPECT_EQ(of("KernelLASWP", [&] { tarn::kernel::LASWP(2, a, 70000, 1, 16, ipiv.data(), 1); }).size(), 3u);
}

TEST_F(Launches, ADeviceOfFewBlocksGetsAFoldedGrid)
{
    ASSERT_EQ(cudaSetDevice(narrow), cudaSuccess);
    tarn::bindThreadDevice();
    const int n = 5000; // 20 blocks of 256 threads where 16 stand in a row
    auto A = Matrix<float>::random(20, n, 20), expected = A;
    const DeviceArray<float> a(A.elements());
    const auto ipiv = pivotsBelow(9, 20);
    EXPECT_EQ(of("KernelLASWP", [&] { tarn::kernel::LASWP(n, a.data(), 20, 1, 9, ipiv.data(), 1); }),
              std::vector<Shape>{(Shape{10, 2, 1, 256, 1, 1})});
    A.elements() = a.download();
    interchange(expected, false, 1, 9, ipiv);
    EXPECT_TRUE(identical(A, expected));
    EXPECT_EQ(velk::StaticMap1D<64>(n).blocks().x, 9u);

    // A two-dimensional map does not fold: the launch is refused, which shows at the end of the routine.
    tarn::kernel::TransposeInplace(20 * 16, a.data(), 20 * 16);
    EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidConfiguration);
}

std::vector<unsigned> extents(velk::Shape shape) { return {shape.x, shape.y, shape.z}; }

using Extents = std::vector<unsigned>;

TEST(ThreadMaps, OneDimensionalGridsAreHalvedToTheLimit)
{
    EXPECT_EQ(extents(velk::gridFor1D(1, 256, 65535)), (Extents{1, 1, 1}));
    EXPECT_EQ(extents(velk::gridFor1D(256, 256, 65535)), (Extents{1, 1, 1}));
    EXPECT_EQ(extents(velk::gridFor1D(257, 256, 65535)), (Extents{2, 1, 1}));
    EXPECT_EQ(extents(velk::gridFor1D(65535 * 256, 256, 65535)), (Extents{65535, 1, 1}));
    EXPECT_EQ(extents(velk::gridFor1D(16777216, 256, 65535)), (Extents{32768, 2, 1}));
    EXPECT_EQ(extents(velk::gridFor1D(INT_MAX, 256, 65535)), (Extents{32768, 256, 1}));
    EXPECT_EQ(extents(velk::gridFor1D(INT_MAX, 16, INT_MAX)), (Extents{134217728, 1, 1}));
    EXPECT_EQ(extents(velk::gridFor1D(1000, 1, 10)), (Extents{7, 8, 18}));
}

} // namespace
