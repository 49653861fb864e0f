// SPDX-License-Identifier: MIT
// All services at once on several threads of one process, which afterwards is as it was.
#include "concurrency/full_library.h"
#include "diagnostics/log_checker.h"
#include "process/child_program.h"
#include "process/pipe_support.h"
#include "support/process_state.h"
#include "support/soak.h"
#include "support/temp_dir.h"

#include <ky/kyConcurrent.h>
#include <ky/kyCsvFileReader.h>
#include <ky/kyCsvFileWriter.h>
#include <ky/kyDataStream.h>
#include <ky/kyDirUtils.h>
#include <ky/kyIniFile.h>
#include <ky/kyIoDeviceMemory.h>
#include <ky/kyLockFile.h>
#include <ky/kyMutex.h>
#include <ky/kyProcess.h>
#include <ky/kyProgressNotifier.h>
#include <ky/kySystemUtils.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <thread>

namespace
{

using namespace ky::test;
using ky::kyDirUtils;

const auto* const sLibrary = testing::AddGlobalTestEnvironment(new FullLibrary);

/// What a thread works with: a folder of its own and its number.
struct Worker
{
    std::string file(const std::string& name) const { return folder + "/" + name; }

    std::string folder;
    std::string sharedFolder;
    int number;
    int round = 0;
};

bool settings(Worker& worker)
{
    ky::kyVariant::kyVariantMapImpl tree;
    for (int key = 0; key < 50; ++key)
        tree.editValuePath(("section" + std::to_string(key % 5) + "/key" + std::to_string(key)).c_str()) =
            worker.round + key;
    ky::kyVariant::kyVariantMapImpl found;
    return ky::SaveIniFile(worker.file("settings.ini"), tree, false) &&
           ky::LoadIniFile(worker.file("settings.ini"), found) && found == tree;
}

bool table(Worker& worker)
{
    ky::kyCsvFileWriter writer(worker.folder, "table", 40);
    for (int row = 0; row < 100; ++row)
        writer.getStream() << worker.round + row << "a \"quoted\" text, and more" << ky::kyCsvStream::EndOfRow();
    if (!writer.finish() || writer.getFileCount() != 3)
        return false;
    ky::kyCsvFileReader reader(true);
    reader.setFileName(worker.file("table (2).csv"));
    return reader.parseCsvFile() && reader.getTable().size() == 20 &&
           reader.getTable()[19][0].toInteger() == worker.round + 99;
}

bool binary(Worker& worker)
{
    ky::kyIoDeviceMemory memory;
    ky::kyDataStream out(&memory, ky::kyDataStream::BigEndian);
    for (int i = 0; i < 500; ++i)
        out << worker.round + i << std::string("text");
    ky::kyDataStream in(&memory, ky::kyDataStream::BigEndian);
    bool isSame = out.isOk();
    for (int i = 0; i < 500; ++i)
    {
        int number = -1;
        std::string text;
        in >> number >> text;
        isSame = isSame && number == worker.round + i && text == "text";
    }
    return isSame && in.isOk();
}

bool child(Worker& worker)
{
    std::string output;
    const std::string input = "round " + std::to_string(worker.round);
    return ky::kyProcess::ExecCapturedUtf8(childProgram(), {"process_copy"}, "", true, amplyMs, output, nullptr,
                                           nullptr, input) == 0 &&
           output == input;
}

bool pipe(Worker& worker)
{
    ky::kyNamedPipeServer server;
    ky::kyNamedPipe client;
    if (!server.listenUtf8(uniquePipeName()) || !client.connectToNamedPipeServerUtf8(server.getServerNameUtf8()))
        return false;
    const auto peer = PipePair::accept(server);
    const auto seed = static_cast<std::uint64_t>(worker.round);
    PipePattern sent(seed);
    PipePattern received(seed);
    std::array<char, 3000> block;
    while (received.position() < 100'000)
    {
        sent.fill(block.data(), block.size());
        sent.goBack(block.size() - client.writeNamedPipeData(block.data(), block.size()));
        client.processNamedPipeEvents(0, false);
        peer->processNamedPipeEvents(0, false);
        if (!received.check(block.data(), peer->readNamedPipeData(block.data(), block.size())) ||
            client.hasWriteFailed())
            return false;
    }
    return true;
}

bool locks(Worker& worker)
{
    static int inside = 0; // under the named mutex
    ky::kyMutexSystem mutex((worker.sharedFolder + "/mutex").c_str());
    mutex.lock();
    const bool isAlone = ++inside == 1;
    ky::kyLockFile lock;
    const bool isTaken = lock.takeLockUtf8(worker.sharedFolder + "/lock", nullptr, ky::kyLockFile::LockExclusive);
    const bool isGiven = lock.releaseLock(true);
    --inside;
    mutex.unlock();
    return isAlone && isTaken && isGiven;
}

bool loop(Worker& worker)
{
    const int sum = ky::concurrent::reduce(
        0, 1000, 0, [&](int index) { return index % 10 == worker.round % 10 ? 1 : 0; }, std::plus<>(), 50);
    return sum == 100;
}

bool folders(Worker& worker)
{
    const std::string root = worker.file("tree");
    for (int i = 0; i < 10; ++i)
    {
        const std::string folder = root + "/a" + std::to_string(i) + "/b";
        makeFolder(folder);
        writeFile(folder + "/file.txt", "text");
    }
    return kyDirUtils::ClearFolderUtf8(root, true) && !exists(root);
}

bool progress(Worker&)
{
    ky::kyProgressNotifier notifier;
    ky::kyProgressNotifierThreadSafeProxy proxy(&notifier);
    proxy.beginStepGroup(1, 1000);
    ky::concurrent::parallelFor(
        0, 1000, [&](int) { proxy.incrementCurrentStepProgress(1); }, 100);
    return proxy.getGlobalProgress() == 1.0F;
}

bool logLine(Worker& worker)
{
    ky::logInfo() << makeMessage({0, worker.number, worker.round});
    return true;
}

constexpr int threadCount = 3;

/// Wrong answers of so many rounds of everything on all threads.
int work(const TempDir& dir, int firstRound, int rounds)
{
    static constexpr bool (*tasks[])(Worker&) = {&settings, &table, &binary,  &child,    &pipe,
                                                 &locks,    &loop,  &folders, &progress, &logLine};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number)
    {
        threads.emplace_back(
            [&, number]
            {
                Worker worker{dir.file("worker" + std::to_string(number)), dir.path(), number};
                if (!exists(worker.folder))
                    makeFolder(worker.folder);
                for (worker.round = firstRound; worker.round < firstRound + rounds; ++worker.round)
                {
                    for (const auto task : tasks)
                        wrong += !task(worker);
                }
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    return wrong;
}

TEST(MixedLoad, LeavesTheProcessAsItWas)
{
    constexpr int warmUp = 10;
    const int rounds = isSoak() ? 400 : 20;
    const TempDir dir;
    const std::string log = dir.file("mixed.log");
    ky::kyLog::edit().installFileHandlerExUtf8(log, 0, 64 * 1024, 10);
    int wrong = work(dir, 0, warmUp);
    const ProcessState before = processState();
    wrong += work(dir, warmUp, rounds);
    const ProcessState after = settledState(before);
    EXPECT_LT(after.heapBytes, before.heapBytes + 100'000);
    ky::kyLog::edit().removeFileHandler();

    LogContent lines = readLog(log, 10);
    for (int thread = 0; thread < threadCount; ++thread)
        expectRun(lines, 0, thread, false, warmUp + rounds - 1);
    EXPECT_EQ(describe(lines), "");
    account("whole library", {10 * threadCount * rounds, "uses of ten services on 3 threads"}, {},
            {static_cast<std::size_t>(wrong) + lines.missing + leftOver(before, after),
             "wrong answers, lost lines, threads and descriptors left"});
}

} // namespace
