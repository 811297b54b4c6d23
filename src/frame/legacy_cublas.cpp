#include <cublas.h>

// Only the signatures of legacy_cublas.h are repeated here: cublas.h and cublas_v2.h exclude each other.
namespace tarn {

cublasStatus_t legacyCublasInit() noexcept { return cublasInit(); }

cublasStatus_t legacyCublasShutdown() noexcept { return cublasShutdown(); }

cublasStatus_t legacyCublasGetError() noexcept { return cublasGetError(); }

} // namespace tarn
