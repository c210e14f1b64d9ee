#pragma once

#include "qz/platform/version.h"
#include "qz/system/frame/names.h"

/// Which build of the toolkit this is: constants, set when the library was built.
///
///     qzout << "on " << QZSystemGetPlatform() << ", release " << QZSystemGetRelease() << qzendl;
///     QZGetVersions(qzout);      // lists this library with all others that have registered
///
/// The texts live as long as the process. All functions work from any static initialiser on. Safe from any thread.
namespace QZSystem {

/// The version as eight decimal digits that read as year, month and day; goes up with the release.
[[nodiscard]] unsigned int QZSystemGetVersion();

/// The release, such as "5.0.0.0"; in a debug build with " debug" behind it.
[[nodiscard]] const char* QZSystemGetRelease();
/// The release without regard to the kind of build.
[[nodiscard]] const char* QZSystemGetNonDebugRelease();
/// The release with " debug" behind it.
[[nodiscard]] const char* QZSystemGetDebugRelease();

/// Operating system and processor, such as "debian-12-x64".
[[nodiscard]] const char* QZSystemGetArch();
/// The same with the compiler, such as "debian-12-g++12.2-x64".
[[nodiscard]] const char* QZSystemGetPlatform();
/// The configuration of the build, such as "RELEASE".
[[nodiscard]] const char* QZSystemGetConfigureArgs();

/// Toolkit "qztoolkit", library "QZSystem" and the release, as QZGetVersions lists them.
[[nodiscard]] QZVersion QZSystemVersion();

}  // namespace QZSystem
