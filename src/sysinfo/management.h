// SPDX-License-Identifier: MIT
// The management queries and the maps that their answers go into.
#pragma once

#include <ky/kyVariant.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ky::impl
{

/// One query: what is asked of the management service, and the same in parts for systems that have no such language.
struct ManagementQuery
{
    std::string text;
    std::string className;
    std::vector<std::string> columns;
};

/// Names of columns to raw values: texts and integers as the system gives them.
using ManagementRow = kyVariant::kyVariantMapImpl;
using ManagementSelect = std::function<std::vector<ManagementRow>(const ManagementQuery&)>;

/// The steps that lead to a connection.
enum class ManagementStep
{
    InitializeCom,
    InitializeSecurity,
    CreateLocator,
    Connect,
    SetBlanket
};

/// "Failed to ...: 0x" with the code in hexadecimal.
std::string managementFailureText(ManagementStep step, std::uint32_t code);

/// Runs all queries. Keys are the names of classes (without "Win32_") and columns in lower case. The one operating
/// system and the one computer are maps of their columns; of everything else there is a map of rows "1", "2", ... Every
/// column is there, a text or an integer; dates are texts "YYYY-MM-DD". What the system does not tell is empty or 0.
void collectManagement(const ManagementSelect& select, bool full, kyVariant::kyVariantMapImpl& out);

} // namespace ky::impl
