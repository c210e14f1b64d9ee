#include "qz/system/objects/qzbgrid.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "qz/platform/binaryvalue.h"
#include "qz/platform/memorystream.h"
#include "qz/system/objects/interleave_impl.h"
#include "qz/system/qzb/qzb.h"

namespace QZSystem {

// The item "QZGridBase":
//
//    0  1  integer endian flag             15  4  xMid, float
//    1  1  float endian flag               19  4  yMid
//    2  1  presence bits                   23  4  zMid
//    3  4  xDim, unsigned                  27  4  spacing
//    7  4  yDim                            31  n  length of the title
//   11  4  zDim                            31+n   the title
//
// The flat form, in numbers of 4 bytes:
//
//    0  bytes behind this field            28  xMid, float
//    4  0                                  32  yMid
//    8  number of grids                    36  zMid
//   12  tag                                40  spacing
//   16  xDim                               44  1 / spacing
//   20  yDim                               48  the byte "t"
//   24  zDim                               49  values: point after point, of each point grid after grid

namespace {

constexpr const char* GridBaseTag = "QZGridBase";

struct Presence {
  static constexpr unsigned int XMid = 1;
  static constexpr unsigned int YMid = 2;
  static constexpr unsigned int ZMid = 4;
  static constexpr unsigned int Spacing = 8;
  static constexpr unsigned int Title = 16;
};

constexpr unsigned long NumberSize = 4;
constexpr unsigned int HeaderNumbers = 12;
constexpr unsigned char ValuesMark = 't';
constexpr unsigned long HeaderSize = HeaderNumbers * NumberSize + 1;
// What the length field counts besides the values.
constexpr unsigned long BehindLength = HeaderSize - NumberSize;
constexpr unsigned long MostValues = (std::numeric_limits<std::uint32_t>::max() - BehindLength) / NumberSize;

constexpr unsigned long CredibleRatio = 16;
constexpr unsigned long CredibleAnyway = 1UL << 20;
// A grid is an object too, of some hundred bytes and its title, for as little as one value.
constexpr unsigned long CredibleGrids = 1024;
constexpr unsigned long NoSize = std::numeric_limits<unsigned long>::max();

constexpr unsigned long RoomValues = 16384;

// The numbers in front of the values, as they are stored. What hasn't arrived is 0.
struct Header {
  std::uint32_t length = 0;
  std::uint32_t zero = 0;
  std::uint32_t number = 0;
  std::uint32_t tag = 0;
  std::uint32_t x = 0, y = 0, z = 0;
  float xMid = 0.0F, yMid = 0.0F, zMid = 0.0F;
  float spacing = 0.0F;
  float inverseSpacing = 0.0F;
};
static_assert(sizeof(Header) == HeaderNumbers * NumberSize);
constexpr unsigned long BehindMid = 40;

template <class T>
unsigned char* bytesOf(T* numbers) {
  return reinterpret_cast<unsigned char*>(numbers);
}

template <class T>
void put(qzostream& out, T number) {
  unsigned char bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  out.write(bytes, sizeof number);
}

// Products and sums that stay at the greatest number instead of wrapping.
unsigned long times(unsigned long a, unsigned long b) {
  unsigned long product = 0;
  return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<unsigned long>::max() : product;
}

unsigned long plus(unsigned long a, unsigned long b) {
  unsigned long sum = 0;
  return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<unsigned long>::max() : sum;
}

// The values of the grids, from the first of the block that they share.
bool writeFlat(qzostream& out, const QZGridBase& geometry, const float* values, unsigned int number, unsigned int tag) {
  const Interleave form{geometry.GetSize(), number};
  const std::size_t count = form.Count();
  if (count > MostValues) return false;
  Header header;
  header.length = static_cast<std::uint32_t>(BehindLength + count * NumberSize);
  header.number = number;
  header.tag = tag;
  geometry.GetDim(header.x, header.y, header.z);
  geometry.GetMid(header.xMid, header.yMid, header.zMid);
  header.spacing = geometry.GetSpacing();
  header.inverseSpacing = geometry.GetInverseSpacing();

  unsigned long written = QZ_io_write_binary(out, bytesOf(&header), NumberSize, HeaderNumbers);
  written += QZ_io_write_binary(out, &ValuesMark, 1, 1);
  std::vector<float> room(std::min(count, RoomValues));
  for (std::size_t at = 0; at < count; at += room.size()) {
    const std::size_t step = std::min(count - at, room.size());
    form.Gather(values, at, step, room.data());
    written += QZ_io_write_binary(out, bytesOf(room.data()), NumberSize, static_cast<unsigned int>(step));
  }
  return written == NumberSize + header.length;
}

// What the grids would hold after the setters have had the header's numbers: the setters refuse some.
struct Shape {
  unsigned long points, number;
  bool changesDim, changes;

  Shape(const Header& header, const QZFixedMultiGrid<float>& grids) {
    const unsigned long asked = times(times(header.x, header.y), header.z);
    const bool isDim = asked != 0 && asked <= std::numeric_limits<std::uint32_t>::max();
    unsigned int x, y, z;
    grids.GetDim(x, y, z);
    points = isDim ? asked : grids.GetSize();
    number = header.number != 0 ? header.number : grids.GetNumGrids();
    changesDim = isDim && (header.x != x || header.y != y || header.z != z);
    changes = changesDim || number != grids.GetNumGrids();
  }

