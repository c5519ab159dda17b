// SPDX-License-Identifier: Apache-2.0
#include "process/unused_memory.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <link.h>
#include <malloc.h>
#include <span>
#include <sys/mman.h>
#include <unistd.h>

namespace process
{

namespace
{

using Segment = ElfW(Phdr);

/** The addresses of whole pages. */
struct Pages {
    std::uintptr_t begin;
    std::uintptr_t end;
};

Pages pagesOf(const dl_phdr_info &object, const Segment &segment)
{
    const auto bytes = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t begin = object.dlpi_addr + segment.p_vaddr;
    const std::uintptr_t end = begin + segment.p_memsz;
    return {begin / bytes * bytes, (end + bytes - 1) / bytes * bytes};
}

bool isWritable(const Segment &segment)
{
    return segment.p_type == PT_LOAD && (segment.p_flags & PF_W) != 0;
}

/** Code that is changed when it is loaded is not what its file has. */
bool isChangedWhenLoaded(const dl_phdr_info &object, const Segment &segment)
{
    if (segment.p_type != PT_DYNAMIC) {
        return false;
    }
    const auto *entry = reinterpret_cast<const ElfW(Dyn) *>(object.dlpi_addr + segment.p_vaddr);
    for (; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_TEXTREL ||
            (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0)) {
            return true;
        }
    }
    return false;
}

/** Loaded, and no page of it is one of a segment that can be written, or could before it was protected. */
bool isReleasable(const dl_phdr_info &object, const Segment &segment)
{
    const Pages pages = pagesOf(object, segment);
    const std::span segments(object.dlpi_phdr, object.dlpi_phnum);
    return segment.p_type == PT_LOAD && std::ranges::none_of(segments, [&](const Segment &other) {
               const Pages theirs = pagesOf(object, other);
               return isWritable(other) && theirs.begin < pages.end && pages.begin < theirs.end;
           });
}

/** Of the program or a library. */
int releaseObject(dl_phdr_info *object, std::size_t, void *)
{
    std::array<Pages, 8> released; // more than linkers make
    std::size_t count = 0;
    for (const Segment &segment : std::span(object->dlpi_phdr, object->dlpi_phnum)) {
        if (isChangedWhenLoaded(*object, segment)) {
            return 0;
        }
        if (isReleasable(*object, segment) && count < released.size()) {
            released[count++] = pagesOf(*object, segment);
        }
    }
    // The description of the segments is in one of them: it is not looked at any more.
    for (const Pages &pages : std::span(released.data(), count)) {
        madvise(reinterpret_cast<void *>(pages.begin), pages.end - pages.begin, MADV_DONTNEED);
    }
    return 0;
}

} // namespace

void releaseUnusedMemory()
{
    malloc_trim(0);
    dl_iterate_phdr(releaseObject, nullptr);
}

bool QuietTime::tick()
{
    if (isOver_.exchange(false, std::memory_order_relaxed)) {
        passed_ = 0;
    } else if (passed_ < seconds && ++passed_ == seconds) {
        releaseUnusedMemory();
        return true;
    }
    return false;
}

} // namespace process
