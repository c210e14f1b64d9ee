#include "qz/system/progress/dottracer.h"

#include <cmath>
#include <utility>

#include "qz/platform/numbertext.h"
#include "qz/platform/syscalls_impl.h"
#include "qz/system/progress/elapsed_impl.h"

namespace QZSystem {

namespace {

constexpr long lastCells = 5;

// A percentage may be any number, also one that no integer type holds.
std::string WholePercent(double percent) {
  std::string text;
  QZPrintNumber(text, std::trunc(percent) + 0.0, 'f', 0);  // adding 0 makes 0 of -0
  return text;
}

}  // namespace

QZDotTracer::QZDotTracer(float seconds, qzostream& stream, unsigned int columns)
    : lastClock(SystemCalls::ProcessorTime()),
      lastTime(SystemCalls::Time()),
      interval(seconds),
      width(columns),
      out(&stream) {}

QZDotTracer::QZDotTracer(const std::string& task, float seconds, qzostream& stream, unsigned int columns)
    : QZDotTracer(seconds, stream, columns) {
  QZDotTracer::SetTask(task);
}

QZDotTracer::~QZDotTracer() {
  if (static_cast<long>(column) >= static_cast<long>(width) - lastCells) *out << qzendl;
  *out << "Done." << qzendl;
}

void QZDotTracer::SetTask(std::string name) {
  *out << name;
  out->flush();
  column = name.size();
}

void QZDotTracer::Push(std::string name) { QZDotTracer::SetTask(std::move(name)); }

void QZDotTracer::Pop() { PrintDot(100); }

void QZDotTracer::Refresh() { PrintDot(0); }

void QZDotTracer::SetProgress(unsigned int done, unsigned int total) {
  PrintDot(total == 0 ? 100.0 : static_cast<double>(done) / total * 100.0);
}

void QZDotTracer::SetProgress(double percent) { PrintDot(percent); }

bool QZDotTracer::Aborted() {
  PrintDot(0);
  return false;
}

bool QZDotTracer::IsDue() const { return SecondsSince(lastClock, lastTime) >= interval; }

void QZDotTracer::PrintDot(double percent) {
  if (!IsDue()) return;
  lastTime = SystemCalls::Time();
  lastClock = SystemCalls::ProcessorTime();
  if (column >= width) {
    *out << ' ' << WholePercent(percent) << "% processed." << qzendl;
    column = 0;
  }
  *out << '.';
  out->flush();
  ++column;
}

}  // namespace QZSystem
