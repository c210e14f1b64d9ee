// Finds the records whose fingerprints are most like those of a query.

#include <algorithm>
#include <deque>
#include <memory>
#include <stdexcept>

#include "tools/common/fingerprint.h"
#include "tools/common/orderedwork.h"
#include "tools/common/recordsettings.h"
#include "tools/common/rundisplay.h"
#include "tools/common/texttable.h"
#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

using namespace QZSystem;
using namespace QZDataFlow;
using namespace QZTools;

namespace {

constexpr const char* ownConfiguration = R"(
!BRIEF Find the records whose fingerprints are most like those of a query
!DETAIL
  Two fingerprints are as similar as the number of bits that both have, divided by the
  number of bits that either has (Tanimoto). Records that are equally similar come in the
  order of the file. Records without a fingerprint are passed over.
!CATEGORY "Search" 0
  !BRIEF What is looked for
  !PARAMETER -query 1
    !TYPE string
    !INPUT 2
    !KEYLESS 1
    !SIMPLE true
    !BRIEF The query: a file of records, records of the file searched, or a fingerprint
    !DETAIL
      A file (.csv .tsv .json .jsonl .qzr) whose records are the queries; or field=text, for
      the records of the file searched that have this text in this field; or the hexadecimal
      text of a fingerprint itself.
  !END
  !PARAMETER -n 2
    !TYPE unsigned
    !DEFAULT 10
    !SIMPLE true
    !BRIEF How many records are shown for each query
  !END
  !PARAMETER -min 3
    !TYPE double
    !DEFAULT 0
    !SIMPLE true
    !BRIEF The least similarity, from 0 to 1
  !END
  !PARAMETER -field 4
    !TYPE string
    !DEFAULT fingerprint
    !SIMPLE true
    !BRIEF The field that holds the fingerprint, as hexadecimal text
  !END
  !PARAMETER -text 5
    !TYPE string
    !SIMPLE true
    !BRIEF Make the fingerprints of the texts of these fields instead, with commas between them
    !DETAIL
      Each group of three letters that occurs in one of the texts sets one of 2048 bits.
  !END
  !PARAMETER -name 6
    !TYPE string
    !DEFAULT name
    !BRIEF The field that names a record
  !END
  !PARAMETER -prints 7
    !TYPE string
    !OUTPUT true
    !BRIEF Write the records to this file, each with its fingerprint, instead of a search
  !END
  !PARAMETER -threads 8
    !TYPE unsigned
    !DEFAULT 0
    !BRIEF How many threads search; 0 for one on each processor
  !END
!END
)";

// The records searched are the second argument without a key, behind the query.
std::string configuration() {
  std::string input = InputConfiguration();
  const std::string first = "!KEYLESS 1";
  input.replace(input.find(first), first.size(), "!KEYLESS 2");
  return ownConfiguration + input + OutputConfiguration(false, false);
}

struct Hit {
  double similarity;
  unsigned long record;  // from 1
  std::string name;
};

// The hits of one query, the best first, at most so many.
class BestHits {
 public:
  bool Wants(double similarity, std::size_t most) const {
    return hits.size() < most || (most > 0 && similarity > hits.back().similarity);
  }

  // REQUIRES: hits of equal similarity come in the order of the records.
  void Add(Hit hit, std::size_t most) {
    const auto place = std::upper_bound(hits.begin(), hits.end(), hit,
                                        [](const Hit& a, const Hit& b) { return a.similarity > b.similarity; });
    hits.insert(place, std::move(hit));
    if (hits.size() > most) hits.pop_back();
  }

  const std::vector<Hit>& All() const { return hits; }

 private:
  std::vector<Hit> hits;
};

struct Query {
  std::string name;
  QZBitVector print;
};

// What a search is told.
struct Search {
  explicit Search(const QZInterface& settings)
      : most(CountSetting(settings, "-n")), nameField(TextSetting(settings, "-name")) {
    fields.hexField = TextSetting(settings, "-field");
    QZStringTokenize(fields.textFields, TextSetting(settings, "-text"), ",");
    if (!QZStringToNumber(TextSetting(settings, "-min"), least) || !(least >= 0 && least <= 1))
      throw ToolError("-min: " + TextSetting(settings, "-min") + " isn't from 0 to 1");
  }

  PrintFields fields;
  std::size_t most;
  double least = 0;
  std::string nameField;
  std::vector<Query> queries;
};

