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
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

    std::size_t readBytes(char* data, std::size_t size) override
    {
        if (mSource == nullptr || mError)
            return fail();
        const auto room = static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
        mZlib.next_out = reinterpret_cast<Bytef*>(data);
        mZlib.avail_out = room;
        while (mZlib.avail_out > 0 && !mEnded && !mError)
            if (!step(mZlib.avail_out < room))
                break;
        return room - mZlib.avail_out;
    }
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
        mEnded = false;
        mError = !start();
        return !mError;
    }
    bool endDelegation() override
    {
        const bool good = !hasError();
        clearDelegation();
        return good;
    }
    void clearDelegation() override { mSource = nullptr; }

protected:
    /// Begins anew.
    virtual bool start() = 0;

    /// Puts some output into the room that zlib was given. False: no more for now.
    virtual bool step(bool hasOutput) = 0;

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

    z_stream mZlib = {};
    bool mEnded = false;
    bool mError = false;

private:
    ky::kyIoDevice* mSource = nullptr;
    std::vector<char> mInput;
};

class Compressor : public Filter
{
public:
    Compressor() : Filter(0x1001) {}
    ~Compressor() override { deflateEnd(&mZlib); }

private:
    bool start() override
    {
        deflateEnd(&mZlib);
        mZlib = {};
        mDrained = true;
        mFlush = Z_NO_FLUSH;
        return deflateInit(&mZlib, Z_DEFAULT_COMPRESSION) == Z_OK;
    }

    bool step(bool hasOutput) override
    {
        if (mDrained)
        {
            if (mFlush != Z_NO_FLUSH && hasOutput)
                return false;
            // A short answer: no more for now, so what was compressed is handed out. Only an empty one is the end.
            const std::size_t got = refill();
            mFlush = got == 0 ? Z_FINISH : isShort(got) ? Z_SYNC_FLUSH : Z_NO_FLUSH;
        }
        const int result = deflate(&mZlib, mFlush);
        mDrained = mZlib.avail_out > 0;
        mEnded = result == Z_STREAM_END;
        mError = result == Z_STREAM_ERROR;
        return true;
    }

    bool mDrained = true; ///< zlib holds no more output for the input it was given
    int mFlush = Z_NO_FLUSH;
};

class Decompressor : public Filter
{
public:
    Decompressor() : Filter(0x1002) {}
    ~Decompressor() override { inflateEnd(&mZlib); }

private:
    bool start() override
    {
        inflateEnd(&mZlib);
        mZlib = {};
        return inflateInit(&mZlib) == Z_OK;
    }

    bool step(bool) override
    {
        // The file ends before its content does.
        if (mZlib.avail_in == 0 && refill() == 0)
            return fail() != 0;
        const int result = inflate(&mZlib, Z_NO_FLUSH);
        mEnded = result == Z_STREAM_END;
        mError = result != Z_OK && result != Z_BUF_ERROR && !mEnded;
        return true;
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
