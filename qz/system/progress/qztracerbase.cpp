#include "qz/system/progress/qztracerbase.h"

namespace QZSystem {

namespace {

// A static object without a destructor, so that tracers passed around late in the exit of the process still are whole.
union Immortal {
  constexpr Immortal() : tracer() {}
  ~Immortal() {}

  QZNullTracer tracer;
};

Immortal noTracer;
Immortal nullTracer;

}  // namespace

QZNullTracer& QZNoTracer = noTracer.tracer;
QZNullTracer& NullTracer = nullTracer.tracer;

}  // namespace QZSystem
