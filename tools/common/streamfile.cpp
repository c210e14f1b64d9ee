#include "tools/common/streamfile.h"

#include "tools/common/tool.h"
#include "tools/common/toolerror.h"
#include "tools/common/widenumber.h"

namespace QZTools {

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

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

bool BinarySource::Next(QZRecord& record) {
  qzistream& stream = input->Stream();
  offset = stream.tell();
  const std::vector<unsigned char> bytes = QZReadRecordBytes(stream);
  if (bytes.empty() && TakeWarning().empty() && stream.tell() == offset) {
    input->Finish();
    return false;
  }
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
