// SPDX-License-Identifier: MIT
// The rules of the path texts, written down one step after the other on copies.
#pragma once

#include <string>
#include <utility>

namespace ky::test
{

std::string referenceJoin(const std::string& a, const std::string& b);
std::string referenceExtension(const std::string& path);
std::string referenceValidName(const std::string& name, char replacement);
std::pair<std::string, std::string> referenceSplit(const std::string& path);
std::string referenceFolder(const std::string& path);
std::string referenceBaseName(const std::string& path);
std::string referenceParent(const std::string& path);

} // namespace ky::test
