#pragma once

#include <string>

#include "qz/platform/standardstream.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// A sink for structured text: lines, indentation, emphasis, lists and links, in a form that a derived class chooses.
///
///     QZTextWriter writer(out);
///     writer("Settings");
///     writer.NewLine();
///     writer.Indent();
///     writer("-in  data.txt");
///     writer.EndIndent();
///     writer.End();
///
/// All operations give true on success. An override that has no such form does nothing and gives true. One thread at a
/// time.
class QZWriter {
 public:
  /// Begins a document with a heading; ends it.
  virtual bool Start(const std::string& heading) = 0;
  virtual bool End() = 0;

  /// Deeper by one level, and back. EndIndent gives false at the outermost level.
  virtual bool Indent() = 0;
  virtual bool EndIndent() = 0;

  virtual bool Bold() = 0;
  virtual bool EndBold() = 0;
  virtual bool Underline() = 0;
  virtual bool EndUnderline() = 0;
  virtual bool List() = 0;
  virtual bool EndList() = 0;

  /// Ends the line.
  virtual bool NewLine() = 0;
  /// A rule across the page.
  virtual bool Line() = 0;

  /// A word that links lead to; a link to such a word.
  virtual bool WriteAnchor(const std::string& word) = 0;
  virtual bool WriteLink(const std::string& word) = 0;

  /// Text within the line.
  virtual bool operator()(const std::string& text) = 0;

  virtual ~QZWriter();
};

/// Plain text on a stream. Line ends are printed late, in front of the next text, each followed by four blanks for each
/// level in force by then; Indent itself prints two blanks where the stream stands. Nothing is wrapped. One thread at a
/// time.
class QZTextWriter : public QZWriter {
 public:
  /// The stream stays the caller's and must outlive the writer.
  explicit QZTextWriter(qzostream& out = qzout, std::string indentation = "  ");

  /// Prints the heading and a line end at once.
  bool Start(const std::string& heading) override;
  /// Prints the line ends that are due, without indentation.
  bool End() override;
  bool Indent() override;
  /// At the outermost level the Warning "Too Many EndIndents", and false.
  bool EndIndent() override;
  bool Bold() override;
  bool EndBold() override;
  bool Underline() override;
  bool EndUnderline() override;
  /// Lists are indented.
  bool List() override;
  bool EndList() override;
  bool NewLine() override;
  /// Dashes up to column 80.
  bool Line() override;
  /// Both the word alone.
  bool WriteAnchor(const std::string& word) override;
  bool WriteLink(const std::string& word) override;
  bool operator()(const std::string& text) override;

 private:
  qzostream* stream;
  std::string indentText;
  unsigned int depth = 0;
  unsigned int pending = 0;
};

}  // namespace QZSystem
