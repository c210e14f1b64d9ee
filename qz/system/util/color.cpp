#include "qz/system/util/color.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "qz/platform/binaryvalue.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/iterempty.h"
#include "qz/system/frame/itervector.h"
#include "qz/system/text/stringnumber.h"

namespace QZSystem {

namespace {

constexpr char limitedBytes[] =
    "QZColor() accepts color values between 0 and 255. Values have been limited to this range.";
constexpr char limitedUnits[] =
    "%s() accepts color values between 0.0 and 1.0. Values have been limited to this range.";
constexpr char emptyText[] = "QZColor::SetText(const std::string &text) - Empty paramater";
constexpr char invalidText[] = "QZColor::SetText(const std::string &text) - Invalid paramater '%s'";
constexpr char nullInSetter[] = "QZColor::SetRGBA() invalid pointer!";
constexpr char nullInConstructor[] = "QZColor() invalid pointer!";
constexpr char badRead[] = "Bad QZColor in read.";

constexpr unsigned int channelCount = 4;
constexpr std::size_t opaqueLength = 7;
constexpr std::size_t alphaLength = 9;

namespace Light {
constexpr QZColor Pink(219, 156, 169);
constexpr QZColor Apricot(229, 196, 155);
constexpr QZColor Lemon(242, 239, 155);
constexpr QZColor Chartreuse(218, 227, 135);
constexpr QZColor Mint(182, 217, 171);
constexpr QZColor Aqua(161, 210, 182);
constexpr QZColor Azure(158, 214, 211);
constexpr QZColor Mauve(188, 153, 185);
constexpr QZColor all[] = {Pink, Apricot, Lemon, Chartreuse, Mint, Aqua, Azure, Mauve};
}  // namespace Light

namespace Vivid {
constexpr QZColor Red(187, 33, 47);
constexpr QZColor Orange(204, 113, 61);
constexpr QZColor Yellow(232, 214, 100);
constexpr QZColor Lime(155, 188, 85);
constexpr QZColor Green(111, 185, 102);
constexpr QZColor Turquoise(93, 143, 131);
constexpr QZColor Blue(71, 101, 156);
constexpr QZColor Purple(107, 53, 123);
constexpr QZColor all[] = {Red, Orange, Yellow, Lime, Green, Turquoise, Blue, Purple};
}  // namespace Vivid

namespace Deep {
constexpr QZColor Maroon(101, 26, 31);
constexpr QZColor Brown(113, 61, 40);
constexpr QZColor Khaki(124, 115, 61);
constexpr QZColor Olive(68, 93, 52);
constexpr QZColor Forest(46, 80, 47);
constexpr QZColor Teal(48, 83, 76);
constexpr QZColor Navy(39, 50, 95);
constexpr QZColor Aubergine(48, 26, 63);
constexpr QZColor all[] = {Maroon, Brown, Khaki, Olive, Forest, Teal, Navy, Aubergine};
}  // namespace Deep

namespace Contrast {
constexpr QZColor Yellow(227, 200, 95);
constexpr QZColor Purple(97, 47, 113);
constexpr QZColor Orange(201, 99, 57);
constexpr QZColor LightBlue(159, 199, 214);
constexpr QZColor Red(167, 34, 56);
constexpr QZColor Buff(183, 182, 133);
constexpr QZColor Grey(118, 121, 118);
constexpr QZColor Green(92, 157, 83);
constexpr QZColor PurplishPink(199, 125, 160);
constexpr QZColor Blue(69, 110, 156);
constexpr QZColor YellowishPink(206, 125, 101);
constexpr QZColor Violet(60, 52, 121);
constexpr QZColor OrangeYellow(212, 153, 75);
constexpr QZColor PurplishRed(128, 43, 116);
constexpr QZColor GreenishYellow(226, 229, 115);
constexpr QZColor ReddishBrown(101, 28, 31);
constexpr QZColor YellowGreen(137, 164, 79);
constexpr QZColor YellowishBrown(92, 49, 33);
constexpr QZColor ReddishOrange(189, 46, 48);
constexpr QZColor OliveGreen(38, 49, 32);
constexpr QZColor all[] = {Yellow,        Purple,      Orange,         LightBlue,     Red,
                           Buff,          Grey,        Green,          PurplishPink,  Blue,
                           YellowishPink, Violet,      OrangeYellow,   PurplishRed,   GreenishYellow,
                           ReddishBrown,  YellowGreen, YellowishBrown, ReddishOrange, OliveGreen};
}  // namespace Contrast

template <std::size_t Count>
QZColor Member(const QZColor (&set)[Count], unsigned int index) {
  return index < Count ? set[index] : QZBlack;
}

template <std::size_t Count>
QZIterBase<QZColor>* Members(const QZColor (&set)[Count]) {
  return QZGetColors(std::vector<QZColor>(std::begin(set), std::end(set)));
}

/// A channel from a value between 0 and 1. Tells whether the value had to be limited.
unsigned int Channel(double value, bool& isLimited) {
  const bool isAbove = value > 1;
  const bool isInside = value >= 0 && !isAbove;
  if (!isInside) isLimited = true;
  return isInside ? static_cast<unsigned int>(255 * value) : isAbove ? 255 : 0;
}

void SetUnits(QZColor& color, const char* function, double red, double green, double blue, const double* alpha) {
  bool isLimited = false;
  color.Set(Channel(red, isLimited), Channel(green, isLimited), Channel(blue, isLimited));
  if (alpha) color.SetA(Channel(*alpha, isLimited));
  if (isLimited) QZThrow.Warning(limitedUnits, function);
}

template <class T>
T Unit(unsigned int channel) {
  return static_cast<T>(channel) / T{255};
}

template <class T>
void GetUnits(const QZColor& color, T& red, T& green, T& blue) {
  red = Unit<T>(color.GetR());
  green = Unit<T>(color.GetG());
  blue = Unit<T>(color.GetB());
}

/// Two hexadecimal digits of a text. What isn't one reads as 0.
bool ReadChannel(const std::string& text, std::size_t at, unsigned char& channel) {
  int value = 0;
  const bool isRead = QZStringToNumber(std::string_view(text).substr(at, 2), value, 16);
  channel = static_cast<unsigned char>(value);
  return isRead;
}

}  // namespace

QZColor::QZColor(const unsigned char* rgba) {
  if (rgba) {
    SetRGBA(rgba);
  } else {
    QZThrow.Warning(nullInConstructor);
  }
}

void QZColor::WarnLimited() { QZThrow.Warning(limitedBytes); }

std::string QZColor::GetText(bool withAlpha) const {
  constexpr char digits[] = "0123456789abcdef";
  std::string text = "#";
  for (const unsigned char channel : {r, g, b, a}) {
    text += digits[channel >> 4];
    text += digits[channel & 15];
  }
  text.resize(withAlpha ? alphaLength : opaqueLength);
  return text;
}

QZColor& QZColor::SetRGBA(const unsigned char* rgba) {
  if (rgba) return Set(rgba[0], rgba[1], rgba[2], rgba[3]);
  QZThrow.Warning(nullInSetter);
  return *this;
}

bool QZColor::SetText(const std::string& text) {
  if (text.empty()) {
    QZThrow.Error(emptyText);
    return false;
  }
  if (text.front() != '#' || (text.size() != opaqueLength && text.size() != alphaLength)) {
    QZThrow.Error(invalidText, text.c_str());
    return false;
  }
  bool isRead = ReadChannel(text, 1, r);
  isRead = ReadChannel(text, 3, g) && isRead;
  isRead = ReadChannel(text, 5, b) && isRead;
  a = 255;
  if (text.size() == alphaLength) isRead = ReadChannel(text, opaqueLength, a) && isRead;
  if (isRead) return true;
  Set(255, 255, 255);
  QZThrow.Error(invalidText, text.c_str());
  return false;
}

QZColor QZColorCreate(double red, double green, double blue) { return QZColorCreate(red, green, blue, 1.0); }

QZColor QZColorCreate(double red, double green, double blue, double alpha) {
  QZColor color;
  SetUnits(color, "QZColorCreate", red, green, blue, &alpha);
  return color;
}

void QZColorSet(QZColor& color, double red, double green, double blue) {
  SetUnits(color, "QZColorSet", red, green, blue, nullptr);
}

void QZColorSet(QZColor& color, double red, double green, double blue, double alpha) {
  SetUnits(color, "QZColorSet", red, green, blue, &alpha);
}

void QZColorGet(const QZColor& color, float& red, float& green, float& blue) { GetUnits(color, red, green, blue); }

void QZColorGet(const QZColor& color, float& red, float& green, float& blue, float& alpha) {
  GetUnits(color, red, green, blue);
  alpha = Unit<float>(color.GetA());
}

void QZColorGet(const QZColor& color, double& red, double& green, double& blue) { GetUnits(color, red, green, blue); }

void QZColorGet(const QZColor& color, double& red, double& green, double& blue, double& alpha) {
  GetUnits(color, red, green, blue);
  alpha = Unit<double>(color.GetA());
}

QZColor QZGetLightColor(unsigned int index) { return Member(Light::all, index); }

QZColor QZGetVividColor(unsigned int index) { return Member(Vivid::all, index); }

QZColor QZGetDeepColor(unsigned int index) { return Member(Deep::all, index); }

QZIterBase<QZColor>* QZGetLightColors() { return Members(Light::all); }

QZIterBase<QZColor>* QZGetVividColors() { return Members(Vivid::all); }

QZIterBase<QZColor>* QZGetDeepColors() { return Members(Deep::all); }

QZIterBase<QZColor>* QZGetContrastColors(bool withBlackAndWhite) {
  std::vector<QZColor> colors;
  if (withBlackAndWhite) colors = {QZWhite, QZBlack};
  for (const QZColor& color : Contrast::all) colors.push_back(color);
  return QZGetColors(colors);
}

QZIterBase<QZColor>* QZGetColors(const std::vector<QZColor>& colors) {
  if (colors.empty()) return new QZEmptyIter<QZColor>;
  return new QZCacheIter<QZColor>(colors);
}

}  // namespace QZSystem

