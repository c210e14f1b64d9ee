// Picks records by conditions, computes fields, drops others.

#include <atomic>

#include "tools/common/metasetting.h"
#include "tools/common/orderedwork.h"
#include "tools/common/recordfilter.h"
#include "tools/common/recordsettings.h"
#include "tools/common/rundisplay.h"
#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

using namespace QZSystem;
using namespace QZDataFlow;
using namespace QZTools;

namespace {

constexpr const char* ownConfiguration = R"(
!BRIEF Pick records by conditions, compute fields, drop others
!CATEGORY "Selection" 3
  !BRIEF Which records are kept
  !PARAMETER -where 1
    !TYPE string
    !SIMPLE true
    !BRIEF A condition over numeric fields, as "half_life > 1e9 && mass_number < 100"
    !DETAIL
      Operators: + - * / ^ == != < > <= >= && || ! and the conditional a ? b : c.
      Functions: sqrt, exp, ln, log10, log2, sin, cos, tan, abs, min, max, avg, rint and more.
      A null or missing operand makes the condition false. Computed fields may be used. The names
      of fields are letters, digits and _ here; texts are for -match.
  !END
  !PARAMETER -match 2
    !TYPE string
    !SIMPLE true
    !BRIEF Patterns for texts, as "element=C*; spin=*+"; all of them must match
    !DETAIL
      A * stands for any text, also none; two of them at most. Upper and lower case differ.
      A null or missing value doesn't match.
  !END
  !PARAMETER -limit 3
    !TYPE unsigned
    !LEGAL_RANGE 1 inf
    !BRIEF Stop after this many records have been kept
  !END
  !PARAMETER -count 4
    !TYPE bool
    !DEFAULT false
    !BRIEF Print how many records are kept; nothing is written to -out
  !END
  !PARAMETER -threads 5
    !TYPE unsigned
    !DEFAULT 1
    !LEGAL_RANGE 1 256
    !BRIEF Threads that read, decide and format; the output is the same for every number
  !END
!END
!CATEGORY "Fields" 4
  !BRIEF What the records hold
  !PARAMETER -set 1
    !TYPE string
    !SIMPLE true
    !BRIEF Computed fields, as "decay = ln(2) / half_life; rate = 2 * decay"
    !DETAIL
      They are Floats, computed in this order, so that a formula and -where may use those before
      it. A null or missing operand makes the value null.
  !END
  !PARAMETER -meta 2
    !TYPE string
    !BRIEF Metadata of fields, computed or not, as column:Name; column:Name=value
  !END
  !PARAMETER -keep 3
    !TYPE string
    !BRIEF Names of the fields to keep, with commas between them
  !END
  !PARAMETER -drop 4
    !TYPE string
    !BRIEF Names of the fields to drop, with commas between them
  !END
!END
)";

// Hands what is written to a text.
class TextSink : public qzostream {
 public:
  TextSink() { beginWriting(); }

  unsigned long _qzwrite(const unsigned char* bytes, unsigned long count) override {
    text.append(reinterpret_cast<const char*>(bytes), count);
    return count;
  }

  // Moves everything written since the last call.
  void Take(std::string& out) {
    flush();
    out.swap(text);
    text.clear();
  }

 private:
  std::string text;
};

// A piece of the input, and what became of it.
struct Piece {
  RecordChunk chunk;
  // It has to be read again in its turn: because of a fault, or as the columns of the output weren't known yet.
  bool again = false;
  RecordPlace reached;
  unsigned long kept = 0;
  std::string bytes;
  Dropped dropped;
  RecordFilter::Met met;
  std::set<std::string> metFields;
};

// A run over all records, by one thread or by several. What a piece gives is the same as if its records had been read
// one by one; where that isn't sure, at the end of -limit or at a fault, they are.
class Run {
 public:
  explicit Run(const QZInterface& runSettings);

  void Records();
  void Records(unsigned int threads);
  void Finish();

  unsigned int Threads() const;

 private:
  struct Worker;

  bool complete() const { return limit != 0 && kept >= limit; }
  void take(QZRecord& record);
  void work(Worker& worker, Piece& piece) const;
  void workThrough(Worker& worker, Piece& piece) const;
  void put(Piece& piece, RecordSource& again);

  const QZInterface& settings;
  std::string path;
  bool counts;
  MetaByName meta;
  RecordFilter filter;
  MetaByName columnMeta;
  std::unique_ptr<RecordSource> source;
  std::unique_ptr<RecordSink> sink;
  FieldMetaSetter setter;
  unsigned long limit;
  unsigned long seen = 0;
  unsigned long kept = 0;
  RecordPlace place;
  // Whether sinks for the threads can be made: the columns are known and stay as they are.
  std::atomic<bool> columnsKnown{false};
};

// What each thread has of its own.
struct Run::Worker {
  explicit Worker(const Run& run)
      : source(run.source->ForChunks()), filter(run.settings, run.meta), setter(run.setter), out(), sink() {}

  std::unique_ptr<RecordSource> source;
  RecordFilter filter;
  FieldMetaSetter setter;
  TextSink out;
  std::unique_ptr<RecordSink> sink;
};

MetaByName metaOfOthers(const RecordFilter& filter, const MetaByName& meta) {
  MetaByName others;
  for (const auto& [name, fieldMeta] : meta) {
    if (!filter.IsComputed(name)) others.emplace(name, fieldMeta);
  }
  return others;
}

