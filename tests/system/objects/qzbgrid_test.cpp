#include "qz/system/objects/qzbgrid.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <limits>
#include <numeric>

#include "qz/platform/filestream.h"
#include "tests/system/cli/messages.h"
#include "tests/system/qzb/bytes.h"

using namespace QZSystem;

namespace {

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t HeaderSize = 49;

// Grids whose values tell what they are: 100 times the grid, plus the point, plus 1.
QZMultiGrid<float> sample(unsigned int x, unsigned int y, unsigned int z, unsigned int number) {
  QZMultiGrid<float> grids(QZGridBase(x, y, z, 1.0F, -2.0F, 0.5F, 0.25F, "lost"), number);
  for (unsigned int n = 0; n < number; ++n) {
    QZFixedGrid<float>& grid = grids.GetGrid(n);
    std::iota(grid.GetValues(), grid.GetValues() + grid.GetSize(), static_cast<float>(100 * n + 1));
  }
  return grids;
}

// Two grids of 2 by 1 by 1 whose numbers are all 9.
QZMultiGrid<float> nines() { return QZMultiGrid<float>(QZGridBase(2, 1, 1, 9.0F, 9.0F, 9.0F, 9.0F, ""), 2); }

std::string bytesOf(const QZMultiGrid<float>& grids, unsigned int tag = 0) {
  qzosstream out;
  EXPECT_TRUE(QZWriteOldStyleGrid(out, grids, tag));
  return out.str();
}

// All there is to know of grids: their bytes together, and those of each with its own geometry.
std::string stateOf(const QZMultiGrid<float>& grids) {
  qzosstream out;
  QZWriteOldStyleGrid(out, grids, 0);
  for (unsigned int n = 0; n < grids.GetNumGrids(); ++n) QZWriteOldStyleGrid(out, grids.GetGrid(n));
  return out.str();
}

// Reads the bytes, and once more as they come out of a pipe, which has to say the same.
bool readBytes(const std::string& bytes, QZMultiGrid<float>& grids) {
  QZMultiGrid<float> piped(grids);
  BytesIn in(bytes);
  PipeIn pipe(bytes, 7);
  const bool whole = QZReadOldStyleGrid(in, grids);
  EXPECT_EQ(QZReadOldStyleGrid(pipe, piped), whole);
  EXPECT_TRUE(stateOf(piped) == stateOf(grids));
  EXPECT_TRUE(!whole || pipe.tell() == in.tell());
  return whole;
}

template <class T>
std::string with(std::string bytes, std::size_t at, T number) {
  std::memcpy(bytes.data() + at, &number, sizeof number);
  return bytes;
}

}  // namespace

TEST(QZBGrid, TheGeometryRecordTellsWhatIsSet) {
  QZGridBase titled, placed;
  titled.SetYMid(1.0F);
  titled.SetTitle(std::string(200, 'x'));
  placed.SetXMid(1.0F);
  placed.SetZMid(-1.0F);
  const std::string point = "01000000 01000000 01000000 ", x200 = "'" + std::string(200, 'x') + "'";
  const struct {
    QZGridBase grid;
    std::string body;
  } cases[] = {
      {QZGridBase(), "A0 01 3F 00" + point + "00000000 00000000 00000000 0000003F 80"},
      {QZGridBase(2, 3, 258, 1.0F, -2.0F, 0.5F, 0.25F, std::string("a\0b", 3)),
       "A3 01 3F 1F 02000000 03000000 02010000 0000803F 000000C0 0000003F 0000803E 83 610062"},
      {titled, "69 81 01 3F 12" + point + "00000000 0000803F 00000000 0000003F 48 81" + x200},
      {placed, "A0 01 3F 05" + point + "0000803F 00000000 000080BF 0000003F 80"},
  };
  for (const auto& each : cases) {
    qzosstream out;
    EXPECT_TRUE(QZBWriteGridBase(out, each.grid));
    EXPECT_EQ(Hex(out.str()), Hex(Bytes("00 8A 'QZGridBase'" + each.body)));
  }
}

TEST(OldStyleGrid, TheBytesOfTwoGrids) {
  const QZMultiGrid<float> grids = sample(2, 1, 1, 2);
  const std::string geometry = "02000000 01000000 01000000 0000803F 000000C0 0000003F 0000803E 00008040 74 ";
  EXPECT_EQ(Hex(bytesOf(grids, 0x01020304)),
            Hex(Bytes("3D000000 00000000 02000000 04030201" + geometry + "0000803F 0000CA42 00000040 0000CC42")));
  qzosstream out;
  EXPECT_TRUE(QZWriteOldStyleGrid(out, grids.GetGrid(1)));
  EXPECT_EQ(Hex(out.str()), Hex(Bytes("35000000 00000000 01000000 00000000" + geometry + "0000CA42 0000CC42")));
}

