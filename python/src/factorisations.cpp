// Orthogonal factorisations, least squares and the singular value decomposition. Single precision.
#include "api.h"
#include "lapack.h"
#include "module.h"

#include <nanobind/stl/complex.h>

namespace tarn::python {

namespace {

template <class T>
using FortranLarft = void(const char* direct, const char* storev, const int* n, const int* k, const T* v,
                          const int* ldv, const T* tau, T* t, const int* ldt, std::size_t, std::size_t);
extern "C" {
FortranLarft<float> slarft_;
FortranLarft<std::complex<float>> clarft_;
}

/// Columns of the block reflectors of which Q is made.
constexpr int blockColumns = 128;

template <class T>
constexpr const char* named(const char* single, const char* complex)
{
    return isComplex<T> ? complex : single;
}

/// geqrf in place.
template <class T>
void geqrf(const Array<T>& a, const Array<T>& tau)
{
    const nb::gil_scoped_release released;
    initialize();
    infoOf(call(Lapack<T>::geqrf.at(onDevice(a)), rows(a), cols(a), a.data(), leading(a), tau.data()),
           named<T>("tarnSgeqrf", "tarnCgeqrf"));
}

/// The reflectors H(j+1) ... H(j+w) of geqrf as I - V T V^H, in device memory.
template <class T>
class BlockReflector
{
public:
    BlockReflector(int m, int most)
        : rows_(m), panel_(std::size_t(m) * std::size_t(most)), triangle_(std::size_t(most) * std::size_t(most)),
          v_(panel_.size()), t_(triangle_.size()), product_(panel_.size())
    {}

    /// Takes the reflectors from column j of the factors on, rows j to m - 1; tau on the host.
    void set(int j, int w, const T* factors, int ld, bool device, const T* tau)
    {
        j_ = j;
        w_ = w;
        const int below = rows_ - j;
        copyMatrix(below, w, panel_.data(), below, factors + j + std::int64_t(j) * ld, ld,
                   device ? cudaMemcpyDeviceToHost : cudaMemcpyHostToHost);
        for (int c = 0; c < w; ++c)
            for (int r = 0; r <= c; ++r)
                panel_[r + std::size_t(c) * below] = T(r == c ? 1 : 0);
        std::fill(triangle_.begin(), triangle_.end(), T(0));
        select<T>(&slarft_, nullptr, &clarft_, nullptr)("F", "C", &below, &w, panel_.data(), &below, tau + j,
                                                        triangle_.data(), &w, 1, 1);
        copyMatrix(below, w, v_.data(), below, panel_.data(), below, cudaMemcpyHostToDevice);
        copyMatrix(w, w, t_.data(), w, triangle_.data(), w, cudaMemcpyHostToDevice);
    }

