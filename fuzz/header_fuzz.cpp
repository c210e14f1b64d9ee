// Headers as items, by a handler that knows the class. Whatever comes in: the history has the length that it tells of,
// within reason, it stays flat when the header is added to another one, and what the setters take goes through a
// stream.
#include <vector>

#include "fuzz/fuzzing.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/objects/qzheader.h"
#include "tests/system/qzb/containers.h"

using namespace QZSystem;

namespace {

std::vector<QZHeader> historyOf(const QZHeader& header) {
  std::vector<QZHeader> runs;
  for (const QZHeader& run : QZIter(header.GetHistory())) runs.push_back(run);
  return runs;
}

std::size_t sizeOf(const QZHeader& header) {
  std::size_t size = 0;
  for (QZIter values(header.GetDataIter()); values; ++values) ++size;
  return size;
}

// The values that have a name of their own.
QZHeader known(const QZHeader& header) {
  QZHeader kept;
  kept.SetProgram(header.GetProgram());
  kept.SetVersion(header.GetVersion());
  kept.SetCommandLine(header.GetCommandLine());
  kept.SetComment(header.GetComment());
  kept.SetQZVersion(header.GetQZVersion());
  int day, month, year, hour, minutes, seconds;
  header.GetDate(day, month, year, hour, minutes, seconds);
  kept.SetDate(day, month, year, hour, minutes, seconds);
  return kept;
}

bool same(const QZHeader& a, const QZHeader& b) {
  int x[6], y[6];
  a.GetDate(x[0], x[1], x[2], x[3], x[4], x[5]);
  b.GetDate(y[0], y[1], y[2], y[3], y[4], y[5]);
  return std::equal(x, x + 6, y) && a.GetProgram() == b.GetProgram() && a.GetVersion() == b.GetVersion() &&
         a.GetCommandLine() == b.GetCommandLine() && a.GetComment() == b.GetComment() &&
         a.GetQZVersion() == b.GetQZVersion();
}

void goThroughStream(const QZHeader& header, const QZBinaryIOHandler& handler) {
  QZHeader kept = known(header);
  for (const QZHeader& run : historyOf(header)) kept.AddHistory(known(run));
  qzosstream out;
  Require(QZBWriteQZBase(out, kept, "QZBasePOD", handler));
  const std::string bytes = out.str();
  BytesStream in(bytes);
  QZHeader again;
  Require(QZBinaryRead(in, again, handler) == QZBReturn::Success);
  const std::vector<QZHeader> runs = historyOf(kept), runsAgain = historyOf(again);
  Require(same(kept, again) && std::equal(runs.begin(), runs.end(), runsAgain.begin(), runsAgain.end(), same));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  static const QZBinaryIOHandler handler = PODHandler<QZHeader>("Run");
  BytesStream in(data, size);
  QZHeader header;
  while (QZBinaryRead(in, header, handler) == QZBReturn::Success) {
  }
  const std::vector<QZHeader> runs = historyOf(header);
  Require(runs.size() <= sizeOf(header) + 1024);

  QZHeader next;
  next.AddHistory(header);
  const std::vector<QZHeader> all = historyOf(next);
  Require(all.size() == runs.size() + 1);
  Require(header.GetData<int>("history") <= 0 || !all[0].HasData("0"));
  for (std::size_t n = 0; n < runs.size(); ++n) Require(same(runs[n], all[all.size() - 1 - n]));

  if (all.size() < 64) goThroughStream(next, handler);
  header.AddHistory(header);
  return 0;
}
