// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>

#include <cstddef>
#include <string>

/// \file
/// The process-wide table of named, read-only byte blocks that programs and libraries carry inside themselves.
///
/// The CMake package has a function that compiles files into a target and puts them into the table at start:
///
/// \code{.cmake}
/// ky_add_resources(app manual texts/welcome.txt texts/licence.txt)
/// \endcode
///
/// \code
/// std::string welcome;
/// if (ky::rc::GetResource("manual/texts/welcome.txt", welcome))
///     show(welcome);
/// \endcode
///
/// The table exists between the first initialization of the library and the last termination. After full initialization
/// every function may be called from any thread; before, from one thread only. Without a table nothing is found, and
/// registering and unregistering do nothing.
///
/// Names are bytes, UTF-8 by convention, and compared as bytes. A null name is a name of its own, different from the
/// empty one.

namespace ky::rc
{

/// Looks a block up. The table does not own the bytes: they stay valid and where they are until the module that carries
/// them is unloaded or takes them out of the table.
///
/// \param name null-terminated
/// \param data the first byte when found, null otherwise
/// \param size number of bytes when found, 0 otherwise
/// \return whether there is a block of this name. When not, the CRITICAL message "Resource is missing " with the name
///         is logged.
KY_API bool GetResource(const char* name, const char*& data, unsigned long long& size);

/// Looks a block up and copies its bytes, which may be any, into `out`. When there is none, `out` is empty; the result
/// and the message are those of the other form.
///
/// \throws std::bad_alloc when the copy finds no memory
KY_API bool GetResource(const char* name, std::string& out);

namespace impl
{

/// Puts `count` blocks into the table, in order: block i is named `names[i]` and has `sizes[i]` bytes from
/// `base + offsets[i]`. The bytes must stay valid until they are unregistered; the names are copied. A name that is
/// taken keeps its first block, and the CRITICAL message "Resource conflict " with the name is logged.
///
/// \throws std::bad_alloc when memory is exhausted; the blocks before that one are in the table
KY_API void RegisterResources(unsigned long long count, const char* base, const char* const* names,
                              const unsigned long long* offsets, const unsigned long long* sizes);

/// Takes `count` names out of the table, whoever registered them; only `names` is looked at. For a name that is not
/// there, the CRITICAL message "Resource is already unregistered " with the name is logged.
KY_API void UnRegisterResources(unsigned long long count, const char* base, const char* const* names,
                                const unsigned long long* offsets, const unsigned long long* sizes);

/// One block that is compiled into a module: the bytes from `begin` up to, not including, `end`.
struct EmbeddedResource
{
    const char* name;  ///< the block's name, NUL-terminated
    const char* begin; ///< its first byte
    const char* end;   ///< the byte behind the last one
};

/// The blocks of a module, a static object of the code that `ky_add_resources` makes. They are in the table whenever
/// both the table and this object exist, whichever came first and however often the library is initialized and
/// terminated. A name that is taken is handled as in RegisterResources().
///
/// Makes no use of the library's state and never throws: constructed and destroyed at any moment, from any thread that
/// loads or unloads modules. When memory is exhausted the rest of the blocks is left out.
class KY_API EmbeddedResources
{
public:
    /// `entries` must outlive the object.
    EmbeddedResources(const EmbeddedResource* entries, std::size_t count) noexcept;

    /// Takes those blocks out of the table that it holds from this object; does nothing while the process is ending
    /// and its other threads are gone.
    ~EmbeddedResources();
    EmbeddedResources(const EmbeddedResources&) = delete;
    EmbeddedResources& operator=(const EmbeddedResources&) = delete;

    /// The blocks, for range-for.
    /// @{
    const EmbeddedResource* begin() const { return mEntries; }
    const EmbeddedResource* end() const { return mEntries + mCount; }
    /// @}

private:
    friend class EmbeddedList;

    const EmbeddedResource* mEntries;
    std::size_t mCount;
    EmbeddedResources* mPrevious = nullptr;
    EmbeddedResources* mNext = nullptr;
};

} // namespace impl

} // namespace ky::rc
