// W2 filter, W2b pass-through, W2c JSON lines <-> records, our side.
// The records stand one after the other in one memory buffer, in the form "binary" or, for W2c, "json"; a record says
// itself how long it is. They are read from a stream over that buffer, and written to a stream over a second one, whose
// memory is kept from one run to the next. One QZRecord is read into again and again; for W2c each line gets a new one,
// since reading a document adds to a record. Before the timing the output is read back and its values are summed.
#include <cmath>
#include <cstring>
#include <memory>

#include "bench.h"
#include "inputs.h"
#include "qz/dataflow.h"

using namespace inputs;
using namespace QZDataFlow;

namespace {

/// Collects output in memory that stays from one run to the next; it is the buffer of the stream itself.
class KeptOutput : public qzostream {
 public:
  explicit KeptOutput(std::size_t room) : size(room), memory(new unsigned char[room]) { Rewind(); }

  void Rewind() {
    start = current = memory.get();
    end = start + size;
    atEnd = false;
  }
  std::string Text() const {
    return std::string(reinterpret_cast<const char*>(start), static_cast<std::size_t>(current - start));
  }

 private:
  std::size_t size;
  std::unique_ptr<unsigned char[]> memory;
};

constexpr std::size_t kRoom = 192u << 20;

KeptOutput& Output() {
  static KeptOutput out(kRoom);
  return out;
}

const std::string& Binary() {
  static const std::string name = "binary";
  return name;
}

const std::string& JSON() {
  static const std::string name = "json";
  return name;
}

struct Put {
  QZRecord& record;
  void operator()(const char* name, std::int64_t v) { record.SetValue(QZField<long>(name), long(v)); }
  void operator()(const char* name, double v) { record.SetValue(QZField<double>(name), v); }
  void operator()(const char* name, bool v) { record.SetValue(QZField<bool>(name), v); }
  void operator()(const char* name, const std::string& v) { record.SetValue(QZField<std::string>(name), v); }
  void operator()(const char* name, const std::array<double, 8>& v) {
    record.SetValue(QZVectorField<double>(name), std::vector<double>(v.begin(), v.end()));
  }
};

std::string Encode(const std::string& format) {
  KeptOutput& out = Output();
  out.Rewind();
  QZRecord record;
  for (const Record& x : records()) {
    record.Clear();
    visit(x, Put{record});
    QZWriteRecord(out, record, format);
  }
  return out.Text();
}

const std::string& BinaryData() {
  static const std::string data = Encode(Binary());
  return data;
}

const std::string& JSONData() {
  static const std::string data = Encode(JSON());
  return data;
}

bool Close(double a, double b) { return std::abs(a - b) <= 1e-9 * std::abs(b); }

/// Whether the output holds the records of the job, by their number and the sum of one field.
bool Holds(const std::string& text, const std::string& format, const char* field, long count, double sum) {
  qzisstream in;
  in.set(text.data(), text.size(), false);
  const QZField<double> value(field);
  long found = 0;
  double total = 0;
  for (QZRecord record; QZReadRecord(record, in, format); record.Clear(), ++found) total += record.GetValue(value);
  return found == count && Close(total, sum);
}

double SumOfScores(bool filtered) {
  double sum = 0;
  for (const Record& x : records()) {
    if (!filtered)
      sum += x.score;
    else if (x.score > kThreshold)
      sum += new_value(x.score);
  }
  return sum;
}

long Filter(qzistream& in, qzostream& out, QZRecord& record) {
  static const QZField<double> score(kReadField), rank(kNewField);
  long kept = 0;
  while (QZReadRecord(record, in, Binary())) {
    const double s = record.GetValue(score);
    if (!(s > kThreshold)) continue;
    record.SetValue(rank, new_value(s));
    QZWriteRecord(out, record, Binary());
    ++kept;
  }
  return kept;
}

long Pass(qzistream& in, qzostream& out, QZRecord& record) {
  long count = 0;
  for (; QZReadRecord(record, in, Binary()); ++count) QZWriteRecord(out, record, Binary());
  return count;
}

long PassJSON(qzistream& in, qzostream& out) {
  long count = 0;
  for (;; ++count) {
    QZRecord record;
    if (!QZReadRecord(record, in, JSON())) return count;
    QZWriteRecord(out, record, JSON());
  }
}

template <class Run>
void Measure(benchmark::State& st, const std::string& data, long expected, Run run) {
  KeptOutput& out = Output();
  const auto once = [&] {
    qzisstream in;
    in.set(data.data(), data.size(), false);
    out.Rewind();
    return run(in, out);
  };
  if (once() != expected) return st.SkipWithError("wrong number of records");
  for (auto _ : st) {
    long count = once();
    benchmark::DoNotOptimize(count);
  }
  ops(st, kRecords);
  size_of(st, double(data.size()) / kRecords);
}

}  // namespace

BM("W2/filter/ours") {
  QZRecord record;
  Measure(st, BinaryData(), kept_expected(), [&](qzistream& in, qzostream& out) { return Filter(in, out, record); });
  if (!Holds(Output().Text(), Binary(), kNewField, kept_expected(), SumOfScores(true)))
    st.SkipWithError("wrong records");
}

BM("W2b/pass/ours") {
  QZRecord record;
  Measure(st, BinaryData(), kRecords, [&](qzistream& in, qzostream& out) { return Pass(in, out, record); });
  if (Output().Text() != BinaryData()) st.SkipWithError("wrong records");
}

BM("W2c/json/ours") {
  Measure(st, JSONData(), kRecords, PassJSON);
  if (!Holds(Output().Text(), JSON(), kReadField, kRecords, SumOfScores(false))) st.SkipWithError("wrong records");
}

BENCHMARK_MAIN();
