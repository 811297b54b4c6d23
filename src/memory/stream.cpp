#include "memory/stream.h"

#include "frame/device_table.h"
#include "frame/error_state.h"

#include <boost/make_shared.hpp>

namespace velk {

Stream::Stream()
{
    const int device = tarn::currentDevice();
    if (!tarn::deviceCanOverlap(device))
        return;
    // A blocking stream on purpose: its copies start after all that was queued on the legacy default stream before
    // them, and what is queued there later starts after them.
    CudaErrorGuard guard;
    guard.check(cudaStreamCreate(&stream_));
    device_ = device;
}

Stream::~Stream()
{
    if (!stream_)
        return;
    const ReleaseScope scope;
    cudaStreamDestroy(stream_);
}

void Stream::synchronize() const
{
    if (!stream_)
        return;
    CudaErrorGuard guard;
    guard.check(cudaStreamSynchronize(stream_));
}

} // namespace velk

StreamHandle StreamHandle::create()
{
    StreamHandle handle;
    handle.stream_ = boost::make_shared<velk::Stream>();
    return handle;
}

void StreamHandle::synchronize() const
{
    if (raw()) {
        stream_->synchronize();
        return;
    }
    velk::CudaErrorGuard guard;
    guard.check(cudaStreamSynchronize(nullptr));
}
