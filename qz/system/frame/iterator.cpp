#include "qz/system/frame/iterator.h"

#include "qz/system/frame/error.h"

namespace QZSystem {

namespace {

constexpr const char* emptyDereference = "Dereferencing empty iterator";

}  // namespace

void SendEmptyDereference() { QZThrow.Error(emptyDereference); }

}  // namespace QZSystem
