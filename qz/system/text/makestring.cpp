#include "qz/system/text/makestring.h"

#include <cstdarg>
#include <new>
#include <stdexcept>

#include "qz/platform/numbertext.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

namespace {

constexpr char tooLong[] = "Unable to resize string memory: %lu (%lu)";
constexpr char noMemory[] = "Unable to allocate string memory (%lu)";
constexpr char tooLongForString[] = "Unable to resize string memory error (%lu)";
constexpr char otherFailure[] = "Unable to resize string memory error exception (%lu)";

constexpr unsigned long firstSize = 8192;
constexpr unsigned long largestSize = 0x7FFFFFFF;

// A buffer of the first size, doubled until it holds the text and its NUL; false after a warning.
bool grow(std::string& buffer, unsigned long length) {
  unsigned long size = firstSize;
  while (size <= length) size = size > largestSize / 2 ? largestSize : size * 2;
  try {
    buffer.resize(size);
    return true;
  } catch (const std::bad_alloc&) {
    QZThrow.Warning(noMemory, size);
  } catch (const std::length_error&) {
    QZThrow.Warning(tooLongForString, size);
  } catch (const std::exception&) {
    QZThrow.Warning(otherFailure, size);
  }
  return false;
}

// Most texts fit the small room, and the first attempt tells the length of the others. Only text that changes while
// it is printed takes more than two.
[[gnu::format(printf, 1, 0)]] std::string print(const char* format, std::va_list arguments) {
  char room[1024];
  std::va_list again;
  va_copy(again, arguments);
  int length = QZVSNPrintf(room, sizeof room, format, again);
  va_end(again);
  if (length >= 0 && static_cast<std::size_t>(length) < sizeof room) return {room, static_cast<std::size_t>(length)};
  std::string text;
  // A text that `printf` refuses, as it does one beyond 2 GiB, doesn't fit the largest buffer either.
  while (length >= 0 && static_cast<unsigned long>(length) < largestSize) {
    if (!grow(text, static_cast<unsigned long>(length))) return {};
    va_copy(again, arguments);
    length = QZVSNPrintf(text.data(), text.size(), format, again);
    va_end(again);
    if (length < 0 || static_cast<unsigned long>(length) >= text.size()) continue;
    text.resize(static_cast<std::size_t>(length));
    return text;
  }
  QZThrow.Warning(tooLong, largestSize, largestSize);
  return {};
}

}  // namespace

std::string QZMakeString(const char* format, ...) {
  if (format == nullptr) return {};
  std::va_list arguments;
  va_start(arguments, format);
  std::string text = print(format, arguments);
  va_end(arguments);
  return text;
}

int QZSNPrintf(char* buffer, unsigned long size, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int length = QZVSNPrintf(buffer, size, format, arguments);
  va_end(arguments);
  return length;
}

}  // namespace QZSystem
