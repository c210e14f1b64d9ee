#pragma once

#include <string>
#include <vector>

#include "qz/platform/stream.h"
#include "qz/system/frame/iterbase.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// A colour of four channels, red, green, blue and alpha, each from 0 to 255: four bytes in that order.
///
///     QZColor color("#ff8000");
///     color.SetA(128);
///     qzout << color.GetText(true) << qzendl;           // #ff800080
///     for (const QZColor& each : QZIter(QZGetVividColors())) Show(each);
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZColor {
 public:
  /// Opaque white.
  constexpr QZColor() = default;
  /// A channel above 255 becomes 255; if there is any, one Warning: "QZColor() accepts color values between 0 and 255.
  /// Values have been limited to this range." Without `alpha` the colour is opaque.
  constexpr QZColor(unsigned int red, unsigned int green, unsigned int blue) : QZColor(red, green, blue, 255) {}
  constexpr QZColor(unsigned int red, unsigned int green, unsigned int blue, unsigned int alpha)
      : r(Limited(red)), g(Limited(green)), b(Limited(blue)), a(Limited(alpha)) {
    if ((red | green | blue | alpha) > 255) WarnLimited();
  }
  /// From four bytes; white after the Warning "QZColor() invalid pointer!" if the pointer is null.
  explicit QZColor(const unsigned char* rgba);
  /// From the packed form.
  explicit QZColor(unsigned int packed) { SetPackedColor(packed); }
  /// By SetText; white where that fails.
  explicit QZColor(const std::string& text) { SetText(text); }

  [[nodiscard]] constexpr unsigned int GetR() const { return r; }
  [[nodiscard]] constexpr unsigned int GetG() const { return g; }
  [[nodiscard]] constexpr unsigned int GetB() const { return b; }
  [[nodiscard]] constexpr unsigned int GetA() const { return a; }
  /// The four bytes, red first, in the colour itself.
  [[nodiscard]] const unsigned char* GetRGBA() const { return reinterpret_cast<const unsigned char*>(this); }
  /// The channels in one number, red in the lowest byte and alpha in the highest.
  [[nodiscard]] constexpr unsigned int GetPackedColor() const {
    return unsigned{r} | unsigned{g} << 8 | unsigned{b} << 16 | unsigned{a} << 24;
  }
  /// "#" and two hexadecimal digits in lower case for each of red, green, blue, and with `withAlpha` alpha.
  [[nodiscard]] std::string GetText(bool withAlpha) const;

  /// Set one channel; a value above 255 becomes 255. Return the colour.
  QZColor& SetR(unsigned int value) { return r = Limited(value), *this; }
  QZColor& SetG(unsigned int value) { return g = Limited(value), *this; }
  QZColor& SetB(unsigned int value) { return b = Limited(value), *this; }
  QZColor& SetA(unsigned int value) { return a = Limited(value), *this; }
  /// The same for several; alpha stays where it isn't given.
  QZColor& Set(unsigned int red, unsigned int green, unsigned int blue) { return SetR(red).SetG(green).SetB(blue); }
  QZColor& Set(unsigned int red, unsigned int green, unsigned int blue, unsigned int alpha) {
    return Set(red, green, blue).SetA(alpha);
  }
  constexpr QZColor& SetPackedColor(unsigned int packed) {
    r = static_cast<unsigned char>(packed);
    g = static_cast<unsigned char>(packed >> 8);
    b = static_cast<unsigned char>(packed >> 16);
    a = static_cast<unsigned char>(packed >> 24);
    return *this;
  }
  /// Copies four bytes. A null pointer changes nothing, after the Warning "QZColor::SetRGBA() invalid pointer!".
  QZColor& SetRGBA(const unsigned char* rgba);
  /// Reads the text form, with digits in either case; without alpha the colour becomes opaque. False after an Error:
  /// for the empty text "QZColor::SetText(const std::string &text) - Empty paramater", otherwise
  /// "QZColor::SetText(const std::string &text) - Invalid paramater '%s'". Nothing is changed then, unless it is a
  /// digit that is wrong: red, green and blue become 255, and alpha takes what could be read of it.
  bool SetText(const std::string& text);

  /// A new colour; the caller deletes it.
  [[nodiscard]] QZColor* CreateCopy() const { return new QZColor(*this); }

  /// Compare all four channels.
  [[nodiscard]] constexpr bool operator==(const QZColor& other) const {
    return GetPackedColor() == other.GetPackedColor();
  }
  [[nodiscard]] constexpr bool operator!=(const QZColor& other) const { return !(*this == other); }

 private:
  static constexpr unsigned char Limited(unsigned int value) {
    return static_cast<unsigned char>(value > 255 ? 255 : value);
  }
  static void WarnLimited();

  unsigned char r = 255;
  unsigned char g = 255;
  unsigned char b = 255;
  unsigned char a = 255;
};

