#include "qz/system/objects/qzbgrid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <numeric>

#include "qz/platform/memorystream.h"
#include "tests/system/text/warnings.h"

using namespace QZSystem;

namespace {

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t HeaderSize = 49;

std::string fromHex(const std::string& hex) {
  std::string bytes;
  unsigned int digits = 0, value = 0;
  for (char c : hex) {
    if (c == ' ') continue;
    value = value * 16 + static_cast<unsigned int>(c <= '9' ? c - '0' : c - 'A' + 10);
    if (++digits % 2 == 0) {
      bytes += static_cast<char>(value);
      value = 0;
    }
  }
  return bytes;
}

// Grids whose values tell what they are: 100 times the grid, plus the point, plus 1.
QZMultiGrid<float> sample(unsigned int x, unsigned int y, unsigned int z, unsigned int number) {
  QZMultiGrid<float> grids(QZGridBase(x, y, z, 1.0F, -2.0F, 0.5F, 0.25F, ""), number);
  for (unsigned int n = 0; n < number; ++n) {
    QZFixedGrid<float>& grid = grids.GetGrid(n);
    std::iota(grid.GetValues(), grid.GetValues() + grid.GetSize(), static_cast<float>(100 * n + 1));
  }
  return grids;
}

std::string bytesOf(const QZMultiGrid<float>& grids, unsigned int tag = 0) {
  qzosstream out;
  EXPECT_TRUE(QZWriteOldStyleGrid(out, grids, tag));
  return out.str();
}

bool readBytes(const std::string& bytes, QZMultiGrid<float>& grids) {
  qzisstream in;
  in.set(bytes.data(), bytes.size(), false);
  return QZReadOldStyleGrid(in, grids);
}

template <class T>
std::string with(std::string bytes, std::size_t at, T number) {
  std::memcpy(bytes.data() + at, &number, sizeof number);
  return bytes;
}

// All there is to know of grids, their parts included.
std::vector<float> stateOf(const QZMultiGrid<float>& grids) {
  std::vector<float> state = {static_cast<float>(grids.GetNumGrids())};
  const auto add = [&](const QZGridBase& grid) {
    for (const unsigned int dim : {grid.GetXDim(), grid.GetYDim(), grid.GetZDim()})
      state.push_back(static_cast<float>(dim));
    for (const float number : {grid.GetXMid(), grid.GetYMid(), grid.GetZMid(), grid.GetSpacing()})
      state.push_back(number);
  };
  add(grids);
  for (unsigned int n = 0; n < grids.GetNumGrids(); ++n) {
    const QZFixedGrid<float>& grid = grids.GetGrid(n);
    add(grid);
    state.insert(state.end(), grid.GetValues(), grid.GetValues() + grid.GetSize());
  }
  return state;
}

// A stream that knows no size and gives its bytes in blocks, as a pipe does.
class Pipe : public qzistream {
 public:
  explicit Pipe(std::string content, std::size_t blockSize = 7) : bytes(std::move(content)), step(blockSize) {
    resetBuffer(0, false);
  }
  unsigned long _qzsize() override { return ~0UL; }
  bool _qzfill() override {
    offset += static_cast<unsigned long>(end - start);
    const std::size_t count = std::min(step, bytes.size() - done);
    start = current = reinterpret_cast<unsigned char*>(bytes.data()) + done;
    end = start + count;
    done += count;
    if (count == 0) atEnd = true;
    return count != 0;
  }

 private:
  std::string bytes;
  std::size_t step, done = 0;
};

// A stream that takes so many bytes.
class Narrow : public qzostream {
 public:
  explicit Narrow(unsigned long bytes) : room(bytes) { beginWriting(); }
  unsigned long _qzwrite(const unsigned char*, unsigned long count) override {
    const unsigned long taken = std::min(count, room);
    room -= taken;
    return taken;
  }

 private:
  unsigned long room;
};

}  // namespace

