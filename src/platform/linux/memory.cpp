#include "platform/platform.h"

#include <QtGlobal>

#include <algorithm>
#include <span>

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace zemrak::platform {

namespace {

// Code that was patched where it is used could not be read from its file again.
bool isPatched(const dl_phdr_info &object, const ElfW(Phdr) & segment)
{
    const auto *entry = reinterpret_cast<const ElfW(Dyn) *>(object.dlpi_addr + segment.p_vaddr);
    for (; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_TEXTREL || (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0))
            return true;
    }
    return false;
}

int forgetCode(dl_phdr_info *object, std::size_t, void *)
{
    const std::span segments(object->dlpi_phdr, object->dlpi_phnum);
    const bool patched = std::ranges::any_of(
        segments, [object](const ElfW(Phdr) & each) { return each.p_type == PT_DYNAMIC && isPatched(*object, each); });
    if (patched || object->dlpi_name == nullptr || qstrncmp(object->dlpi_name, "linux-vdso", 10) == 0)
        return 0;
    const auto page = static_cast<ElfW(Addr)>(::sysconf(_SC_PAGESIZE));
    for (const ElfW(Phdr) & segment : segments) {
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0)
            continue;
        const ElfW(Addr) start = (object->dlpi_addr + segment.p_vaddr) & ~(page - 1);
        const ElfW(Addr) end = object->dlpi_addr + segment.p_vaddr + segment.p_memsz;
        ::madvise(reinterpret_cast<void *>(start), end - start, MADV_DONTNEED);
    }
    return 0;
}

} // namespace

void returnMemory()
{
    ::malloc_trim(0);
    // Never written to, these pages can always be read again, and what still runs is, a few at a time.
    ::dl_iterate_phdr(forgetCode, nullptr);
}

} // namespace zemrak::platform
