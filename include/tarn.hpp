/* tarn_lapack from C++17: views of matrices and vectors, exceptions for statuses, and the library up for a scope.
 *
 *   tarn::Session session;                                   // tarnInitialize, and tarnShutdown at the end of the
 * scope tarn::MatrixView<float> a(dataOfA, n, n), b(dataOfB, n, nrhs); tarn::gesv(a, {pivots, n}, b); // A X = B, X in
 * place of B; throws tarn::Error
 *
 * Header only, over the C calls of tarn_lapack.h: what a routine computes, and the infos of its statuses, stand there.
 * Element types are float, double, std::complex<float> and std::complex<double>; LAPACK routines take the single
 * precision ones. Dimensions come from the views. A view of device memory (DeviceMatrixView) selects the device form.
 * Where shapes do not fit together std::invalid_argument is thrown, and nothing is called.
 */
#ifndef TARN_HPP
#define TARN_HPP

#include "tarn_lapack.h"

#include <algorithm>
#include <complex>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace tarn {

/// A status other than tarnNoError, with its info; what() is the status' text and the info.
class Error : public std::runtime_error
{
public:
    Error(tarnStatus status, tarnInfo info)
        : std::runtime_error(std::string(tarnGetStatusString(status)) + " (info " + std::to_string(info) + ")"),
          status_(status), info_(info)
    {}

    tarnStatus status() const { return status_; }
    tarnInfo info() const { return info_; }

private:
    tarnStatus status_;
    tarnInfo info_;
};

/// Throws what a C call returned, unless it is tarnNoError.
inline void check(tarnStatus status)
{
    if (status != tarnNoError)
        throw Error(status, tarnGetErrorInfo());
}