TEST(QZBGrid, TheGeometryRecordOfADefaultGrid) {
  qzosstream out;
  EXPECT_TRUE(QZBWriteGridBase(out, QZGridBase()));
  EXPECT_EQ(out.str(), fromHex("00 8A 515A4772696442617365 A0"
                               "01 3F 00"
                               "01000000 01000000 01000000"
                               "00000000 00000000 00000000 0000003F"
                               "80"));
}

TEST(QZBGrid, TheGeometryRecordTellsWhatIsSet) {
  QZGridBase full(2, 3, 258, 1.0F, -2.0F, 0.5F, 0.25F, std::string("a\0b", 3));
  QZGridBase part;
  part.SetYMid(1.0F);
  part.SetTitle(std::string(200, 'x'));
  QZGridBase spaced;
  spaced.SetSpacing(1.0F);
  QZGridBase placed;
  placed.SetXMid(1.0F);
  placed.SetZMid(-1.0F);
  const struct {
    const QZGridBase& grid;
    std::string body;
  } cases[] = {
      {full, fromHex("A3 01 3F 1F 02000000 03000000 02010000 0000803F 000000C0 0000003F 0000803E 83 610062")},
      {part, fromHex("69 81 01 3F 12 01000000 01000000 01000000 00000000 0000803F 00000000 0000003F 48 81") +
                 std::string(200, 'x')},
      {spaced, fromHex("A0 01 3F 08 01000000 01000000 01000000 00000000 00000000 00000000 0000803F 80")},
      {placed, fromHex("A0 01 3F 05 01000000 01000000 01000000 0000803F 00000000 000080BF 0000003F 80")},
  };
  for (const auto& each : cases) {
    qzosstream out;
    EXPECT_TRUE(QZBWriteGridBase(out, each.grid));
    EXPECT_EQ(out.str(), fromHex("00 8A 515A4772696442617365") + each.body);
  }
}

TEST(OldStyleGrid, TheBytesOfTwoGrids) {
  QZMultiGrid<float> grids(QZGridBase(2, 1, 1, 1.0F, -2.0F, 0.5F, 0.25F, "lost"), 2);
  const float values[2][2] = {{1.0F, 2.0F}, {-1.0F, -2.0F}};
  for (unsigned int n = 0; n < 2; ++n) grids.GetGrid(n).SetValues(values[n], 2);
  EXPECT_EQ(bytesOf(grids, 0x01020304), fromHex("3D000000 00000000 02000000 04030201"
                                                "02000000 01000000 01000000"
                                                "0000803F 000000C0 0000003F 0000803E 00008040 74"
                                                "0000803F 000080BF 00000040 000000C0"));
  qzosstream out;
  EXPECT_TRUE(QZWriteOldStyleGrid(out, grids.GetGrid(1)));
  EXPECT_EQ(out.str(), fromHex("35000000 00000000 01000000 00000000"
                               "02000000 01000000 01000000"
                               "0000803F 000000C0 0000003F 0000803E 00008040 74"
                               "000080BF 000000C0"));
}

