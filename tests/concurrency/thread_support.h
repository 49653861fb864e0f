// SPDX-License-Identifier: MIT
#pragma once

#include "support/soak.h"

#include <ky/kyThread.h>

#include <chrono>
#include <functional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace ky::test
{

inline constexpr int forEver = 0x7FFFFFFF;

/// Time for something to happen that must not happen. Too short a one hides a fault; it never makes one.
inline constexpr std::chrono::milliseconds grace(30);

/// A thread that runs a function.
class Body : public kyThread
{
public:
    explicit Body(std::function<void()> body = [] {}) : mBody(std::move(body)) {}
    ~Body() override { waitThread(forEver); }
    void run() override { mBody(); }

private:
    std::function<void()> mBody;
};

/// The system error that a call throws; no error when it throws nothing.
template <typename Call>
std::error_code errorOf(Call call)
{
    try
    {
        call();
    }
    catch (const std::system_error& error)
    {
        return error.code();
    }
    return {};
}

/// Ways in which code fails under guard: thrown objects, and a hardware fault where this build survives one.
std::vector<std::function<void()>> failures();

/// No reports of failures while it lives.
class Silence
{
public:
    Silence();
    ~Silence();
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
};

/// The calling thread's name as system tools show it.
std::string systemNameOfThisThread();

/// Whether the system keeps only the first bytes of a name.
bool cutsThreadNames();

} // namespace ky::test
