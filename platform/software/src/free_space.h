#pragma once
/// Which parts of an arena are free.

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace tarn::soft {

/// The free ranges of [0, bytes): best fit, lowest address first among equals, neighbours joined on return. Each range
/// knows how many of its bytes may be resident, so that a caller can bound what stays resident in free memory.
class FreeSpace
{
public:
    explicit FreeSpace(std::size_t bytes) { insert(0, {bytes, 0}); }

    /// Offset of a range of `bytes`, now taken; nothing if no range is large enough.
    std::optional<std::size_t> take(std::size_t bytes);

    /// Returns a range, of which `resident` bytes may be resident.
    void give(std::size_t offset, std::size_t bytes, std::size_t resident);

    /// Bytes of free memory that may be resident.
    std::size_t resident() const { return resident_; }

private:
    struct Range
    {
        std::size_t bytes, resident;
    };
    using Ranges = std::map<std::size_t, Range>;

    void insert(std::size_t offset, Range range);
    Range erase(Ranges::iterator range);

    Ranges byOffset_;
    std::set<std::pair<std::size_t, std::size_t>> bySize_; ///< (bytes, offset)
    std::size_t resident_ = 0;
};

} // namespace tarn::soft