TEST(OldStyleGrid, ReadsWhatItWrote) {
  const struct {
    unsigned int x, y, z, number;
  } cases[] = {{2, 3, 4, 1},    {1, 1, 1, 1},     {2, 3, 4, 2},    {5, 7, 3, 3},   {3, 5, 7, 4},  {4, 4, 4, 5},
               {1, 1, 1, 9000}, {2, 1, 1, 16385}, {30, 31, 32, 7}, {64, 32, 5, 1}, {40, 41, 9, 4}};
  for (const auto& each : cases) {
    const QZMultiGrid<float> grids = sample(each.x, each.y, each.z, each.number);
    const std::string bytes = bytesOf(grids, 5);
    EXPECT_EQ(bytes.size(), HeaderSize + 4UL * grids.GetSize() * each.number);
    QZMultiGrid<float> fromNew;
    QZMultiGrid<float> fromOther = sample(3, 3, 3, 5);
    EXPECT_TRUE(readBytes(bytes, fromNew)) << each.x;
    EXPECT_TRUE(readBytes(bytes, fromOther)) << each.x;
    EXPECT_EQ(stateOf(fromNew), stateOf(grids)) << each.x;
    EXPECT_EQ(stateOf(fromOther), stateOf(grids)) << each.x;
    QZMultiGrid<float> fromPipe;
    Pipe pipe(bytes + "more");
    EXPECT_TRUE(QZReadOldStyleGrid(pipe, fromPipe)) << each.x;
    EXPECT_EQ(stateOf(fromPipe), stateOf(grids)) << each.x;
    EXPECT_EQ(pipe.tell(), bytes.size());
  }
}

// Point after point, of each point grid after grid; here by the formula of the places.
TEST(OldStyleGrid, ValuesAreInterleavedAtAnyNumberOfGrids) {
  for (unsigned int number = 1; number <= 13; ++number) {
    const QZMultiGrid<float> grids = sample(9, 11, 13, number);
    const std::string bytes = bytesOf(grids);
    for (unsigned int point = 0; point < grids.GetSize(); ++point) {
      for (unsigned int n = 0; n < number; ++n) {
        float stored;
        std::memcpy(&stored, bytes.data() + HeaderSize + 4UL * (point * number + n), sizeof stored);
        ASSERT_EQ(stored, grids.GetGrid(n).GetValues()[point]) << number << ": " << n << " at " << point;
      }
    }
  }
}

TEST(OldStyleGrid, SeveralStandInOneStream) {
  const QZMultiGrid<float> first = sample(2, 2, 2, 2), second = sample(3, 1, 1, 1);
  const std::string bytes = bytesOf(first) + bytesOf(second) + "x";
  qzisstream in;
  in.set(bytes);
  QZMultiGrid<float> grids;
  EXPECT_TRUE(QZReadOldStyleGrid(in, grids));
  EXPECT_EQ(stateOf(grids), stateOf(first));
  EXPECT_TRUE(QZReadOldStyleGrid(in, grids));
  EXPECT_EQ(stateOf(grids), stateOf(second));
  EXPECT_EQ(in.get(), 'x');
}

// What came is there, and what didn't is as it was: numbers of the geometry, and whole values.
TEST(OldStyleGrid, ACutStreamGivesWhatCame) {
  const QZMultiGrid<float> written = sample(2, 2, 1, 3);
  const std::string bytes = bytesOf(written);
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    QZMultiGrid<float> expected(QZGridBase(2, 1, 1, 9.0F, 9.0F, 9.0F, 9.0F, ""), 2);
    QZMultiGrid<float> read(expected);
    QZMultiGrid<float> piped(expected);
    if (length >= 12) expected.SetNumGrids(3);
    if (length >= 28) expected.SetDim(2, 2, 1);
    if (length >= 40) expected.SetMid(1.0F, -2.0F, 0.5F);
    if (length >= 44) expected.SetSpacing(0.25F);
    expected.ResetGrids();
    for (std::size_t value = 0; HeaderSize + 4 * value + 4 <= length; ++value) {
      const unsigned int n = static_cast<unsigned int>(value % 3);
      expected.GetGrid(n).GetValues()[value / 3] = written.GetGrid(n).GetValues()[value / 3];
    }
    EXPECT_FALSE(readBytes(bytes.substr(0, length), read)) << length;
    EXPECT_EQ(stateOf(read), stateOf(expected)) << length;
    Pipe pipe(bytes.substr(0, length));
    EXPECT_FALSE(QZReadOldStyleGrid(pipe, piped)) << length;
    EXPECT_EQ(stateOf(piped), stateOf(expected)) << length;
  }
}

