#include "qz/platform/filereplace.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <vector>

#include "qz/platform/lock_impl.h"
#include "qz/platform/syscalls_impl.h"

namespace QZPlatform {

namespace {

constexpr int MostLinks = 40;   // as many as the system itself follows
constexpr int MostTries = 100;  // at a name that nobody has

std::string directoryOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

// Where a link leads, also when nothing is there yet. False for a chain that doesn't end.
bool followLinks(std::string& path) {
  std::string to;
  for (int n = 0; n != MostLinks; ++n) {
    if (!SystemCalls::ReadLink(path.c_str(), to)) return true;
    path = to.empty() || to[0] == '/' ? to : directoryOf(path) + to;
  }
  errno = ELOOP;
  return false;
}

std::string nameBeside(const std::string& target) {
  static std::atomic<unsigned long> count{0};
  timespec now = {};
  SystemCalls::ReadClock(CLOCK_MONOTONIC, &now);
  return directoryOf(target) + ".qz" + std::to_string(::getpid()) + '-' + std::to_string(++count) + '-' +
         std::to_string(now.tv_nsec) + ".tmp";
}

// Gives a file that was just made the owner and the permissions of the one whose place it takes. The owner changes
// only where the process may do that. Some file systems have one set of permissions for all files; that is no
// failure as long as it is the wanted one.
bool takePermissions(int descriptor, const struct stat& old) {
  struct stat made = {};
  if (SystemCalls::Status(descriptor, &made) != 0) return false;
  if ((made.st_uid != old.st_uid || made.st_gid != old.st_gid) &&
      SystemCalls::SetOwner(descriptor, old.st_uid, old.st_gid) != 0)
    static_cast<void>(SystemCalls::SetOwner(descriptor, static_cast<uid_t>(-1), old.st_gid));
  const mode_t wanted = old.st_mode & 0777;
  return SystemCalls::SetPermissions(descriptor, wanted) == 0 || (made.st_mode & 0777) == wanted;
}

}  // namespace

// The replacements that are under way. A message that ends the process unwinds no stack, so what they leave is
// removed at exit.
struct ReplacementsUnderWay {
  static ReplacementsUnderWay& Get() {
    static ReplacementsUnderWay& all = *new ReplacementsUnderWay;
    return all;
  }

  static void RemoveAll() {
    ReplacementsUnderWay& all = Get();
    const ForkSafeLock lock(all.mutex);
    for (QZFileReplacement* each : all.list) {
      each->finished = true;
      each->removeTemporary();
    }
    all.list.clear();
  }

  void Add(QZFileReplacement* replacement) {
    const ForkSafeLock lock(mutex);
    list.push_back(replacement);
    static const int registered = std::atexit(&RemoveAll);
    static_cast<void>(registered);
  }

  void Drop(QZFileReplacement* replacement) {
    const ForkSafeLock lock(mutex);
    list.erase(std::remove(list.begin(), list.end(), replacement), list.end());
  }

  ForkSafeMutex mutex{LockRank::Platform};
  std::vector<QZFileReplacement*> list;
};

QZFileReplacement::QZFileReplacement(const std::string& path) : target(path), process(::getpid()) {
  ReplacementsUnderWay::Get().Add(this);
  try {
    if (!begin()) errorNumber = out.failed() ? out.error() : errno;
  } catch (...) {
    // Nobody destroys what wasn't made.
    Abandon();
    ReplacementsUnderWay::Get().Drop(this);
    throw;
  }
}

QZFileReplacement::~QZFileReplacement() {
  Abandon();
  ReplacementsUnderWay::Get().Drop(this);
}

bool QZFileReplacement::begin() {
  if (target.find('\0') != std::string::npos) {
    errno = ENOENT;
    return false;
  }
  if (!followLinks(target)) return false;
  struct stat old = {};
  const bool replaces = SystemCalls::Status(target.c_str(), &old) == 0;
  if (!replaces && errno != ENOENT) return false;
  if (replaces && !S_ISREG(old.st_mode)) {
    out.open(target);
    return !out.failed();
  }
  if (replaces && SystemCalls::MayWrite(target.c_str()) != 0) return false;
  return createBeside(replaces ? &old : nullptr);
}

bool QZFileReplacement::createBeside(const struct stat* old) {
  int made = -1;
  for (int n = 0; made < 0; ++n) {
    temporary = nameBeside(target);
    made = SystemCalls::Open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL, old ? 0600 : 0666);
    if (made < 0 && (errno != EEXIST || n == MostTries)) {
      temporary.clear();
      return false;
    }
  }
  out.attach(made, true);
  if (!old || takePermissions(made, *old)) return true;
  const int failure = errno;
  out.close();
  removeTemporary();
  errno = failure;
  return false;
}

bool QZFileReplacement::Commit() {
  if (finished) return committed;
  finished = true;
  committed = out.close() && errorNumber == 0;
  if (committed && !temporary.empty() && SystemCalls::Rename(temporary.c_str(), target.c_str()) != 0) {
    errorNumber = errno;
    committed = false;
  }
  if (committed) temporary.clear();
  removeTemporary();
  return committed;
}

void QZFileReplacement::Abandon() {
  if (finished) return;
  finished = true;
  out.close();
  removeTemporary();
}

// A child of a fork has a copy of the object, but the file is its parent's.
void QZFileReplacement::removeTemporary() {
  if (!temporary.empty() && process == ::getpid()) SystemCalls::Remove(temporary.c_str());
  temporary.clear();
}

}  // namespace QZPlatform
