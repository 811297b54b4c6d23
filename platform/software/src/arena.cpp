#include "arena.h"

#include <cerrno>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace tarn::soft {

static char* map(std::size_t bytes, int protection)
{
    void* address = mmap(nullptr, bytes, protection, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return address == MAP_FAILED ? nullptr : static_cast<char*>(address);
}

Arena::Arena(std::size_t bytes)
    : bytes_(bytes), outer_(map(bytes, PROT_NONE)), inner_(map(bytes, PROT_READ | PROT_WRITE))
{
    if (!outer_ || !inner_) {
        const int error = errno;
        unmap();
        throw std::system_error(error, std::generic_category(), "device memory");
    }
    // The columns of a large matrix lie on a page each, more of them than the processor remembers small pages. A kernel
    // without huge pages just says no.
    madvise(inner_, bytes, MADV_HUGEPAGE);
    madvise(inner_, bytes, MADV_DONTDUMP);
}

Arena::~Arena() { unmap(); }

void Arena::unmap()
{
    for (char* view : {outer_, inner_})
        if (view)
            munmap(view, bytes_);
}

bool Arena::overlaps(const void* address, std::size_t bytes) const
{
    const auto touches = [&](const char* view) {
        const auto first = reinterpret_cast<std::uintptr_t>(address);
        const auto base = reinterpret_cast<std::uintptr_t>(view);
        return first < base + bytes_ && base < first + bytes;
    };
    return touches(outer_) || touches(inner_);
}

void Arena::discard(std::size_t offset, std::size_t bytes) const
{
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t first = (offset + page - 1) / page * page;
    const std::size_t last = (offset + bytes) / page * page;
    if (first < last)
        madvise(inner_ + first, last - first, MADV_DONTNEED);
}

} // namespace tarn::soft