TEST(OldStyleGrid, ReadsWhatItWrote) {
  const std::array<unsigned int, 4> cases[] = {{2, 3, 4, 1},    {1, 1, 1, 1},   {2, 3, 4, 2},    {5, 7, 3, 3},
                                               {3, 5, 7, 4},    {4, 4, 4, 5},   {1, 1, 1, 9000}, {2, 1, 1, 16385},
                                               {30, 31, 32, 7}, {64, 32, 5, 1}, {40, 41, 9, 4}};
  for (const auto& [x, y, z, number] : cases) {
    SCOPED_TRACE(std::to_string(x) + ' ' + std::to_string(number));
    const QZMultiGrid<float> grids = sample(x, y, z, number);
    const std::string bytes = bytesOf(grids, 5);
    EXPECT_EQ(bytes.size(), HeaderSize + 4UL * grids.GetSize() * number);
    QZMultiGrid<float> fromNew, fromOther = sample(3, 3, 3, 5);
    EXPECT_TRUE(readBytes(bytes, fromNew) && readBytes(bytes + "more", fromOther));
    EXPECT_TRUE(stateOf(fromNew) == stateOf(grids));
    EXPECT_TRUE(stateOf(fromOther) == stateOf(grids));
  }
}

// Point after point, of each point grid after grid; here by the formula of the places.
TEST(OldStyleGrid, ValuesAreInterleavedAtAnyNumberOfGrids) {
  for (unsigned int number = 1; number <= 13; ++number) {
    const QZMultiGrid<float> grids = sample(9, 11, 13, number);
    const std::string bytes = bytesOf(grids);
    for (unsigned int place = 0; place < grids.GetSize() * number; ++place) {
      float stored;
      std::memcpy(&stored, bytes.data() + HeaderSize + 4UL * place, sizeof stored);
      ASSERT_EQ(stored, grids.GetGrid(place % number).GetValues()[place / number]) << number << " at " << place;
    }
  }
}

// What came is there, and what didn't is as it was: numbers of the geometry, and whole values.
TEST(OldStyleGrid, ACutStreamGivesWhatCame) {
  for (const unsigned int dim : {1U, 2U}) {  // the same shape keeps the values that didn't come, another has zeros
    const QZMultiGrid<float> written = sample(2, dim, 1, 2);
    const std::string bytes = bytesOf(written);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
      QZMultiGrid<float> expected = nines();
      expected.GetGrid(1).SetValue(1, 0, 0, 50.0F);
      QZMultiGrid<float> read(expected);
      if (length >= 28) expected.SetDim(2, dim, 1);
      if (length >= 40) expected.SetMid(1.0F, -2.0F, 0.5F);
      if (length >= 44) expected.SetSpacing(0.25F);
      expected.ResetGrids();
      for (unsigned int value = 0; HeaderSize + 4 * value + 4 <= length; ++value)
        expected.GetGrid(value % 2).GetValues()[value / 2] = written.GetGrid(value % 2).GetValues()[value / 2];
      EXPECT_FALSE(readBytes(bytes.substr(0, length), read)) << length;
      EXPECT_TRUE(stateOf(read) == stateOf(expected)) << length;
    }
  }
}

TEST(OldStyleGrid, ALengthThatIsNotThatOfTheContentIsToldAfterReading) {
  const QZMultiGrid<float> written = sample(2, 3, 1, 2);
  QZMultiGrid<float> read;
  for (unsigned int length : {0U, 45U, 92U, 94U, 4294967295U}) {
    EXPECT_FALSE(readBytes(with(bytesOf(written), 0, length), read)) << length;
    EXPECT_TRUE(stateOf(read) == stateOf(written)) << length;
  }
  EXPECT_FALSE(readBytes(with(bytesOf(written).substr(0, HeaderSize + 10), 0, 55U), read)) << "where the length ends";
}

