// SPDX-License-Identifier: MIT
// The files of a Linux kernel with any content: pieces between NULs are handed out in turn, whatever is asked for.
#include "text/require.h"

#include "sysinfo/main_disk.h"
#include "sysinfo/power_supply.h"
#include "sysinfo/process_texts.h"
#include "sysinfo/processor_quota.h"

#include <cstdint>

namespace
{

using namespace ky::impl;

class Pieces
{
public:
    explicit Pieces(std::string_view input)
    {
        while (!input.empty())
            mPieces.emplace_back(nextPiece(input, '\0'));
    }

    SystemTree tree()
    {
        return {[this](const std::string&) { return next(); }, [this](const std::string&) { return lines(next()); },
                [this](const std::string&) { return next(); }};
    }

private:
    std::string next() { return mPieces.empty() ? std::string() : mPieces[mNext++ % mPieces.size()]; }

    static std::vector<std::string> lines(const std::string& piece)
    {
        std::vector<std::string> all;
        std::string_view rest = piece;
        while (!rest.empty() && all.size() < 64)
            all.emplace_back(nextPiece(rest, '\n'));
        return all;
    }

    std::vector<std::string> mPieces;
    std::size_t mNext = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string input(data, data + size);
    static_cast<void>(processorQuota(Pieces(input).tree()));

    const std::string disk = diskOfRoot(Pieces(input).tree());
    KY_REQUIRE(disk.empty() || (disk.compare(0, 5, "/dev/") == 0 && disk.size() > 5));

    const auto power = powerFromSupplies(Pieces(input).tree());
    KY_REQUIRE(power.batteryPercent >= -1 && power.batteryPercent <= 100);
    KY_REQUIRE(power.hasBattery || (power.batteryPercent == -1 && !power.isCharging));

    KY_REQUIRE(privateMemoryOf(input) >= 0);
    std::size_t length = 0;
    for (const std::string& argument : argumentsOf(input))
        length += argument.size() + 1;
    KY_REQUIRE(length == size || length == size + 1);
    for (const bool exists : {false, true})
    {
        const std::string program = programOf(input, exists);
        KY_REQUIRE(program.empty() || input.compare(0, program.size(), program) == 0);
    }
    return 0;
}
