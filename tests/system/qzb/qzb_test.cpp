#include "qz/system/qzb/qzb.h"

#include <gtest/gtest.h>

#include <cstring>

#include "qz/platform/filestream.h"
#include "qz/platform/memorystream.h"
#include "tests/system/qzb/bytes.h"
#include "tests/system/text/warnings.h"

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
  const struct {
    unsigned long value;
    const char* bytes;
  } cases[] = {{0, "80"},
               {1, "81"},
               {127, "FF"},
               {128, "00 81"},
               {300, "2C 82"},
               {16383, "7F FF"},
               {16384, "00 00 81"},
               {0xFFFFFFFF, "7F 7F 7F 7F 8F"},
               {1UL << 35, "00 00 00 00 00 81"},
               {~0UL, "7F 7F 7F 7F 7F 7F 7F 7F 7F 81"}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.value);
    EXPECT_EQ(WrittenLength(each.value), each.bytes);
    if (each.value <= 0xFFFFFFFF) {
      EXPECT_EQ(WrittenLength(static_cast<unsigned int>(each.value)), each.bytes);
      EXPECT_EQ(QZBDataLengthBytes(static_cast<unsigned int>(each.value)), (std::strlen(each.bytes) + 1) / 3);
    }
    EXPECT_EQ(QZBDataLengthBytes(each.value), (std::strlen(each.bytes) + 1) / 3);
    const std::string bytes = Bytes(each.bytes);
    BytesIn in(bytes);
    EXPECT_EQ(QZBReadDataLength(in, ~0UL), each.value);
    EXPECT_TRUE(in.eof());
  }
}

TEST(QZBLength, ThatIsDamagedReadsAsZeroWithAWarning) {
  const struct {
    const char* bytes;
    unsigned long largest;
    const char* warning;
    unsigned long left;
  } cases[] = {{"", 100, lengthEnd, 0},
               {"00", 100, lengthEnd, 0},
               {"7F 7F", 100, lengthEnd, 0},
               {"E5 55", 100, lengthCorrupt, 1},
               {"E4 55", 100, "", 1},
               {"00 00 00 00 00 00 00 00 00 01 55", ~0UL, lengthCorrupt, 1},
               {"00 00 00 00 00 00 00 00 00 82 55", ~0UL, "", 1},
               {"00 00 00 00 00 00 00 00 00", ~0UL, lengthEnd, 0},
               {"80", 100, "", 0}};
  Warnings warnings;
  for (const auto& each : cases) {
    SCOPED_TRACE(each.bytes);
    const std::string bytes = Bytes(each.bytes);
    BytesIn in(bytes);
    const unsigned long length = QZBReadDataLength(in, each.largest);
    EXPECT_EQ(length, std::string(each.bytes) == "E4 55" ? 100 : 0);
    EXPECT_EQ(warnings.Take(), each.warning);
    EXPECT_EQ(in.size() - in.tell(), each.left);
  }
}

TEST(QZBTag, IsACodeOrTheName) {
  const struct {
    std::string name;
    std::string bytes;
  } cases[] = {{"QZBase", "1F"},          {"QZBasePOD", "01"},
               {"MDLParity", "1B"},       {"zQZMCMolBase", "22"},
               {"zstdQZMCMolBase", "37"}, {"QZPrimarySubSearchScreen", "38"},
               {"n", "00 81 6E"},         {"QZBasePO", "00 88 51 5A 42 61 73 65 50 4F"}};
  for (const auto& each : cases) {
    qzosstream out;
    EXPECT_TRUE(QZBWriteTag(out, each.name.c_str()));
    out << 'x';
    EXPECT_EQ(Hex(out.str()), each.bytes + " 78") << each.name;
    const std::string written = out.str();
    BytesIn in(written);
    char name[QZBTagBufferSize];
    unsigned char code;
    ASSERT_TRUE(QZBReadTag(in, name, code)) << each.name;
    EXPECT_EQ(name, each.name);
    EXPECT_EQ(code, static_cast<unsigned char>(written[0]));
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
    if (text.empty()) {
      EXPECT_EQ(std::string(name, sizeof name), std::string(sizeof name, '\0')) << code;
      continue;
    }
    ++named;
    EXPECT_TRUE(QZIsInternalQZBTag(text.data(), text.size()));
    EXPECT_FALSE(QZIsInternalQZBTag(text.data(), text.size() - 1)) << text;
    qzosstream out;
    QZBWriteTag(out, name);
    EXPECT_EQ(out.str(), std::string(1, static_cast<char>(code))) << text;
  }
  EXPECT_EQ(named, 48U);
}

TEST(QZBTag, HasOneTo1023Bytes) {
  for (const unsigned long size : {0UL, 1023UL, 1024UL}) {
    const std::string name(size, 'a');
    qzosstream out;
    EXPECT_EQ(QZBWriteTag(out, name.c_str()), size == 1023) << size;
    EXPECT_EQ(out.tell(), size == 1023 ? 1026 : 0) << size;
  }
  const std::string longest = Bytes("00 7F 87") + std::string(1023, 'a') + "x";
  BytesIn in(longest);
  char name[QZBTagBufferSize];
  EXPECT_TRUE(QZBReadTag(in, name));
  EXPECT_EQ(name, std::string(1023, 'a'));
}

