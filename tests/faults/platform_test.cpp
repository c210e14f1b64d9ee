// Streams, files and their replacement, compression, tables, iterators, tags and holders.
#include <memory>
#include <utility>
#include <vector>

#include "qz/system.h"
#include "tests/faults/faults.h"
#include "tests/platform/streamtest.h"
#include "tools/common/csv.h"

using namespace QZSystem;
using streamtest::Content;
using streamtest::Folder;

namespace {

using Texts = std::vector<std::string>;

// More than the buffers of a stream, with lines longer than one.
const std::string& longText() {
  static const std::string made = [] {
    std::string text = std::string(40000, 'a') + "\nshort\n";
    for (int i = 0; i != 8000; ++i) text += "line " + std::to_string(i) + "\n";
    return text;
  }();
  return made;
}

const std::string& longFile() {
  static const Folder folder;
  static const std::string path = folder.File("long", longText());
  return path;
}

const Road fileIsWritten("FileIsWritten", allocations | calls, [](Attempt& attempt) {
  const Folder folder;
  qzofstream out;
  const bool written = attempt([&] {
    out.open(folder / "a");
    out << longText() << 12 << ' ' << 0.25;
    return out.close();
  });
  EXPECT_TRUE(!written || Content(folder / "a") == longText() + "12 0.25");
  out.open(folder / "a");
  out << "again";
  EXPECT_TRUE(out.close());
  EXPECT_EQ(Content(folder / "a"), "again");
});

const Road fileIsRead("FileIsRead", allocations | calls, [](Attempt& attempt) {
  qzifstream in;
  std::string read;
  // A file that didn't open is at its end; one whose reading fails says so.
  const bool whole = attempt([&] {
    in.open(longFile());
    in.read(read);
    return !in.failed();
  });
  EXPECT_TRUE(!whole || read == longText());
  unsigned long lines = 0;
  const bool wholeByLines = attempt([&] {
    in.open(longFile());
    const bool open = !in.failed();
    qzprogressstream watched(&in, false, &QZNoTracer, false);
    for (std::string line; watched.getline(line);) ++lines;
    return open && !watched.failed() && !in.failed();
  });
  EXPECT_TRUE(!wholeByLines || lines == 8002);
  in.open(longFile());
  in.read(read);
  EXPECT_TRUE(read == longText());
});

const Road textIsExtracted("TextIsExtracted", allocations, [](Attempt& attempt) {
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
});

const Road memoryIsCopied("MemoryIsCopied", allocations, [](Attempt& attempt) {
  qzisstream in;
  std::vector<std::unique_ptr<qzosstream>> streams;
  std::string content;
  const bool done = attempt([&] {
    in.set(longText().data(), longText().size(), true);
    qzisstream copy(in);
    in = copy;
    in.getbuffer(content);
    // More streams than the pool has buffers.
    for (int i = 0; i != 40; ++i) *streams.emplace_back(std::make_unique<qzosstream>()) << i;
    *streams[0] << content;
    return streams[0]->str() == "0" + longText();
  });
  EXPECT_TRUE(!done || (content == longText() && streams[39]->str() == "39"));
  in.set("after");
  in.getbuffer(content);
  EXPECT_EQ(content, "after");
});

const Road filesAreReplaced("FilesAreReplaced", allocations | calls | firstUse, [](Attempt& attempt) {
  for (const char* old : {"old", ""}) {
    const Folder folder;
    if (*old) folder.File("a", old);
    const bool replaced = attempt([&] {
      QZFileReplacement replacement(folder / "a");
      replacement.Out() << longText();
      return replacement.Commit();
    });
    // All or nothing, and a failure after the renaming would have nobody to tell.
    EXPECT_TRUE(Content(folder / "a") == (replaced ? longText() : old));
    const auto entries = std::distance(std::filesystem::directory_iterator(folder.path), {});
    EXPECT_TRUE(attempt.IsForGood() || entries == (replaced || *old ? 1 : 0)) << "a part is left";
    QZFileReplacement second(folder / "a");
    second.Out() << "new";
    EXPECT_TRUE(second.Commit());
    EXPECT_EQ(Content(folder / "a"), "new");
  }
});

const Road bytesAreCompressed("BytesAreCompressed", allocations, [](Attempt& attempt) {
  static const std::string expected = [] {
    std::string bytes;
    EXPECT_TRUE(QZCompress(bytes, longText().data(), longText().size(), "gz"));
    return bytes;
  }();
  std::string packed = "before";
  const bool done = attempt([&] { return QZCompress(packed, longText().data(), longText().size(), "gz"); });
  EXPECT_TRUE(done ? packed == expected : packed.empty() || packed == "before");
});

const Road valuesArePacked("ValuesArePacked", allocations, [] {
  Texts names = {"one", std::string(100, 'x'), ""};
  qzosstream out;
  QZ_io_write_binary(out, names);
  qzisstream in;
  in.set(out.str());
  QZ_io_read_binary(in, names);
  return QZStringJoin(names, ";");
});

const Road tableIsWrittenAndRead("TableIsWrittenAndRead", allocations, [] {
  qzosstream out, read;
  QZTools::CsvWriter writer(out, ',');
  for (const std::string& text : {std::string("plain"), std::string(300, '"'), std::string(50000, '\n')})
    writer.Cell(text);
  writer.Null();
  writer.EndRow();
  qzisstream in;
  in.set(out.str());
  QZTools::CsvReader reader(in, ',');
  for (std::vector<QZTools::CsvCell> row; reader.Next(row);)
    for (const QZTools::CsvCell& cell : row) read << cell.text << ";";
  return out.str() + read.str();
});

const Road textIsSplit("TextIsSplit", allocations, [] {
  const std::string text = "first 'second word which is long' third, \"fourth\" and more of them";
  Texts words, quoted, cells, blanks;
  std::list<std::string> listed;
  QZStringTokenize(words, text, " ,");
  QZStringTokenize(listed, text, " ,");
  QZStringTokenizeQuoted(quoted, text, " ,", "'\"");
  QZStringCSVTokenize(cells, text);
  QZStringTokenizeWhitespace(blanks, text);
  return QZStringJoin(words, ";") + listed.back() + QZStringJoin(quoted, ";") + QZStringCSVJoin(cells) +
         QZMakeString("%zu of %s", blanks.size(), text.c_str());
});

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

const Road elementsAreIterated("ElementsAreIterated", allocations, [] {
  const Texts first = {"three", "to", "a", "four"}, second = {"seventh", "third"};
  const std::vector<const std::string*> pointers = {&first[0], &first[1], &first[2]};
  using Over = QZSTLIter<ConstIterGuts<Texts>>;
  std::string seen;
  QZIter<const std::string> all(new Over(first));
  all.Push(QZIter<const std::string>(new Over(second)));
  all.Push(QZIter<const std::string>(new QZCacheIter<const std::string>(second)));
  QZIter<const std::string> sorted(new QZSortedIter<const std::string>(all.Copy().Release(), ShorterFirst()));
  sorted.Push(all.Copy());
  for (const std::string& text : sorted.Copy()) seen += text + " ";
  for (const std::string& text : QZIter(new QZPredVectorPtrIter<IsLong>(pointers, IsLong()))) seen += text + " ";
  for (const std::string& text : all) seen += text + " ";
  return seen;
});

const Road tagsAreRegistered("TagsAreRegistered", allocations | firstUse, [](Attempt& attempt) {
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
});

const Road dataIsHeld("DataIsHeld", allocations, [](Attempt& attempt) {
  const unsigned int tag = QZGetTag("faults.held");
  const float masses[] = {12.0F, 1.008F};
  std::vector<std::unique_ptr<QZBaseData>> held;
  attempt([&] {
    held.emplace_back(std::make_unique<QZBaseDataT<std::string>>(tag, std::string(100, 'x')));
    held.emplace_back(std::make_unique<QZBaseDataT<Texts>>(tag, Texts{"one", "two"}));
    held.emplace_back(std::make_unique<QZBaseDataTPtr<float*>>(tag, masses, 2U));
    for (std::size_t i = 0; i != 3; ++i) held.push_back(std::unique_ptr<QZBaseData>(held[i]->CreateCopy()));
    return true;
  });
  for (const auto& data : held) EXPECT_TRUE(data == nullptr || data->GetTag() == tag);
});

const Road messageIsPrinted("MessageIsPrinted", allocations | firstUse, [](Attempt& attempt) {
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
});

}  // namespace
