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

/// The texts between bars.
std::vector<std::string> split(const std::string& texts);

/// "a|b/c/!error": bars between the cells of a row, a slash behind each row, control characters visible.
std::string show(const CsvResult& result);

} // namespace ky::test