// Reads fingerprints from a source, with the place of one that is none.
std::optional<QZBitVector> printOf(PrintReader& reader, const QZRecord& record, const RecordSource& source,
                                   const Search& search) {
  try {
    return reader.Of(record);
  } catch (const std::invalid_argument& text) {
    constexpr std::size_t shown = 40;
    std::string found = text.what();
    if (found.size() > shown) found = found.substr(0, shown) + "...";
    throw ToolError(source.Place() + ", field " + search.fields.hexField + ": '" + found +
                    "' is no fingerprint in hexadecimal digits; see -field and -text");
  }
}

// The queries.

void addQueries(Search& search, RecordSource& source, const std::string& pickField, const std::string& pickText) {
  PrintReader reader(search.fields);
  for (QZRecord record; source.Next(record); CheckInterrupt()) {
    std::optional<QZBitVector> print = printOf(reader, record, source, search);
    if (!print || (!pickField.empty() && reader.Text(record, pickField) != pickText)) continue;
    search.queries.push_back({reader.Text(record, search.nameField), std::move(*print)});
  }
}

bool isRecordFile(const std::string& path) {
  const std::string lower = QZStringLower(path);
  for (const char* extension : {".csv", ".tsv", ".json", ".jsonl", ".qzr"}) {
    const std::string end = extension;
    if (lower.size() > end.size() && lower.compare(lower.size() - end.size(), end.size(), end) == 0) return true;
  }
  return false;
}

void findQueries(Search& search, const QZInterface& settings) {
  const std::string text = TextSetting(settings, "-query");
  RefuseOption(settings, text);
  if (isRecordFile(text)) {
    addQueries(search, *OpenRecords(text, FormatOf(text, "", "-query"), {}, "none", ""), "", "");
    if (search.queries.empty()) throw ToolError(text + ": no record has a fingerprint; see -field and -text");
  } else if (const std::size_t equals = text.find('='); equals != std::string::npos && equals > 0) {
    if (TextSetting(settings, "-in") == "-") throw ToolError("Standard input can't be searched for the query as well");
    addQueries(search, *OpenInput(settings, {}, "Looking for the query"), text.substr(0, equals),
               text.substr(equals + 1));
    if (search.queries.empty()) throw ToolError(InputName(settings) + ": no record with a fingerprint has " + text);
  } else if (const std::optional<QZBitVector> print = PrintOfHex(text)) {
    search.queries.push_back({"", *print});
  } else {
    throw ToolError("-query: " + text + " is neither a file of records, nor field=text, nor a fingerprint");
  }
}

// The search.

using Results = std::vector<BestHits>;

// A piece of the input, and what was found in it; the records are numbered from its beginning.
struct Piece {
  RecordChunk chunk;
  bool again = false;  // to be read in its turn, because of a fault
  RecordPlace reached;
  Results results;
};

void searchRecords(const Search& search, RecordSource& source, Results& results, unsigned long& count) {
  PrintReader reader(search.fields);
  for (QZRecord record; source.Next(record);) {
    ++count;
    const std::optional<QZBitVector> print = printOf(reader, record, source, search);
    if (!print) continue;
    for (std::size_t i = 0; i < results.size(); ++i) {
      const double similarity = QZTanimoto(search.queries[i].print, *print);
      if (similarity < search.least || !results[i].Wants(similarity, search.most)) continue;
      results[i].Add({similarity, count, reader.Text(record, search.nameField)}, search.most);
    }
  }
}

void work(const Search& search, RecordSource& source, Piece& piece) {
  constexpr RecordPlace somewhere = {1, 1};  // anywhere but at the first line, where a table may begin with a mark
  piece.results.assign(search.queries.size(), {});
  piece.again = false;
  try {
    unsigned long count = 0;
    source.Begin(piece.chunk, somewhere);
    searchRecords(search, source, piece.results, count);
    piece.reached = source.Reached();
    piece.reached.lines -= somewhere.lines;
    piece.reached.records -= somewhere.records;
    CountRecords(static_cast<unsigned int>(piece.reached.records));
  } catch (...) {
    TakeWarning();
    piece.again = true;
  }
}

