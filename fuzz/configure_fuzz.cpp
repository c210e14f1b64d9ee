// The configuration language: what is read is written, read again and written the same. All that a program makes of an
// interface is written too.
#include <set>

#include "fuzz/fuzzing.h"

using namespace QZSystem;

namespace {

std::string written(const QZInterface& itf) {
  qzosstream out;
  QZWriteInterfaceConfigurationFile(itf, out);
  return out.str();
}

void configure(QZInterface& itf, const std::string& text) {
  BytesStream in(text);
  QZConfigure(itf, in);
}

// The lines that aren't empty, without what they begin with: details of categories gain blanks and an empty line each
// time.
std::string withoutIndents(const std::string& text) {
  std::vector<std::string> lines;
  QZStringTokenize(lines, text, "\n", false);
  std::string all;
  for (const std::string& line : lines) {
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin != std::string::npos) all += line.substr(begin) + '\n';
  }
  return all;
}

// A category of a name that is known anywhere below is continued there, which depends on what was read before; a name
// that holds quotes comes back with those around it.
bool haveNamesThatComeBack(const QZInterface& itf) {
  std::set<std::string> names;
  for (const QZInterface& category : QZIter(itf.GetInterfaces(true))) {
    const std::string name = category.GetName();
    if (name.find('"') != std::string::npos || !names.insert(name).second) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  QZInterface itf;
  configure(itf, TextOf(data, size));
  QZInterface fromBlock;
  QZConfigure(fromBlock, reinterpret_cast<const unsigned char*>(TextOf(data, size).c_str()));
  // A text ends at a zero, a stream doesn't.
  const std::string first = written(itf);
  if (TextOf(data, size).find('\0') == std::string::npos) Require(written(fromBlock) == first);

  // What doesn't come back, such as a default with a blank, is gone after the first reading.
  QZInterface second, third;
  configure(second, first);
  const std::string again = written(second);
  configure(third, again);
  if (haveNamesThatComeBack(second)) Require(withoutIndents(written(third)) == withoutIndents(again));
  Require(written(QZInterface(second)) == again);

  qzosstream out;
  QZWriteJSON(itf, out);
  QZWriteHtml(itf, out, "program", "1");
  QZWriteSettings(itf, out);
  WriteBriefHelpDescription(itf, "program", out, 2, 60);
  QZTextWriter writer(out);
  WriteDefaultsImpl(itf, writer);
  for (const QZParameter& parameter : QZIter(itf.GetParameters(true))) {
    QZWriteParameterLatex(parameter, out);
    WriteParameterDetailImpl(&parameter, writer);
  }
  return 0;
}
