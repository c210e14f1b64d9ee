#include "qz/system/objects/qzheader.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "qz/platform/syscalls_impl.h"
#include "qz/system/cli/interface.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/qzb/qzbrfxn.h"
#include "qz/system/qzb/qzbwfxn.h"
#include "qz/system/util/version.h"
#include "tests/system/cli/messages.h"

using namespace QZSystem;

namespace {

QZHeader Named(const std::string& program) {
  QZHeader header;
  header.SetProgram(program);
  return header;
}

QZHeader NamedOver(const std::string& program, const QZHeader& previous) {
  QZHeader header = Named(program);
  header.AddHistory(previous);
  return header;
}

// The programs of the earlier runs, the latest first: "c b a".
std::string Programs(const QZHeader& header) {
  std::string programs;
  for (const QZHeader& run : QZIter(header.GetHistory())) {
    if (!programs.empty()) programs += ' ';
    programs += run.GetProgram().empty() ? "?" : run.GetProgram();
  }
  return programs;
}

TEST(Header, AnEmptyOneHoldsNothing) {
  QZHeader header;
  int day = 1, month = 1, year = 1, hour = 1, minutes = 1, seconds = 1;
  EXPECT_FALSE(header);
  header.GetDate(day, month, year, hour, minutes, seconds);
  EXPECT_EQ(day + month + year + hour + minutes + seconds, 0);
  EXPECT_EQ(header.GetProgram() + header.GetInterface() + header.GetQZRelease(), "");
  EXPECT_EQ(header.GetQZVersion(), 0);
  EXPECT_FALSE(QZIter(header.GetHistory()));
  header.SetComment("");
  EXPECT_TRUE(header);
  header.Clear();
  EXPECT_FALSE(header);
}

TEST(Header, EachValueHasItsName) {
  QZHeader header;
  const struct {
    const char* name;
    void (QZHeader::*set)(const std::string&);
    std::string (QZHeader::*get)() const;
  } texts[] = {
      {"program", &QZHeader::SetProgram, &QZHeader::GetProgram},
      {"version", &QZHeader::SetVersion, &QZHeader::GetVersion},
      {"commandline", &QZHeader::SetCommandLine, &QZHeader::GetCommandLine},
      {"comment", &QZHeader::SetComment, &QZHeader::GetComment},
      {"qz_release", &QZHeader::SetQZRelease, &QZHeader::GetQZRelease},
      {"platform", &QZHeader::SetPlatform, &QZHeader::GetPlatform},
  };
  for (const auto& text : texts) {
    (header.*text.set)("first");
    (header.*text.set)(std::string("the ") + text.name);
    EXPECT_EQ(header.GetData<std::string>(text.name), std::string("the ") + text.name);
    EXPECT_EQ((header.*text.get)(), std::string("the ") + text.name);
  }
  header.SetData("itf", std::string("-a 1"));
  EXPECT_EQ(header.GetInterface(), "-a 1");
  header.SetQZVersion(7);
  EXPECT_EQ(header.GetData<int>("qz_version"), 7);
  EXPECT_EQ(header.GetQZVersion(), 7);
}

TEST(Header, ADateIsSixNumbers) {
  QZHeader header;
  header.SetDate(1, 2, 3, 4, 5, 6);
  header.SetDate(3, 4, 2020);
  std::string stored;
  for (const QZBaseData& value : QZIter(header.GetDataIter())) {
    const char* const name = QZGetTag(value.GetTag());
    stored += std::string(name) + "=" + std::to_string(header.GetData<int>(name)) + " ";
  }
  EXPECT_EQ(stored, "day=3 month=4 year=2020 hour=0 minutes=0 seconds=0 ");
  header.SetDate(31, 12, 1999, 23, 59, 58);
  int day, month, year, hour, minutes, seconds;
  header.GetDate(day, month, year, hour, minutes, seconds);
  EXPECT_EQ(std::vector<int>({day, month, year, hour, minutes, seconds}), std::vector<int>({31, 12, 1999, 23, 59, 58}));
}

TEST(Header, AStampHasTheTrueTime) {
  QZHeader header;
  const std::time_t before = std::time(nullptr);
  header.SetDate();
  const std::time_t after = std::time(nullptr);
  std::tm stamp = {};
  header.GetDate(stamp.tm_mday, stamp.tm_mon, stamp.tm_year, stamp.tm_hour, stamp.tm_min, stamp.tm_sec);
  stamp.tm_mon -= 1;
  stamp.tm_year -= 1900;
  stamp.tm_isdst = -1;
  const std::time_t stamped = std::mktime(&stamp);
  EXPECT_GE(stamped, before);
  EXPECT_LE(stamped, after);
}

TEST(Header, WithoutAClockTheDateStays) {
  Messages messages;
  QZHeader header;
  header.SetDate(3, 4, 2020);
  const SystemCalls::ScheduledFault noClock(SystemCalls::Call::Any, 1, SystemCalls::Fault::Fail(EINVAL), true);
  header.SetDate();
  EXPECT_EQ(messages.Take(), "Warning: QZCurrentTime failed to return a usable time\n");
  int day, month, year;
  header.GetDate(day, month, year);
  EXPECT_EQ(day, 3);
}

TEST(Header, AStampTellsOfTheRun) {
  const QZInterface itf("!PARAMETER -size\n!TYPE int\n!DEFAULT 5\n!END\n");
  char name[] = "prog", first[] = "-a", second[] = "b c", third[] = "d";
  char* argv[] = {name, first, second, third, nullptr};
  const QZHeader previous = NamedOver("old", Named("older"));
  const QZHeader header(4, argv, "fold", "2.1", "a test", itf, &previous);
  EXPECT_EQ(header.GetProgram(), "fold");
  EXPECT_EQ(header.GetVersion(), "2.1");
  EXPECT_EQ(header.GetComment(), "a test");
  EXPECT_EQ(header.GetCommandLine(), "-a b c d");
  EXPECT_EQ(header.GetQZRelease(), QZSystemGetRelease());
  EXPECT_EQ(header.GetQZVersion(), static_cast<int>(QZSystemGetVersion()));
  EXPECT_EQ(header.GetPlatform(), QZSystemGetPlatform());
  EXPECT_EQ(header.GetInterface(), "#Interface settings\n#-size  5\n");
  EXPECT_EQ(Programs(header), "old older");
  int day, month, year;
  header.GetDate(day, month, year);
  EXPECT_GE(year, 2024);
}

TEST(Header, AStampKeepsTheOrderOfItsValues) {
  char name[] = "prog";
  char* argv[] = {name, nullptr};
  const QZHeader previous;
  const QZHeader header(1, argv, "p", "v", "c", QZInterface(), &previous);
  std::string names;
  for (const QZBaseData& value : QZIter(header.GetDataIter())) names += std::string(QZGetTag(value.GetTag())) + " ";
  EXPECT_EQ(
      names,
      "program version commandline itf comment day month year hour minutes seconds qz_release qz_version platform "
      "0 history ");
}

TEST(Header, WithoutArgumentsThereIsAWarning) {
  Messages messages;
  char name[] = "prog";
  char* argv[] = {name, nullptr};
  EXPECT_EQ(QZHeader(1, argv, "p", "v", "c", QZInterface(), nullptr).GetCommandLine(), "");
  EXPECT_EQ(messages.Take(), "");
  const QZHeader header(0, argv + 1, "p", "v", "c", QZInterface(), nullptr);
  EXPECT_EQ(messages.Take(), "Warning: Warning: no command line arguments in QZHeader construction.\n");
  EXPECT_EQ(header.GetCommandLine(), "");
  EXPECT_EQ(header.GetProgram(), "p");
}

TEST(Header, HistoryIsFlat) {
  QZHeader header;
  header.AddHistory(Named("a"));
  header.AddHistory(Named("b"));
  EXPECT_EQ(Programs(header), "b a");
  EXPECT_EQ(header.GetData<int>("history"), 2);

  const QZHeader source = NamedOver("s", NamedOver("t", Named("u")));
  EXPECT_EQ(Programs(source), "t u");
  QZHeader empty;
  empty.AddHistory(source);
  EXPECT_EQ(Programs(empty), "s u t") << "the entries of index 1 and 0, then the source";
  header.AddHistory(source);
  EXPECT_EQ(Programs(header), "s u t b a") << "what was there keeps its place";
  EXPECT_EQ(Programs(source), "t u");
  for (const QZHeader& run : QZIter(header.GetHistory())) {
    for (const char* number : {"0", "1", "2"}) EXPECT_FALSE(run.HasData(number)) << run.GetProgram();
  }
  EXPECT_EQ(QZIter(header.GetHistory())->GetData<int>("history"), 2) << "the number stays";
}

TEST(Header, MayBeItsOwnHistory) {
  QZHeader header = NamedOver("a", Named("b"));
  header.AddHistory(header);
  EXPECT_EQ(Programs(header), "a b b");
  header.AddHistory(header.GetData<QZHeader>("0"));
  EXPECT_EQ(Programs(header), "b a b b");
}

TEST(Header, AMissingEntryOfTheHistoryIsEmpty) {
  Messages messages;
  QZHeader header = NamedOver("x", NamedOver("a", NamedOver("b", Named("c"))));
  EXPECT_EQ(Programs(header), "a c b");
  header.DeleteData("1");
  EXPECT_EQ(Programs(header), "a ? b");
  header.SetData("1", 5);
  EXPECT_EQ(messages.Take(), "");
  EXPECT_EQ(Programs(header), "a ? b");
  EXPECT_EQ(messages.Take(), "Warning: data type mismatch found when using generic data\n");
  header.AddHistory(Named("d"));
  EXPECT_EQ(Programs(header), "d a ? b");
  header.SetData("history", 0);
  header.DeleteData("history");
  EXPECT_EQ(Programs(header), "");
}

// A damaged file may claim any number.
TEST(Header, ACountBeyondReasonIsntBelieved) {
  for (const int count : {-2147483647 - 1, -1, 1024, 2147483647}) {
    QZHeader header = Named("x");
    header.SetData("history", count);
    std::size_t length = 0;
    for (QZIter runs(header.GetHistory()); runs; ++runs) ++length;
    EXPECT_EQ(length, count < 0 ? 0U : count == 1024 ? 1024U : 1026U) << count;
    const QZHeader next = NamedOver("y", header);
    EXPECT_EQ(next.GetData<int>("history"), static_cast<int>(length) + 1) << count;
    EXPECT_EQ(QZIter(next.GetHistory())->GetProgram(), "x") << count;
    header.AddHistory(Named("z"));
    EXPECT_EQ(QZIter(header.GetHistory())->GetProgram(), "z") << count;
  }
}

TEST(Header, NamesThatLookLikeNumbersArentEntries) {
  QZHeader header = NamedOver("x", Named("a"));
  for (const char* name : {"00", "01", "+0", "-1", "0x", " 0", "0 ", "1", "4294967296", ""}) {
    header.SetData(name, Named("wrong"));
  }
  EXPECT_EQ(Programs(header), "a");
  const QZHeader next = NamedOver("y", header);
  EXPECT_EQ(Programs(next), "x a");
  EXPECT_TRUE(QZIter(next.GetHistory())->HasData("01"));
  EXPECT_TRUE(QZIter(next.GetHistory())->HasData("1"));
}

TEST(Header, AnswersAsAContainer) {
  const QZHeader header = NamedOver("a", Named("b"));
  EXPECT_EQ(header.GetDataType(), QZGetDataType<QZContainer>());
  const std::unique_ptr<QZBase> copy(header.CreateCopy());
  EXPECT_EQ(copy->GetDataType(), QZGetDataType<QZContainer>());
  EXPECT_EQ(copy->GetData<QZHeader>("0").GetProgram(), "b");
  EXPECT_EQ(QZBaseDataT<QZHeader>(1, header).GetDataType(), QZGetDataType<QZHeader>());
}

class WriteHeader : public QZWriteFxn<QZHeader> {
 public:
  const char* GetTag() const override { return "QZBasePOD"; }
  const void* GetType() const override { return QZGetDataType<QZHeader>(); }
  WriteHeader* CreateCopy() const override { return new WriteHeader(*this); }
  bool operator()(qzostream& out, const QZHeader& header, const QZBinaryIOHandlerBase& handler) const override {
    return QZBWriteQZBase(out, header, GetTag(), handler);
  }
};

QZHeader ThroughBytes(const QZHeader& header, const QZBinaryIOHandlerBase& handler) {
  qzosstream out;
  EXPECT_TRUE(QZBWriteQZBase(out, header, "QZBasePOD", handler));
  const std::string bytes = out.str();
  qzisstream in;
  in.set(bytes.data(), bytes.size(), false);
  QZHeader read;
  EXPECT_EQ(QZBinaryRead(in, read, handler), QZBReturn::Success);
  return read;
}

TEST(Header, GoesThroughAStreamWithItsHistory) {
  const QZHeader header = NamedOver("a", NamedOver("b", Named("c")));
  QZBinaryIOHandler handler;
  handler.SetReadFxn(QZBasePODReadFxn<QZHeader>(), false);
  const QZHeader without = ThroughBytes(header, handler);
  EXPECT_EQ(without.GetProgram(), "a");
  EXPECT_EQ(Programs(without), "? ?") << "nobody writes the entries";
  handler.SetWriteFxn(WriteHeader(), false);
  QZInstallGenericDataHandler<QZHeader>(handler, "Run");
  EXPECT_EQ(Programs(ThroughBytes(header, handler)), "b c");
}

}  // namespace
