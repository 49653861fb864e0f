// SPDX-License-Identifier: MIT
// Values to and from memory that is there already, beside QDataStream with texts of its own kinds: QByteArray, which
// has the same form on the device, and QString. The floor copies the bytes without any layer.
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
#include <QString>
#endif

namespace
{

constexpr std::int64_t valueCount = 1000000;

/// Five values of a record, a fifth of them short texts.
template <typename Text>
struct Record
{
    std::int32_t number;
    double real;
    std::int64_t stamp;
    std::uint16_t kind;
    Text name;
};

template <typename Text>
const std::vector<Record<Text>>& records()
{
    static const std::vector<Record<Text>> all = []
    {
        std::vector<Record<Text>> made;
        for (int i = 0; i < valueCount / 5; ++i)
            made.push_back({i, i * 0.5, std::int64_t{i} << 20, static_cast<std::uint16_t>(i),
                            Text(("name " + std::to_string(i % 1000)).c_str())});
        return made;
    }();
    return all;
}

template <typename Text, typename Stream>
void writeRecords(Stream& stream)
{
    for (const Record<Text>& record : records<Text>())
        stream << record.number << record.real << record.stamp << record.kind << record.name;
}

template <typename Text, typename Stream>
std::uint64_t readRecords(Stream& stream)
{
    std::uint64_t sum = 0;
    Record<Text> record = {};
    for (std::size_t i = 0; i < records<Text>().size(); ++i)
    {
        stream >> record.number >> record.real >> record.stamp >> record.kind >> record.name;
        sum += static_cast<std::uint64_t>(record.number) + record.kind + static_cast<std::size_t>(record.name.size());
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
        writeRecords<std::string>(stream);
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
    writeRecords<std::string>(out);
    for (auto _ : state)
    {
        device.seekg(0, ky::kyIoDevice::SeekBegin);
        ky::kyDataStream stream(&device, ky::kyDataStream::BigEndian);
        benchmark::DoNotOptimize(readRecords<std::string>(stream));
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
        writeRecords<std::string>(floor);
        benchmark::ClobberMemory();
    }
    countValues(state);
}
BENCHMARK(writeFloor)->Name("binary_write/1e6_mixed/floor_memcpy");

void readFloor(benchmark::State& state)
{
    Floor floor{std::vector<char>(static_cast<std::size_t>(valueCount) * 16)};
    writeRecords<std::string>(floor);
    for (auto _ : state)
    {
        floor.position = 0;
        benchmark::DoNotOptimize(readRecords<std::string>(floor));
    }
    countValues(state);
}
BENCHMARK(readFloor)->Name("binary_read/1e6_mixed/floor_memcpy");

#ifdef KY_PEER_QT

/// QDataStream with 64-bit integers under their standard names.
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
};

template <typename Text>
void writeQt(benchmark::State& state)
{
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    for (auto _ : state)
    {
        buffer.seek(0);
        QtStream stream{QDataStream(&buffer)};
        writeRecords<Text>(stream);
        benchmark::DoNotOptimize(buffer.data().constData());
    }
    countValues(state);
}
BENCHMARK(writeQt<QByteArray>)->Name("binary_write/1e6_mixed/qt_bytes");
BENCHMARK(writeQt<QString>)->Name("binary_write/1e6_mixed/qt_string");

template <typename Text>
void readQt(benchmark::State& state)
{
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    QtStream out{QDataStream(&buffer)};
    writeRecords<Text>(out);
    for (auto _ : state)
    {
        buffer.seek(0);
        QtStream stream{QDataStream(&buffer)};
        benchmark::DoNotOptimize(readRecords<Text>(stream));
        if (stream.stream.status() != QDataStream::Ok || !stream.stream.atEnd())
            state.SkipWithError("not read");
    }
    countValues(state);
}
BENCHMARK(readQt<QByteArray>)->Name("binary_read/1e6_mixed/qt_bytes");
BENCHMARK(readQt<QString>)->Name("binary_read/1e6_mixed/qt_string");

#endif

} // namespace
