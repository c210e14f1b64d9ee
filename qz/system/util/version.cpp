#include "qz/system/util/version.h"

#include "qz/system/frame/buildinfo_impl.h"

namespace QZSystem {

unsigned int QZSystemGetVersion() { return BuildInfo::Version(); }

const char* QZSystemGetRelease() { return BuildInfo::Release(); }

const char* QZSystemGetNonDebugRelease() { return BuildInfo::NonDebugRelease(); }

const char* QZSystemGetDebugRelease() { return BuildInfo::DebugRelease(); }

const char* QZSystemGetArch() { return BuildInfo::Arch(); }

const char* QZSystemGetPlatform() { return BuildInfo::Platform(); }

const char* QZSystemGetConfigureArgs() { return BuildInfo::ConfigureArgs(); }

QZVersion QZSystemVersion() { return BuildVersion(); }

}  // namespace QZSystem
