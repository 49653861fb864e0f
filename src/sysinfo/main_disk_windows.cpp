// SPDX-License-Identifier: MIT
#include "sysinfo/main_disk_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <cstddef>
#include <winioctl.h>

namespace ky::impl::native
{

namespace
{

// No access right is needed for these questions, so that every user may ask them.
HANDLE openVolume(const std::wstring& path)
{
    return CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                       0, nullptr);
}

/// Number of the first disk that the volume lies on; -1 when it cannot be told.
long long diskNumber(HANDLE volume)
{
    DWORD size = 0;
    STORAGE_DEVICE_NUMBER device = {};
    if (DeviceIoControl(volume, IOCTL_STORAGE_GET_DEVICE_NUMBER, nullptr, 0, &device, sizeof(device), &size, nullptr) &&
        size == sizeof(device) && device.DeviceType == FILE_DEVICE_DISK)
        return device.DeviceNumber;
    // A volume that spans disks has no number of its own.
    alignas(VOLUME_DISK_EXTENTS) unsigned char buffer[sizeof(VOLUME_DISK_EXTENTS) + 31 * sizeof(DISK_EXTENT)] = {};
    const auto* const extents = reinterpret_cast<const VOLUME_DISK_EXTENTS*>(buffer);
    if (DeviceIoControl(volume, IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS, nullptr, 0, buffer, sizeof(buffer), &size,
                        nullptr) &&
        size >= sizeof(VOLUME_DISK_EXTENTS) && extents->NumberOfDiskExtents > 0)
        return extents->Extents[0].DiskNumber;
    return -1;
}

} // namespace

std::string mainDisk()
{
    wchar_t folder[MAX_PATH] = {};
    const UINT length = GetSystemWindowsDirectoryW(folder, MAX_PATH);
    if (length < 2 || length >= MAX_PATH || folder[1] != L':')
        return {};
    const HANDLE volume = openVolume(L"\\\\.\\" + std::wstring(folder, 2));
    if (volume == INVALID_HANDLE_VALUE)
        return {};
    const long long number = diskNumber(volume);
    CloseHandle(volume);
    return number < 0 ? std::string() : "\\\\.\\PhysicalDrive" + std::to_string(number);
}

} // namespace ky::impl::native
