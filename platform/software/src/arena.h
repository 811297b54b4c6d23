#pragma once
/// The address space of a device's memory.

#include <cstddef>
#include <cstdint>

namespace tarn::soft {

/// Two views of equal size: the outer one, whose addresses the device hands out and which nobody can touch, and the
/// inner one, which holds the data that the device side reads and writes. An inner address is the outer one plus a
/// constant.
class Arena
{
public:
    /// Maps `bytes` of sparse memory. Throws std::system_error.
    explicit Arena(std::size_t bytes);
    ~Arena();
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    std::size_t bytes() const { return bytes_; }

    /// The address that is handed out for `offset`.
    char* outer(std::size_t offset) const { return outer_ + offset; }

    /// The writable twin of an address that was handed out.
    char* inner(const void* address) const { return inner_ + offsetOf(address); }

    std::size_t offsetOf(const void* address) const
    {
        return reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(outer_);
    }

    /// Whether the address belongs to the outer view, its end included.
    bool owns(const void* address) const { return offsetOf(address) <= bytes_; }

    /// Whether the range touches either view.
    bool overlaps(const void* address, std::size_t bytes) const;

    /// Gives the pages that lie wholly inside the range back to the system; they read as zero afterwards.
    void discard(std::size_t offset, std::size_t bytes) const;

private:
    void unmap();

    std::size_t bytes_;
    char* outer_;
    char* inner_;
};

} // namespace tarn::soft
