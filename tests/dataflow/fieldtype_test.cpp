#include "qz/dataflow/fieldtype.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "tests/dataflow/bytes.h"
#include "tests/system/cli/messages.h"

namespace QZDataFlow {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes BytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }
std::string TextOf(const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); }

TEST(FieldType, IntegersTakeTheBytesThatTheyNeed) {
  const struct {
    long value;
    const char* bytes;
  } cases[] = {{0, "00"},
               {128, "80 00"},
               {256, "00 01"},
               {-1, "FF"},
               {-128, "80 FF"},
               {2147483648, "00 00 00 80 00"},
               {INT64_MAX, "FF FF FF FF FF FF FF 7F"},
               {INT64_MIN, "00 00 00 00 00 00 00 80"}};
  for (const auto& [value, bytes] : cases) {
    EXPECT_EQ(Hex(QZFieldType<long>::ToBytes(value)), bytes);
    long read = 5;
    EXPECT_TRUE(QZFieldType<long>::FromBytes(read, FromHex(bytes)));
    EXPECT_EQ(read, value);
  }
}

/// The value that the bytes give, as it is shown, or "false" and the value that stays.
template <class T>
std::string Read(const Bytes& bytes, T value) {
  const bool read = QZFieldType<T>::FromBytes(value, bytes);
  return (read ? "" : "false ") + QZFieldType<T>::Format(value);
}

TEST(FieldType, ScalarsRefuseBytesThatAreNone) {
  EXPECT_EQ(Read<long>({}, 7), "false 7");
  EXPECT_EQ(Read<long>(FromHex("01 00 00 00 00 00 00 00 00"), 7), "false 7");
  EXPECT_EQ(Read<long>(FromHex("01 00 00"), 7), "1");
  EXPECT_EQ(Read<double>({}, 0.5), "false 0.500000000000");
  EXPECT_EQ(Read<double>(FromHex("00 00 00 00 00 00 F0"), 0.5), "false 0.500000000000");
  EXPECT_EQ(Read<double>(FromHex("00 00 00 00 00 00 F0 3F FF"), 0.5), "1.000000000000");
  EXPECT_EQ(Read<bool>({}, true), "false True");
  EXPECT_EQ(Read<bool>({0, 9}, false), "True");
  EXPECT_EQ(Read<bool>({2}, true), "False");
  EXPECT_EQ(Read<std::string>({}, "x"), "");
  EXPECT_EQ(Read<std::string>({'a', 0, 'b'}, "x"), std::string("a\0b", 3));
  EXPECT_EQ(Read<Bytes>({}, {1}), "<Blob of length 0>");
  EXPECT_EQ(Read<Bytes>({7, 8, 9}, {1}), "<Blob of length 3>");
  EXPECT_EQ(Hex(QZFieldType<bool>::ToBytes(true)), "00");
  EXPECT_EQ(Hex(QZFieldType<bool>::ToBytes(false)), "01");
  EXPECT_EQ(Hex(QZFieldType<double>::ToBytes(-1.0)), "00 00 00 00 00 00 F0 BF");
  EXPECT_EQ(Hex(QZFieldType<std::string>::ToBytes("ab")), "61 62");
}

TEST(FieldType, ABlobCanBeAppendedToItself) {
  Bytes blob{1, 2};
  QZFieldType<Bytes>::AppendBytes(blob, blob);
  EXPECT_EQ(Hex(blob), "01 02 01 02");
}

TEST(FieldType, NoValueHasNoBytes) {
  EXPECT_EQ(QZFieldType<long>::ToBytes(std::optional<long>()), std::nullopt);
  EXPECT_EQ(QZFieldType<std::string>::ToBytes(std::nullopt), std::nullopt);
  EXPECT_EQ(QZFieldType<long>::ToBytes(std::optional<int>(5)), Bytes{5});
  EXPECT_EQ(QZFieldType<std::string>::ToBytes(std::optional<std::string>("")), Bytes{});
  EXPECT_EQ(QZFieldType<QZLinkObject>::ToBytes(std::optional<QZLinkObject>(QZLinkObject())), Bytes{});
}

TEST(FieldType, RangesAreTextWithSixDecimals) {
  const struct {
    QZRange range;
    const char *text, *shown;
  } cases[] = {
      {QZRange(0.5, 2.0, 2), "[0.500000,2.000000,0.0,2.000000]", "[0.500000000000, 2.000000000000)"},
      {QZRange(std::nullopt, 5.0, 3), "[null,5.000000,1.0,3.000000]", "<=5.000000000000"},
      {QZRange(1.0, std::nullopt, 1), "[1.000000,null,-1.0,1.000000]", ">1.000000000000"},
      {QZRange(), "[null,null,0.0,0.000000]", "None"},
      {QZRange(-3.0, -3.0, 1), "[-3.000000,-3.000000,0.0,1.000000]", "-3.000000000000"},
  };
  for (const auto& [range, text, shown] : cases) {
    EXPECT_EQ(TextOf(QZFieldType<QZRange>::ToBytes(range)), text);
    EXPECT_EQ(QZFieldType<QZRange>::Format(range), shown);
    QZRange read(7.0, 8.0, 1);
    EXPECT_TRUE(QZFieldType<QZRange>::FromBytes(read, BytesOf(text))) << text;
    EXPECT_EQ(read, range) << text;
  }
}

