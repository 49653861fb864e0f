// SPDX-License-Identifier: MIT
// A table over several files, each of which opens in a spreadsheet, and one of them read back.
#include <ky/ky.h>

#include <iostream>

namespace
{

bool writeMeasurements(int count)
{
    ky::kyCsvFileWriter writer(".", "measurements", 40, ';', '"', "\r\n", true);
    for (int i = 0; i < count; ++i)
    {
        // Asking for the stream before every row is what lets the writer go on in the next file.
        ky::kyCsvStream& csv = writer.getStream();
        csv << i << (i % 2 == 0 ? "pump; inlet" : "valve \"B\"") << 20.0 + 0.25 * i << ky::kyCsvStream::EndOfRow();
        if (!csv.isOk())
            return false; // the disk is full: there is no use in going on
    }
    std::cout << count << " rows in " << writer.getFileCount() << " files\n";
    // The last block of the last file goes out here.
    return writer.finish();
}

} // namespace

int main()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Light, false);
    bool ok = writeMeasurements(100);

    ky::kyCsvFileReader reader(true);
    reader.setColumnDelimiter(';');
    reader.setFileName("measurements (2).csv");
    ok = ok && reader.getLastError().empty() && reader.parseCsvFile();
    double sum = 0;
    for (const auto& row : reader.getTable())
    {
        std::cout << row[0].toInteger() << " | " << row[1].getString() << " | " << row[2].toReal() << '\n';
        sum += row[2].toReal();
    }
    ok = ok && reader.getTable().size() == 20 && sum > 0;

    ky::terminateKySystem();
    return ok ? 0 : 1;
}
