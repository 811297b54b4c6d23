#include "blas_call.h"
#include "cublas_v2.h"

using namespace tarn::soft;

extern "C" {

cublasStatus_t cublasCreate_v2(cublasHandle_t* handle)
{
    return BlasCall("cublasCreate_v2", handle).run([&] {
        if (!handle)
            return CUBLAS_STATUS_INVALID_VALUE;
        Device* device = machine().current();
        if (!device)
            return CUBLAS_STATUS_NOT_INITIALIZED;
        *handle = blasHandles().add({device});
        return CUBLAS_STATUS_SUCCESS;
    });
}

cublasStatus_t cublasDestroy_v2(cublasHandle_t handle)
{
    return BlasCall("cublasDestroy_v2", handle).run([&] {
        return blasHandles().remove(handle) ? CUBLAS_STATUS_SUCCESS : CUBLAS_STATUS_NOT_INITIALIZED;
    });
}

cublasStatus_t cublasGetVersion_v2(cublasHandle_t handle, int* version)
{
    return BlasCall("cublasGetVersion_v2", handle, version).run([&] {
        if (!version)
            return CUBLAS_STATUS_INVALID_VALUE;
        *version = machine().versions.cublas;
        return CUBLAS_STATUS_SUCCESS;
    });
}

cublasStatus_t cublasSetPointerMode_v2(cublasHandle_t handle, cublasPointerMode_t mode)
{
    return BlasCall("cublasSetPointerMode_v2", handle, mode).run([&] {
        if (!blasHandles().find(handle))
            return CUBLAS_STATUS_NOT_INITIALIZED;
        return mode == CUBLAS_POINTER_MODE_HOST     ? CUBLAS_STATUS_SUCCESS
               : mode == CUBLAS_POINTER_MODE_DEVICE ? CUBLAS_STATUS_NOT_SUPPORTED
                                                    : CUBLAS_STATUS_INVALID_VALUE;
    });
}
}
