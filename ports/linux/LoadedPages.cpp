#include "ports/linux/LoadedPages.h"

#include <algorithm>

#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace zentavo::linux_port {

namespace {

template <class Visit>
void forEachObject(Visit visit) {
    dl_iterate_phdr(
        [](dl_phdr_info* object, std::size_t, void* context) {
            (*static_cast<Visit*>(context))(*object);
            return 0;
        },
        &visit);
}

/// Objects that relocate their own code have private copies of its pages: those must stay.
bool writesItsCode(const dl_phdr_info& object) {
    for (int i = 0; i < object.dlpi_phnum; ++i) {
        const auto& header = object.dlpi_phdr[i];
        if (header.p_type != PT_DYNAMIC) {
            continue;
        }
        const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(object.dlpi_addr + header.p_vaddr);
        for (; entry->d_tag != DT_NULL; ++entry) {
            if (entry->d_tag == DT_TEXTREL || (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0)) {
                return true;
            }
        }
        return false;
    }
    return true;
}

} // namespace

LoadedPages::LoadedPages(std::initializer_list<std::string_view> anyway) {
    forEachObject([&](const dl_phdr_info& object) {
        const std::string_view path = object.dlpi_name == nullptr ? "" : object.dlpi_name;
        const auto file = path.substr(path.rfind('/') + 1);
        if (std::none_of(anyway.begin(), anyway.end(), [&](auto name) { return file.starts_with(name); })) {
            bases_.push_back(object.dlpi_addr);
        }
    });
}

void LoadedPages::giveBackNewer() const {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    forEachObject([&](const dl_phdr_info& object) {
        const bool known = std::find(bases_.begin(), bases_.end(), object.dlpi_addr) != bases_.end();
        if (known || writesItsCode(object)) {
            return;
        }
        for (int i = 0; i < object.dlpi_phnum; ++i) {
            const auto& header = object.dlpi_phdr[i];
            if (header.p_type != PT_LOAD || (header.p_flags & PF_W) != 0) {
                continue;
            }
            const auto begin = (object.dlpi_addr + header.p_vaddr + page - 1) / page * page;
            const auto end = (object.dlpi_addr + header.p_vaddr + header.p_memsz) / page * page;
            if (begin < end) {
                madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
            }
        }
    });
}

} // namespace zentavo::linux_port
