#pragma once

#include <sys/types.h>

#include <string>

#include "qz/platform/filestream.h"

struct stat;

namespace QZPlatform {

/// Writes a file that appears under its name only when it is whole.
///
///     QZFileReplacement table("nuclides.csv");
///     writeTable(table.Out());
///     if (!table.Commit()) return table.Error();
///
/// One thread at a time. The text goes to a file beside the target, with the permissions of the old one or those of
/// a new one, and takes its place by one rename; a reader sees the old file or the new one, never a part. A link is
/// followed, so that it stays. A target that is there and no regular file (a device, a pipe) is written directly.
/// What was not committed when the object dies, or the process exits, is removed. Nothing is forced to the disk: the
/// order holds over a crash of the process, not of the machine.
class QZFileReplacement {
 public:
  /// Makes the file beside the target. Failure shows in `Error()` and as `Out().eof()`.
  explicit QZFileReplacement(const std::string& path);

  /// Abandons what was not committed.
  ~QZFileReplacement();
  QZFileReplacement(const QZFileReplacement&) = delete;
  QZFileReplacement& operator=(const QZFileReplacement&) = delete;

  /// Where the new content goes; open from construction to `Commit` or `Abandon`.
  [[nodiscard]] qzostream& Out() { return out; }

  /// Closes the file and, if every write has succeeded, moves it to its name. False if anything has failed; the old
  /// file is untouched then and the new one removed. A second call gives the result of the first.
  [[nodiscard]] bool Commit();

  /// Removes the new file; the old one stays. Does nothing after `Commit`.
  void Abandon();

  /// The `errno` of the first failure, 0 if there is none.
  [[nodiscard]] int Error() const { return errorNumber ? errorNumber : out.error(); }

 private:
  friend struct ReplacementsUnderWay;

  bool begin();
  bool createBeside(const struct stat* old);
  void removeTemporary();

  std::string target;     // with links followed
  std::string temporary;  // the file beside it; "" when the target is written directly, or nothing is left to remove
  pid_t process;          // that made it
  qzofstream out;
  int errorNumber = 0;
  bool finished = false;
  bool committed = false;
};

}  // namespace QZPlatform
