// SPDX-License-Identifier: MIT
// Reads values of all types from hostile bytes, in both orders, through a device that may answer short and lie. The
// first bytes choose what is read; texts and numbers that come out of it must follow the encoding, and writing them
// again must give the bytes that were read. Where the device behaves, memory in its place gives the same.
#include "text/require.h"

#include <ky/kyDataStream.h>
#include <ky/kyIoDeviceMemory.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace
{

using ky::kyDataStream;

/// Gives at most `most` bytes an answer and claims `extra` more than it gave.
class HostileDevice : public ky::kyIoDevice
{
public:
    HostileDevice(const std::uint8_t* data, std::size_t size, std::size_t most, std::size_t extra)
        : mData(data),
          mSize(size),
          mMost(most),
          mExtra(extra)
    {
    }

    std::size_t readBytes(char* to, std::size_t size) override
    {
        const std::size_t got = std::min({size, mMost, mSize - mPosition});
        if (got > 0)
            std::memcpy(to, mData + mPosition, got);
        mPosition += got;
        return got + mExtra;
    }
    std::size_t writeBytes(const char*, std::size_t) override { return 0; }
    bool hasError() const override { return false; }
    bool atEnd() const override { return mPosition == mSize; }
    bool seekg(std::int64_t, SeekStart) override { return false; }
    bool seekp(std::int64_t, SeekStart) override { return false; }
    std::uint64_t tellg() override { return mPosition; }
    std::uint64_t tellp() override { return 0; }

private:
    const std::uint8_t* mData;
    std::size_t mSize;
    std::size_t mMost;
    std::size_t mExtra;
    std::size_t mPosition = 0;
};

template <typename T>
void readNumber(kyDataStream& in, kyDataStream& out)
{
    T value = {};
    if ((in >> value).isOk())
        out << value;
}

template <typename T>
void readText(kyDataStream& in, kyDataStream& out)
{
    T text(3, 'x');
    in >> text;
    KY_REQUIRE(in.isOk() || text.empty());
    if (in.isOk())
        out << text;
}

void readFlag(kyDataStream& in)
{
    bool flag = true;
    in >> flag;
    KY_REQUIRE(in.isOk() || !flag);
}

void readValue(unsigned kind, kyDataStream& in, kyDataStream& out)
{
    switch (kind)
    {
    case 0: return readNumber<char>(in, out);
    case 1: return readNumber<std::uint16_t>(in, out);
    case 2: return readNumber<std::int32_t>(in, out);
    case 3: return readNumber<std::uint64_t>(in, out);
    case 4: return readNumber<float>(in, out);
    case 5: return readNumber<double>(in, out);
    case 6: return readText<std::string>(in, out);
    default: return readText<std::vector<char>>(in, out);
    }
}

constexpr std::size_t head = 2;
constexpr std::size_t planSize = 8;

/// Reads values as the plan says, and writes what came out of them. How many bytes were understood.
std::size_t readPlan(const std::uint8_t* plan, ky::kyIoDevice& device, kyDataStream::Endianness order,
                     ky::kyIoDeviceMemory& copy)
{
    kyDataStream in(&device, order);
    kyDataStream out(&copy, order);
    std::size_t understood = 0;
    for (std::size_t i = 0; in.isOk() && i < 1000; ++i)
    {
        readValue(plan[i % planSize] % 8U, in, out);
        understood = in.isOk() ? static_cast<std::size_t>(device.tellg()) : understood;
    }
    readFlag(in);
    KY_REQUIRE(out.isOk());
    return understood;
}

} // namespace

// Room for gigabytes costs a sanitizer real memory and the fuzzer its speed: it is refused here.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return size > 0x400000 ? nullptr : std::malloc(size);
}
void* operator new[](std::size_t size)
{
    if (void* const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < head + planSize)
        return 0;
    const auto order = data[0] % 2 == 0 ? kyDataStream::LittleEndian : kyDataStream::BigEndian;
    const std::size_t most = data[0] < 192 ? SIZE_MAX : data[0] % 16U;
    const std::size_t extra = data[1] < 192 ? 0 : data[1] == 255 ? SIZE_MAX / 2 : data[1] % 4U;
    const std::uint8_t* const bytes = data + head + planSize;
    const std::size_t byteCount = size - head - planSize;

    HostileDevice device(bytes, byteCount, most, extra);
    ky::kyIoDeviceMemory copy;
    const std::size_t understood = readPlan(data + head, device, order, copy);
    if (extra != 0)
        return 0; // a lie that happens to be the size asked for cannot be seen through
    KY_REQUIRE(copy.getData().size() == understood);
    KY_REQUIRE(understood == 0 || std::memcmp(copy.getData().data(), bytes, understood) == 0);
    if (most == SIZE_MAX)
    {
        ky::kyIoDeviceMemory memory(std::vector<char>(bytes, bytes + byteCount));
        ky::kyIoDeviceMemory copyOfMemory;
        KY_REQUIRE(readPlan(data + head, memory, order, copyOfMemory) == understood);
        KY_REQUIRE(copyOfMemory.getData() == copy.getData());
    }
    return 0;
}
