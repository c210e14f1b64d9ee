#pragma once

#include <memory>
#include <string>

#include "qz/system.h"

namespace QZTools {

class RunTracer;

/// An input that a tool was told by name, "-" for standard input, read behind a tracer where its size is known.
///
///     Input input("big.csv", "auto", "Converting");
///     while (input.Stream().getline(line)) ...
///     input.Finish();
///
/// One thread at a time.
class Input {
 public:
  /// Throws ToolError where the file can't be opened.
  Input(const std::string& path, const std::string& progress, const std::string& task);
  ~Input();
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  QZPlatform::qzistream& Stream() { return *stream; }

  /// The name for messages.
  const std::string& Name() const { return name; }

  /// Called when the stream has ended: the last report to the tracer. Throws ToolError where it was an error that ended
  /// the stream.
  void Finish();

 private:
  std::string name;
  std::unique_ptr<RunTracer> tracer;
  std::unique_ptr<QZPlatform::qzistream> stream;
  QZPlatform::qzifstream* file;
};

/// An output that a tool was told by name, "-" for standard output. A file appears under its name only with Finish.
/// One thread at a time.
class Output {
 public:
  /// Throws ToolError where the file can't be made.
  explicit Output(const std::string& path);

  QZPlatform::qzostream& Stream() { return *stream; }
  const std::string& Name() const { return name; }

  /// Throws ToolError where a write has failed, ToolEnd(0) where it failed because the reader of standard output went
  /// away.
  void Check() const {
    if (stream->failed()) Fail();
  }

  /// Completes the output. Throws as Check does.
  void Finish();

 private:
  [[noreturn]] void Fail() const;

  std::string name;
  std::unique_ptr<QZPlatform::QZFileReplacement> replacement;
  QZPlatform::qzostream* stream;
};

/// Ends the run as Output::Check does if standard output has failed.
void CheckStandardOutput();

}  // namespace QZTools
