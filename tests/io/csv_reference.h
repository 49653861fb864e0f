// SPDX-License-Identifier: MIT
// The rules of CSV reading written down one code point at a time, without any regard to speed; the reader has to agree.
#pragma once

#include <string>
#include <vector>

namespace ky::test
{

using TextRow = std::vector<std::string>;
using TextTable = std::vector<TextRow>;

struct CsvResult
{
    TextTable rows;
    std::string error; ///< empty when the file was read to its end

    bool operator==(const CsvResult& other) const { return rows == other.rows && error == other.error; }
};

struct CsvFormat
{
    char delimiter = ',';
    char quote = '"';
};

CsvResult referenceCsv(const std::string& bytes, CsvFormat format = {});

/// One line per row, cells between bars and control characters visible: for messages of failed tests.
std::string show(const CsvResult& result);

} // namespace ky::test
