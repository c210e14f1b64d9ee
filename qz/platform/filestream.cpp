#include "qz/platform/filestream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "qz/platform/syscalls_impl.h"

namespace QZPlatform {

namespace {

constexpr unsigned long NoSize = ~0UL;

}  // namespace

void qzifstream::attach(int opened, bool owned) {
  close();
  errorNumber = 0;
  const bool taken = begin(opened, owned);
  const off_t position = taken ? SystemCalls::Seek(opened, 0, SEEK_CUR) : -1;
  resetBuffer(position > 0 ? static_cast<unsigned long>(position) : 0, !taken);
}

bool qzifstream::_qzopen(const char* name) {
  const int opened = SystemCalls::Open(name, O_RDONLY | O_NOCTTY);
  if (opened < 0) {
    setError(errno);
    return false;
  }
  return begin(opened, true);
}

// A directory can be opened but not read, so it is refused here, where the caller looks. The size of a regular file
// is taken now; 0 doesn't count yet, since files that the system makes up as they are read say it too.
bool qzifstream::begin(int opened, bool owned) {
  struct stat status = {};
  int failure = 0;
  if (SystemCalls::Status(opened, &status) != 0)
    failure = errno;
  else if (S_ISDIR(status.st_mode))
    failure = EISDIR;
  if (failure) {
    setError(failure);
    if (owned) SystemCalls::Close(opened);
    return false;
  }
  descriptor = opened;
  own = owned;
  regular = S_ISREG(status.st_mode);
  sizeKnown = regular && status.st_size > 0;
  total = sizeKnown ? static_cast<unsigned long>(status.st_size) : 0;
  return true;
}

void qzifstream::_qzclose() {
  if (descriptor >= 0 && own) SystemCalls::Close(descriptor);
  descriptor = -1;
  regular = false;
}

bool qzifstream::_qzfill() {
  current = end;
  if (atEnd || descriptor < 0) return qzistream::_qzfill();
  const ssize_t got = SystemCalls::Read(descriptor, buffer, BufferSize);
  if (got <= 0) {
    if (got < 0) setError(errno);
    return qzistream::_qzfill();
  }
  resetBuffer(offset + static_cast<unsigned long>(end - start), false);
  end = start + got;
  atEnd = sizeKnown && offset + static_cast<unsigned long>(got) >= total;
  return true;
}

// Asked while the size isn't known: for a regular file that says 0, the first read tells whether it is empty.
unsigned long qzifstream::_qzsize() {
  if (sizeKnown || descriptor < 0) return total;
  const bool delivers = !regular || offset != 0 || start != end || peek() >= 0;
  return delivers ? NoSize : 0;
}

bool qzifstream::_qzseek(long position) {
  if (descriptor < 0 || position < 0) return false;
  const unsigned long to = static_cast<unsigned long>(position);
  if (to == _qztell()) {
    atEnd = sizeKnown && to == total;  // what has no size may have more by now
    return true;
  }
  if (to > size() || SystemCalls::Seek(descriptor, position, SEEK_SET) != position) return false;
  resetBuffer(to, sizeKnown && to == total);
  return true;
}

void qzofstream::attach(int opened, bool owned) {
  close();
  errorNumber = 0;
  offset = 0;
  if (opened < 0) {
    setError(EBADF);
    return;
  }
  descriptor = opened;
  own = owned;
  beginWriting();
}

bool qzofstream::_qzopen(const char* name) {
  const int opened = SystemCalls::Open(name, O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY, 0666);
  if (opened < 0) {
    setError(errno);
    return false;
  }
  descriptor = opened;
  own = true;
  return true;
}

// Some systems tell of a full disk only here.
bool qzofstream::_qzclose() {
  const int closing = descriptor;
  descriptor = -1;
  if (closing < 0 || !own || SystemCalls::Close(closing) == 0) return true;
  setError(errno);
  return false;
}

unsigned long qzofstream::_qzwrite(const unsigned char* bytes, unsigned long count) {
  const unsigned long taken = SystemCalls::Write(descriptor, bytes, count);
  if (taken != count) setError(errno);
  return taken;
}

}  // namespace QZPlatform
