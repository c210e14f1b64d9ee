#pragma once

#include <pthread.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/types.h>

#include <cstddef>
#include <ctime>
#include <string>

/// Every call of the operating system and every look at a clock that the toolkit makes goes through here, so that a
/// test can let the n-th one fail, fall short or be interrupted.
///
///     SystemCalls::ScheduledFault fault(SystemCalls::Call::Write, 3, SystemCalls::Fault::Fail(ENOSPC));
///     EXPECT_FALSE(writeTable(out));
///
/// Safe from any thread. A hook is called from all of them. Where a result tells of failure, `errno` says why. An
/// interrupted call is repeated, and a descriptor that would block is waited for, before a caller sees anything.
namespace QZPlatform::SystemCalls {

/// The kinds of call, as a hook is told of them.
enum class Call {
  Open,
  Close,
  Read,
  Write,
  Seek,
  Status,
  Rename,
  Remove,
  Permissions,
  Link,
  Terminal,
  Clock,
  LocalTime,
  Thread,
  Machine,
  Any,  // in a schedule: whichever comes
};

/// What is done to a call.
struct Fault {
  enum class Kind { None, Failure, Shortening };

  static constexpr Fault None() { return {}; }
  /// The call isn't made; it fails with this `errno`.
  static constexpr Fault Fail(int number) { return {Kind::Failure, number, 0}; }
  /// The call isn't made; a signal has interrupted it.
  static Fault Interrupt();
  /// A read or a write moves at most so many bytes; any other call is made as it is. A read of 0 bytes is the end.
  static constexpr Fault Shorten(std::size_t most) { return {Kind::Shortening, 0, most}; }

  Kind kind = Kind::None;
  int number = 0;
  std::size_t most = 0;
};

/// Decides about each call before it is made.
class Hook {
 public:
  virtual ~Hook();
  virtual Fault On(Call call) = 0;
};

/// Installs a hook, null for none, and returns the one before. The caller keeps both.
Hook* SetHook(Hook* hook);

/// Lets the n-th call of a kind, counted from 1, meet a fault while this object lives; with `forGood` each one after
/// it too. With n = 0 it only counts.
class ScheduledFault final : public Hook {
 public:
  ScheduledFault(Call kind, unsigned long nth, Fault what, bool forGood = false);
  ~ScheduledFault() override;
  ScheduledFault(const ScheduledFault&) = delete;
  ScheduledFault& operator=(const ScheduledFault&) = delete;

  Fault On(Call call) override;

  /// How many calls of the kind there have been.
  unsigned long Count() const;

 private:
  Call kind;
  unsigned long nth;
  Fault what;
  bool forGood;
  unsigned long seen = 0;
  Hook* before;
};

// Files. A descriptor is never inherited by a program that is started.

int Open(const char* path, int flags, mode_t mode = 0);
int Close(int descriptor);

/// At least one byte, or 0 at the end, or -1.
ssize_t Read(int descriptor, void* bytes, std::size_t count);

/// Writes on until all is written or the system refuses; returns what was written, with `errno` set if that is less
/// than `count`.
std::size_t Write(int descriptor, const void* bytes, std::size_t count);

off_t Seek(int descriptor, off_t offset, int whence);
int Status(int descriptor, struct stat* status);
int Status(const char* path, struct stat* status);
int Rename(const char* from, const char* to);
int Remove(const char* path);
int SetPermissions(int descriptor, mode_t mode);
int SetOwner(int descriptor, uid_t user, gid_t group);

/// 0 if the process may write to the file.
int MayWrite(const char* path);

/// True if the path is a symbolic link; `to` is what it says, as it stands.
bool ReadLink(const char* path, std::string& to);

bool IsTerminal(int descriptor);

/// The columns of a terminal, 0 if the descriptor isn't one or doesn't tell.
unsigned TerminalColumns(int descriptor);

// Clocks.

int GetTimeOfDay(timeval* now);

/// Seconds since 1970-01-01 00:00 UTC, -1 on failure.
std::time_t Time();

/// The broken-down local time, null on failure.
std::tm* LocalTime(const std::time_t* time, std::tm* result);

/// The processor time of the process in CLOCKS_PER_SEC, -1 on failure.
std::clock_t ProcessorTime();

/// `clock_gettime`, for intervals with CLOCK_MONOTONIC.
int ReadClock(clockid_t clock, timespec* now);

// Threads and the machine. These give an error number, not `errno`, as the calls do.

int CreateThread(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*), void* argument);

/// The lowest address and the size of the calling thread's stack.
int StackBounds(void** lowest, std::size_t* size);

/// The number of processors that this process may run on, 0 on failure.
unsigned Processors();

}  // namespace QZPlatform::SystemCalls
