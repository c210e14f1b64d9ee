#include "qz/system/frame/errorgate_impl.h"

#include "qz/system/frame/errorlevel.h"

namespace QZSystem {

std::atomic<unsigned int> errorGate{0};

namespace {

// The lowest threshold that any thread has had. It never rises again: a thread that took it may still be there, and one
// that has raised it since costs the others a look at their own threshold, no more.
std::atomic<unsigned int> floorLevel{QZErrorLevel::Info};

void LowerTo(std::atomic<unsigned int>& value, unsigned int level) {
  unsigned int present = value.load();
  while (level < present && !value.compare_exchange_weak(present, level)) {
  }
}

}  // namespace

void LowerErrorFloor(unsigned int level) {
  LowerTo(floorLevel, level);
  LowerTo(errorGate, level);
}

void CloseErrorGate(bool close) {
  if (!close) {
    errorGate.store(0);
    return;
  }
  // The second look finds a floor that another thread has lowered between the first one and the store.
  errorGate.store(floorLevel.load());
  LowerTo(errorGate, floorLevel.load());
}

}  // namespace QZSystem
