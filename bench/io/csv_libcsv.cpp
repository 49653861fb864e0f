// SPDX-License-Identifier: MIT
#include "csv_libcsv.h"

#include <csv.h>

#include <cstdio>

namespace ky::bench
{

namespace
{

struct Collector
{
    std::vector<std::vector<std::string>> table;
    std::vector<std::string> row;
};

void onCell(void* text, std::size_t size, void* collector)
{
    static_cast<Collector*>(collector)->row.emplace_back(static_cast<const char*>(text), size);
}

void onRow(int, void* collector)
{
    auto& target = *static_cast<Collector*>(collector);
    target.table.push_back(std::move(target.row));
    target.row = {};
}

/// Cells come through a buffer: quicker than its own way to write to a file.
class Writer
{
public:
    explicit Writer(const std::string& path) : mFile(std::fopen(path.c_str(), "wb")), mCell(256)
    {
        std::setvbuf(mFile, nullptr, _IOFBF, 0x10000);
    }
    ~Writer() { std::fclose(mFile); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void cell(const char* text, std::size_t size, char behind)
    {
        const std::size_t wanted = csv_write(mCell.data(), mCell.size() - 1, text, size);
        mCell[wanted] = behind;
        std::fwrite(mCell.data(), 1, wanted + 1, mFile);
    }
    template <typename Number>
    void cell(const char* format, Number number, char behind)
    {
        char text[32];
        const int size = std::snprintf(text, sizeof text, format, number);
        cell(text, static_cast<std::size_t>(size), behind);
    }
    void cell(const std::string& text, char behind) { cell(text.data(), text.size(), behind); }
    bool finish() { return std::fflush(mFile) == 0; }

private:
    std::FILE* mFile;
    std::vector<char> mCell;
};

} // namespace

bool writeWithLibcsv(const std::string& path, const std::vector<MixedRow>& rows)
{
    Writer writer(path);
    for (const MixedRow& row : rows)
    {
        writer.cell("%d", row.integers[0], ',');
        writer.cell(row.texts[0], ',');
        writer.cell(row.texts[1], ',');
        writer.cell("%.3g", row.reals[0], ',');
        writer.cell(row.texts[2], ',');
        writer.cell("%d", row.integers[1], ',');
        writer.cell("%d", row.integers[2], ',');
        writer.cell("%.3g", row.reals[1], ',');
        writer.cell(row.texts[3], ',');
        writer.cell("%.3g", row.reals[2], '\n');
    }
    return writer.finish();
}

std::vector<std::vector<std::string>> readWithLibcsv(const std::string& path)
{
    Collector collector;
    csv_parser parser;
    csv_init(&parser, 0);
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    std::vector<char> block(1 << 20);
    while (const std::size_t size = std::fread(block.data(), 1, block.size(), file))
        csv_parse(&parser, block.data(), size, onCell, onRow, &collector);
    csv_fini(&parser, onCell, onRow, &collector);
    std::fclose(file);
    csv_free(&parser);
    return std::move(collector.table);
}

} // namespace ky::bench
