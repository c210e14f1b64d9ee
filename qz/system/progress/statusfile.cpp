// The status file: a line for each open task, the outermost first,
//
//   line   = blank* name figure? "\n"        as many blanks as tasks are open around this one
//   figure = " (%" percent " done)"          percent with two decimals, in six columns
//          | " (" done " of " total " done)"
//
// and in the end the one line "Finished".

#include "qz/system/progress/statusfile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <exception>
#include <utility>

#include "qz/platform/filereplace.h"
#include "qz/platform/filestream.h"
#include "qz/platform/syscalls_impl.h"
#include "qz/system/frame/names.h"
#include "qz/system/progress/elapsed_impl.h"
#include "qz/system/progress/statusfile_impl.h"
#include "qz/system/text/makestring.h"

namespace QZSystem {

namespace {

constexpr const char* Finished = "Finished\n";

bool IsLinkOrSpecial(const std::string& path) {
  std::string to;
  if (SystemCalls::ReadLink(path.c_str(), to)) return true;
  struct stat status = {};
  return SystemCalls::Status(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

// False if no new file can be made beside the old one; what fails after that isn't tried again.
bool Replace(const std::string& path, const std::string& text) {
  QZFileReplacement file(path);
  if (file.Error() != 0) return false;
  file.Out() << text;
  static_cast<void>(file.Commit());
  return true;
}

void RewriteInPlace(const std::string& path, const std::string& text) {
  // A pipe that nobody reads would keep the run waiting.
  const int opened = SystemCalls::Open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY | O_NONBLOCK, 0666);
  if (opened < 0) return;
  qzofstream file;
  file.attach(opened, true);
  file << text;
  file.close();
}

void WriteFile(const std::string& path, const std::string& text) {
  if (IsLinkOrSpecial(path) || !Replace(path, text)) RewriteInPlace(path, text);
}

}  // namespace

QZStatusFileTracerImpl::QZStatusFileTracerImpl(std::string file, float seconds)
    : tasks(1),
      progress(1),
      lastClock(SystemCalls::ProcessorTime()),
      lastTime(SystemCalls::Time()),
      interval(seconds),
      fileName(std::move(file)) {}

QZStatusFileTracerImpl::~QZStatusFileTracerImpl() {
  try {
    WriteFile(fileName, Finished);
  } catch (const std::exception&) {
    // No memory for a status is no reason to end a run.
  }
}

void QZStatusFileTracerImpl::SetTask(std::string name) {
  if (tasks.empty()) Open("");
  tasks.back() = std::move(name);
  WriteIfDue();
}

void QZStatusFileTracerImpl::Push(std::string name) {
  Open(std::move(name));
  WriteIfDue();
}

void QZStatusFileTracerImpl::Pop() {
  if (tasks.empty()) return;
  tasks.pop_back();
  progress.resize(tasks.size());
  WriteIfDue();
}

void QZStatusFileTracerImpl::Refresh() { WriteIfDue(); }

void QZStatusFileTracerImpl::SetProgress(unsigned int done, unsigned int total) {
  SetFigure(QZMakeString(" (%d of %d done)", static_cast<int>(done), static_cast<int>(total)));
}

void QZStatusFileTracerImpl::SetProgress(double percent) {
  const auto rounded = static_cast<float>(percent);
  SetFigure(QZMakeString(" (%%%6.2f done)", static_cast<double>(rounded)));
}

bool QZStatusFileTracerImpl::Aborted() { return false; }

void QZStatusFileTracerImpl::Open(std::string name) {
  progress.resize(tasks.size() + 1);
  tasks.push_back(std::move(name));
}

void QZStatusFileTracerImpl::SetFigure(std::string text) {
  if (tasks.empty()) Open("");
  progress[tasks.size() - 1] = std::move(text);
  WriteIfDue();
}

// The time that the writing takes is no part of the next interval.
void QZStatusFileTracerImpl::WriteIfDue() {
  if (!(SecondsSince(lastClock, lastTime) >= interval)) return;
  WriteFile(fileName, Lines());
  lastTime = SystemCalls::Time();
  lastClock = SystemCalls::ProcessorTime();
}

std::string QZStatusFileTracerImpl::Lines() const {
  std::string lines;
  for (std::size_t depth = 0; depth < tasks.size(); ++depth)
    lines.append(depth, ' ').append(tasks[depth]).append(progress[depth]).append("\n");
  return lines;
}

QZStatusFileTracer::QZStatusFileTracer(std::string fileName, float interval)
    : impl(std::make_unique<QZStatusFileTracerImpl>(std::move(fileName), interval)) {}

QZStatusFileTracer::QZStatusFileTracer(const QZStatusFileTracer& other)
    : QZTracerBase(other), impl(std::make_unique<QZStatusFileTracerImpl>(*other.impl)) {}

QZStatusFileTracer& QZStatusFileTracer::operator=(const QZStatusFileTracer& other) {
  if (this == &other) return *this;
  impl = std::make_unique<QZStatusFileTracerImpl>(*other.impl);
  return *this;
}

QZStatusFileTracer::~QZStatusFileTracer() = default;

void QZStatusFileTracer::SetTask(std::string name) { impl->SetTask(std::move(name)); }

void QZStatusFileTracer::Push(std::string name) { impl->Push(std::move(name)); }

void QZStatusFileTracer::Pop() { impl->Pop(); }

void QZStatusFileTracer::Refresh() { impl->Refresh(); }

void QZStatusFileTracer::SetProgress(unsigned int done, unsigned int total) { impl->SetProgress(done, total); }

void QZStatusFileTracer::SetProgress(double percent) { impl->SetProgress(percent); }

bool QZStatusFileTracer::Aborted() { return impl->Aborted(); }

}  // namespace QZSystem
