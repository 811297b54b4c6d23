// Benchmarks of the device modules by themselves.
#pragma once

#include <vector>

namespace tarn::bench {

/// Times copies, transposes and plane rotations of these orders by the program tarn-bench-kernels, which lies beside
/// this one, in place of this one. repeats 0: 21. Returns only by raising tool::Failure.
int benchKernels(const std::vector<int>& sizes, int repeats);

} // namespace tarn::bench
