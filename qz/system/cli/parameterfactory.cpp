#include "qz/system/cli/parameterfactory.h"

#include <new>

#include "qz/system/cli/parameter_concrete.h"

namespace QZSystem {

template class QZSimpleFactory<std::string, QZParameter>;

namespace {

using ParameterFactory = QZSimpleFactory<std::string, QZParameter>;

template <class Kind>
void registerKind(ParameterFactory& factory) {
  factory.Register(Kind::StaticClassID(), QZFactoryWorker<QZParameter, Kind>());
}

// The factory of the process stands in a room of its own and never ends.
ParameterFactory& makeFactory() {
  alignas(ParameterFactory) static unsigned char room[sizeof(ParameterFactory)];
  ParameterFactory& factory = *new (room) ParameterFactory;
  registerKind<QZFileParameter>(factory);
  registerKind<QZParamFileParameter>(factory);
  registerKind<QZStringParameter>(factory);
  registerKind<QZDoubleParameter>(factory);
  registerKind<QZFloatParameter>(factory);
  registerKind<QZBoolParameter>(factory);
  registerKind<QZIntParameter>(factory);
  registerKind<QZUIntParameter>(factory);
  registerKind<QZConstParameter>(factory);
  registerKind<QZStringExtParameter>(factory);
  return factory;
}

// Only its workers go at exit, so that a thread or a destructor that comes later finds an empty factory and no ruin.
struct WorkersEnd {
  ParameterFactory& factory;
  ~WorkersEnd() { factory.Clear(); }
};

}  // namespace

ParameterFactory& QZParameterFactory() {
  static ParameterFactory& factory = makeFactory();
  static const WorkersEnd end{factory};
  return factory;
}

}  // namespace QZSystem
