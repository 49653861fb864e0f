// SPDX-License-Identifier: MIT
// A program that starts itself as a worker process and talks to it over a named pipe, in binary. What crashes or is
// killed in the worker does not take the program along.
#include <ky/ky.h>

#include <cstring>
#include <iostream>
#include <memory>
#include <numeric>
#include <vector>

namespace
{

constexpr int patienceMs = 20000;
constexpr auto byteOrder = ky::kyDataStream::LittleEndian;

/// Answers each list of numbers with its sum until an empty one comes.
int work(const std::string& pipeName)
{
    ky::kyNamedPipe pipe;
    if (!pipe.connectToNamedPipeServerUtf8(pipeName))
        return 1;
    ky::kyIoDeviceNamedPipe device(&pipe, patienceMs);
    ky::kyDataStream stream(&device, byteOrder);
    for (;;)
    {
        std::uint32_t count = 0;
        stream >> count;
        if (!stream.isOk() || count == 0)
            break;
        long long sum = 0;
        for (; count > 0; --count)
        {
            int number = 0;
            stream >> number;
            sum += number;
        }
        stream << sum << std::string("sum of it all");
        device.flush();
    }
    return stream.isOk() ? 0 : 1;
}

bool ask(ky::kyIoDeviceNamedPipe& device, const std::vector<int>& numbers)
{
    ky::kyDataStream stream(&device, byteOrder);
    stream << static_cast<std::uint32_t>(numbers.size());
    for (const int number : numbers)
        stream << number;
    if (numbers.empty())
        return device.flush();
    long long sum = 0;
    std::string text;
    stream >> sum >> text; // sends the question first
    std::cout << text << ": " << sum << '\n';
    return stream.isOk() && sum == std::accumulate(numbers.begin(), numbers.end(), 0LL);
}

int direct()
{
    ky::kyNamedPipeServer server;
    ky::kyProcess worker;
    if (!server.listenUtf8("worker-" + ky::kySystemUtils::CreateUuid(false)) ||
        !worker.startProcess(ky::kySystemUtils::GetProgramFullPath(), {"work", server.getServerNameUtf8()}, true) ||
        !server.waitForNewConnection(patienceMs))
    {
        std::cout << "the worker did not come\n";
        return 1;
    }
    const std::unique_ptr<ky::kyNamedPipe> pipe(server.getNextPendingConnection());
    ky::kyIoDeviceNamedPipe device(pipe.get(), patienceMs);
    std::vector<int> many(100000);
    std::iota(many.begin(), many.end(), 1);
    const bool isRight = ask(device, {1, 2, 3}) && ask(device, many) && ask(device, {});
    if (!worker.waitForFinished(patienceMs))
        worker.killProcess();
    return isRight && worker.exitCode() == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    ky::kySystemUtils::ExportProcessorCount();
    ky::initializeKySystem(ky::InitType::Light, false);
    const int result = argc == 3 && std::strcmp(argv[1], "work") == 0 ? work(argv[2]) : direct();
    ky::terminateKySystem();
    return result;
}
