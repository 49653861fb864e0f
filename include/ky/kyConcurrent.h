// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Loops, transformations, reductions and calls that use all processors.
///
/// \code
/// ky::concurrent::parallelFor(0, image.height(), [&](int row) { sharpen(image, row); });
///
/// const double sum = ky::concurrent::reduce(std::size_t{0}, values.size(), 0.0,
///     [&](std::size_t i) { return values[i]; }, std::plus<>());
/// \endcode
///
/// What holds for all of them:
///
/// - Indices are divided into blocks of `grain` neighbours, the last one shorter. 0 gives 256 blocks, or one for each
///   index if there are fewer. A block is what a thread takes at a time: make it so large that it is worth some
///   microseconds, and have several for every thread.
/// - The work is shared by the calling thread and the idle workers of the process-wide pool. All of it runs on the
///   calling thread when no worker is idle, before full initialization, in a child made by `fork()`, and when the
///   calling thread is a worker itself. So bodies may call these functions again, and any number of threads may call
///   them at once.
/// - Bodies run on several threads at once: they must not change shared data without a lock. They may be called through
///   the object that was passed; it is not copied.
/// - When a body throws, no further block is begun; the first exception is thrown by the call after all blocks in
///   progress have ended. A body that crashes is reported as guarded code is (see kyException.h) and counts as one that
///   has thrown a std::runtime_error.
/// - With a notifier (not owned, may be null), progress is reported as a step group of one step that counts indices, on
///   the calling thread only; shouldCancel() is asked after every block, on the thread that has run it. After a
///   cancellation no further block is begun.
/// - terminateKySystem() waits for calls in progress; it must not be called from a body. A child that is forked in a
///   body must not return from it.

