// Streams for copies that run beside the default stream.
#pragma once

#include <cuda_runtime.h>

#include <boost/shared_ptr.hpp>

namespace velk {

/// A CUDA stream of the current device, or the default stream where that device cannot copy beside kernels.
class Stream
{
public:
    /// Raises if the stream cannot be created.
    Stream();
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    void synchronize() const;
    cudaStream_t handle() const { return stream_; }

private:
    cudaStream_t stream_ = nullptr;
    int device_ = -1; ///< device of a created stream
};

} // namespace velk

/// Shared handle of a velk::Stream; empty means the default stream.
class StreamHandle
{
public:
    StreamHandle() = default;

    /// A handle to a new stream.
    static StreamHandle create();

    /// The CUDA stream, null for the default stream.
    cudaStream_t raw() const { return stream_ ? stream_->handle() : nullptr; }

    /// Waits for the work on the stream, or on the default stream.
    void synchronize() const;

    /// True if some other handle shares the stream.
    bool isShared() const { return stream_.use_count() > 1; }

    friend bool operator==(const StreamHandle& a, const StreamHandle& b) { return a.raw() == b.raw(); }
    friend bool operator!=(const StreamHandle& a, const StreamHandle& b) { return !(a == b); }

private:
    boost::shared_ptr<velk::Stream> stream_;
};
