// SPDX-License-Identifier: MIT
// Values in a compressed file: a zlib compressor that reads from a device becomes a device to write to, and the
// decompressor stands in front of the file when the values are read back.
#include <ky/ky.h>

#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <limits>
#include <vector>

namespace
{

/// Reads from the device it is given and hands out something else.
class Filter : public ky::kyIoDeviceDelegable
{
public:
    explicit Filter(int type) : kyIoDeviceDelegable(ReadDelegation, type), mInput(0x40000) {}

    std::size_t writeBytes(const char*, std::size_t) override { return fail(); }
    bool hasError() const override { return mError || (mSource != nullptr && mSource->hasError()); }
    bool atEnd() const override { return mEnded; }
    bool seekg(std::int64_t, SeekStart) override { return fail() != 0; }
    bool seekp(std::int64_t, SeekStart) override { return fail() != 0; }
    std::uint64_t tellg() override { return mZlib.total_out; }
    std::uint64_t tellp() override { return fail(); }

    bool beginDelegation(ky::kyIoDevice* source) override
    {
        clearDelegation();
        mSource = source;
        mZlib = {};
        mEnded = false;
        mError = false;
        return true;
    }
    bool endDelegation() override
    {
        const bool good = !hasError();
        clearDelegation();
        return good;
    }
    void clearDelegation() override { mSource = nullptr; }

protected:
    std::size_t fail()
    {
        mError = true;
        return 0;
    }

    /// How many bytes came.
    std::size_t refill()
    {
        const std::size_t got = mSource->readBytes(mInput.data(), mInput.size());
        mZlib.next_in = reinterpret_cast<Bytef*>(mInput.data());
        mZlib.avail_in = static_cast<uInt>(got);
        return got;
    }
    bool isShort(std::size_t got) const { return got < mInput.size(); }

    /// Where zlib is to put its output, and how much of it there is afterwards.
    void setOutput(char* data, std::size_t size)
    {
        mRoom = static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
        mZlib.next_out = reinterpret_cast<Bytef*>(data);
        mZlib.avail_out = mRoom;
    }
    std::size_t produced() const { return mRoom - mZlib.avail_out; }

    z_stream mZlib = {};
    ky::kyIoDevice* mSource = nullptr;
    bool mEnded = false;
    bool mError = false;

private:
    std::vector<char> mInput;
    uInt mRoom = 0;
};

class Compressor : public Filter
{
public:
    Compressor() : Filter(0x1001) {}
    ~Compressor() override { deflateEnd(&mZlib); }
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;

    bool beginDelegation(ky::kyIoDevice* source) override
    {
        deflateEnd(&mZlib);
        Filter::beginDelegation(source);
        mDrained = true;
        mFlush = Z_NO_FLUSH;
        mError = deflateInit(&mZlib, Z_DEFAULT_COMPRESSION) != Z_OK;
        return !mError;
    }

    std::size_t readBytes(char* data, std::size_t size) override
    {
        if (mSource == nullptr || mError)
            return fail();
        setOutput(data, size);
        while (mZlib.avail_out > 0 && !mEnded && !mError)
        {
            if (mDrained)
            {
                if (mFlush != Z_NO_FLUSH && produced() > 0)
                    break;
                // A short answer: no more for now, so what was compressed is handed out. Only an empty one is the end.
                const std::size_t got = refill();
                mFlush = got == 0 ? Z_FINISH : isShort(got) ? Z_SYNC_FLUSH : Z_NO_FLUSH;
            }
            const int result = deflate(&mZlib, mFlush);
            mDrained = mZlib.avail_out > 0;
            mEnded = result == Z_STREAM_END;
            mError = result == Z_STREAM_ERROR;
        }
        return produced();
    }

private:
    bool mDrained = true; ///< zlib holds no more output for the input it was given
    int mFlush = Z_NO_FLUSH;
};

class Decompressor : public Filter
{
public:
    Decompressor() : Filter(0x1002) {}
    ~Decompressor() override { inflateEnd(&mZlib); }
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;

    bool beginDelegation(ky::kyIoDevice* source) override
    {
        inflateEnd(&mZlib);
        Filter::beginDelegation(source);
        mError = inflateInit(&mZlib) != Z_OK;
        return !mError;
    }

    std::size_t readBytes(char* data, std::size_t size) override
    {
        if (mSource == nullptr || mError)
            return fail();
        setOutput(data, size);
        while (mZlib.avail_out > 0 && !mEnded && !mError)
        {
            if (mZlib.avail_in == 0 && refill() == 0)
            {
                mError = true; // the file ends before its content does
                break;
            }
            const int result = inflate(&mZlib, Z_NO_FLUSH);
            mEnded = result == Z_STREAM_END;
            mError = result != Z_OK && result != Z_BUF_ERROR && !mEnded;
        }
        return produced();
    }
};

constexpr int recordCount = 500000;

std::string nameOf(int i) { return "sensor " + std::to_string(i % 17); }
double valueOf(int i) { return i * 0.25; }

bool writeRecords(ky::kyIoDevice& device)
{
    ky::kyDataStream stream(&device, ky::kyDataStream::BigEndian);
    for (int i = 0; i < recordCount; ++i)
        stream << i << nameOf(i) << valueOf(i);
    return stream.isOk();
}

bool readRecords(ky::kyIoDevice& device)
{
    ky::kyDataStream stream(&device, ky::kyDataStream::BigEndian);
    for (int i = 0; i < recordCount; ++i)
    {
        int number = 0;
        std::string name;
        double value = 0;
        stream >> number >> name >> value;
        if (!stream.isOk() || number != i || name != nameOf(i) || value != valueOf(i))
            return false;
    }
    char more = 0;
    return device.readBytes(&more, 1) == 0 && device.good();
}

bool save(const char* path)
{
    std::ofstream file(path, std::ios::binary);
    ky::kyIoDeviceStdStreamProxy target(nullptr, &file);
    ky::kyIoDeviceByteCounter compressed;
    ky::kyIoDeviceByteCounter plain;
    Compressor compressor;
    ky::kyIoDeviceWriteStreamModifier modifier(&compressor);
    compressed.beginDelegation(&target);
    modifier.beginDelegation(&compressed);
    plain.beginDelegation(&modifier);

    bool good = writeRecords(plain);
    good = plain.endDelegation() && good;
    good = modifier.endDelegation() && good; // the rest goes through the compressor here
    good = compressed.endDelegation() && good;
    std::cout << plain.getWrittenBytes() << " bytes became " << compressed.getWrittenBytes() << '\n';
    file.close();
    return good && file.good() && compressed.getWrittenBytes() < plain.getWrittenBytes() / 2;
}

bool load(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    ky::kyIoDeviceStdStreamProxy source(&file, nullptr);
    Decompressor decompressor;
    decompressor.beginDelegation(&source);
    const bool good = readRecords(decompressor);
    return decompressor.endDelegation() && good;
}

} // namespace

int main()
{
    const bool good = save("records.z") && load("records.z");
    std::cout << (good ? "read back unchanged\n" : "failed\n");
    return good ? 0 : 1;
}
