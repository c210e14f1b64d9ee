#include "qz/platform/streambase.h"

#include <new>

#include "qz/platform/bufferpool.h"

namespace QZPlatform {

// Made at first use in a place of its own and never destroyed: streams live in static objects too.
QZBoundedCache<32768, 32>& qzstream::GetBufferCache() {
  using Pool = QZBoundedCache<32768, 32>;
  alignas(Pool) static unsigned char place[sizeof(Pool)];
  static Pool& pool = *new (place) Pool;
  return pool;
}

void qzstream::ReleaseBuffer(unsigned char* buffer) { GetBufferCache().ReleaseBuffer(buffer); }

qzstream::qzstream() : qzstream(GetBufferCache().GetBuffer()) { buffer = start; }

qzstream::~qzstream() {
  if (buffer) ReleaseBuffer(buffer);
}

bool qzstream::_qzseek(long) { return false; }

unsigned long qzstream::_qzsize() { return 0; }

unsigned long qzstream::_qztell() const { return offset + static_cast<unsigned long>(current - start); }

}  // namespace QZPlatform
