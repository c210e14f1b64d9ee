#include "qz/system/qzb/qzbinit.h"

#include <cstdlib>
#include <vector>

#include "qz/system/frame/error.h"

namespace QZSystem {

namespace {

constexpr const char* initializerFailed = "Default Initializer failed during setup.";

constexpr unsigned int firstCapacity = 1024;

// A plain array that starts as zeroes, so that it is there before any constructor runs. It is never freed.
QZBInitializer* initializers;
unsigned int initializerCount;
unsigned int capacity;

bool growInitializers() {
  const unsigned int larger = capacity == 0 ? firstCapacity : 2 * capacity;
  void* const grown = std::realloc(initializers, larger * sizeof *initializers);
  if (!grown) return false;
  initializers = static_cast<QZBInitializer*>(grown);
  capacity = larger;
  return true;
}

}  // namespace

bool QZRegisterQZBInitializer(QZBInitializer initializer) {
  if (initializerCount == capacity && !growInitializers()) return false;
  initializers[initializerCount++] = initializer;
  return true;
}

unsigned int QZGetQZBInitializerCount() { return initializerCount; }

void QZInitializeHandler(QZBinaryIOHandlerBase& handler) {
  std::vector<QZBInitializer> again;
  for (unsigned int i = 0; i < initializerCount; ++i) {
    const QZBInitializer initialize = initializers[i];
    if (!initialize(handler)) again.push_back(initialize);
  }
  for (const QZBInitializer initialize : again) {
    if (!initialize(handler)) QZThrow.Warning(initializerFailed);
  }
}

}  // namespace QZSystem
