#include "tools/common/files.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/common/progress.h"
#include "tools/common/rundisplay.h"
#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;

namespace {

constexpr const char* standardName = "-";
constexpr unsigned long noSize = ~0UL;

[[noreturn]] void failOutput(const std::string& name, int error) {
  if (error == EPIPE && name == "standard output") throw ToolEnd(0);
  throw ToolError("Cannot write " + name + ": " + std::strerror(error));
}

}  // namespace

Input::Input(const std::string& path, const std::string& progress, const std::string& task)
    : name(path == standardName ? "standard input" : path) {
  auto opened = std::make_unique<qzifstream>();
  file = opened.get();
  if (path == standardName) {
    file->attach(STDIN_FILENO, false);
  } else {
    file->open(path.c_str());
  }
  if (file->failed()) throw ToolError("Cannot open " + name + ": " + std::strerror(file->error()));
  hasSize = file->size() != noSize;
  ShowStatus(task);
  if (!hasSize || (progress == "none" && !HasStatus())) {
    stream = std::move(opened);
    return;
  }
  tracer = std::make_unique<RunTracer>(progress, task);
  stream = std::make_unique<qzprogressstream>(opened.release(), true, tracer.get(), false);
}

Input::Input(const std::string& shownName) : name(shownName) {
  auto made = std::make_unique<qzisstream>();
  memory = made.get();
  stream = std::move(made);
}

Input::~Input() = default;

void Input::Read(std::string_view text) { memory->set(text.data(), text.size(), false); }

bool Input::Append(std::string& text, std::size_t bytes) {
  std::size_t left = bytes;
  do {
    const std::string_view ready = stream->buffered().substr(0, left);
    if (ready.empty()) break;
    text.append(ready);
    stream->skip(static_cast<long>(ready.size()));
    left -= ready.size();
  } while (hasSize && left > 0);
  return left < bytes;
}

void Input::Finish() {
  // The end may have come because what writes to a pipe was stopped by the same Ctrl-C.
  CheckInterrupt();
  if (file && file->failed()) throw ToolError("Cannot read " + name + ": " + std::strerror(file->error()));
  if (tracer) tracer->Pop();
}

Output::Output(const std::string& path) : name(path), stream(&qzout) {
  if (path == standardName) {
    name = "standard output";
    return;
  }
  replacement = std::make_unique<QZFileReplacement>(path);
  stream = &replacement->Out();
  if (stream->failed() || replacement->Error() != 0) failOutput(name, replacement->Error());
}

void Output::Fail() const { failOutput(name, stream->error()); }

void Output::Finish() {
  if (!replacement) {
    if (!stream->flush()) Fail();
  } else if (!replacement->Commit()) {
    failOutput(name, replacement->Error());
  }
}

void CheckStandardOutput() {
  if (!qzout.flush()) failOutput("standard output", qzout.error());
}

}  // namespace QZTools
