#include "qz/dataflow/buffer.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <stdexcept>

#include "tests/dataflow/bytes.h"

namespace QZDataFlow {
namespace {

constexpr long kLeast = std::numeric_limits<long>::min();
constexpr long kMost = std::numeric_limits<long>::max();

TEST(WriteBuffer, IntegersTakeTheBytesThatTheyNeed) {
  const struct {
    long value;
    const char* bytes;
  } cases[] = {
      {0, "00"},
      {127, "7F"},
      {128, "82 80 00"},
      {256, "82 00 01"},
      {32768, "83 00 80 00"},
      {-1, "81 FF"},
      {-127, "81 81"},
      {-128, "82 80 FF"},
      {4294967296, "85 00 00 00 00 01"},
      {kMost, "88 FF FF FF FF FF FF FF 7F"},
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
  const std::vector<long> longs{1, -1, 128};
  const std::vector<bool> bools{true, false};
  const std::vector<unsigned char> bytes{0x80, 0xFF};
  const std::vector<std::string> strings{"a", ""};
  const std::pair<const char*, std::function<void(Out&)>> cases[] = {
      {"85 FF FF FF FF 00", [](Out& out) { out.WriteInt(4294967295U); }},
      {"81 FF", [](Out& out) { out.WriteInt(~0UL); }},
      {"00 00 00 00 00 00 F0 BF", [](Out& out) { out.WriteFloat(-1.0); }},
      {"01 00", [](Out& out) { out.WriteBool(true), out.WriteBool(false); }},
      {"03 61 00 62 00", [](Out& out) { out.WriteString(std::string("a\0b", 3)), out.WriteString(""); }},
      {"02 80 FF 00", [&](Out& out) { out.WriteBlob(bytes), out.WriteBlob({}); }},
      {"80 80 80 80",
       [](Out& out) { out.WriteNoneInt(), out.WriteNoneString(), out.WriteNoneBool(), out.WriteNoneBlob(); }},
      {"00 00 00 00 00 0E F8 7F", [](Out& out) { out.WriteNoneFloat(); }},
      {"03 01 81 FF 82 80 00", [&](Out& out) { out.WriteIntVec(longs); }},
      {"01 81 FF", [](Out& out) { out.WriteIntVec(std::vector<int>{-1}); }},
      {"01 85 FF FF FF FF 00", [](Out& out) { out.WriteIntVec(std::vector<unsigned int>{4294967295U}); }},
      {"01 00 00 00 00 00 00 E0 3F", [](Out& out) { out.WriteFloatVec(std::vector<double>{0.5}); }},
      {"01 00 00 00 00 00 00 E0 3F", [](Out& out) { out.WriteFloatVec(std::vector<float>{0.5F}); }},
      {"02 01 00", [&](Out& out) { out.WriteBoolVec(bools); }},
      {"02 01 61 00", [&](Out& out) { out.WriteStringVec(strings); }},
      {"07 00 00 00 00 00 00 E0 3F 01 61",
       [](Out& out) { out.Write<long>(7), out.Write<double>(0.5), out.Write<std::string>("a"); }},
      {"80 FF 80 FF", [&](Out& out) { out.Append(bytes), out.Append(out); }},
      {"80 FF 80 FF", [&](Out& out) { out.Append(bytes), out.Append(out.Get()); }},
      {"80 FF 02 80 FF", [&](Out& out) { out.Append(bytes), out.WriteBlob(out.Get()); }},
  };
  for (const auto& [expected, write] : cases) {
    Out out;
    write(out);
    EXPECT_EQ(Hex(out.Get()), expected);
  }
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

TEST(ReadBuffer, NumbersOfEveryForm) {
  const auto asInt = [](auto& in, bool& none) { return std::to_string(in.ReadInt(none)); };
  const auto asLength = [](auto& in, bool& none) { return std::to_string(static_cast<long>(in.ReadLength(none))); };
  const auto asFloat = [](auto& in, bool& none) { return std::to_string(in.ReadFloat(none)); };
  const auto asBool = [](auto& in, bool& none) { return std::to_string(in.ReadBool(none)); };
  EXPECT_EQ(Result("", asInt), "0 none @0");
  EXPECT_EQ(Result("7F 01", asInt), "127 @1");
  EXPECT_EQ(Result("80 01", asInt), "0 none @1");
  EXPECT_EQ(Result("89 01 02 03 04 05 06 07 08 09", asInt), "0 none @1");
  EXPECT_EQ(Result("84 FF FF FF FF", asInt), "-1 @5");
  EXPECT_EQ(Result("83 00 01", asInt), "0 none @3");
  EXPECT_EQ(Result("82", asInt), "0 none @1");
  // A length is bounded by what remains; one that isn't is the largest number.
  EXPECT_EQ(Result("02 01 02", asLength), "2 @1");
  EXPECT_EQ(Result("80 01", asLength), "0 none @1");
  EXPECT_EQ(Result("82 00", asLength), "0 none @2");
  EXPECT_EQ(Result("03 01 02", asLength), "-1 @1");
  EXPECT_EQ(Result("81 FF 01", asLength), "-1 @2");
  EXPECT_EQ(Result("88 FF FF FF FF FF FF FF 7F", asLength), "-1 @9");
  EXPECT_EQ(Result("00 00 00 00 00 00 E0 3F 01", asFloat), "0.500000 @8");
  EXPECT_EQ(Result("00 00 00 00 00 0E F8 7F", asFloat), "0.000000 none @8");
  EXPECT_EQ(Result("01 00 00 00 00 0E F8 7F", asFloat), "nan @8");
  EXPECT_EQ(Result("00 00 00 00 00 00 E0", asFloat), "0.000000 none @7");
  EXPECT_EQ(Result("00", asBool), "0 @1");
  EXPECT_EQ(Result("02", asBool), "1 @1");
  EXPECT_EQ(Result("80", asBool), "0 none @1");
  EXPECT_EQ(Result("", asBool), "0 none @0");
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
  EXPECT_FALSE(QZReadBuffer().IsValid() || QZReadBuffer(std::vector<unsigned char>()).IsValid());
  EXPECT_EQ(QZReadBuffer().Read<long>(), 0);
  EXPECT_EQ(QZReadBuffer().Read<double>(), 0.0);
  EXPECT_FALSE(QZReadBuffer().Read<bool>());
  EXPECT_EQ(QZReadBuffer().Read<std::string>(), "");
}

}  // namespace
}  // namespace QZDataFlow
