#include "qz/platform/version.h"

#include <vector>

#include "qz/platform/lock_impl.h"
#include "qz/platform/stream.h"

// GCC doesn't know clang's thread-safety attributes.
#pragma GCC diagnostic ignored "-Wattributes"

namespace QZPlatform {

namespace {

struct Registry {
  ForkSafeMutex mutex{LockRank::Platform};
  std::vector<QZVersion (*)()> versions __attribute__((guarded_by(mutex)));
};

// Made at first use and never destroyed: static initialisers register, and a static destructor may ask.
Registry& TheRegistry() {
  static Registry& registry = *new Registry;
  return registry;
}

}  // namespace

void QZRegisterVersion(QZVersion (*version)()) {
  Registry& registry = TheRegistry();
  const ForkSafeLock lock(registry.mutex);
  registry.versions.push_back(version);
}

void QZGetVersions(qzostream& out) {
  std::vector<QZVersion (*)()> versions;
  {
    Registry& registry = TheRegistry();
    const ForkSafeLock lock(registry.mutex);
    versions = registry.versions;
  }
  for (const auto version : versions) {
    const QZVersion each = version();
    out << each.toolkit << ' ' << each.library << ' ' << each.release << '\n';
  }
}

}  // namespace QZPlatform
