// SPDX-License-Identifier: MIT
// Values to and from memory that is there already, beside QDataStream. The floor copies their bytes without any layer.
#include <ky/kyDataStream.h>
#include <ky/kyIoDeviceMemory.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#ifdef KY_PEER_QT
#include <QBuffer>
#include <QByteArray>
#include <QDataStream>
#include <QIODevice>
#endif

namespace
{

constexpr std::int64_t valueCount = 1000000;

/// Five values of a record, a fifth of them short texts.
struct Record
{
    std::int32_t number;
    double real;
    std::int64_t stamp;
    std::uint16_t kind;
    std::string name;
};

const std::vector<Record>& records()
{
    static const std::vector<Record> all = []
    {
        std::vector<Record> made;
        for (int i = 0; i < valueCount / 5; ++i)
            made.push_back(
                {i, i * 0.5, std::int64_t{i} << 20, static_cast<std::uint16_t>(i), "name " + std::to_string(i % 1000)});
        return made;
    }();
    return all;
}

template <typename Stream>
void writeRecords(Stream& stream)
{
    for (const Record& record : records())
        stream << record.number << record.real << record.stamp << record.kind << record.name;
}

template <typename Stream>
std::uint64_t readRecords(Stream& stream)
{
    std::uint64_t sum = 0;
    Record record = {};
    for (std::size_t i = 0; i < records().size(); ++i)
    {
        stream >> record.number >> record.real >> record.stamp >> record.kind >> record.name;
        sum += static_cast<std::uint64_t>(record.number) + record.kind + record.name.size();
    }
    return sum;
}

void countValues(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * valueCount); }

void writeKy(benchmark::State& state)
{
    ky::kyIoDeviceMemory device;
    for (auto _ : state)
    {
        device.seekp(0, ky::kyIoDevice::SeekBegin);
        ky::kyDataStream stream(&device, ky::kyDataStream::BigEndian);
        writeRecords(stream);
        if (!stream.isOk())
            state.SkipWithError("not written");
        benchmark::DoNotOptimize(device.getData().data());
    }
    countValues(state);
}
BENCHMARK(writeKy)->Name("binary_write/1e6_mixed/ky");

void readKy(benchmark::State& state)
{
    ky::kyIoDeviceMemory device;
    ky::kyDataStream out(&device, ky::kyDataStream::BigEndian);
    writeRecords(out);
    for (auto _ : state)
    {
        device.seekg(0, ky::kyIoDevice::SeekBegin);
        ky::kyDataStream stream(&device, ky::kyDataStream::BigEndian);
        benchmark::DoNotOptimize(readRecords(stream));
        if (!stream.isOk() || !device.atEnd())
            state.SkipWithError("not read");
    }
    countValues(state);
}
BENCHMARK(readKy)->Name("binary_read/1e6_mixed/ky");

/// Bytes one behind the other, as they lie in memory.
struct Floor
{
    std::vector<char> bytes;
    std::size_t position = 0;

    template <typename T>
    Floor& operator<<(const T& value)
    {
        put(&value, sizeof value);
        return *this;
    }
    Floor& operator<<(const std::string& text)
    {
        *this << static_cast<std::uint32_t>(text.size());
        put(text.data(), text.size());
        return *this;
    }
    template <typename T>
    Floor& operator>>(T& value)
    {
        std::memcpy(&value, bytes.data() + position, sizeof value);
        position += sizeof value;
        return *this;
    }
    Floor& operator>>(std::string& text)
    {
        std::uint32_t size = 0;
        *this >> size;
        text.assign(bytes.data() + position, size);
        position += size;
        return *this;
    }
    void put(const void* data, std::size_t size)
    {
        std::memcpy(bytes.data() + position, data, size);
        position += size;
    }
};

void writeFloor(benchmark::State& state)
{
    Floor floor{std::vector<char>(static_cast<std::size_t>(valueCount) * 16)};
    for (auto _ : state)
    {
        floor.position = 0;
        writeRecords(floor);
        benchmark::ClobberMemory();
    }
    countValues(state);
}
BENCHMARK(writeFloor)->Name("binary_write/1e6_mixed/floor_memcpy");

void readFloor(benchmark::State& state)
{
    Floor floor{std::vector<char>(static_cast<std::size_t>(valueCount) * 16)};
    writeRecords(floor);
    for (auto _ : state)
    {
        floor.position = 0;
        benchmark::DoNotOptimize(readRecords(floor));
    }
    countValues(state);
}
BENCHMARK(readFloor)->Name("binary_read/1e6_mixed/floor_memcpy");

#ifdef KY_PEER_QT

/// The same encoding: a length in front of the bytes of a text.
struct QtStream
{
    QDataStream stream;

    template <typename T>
    QtStream& operator<<(const T& value)
    {
        stream << value;
        return *this;
    }
    QtStream& operator<<(std::int64_t value)
    {
        stream << static_cast<qint64>(value);
        return *this;
    }
    QtStream& operator<<(const std::string& text)
    {
        stream.writeBytes(text.data(), static_cast<uint>(text.size()));
        return *this;
    }
    template <typename T>
    QtStream& operator>>(T& value)
    {
        stream >> value;
        return *this;
    }
    QtStream& operator>>(std::int64_t& value)
    {
        qint64 read = 0;
        stream >> read;
        value = read;
        return *this;
    }
    QtStream& operator>>(std::string& text)
    {
        QByteArray read;
        stream >> read;
        text.assign(read.constData(), static_cast<std::size_t>(read.size()));
        return *this;
    }
};

void writeQt(benchmark::State& state)
{
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    for (auto _ : state)
    {
        buffer.seek(0);
        QtStream stream{QDataStream(&buffer)};
        writeRecords(stream);
        benchmark::DoNotOptimize(buffer.data().constData());
    }
    countValues(state);
}
BENCHMARK(writeQt)->Name("binary_write/1e6_mixed/qt");

void readQt(benchmark::State& state)
{
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    QtStream out{QDataStream(&buffer)};
    writeRecords(out);
    for (auto _ : state)
    {
        buffer.seek(0);
        QtStream stream{QDataStream(&buffer)};
        benchmark::DoNotOptimize(readRecords(stream));
        if (stream.stream.status() != QDataStream::Ok || !stream.stream.atEnd())
            state.SkipWithError("not read");
    }
    countValues(state);
}
BENCHMARK(readQt)->Name("binary_read/1e6_mixed/qt");

#endif

} // namespace