  [[nodiscard]] unsigned long Bytes() const { return times(times(points, number), NumberSize); }
};

bool isCredible(unsigned long block, unsigned long held) {
  return block <= plus(times(held, CredibleRatio), CredibleAnyway);
}

// Dimensions that are to go take their values with them at once. So no block is made that is neither the old nor the
// new one, however the numbers of grids and points change.
void setGeometry(QZMultiGrid<float>& grids, const Header& header, bool changesDim, bool hasMid) {
  if (changesDim) grids.SetDim(1, 1, 1);
  grids.SetNumGrids(header.number);
  grids.SetSpacing(header.spacing);
  grids.SetDim(header.x, header.y, header.z);
  if (hasMid) grids.SetMid(header.xMid, header.yMid, header.zMid);
  grids.ResetGrids();
}

// Reads all values and returns the bytes that came. A value that is cut leaves the old one.
unsigned long readValues(qzistream& in, QZMultiGrid<float>& grids) {
  const Interleave form{grids.GetSize(), grids.GetNumGrids()};
  float* const values = grids.GetGrid(0).GetValues();
  const std::size_t count = form.Count();
  std::vector<float> room(std::min(count, RoomValues));
  unsigned long read = 0;
  for (std::size_t at = 0; at < count; at += room.size()) {
    const std::size_t step = std::min(count - at, room.size());
    const unsigned long came = QZ_io_read_binary(in, bytesOf(room.data()), NumberSize, static_cast<unsigned int>(step));
    form.Scatter(values, at, came / NumberSize, room.data());
    read += came;
    if (came != step * NumberSize) break;
  }
  return read;
}

// The geometry and the values, from a stream that knows its size and stands behind the header.
bool readBody(qzistream& in, const Header& header, unsigned long headerBytes, QZMultiGrid<float>& grids) {
  const unsigned long position = in.tell();
  const unsigned long held = in.size() > position ? in.size() - position : 0;
  const unsigned long claim = times(times(times(header.x, header.y), times(header.z, header.number)), NumberSize);
  const Shape shape(header, grids);
  if (!isCredible(claim, held) || (shape.changes && !isCredible(shape.Bytes(), held))) return false;
  if (shape.number > grids.GetNumGrids() && shape.number > held / NumberSize + CredibleGrids) return false;

  setGeometry(grids, header, shape.changesDim, headerBytes >= BehindMid);
  const unsigned long expected = times(Interleave{grids.GetSize(), grids.GetNumGrids()}.Count(), NumberSize);
  const unsigned long read = readValues(in, grids);
  return headerBytes == HeaderSize && read == expected && BehindLength + read == header.length;
}

}  // namespace

bool QZBWriteGridBase(qzostream& out, const QZGridBase& grid) {
  const std::string title = grid.GetTitle();
  unsigned int x, y, z;
  grid.GetDim(x, y, z);
  qzosstream body;
  put(body, QZBIntEndian());
  put(body, QZBFloatEndian());
  put(body, static_cast<unsigned char>(
                (grid.IsXMidSet() ? Presence::XMid : 0) | (grid.IsYMidSet() ? Presence::YMid : 0) |
                (grid.IsZMidSet() ? Presence::ZMid : 0) | (grid.IsSpacingSet() ? Presence::Spacing : 0) |
                (grid.IsTitleSet() ? Presence::Title : 0)));
  for (const unsigned int dim : {x, y, z}) put(body, dim);
  for (const float number : {grid.GetXMid(), grid.GetYMid(), grid.GetZMid(), grid.GetSpacing()}) put(body, number);
  QZBWriteDataLength(body, title.size());
  body.write(title);

  const std::string bytes = body.str();
  QZBWriteTag(out, GridBaseTag);
  QZBWriteDataLength(out, bytes.size());
  out.write(bytes);
  return true;
}

bool QZWriteOldStyleGrid(qzostream& out, const QZFixedGrid<float>& grid) {
  return writeFlat(out, grid, grid.GetValues(), 1, 0);
}

bool QZWriteOldStyleGrid(qzostream& out, const QZFixedMultiGrid<float>& grids, unsigned int tag) {
  return writeFlat(out, grids, grids.GetGrid(0).GetValues(), grids.GetNumGrids(), tag);
}

bool QZReadOldStyleGrid(qzistream& in, QZMultiGrid<float>& grids) {
  Header header;
  unsigned char bytes[sizeof header] = {};
  unsigned char mark = 0;
  unsigned long headerBytes = QZ_io_read_binary(in, bytes, NumberSize, HeaderNumbers);
  std::memcpy(&header, bytes, headerBytes / NumberSize * NumberSize);
  headerBytes += QZ_io_read_binary(in, &mark, 1, 1);
  if (in.size() != NoSize) return readBody(in, header, headerBytes, grids);

  const unsigned long claim = Shape(header, grids).Bytes();
  if (claim > MostValues * NumberSize) return false;
  std::vector<unsigned char> arrived;
  in.readclaimed(arrived, claim);
  qzisstream held;
  held.set(arrived.data(), arrived.size(), false);
  return readBody(held, header, headerBytes, grids);
}

}  // namespace QZSystem
