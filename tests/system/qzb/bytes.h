#pragma once

#include <string>
#include <string_view>

#include "qz/platform/memorystream.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// Bytes as a test writes them down: two hexadecimal digits each, with blanks between, and texts in quotes.
///
///     Bytes("00 81 'n' 01 05 00 00 00")
inline std::string Bytes(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == '\'') {
      const std::size_t close = text.find('\'', i + 1);
      bytes += text.substr(i + 1, close - i - 1);
      i = close + 1;
    } else if (text[i] == ' ') {
      ++i;
    } else {
      bytes += static_cast<char>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16));
      i += 2;
    }
  }
  return bytes;
}

inline std::string Hex(std::string_view bytes) {
  const char digits[] = "0123456789ABCDEF";
  std::string text;
  for (const char byte : bytes) {
    if (!text.empty()) text += ' ';
    text += digits[static_cast<unsigned char>(byte) >> 4];
    text += digits[static_cast<unsigned char>(byte) & 15];
  }
  return text;
}

/// A stream over bytes that stand still.
class BytesIn : public qzisstream {
 public:
  explicit BytesIn(const std::string& bytes) { set(bytes.data(), bytes.size(), false); }
};

/// A stream without a size that gives a few bytes at a time, as a pipe does.
class PipeIn : public qzistream {
 public:
  PipeIn(std::string bytes, unsigned long step) : content(std::move(bytes)), chunk(step) { atEnd = false; }

  bool _qzfill() override {
    offset += static_cast<unsigned long>(end - start);
    const unsigned long count = std::min(chunk, content.size() - offset);
    content.copy(reinterpret_cast<char*>(buffer), count, offset);
    start = current = buffer;
    end = buffer + count;
    atEnd = count == 0;
    return count != 0;
  }
  unsigned long _qzsize() override { return ~0UL; }

 private:
  std::string content;
  unsigned long chunk;
};

}  // namespace QZSystem