TEST(FieldType, RangeTextIsReadLeniently) {
  const struct {
    const char *text, *result;
  } cases[] = {
      {"", "false <9.000000000000"},
      {"[1,2,0]", "false <9.000000000000"},
      {"[1,2,0,0,0]", "false <9.000000000000"},
      {"(1,2,,0, 1 )", "(1.000000000000, 2.000000000000)"},
      {"[1,2,-1,0]", ">=1.000000000000"},
      {"[x,2,0,0]", "[0.000000000000, 2.000000000000]"},
      {"[3,2,0,0]", "None"},
      {"[nan,2,0,0]", "None"},
  };
  Messages messages;
  for (const auto& [text, result] : cases) {
    EXPECT_EQ(Read(BytesOf(text), QZRange(std::nullopt, 9.0, 1)), result) << text;
  }
  EXPECT_EQ(messages.Take(),
            "Warning: Invalid QZRange specified, with low value > high value: (3,2) will default initialize\n"
            "Warning: Invalid vector for constructing an QZRange. Lower bound cannot be NaN\n");
}

TEST(FieldType, JSONObjectsKeepTheirTextOrNothing) {
  Messages messages;
  const std::string text = " {\"a\" : [1]}\n";
  EXPECT_EQ(QZJSONObject(text).GetText(), text);
  EXPECT_EQ(TextOf(QZFieldType<QZLinkObject>::ToBytes(QZLinkObject(text))), text);
  EXPECT_EQ(Read<QZJSONObject>(BytesOf(text), QZJSONObject()), text);
  EXPECT_EQ(Read<QZJSONObject>({}, QZJSONObject(text)), "false " + text);
  EXPECT_EQ(messages.Take(), "");
  EXPECT_EQ(Read<QZJSONObject>(BytesOf("[1]"), QZJSONObject(text)), "");
  EXPECT_EQ(messages.Take(),
            "Warning: JSON: Top level document must be an object\n"
            "Warning: JSON object constructed with invalid string: [1]\n");
  QZLinkObject link(text);
  EXPECT_TRUE(QZFieldType<QZLinkObject>::FromBytes(link, BytesOf("{")));
  EXPECT_EQ(link.GetText(), "");
}

template <class T>
void ExpectVector(const std::vector<std::optional<T>>& values, const std::string& bytes, const std::string& shown) {
  EXPECT_EQ(Hex(QZVectorFieldType<T>::ToBytes(values)), bytes);
  EXPECT_EQ(QZVectorFieldType<T>::Format(values), shown);
  std::vector<std::optional<T>> read(1), expected(1);
  std::vector<T> plain(1), expectedPlain(1);
  expected.insert(expected.end(), values.begin(), values.end());
  for (const auto& value : values) expectedPlain.push_back(value.value_or(T()));
  EXPECT_TRUE(QZVectorFieldType<T>::FromBytes(read, FromHex(bytes)));
  EXPECT_TRUE(QZVectorFieldType<T>::FromBytes(plain, FromHex(bytes)));
  EXPECT_EQ(read, expected) << bytes;
  EXPECT_EQ(plain, expectedPlain) << bytes;
  for (std::size_t size = 0; size < FromHex(bytes).size(); ++size) {
    std::vector<std::optional<T>> cut;
    EXPECT_FALSE(QZVectorFieldType<T>::FromBytes(cut, FromHex(bytes).data(), size)) << bytes << " cut at " << size;
    ASSERT_LT(cut.size(), values.size());
    EXPECT_TRUE(std::equal(cut.begin(), cut.end(), values.begin())) << bytes << " cut at " << size;
  }
}

TEST(VectorFieldType, ElementsMayBeAbsentOrCutShort) {
  ExpectVector<long>({1, std::nullopt, -1, 300}, "04 01 80 81 FF 82 2C 01", "[1, Null, -1, 300]");
  ExpectVector<double>({0.5, std::nullopt, -1.0},
                       "03 00 00 00 00 00 00 E0 3F 00 00 00 00 00 0E F8 7F 00 00 00 00 00 00 F0 BF",
                       "[0.500000000000, Null, -1.000000000000]");
  ExpectVector<bool>({true, std::nullopt, false}, "03 01 80 00", "[True, Null, False]");
  ExpectVector<std::string>({"ab", std::nullopt, ""}, "03 02 61 62 80 00", "[ab, Null, ]");
  ExpectVector<Bytes>({Bytes{1, 2}, std::nullopt, Bytes{}}, "03 02 01 02 80 00",
                      "[<Blob of length 2>, Null, <Blob of length 0>]");
  const std::vector<std::optional<long>> many(200, 1);
  std::string ones = "82 C8 00";
  for (std::size_t i = 0; i < many.size(); ++i) ones += " 01";
  ExpectVector<long>(many, ones, QZVectorFieldType<long>::Format(many));
}