Run::Run(const QZInterface& runSettings)
    : settings(runSettings),
      path(InputName(settings)),
      counts(FlagSetting(settings, "-count")),
      meta(ParseMeta(TextSetting(settings, "-meta"))),
      filter(settings, meta),
      columnMeta(metaOfOthers(filter, meta)),
      source(OpenInput(settings, columnMeta, "Filtering")),
      setter(source->CarriesMore() ? columnMeta : MetaByName()),
      limit(CountSetting(settings, "-limit")) {
  const std::vector<QZFieldBase> columns = filter.Columns(source->Columns());
  if (!counts) sink = CreateOutput(settings, columns, source->CarriesMore());
}

// What stands behind the last record that -limit wants may never come through a pipe, so that nobody may wait for it.
unsigned int Run::Threads() const { return limit != 0 && !source->HasSize() ? 1 : CountSetting(settings, "-threads"); }

void Run::take(QZRecord& record) {
  CountRecord();
  ++seen;
  setter.Apply(record);
  if (!filter.Pass(record)) return;
  ++kept;
  if (sink) sink->Put(record);
}

void Run::Records() {
  for (QZRecord record; !complete() && source->Next(record);) take(record);
}

void Run::workThrough(Worker& worker, Piece& piece) const {
  // Anywhere but at the first line, where a table may begin with a mark.
  constexpr RecordPlace somewhere = {1, 1};
  worker.source->Begin(piece.chunk, somewhere);
  for (QZRecord record; worker.source->Next(record);) {
    worker.setter.Apply(record);
    if (!worker.filter.Pass(record)) continue;
    ++piece.kept;
    if (worker.sink) worker.sink->Put(record);
  }
  piece.reached = worker.source->Reached();
  piece.reached.lines -= somewhere.lines;
  piece.reached.records -= somewhere.records;
}

void Run::work(Worker& worker, Piece& piece) const {
  piece.kept = 0;
  piece.bytes.clear();
  if (!counts && !worker.sink && columnsKnown.load(std::memory_order_acquire)) {
    worker.sink = sink->ForChunks(worker.out);
  }
  piece.again = !counts && !worker.sink;
  if (piece.again) return;
  try {
    workThrough(worker, piece);
    worker.out.Take(piece.bytes);
    if (worker.sink) piece.dropped = worker.sink->TakeLosses();
    piece.met = worker.filter.GetMet();
    piece.metFields = worker.setter.Met();
    // With a limit only the records that count are known in their turn.
    if (limit == 0) CountRecords(static_cast<unsigned int>(piece.reached.records));
  } catch (...) {
    // The message comes from reading the piece once more, where its place is known.
    TakeWarning();
    std::string broken;
    worker.out.Take(broken);
    if (worker.sink) worker.sink->TakeLosses();
    piece.again = true;
  }
}

void Run::put(Piece& piece, RecordSource& again) {
  if (piece.again || (limit != 0 && kept + piece.kept >= limit)) {
    again.Begin(piece.chunk, place);
    for (QZRecord record; !complete() && again.Next(record);) take(record);
    place = again.Reached();
    if (sink && sink->HasColumns()) columnsKnown.store(true, std::memory_order_release);
    return;
  }
  place.lines += piece.reached.lines;
  place.records += piece.reached.records;
  seen += piece.reached.records;
  kept += piece.kept;
  filter.AddMet(piece.met);
  if (piece.reached.records > 0) setter.AddMet(piece.metFields);
  if (limit != 0) CountRecords(static_cast<unsigned int>(piece.reached.records));
  if (sink) sink->PutBytes(piece.bytes, piece.kept, piece.dropped);
}

void Run::Records(unsigned int threads) {
  place = source->Reached();
  columnsKnown = sink && sink->HasColumns();
  std::deque<Worker> workers;
  for (unsigned int i = 0; i < threads; ++i) workers.emplace_back(*this);
  const auto again = source->ForChunks();
  const unsigned int level = QZThrow.GetLevel();
  OrderedWork<Piece> pieces(
      threads, [this](Piece& piece) { return source->Take(piece.chunk); },
      [this, &workers, level](unsigned int worker, Piece& piece) {
        // Each thread has a threshold of its own.
        QZThrow.SetLevel(level);
        work(workers[worker], piece);
      });
  for (Piece* piece = pieces.Next(); piece != nullptr && !complete(); piece = complete() ? nullptr : pieces.Next()) {
    CheckInterrupt();
    put(*piece, *again);
  }
}

void Run::Finish() {
  if (seen > 0 && source->CarriesMore()) filter.ReportUnmet(path);
  setter.RequireMet(path);
  if (sink) FinishOutput(settings, *sink);
  if (counts) {
    FinishDots();
    qzout << kept << '\n';
  }
  QZThrow.Verbose(path + ": kept " + QZNumberToString(kept) + " of " + QZNumberToString(seen) + " records");
}

void filterRecords(QZInterface& settings) {
  RefuseOption(settings, TextSetting(settings, "-in"));
  if (!FlagSetting(settings, "-count") && TextSetting(settings, "-out").empty()) {
    throw ToolError("Give the file to write as -out (or second), or -count to count only");
  }
  Run run(settings);
  const unsigned int threads = run.Threads();
  if (threads > 1) {
    run.Records(threads);
  } else {
    run.Records();
  }
  run.Finish();
}

}  // namespace

int main(int argc, char** argv) {
  return RunTool(argc, argv, ownConfiguration + InputConfiguration() + OutputConfiguration(false), filterRecords);
}
