// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Writing of CSV tables to one or more files.

#include <ky/kyCsvStream.h>
#include <ky/kyExport.h>

#include <cstdint>
#include <memory>
#include <string>

namespace ky
{

class kyIoDeviceStdStreamProxy;

namespace impl
{
class FileOutputStream;
} // namespace impl

/// Writes a table to `folder/base.csv`, and after a number of rows goes on in `folder/base (1).csv`,
/// `folder/base (2).csv` and so on. Existing files are emptied. No file is made before the first `getStream()`.
///
/// The file is written in blocks of 64 KiB. An error of the system (a full disk) makes the stream's `isOk()` false at
/// the cell whose block failed; the last block of a file is written when that file is closed, and only `finish()` tells
/// whether it arrived. Files before a split are closed and complete, whatever happens to the folder or the disk later.
///
/// A writer has no locking of its own: one thread at a time. Nothing throws but for lack of memory.
///
/// \code
/// ky::kyCsvFileWriter writer(folder, "measurements", 100000, ',', '"', "\r\n", true);
/// for (const Sample& sample : samples)
///     writer.getStream() << sample.name << sample.value << ky::kyCsvStream::EndOfRow();
/// if (!writer.finish())
///     return "measurements could not be written";
/// \endcode
class KY_API kyCsvFileWriter
{
public:
    /// `folder` and `baseName` are UTF-8; `baseName` has no extension. `maxRowsPerFile` 0 counts as 1. The separators
    /// are those of kyCsvStream. With `writeBom` every file begins with the UTF-8 byte-order mark.
    kyCsvFileWriter(const std::string& folder, const std::string& baseName, unsigned int maxRowsPerFile = 0xFFFFFFFF,
                    char columnSeparator = ',', char stringDelimiter = '"', const std::string& rowSeparator = "\r\n",
                    bool writeBom = false);
    kyCsvFileWriter(const kyCsvFileWriter&) = delete;
    kyCsvFileWriter& operator=(const kyCsvFileWriter&) = delete;

    /// Closes the file. What fails here goes unnoticed; `finish()` tells.
    ~kyCsvFileWriter();

    /// The stream to write the next row to; to be called before every row, so that files can be split. Opens the first
    /// file, or the next one when the current one has its number of rows and no row is half written. Always the same
    /// object, valid as long as the writer.
    ///
    /// A file that cannot be opened is logged as CRITICAL, "Fail to open csv file " and its path. The stream has no
    /// device then and fails at the next cell; opening is not tried again.
    kyCsvStream& getStream();

    /// Writes what is buffered and closes the file. True when everything streamed since the construction has been
    /// handed to the system: every file could be opened, written and closed, and the stream never failed. False stays
    /// false. A row begun after this goes to the next file.
    [[nodiscard]] bool finish();

    /// Files begun so far, also those that could not be opened.
    [[nodiscard]] std::uint32_t getFileCount() const { return mFileIndex; }

private:
    void openNextFile();
    void finalizeCurrentFile();

    std::string mFolder;
    std::string mBaseName;
    std::uint32_t mMaxRowsPerFile;
    std::uint32_t mFileIndex = 0;
    std::unique_ptr<impl::FileOutputStream> mFile;
    std::unique_ptr<kyIoDeviceStdStreamProxy> mFileDevice;
    std::unique_ptr<kyCsvStream> mStream;
    bool mWriteBom;
    bool mComplete = true; ///< Nothing has been lost so far.
};

} // namespace ky
