// SPDX-License-Identifier: MIT
// Owning holders for COM. For *_windows.cpp files only.
#pragma once

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <oleauto.h>

namespace ky::impl::native
{

/// Releases its interface when it dies.
template <typename Interface>
class ComPointer
{
public:
    ComPointer() = default;
    ~ComPointer() { reset(); }
    ComPointer(const ComPointer&) = delete;
    ComPointer& operator=(const ComPointer&) = delete;

    Interface* operator->() const { return mInterface; }
    Interface* get() const { return mInterface; }
    explicit operator bool() const { return mInterface != nullptr; }

    /// Where a function stores a new interface; what was held before is released.
    Interface** out()
    {
        reset();
        return &mInterface;
    }
    void** outVoid() { return reinterpret_cast<void**>(out()); }

    void reset()
    {
        if (mInterface != nullptr)
            mInterface->Release();
        mInterface = nullptr;
    }

private:
    Interface* mInterface = nullptr;
};

/// A COM string from UTF-8.
class ComText
{
public:
    explicit ComText(std::string_view utf8)
    {
        const std::wstring wide = widen(utf8);
        mText = SysAllocStringLen(wide.c_str(), static_cast<UINT>(wide.size()));
    }
    ~ComText() { SysFreeString(mText); }
    ComText(const ComText&) = delete;
    ComText& operator=(const ComText&) = delete;

    BSTR get() const { return mText; }

private:
    BSTR mText = nullptr;
};

/// A VARIANT that frees what it holds.
class ComValue
{
public:
    ComValue() { VariantInit(&mValue); }
    ~ComValue() { VariantClear(&mValue); }
    ComValue(const ComValue&) = delete;
    ComValue& operator=(const ComValue&) = delete;

    VARIANT* out()
    {
        VariantClear(&mValue);
        return &mValue;
    }
    const VARIANT& get() const { return mValue; }

private:
    VARIANT mValue;
};

} // namespace ky::impl::native
