#include "qz/system/frame/buildinfo_impl.h"

#if !defined(QZ_RELEASE) || !defined(QZ_VERSION_NUMBER) || !defined(QZ_ARCH) || !defined(QZ_PLATFORM) || \
    !defined(QZ_CONFIGURATION) || !defined(QZ_DEBUG_BUILD)
#error "The build must define QZ_RELEASE, QZ_VERSION_NUMBER, QZ_ARCH, QZ_PLATFORM, QZ_CONFIGURATION, QZ_DEBUG_BUILD."
#endif

namespace QZSystem {

namespace BuildInfo {

unsigned int Version() { return QZ_VERSION_NUMBER; }

const char* Release() { return QZ_DEBUG_BUILD ? DebugRelease() : NonDebugRelease(); }

const char* NonDebugRelease() { return QZ_RELEASE; }

const char* DebugRelease() { return QZ_RELEASE " debug"; }

const char* Arch() { return QZ_ARCH; }

const char* Platform() { return QZ_PLATFORM; }

const char* ConfigureArgs() { return QZ_CONFIGURATION; }

}  // namespace BuildInfo

QZVersion BuildVersion() { return {"qztoolkit", "QZSystem", BuildInfo::Release()}; }

}  // namespace QZSystem
