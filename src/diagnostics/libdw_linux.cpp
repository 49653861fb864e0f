// SPDX-License-Identifier: MIT
#include "diagnostics/libdw_linux.h"

#include <dlfcn.h>

namespace ky::impl::native
{

namespace
{

template <typename Function>
bool find(void* library, const char* name, Function& function) noexcept
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

} // namespace

LibdwState loadLibdw(Libdw& functions) noexcept
{
    void* const library = dlopen("libdw.so.1", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        return LibdwState::Missing;
    const bool all =
        find(library, "dwfl_begin", functions.begin) && find(library, "dwfl_end", functions.end) &&
        find(library, "dwfl_linux_proc_report", functions.report) &&
        find(library, "dwfl_report_end", functions.reportEnd) &&
        find(library, "dwfl_linux_proc_find_elf", functions.findElf) &&
        find(library, "dwfl_module_build_id", functions.buildId) &&
        find(library, "dwfl_addrmodule", functions.moduleOf) &&
        find(library, "dwfl_module_addrname", functions.nameOf) &&
        find(library, "dwfl_module_getsrc", functions.lineOf) && find(library, "dwfl_lineinfo", functions.lineInfo) &&
        find(library, "dwfl_module_nextcu", functions.nextUnit) && find(library, "dwarf_haspc", functions.holds) &&
        find(library, "dwarf_getsrc_die", functions.lineInUnit) && find(library, "dwarf_linesrc", functions.fileOf) &&
        find(library, "dwarf_lineno", functions.numberOf);
    return all ? LibdwState::Ready : LibdwState::Missing;
}

} // namespace ky::impl::native
