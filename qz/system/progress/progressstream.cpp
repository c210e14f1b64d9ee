#include "qz/system/progress/progressstream.h"

namespace QZSystem {

namespace {

constexpr long bufferSize = 32768;
constexpr unsigned long noSize = ~0UL;
// Figures go out in units of 256 bytes: sizes up to 1 TiB fit the counts of a tracer.
constexpr int unitBits = 8;

}  // namespace

qzprogressstream::qzprogressstream(qzistream* source, bool ownsSource, QZTracerBase* newTracer, bool ownsNewTracer) {
  set(source, ownsSource);
  SetTracer(newTracer, ownsNewTracer);
}

qzprogressstream::~qzprogressstream() { DropTracer(); }

void qzprogressstream::SetTracer(QZTracerBase* newTracer, bool owns) {
  if (newTracer != tracer) DropTracer();
  tracer = newTracer;
  ownsTracer = owns;
}

void qzprogressstream::DropTracer() {
  if (ownsTracer) delete tracer;
  tracer = nullptr;
  ownsTracer = false;
}

// The position that is reported is the one before this refill. Without an inner stream it grows by whole buffers,
// whatever a refill brings; a seek moves it the other way, and arithmetic on unsigned numbers keeps any seek defined.
bool qzprogressstream::_qzfill() {
  if (!qziwrapperstream::_qzfill()) return false;
  if (tracer && position != 0 && total != noSize) {
    tracer->SetProgress(static_cast<unsigned int>(position >> unitBits),
                        static_cast<unsigned int>(static_cast<long>(total) >> unitBits));
  }
  if (!inner) {
    position = static_cast<long>(static_cast<unsigned long>(position) + static_cast<unsigned long>(bufferSize));
  } else if (inner->source()) {
    position = static_cast<long>(inner->source()->tell());
  }
  return true;
}

// What is kept of a source goes with it: a former one may be deleted already.
void qzprogressstream::_qzset(qzistream* newSource) {
  qziwrapperstream::_qzset(newSource);
  position = 0;
  inner = dynamic_cast<qziwrapperstream*>(newSource);
  qzistream* const measured = inner ? inner->source() : newSource;
  total = measured ? measured->size() : 0;
}

bool qzprogressstream::_qzseek(long n) {
  const long before = position;
  position = static_cast<long>(static_cast<unsigned long>(position) - static_cast<unsigned long>(n));
  const bool moved = qziwrapperstream::_qzseek(n);
  if (!moved) position = before;
  return moved;
}

}  // namespace QZSystem
