#include "qz/system/objects/qzheader.h"

#include <algorithm>
#include <cassert>
#include <ctime>
#include <unordered_set>
#include <utility>
#include <vector>

#include "qz/platform/clock.h"
#include "qz/platform/memorystream.h"
#include "qz/system/cli/settings.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/frame/itervector.h"
#include "qz/system/objects/numbered_impl.h"
#include "qz/system/util/version.h"

namespace QZSystem {

namespace {

constexpr const char* noArguments = "Warning: no command line arguments in QZHeader construction.";
constexpr const char* noTime = "QZCurrentTime failed to return a usable time";

// The names of the values, as files have them.
constexpr const char* programName = "program";
constexpr const char* versionName = "version";
constexpr const char* commandLineName = "commandline";
constexpr const char* commentName = "comment";
constexpr const char* interfaceName = "itf";
constexpr const char* qzVersionName = "qz_version";
constexpr const char* qzReleaseName = "qz_release";
constexpr const char* platformName = "platform";
constexpr const char* dayName = "day";
constexpr const char* monthName = "month";
constexpr const char* yearName = "year";
constexpr const char* hourName = "hour";
constexpr const char* minutesName = "minutes";
constexpr const char* secondsName = "seconds";
constexpr const char* historyName = "history";

std::string JoinedArguments(int argc, char** argv) {
  std::string line;
  for (int n = 1; n < argc; ++n) {
    if (n > 1) line += ' ';
    line += argv[n];
  }
  return line;
}

// The earlier runs, the latest first.
std::vector<QZHeader> HistoryOf(const QZHeader& header) {
  std::vector<QZHeader> runs = Numbered<QZHeader>(header, NumberedCount(header, historyName));
  std::reverse(runs.begin(), runs.end());
  return runs;
}

// A copy without the earlier runs, which keeps their number.
QZHeader RunAlone(const QZHeader& header) {
  const int count = header.GetData<int>(historyName);
  QZHeader alone;
  for (const QZBaseData& value : QZIter(header.GetDataIter())) {
    unsigned int number = 0;
    const bool isRun = count > 0 && IsNumberBelow(static_cast<unsigned int>(count), QZGetTag(value.GetTag()), number);
    if (!isRun) alone.AddBaseData(&value);
  }
  return alone;
}

}  // namespace

QZHeader::~QZHeader() = default;

QZHeader::QZHeader(int argc, char** argv, const char* program, const char* version, const char* comment,
                   const QZInterface& itf, const QZHeader* previous) {
  assert(program && version && comment);
  if (argc == 0) QZThrow.Warning(noArguments);
  SetProgram(program);
  SetVersion(version);
  SetCommandLine(JoinedArguments(argc, argv));
  SetInterface(itf);
  SetComment(comment);
  SetDate();
  SetQZRelease(QZSystemGetRelease());
  SetQZVersion(static_cast<int>(QZSystemGetVersion()));
  SetPlatform(QZSystemGetPlatform());
  if (previous) AddHistory(*previous);
}

QZHeader::operator bool() const { return bool(QZIter(GetDataIter())); }

std::string QZHeader::GetProgram() const { return GetData<std::string>(programName); }
std::string QZHeader::GetCommandLine() const { return GetData<std::string>(commandLineName); }
std::string QZHeader::GetComment() const { return GetData<std::string>(commentName); }
std::string QZHeader::GetInterface() const { return GetData<std::string>(interfaceName); }
std::string QZHeader::GetQZRelease() const { return GetData<std::string>(qzReleaseName); }
std::string QZHeader::GetVersion() const { return GetData<std::string>(versionName); }
std::string QZHeader::GetPlatform() const { return GetData<std::string>(platformName); }
int QZHeader::GetQZVersion() const { return GetData<int>(qzVersionName); }

void QZHeader::GetDate(int& day, int& month, int& year) const {
  day = GetData<int>(dayName);
  month = GetData<int>(monthName);
  year = GetData<int>(yearName);
}

void QZHeader::GetDate(int& day, int& month, int& year, int& hour, int& minutes, int& seconds) const {
  GetDate(day, month, year);
  hour = GetData<int>(hourName);
  minutes = GetData<int>(minutesName);
  seconds = GetData<int>(secondsName);
}

QZIterBase<QZHeader>* QZHeader::GetHistory() const { return new QZCacheIter<QZHeader>(HistoryOf(*this)); }

void QZHeader::SetProgram(const std::string& program) { SetData(programName, program); }
void QZHeader::SetCommandLine(const std::string& commandLine) { SetData(commandLineName, commandLine); }
void QZHeader::SetComment(const std::string& comment) { SetData(commentName, comment); }
void QZHeader::SetQZRelease(const std::string& release) { SetData(qzReleaseName, release); }
void QZHeader::SetVersion(const std::string& version) { SetData(versionName, version); }
void QZHeader::SetPlatform(const std::string& platform) { SetData(platformName, platform); }
void QZHeader::SetQZVersion(int version) { SetData(qzVersionName, version); }

void QZHeader::SetInterface(const QZInterface& itf) {
  qzosstream settings;
  QZWriteSettings(itf, settings, true, "");
  SetData(interfaceName, settings.str());
}

void QZHeader::SetDate(int day, int month, int year, int hour, int minutes, int seconds) {
  SetData(dayName, day);
  SetData(monthName, month);
  SetData(yearName, year);
  SetData(hourName, hour);
  SetData(minutesName, minutes);
  SetData(secondsName, seconds);
}

void QZHeader::SetDate(int day, int month, int year) { SetDate(day, month, year, 0, 0, 0); }

void QZHeader::SetDate() {
  std::tm now = {};
  if (!QZCurrentTime(&now)) return QZThrow.Warning(noTime);
  SetDate(now.tm_mday, now.tm_mon + 1, now.tm_year + 1900, now.tm_hour, now.tm_min, now.tm_sec);
}

// Everything is read before anything is stored, since the header may be a part of this one. The tags that are taken are
// noted once: with a search for each of many runs the cost would go by the square of their number.
void QZHeader::AddHistory(const QZHeader& header) {
  std::vector<QZHeader> runs = HistoryOf(header);
  runs.push_back(RunAlone(header));
  std::unordered_set<unsigned int> taken;
  for (const QZBaseData& value : QZIter(GetDataIter())) taken.insert(value.GetTag());

  unsigned int index = NumberedCount(*this, historyName);
  for (QZHeader& run : runs) {
    const unsigned int tag = QZGetTag(std::to_string(index++));
    if (taken.count(tag) != 0) {
      SetData(tag, std::move(run));
    } else {
      AddData(tag, std::move(run));
    }
  }
  SetData(historyName, static_cast<int>(index));
}

template class QZBaseDataT<QZHeader>;

}  // namespace QZSystem
