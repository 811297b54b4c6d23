// ManagedMemory: the one owning handle of a block of memory of any kind.
#pragma once

#include "memory/extent.h"

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

namespace velk {

/// A shared, reference-counted handle of one block of elements T, obtained from an allocator A. Copies share the block,
/// and the last one releases it, unless the block is foreign: then it is somebody else's and only looked at.
template <class T, class A>
class ManagedMemory
{
public:
    ManagedMemory() : impl_(boost::make_shared<Impl>()) {}

    /// Drops the present block, then takes a new one of extent e: allocated and, if p is given, filled from the packed
    /// host array p; or with `foreign` the block at p itself. An empty extent leaves an empty handle.
    void reset(Extent e, T* p = nullptr, bool foreign = false)
    {
        impl_ = boost::make_shared<Impl>();
        if (count(e) == 0)
            return;
        auto fresh = boost::make_shared<Impl>();
        fresh->foreign = foreign;
        fresh->ptr = foreign ? p : fresh->allocator.allocate(e);
        fresh->extent = e;
        impl_ = fresh;
        if (p && !foreign)
            impl_->allocator.copyIn(impl_->ptr, p, e);
    }

    T* data() const { return impl_->ptr; }
    Extent extent() const { return impl_->extent; }
    std::int64_t size() const { return count(impl_->extent); }
    bool empty() const { return size() == 0; }

    /// Leading dimension in elements.
    int ld() const { return impl_->allocator.pitch(impl_->extent); }
    void setLd(int ld) { impl_->allocator.setPitch(ld); }

    /// True if another handle holds the block too.
    bool isShared() const { return impl_.use_count() > 1; }

    /// Copies the rows by cols block with top left element (row0, col0), zero-based, from or to a host array.
    void upload(const T* host, int rows, int cols, int hostLd, int row0 = 0, int col0 = 0)
    {
        impl_->allocator.copyInBlock(at(row0, col0), pitch(ld(), extent().cols), host, pitch(hostLd, cols),
                                     {rows, cols, 1});
    }

    void download(T* host, int rows, int cols, int hostLd, int row0 = 0, int col0 = 0) const
    {
        impl_->allocator.copyOutBlock(host, pitch(hostLd, cols), at(row0, col0), pitch(ld(), extent().cols),
                                      {rows, cols, 1});
    }

private:
    struct Impl
    {
        T* ptr = nullptr;
        Extent extent;
        bool foreign = false;
        A allocator;

        Impl() = default;
        Impl(const Impl&) = delete;
        Impl& operator=(const Impl&) = delete;
        ~Impl()
        {
            if (ptr && !foreign)
                allocator.release(ptr, count(extent));
        }
    };

    static BlockPitch pitch(int ld, int cols) { return {ld, std::int64_t(ld) * cols}; }
    T* at(int row, int col) const { return data() + row + std::int64_t(ld()) * col; }

    boost::shared_ptr<Impl> impl_;
};

} // namespace velk
