#include "qz/system/cli/parameterfactory.h"

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

ParameterFactory& QZParameterFactory() { return TheOnly<StandardFactory>(); }

}  // namespace QZSystem
