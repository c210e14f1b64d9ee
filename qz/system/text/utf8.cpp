#include "qz/system/text/utf8.h"

#include <cassert>

namespace QZSystem {

namespace {

// The characters of the bytes from 0x80 to 0x9F; 0 where Windows-1252 has none.
constexpr unsigned int Win1252[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

// What a lead byte says of its character: the bits that it holds itself, how many bytes follow, and the least value
// that takes so many.
struct Lead {
  unsigned int value;
  int following;
  unsigned int least;
};

bool ReadLead(unsigned int byte, Lead& lead) {
  if (byte < 0x80) {
    lead = {byte, 0, 0};
  } else if (byte < 0xC0 || byte > 0xF7) {
    return false;
  } else if (byte < 0xE0) {
    lead = {byte & 0x1F, 1, 0x80};
  } else if (byte < 0xF0) {
    lead = {byte & 0x0F, 2, 0x800};
  } else {
    lead = {byte & 0x07, 3, 0x10000};
  }
  return true;
}

bool IsCharacter(unsigned int value) {
  return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF) && value != 0xFFFE && value != 0xFFFF;
}

// Characters of two and three bytes; others don't occur here.
void Append(std::string& text, unsigned int character) {
  if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
  } else {
    text += static_cast<char>(0xE0 | character >> 12);
    text += static_cast<char>(0x80 | (character >> 6 & 0x3F));
  }
  text += static_cast<char>(0x80 | (character & 0x3F));
}

}  // namespace

// A NUL is no continuation, so that the walk never passes it.
bool QZIsValidUTF8(const unsigned char* text) {
  assert(text != nullptr);
  while (*text != 0) {
    Lead lead{};
    if (!ReadLead(*text++, lead)) return false;
    unsigned int value = lead.value;
    for (int i = 0; i < lead.following; ++i, ++text) {
      if ((*text & 0xC0) != 0x80) return false;
      value = value << 6 | (*text & 0x3FU);
    }
    if (value < lead.least || !IsCharacter(value)) return false;
  }
  return true;
}

std::string QZWin1252ToUTF8(const unsigned char* text) {
  assert(text != nullptr);
  std::string utf8;
  for (; *text != 0; ++text) {
    const unsigned int byte = *text;
    if (byte < 0x80) {
      utf8 += static_cast<char>(byte);
    } else {
      const unsigned int character = byte < 0xA0 ? Win1252[byte - 0x80] : 0;
      Append(utf8, character != 0 ? character : byte);
    }
  }
  return utf8;
}

std::string QZBytesToUTF8(const char* text) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(text);
  return QZIsValidUTF8(bytes) ? std::string(text) : QZWin1252ToUTF8(bytes);
}

}  // namespace QZSystem