namespace QZPlatform {

namespace {

using QZSystem::channelCount;
using QZSystem::QZColor;

constexpr unsigned long countSize = 4;

void WarnBadRead() { QZSystem::QZThrow.Warning(QZSystem::badRead); }

/// Reads that many bytes and drops them. Returns how many there were.
unsigned long PassOver(qzistream& in, unsigned long count) {
  unsigned char block[256];
  unsigned long left = count;
  while (left > 0) {
    const unsigned long wanted = std::min<unsigned long>(left, sizeof block);
    const unsigned long got = in.read(block, wanted);
    left -= got;
    if (got < wanted) break;
  }
  return count - left;
}

}  // namespace

unsigned long QZ_io_binary_size(const QZColor&) { return countSize + channelCount; }

unsigned long QZ_io_write_binary(qzostream& out, const QZColor& color) {
  const unsigned long used = QZ_io_write_count(out, channelCount);
  return used == countSize ? used + QZ_io_write_binary(out, color.GetRGBA(), 1, channelCount) : used;
}

unsigned long QZ_io_read_binary(qzistream& in, QZColor& color) {
  std::uint32_t count = 0;
  const unsigned long used = QZ_io_read_count(in, count);
  unsigned char rgba[channelCount] = {};
  const unsigned long size = count == channelCount ? QZ_io_read_binary(in, rgba, 1, channelCount) : PassOver(in, count);
  if (count == channelCount && size == channelCount) {
    color.SetRGBA(rgba);
  } else {
    WarnBadRead();
  }
  return used + size;
}

unsigned long QZ_io_write_binary(unsigned char* out, const QZColor& color) {
  const unsigned long used = QZ_io_write_count(out, channelCount);
  return used + QZ_io_write_binary(out + used, color.GetRGBA(), 1, channelCount);
}

unsigned long QZ_io_read_binary(const unsigned char* in, QZColor& color) {
  std::uint32_t count = 0;
  const unsigned long used = QZ_io_read_count(in, count);
  if (count == channelCount) {
    color.SetRGBA(in + used);
  } else {
    WarnBadRead();
  }
  return used + count;
}

}  // namespace QZPlatform
