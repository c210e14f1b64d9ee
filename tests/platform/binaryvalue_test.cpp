#include "qz/platform/binaryvalue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "qz/platform/memorystream.h"

using namespace QZPlatform;

namespace {

const std::vector<std::string> Names = {"ab", "", std::string("\0z", 2)};
const std::string NamesAsBytes(
    "\3\0\0\0"
    "\2\0\0\0ab"
    "\0\0\0\0"
    "\2\0\0\0\0z",
    20);

std::string Text(const std::vector<unsigned char>& bytes) { return {bytes.begin(), bytes.end()}; }

const unsigned char* Bytes(const std::string& text) { return reinterpret_cast<const unsigned char*>(text.data()); }

}  // namespace

TEST(BinaryValue, NumbersAreLittleEndianInMemoryAndStream) {
  const std::uint32_t numbers[] = {0x04030201U, 0x08070605U};
  unsigned char elements[sizeof numbers];
  std::memcpy(elements, numbers, sizeof numbers);
  const std::string expected = "\1\2\3\4\5\6\7\10";

  std::vector<unsigned char> block(sizeof numbers);
  EXPECT_EQ(QZ_io_write_binary(block.data(), elements, 4, 2), 8U);
  EXPECT_EQ(Text(block), expected);
  qzosstream out;
  EXPECT_EQ(QZ_io_write_binary(out, elements, 4, 2), 8U);
  EXPECT_EQ(out.str(), expected);

  std::uint32_t back[2] = {};
  EXPECT_EQ(QZ_io_read_binary(block.data(), reinterpret_cast<unsigned char*>(back), 4, 2), 8U);
  EXPECT_TRUE(std::equal(back, back + 2, numbers));
  qzisstream in;
  in.set(expected);
  unsigned char element[2] = {};
  EXPECT_EQ(QZ_io_read_binary(in, element, 2, 1), 2U);
  EXPECT_EQ(element[1], 2);
}

TEST(BinaryValue, ListsOfStringsHaveOneFormInMemoryAndStream) {
  std::vector<unsigned char> block(QZ_io_binary_size(Names));
  EXPECT_EQ(QZ_io_write_binary<std::string>(block.data(), Names), NamesAsBytes.size());
  EXPECT_EQ(Text(block), NamesAsBytes);
  qzosstream out;
  EXPECT_EQ(QZ_io_write_binary(out, Names), NamesAsBytes.size());
  EXPECT_EQ(out.str(), NamesAsBytes);

  std::vector<std::string> back = {"what", "was", "there", "before"};
  EXPECT_EQ(QZ_io_read_binary<std::string>(block.data(), back), NamesAsBytes.size());
  EXPECT_EQ(back, Names);
  qzisstream in;
  in.set(NamesAsBytes);
  EXPECT_EQ(QZ_io_read_binary(in, back), NamesAsBytes.size());
  EXPECT_EQ(back, Names);
}

TEST(BinaryValue, AStreamThatEndsEarlyGivesWhatArrived) {
  const struct {
    std::size_t from, to;
    std::vector<std::string> texts;
  } cases[] = {
      {0, 4, {}}, {5, 8, {""}}, {9, 9, {"a"}}, {10, 10, {"ab"}}, {11, 14, {"ab", ""}}, {15, 18, {"ab", "", ""}},
  };
  for (const auto& each : cases) {
    for (std::size_t length = each.from; length <= each.to; ++length) {
      qzisstream in;
      in.set(NamesAsBytes.substr(0, length));
      std::vector<std::string> back = {"old"};
      EXPECT_EQ(QZ_io_read_binary(in, back), length);
      EXPECT_EQ(back, each.texts) << length;
    }
  }
}

TEST(BinaryValue, ACountOrLengthBeyondTheStreamNeedsNoMemory) {
  const std::string most = "\xFF\xFF\xFF\xFF";
  qzisstream in;
  in.set(most + most + "abc");
  std::vector<std::string> texts;
  EXPECT_EQ(QZ_io_read_binary(in, texts), 11U);
  EXPECT_EQ(texts, std::vector<std::string>{"abc"});
  EXPECT_LT(texts.front().capacity(), 100000U);
}

TEST(BinaryValue, AStringInMemoryReplacesWhatWasThere) {
  std::string text = "old";
  EXPECT_EQ(QZ_io_read_binary(Bytes(std::string("\3\0\0\0a\0c", 7)), text), 7U);
  EXPECT_EQ(text, std::string("a\0c", 3));
  EXPECT_EQ(QZ_io_binary_size(text), 7U);
}
