#include "qz/platform/compress.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <string>

using namespace QZPlatform;

namespace {

// What a gzip reader makes of the bytes: exactly one member, of that content.
std::string Unpack(const std::string& packed, std::size_t size) {
  std::string out(size + 1, '\0');
  z_stream state{};
  inflateInit2(&state, 15 + 16);
  state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  state.avail_in = static_cast<uInt>(packed.size());
  state.next_out = reinterpret_cast<Bytef*>(out.data());
  state.avail_out = static_cast<uInt>(out.size());
  const int result = inflate(&state, Z_FINISH);
  out.resize(result == Z_STREAM_END && state.avail_in == 0 ? state.total_out : 0);
  inflateEnd(&state);
  return out;
}

std::string Noise(std::size_t size) {
  std::mt19937 random(1);
  std::string text(size, '\0');
  for (char& each : text) each = static_cast<char>(random());
  return text;
}

}  // namespace

TEST(QZCompress, GivesOneGzipMemberWithoutNameOrTime) {
  const std::string texts[] = {"", "a", std::string(1000000, 'x'), Noise(65535), Noise(65536), Noise(300000)};
  for (const std::string& text : texts) {
    std::string packed = "old";
    ASSERT_TRUE(QZCompress(packed, text.data(), text.size(), "gz")) << text.size();
    EXPECT_EQ(packed.substr(0, 8), std::string("\x1F\x8B\x08\0\0\0\0\0", 8)) << text.size();
    EXPECT_TRUE(Unpack(packed, text.size()) == text) << text.size();
  }
}

TEST(QZCompress, TheInputMayLieInTheOutput) {
  const std::string text = Noise(100000);
  std::string both = text;
  ASSERT_TRUE(QZCompress(both, both.data(), both.size(), "gz"));
  EXPECT_TRUE(Unpack(both, text.size()) == text);
}

TEST(QZCompress, AnUnknownFormatGivesNothing) {
  for (const char* format : {"", "g", "GZ", "gzip", "bz2"}) {
    std::string packed = "old";
    EXPECT_FALSE(QZCompress(packed, "text", 4, format)) << format;
    EXPECT_EQ(packed, "") << format;
  }
  std::string packed = "old";
  EXPECT_FALSE(QZCompress(packed, "text", 4, nullptr));
  EXPECT_EQ(packed, "");
}
