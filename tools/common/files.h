#pragma once

#include <memory>
#include <string>
#include <string_view>

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
  /// An input of that name that reads memory; see Read.
  explicit Input(const std::string& shownName);
  ~Input();
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  QZPlatform::qzistream& Stream() { return *stream; }

  /// The name for messages.
  const std::string& Name() const { return name; }

  /// Goes to the beginning of a text, which must stand while it is read. REQUIRES: an input that reads memory.
  void Read(std::string_view text);

  /// Appends what comes next, at most so many bytes: all of them from a file, what is there from a pipe. False, with
  /// nothing appended, at the end.
  bool Append(std::string& text, std::size_t bytes);

  /// Whether it has an end that is known beforehand, as a file has and a pipe has not.
  bool HasSize() const { return hasSize; }

  /// Called when the stream has ended: the last report to the tracer. Throws ToolError where it was an error that ended
  /// the stream.
  void Finish();

 private:
  std::string name;
  std::unique_ptr<RunTracer> tracer;
  std::unique_ptr<QZPlatform::qzistream> stream;
  // Null where memory is read.
  QZPlatform::qzifstream* file = nullptr;
  QZPlatform::qzisstream* memory = nullptr;
  bool hasSize = false;
};

/// An output that a tool was told by name, "-" for standard output. A file appears under its name only with Finish.
/// One thread at a time.
class Output {
 public:
  /// Throws ToolError where the file can't be made.
  explicit Output(const std::string& path);
  /// Hands everything to `out`, which stays open.
  explicit Output(QZPlatform::qzostream& out) : stream(&out) {}

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
