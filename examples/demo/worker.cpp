// SPDX-License-Identifier: MIT
#include "worker.h"

#include <algorithm>
#include <memory>
#include <unordered_map>

namespace demo
{

namespace
{

constexpr int patienceMs = 20000;
constexpr auto byteOrder = ky::kyDataStream::LittleEndian;

/// A question: that there is one, the name of a column, the number of its cells and the cells.
Tally sendColumn(ky::kyDataStream& stream, const std::vector<Table>& tables, const std::string& name)
{
    Tally tally;
    for (const Table& table : tables)
        tally.rows += table.findColumn(name) >= 0 ? table.rowCount() : 0;
    stream << true << name << tally.rows;
    for (const Table& table : tables)
    {
        const int column = table.findColumn(name);
        const ky::kyCsvFileReader::Table& rows = table.reader.getTable();
        for (std::size_t i = 1; column >= 0 && i < rows.size(); ++i)
        {
            const auto place = static_cast<std::size_t>(column);
            const std::string cell = place < rows[i].size() ? mergedCell(rows[i][place]) : std::string();
            tally.addCell(cell);
            stream << cell;
        }
    }
    return tally;
}

ColumnAnswer examineColumn(ky::kyDataStream& stream, const std::string& name, std::uint64_t cells)
{
    ColumnAnswer answer;
    answer.column = name;
    std::unordered_map<std::string, std::uint64_t> counts;
    std::string cell;
    for (; answer.tally.rows < cells && stream.isOk(); ++answer.tally.rows)
    {
        stream >> cell;
        answer.tally.addCell(cell);
        ++counts[cell];
    }
    answer.distinct = counts.size();
    for (const auto& [text, times] : counts)
    {
        if (times > answer.times || (times == answer.times && text < answer.mostFrequent))
        {
            answer.mostFrequent = text;
            answer.times = times;
        }
    }
    return answer;
}

ky::kyDataStream& operator<<(ky::kyDataStream& stream, const ColumnAnswer& answer)
{
    return stream << answer.tally.rows << answer.tally.bytes << answer.distinct << answer.mostFrequent << answer.times;
}

ky::kyDataStream& operator>>(ky::kyDataStream& stream, ColumnAnswer& answer)
{
    return stream >> answer.tally.rows >> answer.tally.bytes >> answer.distinct >> answer.mostFrequent >> answer.times;
}

/// False when the worker has gone or does not answer.
bool askAll(ky::kyIoDeviceNamedPipe& device, const std::vector<Table>& tables, WorkerResult& result)
{
    ky::kyDataStream stream(&device, byteOrder);
    result.agrees = true;
    for (const std::string& name : mergedColumns(tables))
    {
        ColumnAnswer answer;
        answer.column = name;
        const Tally sent = sendColumn(stream, tables, name);
        stream >> answer; // what was written goes out before
        result.agrees = result.agrees && answer.tally == sent;
        result.answers.push_back(answer);
    }
    stream << false >> result.isLockRefused;
    return stream.isOk();
}

} // namespace

WorkerResult askWorker(const std::vector<Table>& tables, const std::string& settings, const std::string& lock)
{
    WorkerResult result;
    ky::kyNamedPipeServer server;
    ky::kyProcess worker;
    if (!server.listenUtf8("demo-" + ky::kySystemUtils::CreateUuid(false)) ||
        !worker.startProcess(ky::kySystemUtils::GetProgramFullPath(),
                             {settings, "work", server.getServerNameUtf8(), lock}, true) ||
        !server.waitForNewConnection(patienceMs))
    {
        ky::logCritical("demo") << "the worker did not come";
        worker.killProcess();
        return result;
    }
    result.pid = worker.getPid();
    const std::unique_ptr<ky::kyNamedPipe> pipe(server.getNextPendingConnection());
    ky::kyIoDeviceNamedPipe device(pipe.get(), patienceMs);
    const bool isAnswered = askAll(device, tables, result);
    if (!worker.waitForFinished(patienceMs))
        worker.killProcess();
    result.isComplete = isAnswered && worker.exitCode() == 0;
    return result;
}

int answerQuestions(const std::string& pipeName, const std::string& lock)
{
    ky::kyNamedPipe pipe;
    if (!pipe.connectToNamedPipeServerUtf8(pipeName))
        return 1;
    ky::kyIoDeviceNamedPipe device(&pipe, patienceMs);
    ky::kyDataStream stream(&device, byteOrder);
    bool isQuestion = false;
    while ((stream >> isQuestion).isOk() && isQuestion)
    {
        std::string name;
        std::uint64_t cells = 0;
        stream >> name >> cells;
        const ColumnAnswer answer = examineColumn(stream, name, cells);
        ky::logInfo("worker") << name << ": " << answer.distinct << " different cells of " << answer.tally.rows;
        stream << answer;
        device.flush();
    }
    ky::kyLockFile second;
    stream << !second.takeLockUtf8(lock);
    device.flush();
    return stream.isOk() ? 0 : 1;
}

} // namespace demo
