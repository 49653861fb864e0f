// SPDX-License-Identifier: MIT
// The examples of docs/devices.md.
#include "expect.h"

#include <ky/ky.h>

#include <fstream>
#include <string>

namespace
{

bool writeValues()
{
    // [write]
    std::ofstream file("values.bin", std::ios::binary);
    ky::kyIoDeviceStdStreamProxy target(nullptr, &file); // input, output
    ky::kyIoDeviceByteCounter counter;
    counter.beginDelegation(&target); // in front of the file for a while

    ky::kyDataStream out(&counter, ky::kyDataStream::BigEndian);
    out << std::uint32_t{7} << std::string("seven") << 7.0;
    if (!out.isOk() || !counter.endDelegation())
        return false;
    std::cout << counter.getWrittenBytes() << " bytes\n";
    // [write]
    return counter.getWrittenBytes() == 21;
}

} // namespace

int main()
{
    ky::initializeKySystem(ky::InitType::Light, false);

    expect(writeValues(), "4 bytes, a text with its length, 8 bytes");

    // [read]
    std::ifstream file("values.bin", std::ios::binary);
    ky::kyIoDeviceStdStreamProxy source(&file, nullptr);
    ky::kyDataStream in(&source, ky::kyDataStream::BigEndian);
    std::uint32_t number = 0;
    std::string text;
    double real = 0.0;
    in >> number >> text >> real; // the types that were written, in their order
    // [read]
    expect(in.isOk() && number == 7 && text == "seven" && real == 7.0, "what was written is read");

    ky::terminateKySystem();
    return failures;
}
