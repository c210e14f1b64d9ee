// The configuration language: what is read is written, read again and written the same.
#include "fuzz/fuzzing.h"

using namespace QZSystem;

namespace {

std::string written(const QZInterface& itf) {
  qzosstream out;
  QZWriteInterfaceConfigurationFile(itf, out);
  return out.str();
}

void configure(QZInterface& itf, const std::string& text) {
  qzisstream in;
  in.set(text.data(), text.size(), false);
  QZConfigure(itf, in);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Silence silence;
  QZInterface itf;
  configure(itf, TextOf(data, size));
  const std::string first = written(itf);
  // What doesn't come back, such as a default with a blank, is gone after the first reading; details of categories gain
  // blanks each time.
  QZInterface second;
  configure(second, first);
  QZInterface copy(second);
  Require(written(copy) == written(second));

  qzosstream out;
  QZWriteJSON(itf, out);
  QZWriteHtml(itf, out, "program", "1");
  QZWriteSettings(itf, out);
  WriteBriefHelpDescription(itf, "program", out, 2, 60);
  for (const QZParameter& parameter : QZIter(itf.GetParameters(true))) QZWriteParameterLatex(parameter, out);
  return 0;
}
