#include "qz/system/cli/configure.h"
#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

using Texts = QZIter<const std::string>;
using Ranges = QZIter<const QZParameter::Range>;

const char* BoolWord(bool on) { return on ? "true" : "false"; }

void WriteTexts(qzostream& out, const char* keyword, Texts texts) {
  for (const std::string& text : texts) out << keyword << text << '\n';
}

void WriteRanges(qzostream& out, const char* keyword, Ranges ranges) {
  for (const auto& [from, to] : ranges) out << keyword << from << " " << to << '\n';
}

void WriteText(qzostream& out, const char* keyword, const std::string& text) {
  if (!text.empty()) out << keyword << text << '\n';
}

void WriteNumber(qzostream& out, const char* keyword, unsigned int number) {
  if (number != 0) out << keyword << number << '\n';
}

void WriteDetail(qzostream& out, const char* keyword, Texts detail) {
  if (detail) out << keyword << '\n';
  WriteTexts(out, "    ", std::move(detail));
}

void WriteDefaults(qzostream& out, const QZParameter& parameter) {
  for (unsigned int i = 0; parameter.GetHasDefault(i); ++i) {
    const std::string text = parameter.GetStringDefault(i);
    if (!text.empty()) out << "  !DEFAULT " << QuotedString(text) << '\n';
  }
}

/// Hidden ones, and those that have no form in the language, are not written.
bool IsWritten(const QZParameter& parameter) {
  const std::string kind = parameter.ClassID();
  return parameter.GetVisibility() != 2 && kind != "Pointer" && kind != "NonCL";
}

void WriteParameter(qzostream& out, const QZParameter& parameter) {
  out << "!PARAMETER " << parameter.GetName() << " " << parameter.GetOrderPriority() << '\n';
  out << "  !TYPE " << parameter.ClassID() << '\n';
  out << "  !LIST " << BoolWord(parameter.GetIsList()) << '\n';
  WriteTexts(out, "  !ALIAS ", Texts(parameter.GetAliases()));
  WriteDefaults(out, parameter);
  out << "  !REQUIRED " << BoolWord(parameter.GetRequired()) << '\n';
  WriteNumber(out, "  !INPUT ", parameter.GetInput());
  out << "  !OUTPUT " << BoolWord(parameter.GetOutput()) << '\n';
  if (parameter.GetVisibility() < 2) out << "  !SIMPLE " << BoolWord(parameter.GetVisibility() == 0) << '\n';
  WriteNumber(out, "  !KEYLESS ", parameter.GetKeyless());
  WriteTexts(out, "  !LEGAL_VALUE ", Texts(parameter.GetLegalValues()));
  WriteTexts(out, "  !ILLEGAL_VALUE ", Texts(parameter.GetIllegalValues()));
  WriteRanges(out, "  !LEGAL_RANGE ", Ranges(parameter.GetLegalRanges()));
  WriteRanges(out, "  !ILLEGAL_RANGE ", Ranges(parameter.GetIllegalRanges()));
  WriteText(out, "  !ELEMENT ", parameter.GetElement());
  WriteText(out, "  !COMMAND ", parameter.GetCommand());
  WriteText(out, "  !BRIEF ", parameter.GetBrief());
  WriteDetail(out, "  !DETAIL", Texts(parameter.GetDetail()));
  out << "!END" << '\n';
}

}  // namespace

bool QZWriteInterfaceConfigurationFile(const QZInterface& itf, qzostream& out) {
  for (const QZParameter& parameter : QZIter<const QZParameter>(itf.GetParameters(false)))
    if (IsWritten(parameter)) WriteParameter(out, parameter);
  for (const QZInterface& category : QZIter<const QZInterface>(itf.GetInterfaces(false))) {
    out << '\n';
    out << "!CATEGORY \"" << category.GetName() << "\"  " << category.GetOrderPriority() << '\n';
    WriteText(out, "  !BRIEF ", category.GetBrief());
    WriteDetail(out, "!DETAIL", Texts(category.GetDetail()));
    QZWriteInterfaceConfigurationFile(category, out);
    out << "!END" << '\n';
    out << '\n';
  }
  return true;
}

std::string QuotedString(const std::string& text) {
  return text.find_first_of(" \t") == std::string::npos ? text : '"' + text + '"';
}

}  // namespace QZSystem
