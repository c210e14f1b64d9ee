#include "qz/platform/compress.h"

#include <zlib.h>

#include "streamtest.h"

using namespace streamtest;

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

}  // namespace

TEST(QZCompress, GivesOneGzipMemberWithoutNameOrTime) {
  for (const std::string& text :
       {std::string(), std::string(1000000, 'x'), Bytes(1), Bytes(65535), Bytes(65536), Bytes(300000)}) {
    std::string packed = text;  // the input may lie in the output
    ASSERT_TRUE(QZCompress(packed, packed.data(), packed.size(), "gz")) << text.size();
    EXPECT_EQ(packed.substr(0, 8), std::string("\x1F\x8B\x08\0\0\0\0\0", 8)) << text.size();
    EXPECT_TRUE(Unpack(packed, text.size()) == text) << text.size();
  }
}

TEST(QZCompress, AnUnknownFormatGivesNothing) {
  for (const char* format : {static_cast<const char*>(nullptr), "", "g", "GZ", "gzip", "bz2"}) {
    std::string packed = "old";
    EXPECT_FALSE(QZCompress(packed, "text", 4, format)) << format;
    EXPECT_EQ(packed, "") << format;
  }
}
