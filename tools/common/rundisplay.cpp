#include "tools/common/rundisplay.h"

#include <memory>
#include <mutex>

#include "qz/system/progress/statusfile.h"
#include "qz/system/progress/threadeddots.h"
#include "tools/common/tool.h"

namespace QZTools {

using namespace QZSystem;

namespace {

constexpr unsigned int dotStep = 1000;
constexpr unsigned int lineStep = 50 * dotStep;
// So many records are handed over at once.
constexpr unsigned int handful = 100;
constexpr float statusInterval = 0.5F;

std::unique_ptr<QZThreadedDots> dots;
bool rowEnded = false;
// Counted by the loop and not handed over yet.
unsigned int waiting = 0;

// The threads of a run read by turns, and each tells how far it came.
std::mutex statusMutex;
std::unique_ptr<QZStatusFileTracer> status;

template <class Call>
void withStatus(const Call& call) {
  if (!status) return;
  const std::lock_guard<std::mutex> lock(statusMutex);
  call(*status);
}

}  // namespace

RunDisplay::RunDisplay(const std::string& progress, const std::string& statusFile) {
  waiting = 0;
  rowEnded = false;
  if (progress == "dots") dots = std::make_unique<QZThreadedDots>(lineStep, dotStep, "records");
  if (!statusFile.empty()) status = std::make_unique<QZStatusFileTracer>(statusFile, statusInterval);
}

RunDisplay::~RunDisplay() {
  const bool unended = dots && !rowEnded;
  dots.reset();
  if (unended) qzerr << qzendl;
  status.reset();
}

void RunDisplay::Finish() { FinishDots(); }

void CountRecords(unsigned int count) {
  if (dots && count > 0) dots->Update(count);
}

void CountRecord() {
  CheckInterrupt();
  if (++waiting < handful) return;
  CountRecords(waiting);
  waiting = 0;
  withStatus([](QZTracerBase& tracer) { tracer.Refresh(); });
}

void FinishDots() {
  if (!dots || rowEnded) return;
  CountRecords(waiting);
  waiting = 0;
  dots->Total();
  rowEnded = true;
}

bool HasStatus() { return status != nullptr; }

void ShowStatus(const std::string& task) {
  withStatus([&task](QZTracerBase& tracer) { tracer.SetTask(task); });
}

void ShowStatus(double percent) {
  withStatus([percent](QZTracerBase& tracer) { tracer.SetProgress(percent); });
}

}  // namespace QZTools
