#pragma once
/// Opaque handles that can be told from stale and foreign ones.

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "cublas_api.h"
#include "machine.h"

namespace tarn::soft {

/// What stands behind handles of one kind. A handle's value is a serial number, never used twice, so that a handle that
/// was destroyed stays invalid.
template <class Handle, class Entry>
class HandleTable
{
public:
    Handle add(const Entry& entry)
    {
        const std::lock_guard lock(mutex_);
        serial_ += 16;
        entries_.emplace(serial_, entry);
        return reinterpret_cast<Handle>(serial_);
    }

    std::optional<Entry> find(Handle handle) const
    {
        const std::lock_guard lock(mutex_);
        const auto found = entries_.find(reinterpret_cast<std::uintptr_t>(handle));
        return found == entries_.end() ? std::nullopt : std::optional<Entry>(found->second);
    }

    /// Calls change(entry), if the handle is alive.
    template <class Change>
    void update(Handle handle, const Change& change)
    {
        const std::lock_guard lock(mutex_);
        const auto found = entries_.find(reinterpret_cast<std::uintptr_t>(handle));
        if (found != entries_.end())
            change(found->second);
    }

    std::optional<Entry> remove(Handle handle)
    {
        const std::lock_guard lock(mutex_);
        const auto found = entries_.find(reinterpret_cast<std::uintptr_t>(handle));
        if (found == entries_.end())
            return std::nullopt;
        const Entry entry = found->second;
        entries_.erase(found);
        return entry;
    }

    std::size_t size() const
    {
        const std::lock_guard lock(mutex_);
        return entries_.size();
    }

private:
    mutable std::mutex mutex_;
    std::unordered_map<std::uintptr_t, Entry> entries_;
    std::uintptr_t serial_ = 0x1000;
};

struct Stream
{
    Device* device;
    Ticket last; ///< the work that was queued last on this stream
};

struct BlasContext
{
    Device* device;
};

HandleTable<cudaStream_t, Stream>& streams();
HandleTable<cublasHandle_t, BlasContext>& blasHandles();

} // namespace tarn::soft