Results searchAll(const Search& search, const QZInterface& settings) {
  const auto source = OpenInput(settings, {}, "Searching");
  const unsigned int wanted = CountSetting(settings, "-threads");
  const unsigned int threads = wanted != 0 ? wanted : QZGetNumProcessors();
  std::deque<std::unique_ptr<RecordSource>> readers;
  for (unsigned int i = 0; i < threads; ++i) readers.push_back(source->ForChunks());
  const auto again = source->ForChunks();

  Results results(search.queries.size());
  RecordPlace place = source->Reached();
  OrderedWork<Piece> pieces(
      threads, [&](Piece& piece) { return source->Take(piece.chunk); },
      [&](unsigned int worker, Piece& piece) { work(search, *readers[worker], piece); });
  for (Piece* piece = pieces.Next(); piece != nullptr; piece = pieces.Next()) {
    CheckInterrupt();
    if (piece->again) {
      // Its place is known now, and goes into the message.
      unsigned long count = 0;
      again->Begin(piece->chunk, place);
      piece->results.assign(search.queries.size(), {});
      searchRecords(search, *again, piece->results, count);
      piece->reached = {again->Reached().lines - place.lines, again->Reached().records - place.records};
      CountRecords(static_cast<unsigned int>(piece->reached.records));
    }
    for (std::size_t i = 0; i < results.size(); ++i) {
      for (const Hit& hit : piece->results[i].All()) {
        if (results[i].Wants(hit.similarity, search.most))
          results[i].Add({hit.similarity, place.records + hit.record, hit.name}, search.most);
      }
    }
    place.lines += piece->reached.lines;
    place.records += piece->reached.records;
  }
  FinishDots();
  QZThrow.Verbose(InputName(settings) + ": " + QZNumberToString(place.records) + " records searched");
  return results;
}

// What is shown.

void showTable(const Search& search, const Results& results) {
  const bool several = search.queries.size() > 1;
  std::vector<TextTable::Column> columns;
  if (several) columns.push_back({"query"});
  columns.insert(columns.end(), {{"similarity", true}, {"record", true}, {"name"}});
  TextTable table(columns);
  bool any = false;
  for (std::size_t i = 0; i < results.size(); ++i) {
    for (const Hit& hit : results[i].All()) {
      std::vector<std::string> cells;
      if (several) cells.push_back(search.queries[i].name);
      std::string similarity;
      QZNumberToString(hit.similarity, similarity, 'f', 4);
      cells.insert(cells.end(), {similarity, QZNumberToString(hit.record), hit.name});
      table.AddRow(cells);
      any = true;
    }
  }
  if (any) {
    table.Write(qzout, TerminalWidth());
  } else {
    qzout << "no similar records\n";
  }
}

void writeHits(const QZInterface& settings, const Search& search, const Results& results) {
  const QZField<std::string> query("query"), name("name");
  const QZField<long> number("record");
  const QZField<double> similarity("similarity");
  const auto sink = CreateOutput(settings, {query, name, number, similarity}, false);
  for (std::size_t i = 0; i < results.size(); ++i) {
    for (const Hit& hit : results[i].All()) {
      QZRecord record;
      record.SetValue(query, search.queries[i].name);
      record.SetValue(name, hit.name);
      record.SetValue(number, static_cast<long>(hit.record));
      record.SetValue(similarity, hit.similarity);
      sink->Put(record);
    }
  }
  FinishOutput(settings, *sink);
}

void writePrints(const QZInterface& settings, const Search& search) {
  const QZField<std::string> printField(search.fields.hexField);
  const auto source = OpenInput(settings, {}, "Making fingerprints");
  std::vector<QZFieldBase> columns = source->Columns();
  const auto same = [&](const QZFieldBase& field) { return field.GetName() == search.fields.hexField; };
  columns.erase(std::remove_if(columns.begin(), columns.end(), same), columns.end());
  if (!columns.empty()) columns.push_back(printField);

  const std::string path = TextSetting(settings, "-prints");
  const auto sink = CreateRecords(path, FormatOf(path, TextSetting(settings, "-outformat"), "-outformat"), columns,
                                  source->CarriesMore());
  PrintReader reader(search.fields);
  for (QZRecord record; source->Next(record); CheckInterrupt()) {
    if (const std::optional<QZBitVector> print = printOf(reader, record, *source, search)) {
      std::string text;
      print->ToHexString(text);
      record.SetValue(printField, text);
    }
    sink->Put(record);
  }
  ReportLosses(*sink, path, FlagSetting(settings, "-strict"));
  sink->Finish();
}

void similar(QZInterface& settings) {
  Search search(settings);
  if (!TextSetting(settings, "-prints").empty()) return writePrints(settings, search);
  if (TextSetting(settings, "-query").empty()) throw ToolError("Give what to look for as -query (or first)");
  findQueries(search, settings);
  const Results results = searchAll(search, settings);
  if (TextSetting(settings, "-out").empty()) {
    showTable(search, results);
  } else {
    writeHits(settings, search, results);
  }
}

}  // namespace

int main(int argc, char** argv) { return RunTool(argc, argv, configuration(), similar); }