    /// C := (I - V T V^H) C for rows j to m - 1 of the n columns at c, in device memory. n is at most rows.
    void apply(T* c, int ldc, int n)
    {
        constexpr auto gemm = Blas<T>::gemm.device;
        constexpr auto trmm = Blas<T>::trmm.device;
        const int below = rows_ - j_;
        const char* name = named<T>("tarnDeviceSgemm", "tarnDeviceCgemm");
        T* const block = c + j_;
        infoOf(call(gemm, 'C', 'N', w_, n, below, T(1), v_.data(), below, block, ldc, T(0), product_.data(), w_), name);
        infoOf(call(trmm, 'L', 'U', 'N', 'N', w_, n, T(1), t_.data(), w_, product_.data(), w_),
               named<T>("tarnDeviceStrmm", "tarnDeviceCtrmm"));
        infoOf(call(gemm, 'N', 'N', below, n, w_, T(-1), v_.data(), below, product_.data(), w_, T(1), block, ldc),
               name);
    }

private:
    int rows_, j_ = 0, w_ = 0;
    std::vector<T> panel_, triangle_;
    DeviceBuffer<T> v_, t_, product_;
};

/// The first columns of Q = H(1) H(2) ... from the factors of geqrf, on the device; Q has at most as many columns as
/// rows.
template <class T>
void formQ(const Array<const T>& factors, const Array<const T>& tau, const Array<T>& q)
{
    const nb::gil_scoped_release released;
    initialize();
    const int m = rows(q), n = cols(q), k = std::min(rows(tau), n);
    if (m == 0 || n == 0)
        return;
    std::vector<T> identity(std::size_t(m) * std::size_t(n));
    for (int i = 0; i < n; ++i)
        identity[i + std::size_t(i) * m] = T(1);
    const bool qOnDevice = onDevice(q);
    const DeviceBuffer<T> own(qOnDevice ? 0 : identity.size());
    T* const onTheDevice = qOnDevice ? q.data() : own.data();
    copyMatrix(m, n, onTheDevice, m, identity.data(), m, cudaMemcpyHostToDevice);

    const std::vector<T> scalars =
        onDevice(tau) ? downloaded(k, 1, tau.data(), std::max(1, k)) : std::vector<T>(tau.data(), tau.data() + k);
    BlockReflector<T> block(m, std::min(blockColumns, k));
    for (int j = (k - 1) / blockColumns * blockColumns; j >= 0 && k > 0; j -= blockColumns) {
        block.set(j, std::min(blockColumns, k - j), factors.data(), m, onDevice(factors), scalars.data());
        // What stands left of column j is still the identity, whose rows from j on are zero there.
        block.apply(onTheDevice + std::int64_t(j) * m, m, n - j);
    }
    if (!qOnDevice)
        copyMatrix(m, n, q.data(), m, onTheDevice, m, cudaMemcpyDeviceToHost);
}

/// gels: A becomes its factors, X and residuals stand in place of B. The info.
template <class T>
int gels(char trans, const Array<T>& a, const Array<T>& b)
{
    const nb::gil_scoped_release released;
    initialize();
    return infoOf(call(Lapack<T>::gels.at(onDevice(a)), trans, rows(a), cols(a), cols(b), a.data(), leading(a),
                       b.data(), leading(b)),
                  named<T>("tarnSgels", "tarnCgels"));
}

/// An estimate of the reciprocal condition, in the 1-norm, of the triangle of order min(m, n) that gels left in A.
template <class T>
double triangleCondition(const Array<const T>& a)
{
    const nb::gil_scoped_release released;
    const int m = rows(a), n = cols(a), k = std::min(m, n);
    if (k == 0)
        return 1;
    const std::vector<T> copy = onDevice(a) ? downloaded(m, n, a.data(), m) : std::vector<T>();
    const T* factors = onDevice(a) ? copy.data() : a.data();
    using Beside = std::conditional_t<isComplex<T>, Real<T>, int>;
    std::vector<T> work(3 * std::size_t(k));
    std::vector<Beside> beside(k);
    Real<T> rcond = 0;
    int info = 0;
    select<T>(&tool::strcon_, nullptr, &tool::ctrcon_, nullptr)("1", m >= n ? "U" : "L", "N", &k, factors, &m, &rcond,
                                                                work.data(), beside.data(), &info, 1, 1, 1);
    return rcond;
}

/// gglse. The info.
template <class T>
int gglse(const Array<T>& a, const Array<T>& b, const Array<T>& c, const Array<T>& d, const Array<T>& x)
{
    const nb::gil_scoped_release released;
    initialize();
    return infoOf(call(Lapack<T>::gglse.at(onDevice(a)), rows(a), cols(a), rows(b), a.data(), leading(a), b.data(),
                       leading(b), c.data(), d.data(), x.data()),
                  named<T>("tarnSgglse", "tarnCgglse"));
}

/// gesvd with the same job, "A", "S" or "N", for U and V^H; A is destroyed. The info.
template <class T>
int gesvd(char job, const Array<T>& a, const Array<Real<T>>& s, const Array<T>& u, const Array<T>& vt)
{
    const nb::gil_scoped_release released;
    initialize();
    return infoOf(call(Lapack<T>::gesvd.at(onDevice(a)), job, job, rows(a), cols(a), a.data(), leading(a), s.data(),
                       u.data(), leading(u), vt.data(), leading(vt)),
                  named<T>("tarnSgesvd", "tarnCgesvd"));
}

template <class T>
void add(nb::module_& m)
{
    m.def("geqrf", &geqrf<T>, nb::arg("a").noconvert(), nb::arg("tau").noconvert());
    m.def("form_q", &formQ<T>, nb::arg("factors").noconvert(), nb::arg("tau").noconvert(), nb::arg("q").noconvert());
    m.def("gels", &gels<T>, nb::arg("trans"), nb::arg("a").noconvert(), nb::arg("b").noconvert());
    m.def("triangle_condition", &triangleCondition<T>, nb::arg("a").noconvert());
    m.def("gglse", &gglse<T>, nb::arg("a").noconvert(), nb::arg("b").noconvert(), nb::arg("c").noconvert(),
          nb::arg("d").noconvert(), nb::arg("x").noconvert());
    m.def("gesvd", &gesvd<T>, nb::arg("job"), nb::arg("a").noconvert(), nb::arg("s").noconvert(),
          nb::arg("u").noconvert(), nb::arg("vt").noconvert());
}

} // namespace

void addFactorisations(nb::module_& m)
{
    add<float>(m);
    add<std::complex<float>>(m);
}

} // namespace tarn::python
