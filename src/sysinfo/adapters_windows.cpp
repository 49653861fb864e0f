// SPDX-License-Identifier: MIT
#include "sysinfo/adapters_native.h"

#include "sysinfo/com_windows.h"

#include <dxgi.h>

namespace ky::impl::native
{

namespace
{

constexpr UINT mostAdapters = 64;

/// From the system folder alone: a file of the same name beside the program or in the current folder is never loaded.
class GraphicsLibrary
{
public:
    GraphicsLibrary() : mModule(LoadLibraryExW(L"dxgi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32)) {}
    ~GraphicsLibrary()
    {
        if (mModule != nullptr)
            FreeLibrary(mModule);
    }
    GraphicsLibrary(const GraphicsLibrary&) = delete;
    GraphicsLibrary& operator=(const GraphicsLibrary&) = delete;

    bool createFactory(ComPointer<IDXGIFactory>& factory) const
    {
        using Create = HRESULT(WINAPI*)(REFIID, void**);
        if (mModule == nullptr)
            return false;
        FARPROC address = GetProcAddress(mModule, "CreateDXGIFactory1");
        if (address == nullptr)
            address = GetProcAddress(mModule, "CreateDXGIFactory");
        if (address == nullptr)
            return false;
        const auto create = reinterpret_cast<Create>(reinterpret_cast<void*>(address));
        // {7b7166ec-21c7-44ae-b21a-c9ae321ae369}
        static constexpr GUID factoryId = {
            0x7b7166ec, 0x21c7, 0x44ae, {0xb2, 0x1a, 0xc9, 0xae, 0x32, 0x1a, 0xe3, 0x69}};
        return SUCCEEDED(create(factoryId, factory.outVoid())) && factory;
    }

private:
    HMODULE mModule;
};

} // namespace

std::vector<kySystemUtils::DirectXDeviceInfo> listAdapters()
{
    std::vector<kySystemUtils::DirectXDeviceInfo> adapters;
    const GraphicsLibrary library; // outlives the objects made by it
    ComPointer<IDXGIFactory> factory;
    if (!library.createFactory(factory))
        return adapters;
    for (UINT i = 0; i < mostAdapters; ++i)
    {
        ComPointer<IDXGIAdapter> adapter;
        DXGI_ADAPTER_DESC description = {};
        if (FAILED(factory->EnumAdapters(i, adapter.out())) || !adapter)
            break;
        if (FAILED(adapter->GetDesc(&description)))
            continue;
        kySystemUtils::DirectXDeviceInfo info;
        info.description = narrow({description.Description, wcsnlen(description.Description, 128)});
        info.dedicatedVideoMemory = description.DedicatedVideoMemory;
        info.dedicatedSystemMemory = description.DedicatedSystemMemory;
        info.sharedSystemMemory = description.SharedSystemMemory;
        adapters.push_back(std::move(info));
    }
    return adapters;
}

} // namespace ky::impl::native
