#include "qz/platform/binarydump.h"

#include <gtest/gtest.h>

#include <list>
#include <string>
#include <vector>

using namespace QZPlatform;

namespace {

using Texts = std::vector<std::string>;

struct Result {
  Texts texts = {"old"};
  unsigned int status = 0;
  unsigned long remaining = 0;
  unsigned long used = 0;
};

Result Read(unsigned int head, const std::string& bytes) {
  Result result;
  result.remaining = bytes.size();
  result.used = QZBinaryDump::QZPushBackSTLRead(reinterpret_cast<const unsigned char*>(bytes.data()),
                                                (head & 0x80U) != 0, (head & 0x40U) != 0, (head & 0x20U) != 0,
                                                head & 0x1FU, result.texts, result.status, result.remaining);
  return result;
}

std::string operator""_b(const char* text, std::size_t size) { return {text, size}; }

const std::string Two = "\2\0\0\0\1\0\0\0a\2\0\0\0\0c"_b;
const std::string TwoSwapped = "\0\0\0\2\0\0\0\1a\0\0\0\2\0c"_b;

}  // namespace

TEST(QZPushBackSTLRead, ReplacesTheContentInEitherByteOrder) {
  const struct {
    unsigned int head;
    std::string bytes;
    Texts texts;
    unsigned long used;
  } cases[] = {
      {0x01, Two, {"a", "\0c"_b}, 15},          {0xA1, Two, {"a", "\0c"_b}, 15},
      {0x41, TwoSwapped, {"a", "\0c"_b}, 15},   {0xE1, TwoSwapped, {"a", "\0c"_b}, 15},
      {0x01, Two + "more", {"a", "\0c"_b}, 15}, {0x01, "\0\0\0\0"_b, {}, 4},
  };
  for (const auto& each : cases) {
    const Result result = Read(each.head, each.bytes);
    const std::string what = testing::PrintToString(each.bytes) + " with head " + std::to_string(each.head);
    EXPECT_EQ(result.texts, each.texts) << what;
    EXPECT_EQ(result.status, 0U) << what;
    EXPECT_EQ(result.used, each.used) << what;
    EXPECT_EQ(result.remaining, each.bytes.size() - each.used) << what;
  }
}

TEST(QZPushBackSTLRead, AnotherFormLeavesTheContainerAlone) {
  for (unsigned int form = 0; form < 32; ++form) {
    if (form == 1) continue;
    const Result result = Read(form, Two);
    EXPECT_EQ(result.status, QZBinaryDump::UnknownForm) << form;
    EXPECT_EQ(result.texts, Texts{"old"}) << form;
    EXPECT_EQ(result.used, 0U) << form;
    EXPECT_EQ(result.remaining, Two.size()) << form;
  }
}

TEST(QZPushBackSTLRead, ABlockThatIsCutShortStopsThere) {
  const struct {
    std::size_t length;
    Texts texts;
    unsigned long used;
  } cases[] = {
      {0, {}, 0},        {3, {}, 0},         {4, {""}, 4},        {7, {""}, 4},        {8, {""}, 8},
      {9, {"a", ""}, 9}, {12, {"a", ""}, 9}, {13, {"a", ""}, 13}, {14, {"a", ""}, 13},
  };
  for (const auto& each : cases) {
    const Result result = Read(1, Two.substr(0, each.length));
    EXPECT_EQ(result.status, QZBinaryDump::CutShort) << each.length;
    EXPECT_EQ(result.texts, each.texts) << each.length;
    EXPECT_EQ(result.used, each.used) << each.length;
    EXPECT_EQ(result.remaining, each.length - each.used) << each.length;
  }
}

TEST(QZPushBackSTLRead, NumbersBeyondTheBlockNeedNoMemory) {
  EXPECT_EQ(Read(1, "\xFF\xFF\xFF\xFF"_b).texts, Texts{""});
  EXPECT_EQ(Read(1, "\1\0\0\0\xFF\xFF\xFF\xFF"_b + "abc").texts, Texts{""});
}
