#pragma once
/// Work spread over the cores.

#include <cstdint>
#include <functional>

namespace tarn::soft {

/// Calls body(begin, end) for ranges of at least `grain` indices that together make up [0, count), on any threads, and
/// returns when all are done.
void forRanges(std::int64_t count, std::int64_t grain,
               const std::function<void(std::int64_t begin, std::int64_t end)>& body);

} // namespace tarn::soft
