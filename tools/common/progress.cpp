#include "tools/common/progress.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "tools/common/rundisplay.h"
#include "tools/common/texttable.h"

namespace QZTools {

using namespace QZSystem;

namespace {

// A bar that leaves room on its line for the task before it and the figures behind it.
unsigned int barWidth() {
  constexpr unsigned int others = 46;
  constexpr unsigned int widest = 40;
  constexpr unsigned int narrowest = 5;
  const unsigned int columns = TerminalWidth(STDERR_FILENO);
  return std::clamp(columns > others ? columns - others : 0, narrowest, widest);
}

}  // namespace

RunTracer::RunTracer(const std::string& word, std::string taskName)
    : task(std::move(taskName)),
      silent(word == "none" || word == "dots"),
      waits(word == "auto"),
      drawsBar(isatty(STDERR_FILENO) == 1),
      bar("", barWidth()) {
  QZGetTimeOfDay(&start);
}

RunTracer::~RunTracer() {
  if (begun && drawsBar) qzerr << qzendl;
}

void RunTracer::SetTask(std::string name) { task = std::move(name); }
void RunTracer::Push(std::string name) { SetTask(std::move(name)); }
void RunTracer::Refresh() {}
bool RunTracer::Aborted() { return false; }

bool RunTracer::hasBegun() {
  if (begun || silent) return begun;
  if (waits) {
    timeval now;
    QZGetTimeOfDay(&now);
    const double lasted =
        static_cast<double>(now.tv_sec - start.tv_sec) + 1e-6 * static_cast<double>(now.tv_usec - start.tv_usec);
    if (lasted < 2.0) return false;
  }
  begun = true;
  if (drawsBar) bar.SetTask(task);
  return true;
}

void RunTracer::writeTenth(int tenth) {
  if (tenth <= lastTenth) return;
  lastTenth = tenth;
  qzerr << task << ": " << tenth * 10 << "%" << qzendl;
}

void RunTracer::SetProgress(unsigned int done, unsigned int total) {
  SetProgress(total == 0 ? 100.0 : 100.0 * static_cast<double>(done) / static_cast<double>(total));
}

void RunTracer::SetProgress(double percent) {
  // The progress of a stream counts whole buffers and can run past the end.
  percent = percent < 100.0 ? percent : 100.0;
  ShowStatus(percent);
  if (!hasBegun()) return;
  if (drawsBar) {
    bar.SetProgress(percent);
  } else {
    writeTenth(static_cast<int>(percent / 10.0));
  }
}

void RunTracer::Pop() {
  if (!hasBegun()) return;
  if (drawsBar) {
    bar.Pop();
  } else {
    writeTenth(10);
  }
  silent = true;
  begun = false;
}

}  // namespace QZTools
