#include "qz/platform/binarydump.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace QZPlatform;

namespace {

using Texts = std::vector<std::string>;

std::string operator""_b(const char* text, std::size_t size) { return {text, size}; }

const std::string two = "\2\0\0\0\1\0\0\0a\2\0\0\0\0c"_b;
const std::string twoSwapped = "\0\0\0\2\0\0\0\1a\0\0\0\2\0c"_b;

void ExpectRead(unsigned int head, const std::string& bytes, const Texts& texts, unsigned long used,
                unsigned int status) {
  SCOPED_TRACE(testing::PrintToString(bytes) + " with head " + std::to_string(head));
  const std::vector<unsigned char> exact(bytes.begin(), bytes.end());
  Texts read = {"old"};
  unsigned int told = 0;
  unsigned long remaining = exact.size();
  EXPECT_EQ(QZBinaryDump::QZPushBackSTLRead(exact.data(), (head & 0x80U) != 0, (head & 0x40U) != 0, (head & 0x20U) != 0,
                                            head & 0x1FU, read, told, remaining),
            used);
  EXPECT_EQ(read, texts);
  EXPECT_EQ(told, status);
  EXPECT_EQ(remaining, bytes.size() - used);
}

}  // namespace

TEST(QZPushBackSTLRead, ReplacesTheContentInEitherByteOrder) {
  for (unsigned int others : {0x00U, 0xA0U}) {
    ExpectRead(0x01 | others, two, {"a", "\0c"_b}, 15, 0);
    ExpectRead(0x41 | others, twoSwapped, {"a", "\0c"_b}, 15, 0);
  }
  ExpectRead(0x01, two + "more", {"a", "\0c"_b}, 15, 0);
  ExpectRead(0x01, "\0\0\0\0"_b, {}, 4, 0);
}

TEST(QZPushBackSTLRead, AnotherFormLeavesTheContainerAlone) {
  for (unsigned int form = 0; form < 32; ++form) {
    if (form != 1) ExpectRead(form, two, {"old"}, 0, QZBinaryDump::UnknownForm);
  }
}

TEST(QZPushBackSTLRead, ABlockThatIsCutShortStopsThere) {
  const struct {
    std::size_t from, to;
    Texts texts;
    unsigned long used;
  } cases[] = {{0, 3, {}, 0}, {4, 7, {""}, 4}, {8, 8, {""}, 8}, {9, 12, {"a", ""}, 9}, {13, 14, {"a", ""}, 13}};
  for (const auto& [from, to, texts, used] : cases) {
    for (std::size_t length = from; length <= to; ++length)
      ExpectRead(1, two.substr(0, length), texts, used, QZBinaryDump::CutShort);
  }
  ExpectRead(1, "\xFF\xFF\xFF\xFF"_b, {""}, 4, QZBinaryDump::CutShort);
  ExpectRead(1, "\1\0\0\0\xFF\xFF\xFF\xFF"_b + "abc", {""}, 8, QZBinaryDump::CutShort);
}
