#include "qz/platform/file.h"

#include "qz/platform/syscalls_impl.h"

namespace QZPlatform {

QZFile::QZFile(const std::string& name) : path(name) {}

bool QZFile::Exists() const {
  struct stat status = {};
  return path.find('\0') == std::string::npos && SystemCalls::Status(path.c_str(), &status) == 0;
}

unsigned long QZFile::Size() const {
  struct stat status = {};
  if (path.find('\0') != std::string::npos || SystemCalls::Status(path.c_str(), &status) != 0) return 0;
  return S_ISREG(status.st_mode) ? static_cast<unsigned long>(status.st_size) : 0;
}

std::string QZFileDetermineName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

}  // namespace QZPlatform
