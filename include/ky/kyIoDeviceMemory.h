// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A device in memory.

#include <ky/kyIoDevice.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace ky
{

/// Reads and writes a growing array of bytes. Both positions start at 0; writing overwrites what lies behind the write
/// position and grows the array at its end.
class KY_API kyIoDeviceMemory : public kyIoDevice
{
public:
    kyIoDeviceMemory() = default;

    /// Takes the bytes over.
    explicit kyIoDeviceMemory(std::vector<char> data) : mData(std::move(data)) {}
    ~kyIoDeviceMemory() override;
    /// The bytes, both positions and the error are copied.
    /// @{
    kyIoDeviceMemory(const kyIoDeviceMemory&) = default;
    kyIoDeviceMemory& operator=(const kyIoDeviceMemory&) = default;
    /// @}

    /// The bytes; valid until the next write.
    [[nodiscard]] const std::vector<char>& getData() const { return mData; }

    /// Gives the bytes away and leaves an empty device without error.
    std::vector<char> takeData();

    /// Fewer than `size` at the end, which is no error.
    std::size_t readBytes(char* data, std::size_t size) override;

    /// `size`; 0 with the error set when memory runs out. `data` must not lie in this device.
    std::size_t writeBytes(const char* data, std::size_t size) override;

    /// Whether memory has run out.
    [[nodiscard]] bool hasError() const override;

    /// Whether the read position is the end.
    [[nodiscard]] bool atEnd() const override;

    /// Positions from 0 to the end; others are refused and change nothing.
    bool seekg(std::int64_t offset, SeekStart start) override;

    /// Positions from 0 to the end; others are refused and change nothing.
    bool seekp(std::int64_t offset, SeekStart start) override;
    std::uint64_t tellg() override;
    std::uint64_t tellp() override;

private:
    // Moves values without a call for each.
    friend class kyDataStream;

    /// `device` when it is of this very class, otherwise null: a derived class sees every call.
    static kyIoDeviceMemory* exactly(kyIoDevice* device) noexcept;

    /// False, with nothing moved, unless all `size` bytes are there.
    bool get(void* to, std::size_t size) noexcept
    {
        if (mData.size() - mReadPos < size)
            return false;
        std::memcpy(to, mData.data() + mReadPos, size);
        mReadPos += size;
        return true;
    }

    /// The same for a whole text. Where memory runs out, nothing is moved either.
    template <typename Container>
    bool getText(Container& to, std::size_t size)
    {
        if (mData.size() - mReadPos < size)
            return false;
        const char* const from = mData.data() + mReadPos;
        to.assign(from, from + size);
        mReadPos += size;
        return true;
    }

    /// False, with nothing moved, where the array would have to grow.
    bool overwrite(const void* from, std::size_t size) noexcept
    {
        if (mData.size() - mWritePos < size)
            return false;
        std::memcpy(mData.data() + mWritePos, from, size);
        mWritePos += size;
        return true;
    }

    std::size_t writeOverEnd(const char* data, std::size_t size);
    bool seek(std::size_t& position, std::int64_t offset, SeekStart start) const;

    std::vector<char> mData;
    std::size_t mReadPos = 0;
    std::size_t mWritePos = 0;
    bool mError = false;
};

} // namespace ky
