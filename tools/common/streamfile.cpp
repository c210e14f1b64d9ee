#include "tools/common/streamfile.h"

#include "tools/common/tool.h"
#include "tools/common/toolerror.h"
#include "tools/common/widenumber.h"

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

constexpr std::size_t leastChunk = 1UL << 16;

bool isBlank(const std::string& text) { return text.find_first_not_of(" \t\r") == std::string::npos; }

}  // namespace

bool DocumentSource::Next(QZRecord& record) {
  do {
    if (!input->Stream().getline(text)) {
      input->Finish();
      return false;
    }
    ++line;
  } while (isBlank(text));
  ++records;
  const std::string wide = FindWideNumber(text);
  if (!wide.empty()) {
    throw ToolError(Place() + ", field " + wide +
                    ": a whole number of more than 32 bits can't be read from JSON; use the binary form or a table");
  }
  record = QZRecord();
  const bool read = QZRecordFromJSON(record, text);
  const std::string warning = TakeWarning();
  if (!read || !warning.empty()) throw ToolError(Place() + ": " + (warning.empty() ? "is no record" : warning));
  return true;
}

std::string DocumentSource::Place() const {
  return input->Name() + ": line " + QZNumberToString(line) + " (record " + QZNumberToString(records) + ")";
}

bool DocumentSource::Take(RecordChunk& chunk) {
  return cutter.Next(*input, chunk.text, [](std::string_view part) { return part.rfind('\n') + 1; });
}

std::unique_ptr<RecordSource> DocumentSource::ForChunks() const {
  return std::make_unique<DocumentSource>(std::make_unique<Input>(input->Name()));
}

void DocumentSource::Begin(const RecordChunk& chunk, const RecordPlace& before) {
  input->Read(chunk.text);
  line = before.lines;
  records = before.records;
}

// Whether no record came because there is none; a damaged one has moved the stream or was told.
bool BinarySource::isAtEnd(const std::vector<unsigned char>& bytes) {
  return bytes.empty() && TakeWarning().empty() && input->Stream().tell() == offset;
}

bool BinarySource::Take(RecordChunk& taking) {
  taking.records.clear();
  taking.offsets.clear();
  for (std::size_t size = 0; size < leastChunk; size += taking.records.back().size()) {
    offset = input->Stream().tell();
    std::vector<unsigned char> bytes = QZReadRecordBytes(input->Stream());
    if (isAtEnd(bytes)) break;
    taking.offsets.push_back(offset);
    taking.records.push_back(std::move(bytes));
    // A damaged record is the last that counts.
    if (taking.records.back().empty()) break;
  }
  if (taking.records.empty()) input->Finish();
  return !taking.records.empty();
}

std::unique_ptr<RecordSource> BinarySource::ForChunks() const {
  return std::make_unique<BinarySource>(std::make_unique<Input>(input->Name()));
}

void BinarySource::Begin(const RecordChunk& begun, const RecordPlace& before) {
  chunk = &begun;
  taken = 0;
  records = before.records;
}

bool BinarySource::takeNext() {
  if (chunk == nullptr) {
    offset = input->Stream().tell();
    read = QZReadRecordBytes(input->Stream());
    if (!isAtEnd(read)) return true;
    input->Finish();
    return false;
  }
  if (taken == chunk->records.size()) return false;
  offset = chunk->offsets[taken++];
  return true;
}

bool BinarySource::Next(QZRecord& record) {
  if (!takeNext()) return false;
  const std::vector<unsigned char>& bytes = chunk == nullptr ? read : chunk->records[taken - 1];
  ++records;
  if (!QZRecordFromBytes(record, bytes)) {
    TakeWarning();
    throw ToolError(Place() + ": the record is damaged or cut short" +
                    (records == 1 ? "; is this a file of binary records? see -informat" : ""));
  }
  return true;
}

std::string BinarySource::Place() const {
  return input->Name() + ": record " + QZNumberToString(records) + " (byte " + QZNumberToString(offset) + ")";
}

StreamSink::StreamSink(const std::string& path, Format format, bool carriesMore)
    : output(path), isJson(format == Format::Json), counts(isJson && carriesMore) {}

std::unique_ptr<RecordSink> StreamSink::ForChunks(qzostream& out) const {
  return std::unique_ptr<RecordSink>(new StreamSink(out, *this));
}

void StreamSink::PutBytes(std::string_view bytes, unsigned long count, const Dropped& dropped) {
  output.Stream().write(bytes.data(), bytes.size());
  output.Check();
  records += count;
  losses.Add(dropped);
}

void StreamSink::Put(const QZRecord& record) {
  ++records;
  const bool written = QZWriteRecord(output.Stream(), record, isJson ? "json" : "binary");
  output.Check();
  if (!written) {
    throw ToolError(output.Name() + ": record " + QZNumberToString(records) + " can't be written: " + TakeWarning());
  }
  if (!counts) return;
  watch.See(record);
  losses.CountDocument(record, watch);
}

}  // namespace QZTools
