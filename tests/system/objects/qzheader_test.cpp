#include "qz/system/objects/qzheader.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <ctime>

#include "qz/platform/syscalls_impl.h"
#include "qz/system/cli/interface.h"
#include "qz/system/util/version.h"
#include "tests/system/cli/messages.h"
#include "tests/system/qzb/objects.h"

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

// "31.12.1999 23:59:58", without zeros in front.
std::string Date(const QZHeader& header) {
  int day, month, year, hour, minutes, seconds;
  header.GetDate(day, month, year, hour, minutes, seconds);
  qzosstream out;
  out << day << '.' << month << '.' << year << ' ' << hour << ':' << minutes << ':' << seconds;
  return out.str();
}

TEST(Header, AStampTellsOfTheRun) {
  const QZInterface itf("!PARAMETER -size\n!TYPE int\n!DEFAULT 5\n!END\n");
  const std::string settings = "#Interface settings\n#-size  5\n", release = QZSystemGetRelease();
  const int version = static_cast<int>(QZSystemGetVersion());
  char name[] = "prog", first[] = "-a", second[] = "b c", third[] = "d";
  char* argv[] = {name, first, second, third, nullptr};
  const QZHeader previous = NamedOver("old", Named("older"));
  QZHeader header(4, argv, "fold", "2.1", "a test", itf, &previous);
  header.SetDate(31, 12, 1999, 23, 59, 58);
  EXPECT_EQ(Tell(header), "program string fold; version string 2.1; commandline string -a b c d; itf string " +
                              settings + "; comment string a test; day int 31; month int 12; year int 1999; " +
                              "hour int 23; minutes int 59; seconds int 58; qz_release string " + release +
                              "; qz_version int " + std::to_string(version) + "; platform string " +
                              QZSystemGetPlatform() + "; 0 ?; 1 ?; history int 2; ");
  EXPECT_EQ(Programs(header), "old older");
  EXPECT_EQ(Date(header), "31.12.1999 23:59:58");
  EXPECT_EQ(header.GetProgram() + '|' + header.GetVersion() + '|' + header.GetCommandLine() + '|' +
                header.GetComment() + '|' + header.GetInterface() + '|' + header.GetQZRelease(),
            "fold|2.1|-a b c d|a test|" + settings + '|' + release);
  EXPECT_EQ(header.GetPlatform(), QZSystemGetPlatform());
  EXPECT_EQ(header.GetQZVersion(), version);
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
  EXPECT_TRUE(before <= stamped && stamped <= after) << Date(header);
}

TEST(Header, WithoutAClockTheDateStays) {
  Messages messages;
  QZHeader header;
  header.SetDate(1, 2, 3, 4, 5, 6);
  header.SetDate(3, 4, 2020);
  const SystemCalls::ScheduledFault noClock(SystemCalls::Call::Any, 1, SystemCalls::Fault::Fail(EINVAL), true);
  header.SetDate();
  EXPECT_EQ(messages.Take(), "Warning: QZCurrentTime failed to return a usable time\n");
  EXPECT_EQ(Date(header), "3.4.2020 0:0:0");
  EXPECT_EQ(Date(QZHeader()), "0.0.0 0:0:0");
  EXPECT_TRUE(header && !QZHeader());
}

TEST(Header, WithoutArgumentsThereIsAWarning) {
  Messages messages;
  char name[] = "prog";
  char* argv[] = {name, nullptr};
  EXPECT_EQ(QZHeader(1, argv, "p", "v", "c", QZInterface(), nullptr).GetCommandLine(), "");
  EXPECT_EQ(messages.Take(), "");
  EXPECT_EQ(QZHeader(0, argv + 1, "p", "v", "c", QZInterface(), nullptr).GetCommandLine(), "");
  EXPECT_EQ(messages.Take(), "Warning: Warning: no command line arguments in QZHeader construction.\n");
}

TEST(Header, HistoryIsFlat) {
  QZHeader header = NamedOver("x", Named("a")), empty;
  header.AddHistory(Named("b"));
  EXPECT_EQ(Programs(header), "b a");
  const QZHeader source = NamedOver("s", NamedOver("t", Named("u")));
  empty.AddHistory(source);
  EXPECT_EQ(Programs(empty), "s u t") << "the entries of index 1 and 0, then the source";
  header.AddHistory(source);
  EXPECT_EQ(Programs(header), "s u t b a") << "what was there keeps its place";
  EXPECT_EQ(Programs(source), "t u");
  EXPECT_EQ(Tell(*QZIter(header.GetHistory())), "program string s; history int 2; ") << "the number stays";
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
  header.DeleteData("1");
  EXPECT_EQ(Programs(header), "a ? b");
  EXPECT_EQ(messages.Take(), "");
  header.SetData("1", 5);
  EXPECT_EQ(Programs(header), "a ? b");
  EXPECT_EQ(messages.Take(), "Warning: data type mismatch found when using generic data\n");
  header.AddHistory(Named("d"));
  EXPECT_EQ(Programs(header), "d a ? b");
  header.DeleteData("history");
  EXPECT_EQ(Programs(header), "");
}

// A damaged file may claim any number.
TEST(Header, ACountBeyondReasonIsntBelieved) {
  for (const int count : {-2147483647 - 1, -1, 1024, 2147483647}) {
    QZHeader header = Named("x");
    header.SetData("history", count);
    int length = 0;
    for (QZIter runs(header.GetHistory()); runs; ++runs) ++length;
    EXPECT_EQ(length, count < 0 ? 0 : count == 1024 ? 1024 : 1026) << count;
    EXPECT_EQ(NamedOver("y", header).GetData<int>("history"), length + 1) << count;
    header.AddHistory(Named("z"));
    EXPECT_EQ(QZIter(header.GetHistory())->GetProgram(), "z") << count;
  }
}

TEST(Header, NamesThatLookLikeNumbersArentEntries) {
  QZHeader header = NamedOver("x", Named("a"));
  for (const char* name : {"00", "01", "+0", "-1", "0x", " 0", "0 ", "1", "4294967296", ""})
    header.SetData(name, Named("wrong"));
  const QZHeader next = NamedOver("y", header);
  EXPECT_EQ(Programs(header), "a");
  EXPECT_EQ(Programs(next), "x a");
  EXPECT_TRUE(QZIter(next.GetHistory())->HasData("01") && QZIter(next.GetHistory())->HasData("1"));
}

TEST(Header, GoesThroughAStreamAsAContainerWithItsHistory) {
  const QZHeader header = NamedOver("a", NamedOver("b", Named("c")));
  EXPECT_EQ(header.GetDataType(), QZGetDataType<QZContainer>());
  EXPECT_EQ(Hex(Written(header)), Hex(Bytes("01 3F 00 87 'program' 10 81 'a' 00 87 'history' 01 02 00 00 00")));
  QZBinaryIOHandler handler;
  handler.SetReadFxn(QZBasePODReadFxn<QZHeader>(), false);
  handler.SetWriteFxn(WritePOD<QZHeader>(), false);
  QZInstallGenericDataHandler<QZHeader>(handler, "Run");
  const std::string bytes = Written(header, handler);
  BytesIn in(bytes);
  QZHeader read;
  EXPECT_EQ(QZBReadQZBase(in, read, bytes.size(), handler), QZBReturn::Success);
  EXPECT_EQ(Programs(read), "b c");
}

}  // namespace
