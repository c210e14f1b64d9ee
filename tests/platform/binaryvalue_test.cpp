#include "qz/platform/binaryvalue.h"

#include <gtest/gtest.h>

#include <cstring>

#include "qz/platform/memorystream.h"

using namespace QZPlatform;

namespace {

using Texts = std::vector<std::string>;

std::string operator""_b(const char* text, std::size_t size) { return {text, size}; }

const Texts names = {"ab", "", "\0z"_b};
const std::string namesAsBytes = "\3\0\0\0\2\0\0\0ab\0\0\0\0\2\0\0\0\0z"_b;

}  // namespace

TEST(BinaryValue, ListsOfStringsHaveOneFormInMemoryAndStream) {
  std::vector<unsigned char> block(QZ_io_binary_size(names));
  EXPECT_EQ(QZ_io_write_binary<std::string>(block.data(), names), namesAsBytes.size());
  EXPECT_EQ(std::string(block.begin(), block.end()), namesAsBytes);
  qzosstream out;
  EXPECT_EQ(QZ_io_write_binary(out, names), namesAsBytes.size());
  EXPECT_EQ(out.str(), namesAsBytes);

  Texts back = {"what", "was", "there", "before"};
  EXPECT_EQ(QZ_io_read_binary<std::string>(block.data(), back), namesAsBytes.size());
  EXPECT_EQ(back, names);
}

TEST(BinaryValue, ElementsKeepTheirBytesAndAreTakenAsFarAsTheyAreThere) {
  qzisstream in;
  in.set("abcdefg");
  unsigned char elements[] = "1234";
  EXPECT_EQ(QZ_io_read_binary(in, elements, 2, 2), 4U);
  EXPECT_STREQ(reinterpret_cast<char*>(elements), "abcd");
  EXPECT_EQ(QZ_io_read_binary(in, elements, 2, 2), 3U);
  EXPECT_STREQ(reinterpret_cast<char*>(elements), "efgd");
  qzosstream out;
  EXPECT_EQ(QZ_io_write_binary(out, elements, 2, 2), 4U);
  EXPECT_EQ(out.str(), "efgd");
  unsigned char block[] = "1234";
  EXPECT_EQ(QZ_io_write_binary(block, elements, 1, 3), 3U);
  EXPECT_EQ(QZ_io_read_binary(block, elements, 2, 2), 4U);
  EXPECT_STREQ(reinterpret_cast<char*>(elements), "efg4");
}

TEST(BinaryValue, AStreamThatEndsEarlyGivesWhatArrived) {
  const struct {
    std::size_t from, to;
    Texts texts;
  } cases[] = {{0, 4, {}},
               {5, 8, {""}},
               {9, 9, {"a"}},
               {10, 10, {"ab"}},
               {11, 14, {"ab", ""}},
               {15, 18, {"ab", "", ""}},
               {19, 19, {"ab", "", std::string(1, '\0')}},
               {20, 20, names}};
  for (const auto& [from, to, texts] : cases) {
    for (std::size_t length = from; length <= to; ++length) {
      qzisstream in;
      in.set(namesAsBytes.substr(0, length));
      Texts back = {"old"};
      EXPECT_EQ(QZ_io_read_binary(in, back), length);
      EXPECT_EQ(back, texts) << length;
    }
  }
}

TEST(BinaryValue, ACountOrLengthBeyondTheStreamNeedsNoMemory) {
  qzisstream in;
  in.set(
      "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
      "abc");
  Texts texts;
  EXPECT_EQ(QZ_io_read_binary(in, texts), 11U);
  EXPECT_EQ(texts, Texts{"abc"});
  EXPECT_LT(texts.front().capacity(), 100000U);
}