TEST(OldStyleGrid, ACutStreamKeepsTheValuesOfTheSameShape) {
  const QZMultiGrid<float> written = sample(2, 2, 1, 1);
  QZMultiGrid<float> read = sample(2, 2, 1, 1);
  for (unsigned int point = 0; point < 4; ++point) read.GetGrid(0).GetValues()[point] = 50.0F;
  EXPECT_FALSE(readBytes(bytesOf(written).substr(0, HeaderSize + 6), read));
  const std::vector<float> values(read.GetGrid(0).GetValues(), read.GetGrid(0).GetValues() + 4);
  EXPECT_EQ(values, (std::vector<float>{1.0F, 50.0F, 50.0F, 50.0F}));
}

TEST(OldStyleGrid, ALengthThatIsNotThatOfTheContentIsToldAfterReading) {
  const QZMultiGrid<float> written = sample(2, 3, 1, 2);
  const std::string bytes = bytesOf(written);
  for (unsigned int length : {0U, 45U, 92U, 94U, 4294967295U}) {
    QZMultiGrid<float> read;
    EXPECT_FALSE(readBytes(with(bytes, 0, length), read)) << length;
    EXPECT_EQ(stateOf(read), stateOf(written)) << length;
  }
  // A stream that ends where the length says, with values missing.
  QZMultiGrid<float> read;
  EXPECT_FALSE(readBytes(with(bytes.substr(0, HeaderSize + 10), 0, 55U), read));
}

TEST(OldStyleGrid, WhatNoSetterTakesStays) {
  Warnings warnings;
  const QZMultiGrid<float> written = sample(2, 2, 1, 2);
  const std::string bytes = bytesOf(written);
  const struct {
    std::string bytes;
    const char* messages;
    void (*expect)(QZMultiGrid<float>&);
  } cases[] = {
      {with(bytes, 8, 0U), "", [](QZMultiGrid<float>& grids) { grids.SetNumGrids(2); }},
      {with(bytes, 20, 0U), "", [](QZMultiGrid<float>& grids) { grids.SetDim(2, 2, 1); }},
      {with(bytes, 40, -1.0F), "", [](QZMultiGrid<float>& grids) { grids.SetSpacing(9.0F); }},
      {with(bytes, 40, NaN), "Warning: SetSpacing unable to handle NaN: nan\n",
       [](QZMultiGrid<float>& grids) { grids.SetSpacing(9.0F); }},
      {with(with(bytes, 28, NaN), 36, NaN),
       "Warning: SetXMid unable to handle NaN: nan\nWarning: SetZMid unable to handle NaN: nan\n",
       [](QZMultiGrid<float>& grids) { grids.SetMid(9.0F, -2.0F, 9.0F); }},
  };
  for (const auto& each : cases) {
    QZMultiGrid<float> grids(QZGridBase(2, 2, 1, 9.0F, 9.0F, 9.0F, 9.0F, ""), 2);
    QZMultiGrid<float> expected(written);
    each.expect(expected);
    expected.ResetGrids();
    EXPECT_TRUE(readBytes(each.bytes, grids)) << &each - cases;
    EXPECT_EQ(warnings.Take(), each.messages) << &each - cases;
    EXPECT_EQ(stateOf(grids), stateOf(expected)) << &each - cases;
  }
}

