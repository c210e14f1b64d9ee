#include "qz/system/cli/writer.h"

#include <utility>

#include "qz/system/frame/error.h"

namespace QZSystem {

QZWriter::~QZWriter() = default;

QZTextWriter::QZTextWriter(qzostream& out, std::string indentation)
    : stream(&out), indentText(std::move(indentation)) {}

bool QZTextWriter::Start(const std::string& heading) {
  *stream << heading << '\n';
  return true;
}

bool QZTextWriter::End() {
  for (; pending > 0; --pending) *stream << '\n';
  return true;
}

bool QZTextWriter::Indent() {
  *stream << indentText;
  ++depth;
  return true;
}

bool QZTextWriter::EndIndent() {
  if (depth == 0) {
    QZThrow.Warning("Too Many EndIndents");
    return false;
  }
  --depth;
  return true;
}

bool QZTextWriter::Bold() { return true; }
bool QZTextWriter::EndBold() { return true; }
bool QZTextWriter::Underline() { return true; }
bool QZTextWriter::EndUnderline() { return true; }
bool QZTextWriter::List() { return Indent(); }
bool QZTextWriter::EndList() { return EndIndent(); }

bool QZTextWriter::NewLine() {
  ++pending;
  return true;
}

bool QZTextWriter::Line() {
  constexpr unsigned long pageWidth = 80;
  const unsigned long indented = depth * indentText.size();
  *stream << std::string(indented < pageWidth ? pageWidth - indented : 0, '-');
  return NewLine();
}

bool QZTextWriter::WriteAnchor(const std::string& word) { return (*this)(word); }
bool QZTextWriter::WriteLink(const std::string& word) { return (*this)(word); }

bool QZTextWriter::operator()(const std::string& text) {
  constexpr unsigned long blanksPerLevel = 4;
  for (; pending > 0; --pending) *stream << '\n' << std::string(blanksPerLevel * depth, ' ');
  *stream << text;
  return true;
}

}  // namespace QZSystem
