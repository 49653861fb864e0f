// SPDX-License-Identifier: MIT
#include "platform/parent_descriptor_linux.h"

#include <pthread.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

using Slot = ParentDescriptor::Slot;

/// Slots are never freed, only used again, so that the child of a fork can walk them without a lock.
constinit std::atomic<Slot*> allSlots{nullptr};

void closeSlot(Slot& slot, int replacement) noexcept
{
    const int old = slot.descriptor.exchange(replacement);
    if (old != -1)
        ::close(old);
}

void closeInForkedChild() noexcept
{
    for (Slot* slot = allSlots; slot != nullptr; slot = slot->next)
        closeSlot(*slot, -1);
}

const int registered = pthread_atfork(nullptr, nullptr, &closeInForkedChild);

Slot* unusedSlot()
{
    for (Slot* slot = allSlots; slot != nullptr; slot = slot->next)
    {
        if (!slot->isUsed.exchange(true))
            return slot;
    }
    auto* const slot = new Slot;
    slot->next = allSlots;
    while (!allSlots.compare_exchange_weak(slot->next, slot))
    {
    }
    return slot;
}

} // namespace

ParentDescriptor::ParentDescriptor() : mSlot(unusedSlot()) {}

ParentDescriptor::~ParentDescriptor()
{
    set(-1);
    mSlot->isUsed = false;
}

void ParentDescriptor::set(int descriptor) noexcept { closeSlot(*mSlot, descriptor); }

} // namespace ky::impl::native