TEST(VectorFieldType, CountsAreHeldAgainstTheBytes) {
  const struct {
    const char* bytes;
    bool read;
    std::vector<std::string> values;
  } cases[] = {
      {"", false, {}},
      {"00 01 61", true, {}},
      {"01 01 61 05", true, {"a"}},
      {"03 01 61", false, {}},
      {"02 01 61 05 62", false, {"a"}},
      {"02 01 61 81 FF", false, {"a"}},
      {"02 01 61 89 01", true, {"a", ""}},
      {"88 FF FF FF FF FF FF FF 7F 00", false, {}},
      {"87 00 00 00 00 00 00 40 00", false, {}},
  };
  for (const auto& [bytes, read, values] : cases) {
    std::vector<std::string> out;
    EXPECT_EQ(QZVectorFieldType<std::string>::FromBytes(out, FromHex(bytes)), read) << bytes;
    EXPECT_EQ(out, values) << bytes;
  }
}

TEST(VectorFieldType, NarrowerElementsWiden) {
  EXPECT_EQ(Hex(QZVectorFieldType<long>::ToBytes(std::vector<long>{1, 256})), "02 01 82 00 01");
  EXPECT_EQ(Hex(QZVectorFieldType<long>::ToBytes(std::vector<int>{-1})), "01 81 FF");
  EXPECT_EQ(Hex(QZVectorFieldType<long>::ToBytes(std::vector<unsigned int>{0xFFFFFFFF})), "01 85 FF FF FF FF 00");
  EXPECT_EQ(Hex(QZVectorFieldType<double>::ToBytes(std::vector<float>{0.5F})), "01 00 00 00 00 00 00 E0 3F");
  EXPECT_EQ(Hex(QZVectorFieldType<bool>::ToBytes(std::vector<bool>{true, false})), "02 01 00");
}

TEST(Types, AreKnownByNameAndTellWhatTheyAre) {
  const QZFieldTypeHandler* const builtIn[] = {
      &Types::Int,    &Types::String,    &Types::Float,    &Types::Blob,       &Types::Bool,
      &Types::IntVec, &Types::StringVec, &Types::FloatVec, &Types::BlobVec,    &Types::BoolVec,
      &Types::Record, &Types::RecordVec, &Types::Range,    &Types::JSONObject, &Types::Link};
  std::string names, pods, cacheable;
  int kind = 0;
  for (const QZFieldTypeHandler* handler : builtIn) {
    const std::string name = handler->GetName();
    names += name + ' ';
    if (handler->IsPOD()) pods += name + ' ';
    if (handler->IsCacheable()) cacheable += name + ' ';
    EXPECT_TRUE(handler->BytesToJSON({1}).empty() && handler->JSONToBytes("1").empty()) << name;
    EXPECT_EQ(QZGetFieldKind(name), static_cast<QZFieldKind>(kind++)) << name;
    EXPECT_EQ(Types::GetBuiltIn(QZGetFieldKind(name)), handler) << name;
  }
  const std::string plain = "Int String Float Blob Bool IntVec StringVec FloatVec BlobVec BoolVec ";
  EXPECT_EQ(names, plain + "Record RecordVec Range JSONObject Link ");
  EXPECT_EQ(pods, plain);
  EXPECT_EQ(cacheable, "Record ");
  for (const char* name : {"", "int", "Int ", "Records", "LinkObject"})
    EXPECT_EQ(QZGetFieldKind(name), QZFieldKind::Other) << name;
  EXPECT_EQ(Types::GetBuiltIn(QZFieldKind::Other), nullptr);
}

TEST(Types, OnlySomeTurnAPointerToBytes) {
  const long number = 300;
  const std::string text = "ab";
  const Bytes blob{1, 2};
  EXPECT_EQ(Hex(Types::Int.PtrToBytes(&number)), "2C 01");
  EXPECT_EQ(Hex(Types::String.PtrToBytes(&text)), "61 62");
  EXPECT_EQ(Hex(Types::Blob.PtrToBytes(&blob)), "01 02");
  for (const QZFieldTypeHandler* other :
       std::initializer_list<const QZFieldTypeHandler*>{&Types::Float, &Types::Bool, &Types::Range, &Types::IntVec})
    EXPECT_TRUE(other->PtrToBytes(&number).empty()) << other->GetName();
}

}  // namespace
}  // namespace QZDataFlow