// The named colours, opaque but for QZTransparentColor. They are constants of the compiler, and so good in every static
// initialiser and destructor.
inline constexpr QZColor QZBlack(0, 0, 0);
inline constexpr QZColor QZWhite(255, 255, 255);
inline constexpr QZColor QZRed(255, 0, 0);
inline constexpr QZColor QZGreen(0, 255, 0);
inline constexpr QZColor QZBlue(0, 0, 255);
inline constexpr QZColor QZYellow(255, 255, 0);
inline constexpr QZColor QZCyan(0, 255, 255);
inline constexpr QZColor QZMagenta(192, 0, 192);
inline constexpr QZColor QZOrange(255, 128, 0);
inline constexpr QZColor QZPink(255, 0, 128);
inline constexpr QZColor QZGrey(180, 180, 180);
inline constexpr QZColor QZPurple(170, 0, 255);
inline constexpr QZColor QZRoyalBlue(71, 71, 184);
inline constexpr QZColor QZOliveBrown(79, 70, 0);
inline constexpr QZColor QZOliveGreen(69, 94, 69);
inline constexpr QZColor QZOliveGrey(83, 76, 66);
inline constexpr QZColor QZLimeGreen(170, 255, 0);
inline constexpr QZColor QZDarkRed(170, 0, 0);
inline constexpr QZColor QZDarkGreen(0, 128, 0);
inline constexpr QZColor QZDarkBlue(0, 0, 128);
inline constexpr QZColor QZDarkYellow(128, 128, 0);
inline constexpr QZColor QZDarkCyan(0, 128, 128);
inline constexpr QZColor QZDarkMagenta(128, 0, 128);
inline constexpr QZColor QZDarkOrange(170, 85, 0);
inline constexpr QZColor QZDarkGrey(64, 64, 64);
inline constexpr QZColor QZDarkRose(160, 0, 66);
inline constexpr QZColor QZDarkBrown(102, 0, 0);
inline constexpr QZColor QZDarkSalmon(255, 76, 76);
inline constexpr QZColor QZDarkPurple(94, 0, 94);
inline constexpr QZColor QZMediumBrown(140, 112, 76);
inline constexpr QZColor QZMediumBlue(112, 112, 255);
inline constexpr QZColor QZMediumYellow(255, 255, 112);
inline constexpr QZColor QZMediumGreen(140, 255, 140);
inline constexpr QZColor QZMediumOrange(255, 112, 66);
inline constexpr QZColor QZMediumPurple(255, 0, 255);
inline constexpr QZColor QZMediumSalmon(255, 112, 112);
inline constexpr QZColor QZLightBlue(160, 160, 255);
inline constexpr QZColor QZLightGrey(191, 191, 191);
inline constexpr QZColor QZLightPurple(255, 140, 255);
inline constexpr QZColor QZLightSalmon(255, 124, 112);
inline constexpr QZColor QZLightBrown(184, 160, 66);
inline constexpr QZColor QZLightOrange(255, 140, 75);
inline constexpr QZColor QZLightGreen(160, 255, 160);
inline constexpr QZColor QZBlueTint(175, 214, 255);
inline constexpr QZColor QZBrown(175, 117, 89);
inline constexpr QZColor QZMandarin(255, 156, 0);
inline constexpr QZColor QZGreenBlue(46, 139, 87);
inline constexpr QZColor QZGreenTint(152, 255, 179);
inline constexpr QZColor QZHotPink(255, 0, 101);
inline constexpr QZColor QZPinkTint(255, 171, 187);
inline constexpr QZColor QZRedOrange(255, 69, 0);
inline constexpr QZColor QZSeaGreen(0, 250, 109);
inline constexpr QZColor QZSkyBlue(58, 144, 255);
inline constexpr QZColor QZViolet(238, 130, 238);
inline constexpr QZColor QZYellowTint(246, 246, 117);
inline constexpr QZColor QZTransparentColor(255, 255, 255, 0);
inline constexpr QZColor QZCopper(245, 175, 145);
inline constexpr QZColor QZGold(255, 220, 70);
inline constexpr QZColor QZSilver(240, 240, 235);
inline constexpr QZColor QZPewter(140, 140, 135);
inline constexpr QZColor QZBrass(220, 175, 90);

