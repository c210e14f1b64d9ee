#include "qz/system/cli/parameterfactory.h"

#include <atomic>
#include <cstdlib>

#include "qz/system/cli/parameter_concrete.h"
#include "qz/system/frame/theonly_impl.h"

namespace QZSystem {

template class QZSimpleFactory<std::string, QZParameter>;

namespace {

using ParameterFactory = QZSimpleFactory<std::string, QZParameter>;

template <class Kind>
void registerKind(ParameterFactory& factory) {
  factory.Register(Kind::StaticClassID(), QZFactoryWorker<QZParameter, Kind>());
}

struct StandardFactory : ParameterFactory {
  StandardFactory() {
    registerKind<QZFileParameter>(*this);
    registerKind<QZParamFileParameter>(*this);
    registerKind<QZStringParameter>(*this);
    registerKind<QZDoubleParameter>(*this);
    registerKind<QZFloatParameter>(*this);
    registerKind<QZBoolParameter>(*this);
    registerKind<QZIntParameter>(*this);
    registerKind<QZUIntParameter>(*this);
    registerKind<QZConstParameter>(*this);
    registerKind<QZStringExtParameter>(*this);
  }
};

}  // namespace

// The factory stays, so that a thread or a destructor that comes later finds an empty one and no ruin; its workers go
// at exit. A static of the language, which would do that too, has the child of a fork at that moment wait for ever.
ParameterFactory& QZParameterFactory() {
  static std::atomic<bool> ends{false};
  ParameterFactory& factory = TheOnly<StandardFactory>();
  if (!ends.load(std::memory_order_relaxed) && !ends.exchange(true)) {
    std::atexit([] { TheOnly<StandardFactory>().Clear(); });
  }
  return factory;
}

}  // namespace QZSystem
