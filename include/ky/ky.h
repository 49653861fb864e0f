// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The whole public interface.
///
/// \namespace ky
/// The library. Narrow strings hold UTF-8 throughout.
///
/// \namespace ky::concurrent
/// Loops that are shared with the worker pool.
///
/// \namespace ky::exception
/// Guarded execution.
///
/// \namespace ky::rc
/// The table of embedded files.
///
/// \namespace ky::impl
/// Parts that other modules of a program may use; the rest is the library's own.
///
/// \namespace kySystem
/// The library's own version.

#include <ky/kyAsciiTableBuilder.h>
#include <ky/kyConcurrent.h>
#include <ky/kyConcurrentPool.h>
#include <ky/kyCpuInfo.h>
#include <ky/kyCsvFileReader.h>
#include <ky/kyCsvFileWriter.h>
#include <ky/kyCsvStream.h>
#include <ky/kyDataStream.h>
#include <ky/kyDirUtils.h>
#include <ky/kyEnumHelper.h>
#include <ky/kyException.h>
#include <ky/kyHighResTimer.h>
#include <ky/kyIniFile.h>
#include <ky/kyIoDevice.h>
#include <ky/kyIoDeviceBroadcast.h>
#include <ky/kyIoDeviceByteCounter.h>
#include <ky/kyIoDeviceMemory.h>
#include <ky/kyIoDeviceNamedPipe.h>
#include <ky/kyIoDeviceSignaler.h>
#include <ky/kyIoDeviceStdStreamProxy.h>
#include <ky/kyIoDeviceWriteStreamModifier.h>
#include <ky/kyLockFile.h>
#include <ky/kyLog.h>
#include <ky/kyMathUtils.h>
#include <ky/kyMutex.h>
#include <ky/kyNamedPipe.h>
#include <ky/kyNamedPipeServer.h>
#include <ky/kyProcess.h>
#include <ky/kyProgressNotifier.h>
#include <ky/kyResource.h>
#include <ky/kySemaphore.h>
#include <ky/kyStamp.h>
#include <ky/kyStringUtils.h>
#include <ky/kySystem.h>
#include <ky/kySystemError.h>
#include <ky/kySystemUtils.h>
#include <ky/kyThread.h>
#include <ky/kyThreadPeriodicalUpdater.h>
#include <ky/kyTimer.h>
#include <ky/kyVariant.h>
#include <ky/kyVersion.h>
#include <ky/kyWaitCondition.h>
#include <ky/kyWorkThread.h>
#include <ky/kyXRefResolverSearchPath.h>
