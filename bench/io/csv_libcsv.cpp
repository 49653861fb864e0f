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

} // namespace

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
