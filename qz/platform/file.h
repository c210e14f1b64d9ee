#pragma once

#include <string>

namespace QZPlatform {

/// Questions about a file by its path.
///
///     QZFile table("nuclides.csv");
///     if (table.Exists()) total += table.Size();
///
/// Const operations may run in parallel; a change needs exclusive access. The file is never opened; each call asks
/// the system anew, and links are followed.
class QZFile {
 public:
  explicit QZFile(const std::string& path);

  /// True when the path names an existing file of any kind, a directory included.
  [[nodiscard]] bool Exists() const;

  /// The size in bytes of a regular file; 0 for an empty file, for one that doesn't exist and for any other kind.
  [[nodiscard]] unsigned long Size() const;

 private:
  std::string path;
};

/// The file-name part of a path: what follows the last separator, the whole path if there is none, and so "" when
/// the path ends in one.
[[nodiscard]] std::string QZFileDetermineName(const std::string& path);

}  // namespace QZPlatform
