#include "qz/system/text/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace QZSystem;

namespace {

bool IsValid(const std::string& text) { return QZIsValidUTF8(reinterpret_cast<const unsigned char*>(text.c_str())); }

// The encoding of RFC 3629, without regard to what may be encoded.
std::string Encoded(unsigned int value, int length) {
  const unsigned int leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
  std::string text(1, static_cast<char>(leads[length] | value >> (6 * (length - 1))));
  for (int i = length - 2; i >= 0; --i) text += static_cast<char>(0x80 | (value >> (6 * i) & 0x3F));
  return text;
}

}  // namespace

TEST(UTF8, EveryCharacterIsValidInItsShortestFormAlone) {
  for (unsigned int value = 1; value < 0x1FFFFF; ++value) {
    const int shortest = value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    const bool character = value < 0xD800 || (value > 0xDFFF && value < 0xFFFE) || (value > 0xFFFF && value < 0x110000);
    for (int length = shortest; length <= 4; ++length) {
      ASSERT_EQ(IsValid(Encoded(value, length)), character && length == shortest) << value << ' ' << length;
    }
    if (value > 0x3000 && value < 0x1FFF00) value += 13;
  }
}

TEST(UTF8, BrokenSequencesAreRejected) {
  const std::pair<const char*, bool> cases[] = {
      {"", true},
      {"plain", true},
      {"\xC3\xA9t\xC3\xA9", true},
      {"\xEF\xBF\xBD", true},
      {"\xF4\x8F\xBF\xBD", true},
      {"\xC0\x80", false},
      {"\xED\xA0\x80", false},
      {"\xEF\xBF\xBE", false},
      {"\xF4\x90\x80\x80", false},
      {"\x80", false},
      {"a\xBF", false},
      {"\xC3", false},
      {"\xC3z", false},
      {"\xE2\x82", false},
      {"\xE2\x82z", false},
      {"\xF0\x9F\x98", false},
      {"\xF8\x88\x80\x80\x80", false},
      {"\xFF", false},
      {"\xC3\xC3\xA9", false},
      {"ok \xF0\x9F\x98\x80 \xE9", false},
  };
  for (const auto& [text, valid] : cases) EXPECT_EQ(IsValid(text), valid) << text;
}

TEST(UTF8, Windows1252BecomesItsCharacters) {
  // The published table, 0x80 to 0x9F, with the controls U+0081, U+008D, U+008F, U+0090 and U+009D.
  std::string bytes;
  for (int byte = 0x80; byte < 0xA0; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(QZWin1252ToUTF8(reinterpret_cast<const unsigned char*>(bytes.c_str())),
            u8"€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008DŽ\u008F\u0090‘’“”•–—˜™š›œ\u009DžŸ");
  bytes.clear();
  std::string latin;
  for (unsigned int byte = 1; byte < 0x100; ++byte) {
    if (byte >= 0x80 && byte < 0xA0) continue;
    bytes += static_cast<char>(byte);
    latin += byte < 0x80 ? std::string(1, static_cast<char>(byte)) : Encoded(byte, 2);
  }
  EXPECT_EQ(QZWin1252ToUTF8(reinterpret_cast<const unsigned char*>(bytes.c_str())), latin);
}

TEST(UTF8, ValidTextStaysAsItIs) {
  EXPECT_EQ(QZBytesToUTF8("\xC3\xA9"), "\xC3\xA9");
  EXPECT_EQ(QZBytesToUTF8("\xC3\xA9 \x80"), "\xC3\x83\xC2\xA9 \xE2\x82\xAC");
  EXPECT_EQ(QZBytesToUTF8(""), "");
}
