#include "qz/platform/syscalls_impl.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <mutex>

namespace QZPlatform::SystemCalls {

namespace {

std::atomic<Hook*> installed{nullptr};
std::mutex scheduleMutex;  // guards the counters of the schedules, which tests alone make

Fault ask(Call call) {
  Hook* const hook = installed.load(std::memory_order_acquire);
  return hook ? hook->On(call) : Fault::None();
}

// Makes the call unless a fault stands in its way.
template <class F>
auto make(Call call, F f) -> decltype(f()) {
  const Fault fault = ask(call);
  if (fault.kind != Fault::Kind::Failure) return f();
  errno = fault.number;
  return -1;
}

template <class F>
auto makeUninterrupted(Call call, F f) -> decltype(f()) {
  for (;;) {
    const auto result = make(call, f);
    if (result != -1 || errno != EINTR) return result;
  }
}

// The same for calls that return their error number.
template <class F>
int makeNumbered(Call call, F f) {
  const Fault fault = ask(call);
  return fault.kind == Fault::Kind::Failure ? fault.number : f();
}

// Makes a call that moves bytes, as many times as signals interrupt it or a nonblocking descriptor isn't ready.
template <class F>
ssize_t move(Call call, int descriptor, short readiness, std::size_t count, F f) {
  for (;;) {
    const Fault fault = ask(call);
    if (fault.kind == Fault::Kind::Shortening && count > fault.most) count = fault.most;
    if (fault.kind != Fault::Kind::Failure) {
      const ssize_t moved = f(count);
      if (moved >= 0) return moved;
    } else {
      errno = fault.number;
    }
    if (errno == EAGAIN) {
      pollfd waiting = {descriptor, readiness, 0};
      if (::poll(&waiting, 1, -1) >= 0) continue;
    }
    if (errno != EINTR) return -1;
  }
}

}  // namespace

Hook::~Hook() = default;

Fault Fault::Interrupt() { return Fail(EINTR); }

Hook* SetHook(Hook* hook) { return installed.exchange(hook, std::memory_order_acq_rel); }

ScheduledFault::ScheduledFault(Call callKind, unsigned long which, Fault fault, bool always)
    : kind(callKind), nth(which), what(fault), forGood(always), before(SetHook(this)) {}

ScheduledFault::~ScheduledFault() { SetHook(before); }

Fault ScheduledFault::On(Call call) {
  if (kind != Call::Any && call != kind) return Fault::None();
  const std::lock_guard<std::mutex> lock(scheduleMutex);
  ++seen;
  return nth != 0 && (seen == nth || (forGood && seen > nth)) ? what : Fault::None();
}

unsigned long ScheduledFault::Count() const {
  const std::lock_guard<std::mutex> lock(scheduleMutex);
  return seen;
}

int Open(const char* path, int flags, mode_t mode) {
  return makeUninterrupted(Call::Open, [&] { return ::open(path, flags | O_CLOEXEC, mode); });
}

// The descriptor is gone also when a signal interrupts the call; to repeat it could close somebody else's.
int Close(int descriptor) {
  const int result = make(Call::Close, [&] { return ::close(descriptor); });
  return result == -1 && errno == EINTR ? 0 : result;
}

ssize_t Read(int descriptor, void* bytes, std::size_t count) {
  return move(Call::Read, descriptor, POLLIN, count, [&](std::size_t n) { return ::read(descriptor, bytes, n); });
}

std::size_t Write(int descriptor, const void* bytes, std::size_t count) {
  const char* const from = static_cast<const char*>(bytes);
  std::size_t done = 0;
  while (done != count) {
    const ssize_t moved = move(Call::Write, descriptor, POLLOUT, count - done,
                               [&](std::size_t n) { return ::write(descriptor, from + done, n); });
    if (moved < 0) break;
    if (moved == 0) {  // no progress and no reason
      errno = EIO;
      break;
    }
    done += static_cast<std::size_t>(moved);
  }
  return done;
}

off_t Seek(int descriptor, off_t offset, int whence) {
  return make(Call::Seek, [&] { return ::lseek(descriptor, offset, whence); });
}

int Status(int descriptor, struct stat* status) {
  return makeUninterrupted(Call::Status, [&] { return ::fstat(descriptor, status); });
}

int Status(const char* path, struct stat* status) {
  return makeUninterrupted(Call::Status, [&] { return ::stat(path, status); });
}

int Rename(const char* from, const char* to) {
  return makeUninterrupted(Call::Rename, [&] { return ::rename(from, to); });
}

int Remove(const char* path) {
  return makeUninterrupted(Call::Remove, [&] { return ::unlink(path); });
}

int SetPermissions(int descriptor, mode_t mode) {
  return makeUninterrupted(Call::Permissions, [&] { return ::fchmod(descriptor, mode); });
}

int SetOwner(int descriptor, uid_t user, gid_t group) {
  return makeUninterrupted(Call::Permissions, [&] { return ::fchown(descriptor, user, group); });
}

int MayWrite(const char* path) {
  return makeUninterrupted(Call::Status, [&] { return ::faccessat(AT_FDCWD, path, W_OK, AT_EACCESS); });
}

bool ReadLink(const char* path, std::string& to) {
  char room[PATH_MAX];
  const ssize_t length = make(Call::Link, [&] { return ::readlink(path, room, sizeof room); });
  if (length < 0) return false;
  to.assign(room, static_cast<std::size_t>(length));
  return true;
}

bool IsTerminal(int descriptor) {
  return makeNumbered(Call::Terminal, [&] { return ::isatty(descriptor) == 1 ? 0 : ENOTTY; }) == 0;
}

unsigned TerminalColumns(int descriptor) {
  winsize size = {};
  const int result = make(Call::Terminal, [&] { return ::ioctl(descriptor, TIOCGWINSZ, &size); });
  return result == 0 ? size.ws_col : 0;
}

int GetTimeOfDay(timeval* now) {
  return make(Call::Clock, [&] { return ::gettimeofday(now, nullptr); });
}

std::time_t Time() {
  return make(Call::Clock, [] { return std::time(nullptr); });
}

std::tm* LocalTime(const std::time_t* time, std::tm* result) {
  const Fault fault = ask(Call::LocalTime);
  if (fault.kind != Fault::Kind::Failure) return ::localtime_r(time, result);
  errno = fault.number;
  return nullptr;
}

std::clock_t ProcessorTime() {
  return make(Call::Clock, [] { return std::clock(); });
}

int ReadClock(clockid_t clock, timespec* now) {
  return make(Call::Clock, [&] { return ::clock_gettime(clock, now); });
}

int CreateThread(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*), void* argument) {
  return makeNumbered(Call::Thread, [&] { return ::pthread_create(thread, attributes, run, argument); });
}

int StackBounds(void** lowest, std::size_t* size) {
  return makeNumbered(Call::Machine, [&] {
    pthread_attr_t attributes;
    int failure = ::pthread_getattr_np(::pthread_self(), &attributes);
    if (failure) return failure;
    failure = ::pthread_attr_getstack(&attributes, lowest, size);
    ::pthread_attr_destroy(&attributes);
    return failure;
  });
}

unsigned Processors() {
  cpu_set_t set;
  CPU_ZERO(&set);
  if (make(Call::Machine, [&] { return ::sched_getaffinity(0, sizeof set, &set); }) == 0)
    return static_cast<unsigned>(CPU_COUNT(&set));
  const long online = make(Call::Machine, [] { return ::sysconf(_SC_NPROCESSORS_ONLN); });
  return online > 0 ? static_cast<unsigned>(online) : 0;
}

}  // namespace QZPlatform::SystemCalls
