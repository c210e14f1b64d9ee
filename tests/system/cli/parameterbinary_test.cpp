#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "qz/system/cli/parameter_concrete.h"

namespace QZSystem {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes write(const QZParameter& p) {
  Bytes bytes(p.ValueAndDefaultBinarySize());
  EXPECT_EQ(p.WriteValueAndDefaultBinary(bytes.data()), bytes.size());
  return bytes;
}

// Reads from a block of exactly these bytes, so that a look behind them is caught by the address checker.
template <class Kind>
unsigned long read(Kind& p, const Bytes& bytes) {
  const std::unique_ptr<unsigned char[]> block(new unsigned char[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), block.get());
  return p.ReadValueAndDefaultBinary(block.get(), bytes.size());
}

Bytes fromHex(const std::string& text) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    if (text[i] == ' ') ++i;
    bytes.push_back(static_cast<unsigned char>(std::stoi(text.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

template <class Kind>
void expectBytes(const Kind& p, const std::string& hex) {
  EXPECT_EQ(write(p), fromHex(hex)) << p.ClassID();
  Kind fresh;
  const Bytes bytes = fromHex(hex);
  EXPECT_EQ(fresh.ReadValueAndDefaultBinary(bytes.data()), bytes.size()) << p.ClassID();
  EXPECT_EQ(write(fresh), bytes) << p.ClassID();
  EXPECT_EQ(fresh.GetStringValue(0) + fresh.GetStringDefault(0), "");
}

template <class Kind, class... Values>
Kind with(const Values&... values) {
  Kind p("-p");
  (p.AddValue(values), ...);
  return p;
}

qzisstream stream(const std::string& text) {
  qzisstream made;
  made.set(text);
  return made;
}

TEST(ParameterBinary, HasTheseBytes) {
  expectBytes(with<QZIntParameter>(7), "01 01000000 07000000 01 00000000");
  expectBytes(QZIntParameter("-p", -2), "01 00000000 01 01000000 feffffff");
  expectBytes(with<QZUIntParameter>(4294967295U, 1U), "01 02000000 ffffffff 01000000 01 00000000");
  expectBytes(with<QZFloatParameter>(1.5F), "01 01000000 0000c03f 01 00000000");
  expectBytes(with<QZDoubleParameter>(-2.0), "01 01000000 00000000000000c0 01 00000000");
  expectBytes(with<QZBoolParameter>(true, false), "01 02000000 01 00 01 00000000");
  expectBytes(with<QZStringParameter>("ab", ""), "01 02000000 02000000 6162 00000000 01 00000000");
  expectBytes(with<QZFileParameter>(stream("xyz")), "01000000 03000000 78797a 00000000");
  expectBytes(with<QZConstParameter>(), "01 00000000 01 00000000");
}

template <class Kind>
void expectRead(const std::string& hex, unsigned long used, const std::string& afterwards) {
  Kind p("-p");
  p.AddValue({});
  p.AddDefault({});
  EXPECT_EQ(read(p, fromHex(hex)), used) << hex;
  EXPECT_EQ(write(p), fromHex(afterwards)) << hex;
}

TEST(ParameterBinary, ReadsSwappedNumbersAndPassesOverOtherForms) {
  const std::string sevenAndZero = "01 01000000 07000000 01 01000000 00000000";
  expectRead<QZIntParameter>("41 00000001 00000007 e1 00000001 00000000", 18, sevenAndZero);
  expectRead<QZIntParameter>("01 01000000 07000000 02", 10, sevenAndZero);
  expectRead<QZIntParameter>("00 01000000 07000000", 1, "01 01000000 00000000 01 01000000 00000000");
  expectRead<QZDoubleParameter>("41 00000001 3ff8000000000000 01 00000000", 18,
                                "01 01000000 000000000000f83f 01 00000000");
  expectRead<QZStringParameter>("41 00000001 00000002 6162 41 00000000", 16, "01 01000000 02000000 6162 01 00000000");
  expectRead<QZBoolParameter>("01 02000000 80 00 01 00000000", 12, "01 02000000 01 00 01 00000000");
}

TEST(ParameterBinary, AClaimBeyondTheBytesKeepsWhatWasThere) {
  expectRead<QZIntParameter>("01 ffffffff 07000000 0800", 0, "01 01000000 07000000 01 01000000 00000000");
  expectRead<QZStringParameter>("01 02000000 01000000 61 ffffffff 62", 0,
                                "01 02000000 01000000 61 00000000 01 01000000 00000000");
  expectRead<QZFileParameter>("ffffffff 01000000 61 02000000 62", 0, "01000000 01000000 61 01000000 00000000");
  expectRead<QZBoolParameter>("", 0, "01 01000000 00 01 01000000 00");
}

// Every cut is refused, and whatever a flip makes of the bytes, what is read fits into them and can be written.
template <class Kind>
void expectDamageIsHarmless(const Kind& p) {
  const Bytes whole = write(p);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    Kind fresh;
    EXPECT_EQ(read(fresh, Bytes(whole.begin(), whole.begin() + static_cast<long>(length))), 0U)
        << p.ClassID() << " cut at " << length;
    EXPECT_LE(write(fresh).size(), whole.size() + 14);
  }
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (unsigned int flip = 1; flip < 256; ++flip) {
      Bytes damaged = whole;
      damaged[at] = static_cast<unsigned char>(damaged[at] ^ flip);
      Kind fresh;
      EXPECT_LE(read(fresh, damaged), damaged.size());
      EXPECT_LE(write(fresh).size(), whole.size() + 14) << p.ClassID() << " byte " << at << " flip " << flip;
    }
  }
}

TEST(ParameterBinary, DamagedBytesAreHarmless) {
  QZIntParameter ints = with<QZIntParameter>(7, -1, 300);
  ints.AddDefault(5);
  expectDamageIsHarmless(ints);
  expectDamageIsHarmless(with<QZDoubleParameter>(1.5, 1e300));
  expectDamageIsHarmless(with<QZBoolParameter>(true, false, true));
  QZStringParameter texts = with<QZStringParameter>("one", "", std::string("a\0b", 3));
  texts.AddDefault("two");
  expectDamageIsHarmless(texts);
  QZFileParameter files = with<QZFileParameter>(stream("first"), stream("second"));
  files.AddDefault(stream("third"));
  expectDamageIsHarmless(files);
}

}  // namespace
}  // namespace QZSystem
