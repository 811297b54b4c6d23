// BLAS 2 and 3 in all four types. Matrices lie column by column without padding; the checks of shapes are Python's.
#include "api.h"
#include "module.h"

#include <nanobind/stl/complex.h>

namespace tarn::python {

namespace {

/// Calls the twin for where C is.
template <class T, class Routine, class... Arguments>
void run(const char* name, const Twins<Routine>& routine, const Array<T>& c, Arguments... arguments)
{
    const nb::gil_scoped_release released;
    initialize();
    infoOf(call(routine.at(onDevice(c)), arguments...), name);
}

/// The interface does not say of its arrays that it only reads them.
template <class T>
T* read(const Array<const T>& a)
{
    return const_cast<T*>(a.data());
}

template <class T>
int leading(const Array<const T>& a)
{
    return std::max(1, rows(a));
}

/// Adds C := op(A) op(B) with the inner dimension k.
template <class T>
void addGemm(nb::module_& m)
{
    using In = Array<const T>;
    using Out = Array<T>;
    m.def(
        "gemm",
        [](char transa, char transb, int k, T alpha, const In& a, const In& b, T beta, const Out& c) {
            run("gemm", Blas<T>::gemm, c, transa, transb, rows(c), cols(c), k, alpha, read(a), leading(a), read(b),
                leading(b), beta, c.data(), python::leading(c));
        },
        nb::arg("transa"), nb::arg("transb"), nb::arg("k"), nb::arg("alpha"), nb::arg("a").noconvert(),
        nb::arg("b").noconvert(), nb::arg("beta"), nb::arg("c").noconvert());
}

/// trmm and trsm: B := op(A) B and the like.
template <class T>
void addTriangular(nb::module_& m, const char* name, decltype(Blas<T>::trmm) routine)
{
    m.def(
        name,
        [name, routine](char side, char uplo, char transa, char diag, T alpha, const Array<const T>& a,
                        const Array<T>& b) {
            run(name, routine, b, side, uplo, transa, diag, rows(b), cols(b), alpha, read(a), leading(a), b.data(),
                python::leading(b));
        },
        nb::arg("side"), nb::arg("uplo"), nb::arg("transa"), nb::arg("diag"), nb::arg("alpha"),
        nb::arg("a").noconvert(), nb::arg("b").noconvert());
}

/// symm and hemm: C := A B and the like.
template <class T>
void addSymm(nb::module_& m, const char* name, decltype(Blas<T>::symm) routine)
{
    m.def(
        name,
        [name, routine](char side, char uplo, T alpha, const Array<const T>& a, const Array<const T>& b, T beta,
                        const Array<T>& c) {
            run(name, routine, c, side, uplo, rows(c), cols(c), alpha, read(a), leading(a), read(b), leading(b), beta,
                c.data(), python::leading(c));
        },
        nb::arg("side"), nb::arg("uplo"), nb::arg("alpha"), nb::arg("a").noconvert(), nb::arg("b").noconvert(),
        nb::arg("beta"), nb::arg("c").noconvert());
}

/// syrk and herk; S is the type of alpha and beta.
template <class T, class S, class Routine>
void addSyrk(nb::module_& m, const char* name, Twins<Routine> routine)
{
    m.def(
        name,
        [name, routine](char uplo, char trans, S alpha, const Array<const T>& a, S beta, const Array<T>& c) {
            run(name, routine, c, uplo, trans, rows(c), trans == 'N' ? cols(a) : rows(a), alpha, read(a), leading(a),
                beta, c.data(), python::leading(c));
        },
        nb::arg("uplo"), nb::arg("trans"), nb::arg("alpha"), nb::arg("a").noconvert(), nb::arg("beta"),
        nb::arg("c").noconvert());
}

/// syr2k and her2k; S is the type of beta.
template <class T, class S, class Routine>
void addSyr2k(nb::module_& m, const char* name, Twins<Routine> routine)
{
    m.def(
        name,
        [name, routine](char uplo, char trans, T alpha, const Array<const T>& a, const Array<const T>& b, S beta,
                        const Array<T>& c) {
            run(name, routine, c, uplo, trans, rows(c), trans == 'N' ? cols(a) : rows(a), alpha, read(a), leading(a),
                read(b), leading(b), beta, c.data(), python::leading(c));
        },
        nb::arg("uplo"), nb::arg("trans"), nb::arg("alpha"), nb::arg("a").noconvert(), nb::arg("b").noconvert(),
        nb::arg("beta"), nb::arg("c").noconvert());
}

/// gemv; x and y begin at offsets in elements.
template <class T>
void addGemv(nb::module_& m)
{
    m.def(
        "gemv",
        [](char trans, T alpha, const Array<const T>& a, const Array<const T>& x, int offx, int incx, T beta,
           const Array<T>& y, int offy, int incy) {
            run("gemv", Blas<T>::gemv, y, trans, rows(a), cols(a), alpha, read(a), leading(a), read(x) + offx, incx,
                beta, y.data() + offy, incy);
        },
        nb::arg("trans"), nb::arg("alpha"), nb::arg("a").noconvert(), nb::arg("x").noconvert(), nb::arg("offx"),
        nb::arg("incx"), nb::arg("beta"), nb::arg("y").noconvert(), nb::arg("offy"), nb::arg("incy"));
}

/// symv and hemv.
template <class T, class Routine>
void addSymv(nb::module_& m, const char* name, Twins<Routine> routine)
{
    m.def(
        name,
        [name, routine](char uplo, T alpha, const Array<const T>& a, const Array<const T>& x, int offx, int incx,
                        T beta, const Array<T>& y, int offy, int incy) {
            run(name, routine, y, uplo, rows(a), alpha, read(a), leading(a), read(x) + offx, incx, beta,
                y.data() + offy, incy);
        },
        nb::arg("uplo"), nb::arg("alpha"), nb::arg("a").noconvert(), nb::arg("x").noconvert(), nb::arg("offx"),
        nb::arg("incx"), nb::arg("beta"), nb::arg("y").noconvert(), nb::arg("offy"), nb::arg("incy"));
}

template <class T>
void add(nb::module_& m)
{
    using B = Blas<T>;
    addGemm<T>(m);
    addTriangular<T>(m, "trmm", B::trmm);
    addTriangular<T>(m, "trsm", B::trsm);
    addSymm<T>(m, "symm", B::symm);
    addSyrk<T, T>(m, "syrk", B::syrk);
    addSyr2k<T, T>(m, "syr2k", B::syr2k);
    addGemv<T>(m);
    if constexpr (isComplex<T>) {
        addSymm<T>(m, "hemm", B::hemm);
        addSyrk<T, Real<T>>(m, "herk", B::herk);
        addSyr2k<T, Real<T>>(m, "her2k", B::her2k);
        addSymv<T>(m, "hemv", B::hemv);
    } else {
        addSymv<T>(m, "symv", B::symv);
    }
}

} // namespace

void addBlas(nb::module_& m)
{
    add<float>(m);
    add<double>(m);
    add<std::complex<float>>(m);
    add<std::complex<double>>(m);
}

} // namespace tarn::python
