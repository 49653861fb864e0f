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

template <typename T>
inline constexpr bool isLong = std::is_same_v<T, long> || std::is_same_v<T, unsigned long>;

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
/// Every value is one call of the device (texts are two). The device is not owned and outlives the stream; without one
/// (null) every operation fails. Not for use from several threads at once.
class kyDataStream
{
public:
    /// Byte order of values of more than one byte. Other values count as little-endian.
    enum Endianness : std::int32_t
    {
        LittleEndian = 0, ///< least significant byte first
        BigEndian = 1     ///< most significant byte first
    };

    kyDataStream(kyIoDevice* device, Endianness endianness) : mDevice(device), mEndianness(endianness) {}

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

    /// At most 0xFFFFFFFF bytes; longer texts fail without writing anything.
    KY_API kyDataStream& operator<<(const std::string& text);
    KY_API kyDataStream& operator<<(const std::vector<char>& bytes);

    /// Any non-zero byte is true; false when the read fails.
    kyDataStream& operator>>(bool& value)
    {
        unsigned char byte = 0;
        value = get(byte).mOk && byte != 0;
        return *this;
    }
    kyDataStream& operator>>(char& value) { return get(value); }
    kyDataStream& operator>>(signed char& value) { return get(value); }
    kyDataStream& operator>>(unsigned char& value) { return get(value); }

    /// The bytes of a read that comes back short are in the target nevertheless.
    kyDataStream& operator>>(short& value) { return get(value); }
    kyDataStream& operator>>(unsigned short& value) { return get(value); }
    kyDataStream& operator>>(int& value) { return get(value); }
    kyDataStream& operator>>(unsigned int& value) { return get(value); }
    kyDataStream& operator>>(long long& value) { return get(value); }
    kyDataStream& operator>>(unsigned long long& value) { return get(value); }
    kyDataStream& operator>>(float& value) { return get(value); }
    kyDataStream& operator>>(double& value) { return get(value); }

    /// Empty after any failure. A length that the device cannot deliver costs address space, not memory.
    KY_API kyDataStream& operator>>(std::string& text);
    KY_API kyDataStream& operator>>(std::vector<char>& bytes);

    /// `long` and `unsigned long` where they are the 64-bit types.
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

    /// A `long` of another width reads differently on another platform; a pointer would be written as a bool.
    template <typename T,
              std::enable_if_t<(impl::isLong<T> && sizeof(T) != 8) || std::is_pointer_v<T> || std::is_null_pointer_v<T>,
                               int> = 0>
    kyDataStream& operator<<(T value) = delete;
    template <typename T, std::enable_if_t<impl::isLong<T> && sizeof(T) != 8, int> = 0>
    kyDataStream& operator>>(T& value) = delete;

    /// Reads up to `size` bytes as they are and returns how many. Reads even when the stream is not ok any more. Fewer
    /// than asked clears `isOk()`. A `size` of 0 or a null `data` does nothing.
    KY_API std::size_t readRawBytes(char* data, std::size_t size);

    /// Writes `size` bytes as they are. False, with nothing written, when the stream is not ok any more.
    KY_API bool writeRawData(const char* data, std::size_t size);

    /// Whether nothing has failed yet.
    [[nodiscard]] bool isOk() const { return mOk; }

    /// Makes the stream fail, for instance when a value that was read makes no sense.
    void setError() { mOk = false; }

    [[nodiscard]] Endianness getEndianness() const { return mEndianness; }

    /// For the values that follow. An earlier failure stays.
    void setEndianness(Endianness endianness) { mEndianness = endianness; }

    /// The building blocks: move the bytes of one value between `bytes`, in the host's order, and the device. They take
    /// no notice of `isOk()` and do not change it. True when the device moved exactly that many bytes; a read that
    /// comes back short leaves what it got, in the host's order, too.
    bool write1Byte(const char* bytes) { return writeExactly(bytes, 1); }
    bool write2BytesLittleEndian(const char* bytes) { return writeExactly(bytes, 2); }
    bool write4BytesLittleEndian(const char* bytes) { return writeExactly(bytes, 4); }
    bool write8BytesLittleEndian(const char* bytes) { return writeExactly(bytes, 8); }
    bool write2BytesBigEndian(const char* bytes) { return writeSwapped<std::uint16_t>(bytes); }
    bool write4BytesBigEndian(const char* bytes) { return writeSwapped<std::uint32_t>(bytes); }
    bool write8BytesBigEndian(const char* bytes) { return writeSwapped<std::uint64_t>(bytes); }
    bool read1Byte(char* bytes) { return readExactly(bytes, 1); }
    bool read2BytesLittleEndian(char* bytes) { return readExactly(bytes, 2); }
    bool read4BytesLittleEndian(char* bytes) { return readExactly(bytes, 4); }
    bool read8BytesLittleEndian(char* bytes) { return readExactly(bytes, 8); }
    bool read2BytesBigEndian(char* bytes) { return readSwapped<std::uint16_t>(bytes); }
    bool read4BytesBigEndian(char* bytes) { return readSwapped<std::uint32_t>(bytes); }
    bool read8BytesBigEndian(char* bytes) { return readSwapped<std::uint64_t>(bytes); }

private:
    template <std::size_t Size>
    using Bits =
        std::conditional_t<Size == 2, std::uint16_t, std::conditional_t<Size == 4, std::uint32_t, std::uint64_t>>;

    bool writeExactly(const char* bytes, std::size_t size)
    {
        return mDevice != nullptr && mDevice->writeBytes(bytes, size) == size;
    }

    bool readExactly(char* bytes, std::size_t size)
    {
        return mDevice != nullptr && mDevice->readBytes(bytes, size) == size;
    }

    template <typename T>
    static void reverse(char* to, const char* from)
    {
        T bits;
        std::memcpy(&bits, from, sizeof bits);
        bits = impl::reverseBytes(bits);
        std::memcpy(to, &bits, sizeof bits);
    }

    template <typename T>
    bool writeSwapped(const char* bytes)
    {
        char swapped[sizeof(T)];
        reverse<T>(swapped, bytes);
        return writeExactly(swapped, sizeof swapped);
    }

    template <typename T>
    bool readSwapped(char* bytes)
    {
        if (mDevice == nullptr)
            return false;
        const bool complete = mDevice->readBytes(bytes, sizeof(T)) == sizeof(T);
        reverse<T>(bytes, bytes);
        return complete;
    }

    template <typename T>
    kyDataStream& put(T value)
    {
        if (mOk)
        {
            const char* bytes = reinterpret_cast<const char*>(&value);
            if constexpr (sizeof(T) == 1)
                mOk = writeExactly(bytes, 1);
            else
                mOk = mEndianness == BigEndian ? writeSwapped<Bits<sizeof(T)>>(bytes) : writeExactly(bytes, sizeof(T));
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
                mOk = readExactly(bytes, 1);
            else
                mOk = mEndianness == BigEndian ? readSwapped<Bits<sizeof(T)>>(bytes) : readExactly(bytes, sizeof(T));
        }
        return *this;
    }

    template <typename Container>
    void putText(const Container& text);
    template <typename Container>
    void getText(Container& text);

    kyIoDevice* mDevice;
    Endianness mEndianness;
    bool mOk = true;
};

} // namespace ky
