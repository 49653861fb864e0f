// SPDX-License-Identifier: MIT
// The management queries borrow the thread's COM state and give it back.
#include <ky/kySystemUtils.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include <thread>

namespace
{

using ky::kySystemUtils;

/// -1 when COM is not initialized on this thread.
int apartmentOfThread()
{
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    if (FAILED(CoGetApartmentType(&type, &qualifier)) || qualifier == APTTYPEQUALIFIER_IMPLICIT_MTA)
        return -1;
    return type == APTTYPE_MAINSTA ? APTTYPE_STA : type;
}

TEST(ManagementQueries, LeaveComOnTheThreadAsItWas)
{
    const struct
    {
        DWORD mode; ///< 0xffffffff for none
        int apartment;
    } rows[] = {{0xffffffff, -1}, {COINIT_APARTMENTTHREADED, APTTYPE_STA}, {COINIT_MULTITHREADED, APTTYPE_MTA}};
    for (const auto& row : rows)
    {
        kySystemUtils::InitializeSystemUtils();
        std::thread(
            [&]
            {
                if (row.mode != 0xffffffff)
                {
                    ASSERT_EQ(CoInitializeEx(nullptr, row.mode), S_OK);
                }
                EXPECT_FALSE(kySystemUtils::GetWmicInfo(true).empty());
                EXPECT_EQ(apartmentOfThread(), row.apartment);
                if (row.mode != 0xffffffff)
                    CoUninitialize();
                EXPECT_EQ(apartmentOfThread(), -1);
            })
            .join();
        kySystemUtils::TerminateSystemUtils();
    }
}

} // namespace
