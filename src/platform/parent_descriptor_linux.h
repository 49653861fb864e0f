// SPDX-License-Identifier: MIT
// For *_linux.cpp files only.
#pragma once

#include <atomic>

namespace ky::impl::native
{

/// An owned descriptor that the child of a fork does not get: it is closed there, and -1. Otherwise the child would
/// keep pipes, locks and names alive that its parent has given up.
class ParentDescriptor
{
public:
    ParentDescriptor();
    ~ParentDescriptor();
    ParentDescriptor(const ParentDescriptor&) = delete;
    ParentDescriptor& operator=(const ParentDescriptor&) = delete;

    int get() const noexcept { return mSlot->descriptor.load(std::memory_order_relaxed); }

    /// Takes over a descriptor; the old one is closed.
    void set(int descriptor) noexcept;

    int release() noexcept { return mSlot->descriptor.exchange(-1); }

    struct Slot
    {
        std::atomic<bool> isUsed{true};
        std::atomic<int> descriptor{-1};
        Slot* next = nullptr;
    };

private:
    Slot* mSlot;
};

} // namespace ky::impl::native
