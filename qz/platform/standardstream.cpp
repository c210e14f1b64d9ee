#include "qz/platform/standardstream.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <new>

#include "qz/platform/lock_impl.h"
#include "qz/platform/syscalls_impl.h"

namespace QZPlatform {

namespace {

// Line-wise, the base class sees a buffer without room and hands every write on; `held` bytes wait in `room` for the
// line end. Fully buffered, `room` is the buffer of the base class.
class StandardStream final : public qzostream {
 public:
  constexpr StandardStream(int standardDescriptor, unsigned char* ownRoom)
      : qzostream(ownRoom), descriptor(standardDescriptor), room(ownRoom) {
    atEnd = false;
  }

  // From here on `room` belongs to the base class, so that nothing may wait in it here.
  void BufferFully() {
    if (eof() || !_qzflush()) return;
    end = start + BufferSize;
    waiting = false;
  }

  // What is written from now on has nobody left to push it out. A thread that runs on may be writing to standard error.
  void WriteAtOnce() {
    flush();
    if (!eof() && end != start) end = start;
    const ForkSafeLock lock(lineMutex());
    waiting = false;
  }

  unsigned long _qzwrite(const unsigned char* bytes, unsigned long count) override {
    if (bytes == room) return push(bytes, count);
    const ForkSafeLock lock(lineMutex());
    const bool wait = waiting && count <= BufferSize - held && !std::memchr(bytes, '\n', count);
    if (wait || (held && count <= BufferSize - held)) {
      std::memcpy(room + held, bytes, count);
      held += count;
      return wait || pushHeld() ? count : 0;
    }
    return pushHeld() ? push(bytes, count) : 0;
  }

  bool _qzflush() override {
    const ForkSafeLock lock(lineMutex());
    return pushHeld();
  }

 private:
  // Guards the held bytes of both streams, for the threads that run on while the last user flushes them. Never
  // destroyed.
  static ForkSafeMutex& lineMutex() {
    alignas(ForkSafeMutex) static unsigned char place[sizeof(ForkSafeMutex)];
    static ForkSafeMutex& mutex = *new (place) ForkSafeMutex(LockRank::Platform);
    return mutex;
  }

  bool pushHeld() {
    const unsigned long going = held;
    held = 0;
    return push(room, going) == going;
  }

  unsigned long push(const unsigned char* bytes, unsigned long count) {
    const unsigned long taken = SystemCalls::Write(descriptor, bytes, count);
    if (taken != count) setError(errno);
    return taken;
  }

  int descriptor;
  unsigned char* room;
  unsigned long held = 0;
  bool waiting = true;
};

// Keeps a stream from being destroyed: it is there before the first initialiser and after the last destructor.
union Lasting {
  constexpr Lasting(int descriptor, unsigned char* room) : stream(descriptor, room) {}
  ~Lasting() {}
  StandardStream stream;
};

constexpr unsigned long RoomSize = 32768;

unsigned char errorRoom[RoomSize];
unsigned char outputRoom[RoomSize];
Lasting standardError(STDERR_FILENO, errorRoom);
Lasting standardOutput(STDOUT_FILENO, outputRoom);
std::atomic<long> users{0};

}  // namespace

qzostream& qzerr = standardError.stream;
qzostream& qzout = standardOutput.stream;

qzstandardstreamuser::qzstandardstreamuser() {
  if (users.fetch_add(1) == 0 && !SystemCalls::IsTerminal(STDOUT_FILENO)) standardOutput.stream.BufferFully();
}

qzstandardstreamuser::~qzstandardstreamuser() {
  if (users.fetch_sub(1) != 1) return;
  standardOutput.stream.WriteAtOnce();
  standardError.stream.WriteAtOnce();
}

}  // namespace QZPlatform
