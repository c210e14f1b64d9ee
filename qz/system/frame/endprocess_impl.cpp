#include "qz/system/frame/endprocess_impl.h"

#include <atomic>
#include <cstdlib>

namespace QZSystem {

namespace {

std::atomic<bool> ending{false};

}  // namespace

void EndProcess(int status) {
  if (!ending.exchange(true)) std::exit(status);
}

void ProcessIsEnding() { ending.store(true); }

}  // namespace QZSystem