/// The library up on the calling thread as long as this lives; it ends on the thread that made it.
class Session
{
public:
    Session() { check(tarnInitialize()); }
    ~Session() { tarnShutdown(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
};

enum class Op : char
{
    none = 'N',
    transpose = 'T',
    conjTranspose = 'C'
};
enum class Side : char
{
    left = 'L',
    right = 'R'
};
enum class Uplo : char
{
    upper = 'U',
    lower = 'L'
};
enum class Diag : char
{
    nonUnit = 'N',
    unit = 'U'
};
/// Which singular vectors gesvd forms: all, the first min(m, n), these in place of A, or none.
enum class Job : char
{
    all = 'A',
    some = 'S',
    overwrite = 'O',
    none = 'N'
};

/// Where the elements of a view stand.
enum class Memory
{
    host,
    device
};

/// A vector of elements `increment` apart, at least 1, that somebody else owns.
template <class T, Memory memory = Memory::host>
class VectorView
{
public:
    VectorView() = default;
    VectorView(T* data, int size, int increment = 1) : data_(data), size_(size), increment_(increment)
    {
        if (size < 0 || increment < 1)
            throw std::invalid_argument("tarn::VectorView: negative size, or increment below 1");
    }
    /// What may be written may be read.
    template <class U, class = std::enable_if_t<std::is_same_v<const U, T>>>
    VectorView(const VectorView<U, memory>& other) : VectorView(other.data(), other.size(), other.increment())
    {}

    T* data() const { return data_; }
    int size() const { return size_; }
    int increment() const { return increment_; }

    /// Element i, counted from 0.
    T& operator[](int i) const
    {
        static_assert(memory == Memory::host, "elements in device memory cannot be reached from the host");
        return data_[std::ptrdiff_t(i) * increment_];
    }

private:
    T* data_ = nullptr;
    int size_ = 0, increment_ = 1;
};

/// A column-major matrix that somebody else owns; element (i, j) stands at data[i + j ld].
template <class T, Memory memory = Memory::host>
class MatrixView
{
public:
    MatrixView() = default;
    MatrixView(T* data, int rows, int columns) : MatrixView(data, rows, columns, std::max(rows, 1)) {}
    MatrixView(T* data, int rows, int columns, int ld) : data_(data), rows_(rows), columns_(columns), ld_(ld)
    {
        if (rows < 0 || columns < 0 || ld < std::max(rows, 1))
            throw std::invalid_argument("tarn::MatrixView: negative dimension, or ld below max(1, rows)");
    }
    /// What may be written may be read.
    template <class U, class = std::enable_if_t<std::is_same_v<const U, T>>>
    MatrixView(const MatrixView<U, memory>& other) : MatrixView(other.data(), other.rows(), other.columns(), other.ld())
    {}

    T* data() const { return data_; }
    int rows() const { return rows_; }
    int columns() const { return columns_; }
    int ld() const { return ld_; }

    /// Element (i, j), counted from 0.
    T& operator()(int i, int j) const
    {
        static_assert(memory == Memory::host, "elements in device memory cannot be reached from the host");
        return data_[i + std::ptrdiff_t(j) * ld_];
    }

    /// The rows by columns matrix whose first element is (i, j) of this one.
    MatrixView block(int i, int j, int rows, int columns) const
    {
        if (i < 0 || j < 0 || rows < 0 || columns < 0 || i > rows_ - rows || j > columns_ - columns)
            throw std::invalid_argument("tarn::MatrixView::block: not inside the matrix");
        return {data_ + i + std::ptrdiff_t(j) * ld_, rows, columns, ld_};
    }
    VectorView<T, memory> column(int j) const { return {block(0, j, rows_, 1).data_, rows_, 1}; }
    VectorView<T, memory> row(int i) const { return {block(i, 0, 1, columns_).data_, columns_, ld_}; }

private:
    T* data_ = nullptr;
    int rows_ = 0, columns_ = 0, ld_ = 1;
};

template <class T>
using DeviceVectorView = VectorView<T, Memory::device>;
template <class T>
using DeviceMatrixView = MatrixView<T, Memory::device>;

namespace detail {

/// T, where other arguments decide what T is.
template <class T>
struct Given
{
    using type = T;
};
template <class T>
using As = typename Given<T>::type;
template <class T, Memory memory>
using In = As<MatrixView<const T, memory>>;
template <class T, Memory memory>
using InVector = As<VectorView<const T, memory>>;

template <class T>
struct RealOf
{
    using type = T;
};
template <class T>
struct RealOf<std::complex<T>>
{
    using type = T;
};
template <class T>
using Real = As<typename RealOf<T>::type>;

/// Elements and their addresses as the C calls name them; those do not write through the addresses of operands.
inline float native(float x) { return x; }
inline double native(double x) { return x; }
inline tarnFloatComplex native(std::complex<float> x) { return {x.real(), x.imag()}; }
inline tarnDoubleComplex native(std::complex<double> x) { return {x.real(), x.imag()}; }
inline float* native(const float* p) { return const_cast<float*>(p); }
inline double* native(const double* p) { return const_cast<double*>(p); }
inline tarnFloatComplex* native(const std::complex<float>* p)
{
    return reinterpret_cast<tarnFloatComplex*>(const_cast<std::complex<float>*>(p));
}
inline tarnDoubleComplex* native(const std::complex<double>* p)
{
    return reinterpret_cast<tarnDoubleComplex*>(const_cast<std::complex<double>*>(p));
}

/// The C calls by element type; each as its host and its device form, by Memory.
template <class T>
struct Blas
{
    static_assert(sizeof(T) == 0, "elements are float, double, std::complex<float> or std::complex<double>");
};
template <class T>
struct Lapack
{
    static_assert(sizeof(T) == 0, "LAPACK routines take float and std::complex<float>");
};

#define TARN_HPP_FORMS(X, routine)                                                                                     \
    static constexpr decltype(&tarn##X##routine) routine[] = {tarn##X##routine, tarnDevice##X##routine};
#define TARN_HPP_BLAS(X)                                                                                               \
    TARN_HPP_FORMS(X, gemm)                                                                                            \
    TARN_HPP_FORMS(X, trsm)                                                                                            \
    TARN_HPP_FORMS(X, trmm)                                                                                            \
    TARN_HPP_FORMS(X, symm)                                                                                            \
    TARN_HPP_FORMS(X, syrk)                                                                                            \
    TARN_HPP_FORMS(X, syr2k)                                                                                           \
    TARN_HPP_FORMS(X, gemv)
#define TARN_HPP_REAL_BLAS(X)                                                                                          \
    TARN_HPP_BLAS(X)                                                                                                   \
    TARN_HPP_FORMS(X, symv)
#define TARN_HPP_COMPLEX_BLAS(X)                                                                                       \
    TARN_HPP_BLAS(X)                                                                                                   \
    TARN_HPP_FORMS(X, hemm)                                                                                            \
    TARN_HPP_FORMS(X, herk)                                                                                            \
    TARN_HPP_FORMS(X, her2k)                                                                                           \
    TARN_HPP_FORMS(X, hemv)
#define TARN_HPP_LAPACK(X)                                                                                             \
    TARN_HPP_FORMS(X, getrf)                                                                                           \
    TARN_HPP_FORMS(X, gesv)                                                                                            \
    TARN_HPP_FORMS(X, geqrf)                                                                                           \
    TARN_HPP_FORMS(X, gels)                                                                                            \
    TARN_HPP_FORMS(X, gglse)                                                                                           \
    TARN_HPP_FORMS(X, gesvd)

template <>
struct Blas<float>
{
    TARN_HPP_REAL_BLAS(S)
};
template <>
struct Blas<double>
{
    TARN_HPP_REAL_BLAS(D)
};
template <>
struct Blas<std::complex<float>>
{
    TARN_HPP_COMPLEX_BLAS(C)
};
template <>
struct Blas<std::complex<double>>
{
    TARN_HPP_COMPLEX_BLAS(Z)
};
template <>
struct Lapack<float>
{
    TARN_HPP_LAPACK(S)
};
template <>
struct Lapack<std::complex<float>>
{
    TARN_HPP_LAPACK(C)
};

#undef TARN_HPP_LAPACK
#undef TARN_HPP_COMPLEX_BLAS
#undef TARN_HPP_REAL_BLAS
#undef TARN_HPP_BLAS
#undef TARN_HPP_FORMS

inline void require(bool holds, const char* what)
{
    if (!holds)
        throw std::invalid_argument(what);
}

template <class T, Memory memory>
bool isSquare(const MatrixView<T, memory>& a, int order)
{
    return a.rows() == order && a.columns() == order;
}

/// At least `size` elements that adjoin each other.
template <class T, Memory memory>
bool holds(const VectorView<T, memory>& x, int size)
{
    return x.size() >= size && x.increment() == 1;
}

template <class T, Memory memory>
int rowsOf(Op op, const MatrixView<T, memory>& a)
{
    return op == Op::none ? a.rows() : a.columns();
}

template <class T, Memory memory>
int columnsOf(Op op, const MatrixView<T, memory>& a)
{
    return op == Op::none ? a.columns() : a.rows();
}

} // namespace detail

/// A = P L U; the factors in place of A, min(m, n) one-based pivots in ipiv.
template <class T, Memory memory>
void getrf(MatrixView<T, memory> a, detail::As<VectorView<int, memory>> ipiv)
{
    detail::require(detail::holds(ipiv, std::min(a.rows(), a.columns())), "tarn::getrf: ipiv needs min(m, n) elements");
    check(detail::Lapack<T>::getrf[int(memory)](a.rows(), a.columns(), detail::native(a.data()), a.ld(), ipiv.data()));
}

/// Solves A X = B; X in place of B, the factors of getrf in place of A. tarnDataError: A is singular.
template <class T, Memory memory>
void gesv(MatrixView<T, memory> a, detail::As<VectorView<int, memory>> ipiv, detail::As<MatrixView<T, memory>> b)
{
    detail::require(detail::isSquare(a, b.rows()), "tarn::gesv: A must be square, and B have as many rows");
    detail::require(detail::holds(ipiv, a.rows()), "tarn::gesv: ipiv needs n elements");
    check(detail::Lapack<T>::gesv[int(memory)](a.rows(), b.columns(), detail::native(a.data()), a.ld(), ipiv.data(),
                                               detail::native(b.data()), b.ld()));
}

/// A = Q R; R and the vectors of the reflectors in place of A, their min(m, n) scalars in tau.
template <class T, Memory memory>
void geqrf(MatrixView<T, memory> a, detail::As<VectorView<T, memory>> tau)
{
    detail::require(detail::holds(tau, std::min(a.rows(), a.columns())), "tarn::geqrf: tau needs min(m, n) elements");
    check(detail::Lapack<T>::geqrf[int(memory)](a.rows(), a.columns(), detail::native(a.data()), a.ld(),
                                                detail::native(tau.data())));
}

/// Solves op(A) X = B by least squares or least norm; b has max(m, n) rows, X comes in its first ones.
template <class T, Memory memory>
void gels(Op op, MatrixView<T, memory> a, detail::As<MatrixView<T, memory>> b)
{
    detail::require(b.rows() >= std::max(a.rows(), a.columns()), "tarn::gels: B needs max(m, n) rows");
    check(detail::Lapack<T>::gels[int(memory)](char(op), a.rows(), a.columns(), b.columns(), detail::native(a.data()),
                                               a.ld(), detail::native(b.data()), b.ld()));
}

/// Minimises norm2(c - A x) subject to B x = d.
template <class T, Memory memory>
void gglse(MatrixView<T, memory> a, detail::As<MatrixView<T, memory>> b, detail::As<VectorView<T, memory>> c,
           detail::As<VectorView<T, memory>> d, detail::As<VectorView<T, memory>> x)
{
    detail::require(a.columns() == b.columns(), "tarn::gglse: A and B need as many columns");
    detail::require(detail::holds(c, a.rows()) && detail::holds(d, b.rows()) && detail::holds(x, a.columns()),
                    "tarn::gglse: c, d and x need m, p and n elements");
    check(detail::Lapack<T>::gglse[int(memory)](a.rows(), a.columns(), b.rows(), detail::native(a.data()), a.ld(),
                                                detail::native(b.data()), b.ld(), detail::native(c.data()),
                                                detail::native(d.data()), detail::native(x.data())));
}

/// A = U S V^H; singular values in s. u and vt are empty views, {}, where jobs are overwrite or none.
template <class T, Memory memory>
void gesvd(Job jobU, Job jobVt, MatrixView<T, memory> a, detail::As<VectorView<detail::Real<T>, memory>> s,
           detail::As<MatrixView<T, memory>> u, detail::As<MatrixView<T, memory>> vt)
{
    const int m = a.rows(), n = a.columns(), k = std::min(m, n);
    const auto has = [](Job job) { return job == Job::all || job == Job::some; };
    detail::require(detail::holds(s, k), "tarn::gesvd: s needs min(m, n) elements");
    detail::require(!has(jobU) || (u.rows() == m && u.columns() >= (jobU == Job::all ? m : k)),
                    "tarn::gesvd: U needs m rows, and m or min(m, n) columns");
    detail::require(!has(jobVt) || (vt.columns() == n && vt.rows() >= (jobVt == Job::all ? n : k)),
                    "tarn::gesvd: V^H needs n columns, and n or min(m, n) rows");
    check(detail::Lapack<T>::gesvd[int(memory)](char(jobU), char(jobVt), m, n, detail::native(a.data()), a.ld(),
                                                detail::native(s.data()), detail::native(u.data()), u.ld(),
                                                detail::native(vt.data()), vt.ld()));
}

/// C := alpha op(A) op(B) + beta C.
template <class T, Memory memory>
void gemm(Op opA, Op opB, detail::As<T> alpha, detail::In<T, memory> a, detail::In<T, memory> b, detail::As<T> beta,
          MatrixView<T, memory> c)
{
    const int k = detail::columnsOf(opA, a);
    detail::require(detail::rowsOf(opA, a) == c.rows() && detail::columnsOf(opB, b) == c.columns() &&
                        detail::rowsOf(opB, b) == k,
                    "tarn::gemm: shapes do not match");
    check(detail::Blas<T>::gemm[int(memory)](char(opA), char(opB), c.rows(), c.columns(), k, detail::native(alpha),
                                             detail::native(a.data()), a.ld(), detail::native(b.data()), b.ld(),
                                             detail::native(beta), detail::native(c.data()), c.ld()));
}

namespace detail {

/// trsm and trmm.
template <class Call, class T, Memory memory>
void triangular(Call call, Side side, Uplo uplo, Op op, Diag diag, T alpha, MatrixView<const T, memory> a,
                MatrixView<T, memory> b)
{
    require(isSquare(a, side == Side::left ? b.rows() : b.columns()), "tarn: the triangular matrix does not fit B");
    check(call(char(side), char(uplo), char(op), char(diag), b.rows(), b.columns(), native(alpha), native(a.data()),
               a.ld(), native(b.data()), b.ld()));
}

/// symm and hemm.
template <class Call, class T, Memory memory>
void symmetricProduct(Call call, Side side, Uplo uplo, T alpha, MatrixView<const T, memory> a,
                      MatrixView<const T, memory> b, T beta, MatrixView<T, memory> c)
{
    require(isSquare(a, side == Side::left ? c.rows() : c.columns()), "tarn: the symmetric matrix does not fit C");
    require(b.rows() == c.rows() && b.columns() == c.columns(), "tarn: B and C differ in shape");
    check(call(char(side), char(uplo), c.rows(), c.columns(), native(alpha), native(a.data()), a.ld(), native(b.data()),
               b.ld(), native(beta), native(c.data()), c.ld()));
}

/// syrk and herk; S is the type of alpha and beta.
template <class Call, class S, class T, Memory memory>
void rankK(Call call, Uplo uplo, Op op, S alpha, MatrixView<const T, memory> a, S beta, MatrixView<T, memory> c)
{
    require(isSquare(c, rowsOf(op, a)), "tarn: C must be square, of the order of op(A)");
    check(call(char(uplo), char(op), c.rows(), columnsOf(op, a), native(alpha), native(a.data()), a.ld(), native(beta),
               native(c.data()), c.ld()));
}

/// syr2k and her2k; S is the type of beta.
template <class Call, class S, class T, Memory memory>
void rank2K(Call call, Uplo uplo, Op op, T alpha, MatrixView<const T, memory> a, MatrixView<const T, memory> b, S beta,
            MatrixView<T, memory> c)
{
    require(isSquare(c, rowsOf(op, a)), "tarn: C must be square, of the order of op(A)");
    require(a.rows() == b.rows() && a.columns() == b.columns(), "tarn: A and B differ in shape");
    check(call(char(uplo), char(op), c.rows(), columnsOf(op, a), native(alpha), native(a.data()), a.ld(),
               native(b.data()), b.ld(), native(beta), native(c.data()), c.ld()));
}

/// symv and hemv.
template <class Call, class T, Memory memory>
void symmetricVector(Call call, Uplo uplo, T alpha, MatrixView<const T, memory> a, VectorView<const T, memory> x,
                     T beta, VectorView<T, memory> y)
{
    require(isSquare(a, y.size()) && x.size() == y.size(), "tarn: A, x and y differ in order");
    check(call(char(uplo), y.size(), native(alpha), native(a.data()), a.ld(), native(x.data()), x.increment(),
               native(beta), native(y.data()), y.increment()));
}

} // namespace detail

/// Solves op(A) X = alpha B or X op(A) = alpha B for a triangular A; X in place of B.
template <class T, Memory memory>
void trsm(Side side, Uplo uplo, Op op, Diag diag, detail::As<T> alpha, detail::In<T, memory> a, MatrixView<T, memory> b)
{
    detail::triangular(detail::Blas<T>::trsm[int(memory)], side, uplo, op, diag, alpha, a, b);
}

/// B := alpha op(A) B or alpha B op(A) for a triangular A.
template <class T, Memory memory>
void trmm(Side side, Uplo uplo, Op op, Diag diag, detail::As<T> alpha, detail::In<T, memory> a, MatrixView<T, memory> b)
{
    detail::triangular(detail::Blas<T>::trmm[int(memory)], side, uplo, op, diag, alpha, a, b);
}

/// C := alpha A B + beta C or alpha B A + beta C, A symmetric.
template <class T, Memory memory>
void symm(Side side, Uplo uplo, detail::As<T> alpha, detail::In<T, memory> a, detail::In<T, memory> b,
          detail::As<T> beta, MatrixView<T, memory> c)
{
    detail::symmetricProduct(detail::Blas<T>::symm[int(memory)], side, uplo, alpha, a, b, beta, c);
}

/// As symm, A Hermitian.
template <class T, Memory memory>
void hemm(Side side, Uplo uplo, detail::As<T> alpha, detail::In<T, memory> a, detail::In<T, memory> b,
          detail::As<T> beta, MatrixView<T, memory> c)
{
    detail::symmetricProduct(detail::Blas<T>::hemm[int(memory)], side, uplo, alpha, a, b, beta, c);
}

/// A triangle of C := alpha A A^T + beta C (none) or alpha A^T A + beta C.
template <class T, Memory memory>
void syrk(Uplo uplo, Op op, detail::As<T> alpha, detail::In<T, memory> a, detail::As<T> beta, MatrixView<T, memory> c)
{
    detail::rankK(detail::Blas<T>::syrk[int(memory)], uplo, op, alpha, a, beta, c);
}

/// A triangle of C := alpha A A^H + beta C (none) or alpha A^H A + beta C.
template <class T, Memory memory>
void herk(Uplo uplo, Op op, detail::Real<T> alpha, detail::In<T, memory> a, detail::Real<T> beta,
          MatrixView<T, memory> c)
{
    detail::rankK(detail::Blas<T>::herk[int(memory)], uplo, op, alpha, a, beta, c);
}

/// A triangle of C := alpha A B^T + alpha B A^T + beta C (none) or alpha A^T B + alpha B^T A + beta C.
template <class T, Memory memory>
void syr2k(Uplo uplo, Op op, detail::As<T> alpha, detail::In<T, memory> a, detail::In<T, memory> b, detail::As<T> beta,
           MatrixView<T, memory> c)
{
    detail::rank2K(detail::Blas<T>::syr2k[int(memory)], uplo, op, alpha, a, b, beta, c);
}

/// A triangle of C := alpha A B^H + conj(alpha) B A^H + beta C (none) or alpha A^H B + conj(alpha) B^H A + beta C.
template <class T, Memory memory>
void her2k(Uplo uplo, Op op, detail::As<T> alpha, detail::In<T, memory> a, detail::In<T, memory> b,
           detail::Real<T> beta, MatrixView<T, memory> c)
{
    detail::rank2K(detail::Blas<T>::her2k[int(memory)], uplo, op, alpha, a, b, beta, c);
}

/// y := alpha op(A) x + beta y.
template <class T, Memory memory>
void gemv(Op op, detail::As<T> alpha, detail::In<T, memory> a, detail::InVector<T, memory> x, detail::As<T> beta,
          VectorView<T, memory> y)
{
    detail::require(detail::columnsOf(op, a) == x.size() && detail::rowsOf(op, a) == y.size(),
                    "tarn::gemv: shapes do not match");
    check(detail::Blas<T>::gemv[int(memory)](char(op), a.rows(), a.columns(), detail::native(alpha),
                                             detail::native(a.data()), a.ld(), detail::native(x.data()), x.increment(),
                                             detail::native(beta), detail::native(y.data()), y.increment()));
}

/// y := alpha A x + beta y, A symmetric and real.
template <class T, Memory memory>
void symv(Uplo uplo, detail::As<T> alpha, detail::In<T, memory> a, detail::InVector<T, memory> x, detail::As<T> beta,
          VectorView<T, memory> y)
{
    detail::symmetricVector(detail::Blas<T>::symv[int(memory)], uplo, alpha, a, x, beta, y);
}

/// y := alpha A x + beta y, A Hermitian.
template <class T, Memory memory>
void hemv(Uplo uplo, detail::As<T> alpha, detail::In<T, memory> a, detail::InVector<T, memory> x, detail::As<T> beta,
          VectorView<T, memory> y)
{
    detail::symmetricVector(detail::Blas<T>::hemv[int(memory)], uplo, alpha, a, x, beta, y);
}

} // namespace tarn

#endif
