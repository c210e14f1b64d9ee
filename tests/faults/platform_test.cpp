// Streams, files and their replacement, compression, tables, iterators, tags and holders.
#include <dlfcn.h>
#include <zlib.h>

#include <memory>
#include <utility>
#include <vector>

#include "qz/system.h"
#include "tests/faults/faults.h"
#include "tools/common/csv.h"

using namespace QZSystem;

namespace {

voidpf allocateForZlib(voidpf, uInt items, uInt size) {
  return Allocations::Refused() ? nullptr : std::malloc(std::size_t{items} * size);
}
void freeForZlib(voidpf, voidpf block) { std::free(block); }

}  // namespace

// Stands before the one of zlib, so that its allocations are counted too.
extern "C" int deflateInit2_(z_streamp stream, int level, int method, int windowBits, int memLevel, int strategy,
                             const char* version, int size) {
  static const auto real = reinterpret_cast<decltype(&deflateInit2_)>(::dlsym(RTLD_NEXT, "deflateInit2_"));
  stream->zalloc = allocateForZlib;
  stream->zfree = freeForZlib;
  return real(stream, level, method, windowBits, memLevel, strategy, version, size);
}

namespace {

using Texts = std::vector<std::string>;

// More than the buffers of a stream, with lines longer than one.
std::string longText() {
  std::string text = std::string(40000, 'a') + "\nshort\n";
  for (int i = 0; i != 8000; ++i) text += "line " + std::to_string(i) + "\n";
  return text;
}

void fileIsWritten(Attempt& attempt) {
  const std::string text = longText();
  const TemporaryFile file;
  qzofstream out;
  const bool written = attempt([&] {
    out.open(file.Path());
    out << text << 12 << ' ' << 0.25;
    return out.close();
  });
  EXPECT_TRUE(!written || (file.Content() == text + "12 0.25"));
  out.open(file.Path());
  out << "again";
  EXPECT_TRUE(out.close());
  EXPECT_EQ(file.Content(), "again");
}

void fileIsRead(Attempt& attempt) {
  static const std::string text = longText();
  static const TemporaryFile file(text);
  qzifstream in;
  std::string read;
  // A file that didn't open is at its end; one whose reading fails says so.
  const bool whole = attempt([&] {
    in.open(file.Path());
    in.read(read);
    return !in.failed();
  });
  EXPECT_TRUE(!whole || (read == text));
  in.open(file.Path());
  in.read(read);
  EXPECT_TRUE(read == text);
}

void linesAreRead(Attempt& attempt) {
  static const TemporaryFile file(longText());
  qzifstream source;
  Texts lines;
  const bool whole = attempt([&] {
    source.open(file.Path());
    const bool open = !source.failed();
    qzprogressstream in(&source, false, &QZNoTracer, false);
    for (std::string line; in.getline(line);) lines.push_back(line);
    return open && !in.failed() && !source.failed();
  });
  EXPECT_TRUE(!whole || lines.size() == 8002u);
}

void textIsExtracted(Attempt& attempt) {
  const std::string text = std::string(50000, ' ') + "-12 0.5e3 yes " + std::string(40000, 'w') + " rest";
  qzisstream in;
  int number = 0;
  double real = 0;
  bool flag = false;
  std::string word;
  qzosstream rest;
  const bool done = attempt([&] {
    in.set(text);
    in >> number >> real >> flag >> word >> rest;
    return in.eof();
  });
  EXPECT_TRUE(!done || (number == -12 && real == 500 && flag && word.size() == 40000 && rest.str() == " rest"));
  in.set(text.data(), text.size(), false);
  in >> number;
  EXPECT_EQ(number, -12);
}

void memoryIsCopied(Attempt& attempt) {
  const std::string text = longText();
  qzisstream in;
  qzosstream out;
  std::string content;
  const bool done = attempt([&] {
    in.set(text.data(), text.size(), true);
    qzisstream copy(in);
    in = copy;
    in.getbuffer(content);
    out << content;
    return !out.failed() && out.str() == text;
  });
  EXPECT_TRUE(!done || (content == text));
  in.set("after");
  in.getbuffer(content);
  EXPECT_EQ(content, "after");
}

void manyStreamsLive(Attempt& attempt) {
  std::vector<std::unique_ptr<qzosstream>> streams;
  attempt([&] {
    // More than the pool has buffers.
    for (int i = 0; i != 40; ++i) *streams.emplace_back(std::make_unique<qzosstream>()) << i;
    return true;
  });
  for (std::size_t i = 0; i != streams.size() && streams[i] != nullptr; ++i)
    EXPECT_EQ(streams[i]->str(), streams[i]->str().empty() ? "" : std::to_string(i));
}

void fileIsReplaced(Attempt& attempt) {
  const std::string text = longText();
  const TemporaryFile file("old");
  const bool replaced = attempt([&] {
    QZFileReplacement replacement(file.Path());
    replacement.Out() << text;
    return replacement.Commit();
  });
  // All or nothing, and a failure after the renaming would have nobody to tell.
  EXPECT_TRUE(file.Content() == (replaced ? text : "old"));
  QZFileReplacement second(file.Path());
  second.Out() << "new";
  EXPECT_TRUE(second.Commit());
  EXPECT_EQ(file.Content(), "new");
}

void fileIsMade(Attempt& attempt) {
  const TemporaryFile file;
  const bool made = attempt([&] {
    QZFileReplacement replacement(file.Path());
    replacement.Out() << "new";
    return replacement.Commit();
  });
  EXPECT_EQ(file.Content(), made ? "new" : "");
}

void bytesAreCompressed(Attempt& attempt) {
  static const std::string text = longText();
  std::string expected;
  ASSERT_TRUE(QZCompress(expected, text.data(), text.size(), "gz"));
  std::string packed = "before";
  const bool done = attempt([&] { return QZCompress(packed, text.data(), text.size(), "gz"); });
  EXPECT_TRUE(!done || (packed == expected));
  EXPECT_TRUE(done || (packed.empty() || packed == "before"));
}

void valuesArePacked(Attempt& attempt) {
  const Texts names = {"one", std::string(100, 'x'), ""};
  std::vector<unsigned char> bytes(QZ_io_binary_size(names));
  QZ_io_write_binary(bytes.data(), names);
  Texts read;
  const bool done = attempt([&] {
    qzosstream out;
    QZ_io_write_binary(out, names);
    qzisstream in;
    in.set(out.str());
    return QZ_io_read_binary(in, read) == bytes.size() && QZ_io_read_binary(bytes.data(), read) == bytes.size();
  });
  EXPECT_TRUE(!done || read == names);
}

void tableIsRead(Attempt& attempt) {
  const std::string text = "a,b,c\n1,\"with \"\"quotes\"\"\",\n\"two\nlines\",,\"" + std::string(50000, 'x') + "\"\n";
  qzisstream in;
  in.set(text);
  QZTools::CsvReader table(in, ',');
  std::size_t cells = 0;
  const bool done = attempt([&] {
    for (std::vector<QZTools::CsvCell> row; table.Next(row);) cells += row.size();
    return true;
  });
  EXPECT_TRUE(!done || cells == 9u);
}

void tableIsWritten(Attempt& attempt) {
  qzosstream out;
  QZTools::CsvWriter table(out, ',');
  const bool done = attempt([&] {
    table.Cell(std::string(300, '"'));
    table.Null();
    table.EndRow();
    table.Cell("plain");
    table.EndRow();
    return true;
  });
  EXPECT_TRUE(!done || out.str() == std::string(602, '"') + ",\nplain\n");
}

void textIsSplit(Attempt& attempt) {
  Texts words, quoted, cells, blanks;
  std::list<std::string> listed;
  std::string joined;
  const bool done = attempt([&] {
    const std::string text = "first 'second word which is long' third, \"fourth\" and more of them";
    QZStringTokenize(words, text, " ,");
    QZStringTokenize(listed, text, " ,");
    QZStringTokenizeQuoted(quoted, text, " ,", "'\"");
    QZStringCSVTokenize(cells, text);
    QZStringTokenizeWhitespace(blanks, text);
    joined = QZStringJoin(words, "; ") + QZStringCSVJoin(cells) + QZMakeString("%d of %s", 3, text.c_str());
    return true;
  });
  EXPECT_TRUE(!done || words.size() == listed.size());
}

class ShorterFirst : public QZBinaryPredicate<std::string, std::string> {
 public:
  bool operator()(const std::string& a, const std::string& b) const override { return a.size() < b.size(); }
  [[nodiscard]] ShorterFirst* CreateCopy() const override { return new ShorterFirst(*this); }
};

class IsLong : public QZUnaryPredicate<const std::string> {
 public:
  bool operator()(const std::string& a) const override { return a.size() > 2; }
  [[nodiscard]] IsLong* CreateCopy() const override { return new IsLong(*this); }
};

void elementsAreIterated(Attempt& attempt) {
  const Texts first = {"three", "to", "a", "four"}, second = {"seventh", "third"};
  const std::vector<const std::string*> pointers = {&first[0], &first[1], &first[2]};
  using Over = QZSTLIter<ConstIterGuts<Texts>>;
  Texts seen;
  const bool done = attempt([&] {
    QZIter<const std::string> all(new Over(first));
    all.Push(QZIter<const std::string>(new Over(second)));
    all.Push(QZIter<const std::string>(new QZCacheIter<const std::string>(second)));
    QZIter<const std::string> sorted(new QZSortedIter<const std::string>(all.Copy().Release(), ShorterFirst()));
    sorted.Push(all.Copy());
    for (const std::string& text : sorted.Copy()) seen.push_back(text);
    for (const std::string& text : QZIter(new QZPredVectorPtrIter<IsLong>(pointers, IsLong()))) seen.push_back(text);
    for (const std::string& text : all) seen.push_back(text);
    return true;
  });
  EXPECT_TRUE(!done || seen.size() == 16u + 1 + 8);
}

void tagsAreRegistered(Attempt& attempt) {
  static int run = 0;
  const std::string prefix = "faults." + std::to_string(++run) + ".";
  unsigned int tags[3] = {};
  const bool done = attempt([&] {
    for (int i = 0; i != 3; ++i) tags[i] = QZGetTag(prefix + std::to_string(i));
    return true;
  });
  for (int i = 0; i != 3; ++i) {
    const std::string name = prefix + std::to_string(i);
    EXPECT_TRUE((tags[i] == 0 && !done) || QZGetTag(tags[i]) == name);
    EXPECT_EQ(QZHasTag(name), tags[i] != 0);
    EXPECT_STREQ(QZGetTag(QZGetTag(name)), name.c_str());
  }
}

void dataIsHeld(Attempt& attempt) {
  const unsigned int tag = QZGetTag("faults.held");
  const float masses[] = {12.0F, 1.008F};
  std::vector<std::unique_ptr<QZBaseData>> held;
  attempt([&] {
    held.emplace_back(std::make_unique<QZBaseDataT<std::string>>(tag, std::string(100, 'x')));
    held.emplace_back(std::make_unique<QZBaseDataT<std::vector<std::string>>>(tag, Texts{"one", "two"}));
    held.emplace_back(std::make_unique<QZBaseDataTPtr<float*>>(tag, masses, 2U));
    for (std::size_t i = 0; i != 3; ++i) held.push_back(std::unique_ptr<QZBaseData>(held[i]->CreateCopy()));
    return true;
  });
  for (const auto& data : held) EXPECT_TRUE(data == nullptr || data->GetTag() == tag);
}

void messageIsPrinted(Attempt& attempt) {
  qzosstream printed;
  QZErrorHandler handler;
  const bool done = attempt([&] {
    handler.SetOutputStream(printed);
    handler.SetStrict(false);
    QZErrorHandler copy(handler);
    handler.Warning("%s and %d", std::string(200, 'x').c_str(), 12);
    copy.Error("second");
    return true;
  });
  EXPECT_TRUE(!done || handler.Count(QZErrorLevel::Warning) == 1u);
  handler.Info("after");
}

const Road roads[] = {
    {"FileIsWritten", fileIsWritten},
    {"FileIsRead", fileIsRead},
    {"LinesAreRead", linesAreRead},
    {"TextIsExtracted", textIsExtracted},
    {"MemoryIsCopied", memoryIsCopied},
    {"ManyStreamsLive", manyStreamsLive},
    {"FileIsReplaced", fileIsReplaced},
    {"FileIsMade", fileIsMade},
    {"BytesAreCompressed", bytesAreCompressed},
    {"ValuesArePacked", valuesArePacked},
    {"TableIsRead", tableIsRead},
    {"TableIsWritten", tableIsWritten},
    {"TextIsSplit", textIsSplit},
    {"ElementsAreIterated", elementsAreIterated},
    {"TagsAreRegistered", tagsAreRegistered},
    {"DataIsHeld", dataIsHeld},
    {"MessageIsPrinted", messageIsPrinted},
};
const Road callRoads[] = {
    {"FileIsWritten", fileIsWritten},   {"FileIsRead", fileIsRead}, {"LinesAreRead", linesAreRead},
    {"FileIsReplaced", fileIsReplaced}, {"FileIsMade", fileIsMade},
};
const Road firstUses[] = {
    {"TagsAreRegistered", tagsAreRegistered},
    {"FileIsReplaced", fileIsReplaced},
    {"MessageIsPrinted", messageIsPrinted},
};

INSTANTIATE_TEST_SUITE_P(Platform, Roads,
                         testing::Combine(testing::ValuesIn(roads),
                                          testing::Values(Fails::Allocation, Fails::AllocationsFrom)),
                         NameOfCase);
INSTANTIATE_TEST_SUITE_P(PlatformCalls, Roads,
                         testing::Combine(testing::ValuesIn(callRoads), testing::Values(Fails::Call, Fails::CallsFrom)),
                         NameOfCase);
INSTANTIATE_TEST_SUITE_P(Platform, FirstUses,
                         testing::Combine(testing::ValuesIn(firstUses), testing::Values(Fails::Allocation)),
                         NameOfCase);

}  // namespace
