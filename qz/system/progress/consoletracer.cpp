#include "qz/system/progress/consoletracer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "qz/platform/clock.h"
#include "qz/platform/numbertext.h"

namespace QZSystem {

namespace {

constexpr std::size_t taskWidth = 25;
constexpr std::size_t percentWidth = 6;
constexpr std::size_t clockWidth = 2;

// Texts are padded here and not by the stream, whose locale may have ideas about numbers.
std::string PadLeft(std::string text, std::size_t width, char fill) {
  if (text.size() < width) text.insert(0, width - text.size(), fill);
  return text;
}

std::string PadRight(std::string text, std::size_t width) {
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

std::string Fixed(double value, int decimals) {
  std::string text;
  QZPrintNumber(text, value, 'f', decimals);
  return text;
}

std::string ClockPart(double value) { return PadLeft(Fixed(value, 0), clockWidth, '0'); }

// Takes whole units of so many seconds off `seconds`, if there is more than one unit.
double TakeUnits(double& seconds, double unit) {
  if (!(seconds > unit)) return 0;
  const double units = std::floor(seconds / unit);
  seconds -= units * unit;
  return units;
}

void WriteToTerminal(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

}  // namespace

QZConsoleProgressTracer::QZConsoleProgressTracer(std::string name, unsigned int cells, double percentStep,
                                                 double secondStep)
    : task(std::move(name)), width(cells), progressStep(percentStep), timeStep(secondStep) {
  QZGetTimeOfDay(&start);
}

void QZConsoleProgressTracer::SetTask(std::string name) {
  task = std::move(name);
  QZGetTimeOfDay(&start);
  elapsed = 0;
  progress = 0;
  PrintProgress(0, 0);
}

void QZConsoleProgressTracer::Push(std::string name) { SetTask(std::move(name)); }

void QZConsoleProgressTracer::Pop() {
  PrintProgress(100, Seconds());
  WriteToTerminal("\n");
}

void QZConsoleProgressTracer::SetProgress(unsigned int done, unsigned int total) {
  SetProgress(total == 0 ? 100.0 : static_cast<double>(done) / total * 100.0);
}

void QZConsoleProgressTracer::SetProgress(double percent) {
  if (progress > percent) return;
  std::lock_guard<std::mutex> lock(mutex);
  if (progress > percent) return;  // another thread has drawn more meanwhile
  if (percent >= progress + progressStep) {
    PrintProgress(percent, Seconds());
  } else if (const double seconds = Seconds(); seconds >= elapsed + timeStep) {
    PrintProgress(percent, seconds);
  }
}

void QZConsoleProgressTracer::PrintProgress(double percent, double seconds) {
  progress = percent;
  elapsed = seconds;
  std::ostringstream line;
  line << '\r' << PadRight(task, taskWidth);
  PrintBar(line, percent);
  PrintTime(line, seconds);
  WriteToTerminal(line.str());
}

void QZConsoleProgressTracer::PrintBar(std::ostringstream& line, double percent) const {
  const double cells = std::floor(width * percent / 100);
  const auto full = cells > 0 ? static_cast<std::size_t>(std::min<double>(cells, width)) : 0;  // not for a NaN
  line << '[' << std::string(full, '=') << std::string(width - full, '-') << "] "
       << PadLeft(Fixed(percent, 2), percentWidth, ' ') << "%  ";
}

void QZConsoleProgressTracer::PrintTime(std::ostringstream& line, double seconds) const {
  const double hours = TakeUnits(seconds, 3600);
  const double minutes = TakeUnits(seconds, 60);
  line << ClockPart(hours) << ':' << ClockPart(minutes) << ':' << ClockPart(std::floor(seconds));
}

double QZConsoleProgressTracer::Seconds() const {
  timeval now;
  QZGetTimeOfDay(&now);
  return static_cast<double>(now.tv_usec - start.tv_usec) * 1e-6 + static_cast<double>(now.tv_sec - start.tv_sec);
}

}  // namespace QZSystem
