#include "blas/blas.h"
#include "blas/letters.h"
#include "frame/exceptions.h"
#include "lapack/kernels.h"
#include "lapack/qr/qr.h"
#include "lapack/svd/gesvd_path.h"
#include "lapack/svd/svd.h"
#include "memory/matrix_view.h"
#include "memory/memory_pool.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace tarn::svd {

namespace {

/// The matrices that take part. "Long" are the vectors of the longer side of A, the left ones if m >= n.
enum Place
{
    Nowhere,
    InA,
    LongVectors,  ///< the caller's array u or vt
    ShortVectors, ///< the other one
    Scratch1,
    Scratch2
};

enum class Size
{
    none,
    ldaByN,
    ldaByK,
    kByK
};

/// What tells the paths that factorise first from each other. Those with m < n mirror those with m >= n: LQ takes the
/// place of QR, rows that of columns, and the two kinds of vectors exchange their roles.
struct Plan
{
    std::string_view jobLong, jobShort; ///< the jobs that it serves
    Size scratch1, scratch2;
    Place factor;          ///< Q of A = Q R
    Place triangle;        ///< R, then its bidiagonal reduction
    Place ofLong, ofShort; ///< singular vectors of R
    Place product;         ///< the long vectors of A, Q times those of R; m by n
};

// clang-format off
constexpr Plan plans[] = {
    {"N", "NASO", Size::none,   Size::none, Nowhere,     InA,          Nowhere,  InA,          Nowhere},
    {"O", "N",    Size::ldaByN, Size::kByK, InA,         Scratch2,     Scratch2, Nowhere,      Scratch1},
    {"O", "SA",   Size::ldaByN, Size::kByK, InA,         ShortVectors, Scratch2, ShortVectors, Scratch1},
    {"S", "N",    Size::kByK,   Size::none, InA,         Scratch1,     Scratch1, Nowhere,      LongVectors},
    {"S", "O",    Size::ldaByK, Size::kByK, InA,         Scratch1,     Scratch1, Scratch2,     LongVectors},
    {"S", "SA",   Size::kByK,   Size::none, InA,         Scratch1,     Scratch1, ShortVectors, LongVectors},
    {"A", "N",    Size::kByK,   Size::none, LongVectors, Scratch1,     Scratch1, Nowhere,      InA},
    {"A", "O",    Size::ldaByK, Size::kByK, LongVectors, Scratch1,     Scratch1, Scratch2,     InA},
    {"A", "SA",   Size::kByK,   Size::none, LongVectors, Scratch1,     Scratch1, ShortVectors, InA},
};
// clang-format on

/// Index of the plan for these jobs.
int planFor(char jobLong, char jobShort)
{
    return int(std::find_if(std::begin(plans), std::end(plans),
                            [&](const Plan& plan) {
                                return isOneOf(jobLong, plan.jobLong) && isOneOf(jobShort, plan.jobShort);
                            }) -
               std::begin(plans));
}

template <class T>
PoolBlock<T> acquire(std::int64_t elements)
{
    return MemoryPool<T>::instance().acquire(elements);
}

template <class T>
class Scratch
{
public:
    Scratch(Size size, int lda, int n, int k)
        : ld_(size == Size::kByK ? k : lda),
          block_(acquire<T>(size == Size::none ? 0 : std::int64_t(ld_) * (size == Size::ldaByN ? n : k)))
    {}

    MatrixView<T> view() const { return {block_.data(), 0, 0, ld_}; }

private:
    const int ld_;
    const PoolBlock<T> block_;
};

template <class T>
void copy(char part, int m, int n, MatrixView<T> from, MatrixView<T> to)
{
    if (from.data != to.data)
        kernel::LACPY(part, m, n, from.data, from.ld, to.data, to.ld);
}

template <class T>
void clear(int m, int n, MatrixView<T> M)
{
    kernel::SetMatrixZero(m, n, M.data, M.ld);
}

template <class T>
class Decomposition
{
public:
    Decomposition(char jobu, char jobvt, MatrixView<T> a, Real<T>* s, MatrixView<T> u, MatrixView<T> vt)
        : jobu_(jobu), jobvt_(jobvt), m(a.rows), n(a.cols), k(std::min(m, n)), A(a), U(u), Vt(vt), s_(s),
          taup_(acquire<T>(k)), tauq_(acquire<T>(k)), e_(acquire<Real<T>>(k - 1))
    {}

