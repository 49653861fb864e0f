// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Values in a fixed binary encoding, to and from a byte device:
///
/// \code
/// ky::kyDataStream out(&device, ky::kyDataStream::BigEndian);
/// out << std::uint32_t{42} << name << 0.5;
/// if (!out.isOk()) // one question for the whole chain
///     return fail();
/// \endcode

#include <ky/kyExport.h>
#include <ky/kyIoDevice.h>
#include <ky/kyIoDeviceMemory.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace ky
{

namespace impl
{

/// Whether this is the type whose width differs between the platforms.
template <typename T>
inline constexpr bool isLong = std::is_same_v<T, long> || std::is_same_v<T, unsigned long>;

/// The bytes in reverse order.
/// @{
inline std::uint16_t reverseBytes(std::uint16_t value) { return static_cast<std::uint16_t>(value << 8 | value >> 8); }

inline std::uint32_t reverseBytes(std::uint32_t value)
{
    return value << 24 | (value & 0xFF00) << 8 | (value >> 8 & 0xFF00) | value >> 24;
}

inline std::uint64_t reverseBytes(std::uint64_t value)
{
    return std::uint64_t{reverseBytes(static_cast<std::uint32_t>(value))} << 32 |
           reverseBytes(static_cast<std::uint32_t>(value >> 32));
}
/// @}

} // namespace impl

/// Writes and reads values one after the other, without type tags, alignment or padding:
///
/// | type                                 | bytes                                                              |
/// |--------------------------------------|--------------------------------------------------------------------|
/// | bool                                 | 1: 0xFF or 0x00; on reading any non-zero byte is true              |
/// | char, signed char, unsigned char     | 1                                                                  |
/// | 16, 32 and 64-bit integers           | 2, 4, 8 in the stream's byte order                                 |
/// | float, double                        | 4, 8: the IEEE-754 bits in the stream's byte order                 |
/// | std::string, std::vector<char>       | unsigned 32-bit length in the stream's byte order, then the bytes  |
///
/// `long` is taken where it has 64 bits (there it is std::int64_t) and refused at compile time elsewhere, pointers
/// everywhere.
///
/// Failures: the first one clears `isOk()` for good. From then on the operators do not touch the device any more, read
/// targets keep their value, but bools become false and texts empty. Nothing is thrown, running out of memory for a
/// text included.
///
/// Every value is one call of the device (texts are two), but a kyIoDeviceMemory is worked on directly. The device is
/// not owned and outlives the stream; without one (null) every operation fails. Not for use from several threads at
/// once.
class kyDataStream
{
public:
    /// Byte order of values of more than one byte. Other values count as little-endian.
    enum Endianness : std::int32_t
    {
        LittleEndian = 0, ///< least significant byte first
        BigEndian = 1     ///< most significant byte first
    };

    /// The device is not owned; null makes every operation fail.
    kyDataStream(kyIoDevice* device, Endianness endianness)
        : mDevice(device),
          mMemory(kyIoDeviceMemory::exactly(device)),
          mEndianness(endianness)
    {
    }

    /// Writes the bytes of one value, as the table above has them.
    /// @{
    kyDataStream& operator<<(bool value) { return put(static_cast<unsigned char>(value ? 0xFF : 0)); }
    kyDataStream& operator<<(char value) { return put(value); }
    kyDataStream& operator<<(signed char value) { return put(value); }
    kyDataStream& operator<<(unsigned char value) { return put(value); }
    kyDataStream& operator<<(short value) { return put(value); }
    kyDataStream& operator<<(unsigned short value) { return put(value); }
    kyDataStream& operator<<(int value) { return put(value); }
    kyDataStream& operator<<(unsigned int value) { return put(value); }
    kyDataStream& operator<<(long long value) { return put(value); }
    kyDataStream& operator<<(unsigned long long value) { return put(value); }
    kyDataStream& operator<<(float value) { return put(value); }
    kyDataStream& operator<<(double value) { return put(value); }
    /// @}

    /// At most 0xFFFFFFFF bytes; longer texts fail without writing anything.
    /// @{
    KY_API kyDataStream& operator<<(const std::string& text);
    KY_API kyDataStream& operator<<(const std::vector<char>& bytes);
    /// @}

    /// Any non-zero byte is true; false when the read fails.
    kyDataStream& operator>>(bool& value)
    {
        unsigned char byte = 0;
        value = get(byte).mOk && byte != 0;
        return *this;
    }
    /// One byte.
    /// @{
    kyDataStream& operator>>(char& value) { return get(value); }
    kyDataStream& operator>>(signed char& value) { return get(value); }
    kyDataStream& operator>>(unsigned char& value) { return get(value); }
    /// @}

    /// The bytes of a read that comes back short are in the target nevertheless.
    /// @{
    kyDataStream& operator>>(short& value) { return get(value); }
    kyDataStream& operator>>(unsigned short& value) { return get(value); }
    kyDataStream& operator>>(int& value) { return get(value); }
    kyDataStream& operator>>(unsigned int& value) { return get(value); }
    kyDataStream& operator>>(long long& value) { return get(value); }
    kyDataStream& operator>>(unsigned long long& value) { return get(value); }
    kyDataStream& operator>>(float& value) { return get(value); }
    kyDataStream& operator>>(double& value) { return get(value); }
    /// @}

    /// Empty after any failure. A length that the device cannot deliver costs address space, not memory.
    /// @{
    KY_API kyDataStream& operator>>(std::string& text);
    KY_API kyDataStream& operator>>(std::vector<char>& bytes);
    /// @}

    /// `long` and `unsigned long` where they are the 64-bit types.
    /// @{
    template <typename T, std::enable_if_t<impl::isLong<T> && sizeof(T) == 8, int> = 0>
    kyDataStream& operator<<(T value)
    {
        return put(value);
    }
    template <typename T, std::enable_if_t<impl::isLong<T> && sizeof(T) == 8, int> = 0>
    kyDataStream& operator>>(T& value)
    {
        return get(value);
    }
    /// @}

    /// A `long` of another width reads differently on another platform; a pointer would be written as a bool.
    /// @{
    template <typename T,
              std::enable_if_t<(impl::isLong<T> && sizeof(T) != 8) || std::is_pointer_v<T> || std::is_null_pointer_v<T>,
                               int> = 0>
    kyDataStream& operator<<(T value) = delete;
    template <typename T, std::enable_if_t<impl::isLong<T> && sizeof(T) != 8, int> = 0>
    kyDataStream& operator>>(T& value) = delete;
    /// @}

    /// Reads up to `size` bytes as they are and returns how many. Reads even when the stream is not ok any more. Fewer
    /// than asked clears `isOk()`. A `size` of 0 or a null `data` does nothing.
    KY_API std::size_t readRawBytes(char* data, std::size_t size);

    /// Writes `size` bytes as they are. False, with nothing written, when the stream is not ok any more.
    KY_API bool writeRawData(const char* data, std::size_t size);

    /// Whether nothing has failed yet.
    [[nodiscard]] bool isOk() const { return mOk; }

    /// Makes the stream fail, for instance when a value that was read makes no sense.
    void setError() { mOk = false; }

    /// Byte order of the values that follow.
    [[nodiscard]] Endianness getEndianness() const { return mEndianness; }

    /// For the values that follow. An earlier failure stays.
    void setEndianness(Endianness endianness) { mEndianness = endianness; }

    /// The building blocks: move the bytes of one value between `bytes`, in the host's order, and the device. They take
    /// no notice of `isOk()` and do not change it. True when the device moved exactly that many bytes; a read that
    /// comes back short leaves what it got, in the host's order, too.
    /// @{
    bool write1Byte(const char* bytes) { return writeExactly<1>(bytes); }
    bool write2BytesLittleEndian(const char* bytes) { return writeExactly<2>(bytes); }
    bool write4BytesLittleEndian(const char* bytes) { return writeExactly<4>(bytes); }
    bool write8BytesLittleEndian(const char* bytes) { return writeExactly<8>(bytes); }
    bool write2BytesBigEndian(const char* bytes) { return writeSwapped<std::uint16_t>(bytes); }
    bool write4BytesBigEndian(const char* bytes) { return writeSwapped<std::uint32_t>(bytes); }
    bool write8BytesBigEndian(const char* bytes) { return writeSwapped<std::uint64_t>(bytes); }
    bool read1Byte(char* bytes) { return readExactly<1>(bytes); }
    bool read2BytesLittleEndian(char* bytes) { return readExactly<2>(bytes); }
    bool read4BytesLittleEndian(char* bytes) { return readExactly<4>(bytes); }
    bool read8BytesLittleEndian(char* bytes) { return readExactly<8>(bytes); }
    bool read2BytesBigEndian(char* bytes) { return readSwapped<std::uint16_t>(bytes); }
    bool read4BytesBigEndian(char* bytes) { return readSwapped<std::uint32_t>(bytes); }
    bool read8BytesBigEndian(char* bytes) { return readSwapped<std::uint64_t>(bytes); }
    /// @}

private:
    template <std::size_t Size>
    using Bits =
        std::conditional_t<Size == 2, std::uint16_t, std::conditional_t<Size == 4, std::uint32_t, std::uint64_t>>;

    template <std::size_t Size>
    bool writeExactly(const char* bytes)
    {
        if (mMemory != nullptr && mMemory->overwrite(bytes, Size))
            return true;
        return mDevice != nullptr && mDevice->writeBytes(bytes, Size) == Size;
    }

    template <std::size_t Size>
    bool readExactly(char* bytes)
    {
        if (mMemory != nullptr && mMemory->get(bytes, Size))
            return true;
        return mDevice != nullptr && mDevice->readBytes(bytes, Size) == Size;
    }

    template <typename T>
    bool writeSwapped(const char* bytes)
    {
        T bits;
        std::memcpy(&bits, bytes, sizeof bits);
        bits = impl::reverseBytes(bits);
        return writeExactly<sizeof(T)>(reinterpret_cast<const char*>(&bits));
    }

    template <typename T>
    bool readSwapped(char* bytes)
    {
        T bits;
        bool complete = mMemory != nullptr && mMemory->get(&bits, sizeof bits);
        if (!complete)
        {
            if (mDevice == nullptr)
                return false;
            complete = mDevice->readBytes(bytes, sizeof(T)) == sizeof(T);
            std::memcpy(&bits, bytes, sizeof bits);
        }
        bits = impl::reverseBytes(bits);
        std::memcpy(bytes, &bits, sizeof bits);
        return complete;
    }

    template <typename T>
    kyDataStream& put(T value)
    {
        if (mOk)
        {
            const char* bytes = reinterpret_cast<const char*>(&value);
            if constexpr (sizeof(T) == 1)
                mOk = writeExactly<1>(bytes);
            else
                mOk = mEndianness == BigEndian ? writeSwapped<Bits<sizeof(T)>>(bytes) : writeExactly<sizeof(T)>(bytes);
        }
        return *this;
    }

    template <typename T>
    kyDataStream& get(T& value)
    {
        if (mOk)
        {
            char* bytes = reinterpret_cast<char*>(&value);
            if constexpr (sizeof(T) == 1)
                mOk = readExactly<1>(bytes);
            else
                mOk = mEndianness == BigEndian ? readSwapped<Bits<sizeof(T)>>(bytes) : readExactly<sizeof(T)>(bytes);
        }
        return *this;
    }

    template <typename Container>
    void putText(const Container& text);
    template <typename Container>
    void getText(Container& text);

    kyIoDevice* mDevice;
    kyIoDeviceMemory* mMemory; ///< mDevice when it is nothing but that, otherwise null
    Endianness mEndianness;
    bool mOk = true;
};

} // namespace ky
