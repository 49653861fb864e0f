// SPDX-License-Identifier: MIT
#include "sysinfo/adapters_native.h"

#include "platform/file_handle.h"
#include "sysinfo/graphics_cards.h"
#include "sysinfo/pci_list_linux.h"
#include "sysinfo/system_tree_linux.h"

#include <algorithm>
#include <cstdint>

namespace ky::impl::native
{

std::string readPciList()
{
    constexpr std::int64_t limit = 8 * 1024 * 1024;
    for (const char* const path : {"/usr/share/misc/pci.ids", "/usr/share/hwdata/pci.ids"})
    {
        ErrorCode error = 0;
        FileHandle file = FileHandle::open(path, OpenMode::Read, error);
        const std::int64_t size = file.isOpen() ? std::min(file.size(), limit) : 0;
        if (size <= 0)
            continue;
        std::string text(static_cast<std::size_t>(size), '\0');
        const std::int64_t got = file.read(text.data(), text.size(), error);
        text.resize(static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
        return text;
    }
    return {};
}

std::vector<kySystemUtils::DirectXDeviceInfo> listAdapters()
{
    std::vector<kySystemUtils::DirectXDeviceInfo> result;
    for (GraphicsCard& card : findGraphicsCards(systemTree(), &readPciList))
        result.push_back(std::move(card.info));
    return result;
}

} // namespace ky::impl::native
