// SPDX-License-Identifier: MIT
#include "concurrency/thread_support.h"

#include <pthread.h>

namespace ky::test
{

std::string systemNameOfThisThread()
{
    char name[64] = "";
    pthread_getname_np(pthread_self(), name, sizeof name);
    return name;
}

bool cutsThreadNames() { return true; }

} // namespace ky::test
