// SPDX-License-Identifier: MIT
#include "io/device_message.h"
#include "io/file_output_stream.h"

#include <ky/kyCsvFileWriter.h>
#include <ky/kyDirUtils.h>
#include <ky/kyIoDeviceStdStreamProxy.h>

#include <algorithm>
#include <string_view>

namespace ky
{

namespace
{

/// Cells come in many short writes.
class FileDevice : public kyIoDeviceStdStreamProxy
{
public:
    /// Without a file it is not to be written to.
    explicit FileDevice(impl::FileOutputStream* file) : kyIoDeviceStdStreamProxy(nullptr, file), mFile(file) {}
    std::size_t writeBytes(const char* data, std::size_t size) override { return mFile->append(data, size) ? size : 0; }

private:
    impl::FileOutputStream* mFile;
};

} // namespace

kyCsvFileWriter::kyCsvFileWriter(const std::string& folder, const std::string& baseName, unsigned int maxRowsPerFile,
                                 char columnSeparator, char stringDelimiter, const std::string& rowSeparator,
                                 bool writeBom)
    : mFolder(folder),
      mBaseName(baseName),
      mMaxRowsPerFile(std::max(maxRowsPerFile, 1U)),
      mStream(std::make_unique<kyCsvStream>(nullptr, columnSeparator, stringDelimiter, rowSeparator)),
      mWriteBom(writeBom)
{
}

kyCsvFileWriter::~kyCsvFileWriter() { finalizeCurrentFile(); }

kyCsvStream& kyCsvFileWriter::getStream()
{
    if (mStream->getNextCellRowIndex() >= mMaxRowsPerFile && mStream->getNextCellColIndex() == 0)
        finalizeCurrentFile();
    // A file that could not be opened has a device as well.
    if (mFileDevice == nullptr)
        openNextFile();
    return *mStream;
}

bool kyCsvFileWriter::finish()
{
    finalizeCurrentFile();
    return mComplete;
}

void kyCsvFileWriter::openNextFile()
{
    // Cells may have been lost between two files.
    mComplete = mComplete && mStream->isOk();
    std::string path = kyDirUtils::JoinPath(mFolder, mBaseName);
    if (mFileIndex != 0)
        path += " (" + std::to_string(mFileIndex) + ")";
    path += ".csv";
    ++mFileIndex;
    mFile = impl::FileOutputStream::open(path);
    mFileDevice = std::make_unique<FileDevice>(mFile.get());
    if (mFile == nullptr)
    {
        mComplete = false;
        impl::reportDevice("Fail to open csv file " + path);
        mStream->setDevice(nullptr);
        return;
    }
    if (mWriteBom)
    {
        constexpr std::string_view mark = "\xEF\xBB\xBF";
        mFileDevice->writeBytes(mark.data(), mark.size());
    }
    mStream->setDevice(mFileDevice.get());
}

void kyCsvFileWriter::finalizeCurrentFile()
{
    mComplete = mComplete && mStream->isOk();
    mStream->setDevice(nullptr);
    mFileDevice.reset();
    if (mFile != nullptr && !mFile->close())
        mComplete = false;
    mFile.reset();
}

} // namespace ky
