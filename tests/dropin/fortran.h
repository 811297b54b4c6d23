// The Fortran names that these tests call and stand before.
#pragma once

#include <cstddef>

namespace test {

using Ints = const int*;
using Gemm = void(const char*, const char*, Ints, Ints, Ints, const float*, const float*, Ints, const float*, Ints,
                  const float*, float*, Ints, std::size_t, std::size_t);
using Getrf = void(Ints, Ints, float*, Ints, int*, int*);
using Gesv = void(Ints, Ints, float*, Ints, int*, float*, Ints, int*);
using Geqrf = void(Ints, Ints, float*, Ints, float*, float*, Ints, int*);
using Gels = void(const char*, Ints, Ints, Ints, float*, Ints, float*, Ints, float*, Ints, int*, std::size_t);
using Gglse = void(Ints, Ints, Ints, float*, Ints, float*, Ints, float*, float*, float*, float*, Ints, int*);

} // namespace test

extern "C" {
test::Gemm sgemm_;
test::Getrf sgetrf_;
test::Gesv sgesv_;
test::Geqrf sgeqrf_;
test::Gels sgels_;
test::Gglse sgglse_;
}
