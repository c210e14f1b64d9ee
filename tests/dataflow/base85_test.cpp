#include "qz/dataflow/base85.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/dataflow/bytes.h"
#include "tests/system/cli/messages.h"

namespace QZDataFlow {
namespace {

TEST(Base85, KnownGroups) {
  const struct {
    const char *bytes, *text;
  } cases[] = {
      {"", ""},
      {"00", "00"},
      {"FF", "{{"},
      {"00 00 00 00", "00000"},
      {"FF FF FF FF", "|NsC0"},
      {"01 02 03 04 05", "0RjUA1p"},
      {"FF FF FF", "|Ns9"},
  };
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(QZBase85Encode(FromHex(bytes)), text);
    EXPECT_EQ(Hex(QZBase85Decode(text)), bytes);
  }
  EXPECT_TRUE(QZBase85Decode("0").empty()) << "one digit holds no byte";
}

TEST(Base85, EveryLengthComesBack) {
  std::mt19937 random(3);
  for (std::size_t size = 0; size < 70; ++size) {
    for (int round = 0; round < 20; ++round) {
      std::vector<unsigned char> bytes(size);
      for (auto& byte : bytes) byte = static_cast<unsigned char>(round == 0 ? 255 : random());
      const std::string text = QZBase85Encode(bytes);
      ASSERT_EQ(text.size(), size / 4 * 5 + (size % 4 == 0 ? 0 : size % 4 + 1));
      ASSERT_EQ(QZBase85Decode(text), bytes);
    }
  }
}

TEST(Base85, TellsWhereATextIsWrong) {
  const std::pair<std::string, int> cases[] = {{" ", 0},
                                               {"0000\"", 4},
                                               {"00000000,0", 8},
                                               {"00\xFF", 2},
                                               {"|NsC1", 0},
                                               {"00000|NsC000000~0", 15},
                                               {std::string("000\0", 4), 3}};
  Messages messages;
  for (const auto& [text, offset] : cases) {
    EXPECT_TRUE(QZBase85Decode(text).empty()) << text;
    EXPECT_EQ(messages.Take(), "Warning: Base85: invalid character at offset " + std::to_string(offset) + "\n") << text;
  }
}

}  // namespace
}  // namespace QZDataFlow
