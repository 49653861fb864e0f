// SPDX-License-Identifier: MIT
// The examples of docs/machine.md.
#include "expect.h"

#include <ky/ky.h>

namespace
{

bool isKernelWide = false;

void useWideKernel() { isKernelWide = true; }

void describe()
{
    // [processor]
    const ky::kySystemUtils::CPUInfo cpu;
    if (cpu.isInstructionSetAvailable(ky::kySystemUtils::CPUInfo::InstructionSet::AVX2))
        useWideKernel();

    ky::logInfo() << ky::kySystemUtils::GetProgramName() << " on " << cpu.getBrand() << ", "
                  << ky::kySystemUtils::GetUsedRamQuantityInBytes() << " bytes used";
    // [processor]
}

bool saveReport()
{
    // [report]
    ky::kyVariant::kyVariantMapImpl report;
    ky::kySystemUtils::GenerateHardwareReport(report, false);
    return ky::SaveIniFile("machine.ini", report, false);
    // [report]
}

} // namespace

int main()
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Light, false);

    describe();
    expect(ky::kySystemUtils::GetProgramName().find("machine") != std::string::npos, "the program knows its name");
    expect(ky::kySystemUtils::GetUsedRamQuantityInBytes() > 0, "a program uses memory");

    expect(saveReport(), "the report is saved");
    ky::kyVariant::kyVariantMapImpl report;
    expect(ky::LoadIniFile("machine.ini", report) && report.size() > 0, "and can be read");

    ky::terminateKySystem();
    return failures;
}