TEST(OldStyleGrid, AHeaderThatNobodyCanBelieveTakesNothing) {
  Warnings warnings;
  const std::string bytes = bytesOf(sample(1, 1, 1, 1));
  const std::array<unsigned int, 4> headers[] = {
      // grids, x, y, z
      {1, 1U << 31, 1, 1},        {1U << 31, 1, 1, 1},  {0, 1U << 31, 1, 1},        {1U << 31, 0, 0, 0},
      {1, 1U << 16, 1U << 15, 1}, {~0U, ~0U, ~0U, ~0U}, {1, 1U << 31, 1U << 31, 4}, {65536, 65536, 65536, 65536},
      {1, 262161, 1, 1},          {262144, 1, 1, 1},
  };
  QZMultiGrid<float> grids = sample(3, 2, 2, 2);
  for (const auto& header : headers) {
    std::string hostile = bytes;
    for (std::size_t i = 0; i < 4; ++i) hostile = with(hostile, i == 0 ? 8 : 12 + 4 * i, header[i]);
    EXPECT_FALSE(readBytes(hostile, grids)) << header[0] << ": " << header[1];
    EXPECT_EQ(stateOf(grids), stateOf(sample(3, 2, 2, 2))) << header[0] << ": " << header[1];
    Pipe pipe(hostile);
    EXPECT_FALSE(QZReadOldStyleGrid(pipe, grids)) << header[0] << ": " << header[1];
    EXPECT_EQ(stateOf(grids), stateOf(sample(3, 2, 2, 2))) << header[0] << ": " << header[1];
  }
  EXPECT_EQ(warnings.Take(), "");
}

// The bound is on the block: 16 times the one value that the stream holds, and a mebibyte.
TEST(OldStyleGrid, AClaimWithinTheBoundIsTaken) {
  QZMultiGrid<float> grids;
  EXPECT_FALSE(readBytes(with(bytesOf(sample(1, 1, 1, 1)), 16, 262160U), grids));
  EXPECT_EQ(grids.GetSize(), 262160U);
  EXPECT_EQ(grids.GetGrid(0).GetValues()[0], 1.0F);
}

// Grids of many points, into which a header of many grids of one point is read, and the reverse: neither product of the
// old with the new is ever made.
TEST(OldStyleGrid, AChangeOfBothPointsAndNumberNeedsNoLargerBlock) {
  QZMultiGrid<float> wide(QZGridBase(65536, 16, 1, 0.0F, 0.0F, 0.0F, 1.0F, ""), 1);
  EXPECT_TRUE(readBytes(bytesOf(sample(1, 1, 1, 100000)), wide));
  EXPECT_EQ(wide.GetNumGrids(), 100000U);
  EXPECT_TRUE(readBytes(bytesOf(sample(1024, 1024, 1, 1)), wide));
  EXPECT_EQ(stateOf(wide), stateOf(sample(1024, 1024, 1, 1)));
}

TEST(OldStyleGrid, EveryFlippedByteIsSurvived) {
  Warnings warnings;
  const QZMultiGrid<float> written = sample(2, 2, 2, 2);
  const std::string bytes = bytesOf(written);
  // The length is only compared; the empty number, the tag, the inverse spacing and the mark aren't used.
  const auto unused = [](std::size_t at) { return at < 8 || (at >= 12 && at < 16) || (at >= 44 && at < HeaderSize); };
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    for (unsigned int flip : {0x01U, 0x80U, 0xFFU}) {
      std::string damaged = bytes;
      damaged[at] = static_cast<char>(static_cast<unsigned char>(damaged[at]) ^ flip);
      QZMultiGrid<float> read;
      const bool whole = readBytes(damaged, read);
      EXPECT_EQ(bytesOf(read) == bytes, unused(at)) << at;
      if (at >= 28) {
        EXPECT_TRUE(whole) << at;
      }
      if (at < 4 || (at >= 8 && at < 12) || (at >= 16 && at < 28)) {
        EXPECT_FALSE(whole) << at;
      }
    }
  }
}

TEST(OldStyleGrid, AFullStreamSaysSo) {
  const QZMultiGrid<float> grids = sample(32, 32, 32, 2);
  const std::size_t whole = HeaderSize + 4UL * 2 * grids.GetSize();
  for (std::size_t room : {std::size_t{0}, std::size_t{30}, whole / 2, whole}) {
    Narrow out(room);
    EXPECT_EQ(QZWriteOldStyleGrid(out, grids, 0) && out.flush(), room == whole) << room;
  }
}