TEST(OldStyleGrid, WhatNoSetterTakesStays) {
  Messages messages;
  const QZMultiGrid<float> written = sample(2, 1, 1, 2);
  const std::string bytes = bytesOf(written);
  const struct {
    std::string bytes, messages;
    float x, spacing;
  } cases[] = {
      {with(bytes, 8, 0U), "", 1.0F, 0.25F},
      {with(bytes, 20, 0U), "", 1.0F, 0.25F},
      {with(bytes, 28, NaN), "Warning: SetXMid unable to handle NaN: nan\n", 9.0F, 0.25F},
      {with(bytes, 40, -1.0F), "", 1.0F, 9.0F},
      {with(bytes, 40, NaN), "Warning: SetSpacing unable to handle NaN: nan\n", 1.0F, 9.0F},
  };
  for (const auto& each : cases) {
    QZMultiGrid<float> grids = nines(), expected = written;
    expected.SetXMid(each.x);
    expected.SetSpacing(each.spacing);
    expected.ResetGrids();
    EXPECT_TRUE(readBytes(each.bytes, grids)) << &each - cases;
    EXPECT_EQ(messages.Take(), each.messages + each.messages) << "from memory, then from a pipe";
    EXPECT_TRUE(stateOf(grids) == stateOf(expected)) << &each - cases;
  }
}

// The bound is on the block: 16 times the one value that the stream holds, and a mebibyte.
TEST(OldStyleGrid, AHeaderThatNobodyCanBelieveTakesNothing) {
  Messages messages;
  const std::string bytes = bytesOf(sample(1, 1, 1, 1));
  const std::array<unsigned int, 4> headers[] = {
      // grids, x, y, z
      {1, 1U << 31, 1, 1},        {1U << 31, 1, 1, 1},  {0, 1U << 31, 1, 1},        {1U << 31, 0, 0, 0},
      {1, 1U << 16, 1U << 15, 1}, {~0U, ~0U, ~0U, ~0U}, {1, 1U << 31, 1U << 31, 4}, {65536, 65536, 65536, 65536},
      {1, 262161, 1, 1},          {262144, 1, 1, 1},
  };
  QZMultiGrid<float> grids = nines();
  for (const auto& header : headers) {
    std::string hostile = with(bytes, 8, header[0]);
    std::memcpy(hostile.data() + 16, &header[1], 12);
    EXPECT_FALSE(readBytes(hostile, grids)) << testing::PrintToString(header);
    EXPECT_TRUE(stateOf(grids) == stateOf(nines())) << testing::PrintToString(header);
  }
  EXPECT_EQ(messages.Take(), "");
  EXPECT_FALSE(readBytes(with(bytes, 16, 262160U), grids));
  EXPECT_EQ(grids.GetSize(), 262160U);
  EXPECT_EQ(grids.GetGrid(0).GetValues()[0], 1.0F);
}

// Neither product of the old number and points with the new is ever made.
TEST(OldStyleGrid, AChangeOfBothPointsAndNumberNeedsNoLargerBlock) {
  QZMultiGrid<float> grids(QZGridBase(65536, 16, 1, 0.0F, 0.0F, 0.0F, 1.0F, ""), 1);
  for (const QZMultiGrid<float>& next : {sample(1, 1, 1, 100000), sample(1024, 1024, 1, 1)}) {
    EXPECT_TRUE(readBytes(bytesOf(next), grids));
    EXPECT_TRUE(stateOf(grids) == stateOf(next)) << next.GetNumGrids();
  }
}

TEST(OldStyleGrid, EveryFlippedByteIsSurvived) {
  Messages messages;
  const std::string bytes = bytesOf(sample(2, 2, 2, 2));
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    // The length is only compared; the empty number, the tag, the inverse spacing and the mark aren't used.
    const bool isUnused = (at >= 4 && at < 8) || (at >= 12 && at < 16) || (at >= 44 && at < HeaderSize);
    for (unsigned int flip : {0x01U, 0x80U, 0xFFU}) {
      std::string damaged = bytes;
      damaged[at] = static_cast<char>(static_cast<unsigned char>(damaged[at]) ^ flip);
      QZMultiGrid<float> read;
      EXPECT_EQ(readBytes(damaged, read), isUnused || at >= 28) << at;
      EXPECT_EQ(bytesOf(read) == bytes, isUnused || at < 4) << at;
    }
  }
}

TEST(OldStyleGrid, AFullDiskShowsAtOnceOrAtTheFlush) {
  qzofstream full, small;
  full.open("/dev/full");
  small.open("/dev/full");
  EXPECT_FALSE(QZWriteOldStyleGrid(full, sample(64, 64, 64, 2), 0));
  EXPECT_TRUE(QZWriteOldStyleGrid(small, sample(1, 1, 1, 2), 0));
  EXPECT_FALSE(small.flush());
}