    void factorFirst(const Plan& plan);
    void direct();

private:
    void reduce(MatrixView<T> M, int rows, int cols)
    {
        gebrd(rows, cols, M.data, M.ld, s_, e_.data(), tauq_.data(), taup_.data());
    }

    /// The reflectors of a reduction become Q or P^H, rows by cols; reduced: columns or rows of the matrix reduced.
    void generateQ(MatrixView<T> M, int rows, int cols, int reduced)
    {
        qr::orgbr('Q', rows, cols, reduced, M.data, M.ld, tauq_.data());
    }
    void generatePh(MatrixView<T> M, int rows, int cols, int reduced)
    {
        qr::orgbr('P', rows, cols, reduced, M.data, M.ld, taup_.data());
    }

    void iterate(char uplo, int ncvt, MatrixView<T> right, int nru, MatrixView<T> left)
    {
        bdsqr<T>(uplo, k, ncvt, nru, 0, s_, e_.data(), right.data, right.ld, left.data, left.ld, nullptr, 1);
    }

    const char jobu_, jobvt_;
    const int m, n, k;
    const MatrixView<T> A, U, Vt;
    Real<T>* const s_;
    const PoolBlock<T> taup_, tauq_;
    const PoolBlock<Real<T>> e_;
};

/// A = Q R, R = U1 S V^H, A = (Q U1) S V^H for m >= n, and A = L Q, L = U S V1^H, A = U S (V1^H Q) otherwise. The
/// comments follow m >= n.
template <class T>
void Decomposition<T>::factorFirst(const Plan& plan)
{
    const bool tall = m >= n;
    const char triangle = tall ? 'U' : 'L', opposite = tall ? 'L' : 'U';
    const char jobLong = tall ? jobu_ : jobvt_, jobShort = tall ? jobvt_ : jobu_;
    const PoolBlock<T> tau = acquire<T>(k);
    const Scratch<T> scratch1(plan.scratch1, A.ld, n, k), scratch2(plan.scratch2, A.ld, n, k);
    const MatrixView<T> none{nullptr, 0, 0, 1};
    const MatrixView<T> at[] = {none, A, tall ? U : Vt, tall ? Vt : U, scratch1.view(), scratch2.view()};
    const MatrixView<T> Q = at[plan.factor], R = at[plan.triangle], ofLong = at[plan.ofLong],
                        ofShort = jobShort == 'N' ? none : at[plan.ofShort];

    // A = Q R; R moves to its place, and the reflectors become Q.
    if (tall)
        qr::geqrf(m, n, A.data, A.ld, tau.data());
    else
        qr::gelqf(m, n, A.data, A.ld, tau.data());
    if (plan.factor == LongVectors)
        copy(opposite, m, n, A, Q);
    copy(triangle, k, k, A, R);
    kernel::LASET(opposite, k - 1, k - 1, T(0), T(0), tall ? R.at(2, 1) : R.at(1, 2), R.ld);
    const int order = plan.factor == LongVectors ? std::max(m, n) : k;
    if (plan.factor != Nowhere && tall)
        qr::orgqr(m, order, n, Q.data, Q.ld, tau.data());
    else if (plan.factor != Nowhere)
        qr::orglq(order, n, m, Q.data, Q.ld, tau.data());

    // R = U1 S V^H. One of the two sets grows in the place of R, the other needs its reflectors elsewhere.
    reduce(R, k, k);
    const MatrixView<T> right = tall ? ofShort : ofLong, left = tall ? ofLong : ofShort;
    if (right.data && left.data) {
        copy('U', k, k, R, right);
        copy('L', k, k, R, left);
    }
    if (right.data)
        generatePh(right, k, k, k);
    if (left.data)
        generateQ(left, k, k, k);
    try {
        iterate('U', right.data ? k : 0, right, left.data ? k : 0, left);
    } catch (const InfoException&) {
        // The arrays that only the steps below write are zero then, not what their memory held before.
        if (plan.product == LongVectors)
            clear(m, n, at[LongVectors]);
        if (plan.ofShort == InA && isOneOf(jobShort, "SA"))
            clear(k, k, at[ShortVectors]);
        throw;
    }

    // The long vectors Q U1, and all vectors to where the jobs want them.
    const auto wanted = [&](char job, Place vectors) { return at[job == 'O' ? InA : vectors]; };
    if (plan.product != Nowhere) {
        const MatrixView<T> product = at[plan.product], B = tall ? Q : ofLong, C = tall ? ofLong : Q;
        blas::gemm('N', 'N', m, n, k, T(1), B.data, B.ld, C.data, C.ld, T(0), product.data, product.ld);
        copy('F', m, n, product, wanted(jobLong, LongVectors));
    }
    if (ofShort.data)
        copy('F', k, k, ofShort, wanted(jobShort, ShortVectors));
}

/// A = Q B P^H with B upper bidiagonal for m >= n and lower otherwise, B = U1 S V1^H, A = (Q U1) S (V1^H P^H).
template <class T>
void Decomposition<T>::direct()
{
    reduce(A, m, n);
    if (isOneOf(jobu_, "SA")) {
        copy('L', m, k, A, U);
        generateQ(U, m, jobu_ == 'A' ? m : k, n);
    }
    if (isOneOf(jobvt_, "SA")) {
        copy('U', k, n, A, Vt);
        generatePh(Vt, jobvt_ == 'A' ? n : k, n, m);
    }
    if (jobu_ == 'O')
        generateQ(A, m, k, n);
    if (jobvt_ == 'O')
        generatePh(A, k, n, m);
    iterate(m >= n ? 'U' : 'L', jobvt_ == 'N' ? 0 : n, jobvt_ == 'O' ? A : Vt, jobu_ == 'N' ? 0 : m,
            jobu_ == 'O' ? A : U);
}

} // namespace

