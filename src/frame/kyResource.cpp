// SPDX-License-Identifier: MIT
#include <ky/kyResource.h>

#include "frame/process_end_native.h"
#include "frame/resource_registry.h"
#include "platform/fork_native.h"

#include <ky/kyLog.h>
#include <ky/kyMutex.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace ky
{

namespace
{

/// A null pointer is a name of its own.
using NameView = std::optional<std::string_view>;

NameView viewOf(const char* name) { return name != nullptr ? NameView(name) : std::nullopt; }

struct NameOrder
{
    using is_transparent = void;
    bool operator()(NameView a, NameView b) const noexcept { return a < b; }
};

struct Block
{
    const char* data;
    unsigned long long size;
};

struct Registry
{
    std::map<std::optional<std::string>, Block, NameOrder> blocks;
    std::unique_ptr<kyMutex> lock; ///< null until full initialization
};

// Written under the list's lock, by initialization and termination only.
Registry* sRegistry = nullptr;

/// Holds the registry's lock for a scope, where there is one.
class Section
{
public:
    explicit Section(const Registry& registry) : mLock(registry.lock.get())
    {
        if (mLock != nullptr)
            mLock->lock();
    }
    ~Section()
    {
        if (mLock != nullptr)
            mLock->unlock();
    }
    Section(const Section&) = delete;
    Section& operator=(const Section&) = delete;

private:
    kyMutex* mLock;
};

/// Messages that are written when the locks have been given back, so that a log handler may use the registry.
class Messages
{
public:
    Messages() = default;
    ~Messages()
    {
        for (const std::string& text : mTexts)
            kyLogObject(kyLogType::CRITICAL, nullptr, kyLog::editPtr(), nullptr) << text;
    }
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    void add(const char* text, const char* name)
    {
        mTexts.emplace_back(text).append(name != nullptr ? name : "[NullPtr]");
    }

private:
    std::vector<std::string> mTexts;
};

void add(Registry& registry, const char* name, const Block& block, Messages& messages)
{
    if (registry.blocks.find(viewOf(name)) == registry.blocks.end())
        registry.blocks.emplace(viewOf(name), block);
    else
        messages.add("Resource conflict ", name);
}

} // namespace

namespace rc::impl
{

/// A lock that is ready before any static object is initialized, which not every platform's std::mutex is. Held for
/// moments, and rarely wanted by two threads at once.
class EarlyLock
{
public:
    void lock() noexcept
    {
        while (mTaken.test_and_set(std::memory_order_acquire))
            std::this_thread::yield();
    }
    void unlock() noexcept { mTaken.clear(std::memory_order_release); }

private:
    std::atomic_flag mTaken;
};

/// The modules that carry blocks, in the order of their loading. Ready before any static object is initialized and
/// never destroyed.
class EmbeddedList
{
public:
    EarlyLock& lock() { return mLock; }

    void enter(EmbeddedResources& module) noexcept
    {
        Messages messages;
        const std::lock_guard guard(mLock);
        module.mPrevious = mLast;
        (mLast != nullptr ? mLast->mNext : mFirst) = &module;
        mLast = &module;
        if (sRegistry == nullptr)
            return;
        try
        {
            const Section section(*sRegistry);
            addBlocks(*sRegistry, module, messages);
        }
        catch (...)
        {
            // Out of memory: nobody could catch it where static objects are initialized.
        }
    }

    void leave(EmbeddedResources& module) noexcept
    {
        const std::lock_guard guard(mLock);
        (module.mPrevious != nullptr ? module.mPrevious->mNext : mFirst) = module.mNext;
        (module.mNext != nullptr ? module.mNext->mPrevious : mLast) = module.mPrevious;
        if (sRegistry == nullptr)
            return;
        const Section section(*sRegistry);
        for (const EmbeddedResource& resource : module)
        {
            const auto found = sRegistry->blocks.find(viewOf(resource.name));
            if (found != sRegistry->blocks.end() && found->second.data == resource.begin)
                sRegistry->blocks.erase(found);
        }
    }

    /// For a registry that nobody else knows yet.
    void addAll(Registry& registry, Messages& messages) const
    {
        for (const EmbeddedResources* module = mFirst; module != nullptr; module = module->mNext)
            addBlocks(registry, *module, messages);
    }

private:
    static void addBlocks(Registry& registry, const EmbeddedResources& module, Messages& messages)
    {
        for (const EmbeddedResource& resource : module)
        {
            const auto size = static_cast<unsigned long long>(resource.end - resource.begin);
            add(registry, resource.name, {resource.begin, size}, messages);
        }
    }

    EarlyLock mLock; ///< comes before the registry's lock
    EmbeddedResources* mFirst = nullptr;
    EmbeddedResources* mLast = nullptr;
};

namespace
{

constinit EmbeddedList sList;

kyMutex* sHeldForFork = nullptr;

void holdForFork()
{
    sList.lock().lock();
    sHeldForFork = sRegistry != nullptr ? sRegistry->lock.get() : nullptr;
    if (sHeldForFork != nullptr)
        sHeldForFork->lock();
}

void releaseAfterFork()
{
    if (sHeldForFork != nullptr)
        std::exchange(sHeldForFork, nullptr)->unlock();
    sList.lock().unlock();
}

// Before the logger's: the last one registered is taken first, and a log handler may look resources up.
const bool heldForForks = (ky::impl::native::onFork(&holdForFork, &releaseAfterFork), true);

} // namespace

EmbeddedResources::EmbeddedResources(const EmbeddedResource* entries, std::size_t count) noexcept
    : mEntries(entries),
      mCount(count)
{
    sList.enter(*this);
}

EmbeddedResources::~EmbeddedResources()
{
    if (!ky::impl::native::processIsEnding())
        sList.leave(*this);
}

void RegisterResources(unsigned long long count, const char* base, const char* const* names,
                       const unsigned long long* offsets, const unsigned long long* sizes)
{
    if (sRegistry == nullptr)
        return;
    Messages messages;
    const Section section(*sRegistry);
    for (unsigned long long i = 0; i < count; ++i)
        add(*sRegistry, names[i], {base + offsets[i], sizes[i]}, messages);
}

void UnRegisterResources(unsigned long long count, const char* /*base*/, const char* const* names,
                         const unsigned long long* /*offsets*/, const unsigned long long* /*sizes*/)
{
    if (sRegistry == nullptr)
        return;
    Messages messages;
    const Section section(*sRegistry);
    for (unsigned long long i = 0; i < count; ++i)
    {
        const auto found = sRegistry->blocks.find(viewOf(names[i]));
        if (found != sRegistry->blocks.end())
            sRegistry->blocks.erase(found);
        else
            messages.add("Resource is already unregistered ", names[i]);
    }
}

} // namespace rc::impl

namespace rc
{

bool GetResource(const char* name, const char*& data, unsigned long long& size)
{
    data = nullptr;
    size = 0;
    if (sRegistry != nullptr)
    {
        const Section section(*sRegistry);
        const auto found = sRegistry->blocks.find(viewOf(name));
        if (found != sRegistry->blocks.end())
        {
            data = found->second.data;
            size = found->second.size;
            return true;
        }
    }
    kyLogObject(kyLogType::CRITICAL, nullptr, kyLog::editPtr(), nullptr) << "Resource is missing " << name;
    return false;
}

bool GetResource(const char* name, std::string& out)
{
    const char* data = nullptr;
    unsigned long long size = 0;
    const bool found = GetResource(name, data, size);
    // Not cleared first: the name may lie in it.
    if (size != 0)
        out.assign(data, static_cast<std::size_t>(size));
    else
        out.clear();
    return found;
}

} // namespace rc

namespace impl
{

void createResourceRegistry()
{
    if (sRegistry != nullptr)
        return;
    rc::impl::EmbeddedList& list = rc::impl::sList;
    Messages messages;
    auto registry = std::make_unique<Registry>();
    const std::lock_guard guard(list.lock());
    list.addAll(*registry, messages);
    sRegistry = registry.release();
}

void makeResourceRegistryThreadSafe()
{
    createResourceRegistry();
    if (sRegistry->lock != nullptr)
        return;
    auto lock = std::make_unique<kyMutex>();
    const std::lock_guard guard(rc::impl::sList.lock());
    sRegistry->lock = std::move(lock);
}

void destroyResourceRegistry() noexcept
{
    std::unique_ptr<Registry> registry;
    {
        const std::lock_guard guard(rc::impl::sList.lock());
        registry.reset(std::exchange(sRegistry, nullptr));
    }
    // The lock first, by the order of the members; in a forked child it reports that.
}

} // namespace impl

} // namespace ky
