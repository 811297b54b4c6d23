#include "frame/exceptions.h"

namespace velk {

CudaMemoryException::CudaMemoryException(const char* message)
{
    try {
        message_ = message;
    } catch (...) {
        // Host memory is short too; an empty message must do.
    }
}

const char* CudaMemoryException::what() const noexcept { return message_.c_str(); }

CudaRuntimeException::CudaRuntimeException(cudaError_t code) : std::runtime_error(cudaGetErrorString(code)), code_(code)
{}

} // namespace velk

namespace tarn {

void argumentError(tarnInfo position) { throw InfoException(position, tarnArgumentError); }

void dataError(tarnInfo info) { throw InfoException(info, tarnDataError); }

void checkInfo(int info)
{
    if (info > 0)
        dataError(info);
    if (info < 0)
        throw InfoException(info, tarnRuntimeError);
}

void featureNotImplemented() { throw FeatNotImplException(); }

} // namespace tarn
