#include "qz/dataflow/recordio.h"

#include <algorithm>

#include "qz/dataflow/datarecord_impl.h"
#include "qz/dataflow/recordjson_impl.h"
#include "qz/dataflow/recordsections_impl.h"
#include "qz/dataflow/recordunloading_impl.h"
#include "qz/system/frame/error.h"

namespace QZDataFlow {

namespace {

constexpr char kDamaged[] = "Read length invalid, file is possibly corrupted. Stopping read";

// Names of records are shorter than this.
constexpr long kNameLimit = 12;

// A length above this counts as 0.
constexpr unsigned long kLargestContent = 0x80000000000;

// Content is read in steps of at least this, none of which more than doubles it: a length that isn't true makes no
// room.
constexpr std::size_t kReadStep = std::size_t{1} << 20;

constexpr unsigned long kNoSize = ~0UL;

bool IsBinary(std::string_view format) { return format == "binary" || format == "qzb"; }

bool IsJSON(std::string_view format) { return format == "json"; }

bool ReportDamage() {
  QZThrow.Warning(kDamaged);
  return false;
}

/// The bytes from the present position to the end; all ones where nobody knows.
unsigned long BytesLeft(qzistream& in) {
  const unsigned long size = in.size();
  if (size == kNoSize) return kNoSize;
  return size - std::min(size, in.tell());
}

/// Reads an integer, 0 for none. False when it is cut short.
bool TakeInt(qzistream& in, long& value) {
  unsigned char form[1 + 0x7F];
  const int head = in.get();
  if (head < 0) return false;
  form[0] = static_cast<unsigned char>(head);
  const std::size_t size = form[0] < BufferImpl::kNone ? 0 : form[0] & 0x7Fu;
  if (in.read(form + 1, size) != size) return false;
  value = QZReadBuffer(form, 1 + size).ReadInt();
  return true;
}

/// Appends the next `count` bytes. False when they end early.
bool TakeBytes(qzistream& in, ByteBlock& out, unsigned long count) {
  if (count > BytesLeft(in)) return false;
  for (unsigned long left = count; left != 0;) {
    const std::size_t step = std::min(left, std::max(out.size(), kReadStep));
    const std::size_t before = out.size();
    const unsigned long got = in.read(out.Extend(step), step);
    out.Truncate(before + got);
    if (got != step) return false;
    left -= got;
  }
  return true;
}

/// Takes a record that stands in the stream's buffer whole, as a writer puts it, if its content has up to 32767 bytes.
inline bool TakeBuffered(qzistream& in, ByteBlock& out, std::size_t& contentAt) {
  constexpr std::size_t kLongestLength = 3;
  const std::string_view ready = in.buffered();
  const auto* const data = reinterpret_cast<const unsigned char*>(ready.data());
  if (ready.size() < kRecordStart.size() + kLongestLength || !BeginsWith(data, ready.size(), kRecordStart))
    return false;
  std::size_t size = 0;
  const std::size_t head = DecodeShortLength(data + kRecordStart.size(), size);
  contentAt = kRecordStart.size() + head;
  if (head == 0 || size > ready.size() - contentAt) return false;
  out.Trim(contentAt + size);
  out.Clear();
  out.Append(data, contentAt + size);
  in.skip(static_cast<long>(contentAt + size));
  return true;
}

/// Takes any record, piece by piece. Kept apart so that the usual way stays short.
[[gnu::noinline]] bool TakePieces(qzistream& in, ByteBlock& out, std::size_t& contentAt) {
  out.Clear();
  long nameSize;
  if (in.peek() < 0) return false;
  if (!TakeInt(in, nameSize)) return ReportDamage();
  if (nameSize == 0) return false;
  if (nameSize < 0 || nameSize >= kNameLimit) return ReportDamage();
  out.AppendInt(nameSize);
  if (!TakeBytes(in, out, static_cast<unsigned long>(nameSize))) return ReportDamage();
  long claim;
  if (!TakeInt(in, claim)) return ReportDamage();
  const unsigned long size =
      static_cast<unsigned long>(claim) > kLargestContent ? 0 : static_cast<unsigned long>(claim);
  out.AppendInt(size);
  contentAt = out.size();
  out.Trim(contentAt + size);
  return TakeBytes(in, out, size) || ReportDamage();
}

/// Takes the next record into `out`, its content beginning at `contentAt`. False at the end, and when it is damaged,
/// after the warning.
inline bool TakeRecord(qzistream& in, ByteBlock& out, std::size_t& contentAt) {
  return TakeBuffered(in, out, contentAt) || TakePieces(in, out, contentAt);
}

/// The next line with its line end, if it has one. It stands in the stream's buffer, or else in `storage`.
bool TakeLine(qzistream& in, std::string& storage, std::string_view& line) {
  line = in.buffered();
  const std::size_t size = line.find('\n') + 1;
  if (size != 0) {
    line = line.substr(0, size);
    in.skip(static_cast<long>(size));
    return true;
  }
  const unsigned long before = in.tell();
  if (!in.getline(storage)) return false;
  if (in.tell() - before > storage.size()) storage += '\n';
  line = storage;
  return true;
}

/// Raw text inside a document may have line ends; the line has none.
bool WriteJSONLine(qzostream& out, const QZRecord& record) {
  QZJSONTextWriter line;
  line.KeepToOneLine();
  if (!WriteRecordJSON(line, record)) return false;
  line.Raw('\n');
  out.write(line.View().data(), line.View().size());
  return true;
}

}  // namespace

bool QZWriteRecord(qzostream& out, const QZRecord& record, const std::string& format) {
  if (IsBinary(format)) {
    QZRecordImpl& impl = QZRecordImpl::Of(record);
    if (impl.HasDecoded()) RecordUnloading::All(record);
    const QZByteSlice bytes = impl.Encode();
    out.write(bytes.data, bytes.size);
    return true;
  }
  return IsJSON(format) && WriteJSONLine(out, record);
}

bool QZReadRecord(QZRecord& record, qzistream& in, const std::string& format) {
  if (IsBinary(format)) {
    QZRecordImpl& impl = QZRecordImpl::Of(record);
    std::size_t contentAt = 0;
    return TakeRecord(in, impl.Incoming(), contentAt) && impl.FromIncoming(contentAt);
  }
  std::string storage;
  std::string_view line;
  return IsJSON(format) && TakeLine(in, storage, line) && ReadRecordJSON(record, line);
}

std::vector<unsigned char> QZReadRecordBytes(qzistream& in) {
  ByteBlock bytes;
  std::size_t contentAt = 0;
  if (!TakeRecord(in, bytes, contentAt)) return {};
  return std::vector<unsigned char>(bytes.data(), bytes.data() + bytes.size());
}

}  // namespace QZDataFlow
