// The legacy entry points of cuBLAS that bring it up and down; their header cannot stand beside that of the v2
// interface.
#pragma once

#include <cublas_v2.h>

namespace tarn {

cublasStatus_t legacyCublasInit() noexcept;
cublasStatus_t legacyCublasShutdown() noexcept;

/// Reads and clears the error state of the legacy interface; v2 calls do not set it.
cublasStatus_t legacyCublasGetError() noexcept;

} // namespace tarn
