#include "qz/platform/wrapperstream.h"

#include <algorithm>
#include <cstring>

namespace QZPlatform {

qziwrapperstream::~qziwrapperstream() { qziwrapperstream::_qzclear(); }

// A source at the address of the attached one is the same with the unread bytes still good, unless all was read or it
// doesn't stand behind them any more: then it was opened anew, moved, or is another one in its place.
void qziwrapperstream::set(qzistream* newSource, bool own) {
  if (newSource != attached) {
    clear();
    _qzset(newSource);
  } else if (attached && (eof() || attached->tell() != offset + static_cast<unsigned long>(end - start))) {
    _qzset(attached);
  }
  owned = own && attached;
}

void qziwrapperstream::clear() { _qzclear(); }

void qziwrapperstream::_qzclear() {
  if (owned) delete attached;
  attached = nullptr;
  owned = false;
  resetBuffer(0, true);
}

void qziwrapperstream::_qzset(qzistream* newSource) {
  attached = newSource;
  errorNumber = 0;
  if (attached) resetBuffer(attached->tell(), attached->eof());
}

bool qziwrapperstream::_qzseek(long position) {
  if (!attached || !attached->seek(position)) return false;
  resetBuffer(attached->tell(), attached->eof());
  return true;
}

unsigned long qziwrapperstream::_qzsize() { return attached ? attached->size() : 0; }

void qziwrapperstream::_qzclose() {
  if (attached) attached->close();
}

bool qziwrapperstream::_qzfill() {
  current = end;
  if (!attached) return qzistream::_qzfill();
  const std::string_view ready = attached->buffered().substr(0, BufferSize);
  if (ready.empty()) {
    if (attached->failed()) setError(attached->error());
    return qzistream::_qzfill();
  }
  resetBuffer(offset + static_cast<unsigned long>(end - start), false);
  std::memcpy(start, ready.data(), ready.size());
  end = start + ready.size();
  attached->skip(static_cast<long>(ready.size()));
  atEnd = attached->eof();
  return true;
}

}  // namespace QZPlatform
