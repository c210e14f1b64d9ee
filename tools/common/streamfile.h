#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/common/files.h"
#include "tools/common/recordfile.h"

namespace QZTools {

/// Records from JSON documents, one a line. A number that the document reader would cut to 32 bits, and everything that
/// it would make null, ends the run with a message that names line and field. One thread at a time, const operations
/// included.
class DocumentSource : public RecordSource {
 public:
  explicit DocumentSource(std::unique_ptr<Input> documentInput) : input(std::move(documentInput)) {}

  bool Next(QZDataFlow::QZRecord& record) override;
  std::string Place() const override;
  const std::vector<QZDataFlow::QZFieldBase>& Columns() const override { return noColumns; }

 private:
  std::unique_ptr<Input> input;
  std::vector<QZDataFlow::QZFieldBase> noColumns;
  std::string text;
  unsigned long line = 0;
  unsigned long records = 0;
};

/// Records from a binary stream. One thread at a time, const operations included.
class BinarySource : public RecordSource {
 public:
  explicit BinarySource(std::unique_ptr<Input> binaryInput) : input(std::move(binaryInput)) {}

  bool Next(QZDataFlow::QZRecord& record) override;
  std::string Place() const override;
  const std::vector<QZDataFlow::QZFieldBase>& Columns() const override { return noColumns; }

 private:
  std::unique_ptr<Input> input;
  std::vector<QZDataFlow::QZFieldBase> noColumns;
  unsigned long offset = 0;
  unsigned long records = 0;
};

/// Records to JSON documents, one a line, or to a binary stream. One thread at a time.
class StreamSink : public RecordSink {
 public:
  StreamSink(const std::string& path, Format format, bool carriesMore);

  void Put(const QZDataFlow::QZRecord& record) override;
  void Finish() override { output.Finish(); }
  const Dropped& Losses() const override { return losses; }

 private:
  Output output;
  bool isJson;
  bool counts;
  unsigned long records = 0;
  FieldWatch watch;
  Dropped losses;
};

}  // namespace QZTools
