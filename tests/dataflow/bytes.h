#pragma once

#include <string>
#include <vector>

namespace QZDataFlow {

/// Bytes as a test writes them down: two capital hexadecimal digits each, with blanks between.
inline std::string Hex(const std::vector<unsigned char>& bytes) {
  const char digits[] = "0123456789ABCDEF";
  std::string text;
  for (const unsigned char byte : bytes) {
    if (!text.empty()) text += ' ';
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

inline std::vector<unsigned char> FromHex(const std::string& text) {
  std::vector<unsigned char> bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 3) {
    bytes.push_back(static_cast<unsigned char>(std::stoi(text.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

}  // namespace QZDataFlow