void checkGesvd(char& jobu, char& jobvt, int m, int n, const void* a, int lda, const void* s, const void* u, int ldu,
                const void* vt, int ldvt)
{
    jobu = upper(jobu);
    jobvt = upper(jobvt);
    const int k = std::min(m, n);
    const bool returnsU = isOneOf(jobu, "AS"), returnsVt = isOneOf(jobvt, "AS");
    require(isOneOf(jobu, "ASON"), -1);
    require(isOneOf(jobvt, "ASON") && !(jobu == 'O' && jobvt == 'O'), -2);
    require(m >= 0, -3);
    require(n >= 0, -4);
    require(lda >= std::max(1, m), -6);
    require(ldu >= 1 && (!returnsU || ldu >= m), -9);
    require(ldvt >= 1 && (!returnsVt || ldvt >= (jobvt == 'A' ? n : k)), -11);
    if (k == 0)
        return;
    require(a != nullptr, -5);
    require(s != nullptr, -7);
    require(!returnsU || u != nullptr, -8);
    require(!returnsVt || vt != nullptr, -10);
}

int gesvdPath(char jobu, char jobvt, int m, int n)
{
    const bool tall = m >= n;
    const int threshold = int(std::min(m, n) * 1.6);
    const int row = std::max(m, n) < threshold ? int(std::size(plans))
                    : tall                     ? planFor(jobu, jobvt)
                                               : planFor(jobvt, jobu);
    return 2 * row + (tall ? 0 : 1);
}

template <class T>
void gesvd(char jobu, char jobvt, int m, int n, T* a, int lda, Real<T>* s, T* u, int ldu, T* vt, int ldvt)
{
    checkGesvd(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt);
    if (m == 0 || n == 0)
        return;
    Decomposition<T> decomposition(jobu, jobvt, {a, m, n, lda}, s, {u, m, m, ldu}, {vt, n, n, ldvt});
    const std::size_t plan = gesvdPath(jobu, jobvt, m, n) / 2;
    if (plan < std::size(plans))
        decomposition.factorFirst(plans[plan]);
    else
        decomposition.direct();
}

template void gesvd(char, char, int, int, float*, int, float*, float*, int, float*, int);
template void gesvd(char, char, int, int, Complex<float>*, int, float*, Complex<float>*, int, Complex<float>*, int);

} // namespace tarn::svd
