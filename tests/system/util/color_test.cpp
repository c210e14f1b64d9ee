#include "qz/system/util/color.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "qz/platform/binaryvalue.h"
#include "qz/platform/memorystream.h"
#include "qz/system/frame/iterowner.h"
#include "tests/system/cli/messages.h"

namespace QZSystem {
namespace {

std::string Texts(QZIterBase<QZColor>* colors) {
  std::string texts;
  for (const QZColor& color : QZIter(colors)) texts += color.GetText(true).substr(1) + " ";
  return texts;
}

TEST(Color, IsFourBytesInOrder) {
  static_assert(sizeof(QZColor) == 4);
  const QZColor color(1, 2, 3, 4);
  EXPECT_EQ(color.GetText(true), "#01020304");
  EXPECT_EQ(color.GetPackedColor(), 0x04030201U);
  EXPECT_EQ(QZColor(0x04030201U), color);
  EXPECT_EQ(QZColor(color.GetRGBA()), color);
  EXPECT_EQ(QZColorPacked(0x101, 0x200, 0, 4), 0x04020101U);
  EXPECT_EQ(QZColor().GetPackedColor(), 0xFFFFFFFFU);
  for (unsigned int i = 0; i < 4; ++i) {
    QZColor other = color;
    i == 0 ? other.SetR(9) : i == 1 ? other.SetG(9) : i == 2 ? other.SetB(9) : other.SetA(9);
    EXPECT_TRUE(other != color) << i;
    EXPECT_EQ(other.GetRGBA()[i], 9) << i;
  }
  EXPECT_EQ(QZColor(color).Set(300, 0, 5).GetText(true), "#ff000504");
}

TEST(Color, TextIsReadAndWritten) {
  Messages messages;
  const auto read = [](const std::string& text) {
    QZColor color(1, 2, 3, 4);
    const bool good = color.SetText(text);
    return std::pair(good, color.GetText(true));
  };
  const std::pair<const char*, const char*> cases[] = {
      {"#ff0080", "#ff0080ff"}, {"#FF008040", "#ff008040"}, {"#aBcDeF01", "#abcdef01"}};
  for (const auto& [text, expected] : cases) EXPECT_EQ(read(text), std::pair(true, std::string(expected)));
  EXPECT_EQ(messages.Take(), "");
  const std::string refused = "Warning: QZColor::SetText(const std::string &text) - ";
  EXPECT_EQ(read(""), std::pair(false, std::string("#01020304")));
  EXPECT_EQ(messages.Take(), refused + "Empty paramater\n");
  const std::pair<std::string, const char*> bad[] = {
      {"#ff008", "#01020304"},  {"ff0080", "#01020304"},    {"ff0080f", "#01020304"},  {"#ff0080112", "#01020304"},
      {"#gg0000", "#ffffffff"}, {"#00zz0040", "#ffffff40"}, {"#000000gg", "#ffffff00"}};
  for (const auto& [text, left] : bad) {
    EXPECT_EQ(read(text), std::pair(false, std::string(left))) << text;
    EXPECT_EQ(messages.Take(), refused + "Invalid paramater '" + text + "'\n");
  }
  EXPECT_EQ(QZColor(1, 2, 3).GetText(false), "#010203");
  EXPECT_EQ(QZColor(std::string("#0a0b0c")), QZColor(10, 11, 12));
}

TEST(Color, IntegersAndPointersOutOfRangeAreTold) {
  Messages messages;
  const std::string limited =
      "Warning: QZColor() accepts color values between 0 and 255. Values have been limited to this range.\n";
  EXPECT_EQ(QZColor(300, 0, 0), QZColor(255, 0, 0));
  EXPECT_EQ(messages.Take(), limited);
  EXPECT_EQ(QZColor(1, 256, 4000000000U, 999), QZColor(1, 255, 255, 255));
  EXPECT_EQ(messages.Take(), limited) << "one message for all";
  EXPECT_EQ(QZColor(1, 2, 3).SetR(300), QZColor(255, 2, 3));
  EXPECT_EQ(messages.Take(), "");
  const unsigned char* const none = nullptr;
  EXPECT_EQ(QZColor(none), QZWhite);
  EXPECT_EQ(messages.Take(), "Warning: QZColor() invalid pointer!\n");
  EXPECT_EQ(QZColor(1, 2, 3).SetRGBA(none), QZColor(1, 2, 3));
  EXPECT_EQ(messages.Take(), "Warning: QZColor::SetRGBA() invalid pointer!\n");
}

TEST(Color, UnitsAreCutAndLimited) {
  const std::string limited = "() accepts color values between 0.0 and 1.0. Values have been limited to this range.\n";
  Messages messages;
  EXPECT_EQ(QZColorCreate(0.5, 1, 0, 0.999).GetText(true), "#7fff00fe");
  EXPECT_EQ(QZColorCreate(0.5, 1, 0).GetText(true), "#7fff00ff");
  EXPECT_EQ(messages.Take(), "");
  EXPECT_EQ(QZColorCreate(1.5, -1, 0), QZColor(255, 0, 0));
  EXPECT_EQ(messages.Take(), "Warning: QZColorCreate" + limited);
  QZColor color(1, 2, 3, 4);
  QZColorSet(color, std::numeric_limits<double>::quiet_NaN(), 1, 0.2);
  EXPECT_EQ(color, QZColor(0, 255, 51, 4));
  EXPECT_EQ(messages.Take(), "Warning: QZColorSet" + limited);
  QZColorSet(color, 0, 0, 0, std::numeric_limits<double>::infinity());
  EXPECT_EQ(color, QZColor(0, 0, 0, 255));
  EXPECT_EQ(messages.Take(), "Warning: QZColorSet" + limited);

  float r, g, b, a;
  QZColorGet(QZColor(1, 127, 255, 51), r, g, b, a);
  EXPECT_EQ((std::vector<float>{r, g, b, a}), (std::vector<float>{1.0F / 255, 127.0F / 255, 1, 0.2F}));
  double red, green, blue, alpha;
  QZColorGet(QZColor(1, 127, 255, 51), red, green, blue, alpha);
  EXPECT_EQ((std::vector<double>{red, green, blue, alpha}), (std::vector<double>{1.0 / 255, 127.0 / 255, 1, 0.2}));
}

TEST(Color, SetsHaveTheirColorsInOrder) {
  EXPECT_EQ(Texts(QZGetLightColors()), "db9ca9ff e5c49bff f2ef9bff dae387ff b6d9abff a1d2b6ff 9ed6d3ff bc99b9ff ");
  EXPECT_EQ(Texts(QZGetVividColors()), "bb212fff cc713dff e8d664ff 9bbc55ff 6fb966ff 5d8f83ff 47659cff 6b357bff ");
  EXPECT_EQ(Texts(QZGetDeepColors()), "651a1fff 713d28ff 7c733dff 445d34ff 2e502fff 30534cff 27325fff 301a3fff ");
  const std::string contrast =
      "e3c85fff 612f71ff c96339ff 9fc7d6ff a72238ff b7b685ff 767976ff 5c9d53ff c77da0ff 456e9cff ce7d65ff 3c3479ff "
      "d4994bff 802b74ff e2e573ff 651c1fff 89a44fff 5c3121ff bd2e30ff 263120ff ";
  EXPECT_EQ(Texts(QZGetContrastColors(false)), contrast);
  EXPECT_EQ(Texts(QZGetContrastColors(true)), "ffffffff 000000ff " + contrast);
  EXPECT_EQ(QZGetLightColor(7), QZColor(188, 153, 185));
  EXPECT_EQ(QZGetVividColor(0), QZColor(187, 33, 47));
  EXPECT_EQ(QZGetDeepColor(1), QZColor(113, 61, 40));
  EXPECT_EQ(QZGetLightColor(8), QZBlack);
  EXPECT_EQ(QZGetDeepColor(4000000000U), QZBlack);
  EXPECT_EQ(Texts(QZGetColors({QZRed, QZTransparentColor})), "ff0000ff ffffff00 ");
  EXPECT_EQ(Texts(QZGetColors({})), "");
}

TEST(Color, BytesComeBack) {
  const std::vector<QZColor> colors{QZColor(1, 2, 3, 4), QZRed};
  qzosstream out;
  EXPECT_EQ(QZ_io_write_binary(out, colors), QZ_io_binary_size(colors));
  EXPECT_EQ(out.str(), std::string("\2\0\0\0\4\0\0\0\1\2\3\4\4\0\0\0\xFF\0\0\xFF", 20));
  std::vector<QZColor> back;
  qzisstream in;
  in.set(out.str());
  EXPECT_EQ(QZ_io_read_binary(in, back), 20U);
  EXPECT_EQ(back, colors);
  unsigned char block[20];
  EXPECT_EQ(QZ_io_write_binary(block, colors), 20U);
  EXPECT_EQ(std::string(block, block + 20), out.str());
  EXPECT_EQ(QZ_io_read_binary(block, back), 20U);
  EXPECT_EQ(back, colors);
}

TEST(Color, DamagedBytesLeaveIt) {
  using namespace std::literals;
  const std::pair<std::string, unsigned long> cases[] = {{"", 0},
                                                         {"\4\0\0"s, 3},
                                                         {"\4\0\0\0\1\2\3"s, 7},
                                                         {"\3\0\0\0\1\2\3\4"s, 7},
                                                         {"\5\0\0\0\1\2\3\4\5\6"s, 9},
                                                         {"\0\0\0\0\1"s, 4},
                                                         {"\xFF\xFF\xFF\xFF" + std::string(1000, 'x'), 1004}};
  Messages messages;
  QZColor color(1, 2, 3, 4);
  for (const auto& [bytes, used] : cases) {
    qzisstream in;
    in.set(bytes);
    EXPECT_EQ(QZ_io_read_binary(in, color), used) << bytes.size();
    EXPECT_EQ(color, QZColor(1, 2, 3, 4)) << bytes.size();
    EXPECT_EQ(messages.Take(), "Warning: Bad QZColor in read.\n") << bytes.size();
  }
  const unsigned char block[] = {3, 0, 0, 0, 1, 2, 3};
  EXPECT_EQ(QZ_io_read_binary(block, color), 7U);
  EXPECT_EQ(color, QZColor(1, 2, 3, 4));
  EXPECT_EQ(messages.Take(), "Warning: Bad QZColor in read.\n");
}

}  // namespace
}  // namespace QZSystem
