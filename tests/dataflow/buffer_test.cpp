#include "qz/dataflow/buffer.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "tests/dataflow/bytes.h"

namespace QZDataFlow {
namespace {

constexpr long kLeast = std::numeric_limits<long>::min();
constexpr long kMost = std::numeric_limits<long>::max();

QZWriteBuffer Written(void (*write)(QZWriteBuffer&)) {
  QZWriteBuffer out;
  write(out);
  return out;
}

TEST(WriteBuffer, IntegersTakeTheBytesThatTheyNeed) {
  const struct {
    long value;
    const char* bytes;
  } cases[] = {
      {0, "00"},
      {127, "7F"},
      {128, "82 80 00"},
      {255, "82 FF 00"},
      {256, "82 00 01"},
      {32767, "82 FF 7F"},
      {32768, "83 00 80 00"},
      {65536, "83 00 00 01"},
      {-1, "81 FF"},
      {-127, "81 81"},
      {-128, "82 80 FF"},
      {-32768, "83 00 80 FF"},
      {4294967296, "85 00 00 00 00 01"},
      {kMost, "88 FF FF FF FF FF FF FF 7F"},
      {-kMost, "88 01 00 00 00 00 00 00 80"},
      {kLeast, "88 00 00 00 00 00 00 00 80"},
  };
  for (const auto& [value, bytes] : cases) {
    QZWriteBuffer out;
    out.WriteInt(value);
    EXPECT_EQ(Hex(out.Get()), bytes) << value;
    EXPECT_EQ(QZWriteBuffer::IntSize(value), out.Get().size()) << value;
    QZReadBuffer in(out.Get());
    bool none = true;
    EXPECT_EQ(in.ReadInt(none), value);
    EXPECT_FALSE(none || in.IsValid()) << value;
    EXPECT_EQ(Hex(QZReadBuffer(out.Get()).ReadRawBytes<long>()), bytes) << value;
  }
}

TEST(WriteBuffer, EveryPrimitiveHasItsBytes) {
  using Out = QZWriteBuffer;
  const struct {
    const char* bytes;
    void (*write)(Out&);
  } cases[] = {
      {"82 00 01", [](Out& out) { out.WriteInt(256); }},
      {"85 FF FF FF FF 00", [](Out& out) { out.WriteInt(4294967295U); }},
      {"81 FF", [](Out& out) { out.WriteInt(~0UL); }},
      {"00 00 00 00 00 00 F0 BF", [](Out& out) { out.WriteFloat(-1.0); }},
      {"01 00", [](Out& out) { out.WriteBool(true), out.WriteBool(false); }},
      {"03 61 00 62 00", [](Out& out) { out.WriteString(std::string("a\0b", 3)), out.WriteString(""); }},
      {"02 80 FF 00",
       [](Out& out) {
         out.WriteBlob({0x80, 0xFF}), out.WriteBlob({});
       }},
      {"80 80 80 80",
       [](Out& out) { out.WriteNoneInt(), out.WriteNoneString(), out.WriteNoneBool(), out.WriteNoneBlob(); }},
      {"00 00 00 00 00 0E F8 7F", [](Out& out) { out.WriteNoneFloat(); }},
      {"03 01 81 FF 82 80 00",
       [](Out& out) {
         out.WriteIntVec(std::vector<long>{1, -1, 128});
       }},
      {"02 01 81 FF",
       [](Out& out) {
         out.WriteIntVec(std::vector<int>{1, -1});
       }},
      {"01 85 FF FF FF FF 00", [](Out& out) { out.WriteIntVec(std::vector<unsigned int>{4294967295U}); }},
      {"01 00 00 00 00 00 00 E0 3F", [](Out& out) { out.WriteFloatVec(std::vector<double>{0.5}); }},
      {"01 00 00 00 00 00 00 E0 3F", [](Out& out) { out.WriteFloatVec(std::vector<float>{0.5F}); }},
      {"02 01 00",
       [](Out& out) {
         out.WriteBoolVec({true, false});
       }},
      {"02 01 61 00",
       [](Out& out) {
         out.WriteStringVec({"a", ""});
       }},
      {"07 00 00 00 00 00 00 E0 3F 01 61",
       [](Out& out) { out.Write<long>(7), out.Write<double>(0.5), out.Write<std::string>("a"); }},
      {"01 02 01 02",
       [](Out& out) {
         out.Append({1, 2}), out.Append(out);
       }},
      {"01 02 01 02",
       [](Out& out) {
         out.Append({1, 2}), out.Append(out.Get());
       }},
      {"01 02 02 01 02",
       [](Out& out) {
         out.Append({1, 2}), out.WriteBlob(out.Get());
       }},
  };
  for (const auto& [bytes, write] : cases) EXPECT_EQ(Hex(Written(write).Get()), bytes);
}

TEST(WriteBuffer, AWrapperHasNameLengthAndContent) {
  QZWriteBuffer inside("abc"), plain;
  EXPECT_EQ(inside.WrappedSize(), 4U);
  std::vector<unsigned char> out{9};
  inside.CopyWrapped(out, false);
  EXPECT_EQ(Hex(out), "09");
  inside.CopyWrapped(out, true);
  EXPECT_EQ(Hex(out), "09 03 61 62 63 00");
  inside.Append({1, 2});
  plain.Append({3});
  EXPECT_EQ(inside.WrappedSize(), 6U);
  EXPECT_EQ(plain.WrappedSize(), 1U);
  inside.CopyWrapped(plain, false);
  EXPECT_EQ(Hex(plain.Get()), "03 03 61 62 63 02 01 02");
  inside.CopyWrapped(inside, false);
  EXPECT_EQ(Hex(inside.Get()), "01 02 03 61 62 63 02 01 02");
  inside.Clear();
  EXPECT_EQ(inside.WrappedSize(), 4U);
}

/// What a read gives: its value or "none" or "error", and the place of the cursor behind it.
template <class Read>
std::string Result(const std::string& hex, Read read) {
  const std::vector<unsigned char> bytes = FromHex(hex);
  QZReadBuffer in(bytes);
  std::string text;
  try {
    bool none = true;
    text = read(in, none);
    if (none) text += " none";
  } catch (const std::length_error&) {
    text = "length_error";
  }
  return text + " @" + std::to_string(bytes.size() - in.Remaining());
}

struct ReadCase {
  const char *bytes, *result;
};

TEST(ReadBuffer, IntegersOfEveryForm) {
  for (const auto& [bytes, result] : {
           ReadCase{"", "0 none @0"},
           ReadCase{"7F 01", "127 @1"},
           ReadCase{"80 01", "0 none @1"},
           ReadCase{"89 01 02 03 04 05 06 07 08 09", "0 none @1"},
           ReadCase{"FF", "0 none @1"},
           ReadCase{"81 05", "5 @2"},
           ReadCase{"84 FF FF FF FF", "-1 @5"},
           ReadCase{"83 00 01", "0 none @3"},
           ReadCase{"82", "0 none @1"},
       }) {
    EXPECT_EQ(Result(bytes, [](auto& in, bool& none) { return std::to_string(in.ReadInt(none)); }), result) << bytes;
  }
}

TEST(ReadBuffer, LengthsAreBoundedByWhatRemains) {
  for (const auto& [bytes, result] : {
           ReadCase{"02 01 02", "2 @1"},
           ReadCase{"00", "0 @1"},
           ReadCase{"80 01", "0 none @1"},
           ReadCase{"82 00", "0 none @2"},
           ReadCase{"03 01 02", "18446744073709551615 @1"},
           ReadCase{"81 FF 01", "18446744073709551615 @2"},
           ReadCase{"86 00 00 00 00 00 08", "18446744073709551615 @7"},
           ReadCase{"88 FF FF FF FF FF FF FF 7F", "18446744073709551615 @9"},
       }) {
    EXPECT_EQ(Result(bytes, [](auto& in, bool& none) { return std::to_string(in.ReadLength(none)); }), result) << bytes;
  }
}

TEST(ReadBuffer, FloatsAndBoolsKnowTheirMarkers) {
  for (const auto& [bytes, result] : {
           ReadCase{"00 00 00 00 00 00 E0 3F 01", "0.500000 @8"},
           ReadCase{"00 00 00 00 00 0E F8 7F", "0.000000 none @8"},
           ReadCase{"01 00 00 00 00 0E F8 7F", "nan @8"},
           ReadCase{"00 00 00 00 00 00 E0", "0.000000 none @7"},
       }) {
    EXPECT_EQ(Result(bytes, [](auto& in, bool& none) { return std::to_string(in.ReadFloat(none)); }), result) << bytes;
  }
  for (const auto& [bytes, result] : {ReadCase{"00", "0 @1"}, ReadCase{"01", "1 @1"}, ReadCase{"02", "1 @1"},
                                      ReadCase{"81", "1 @1"}, ReadCase{"80", "0 none @1"}, ReadCase{"", "0 none @0"}}) {
    EXPECT_EQ(Result(bytes, [](auto& in, bool& none) { return std::to_string(in.ReadBool(none)); }), result) << bytes;
  }
}

TEST(ReadBuffer, StringsBlobsAndContainersRefuseLengthsBeyondTheEnd) {
  const auto string = [](auto& in, bool& none) { return in.ReadString(none); };
  const auto limited = [](auto& in, bool& none) { return in.ReadString(none, 2); };
  const auto blob = [](auto& in, bool& none) { return Hex(in.ReadBlob(none)); };
  const auto container = [](auto& in, bool& none) { return none = false, Hex(in.ReadContainer()); };
  EXPECT_EQ(Result("02 61 62 63", string), "ab @3");
  EXPECT_EQ(Result("80 61", string), " none @1");
  EXPECT_EQ(Result("82 61", string), " none @2");
  EXPECT_EQ(Result("03 61 62", string), "length_error @1");
  EXPECT_EQ(Result("88 FF FF FF FF FF FF FF 7F", string), "length_error @9");
  EXPECT_EQ(Result("02 61 62", limited), "ab @3");
  EXPECT_EQ(Result("03 61 62 63", limited), " none @1");
  EXPECT_EQ(Result("7F 61", limited), " none @1");
  EXPECT_EQ(Result("02 80 00 05", blob), "80 00 @3");
  EXPECT_EQ(Result("81 FF 00", blob), "length_error @2");
  EXPECT_EQ(Result("01 61 02 05 06 07", container), "01 61 02 05 06 @5");
  EXPECT_EQ(Result("80 02 05", container), " @1");
  EXPECT_EQ(Result("01 61 80 05", container), "01 61 80 @3");
  EXPECT_EQ(Result("01 61 03 05 06", container), "length_error @3");
  EXPECT_EQ(Result("05 61", container), "length_error @1");
}

TEST(ReadBuffer, RawBytesComeAsTheyStandAndCutOnesAsNoValue) {
  const auto raw = [](auto type) {
    return [](auto& in, bool& none) { return none = false, Hex(in.template ReadRawBytes<decltype(type)>()); };
  };
  const struct {
    const char *bytes, *asLong, *asDouble, *asString;
  } cases[] = {
      {"82 80 00 01 02 03 04 05 06", "82 80 00 @3", "82 80 00 01 02 03 04 05 @8", "length_error @3"},
      {"05 61 62 63 64 65", "05 @1", "00 00 00 00 00 0E F8 7F @6", "05 61 62 63 64 65 @6"},
      {"80", "80 @1", "00 00 00 00 00 0E F8 7F @1", "80 @1"},
      {"82", "80 @1", "00 00 00 00 00 0E F8 7F @1", "80 @1"},
      {"89 01", "80 @2", "00 00 00 00 00 0E F8 7F @2", "89 @1"},
      {"82 01", "80 @2", "00 00 00 00 00 0E F8 7F @2", "80 @2"},
      {"", "80 @0", "00 00 00 00 00 0E F8 7F @0", "80 @0"},
  };
  for (const auto& [bytes, asLong, asDouble, asString] : cases) {
    EXPECT_EQ(Result(bytes, raw(long())), asLong) << bytes;
    EXPECT_EQ(Result(bytes, raw(double())), asDouble) << bytes;
    EXPECT_EQ(Result(bytes, raw(std::string())), asString) << bytes;
  }
}

TEST(ReadBuffer, UnwrapTakesNameAndContent) {
  const auto unwrap = [](auto& in, bool& none) {
    std::string name;
    QZReadBuffer content;
    none = !in.Unwrap(name, content);
    return name + ":" + (content.IsValid() ? std::to_string(content.Remaining()) : "empty");
  };
  EXPECT_EQ(Result("03 61 62 63 02 01 02 09", unwrap), "abc:2 @7");
  EXPECT_EQ(Result("01 61 00", unwrap), "a:empty @3");
  EXPECT_EQ(Result("00 01 05", unwrap), ":1 @3");
  EXPECT_EQ(Result("80 01 05", unwrap), ":empty none @1");
  EXPECT_EQ(Result("01 61 80 05", unwrap), "a:empty none @3");
  EXPECT_EQ(Result("01 61 02 05", unwrap), "a:empty none @3");
  EXPECT_EQ(Result("01 61 81 FF", unwrap), "a:empty none @4");
  const std::string name16 = "61 62 63 64 65 66 67 68 69 6A 6B 6C 6D 6E 6F 70";
  EXPECT_EQ(Result("10 " + name16 + " 00", unwrap), "abcdefghijklmnop:empty @18");
  EXPECT_EQ(Result("11 " + name16 + " 71 00", unwrap), ":empty none @1");
}

TEST(ReadBuffer, NothingIsReadFromNothing) {
  const std::vector<unsigned char> none, one{5};
  QZReadBuffer in(one);
  EXPECT_FALSE(QZReadBuffer().IsValid());
  EXPECT_FALSE(QZReadBuffer(none).IsValid());
  EXPECT_TRUE(in.IsValid());
  in.ReadInt();
  EXPECT_FALSE(in.IsValid());
  EXPECT_EQ(QZReadBuffer().Read<long>(), 0);
  EXPECT_EQ(QZReadBuffer().Read<double>(), 0.0);
  EXPECT_FALSE(QZReadBuffer().Read<bool>());
  EXPECT_EQ(QZReadBuffer().Read<std::string>(), "");
}

}  // namespace
}  // namespace QZDataFlow
