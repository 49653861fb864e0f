// SPDX-License-Identifier: MIT
// The functions of elfutils' libdw that read debug information.
#pragma once

#include <elfutils/libdwfl.h>

namespace ky::impl::native
{

struct Libdw
{
    decltype(&::dwfl_begin) begin = nullptr;
    decltype(&::dwfl_end) end = nullptr;
    decltype(&::dwfl_linux_proc_report) report = nullptr;
    decltype(&::dwfl_report_end) reportEnd = nullptr;
    decltype(&::dwfl_linux_proc_find_elf) findElf = nullptr;
    decltype(&::dwfl_module_build_id) buildId = nullptr;
    decltype(&::dwfl_addrmodule) moduleOf = nullptr;
    decltype(&::dwfl_module_addrname) nameOf = nullptr;
    decltype(&::dwfl_module_getsrc) lineOf = nullptr;
    decltype(&::dwfl_lineinfo) lineInfo = nullptr;
    decltype(&::dwfl_module_nextcu) nextUnit = nullptr;
    decltype(&::dwarf_haspc) holds = nullptr;
    decltype(&::dwarf_getsrc_die) lineInUnit = nullptr;
    decltype(&::dwarf_linesrc) fileOf = nullptr;
    decltype(&::dwarf_lineno) numberOf = nullptr;
};

enum class LibdwState
{
    Unknown,
    Ready,
    Missing
};

/// At run time, so that programs start without it. Ready when every function is there.
LibdwState loadLibdw(Libdw& functions) noexcept;

} // namespace ky::impl::native