TEST(QZBTag, WithAGivenCodeIsWrittenAsItIs) {
  const struct {
    std::string name;
    unsigned char code;
    bool done;
    std::string bytes;
  } cases[] = {{"QZBase", 0, true, "00 86 51 5A 42 61 73 65"},
               {"n", 200, true, "C8"},
               {"", 0, true, "00"},
               {"", 60, true, "3C"},
               {std::string(1024, 'a'), 60, false, ""}};
  for (const auto& each : cases) {
    qzosstream out;
    EXPECT_EQ(QZBWriteTag(out, each.name.c_str(), each.code), each.done) << each.name;
    EXPECT_EQ(Hex(out.str()), each.bytes) << each.name;
  }
  qzofstream closed;
  EXPECT_FALSE(QZBWriteTag(closed, "n", 0));
}

TEST(QZBTag, ThatIsDamagedIsNone) {
  const std::string tagWarning = "Warning: error occurred while reading tag in QZBinary file (len = ";
  const struct {
    const char* bytes;
    std::string warnings;
  } cases[] = {{"", ""},
               {"01", ""},
               {"00", ""},
               {"00 81 6E", ""},
               {"00 83 6E 6E", ""},
               {"00 80 6E", tagWarning + "0)\n"},
               {"00 00 88 6E", tagWarning + "1024)\n"},
               {"00 7F 7F 7F 7F 90 6E", lengthCorrupt + tagWarning + "0)\n"},
               {"00 01", lengthEnd + tagWarning + "0)\n"}};
  Warnings warnings;
  for (const auto& each : cases) {
    const std::string bytes = Bytes(each.bytes);
    BytesIn in(bytes);
    char name[QZBTagBufferSize];
    unsigned char code;
    EXPECT_FALSE(QZBReadTag(in, name, code)) << each.bytes;
    EXPECT_EQ(warnings.Take(), each.warnings) << each.bytes;
  }
}

TEST(QZBTag, IsPeekedAtWithoutConsuming) {
  for (const char* text : {"1F 55", "09 55", "00 81 6E 55"}) {
    const std::string bytes = Bytes(text);
    BytesIn in(bytes);
    char peeked[QZBTagBufferSize], read[QZBTagBufferSize];
    unsigned char peekedCode, readCode;
    EXPECT_TRUE(QZBPeekTag(in, peeked, peekedCode)) << text;
    EXPECT_EQ(in.tell(), 0U);
    EXPECT_TRUE(QZBReadTag(in, read, readCode)) << text;
    EXPECT_EQ(peekedCode, readCode) << text;
    EXPECT_STREQ(peeked, readCode == 0 ? "" : read) << text;
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
    unsigned int items;
    unsigned int code;
  } cases[] = {{"", 0, 0},
               {"01 81 55", 1, 0},
               {"01 81 55 00 81 'n' 82 'ab' 3C 81 00", 3, 0},
               {"01 81 55 01", 1, 0},
               {"01 81 55 01 80 01 81 55", 1, 9},
               {"01 81 55 01 80", 1, 8},
               {"01 81 55 01 00", 1, 8},
               {"01 81 55 00 80 01 81 55", 1, 6},
               {"01 81 55 00 81 00 81 55", 1, 6},
               {"01 81 55 01 89 55", 2, 0},
               {"C8 81 55", 1, 0}};
  Warnings warnings;
  for (const auto& each : cases) {
    const std::string bytes = Bytes(each.bytes);
    BytesIn in(bytes);
    PipeIn pipe(bytes, 1);
    unsigned int items = 77, fromPipe = 77;
    EXPECT_EQ(QZBinaryCount(in, items), each.code) << each.bytes;
    EXPECT_EQ(items, each.items) << each.bytes;
    // A pipe doesn't know that the byte that was read is its last, so the code may be another one.
    static_cast<void>(QZBinaryCount(pipe, fromPipe));
    EXPECT_EQ(fromPipe, each.items) << each.bytes;
  }
}

TEST(QZBEndian, SwapsForEveryFlagButItsOwn) {
  EXPECT_EQ(QZBIntEndian(), 0x01);
  EXPECT_EQ(QZBFloatEndian(), 0x3F);
  EXPECT_EQ(QZBShortEndian(), 0x01);
  EXPECT_EQ(QZBFPosTEndian(), 0x01);
  for (unsigned int flag = 0; flag < 256; ++flag) {
    EXPECT_EQ(QZBIntEndian(flag), flag != 0x01);
    EXPECT_EQ(QZBFloatEndian(flag), flag != 0x3F);
    EXPECT_EQ(QZGetFileEndian<QZHalfFloat>(flag), flag != 0x01);
    EXPECT_EQ(QZGetFileEndian<double>(flag), flag != 0x3F);
    EXPECT_EQ(QZGetFileEndian<long>(flag), flag != 0x01);
  }
  EXPECT_FALSE(QZBIntEndian(0xFFFFFF01U)) << "only the low byte counts";
  EXPECT_TRUE(QZIsIntByteSwapRequired(false));
  EXPECT_FALSE(QZIsByteSwapRequired<float>(true));
}

}  // namespace
