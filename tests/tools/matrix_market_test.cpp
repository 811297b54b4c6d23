#include "matrix_market.h"

#include "failure.h"
#include "scratch.h"

namespace {

using tarn::tool::AnyMatrix;
using tarn::tool::Matrix;
using Z = std::complex<double>;

class MatrixMarket : public testing::Test
{
protected:
    AnyMatrix read(const std::string& text) const { return tarn::tool::readMatrixMarket(scratch.write("a.mtx", text)); }

    /// The elements of a real matrix by columns.
    std::vector<double> real(const std::string& text) const { return std::get<Matrix<double>>(read(text)).values; }
    std::vector<Z> complex(const std::string& text) const { return std::get<Matrix<Z>>(read(text)).values; }

    /// What the reader says of a text, without the folder.
    std::string complaint(const std::string& text) const
    {
        try {
            read(text);
        } catch (const tarn::tool::MatrixMarketError& error) {
            const std::string what = error.what(), folder = scratch.path("");
            return what.compare(0, folder.size(), folder) == 0 ? what.substr(folder.size()) : what;
        }
        return "";
    }

    const test::Scratch scratch;
};

using Reals = std::vector<double>;
using Complexes = std::vector<Z>;

TEST_F(MatrixMarket, Coordinate)
{
    EXPECT_EQ(real("%%MatrixMarket matrix coordinate real general\n% remark\n\n2 3 4\n1 1 1.5\n\n% remark\n"
                   "2 3 -2e-1\n1 2 +.5\n2 1 7\n"),
              (Reals{1.5, 7, 0.5, 0, 0, -0.2}));
    EXPECT_EQ(real("%%matrixmarket MATRIX Coordinate Integer General\r\n1 2 3\r\n1 2 4\r\n 1\t2  -1 \r\n1 1 2"),
              (Reals{2, 3}))
        << "entries of one position add up, and upper case, blanks and line ends do not matter";
    EXPECT_EQ(real("%%MatrixMarket matrix coordinate pattern symmetric\n2 2 2\n1 1\n2 1\n"), (Reals{1, 1, 1, 0}));
    EXPECT_EQ(real("%%MatrixMarket matrix coordinate real skew-symmetric\n2 2 1\n2 1 3\n"), (Reals{0, 3, -3, 0}));
    EXPECT_EQ(complex("%%MatrixMarket matrix coordinate complex general\n1 2 1\n1 2 3 -4\n"), (Complexes{0, {3, -4}}));
    EXPECT_EQ(complex("%%MatrixMarket matrix coordinate complex hermitian\n2 2 3\n1 1 5 0\n2 1 3 -4\n2 1 0 1\n"),
              (Complexes{5, {3, -3}, {3, 3}, 0}));
    EXPECT_EQ(complex("%%MatrixMarket matrix coordinate complex symmetric\n2 2 1\n2 1 3 -4\n"),
              (Complexes{0, {3, -4}, {3, -4}, 0}));
}

TEST_F(MatrixMarket, Array)
{
    EXPECT_EQ(real("%%MatrixMarket matrix array real general\n2 2\n1\n2\n3\n4\n"), (Reals{1, 2, 3, 4}));
    EXPECT_EQ(real("%%MatrixMarket matrix array integer symmetric\n3 3\n1\n2\n3\n4\n5\n6\n"),
              (Reals{1, 2, 3, 2, 4, 5, 3, 5, 6}));
    EXPECT_EQ(real("%%MatrixMarket matrix array real skew-symmetric\n3 3\n1\n2\n3\n"),
              (Reals{0, 1, 2, -1, 0, 3, -2, -3, 0}));
    EXPECT_EQ(complex("%%MatrixMarket matrix array complex hermitian\n2 2\n1 0\n2 3\n4 0\n"),
              (Complexes{1, {2, 3}, {2, -3}, 4}));
    EXPECT_EQ(complex("%%MatrixMarket matrix array complex skew-symmetric\n2 2\n2 3\n"),
              (Complexes{0, {2, 3}, {-2, -3}, 0}));
    EXPECT_EQ(real("%%MatrixMarket matrix array real general\n3 1\n4.0D0\n-1.5d-2\n+2D+1\n"), (Reals{4, -0.015, 20}));
    EXPECT_TRUE(real("%%MatrixMarket matrix array real general\n0 3\n").empty());
}

TEST_F(MatrixMarket, KeepsFullPrecisionAndTheEndsOfTheRange)
{
    EXPECT_EQ(real("%%MatrixMarket matrix array real general\n4 1\n0.1234567890123456789\n-1.7976931348623157e308\n"
                   "4.9e-324\n1e-999\n"),
              (Reals{0.1234567890123456789, -1.7976931348623157e308, 4.9e-324, 0}));
}

TEST_F(MatrixMarket, NamesFileLineAndCause)
{
    const std::string coordinate = "%%MatrixMarket matrix coordinate real ",
                      array = "%%MatrixMarket matrix array real ";
    const std::pair<std::string, const char*> cases[] = {
        {"", "a.mtx: the file is empty"},
        {"%MatrixMarket matrix array real general\n", "a.mtx:1: a Matrix Market file begins with"},
        {"%%MatrixMarket vector array real general\n", "a.mtx:1: the object is 'vector'"},
        {"%%MatrixMarket matrix dense real general\n", "a.mtx:1: the format is 'dense', not one of: coordinate, array"},
        {"%%MatrixMarket matrix array double general\n", "a.mtx:1: the field is 'double'"},
        {"%%MatrixMarket matrix array real\n", "a.mtx:1: the symmetry is ''"},
        {array + "general more\n1 1\n1\n", "a.mtx:1: 'more' stands behind"},
        {"%%MatrixMarket matrix array pattern general\n", "a.mtx:1: an array cannot be a pattern"},
        {array + "hermitian\n", "a.mtx:1: only a complex matrix"},
        {"%%MatrixMarket matrix coordinate pattern skew-symmetric\n", "a.mtx:1: a pattern cannot"},
        {array + "general\n% only remarks\n", "a.mtx: the size line is missing"},
        {array + "general\n2\n", "a.mtx:2: the number of columns is missing"},
        {array + "general\n-1 2\n", "a.mtx:2: the number of rows -1 is outside"},
        {array + "general\n2 4294967296\n", "a.mtx:2: the number of columns 4294967296 is outside"},
        {array + "general\n2000000000 2000000000\n", "a.mtx:2: a dense 2000000000 x 2000000000 matrix takes"},
        {coordinate + "general\n2 2\n", "a.mtx:2: the number of entries is missing"},
        {coordinate + "general\n2 2 -1\n", "a.mtx:2: the number of entries -1 is negative"},
        {coordinate + "general\n2 2 1 1\n", "a.mtx:2: '1' stands behind"},
        {coordinate + "symmetric\n2 3 0\n", "a.mtx:2: a 2 x 3 matrix has no symmetry"},
        {coordinate + "general\n2 2 1\n3 1 1.0\n", "a.mtx:3: the row index 3 is outside 1..2"},
        {coordinate + "general\n2 2 1\n1 0 1.0\n", "a.mtx:3: the column index 0 is outside 1..2"},
        {coordinate + "general\n2 2 1\n1.5 1 1.0\n", "a.mtx:3: the row index is '1.5', not a whole number"},
        {coordinate + "general\n2 2 1\n\n1 1 1.0x\n", "a.mtx:4: the value is '1.0x', not a number"},
        {coordinate + "general\n2 2 1\n1 1\n", "a.mtx:3: the value is missing"},
        {coordinate + "general\n2 2 1\n1 1 1 1\n", "a.mtx:3: '1' stands behind"},
        {coordinate + "general\n2 2 1\n1 1 nan\n", "a.mtx:3: the value nan is not finite"},
        {coordinate + "general\n2 2 1\n1 1 1e999\n", "a.mtx:3: the value 1e999 is not finite"},
        {coordinate + "general\n2 2 1\n1 1 1D\n", "a.mtx:3: the value is '1D', not a number"},
        {coordinate + "general\n2 2 1\n1 1 +-1\n", "a.mtx:3: the value is '+-1', not a number"},
        {coordinate + "general\n2 2 2\n1 1 1\n", "a.mtx: the file ends after 1 of 2 entries"},
        {coordinate + "general\n2 2 1\n1 1 1\n2 2 1\n", "a.mtx:4: there are more entries than announced"},
        {coordinate + "symmetric\n2 2 1\n1 2 1\n", "a.mtx:3: entry (1, 2) is above the diagonal"},
        {coordinate + "skew-symmetric\n2 2 1\n1 1 1\n", "a.mtx:3: a skew-symmetric matrix has no diagonal"},
        {"%%MatrixMarket matrix coordinate complex general\n2 2 1\n1 1 1\n", "a.mtx:3: the imaginary part is missing"},
        {"%%MatrixMarket matrix coordinate complex hermitian\n1 1 1\n1 1 1 1\n", "a.mtx:3: a hermitian matrix has a"},
        {"%%MatrixMarket matrix coordinate integer general\n1 1 1\n1 1 1.5\n",
         "a.mtx:3: the value is '1.5', not a whole"},
        {array + "general\n2 1\n1\n", "a.mtx: the file ends before entry (2, 1)"},
        {array + "general\n2 1\n1\n2\n3\n", "a.mtx:5: there are more entries"},
        {array + "general\n2 1\n1 2\n", "a.mtx:3: '2' stands behind"},
        {"\x1f\x8b\x08", "a.mtx: the compressed file is cut off"},
    };
    for (const auto& [text, cause] : cases)
        EXPECT_EQ(complaint(text).substr(0, std::string(cause).size()), cause) << text;
    EXPECT_THROW(tarn::tool::readMatrixMarket(scratch.path("missing")), tarn::tool::MatrixMarketError);
    EXPECT_THROW(tarn::tool::readMatrixMarket(scratch.path("")), tarn::tool::MatrixMarketError);
}

TEST_F(MatrixMarket, WritesWhatItReads)
{
    Matrix<std::complex<float>> a(2, 1);
    a.values = {{1.0f / 3, -1e-30f}, {16777217.0f, 3.4e38f}};
    writeMatrixMarket(scratch.path("z.mtx"), a);
    const auto z = std::get<Matrix<Z>>(tarn::tool::readMatrixMarket(scratch.path("z.mtx")));
    EXPECT_EQ(tarn::tool::convert<std::complex<float>>(z).values, a.values);

    Matrix<float> b(1, 2);
    b.values = {0.1f, -2};
    writeMatrixMarket(scratch.path("s.mtx"), b);
    const auto s = std::get<Matrix<double>>(tarn::tool::readMatrixMarket(scratch.path("s.mtx")));
    EXPECT_EQ(tarn::tool::convert<float>(s).values, b.values);
    EXPECT_THROW(writeMatrixMarket(scratch.path("no/such/folder"), b), tarn::tool::Failure);
}

} // namespace
