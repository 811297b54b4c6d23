#include "arena.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/falloc.h>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace tarn::soft {

static char* map(int file, std::size_t bytes, int protection)
{
    void* address = mmap(nullptr, bytes, protection, MAP_SHARED | MAP_NORESERVE, file, 0);
    return address == MAP_FAILED ? nullptr : static_cast<char*>(address);
}

Arena::Arena(std::size_t bytes) : bytes_(bytes), file_(memfd_create("tarn_softdev", MFD_CLOEXEC))
{
    if (file_ >= 0 && ftruncate(file_, static_cast<off_t>(bytes)) == 0) {
        outer_ = map(file_, bytes, PROT_NONE);
        inner_ = map(file_, bytes, PROT_READ | PROT_WRITE);
        if (outer_ && inner_) {
            // Large operands spread over many pages; a kernel without huge pages for shared memory just says no.
            madvise(inner_, bytes, MADV_HUGEPAGE);
            madvise(inner_, bytes, MADV_DONTDUMP);
            return;
        }
        if (outer_)
            munmap(outer_, bytes);
    }
    const int error = errno;
    if (file_ >= 0)
        close(file_);
    throw std::system_error(error, std::generic_category(), "device memory");
}

Arena::~Arena()
{
    munmap(outer_, bytes_);
    munmap(inner_, bytes_);
    close(file_);
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
        fallocate(file_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(first),
                  static_cast<off_t>(last - first));
}

} // namespace tarn::soft
