// SPDX-License-Identifier: MIT
// Includes no header that brings the standard streams up.
#include <ky/kyLog.h>

namespace
{

struct Early
{
    Early() { ky::logInfo() << "early message"; }
};

const Early early;

} // namespace

int main() { return 0; }