#include <ky/kyConcurrentPool.h>
#include <ky/kyExport.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace ky
{

class kyProgressNotifierInterface;

namespace impl
{

class LoopTask;

/// A loop over the offsets 0 to `count` in blocks, shared with the workers of the process-wide pool.
class KY_API BlockLoop : public ConcurrentPool::SolverBase
{
public:
    /// `notifier` is not owned and may be null.
    BlockLoop(std::uint64_t count, std::uint64_t grain, kyProgressNotifierInterface* notifier);
    ~BlockLoop() override;

    /// Number of blocks.
    [[nodiscard]] std::uint64_t blockCount() const;

    /// Once. False when it was cancelled before everything was done.
    bool run();

protected:
    /// Does block number `block`, the offsets `first` up to, not including, `last`.
    virtual void runBlock(std::uint64_t block, std::uint64_t first, std::uint64_t last) = 0;

private:
    friend class LoopTask;

    bool runShared();
    bool runOn(ConcurrentPool& pool, std::uint64_t threads);

    std::uint64_t mCount;
    std::uint64_t mGrain;
    kyProgressNotifierInterface* mNotifier; ///< not owned
};

/// A loop whose blocks are done by a function of block, first and last offset, which it does not own.
template <typename Function>
class BlockLoopOf final : public BlockLoop
{
public:
    /// `function` must outlive the loop.
    BlockLoopOf(std::uint64_t count, std::uint64_t grain, kyProgressNotifierInterface* notifier, Function& function)
        : BlockLoop(count, grain, notifier),
          mFunction(function)
    {
    }

private:
    void runBlock(std::uint64_t block, std::uint64_t first, std::uint64_t last) override
    {
        mFunction(block, first, last);
    }

    Function& mFunction;
};

/// Makes a loop and runs it.
template <typename Function>
bool runBlocks(std::uint64_t count, std::uint64_t grain, kyProgressNotifierInterface* notifier, Function&& function)
{
    BlockLoopOf<std::remove_reference_t<Function>> loop(count, grain, notifier, function);
    return loop.run();
}

/// Indices as offsets from the first one, without overflow for any integer type.
template <typename Begin, typename End>
class IndexRange
{
public:
    using Index = std::common_type_t<Begin, End>; ///< type of an index
    static_assert(std::is_integral_v<Index> && !std::is_same_v<Index, bool>, "indices are integers");

    /// From `begin` up to, not including, `end`.
    IndexRange(Begin begin, End end) : mBegin(static_cast<Index>(begin)), mEnd(static_cast<Index>(end)) {}

    /// Number of indices.
    [[nodiscard]] std::uint64_t count() const
    {
        return mBegin < mEnd ? static_cast<Unsigned>(static_cast<Unsigned>(mEnd) - static_cast<Unsigned>(mBegin)) : 0;
    }
    /// The index at an offset below count().
    [[nodiscard]] Index at(std::uint64_t offset) const
    {
        return static_cast<Index>(static_cast<Unsigned>(mBegin) + static_cast<Unsigned>(offset));
    }

private:
    using Unsigned = std::make_unsigned_t<Index>;
    Index mBegin;
    Index mEnd;
};

/// Keeps the results of two blocks from sharing a word, whatever `Value` is.
template <typename Value>
struct BlockResult
{
    Value value; ///< the result
};

/// The result of one block of `reduce`.
template <typename Value, typename Range, typename Map, typename Combine>
Value reduceBlock(const Range& range, std::uint64_t first, std::uint64_t last, const Value& identity, Map& map,
                  Combine& combine)
{
    using Index = typename Range::Index;
    if constexpr (std::is_invocable_v<Map&, Index, Index>)
    {
        static_cast<void>(identity);
        static_cast<void>(combine);
        return map(range.at(first), range.at(last));
    }
    else
    {
        Value result = identity;
        for (; first != last; ++first)
            result = combine(std::move(result), map(range.at(first)));
        return result;
    }
}

} // namespace impl

namespace concurrent
{

/// Calls `body(index)` for every index from `begin` up to and without `end`, or, when it takes two, `body(first, last)`
/// for every block of indices. Every thread meets its blocks in ascending order.
///
/// \return whether everything was done; false only after a cancellation
template <typename Begin, typename End, typename Body>
bool parallelFor(Begin begin, End end, Body&& body, std::uint64_t grain = 0,
                 kyProgressNotifierInterface* notifier = nullptr)
{
    using Range = impl::IndexRange<Begin, End>;
    using Index = typename Range::Index;
    const Range range(begin, end);
    return impl::runBlocks(range.count(), grain, notifier,
                           [&](std::uint64_t, std::uint64_t first, std::uint64_t last)
                           {
                               if constexpr (std::is_invocable_v<Body&, Index, Index>)
                                   body(range.at(first), range.at(last));
                               else
                                   for (; first != last; ++first)
                                       body(range.at(first));
                           });
}

/// Assigns `function(*input)` for every element from `first` up to and without `last` to the element at the same place
/// from `output` on. Both iterators allow random access; different elements of the output must be independent objects,
/// which those of a `std::vector<bool>` are not.
///
/// \return whether everything was done; false only after a cancellation
template <typename Input, typename Output, typename Function>
bool transform(Input first, Input last, Output output, Function&& function, std::uint64_t grain = 0,
               kyProgressNotifierInterface* notifier = nullptr)
{
    using Offset = typename std::iterator_traits<Input>::difference_type;
    using OutputOffset = typename std::iterator_traits<Output>::difference_type;
    static_assert(
        std::is_base_of_v<std::random_access_iterator_tag, typename std::iterator_traits<Input>::iterator_category> &&
            std::is_base_of_v<std::random_access_iterator_tag,
                              typename std::iterator_traits<Output>::iterator_category>,
        "iterators allow random access");
    return parallelFor(
        Offset{0}, last - first,
        [&](Offset from, Offset to)
        {
            for (; from != to; ++from)
                output[static_cast<OutputOffset>(from)] = function(first[from]);
        },
        grain, notifier);
}

/// Combines what `map` gives for all indices from `begin` up to and without `end`.
///
/// The result of a block is `combine(... combine(combine(identity, map(i)), map(i + 1)) ...)`; or `map(first, last)`,
/// when `map` takes two indices. The results of the blocks are combined in ascending order, beginning with `identity`:
/// the order depends on the number of indices and on `grain` alone, so a sum of floating-point numbers is the same in
/// every run and on every machine. `combine` must be associative up to what the caller tolerates, `identity` neutral to
/// it, `Value` copyable. Memory is needed for one value for every block.
///
/// \return the result; `identity` when there are no indices; nothing after a cancellation
template <typename Begin, typename End, typename Value, typename Map, typename Combine>
[[nodiscard]] std::optional<Value> reduce(Begin begin, End end, Value identity, Map&& map, Combine&& combine,
                                          std::uint64_t grain, kyProgressNotifierInterface* notifier)
{
    const impl::IndexRange<Begin, End> range(begin, end);
    std::vector<impl::BlockResult<Value>> results;
    const auto block = [&](std::uint64_t number, std::uint64_t first, std::uint64_t last)
    {
        results[static_cast<std::size_t>(number)].value =
            impl::reduceBlock<Value>(range, first, last, identity, map, combine);
    };
    impl::BlockLoopOf<decltype(block)> loop(range.count(), grain, notifier, block);
    results.resize(static_cast<std::size_t>(loop.blockCount()), impl::BlockResult<Value>{identity});
    if (!loop.run())
        return std::nullopt;
    Value result = std::move(identity);
    for (impl::BlockResult<Value>& each : results)
        result = combine(std::move(result), std::move(each.value));
    return result;
}

/// As above without cancellation.
template <typename Begin, typename End, typename Value, typename Map, typename Combine>
[[nodiscard]] Value reduce(Begin begin, End end, Value identity, Map&& map, Combine&& combine, std::uint64_t grain = 0)
{
    return *reduce(begin, end, std::move(identity), std::forward<Map>(map), std::forward<Combine>(combine), grain,
                   nullptr);
}

/// Calls every function once, each possibly on another thread.
///
/// \param notifier counts functions; null: no progress, no cancellation
/// \param functions callables without arguments
/// \return whether all were called; false only after a cancellation
template <typename... Functions>
bool invoke(kyProgressNotifierInterface* notifier, Functions&&... functions)
{
    return parallelFor(
        std::size_t{0}, sizeof...(functions),
        [&](std::size_t chosen)
        {
            std::size_t number = 0;
            static_cast<void>(number);
            ((number++ == chosen ? static_cast<void>(functions()) : static_cast<void>(0)), ...);
            static_cast<void>(chosen);
        },
        1, notifier);
}

/// As above without cancellation.
template <typename... Functions, std::enable_if_t<(std::is_invocable_v<Functions&> && ...), int> = 0>
void invoke(Functions&&... functions)
{
    invoke(static_cast<kyProgressNotifierInterface*>(nullptr), std::forward<Functions>(functions)...);
}

} // namespace concurrent

} // namespace ky