/// The packed form of four channels, which aren't cut to a byte.
[[nodiscard]] constexpr unsigned int QZColorPacked(unsigned int red, unsigned int green, unsigned int blue,
                                                   unsigned int alpha) {
  return red | green << 8 | blue << 16 | alpha << 24;
}

/// Make or set a colour from channels between 0 and 1: 255 times the value, cut towards zero, so that 0.5 gives 127. A
/// value outside is limited, NaN becomes 0; if there is any, one Warning: "%s() accepts color values between 0.0
/// and 1.0. Values have been limited to this range." with the name of the function. Without `alpha` a new colour is
/// opaque, and one that is set keeps its own.
[[nodiscard]] QZColor QZColorCreate(double red, double green, double blue);
[[nodiscard]] QZColor QZColorCreate(double red, double green, double blue, double alpha);
void QZColorSet(QZColor& color, double red, double green, double blue);
void QZColorSet(QZColor& color, double red, double green, double blue, double alpha);

/// Each channel divided by 255.
void QZColorGet(const QZColor& color, float& red, float& green, float& blue);
void QZColorGet(const QZColor& color, float& red, float& green, float& blue, float& alpha);
void QZColorGet(const QZColor& color, double& red, double& green, double& blue);
void QZColorGet(const QZColor& color, double& red, double& green, double& blue, double& alpha);

/// Curated sets of eight colours: the one at an index, QZBlack beyond the last.
[[nodiscard]] QZColor QZGetLightColor(unsigned int index);
[[nodiscard]] QZColor QZGetVividColor(unsigned int index);
[[nodiscard]] QZColor QZGetDeepColor(unsigned int index);

/// All colours of a set, in order. The caller deletes the iterator.
[[nodiscard]] QZIterBase<QZColor>* QZGetLightColors();
[[nodiscard]] QZIterBase<QZColor>* QZGetVividColors();
[[nodiscard]] QZIterBase<QZColor>* QZGetDeepColors();
/// Twenty colours that are told apart with ease, best ones first; white and black may go before them.
[[nodiscard]] QZIterBase<QZColor>* QZGetContrastColors(bool withBlackAndWhite);
/// An iterator over a copy of the vector; the caller deletes it.
[[nodiscard]] QZIterBase<QZColor>* QZGetColors(const std::vector<QZColor>& colors);

}  // namespace QZSystem

namespace QZPlatform {

/// The packed form of a colour: the count 4 in four bytes, then the four channels. Each function returns the bytes that
/// it used. A read that finds another count, or too few bytes, passes over that many, sends the Warning "Bad QZColor in
/// read." and leaves the colour as it was. REQUIRES, in memory: as many bytes as that count says.
unsigned long QZ_io_binary_size(const QZSystem::QZColor& color);
unsigned long QZ_io_write_binary(qzostream& out, const QZSystem::QZColor& color);
unsigned long QZ_io_read_binary(qzistream& in, QZSystem::QZColor& color);
unsigned long QZ_io_write_binary(unsigned char* out, const QZSystem::QZColor& color);
unsigned long QZ_io_read_binary(const unsigned char* in, QZSystem::QZColor& color);

}  // namespace QZPlatform
