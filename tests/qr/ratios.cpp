#include "qr/ratios.h"

#include "least_squares.h"

namespace test {

namespace {

namespace tool = tarn::tool;

/// The element as the tool names it.
float element(float x) { return x; }
std::complex<float> element(tarn::Complex<float> x) { return {x.real(), x.imag()}; }

/// The first rows of A, or of A^H for trans "C", as the tool holds matrices.
template <class T>
auto toolMatrix(const Matrix<T>& A, int rows, char trans = 'N')
{
    tool::Matrix<decltype(element(T()))> a(rows, trans == 'N' ? A.n : A.m);
    for (int j = 0; j < a.cols; ++j)
        for (int i = 0; i < rows; ++i) {
            a(i, j) = element(trans == 'N' ? A(i, j) : A(j, i));
            if constexpr (tarn::isComplex<T>)
                a(i, j) = trans == 'N' ? a(i, j) : std::conj(a(i, j));
        }
    return a;
}

} // namespace

template <class T>
double gelsRatio(char trans, const Matrix<T>& A, const Matrix<T>& B, const Matrix<T>& X)
{
    const int equations = trans == 'N' ? A.m : A.n, unknowns = trans == 'N' ? A.n : A.m;
    return tool::leastSquaresBackwardError(toolMatrix(A, equations, trans), toolMatrix(B, equations),
                                           toolMatrix(X, unknowns));
}

template <class T>
double gglseRatio(const Matrix<T>& A, const Matrix<T>& B, const Matrix<T>& c, const Matrix<T>& d, const Matrix<T>& x)
{
    return tool::constrainedBackwardError(toolMatrix(A, A.m), toolMatrix(c, c.m), toolMatrix(B, B.m),
                                          toolMatrix(d, d.m), toolMatrix(x, x.m));
}

#define TEST_RATIOS(T)                                                                                                 \
    template double gelsRatio(char, const Matrix<T>&, const Matrix<T>&, const Matrix<T>&);                             \
    template double gglseRatio(const Matrix<T>&, const Matrix<T>&, const Matrix<T>&, const Matrix<T>&,                 \
                               const Matrix<T>&);

TEST_RATIOS(float)
TEST_RATIOS(tarn::Complex<float>)

} // namespace test
