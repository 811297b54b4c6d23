// The routines of the C interface by element type and by where their arrays are.
#pragma once

#include "arrays.h"

namespace tarn::python {

/// A routine for arrays in host memory and its twin for arrays in device memory.
template <class Routine>
struct Twins
{
    Routine host, device;

    Routine at(bool onDevice) const { return onDevice ? device : host; }
};

template <class Routine>
constexpr Twins<Routine> twins(Routine host, Routine device)
{
    return {host, device};
}

// TARN_TWINS(S, getrf): tarnSgetrf and tarnDeviceSgetrf.
#define TARN_TWINS(letter, name) ::tarn::python::twins(&tarn##letter##name, &tarnDevice##letter##name)

/// LAPACK routines, single precision only.
template <class T>
struct Lapack;

#define TARN_LAPACK(T, letter)                                                                                         \
    template <>                                                                                                        \
    struct Lapack<T>                                                                                                   \
    {                                                                                                                  \
        static constexpr auto getrf = TARN_TWINS(letter, getrf);                                                       \
        static constexpr auto geqrf = TARN_TWINS(letter, geqrf);                                                       \
        static constexpr auto gels = TARN_TWINS(letter, gels);                                                         \
        static constexpr auto gglse = TARN_TWINS(letter, gglse);                                                       \
        static constexpr auto gesvd = TARN_TWINS(letter, gesvd);                                                       \
    };
TARN_LAPACK(float, S)
TARN_LAPACK(std::complex<float>, C)
#undef TARN_LAPACK

/// BLAS routines; symm, syrk, syr2k and symv are those of a symmetric, hemm, herk, her2k and hemv of a Hermitian
/// matrix.
template <class T>
struct Blas;

#define TARN_BLAS(T, letter, HERMITIAN)                                                                                \
    template <>                                                                                                        \
    struct Blas<T>                                                                                                     \
    {                                                                                                                  \
        static constexpr auto gemm = TARN_TWINS(letter, gemm);                                                         \
        static constexpr auto trsm = TARN_TWINS(letter, trsm);                                                         \
        static constexpr auto trmm = TARN_TWINS(letter, trmm);                                                         \
        static constexpr auto symm = TARN_TWINS(letter, symm);                                                         \
        static constexpr auto syrk = TARN_TWINS(letter, syrk);                                                         \
        static constexpr auto syr2k = TARN_TWINS(letter, syr2k);                                                       \
        static constexpr auto gemv = TARN_TWINS(letter, gemv);                                                         \
        HERMITIAN(letter)                                                                                              \
    };
#define TARN_REAL(letter) static constexpr auto symv = TARN_TWINS(letter, symv);
#define TARN_COMPLEX(letter)                                                                                           \
    static constexpr auto hemm = TARN_TWINS(letter, hemm);                                                             \
    static constexpr auto herk = TARN_TWINS(letter, herk);                                                             \
    static constexpr auto her2k = TARN_TWINS(letter, her2k);                                                           \
    static constexpr auto hemv = TARN_TWINS(letter, hemv);
TARN_BLAS(float, S, TARN_REAL)
TARN_BLAS(double, D, TARN_REAL)
TARN_BLAS(std::complex<float>, C, TARN_COMPLEX)
TARN_BLAS(std::complex<double>, Z, TARN_COMPLEX)
#undef TARN_BLAS
#undef TARN_REAL
#undef TARN_COMPLEX
#undef TARN_TWINS

} // namespace tarn::python
