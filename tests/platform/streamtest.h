#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "qz/platform/stream.h"
#include "qz/platform/syscalls_impl.h"

/// What the tests of the streams share.
namespace streamtest {

using namespace QZPlatform;
using SystemCalls::Call;
using SystemCalls::Fault;
using SystemCalls::ScheduledFault;

/// Gives its text in blocks of so many bytes, tells its end only by a fill that fails, and can't seek: a source as
/// others write one.
class ChunkedStream : public qzistream {
 public:
  ChunkedStream(std::string content, unsigned long chunk) : text(std::move(content)), step(chunk) { atEnd = false; }

  bool _qzfill() override {
    ++fills;
    if (next == text.size()) return qzistream::_qzfill();
    const std::string block = text.substr(next, step);
    next += block.size();
    resetBuffer(offset + static_cast<unsigned long>(end - start), false);
    end = start + block.copy(reinterpret_cast<char*>(start), block.size());
    return true;
  }

  int fills = 0;

 private:
  std::string text;
  unsigned long step;
  unsigned long next = 0;
};

/// What a stream still holds.
inline std::string Rest(qzistream& in) {
  std::string text;
  in.read(text);
  return text;
}

/// A folder of its own for one test.
class Folder {
 public:
  Folder() { path = ::mkdtemp((testing::TempDir() + "/qzXXXXXX").data()); }
  ~Folder() {
    if (maker == ::getpid()) std::filesystem::remove_all(path);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string operator/(const std::string& name) const { return path + "/" + name; }

  /// Makes a file and returns its path.
  std::string File(const std::string& name, const std::string& content) const {
    std::ofstream(*this / name, std::ios::binary) << content;
    return *this / name;
  }

  std::string path;

 private:
  pid_t maker = ::getpid();  // a child of a fork leaves the folder alone
};

inline std::string Content(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// Bytes in which no two places look alike for long.
inline std::string Bytes(unsigned long count) {
  std::string bytes(count, '\0');
  unsigned long state = count + 1;
  for (char& byte : bytes)
    byte = static_cast<char>((state = state * 6364136223846793005UL + 1442695040888963407UL) >> 56);
  return bytes;
}

/// A pipe with both ends open.
class Pipe {
 public:
  Pipe() {
    if (::pipe(ends) != 0) ADD_FAILURE() << "no pipe";
  }
  ~Pipe() {
    for (const int end : ends) ::close(end);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int Read() const { return ends[0]; }
  int Write() const { return ends[1]; }
  void Give(const std::string& bytes) const {
    ASSERT_EQ(::write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  void Close(int end) { ::close(std::exchange(ends[end == ends[0] ? 0 : 1], -1)); }

 private:
  int ends[2] = {-1, -1};
};

}  // namespace streamtest
