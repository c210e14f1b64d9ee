#include "qz/system/qzb/qzb.h"

#include <gtest/gtest.h>

#include <cstring>

#include "qz/platform/filestream.h"
#include "qz/platform/memorystream.h"
#include "tests/system/cli/messages.h"
#include "tests/system/qzb/bytes.h"

using namespace QZSystem;

namespace {

constexpr const char* lengthEnd = "Warning: end of file reached in QZBReadDataLength(QZPlatform::qzistream &)\n";
constexpr const char* lengthCorrupt = "Warning: data size corrupt in QZBinary file\n";

template <class Length>
std::string WrittenLength(Length length) {
  qzosstream out;
  EXPECT_TRUE(QZBWriteDataLength(out, length));
  return Hex(out.str());
}

TEST(QZBLength, HasSevenBitsAByteWithTheHighBitOnTheLast) {
  const std::pair<unsigned long, const char*> cases[] = {{0, "80"},
                                                         {1, "81"},
                                                         {127, "FF"},
                                                         {128, "00 81"},
                                                         {300, "2C 82"},
                                                         {16383, "7F FF"},
                                                         {16384, "00 00 81"},
                                                         {0xFFFFFFFF, "7F 7F 7F 7F 8F"},
                                                         {1UL << 35, "00 00 00 00 00 81"},
                                                         {~0UL, "7F 7F 7F 7F 7F 7F 7F 7F 7F 81"}};
  for (const auto& [value, hex] : cases) {
    SCOPED_TRACE(value);
    const std::string bytes = Bytes(hex);
    EXPECT_EQ(WrittenLength(value), hex);
    EXPECT_EQ(QZBDataLengthBytes(value), bytes.size());
    if (value <= 0xFFFFFFFF) {
      EXPECT_EQ(WrittenLength(static_cast<unsigned int>(value)), hex);
      EXPECT_EQ(QZBDataLengthBytes(static_cast<unsigned int>(value)), bytes.size());
    }
    BytesIn in(bytes);
    EXPECT_EQ(QZBReadDataLength(in, ~0UL), value);
    EXPECT_TRUE(in.eof());
  }
}

TEST(QZBLength, ThatIsDamagedReadsAsZeroWithAWarning) {
  const struct {
    const char* bytes;
    unsigned long largest, length, left;
    const char* warning;
  } cases[] = {{"", 100, 0, 0, lengthEnd},
               {"00", 100, 0, 0, lengthEnd},
               {"7F 7F", 100, 0, 0, lengthEnd},
               {"80", 100, 0, 0, ""},
               {"E4 55", 100, 100, 1, ""},
               {"E5 55", 100, 0, 1, lengthCorrupt},
               {"00 00 00 00 00 00 00 00 00 01 55", ~0UL, 0, 1, lengthCorrupt},
               {"00 00 00 00 00 00 00 00 00 82 55", ~0UL, 0, 1, ""},
               {"00 00 00 00 00 00 00 00 00", ~0UL, 0, 0, lengthEnd}};
  Messages messages;
  for (const auto& each : cases) {
    const std::string bytes = Bytes(each.bytes);
    BytesIn in(bytes);
    EXPECT_EQ(QZBReadDataLength(in, each.largest), each.length) << each.bytes;
    EXPECT_EQ(messages.Take(), each.warning) << each.bytes;
    EXPECT_EQ(in.size() - in.tell(), each.left) << each.bytes;
  }
}

TEST(QZBTag, IsACodeOrTheName) {
  const std::string longest(1023, 'a');
  const std::pair<std::string, std::string> cases[] = {{"QZBase", "1F"},
                                                       {"QZBasePOD", "01"},
                                                       {"MDLParity", "1B"},
                                                       {"zQZMCMolBase", "22"},
                                                       {"zstdQZMCMolBase", "37"},
                                                       {"QZPrimarySubSearchScreen", "38"},
                                                       {"n", "00 81 'n'"},
                                                       {"QZBasePO", "00 88 'QZBasePO'"},
                                                       {longest, "00 7F 87 '" + longest + "'"}};
  for (const auto& [name, hex] : cases) {
    qzosstream out;
    EXPECT_TRUE(QZBWriteTag(out, name.c_str()));
    const std::string written = out.str(), bytes = written + "x";
    EXPECT_EQ(Hex(written), Hex(Bytes(hex)));
    BytesIn in(bytes);
    char read[QZBTagBufferSize], peeked[QZBTagBufferSize];
    unsigned char code, peekedCode;
    EXPECT_TRUE(QZBPeekTag(in, peeked, peekedCode)) << name;
    EXPECT_EQ(in.tell(), 0U);
    EXPECT_TRUE(QZBReadTag(in, read, code)) << name;
    EXPECT_EQ(read, name);
    EXPECT_STREQ(peeked, code == 0 ? "" : read);
    EXPECT_EQ(code, static_cast<unsigned char>(written[0]));
    EXPECT_EQ(peekedCode, code);
    EXPECT_EQ(in.get(), 'x');
  }
}

TEST(QZBTag, CodesAndNamesAgree) {
  unsigned int named = 0;
  for (unsigned int code = 0; code <= 300; ++code) {
    char name[QZBTagBufferSize];
    std::memset(name, 'x', sizeof name);
    QZBGetNonUDTTag(name, code);
    const std::string text(name);
    EXPECT_EQ(QZIsInternalQZBTag(text.data(), text.size()), !text.empty()) << code;
    if (text.empty()) continue;
    ++named;
    EXPECT_FALSE(QZIsInternalQZBTag(text.data(), text.size() - 1)) << text;
    qzosstream out;
    QZBWriteTag(out, name);
    EXPECT_EQ(out.str(), std::string(1, static_cast<char>(code))) << text;
  }
  EXPECT_EQ(named, 48U);
}

TEST(QZBTag, WithAGivenCodeIsWrittenAsItIs) {
  const std::string tooLong(1024, 'a');
  const struct {
    std::string name;
    unsigned char code;
    std::string bytes;
  } cases[] = {{"QZBase", 0, "00 86 'QZBase'"}, {"n", 200, "C8"}, {"", 0, "00"}, {"", 60, "3C"}, {tooLong, 60, ""}};
  for (const auto& [name, code, bytes] : cases) {
    qzosstream out;
    EXPECT_EQ(QZBWriteTag(out, name.c_str(), code), name != tooLong) << name;
    EXPECT_EQ(Hex(out.str()), Hex(Bytes(bytes))) << name;
  }
  qzosstream none;
  EXPECT_FALSE(QZBWriteTag(none, "") || QZBWriteTag(none, tooLong.c_str()));
  EXPECT_EQ(none.tell(), 0U);
  qzofstream closed;
  EXPECT_FALSE(QZBWriteTag(closed, "n", 0));
}

TEST(QZBTag, ThatIsDamagedIsNone) {
  const std::string tagWarning = "Warning: error occurred while reading tag in QZBinary file (len = ";
  const std::pair<const char*, std::string> cases[] = {{"", ""},
                                                       {"01", ""},
                                                       {"00", ""},
                                                       {"00 81 6E", ""},
                                                       {"00 83 6E 6E", ""},
                                                       {"00 80 6E", tagWarning + "0)\n"},
                                                       {"00 00 88 6E", tagWarning + "1024)\n"},
                                                       {"00 7F 7F 7F 7F 90 6E", lengthCorrupt + tagWarning + "0)\n"},
                                                       {"00 01", lengthEnd + tagWarning + "0)\n"}};
  Messages messages;
  for (const auto& [hex, warnings] : cases) {
    const std::string bytes = Bytes(hex);
    BytesIn in(bytes);
    char name[QZBTagBufferSize];
    EXPECT_FALSE(QZBReadTag(in, name)) << hex;
    EXPECT_EQ(messages.Take(), warnings) << hex;
  }
  BytesIn nothing{std::string()};
  char name[QZBTagBufferSize];
  EXPECT_FALSE(QZBPeekTag(nothing, name));
}

TEST(QZBReturnString, SaysEachCode) {
  const char* const texts[] = {
      "Success",           "No Parent Class",        "Check Failed",           "Stream Failed", "Incorrect Size",
      "Continue",          "Read Tag Failed",        "Corrupt Header",         "End of File",   "Read Length Failed",
      "Type Check Failed", "Incorrect Handler Type", "Unknown QZBReturn Error"};
  for (unsigned int code = 0; code < std::size(texts); ++code) EXPECT_STREQ(QZGetQZBReturnString(code), texts[code]);
  EXPECT_STREQ(QZGetQZBReturnString(0xFFFFFFFF), "Unknown QZBReturn Error");
}

// The last column is the code of the walk over all items, and the one before it the number of items.
TEST(QZBWalkOverItems, StopsAtTheFirstThatIsNone) {
  const struct {
    const char* bytes;
    unsigned int items, code;
  } cases[] = {{"", 0, 0},
               {"01 81 55 00 81 'n' 82 'ab' 3C 81 00", 3, 0},
               {"01 81 55 01", 1, 0},
               {"01 81 55 01 80 01 81 55", 1, 9},
               {"01 81 55 01 80", 1, 8},
               {"01 81 55 00 80 01 81 55", 1, 6},
               {"01 81 55 01 89 55", 2, 0},
               {"C8 81 55", 1, 0}};
  Messages messages;
  for (const auto& [hex, count, code] : cases) {
    const std::string bytes = Bytes(hex);
    BytesIn in(bytes);
    PipeIn pipe(bytes, 1);
    unsigned int items = 77, fromPipe = 77;
    EXPECT_EQ(QZBinaryCount(in, items), code) << hex;
    // A pipe doesn't know that the byte that was read is its last, so the code may be another one.
    static_cast<void>(QZBinaryCount(pipe, fromPipe));
    EXPECT_EQ(items, count) << hex;
    EXPECT_EQ(fromPipe, count) << hex;
  }
}

TEST(QZBEndian, SwapsForEveryFlagButItsOwn) {
  for (unsigned int flag = 0; flag < 256; ++flag) {
    for (const bool swaps : {QZBIntEndian(flag), QZGetFileEndian<QZHalfFloat>(flag), QZGetFileEndian<long>(flag)})
      EXPECT_EQ(swaps, flag != 0x01) << flag;
    for (const bool swaps : {QZBFloatEndian(flag), QZGetFileEndian<double>(flag)}) EXPECT_EQ(swaps, flag != 0x3F);
  }
  EXPECT_FALSE(QZBIntEndian(0xFFFFFF01U)) << "only the low byte counts";
  EXPECT_TRUE(QZBShortEndian() == 0x01 && QZBFPosTEndian() == 0x01);
  EXPECT_TRUE(QZIsIntByteSwapRequired(false) && !QZIsByteSwapRequired<float>(true));
}

}  // namespace
