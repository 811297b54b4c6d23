#include "free_space.h"

#include <algorithm>
#include <iterator>

namespace tarn::soft {

void FreeSpace::insert(std::size_t offset, Range range)
{
    byOffset_.emplace(offset, range);
    bySize_.emplace(range.bytes, offset);
    resident_ += range.resident;
}

FreeSpace::Range FreeSpace::erase(Ranges::iterator position)
{
    const Range range = position->second;
    bySize_.erase({range.bytes, position->first});
    resident_ -= range.resident;
    byOffset_.erase(position);
    return range;
}

std::optional<std::size_t> FreeSpace::take(std::size_t bytes)
{
    const auto fit = bySize_.lower_bound({bytes, 0});
    if (fit == bySize_.end())
        return std::nullopt;
    const std::size_t offset = fit->second;
    const Range range = erase(byOffset_.find(offset));
    if (range.bytes > bytes)
        insert(offset + bytes, {range.bytes - bytes, range.resident - std::min(range.resident, bytes)});
    return offset;
}

void FreeSpace::give(std::size_t offset, std::size_t bytes, std::size_t resident)
{
    Range range{bytes, resident};
    const auto join = [&](Ranges::iterator neighbour) {
        const Range other = erase(neighbour);
        range.bytes += other.bytes;
        range.resident += other.resident;
    };
    const auto next = byOffset_.find(offset + bytes);
    if (next != byOffset_.end())
        join(next);
    const auto above = byOffset_.lower_bound(offset);
    if (above != byOffset_.begin()) {
        const auto previous = std::prev(above);
        if (previous->first + previous->second.bytes == offset) {
            offset = previous->first;
            join(previous);
        }
    }
    insert(offset, range);
}

} // namespace tarn::soft
