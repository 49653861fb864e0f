// SPDX-License-Identifier: MIT
#include "sysinfo/management_native.h"

#include "sysinfo/com_windows.h"

#include <objbase.h>
#include <wbemidl.h>

namespace ky::impl::native
{

namespace
{

constexpr LONG rowTimeoutMs = 5000;
constexpr std::size_t mostRows = 64;

/// COM on the calling thread. A thread that has it in another mode keeps that: the calls work in either.
class ComOnThread
{
public:
    ~ComOnThread()
    {
        if (mMustEnd)
            CoUninitialize();
    }

    HRESULT start()
    {
        const HRESULT result = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        mMustEnd = SUCCEEDED(result);
        return result == RPC_E_CHANGED_MODE ? S_OK : result;
    }

private:
    bool mMustEnd = false;
};

/// Once in a process; a program that has set it up in its own way is left alone.
HRESULT initializeSecurity()
{
    const HRESULT result = CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                                                RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
    return result == RPC_E_TOO_LATE ? S_OK : result;
}

HRESULT setBlanket(IUnknown* proxy)
{
    return CoSetProxyBlanket(proxy, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                             RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

/// Numbers of 64 bits arrive as texts.
kyVariant fromCom(const VARIANT& value)
{
    switch (value.vt)
    {
    case VT_BSTR:
        return value.bstrVal != nullptr ? kyVariant(narrow({value.bstrVal, SysStringLen(value.bstrVal)})) : kyVariant();
    case VT_BOOL: return kyVariant(value.boolVal != VARIANT_FALSE);
    case VT_UI1: return kyVariant(value.bVal);
    case VT_I2: return kyVariant(value.iVal);
    case VT_I4: return kyVariant(value.lVal);
    case VT_UI4: return kyVariant(value.ulVal);
    default: return {};
    }
}

ManagementRow readRow(IWbemClassObject& object, const ManagementQuery& query)
{
    ManagementRow row;
    for (const std::string& column : query.columns)
    {
        ComValue value;
        if (SUCCEEDED(object.Get(widen(column).c_str(), 0, value.out(), nullptr, nullptr)))
            row[column] = fromCom(value.get());
    }
    return row;
}

} // namespace

struct ManagementSession::State
{
    HRESULT run(ManagementStep step);

    ComOnThread com; // ends last
    ComPointer<IWbemLocator> locator;
    ComPointer<IWbemServices> services;
};

HRESULT ManagementSession::State::run(ManagementStep step)
{
    switch (step)
    {
    case ManagementStep::InitializeCom: return com.start();
    case ManagementStep::InitializeSecurity: return initializeSecurity();
    case ManagementStep::CreateLocator:
        return CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator, locator.outVoid());
    case ManagementStep::Connect:
        return locator->ConnectServer(ComText("ROOT\\CIMV2").get(), nullptr, nullptr, nullptr,
                                      WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr, services.out());
    case ManagementStep::SetBlanket: return setBlanket(services.get());
    }
    return E_UNEXPECTED;
}

ManagementSession::ManagementSession() : mState(std::make_unique<State>()) {}

ManagementSession::~ManagementSession() = default;

bool ManagementSession::connect(ManagementStep& failedStep, std::uint32_t& code)
{
    for (const ManagementStep step :
         {ManagementStep::InitializeCom, ManagementStep::InitializeSecurity, ManagementStep::CreateLocator,
          ManagementStep::Connect, ManagementStep::SetBlanket})
    {
        const HRESULT result = mState->run(step);
        if (SUCCEEDED(result))
            continue;
        failedStep = step;
        code = static_cast<std::uint32_t>(result);
        return false;
    }
    return true;
}

std::vector<ManagementRow> ManagementSession::select(const ManagementQuery& query)
{
    std::vector<ManagementRow> rows;
    ComPointer<IEnumWbemClassObject> found;
    const HRESULT result =
        mState->services->ExecQuery(ComText("WQL").get(), ComText(query.text).get(),
                                    WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, found.out());
    if (FAILED(result) || !found)
        return rows;
    // The enumerator is a proxy of its own.
    setBlanket(found.get());
    while (rows.size() < mostRows)
    {
        ComPointer<IWbemClassObject> object;
        ULONG count = 0;
        if (found->Next(rowTimeoutMs, 1, object.out(), &count) != WBEM_S_NO_ERROR || count == 0 || !object)
            break;
        rows.push_back(readRow(*object.get(), query));
    }
    return rows;
}

} // namespace ky::impl::native
