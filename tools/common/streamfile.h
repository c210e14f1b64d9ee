#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/common/chunkcutter.h"
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
  bool Take(RecordChunk& chunk) override;
  bool HasSize() const override { return input->HasSize(); }
  std::unique_ptr<RecordSource> ForChunks() const override;
  void Begin(const RecordChunk& chunk, const RecordPlace& before) override;
  RecordPlace Reached() const override { return {line, records}; }

 private:
  std::unique_ptr<Input> input;
  std::vector<QZDataFlow::QZFieldBase> noColumns;
  ChunkCutter cutter;
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
  bool Take(RecordChunk& chunk) override;
  bool HasSize() const override { return input->HasSize(); }
  std::unique_ptr<RecordSource> ForChunks() const override;
  void Begin(const RecordChunk& chunk, const RecordPlace& before) override;
  RecordPlace Reached() const override { return {0, records}; }

 private:
  bool isAtEnd(const std::vector<unsigned char>& bytes);
  bool takeNext();

  std::unique_ptr<Input> input;
  std::vector<QZDataFlow::QZFieldBase> noColumns;
  // Null where the input itself is read.
  const RecordChunk* chunk = nullptr;
  std::size_t taken = 0;
  // The present record where the input itself is read.
  std::vector<unsigned char> read;
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
  bool HasColumns() const override { return true; }
  std::unique_ptr<RecordSink> ForChunks(QZPlatform::qzostream& out) const override;
  void PutBytes(std::string_view bytes, unsigned long count, const Dropped& dropped) override;
  Dropped TakeLosses() override { return std::exchange(losses, {}); }

 private:
  StreamSink(QZPlatform::qzostream& out, const StreamSink& other)
      : output(out), isJson(other.isJson), counts(other.counts) {}

  Output output;
  bool isJson;
  bool counts;
  unsigned long records = 0;
  FieldWatch watch;
  Dropped losses;
};

}  // namespace QZTools
