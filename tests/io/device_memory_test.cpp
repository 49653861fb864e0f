// SPDX-License-Identifier: MIT
// Memory that runs out under devices and the binary stream.
#include "device_support.h"

#include "support/failing_new.h"

#include <ky/kyDataStream.h>
#include <ky/kyIoDeviceByteCounter.h>
#include <ky/kyIoDeviceMemory.h>
#include <ky/kyIoDeviceWriteStreamModifier.h>

#include <gtest/gtest.h>

namespace
{

using ky::kyDataStream;
using ky::test::memoryRequests;
using ky::test::ScriptedDevice;

/// How many requests the read makes when none of them fails.
template <typename Text>
int failEveryRequest(std::size_t size)
{
    const Text written(size, 'x');
    ky::kyIoDeviceMemory device;
    kyDataStream(&device, kyDataStream::BigEndian) << written;
    for (int request = 1;; ++request)
    {
        device.seekg(0, ky::kyIoDevice::SeekBegin);
        kyDataStream stream(&device, kyDataStream::BigEndian);
        Text text;
        memoryRequests.failAt(request);
        stream >> text;
        const bool failed = memoryRequests.made >= request;
        memoryRequests.failNoMore();
        EXPECT_EQ(stream.isOk(), !failed);
        EXPECT_EQ(text, failed ? Text() : written);
        if (!failed)
            return request - 1;
    }
}

TEST(DeviceMemory, FailsTheStreamWhenThereIsNoRoomForAText)
{
    EXPECT_EQ(failEveryRequest<std::string>(0), 0);
    EXPECT_EQ(failEveryRequest<std::string>(5000), 1);
    EXPECT_EQ(failEveryRequest<std::vector<char>>(5000), 1);
    EXPECT_EQ(failEveryRequest<std::string>(100000), 2);
    EXPECT_EQ(failEveryRequest<std::vector<char>>(100000), 2);
}

TEST(DeviceMemory, FailsTheDeviceThatCannotGrow)
{
    const std::string text(6000000, 'x');
    ky::kyIoDeviceMemory memory;
    ky::kyIoDeviceByteCounter transformer;
    ky::kyIoDeviceMemory target;
    ky::kyIoDeviceWriteStreamModifier modifier(&transformer);
    modifier.beginDelegation(&target);
    memory << "before";
    for (ky::kyIoDevice* device : {static_cast<ky::kyIoDevice*>(&memory), static_cast<ky::kyIoDevice*>(&modifier)})
    {
        memoryRequests.failAt(1);
        EXPECT_EQ(device->writeBytes(text.data(), text.size()), 0U);
        memoryRequests.failNoMore();
        EXPECT_TRUE(device->hasError());
    }
    EXPECT_EQ(memory.getData().size(), 6U);
    EXPECT_EQ(memory.tellp(), 6U);
}

} // namespace
