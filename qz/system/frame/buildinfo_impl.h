#pragma once

#include "qz/platform/version.h"
#include "qz/system/frame/names.h"

/// The constants of the build. The texts live as long as the process.
namespace QZSystem::BuildInfo {

unsigned int Version();
const char* Release();
const char* NonDebugRelease();
const char* DebugRelease();
const char* Arch();
const char* Platform();
const char* ConfigureArgs();

}  // namespace QZSystem::BuildInfo

namespace QZSystem {

/// The version under which the system library is listed. It stands here, and is registered beside QZThrow, because a
/// static link keeps that unit for every program that can report anything.
QZVersion BuildVersion();

}  // namespace QZSystem
