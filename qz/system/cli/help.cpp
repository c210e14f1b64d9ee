#include "qz/system/cli/help.h"

#include <cstdlib>
#include <string_view>
#include <vector>

#include "qz/platform/filestream.h"
#include "qz/platform/version.h"
#include "qz/system/cli/configure.h"
#include "qz/system/cli/exports.h"
#include "qz/system/cli/reference_impl.h"
#include "qz/system/cli/settings.h"
#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

constexpr unsigned int simpleVisibility = 0;
constexpr unsigned int normalVisibility = 1;
constexpr unsigned int hiddenVisibility = 2;

constexpr const char* noArgumentsText = "No arguments specified on the command line";
constexpr const char* requiredText = "Required parameters:";
constexpr const char* moreHelpText = "For more help type:";
constexpr const char* defaultsText = "#Default settings";
constexpr const char* additionalText = "Additional help functions:";
constexpr const char* additionalLines[] = {
    " --help simple      : Get a list of simple parameters (as seen above)",
    " --help all         : Get a complete list of parameters",
    " --help defaults    : List the defaults for all parameters",
    " --help <parameter> : Get detailed help on a parameter",
    " --help html        : Create an html help file for this program",
    " --help versions    : List the toolkits and versions used in the application",
};

bool hasRequired(const QZInterface& itf) {
  for (const QZParameter& parameter : QZIter(itf.GetParameters(true))) {
    if (parameter.GetRequired()) return true;
  }
  return false;
}

void writeNoArguments(const QZInterface& itf, const char* program, qzostream& out) {
  out << noArgumentsText << '\n';
  WriteTopLevelBriefDescription(itf, program, out);
  out << requiredText << '\n';
  for (const QZParameter& parameter : QZIter(itf.GetParameters(true))) {
    if (!parameter.GetRequired()) continue;
    out << "    " << parameter.GetName();
    if (!parameter.GetBrief().empty()) out << " : " << parameter.GetBrief();
    out << '\n';
  }
  out << moreHelpText << '\n' << "  " << program << " --help\n";
}

void writeAdditional(const char* program, qzostream& out) {
  out << additionalText << '\n';
  for (const char* line : additionalLines) out << "  " << program << line << '\n';
  out << '\n';
}

void writeHtmlFile(const QZInterface& itf, const char* program, qzostream& out) {
  const std::string name = std::string(program) + "_help.html";
  qzofstream file;
  file.open(name);
  if (file.eof()) {
    out << "Unable to create file '" << name << "'\n";
    return;
  }
  out << "Creating '" << name << "'\n";
  QZWriteHtml(itf, file, program, "");
}

// A key with or without its dash.
const QZParameter* findParameter(const QZInterface& itf, const std::string& word) {
  const QZParameter* parameter = ParameterWithFullname(itf, word);
  return parameter ? parameter : ParameterWithFullname(itf, "-" + word);
}

void writeDetail(const QZInterface& itf, const std::string& word, qzostream& out) {
  const QZParameter* parameter = findParameter(itf, word);
  if (!parameter) {
    out << "Unable to find help for '" << word << "'\n";
    return;
  }
  out << '\n';
  QZTextWriter writer(out);
  WriteParameterDetailImpl(parameter, writer);
  writer.End();
}

void writeDefaults(const QZInterface& itf, qzostream& out) {
  QZTextWriter writer(out);
  writer.Start(defaultsText);
  writer.Indent();
  WriteDefaultsImpl(itf, writer);
  writer.EndIndent();
  writer.End();
}

bool writeHelpOn(const std::string& word, const QZInterface& itf, const char* program, qzostream& out,
                 unsigned int columns) {
  if (word == "simple") return WriteBriefHelpDescription(itf, program, out, simpleVisibility, columns);
  if (word == "all") return WriteBriefHelpDescription(itf, program, out, normalVisibility, columns);
  if (word == "hidden" || word == "poweruser") {
    return WriteBriefHelpDescription(itf, program, out, hiddenVisibility, columns);
  }
  if (word == "defaults") {
    writeDefaults(itf, out);
  } else if (word == "versions") {
    QZGetVersions(out);
  } else if (word == "html") {
    writeHtmlFile(itf, program, out);
  } else {
    writeDetail(itf, word, out);
  }
  return true;
}

unsigned int number(const char* text) {
  unsigned int value = 0;
  QZStringToNumber(text, value, 10);
  return value;
}

unsigned int terminalColumns() {
  const char* const columns = std::getenv("COLUMNS");
  return columns ? number(columns) : 80;
}

bool answerOne(const QZInterface& itf, const std::string& word, const char* program, qzostream& out) {
  if (word == "--itf") {
    qzout << "#BeginInterface#" << '\n';
    QZWriteInterfaceConfigurationFile(itf, qzout);
    qzout << "#EndInterface#" << '\n';
    return true;
  }
  if (word == "--json") {
    QZWriteJSON(itf, qzout);
    return true;
  }
  if (word != "--help") return false;
  WriteBriefHelpDescription(itf, program, out, simpleVisibility, terminalColumns());
  writeAdditional(program, out);
  return true;
}

bool answer(const QZInterface& itf, int argc, char** argv, qzostream& out) {
  if (argc == 1) {
    if (!hasRequired(itf)) return false;
    writeNoArguments(itf, argv[0], out);
    return true;
  }
  const std::string word = argv[1];
  if (argc == 2) return answerOne(itf, word, argv[0], out);
  if (argc == 3 && word == "--latex") {
    const QZParameter* parameter = itf.GetParameter(argv[2]);
    if (!parameter) parameter = itf.GetParameter(std::string("-").append(argv[2]));
    if (parameter) QZWriteParameterLatex(*parameter, qzout);
    return true;
  }
  if ((argc == 3 || argc == 4) && word == "--help") {
    return writeHelpOn(argv[2], itf, argv[0], out, argc == 4 ? number(argv[3]) : terminalColumns());
  }
  return false;
}

// A brief behind its parameter's name, broken at `columns`. The counter leaves out the word that a line begins with.
void writeWrapped(const std::string& brief, unsigned long pad, unsigned int columns, qzostream& out) {
  std::vector<std::string> words;
  QZStringTokenize(words, brief, " \t\n", true);
  unsigned long column = pad;
  for (const std::string& word : words) {
    column += word.size() + 1;
    if (column > columns) {
      out << '\n' << std::string(pad, ' ');
      column = pad;
    }
    out << ' ' << word;
  }
}

std::string shownDefault(const QZParameter& parameter, unsigned int i) {
  return QuotedString(TrimmedNumber(parameter, parameter.GetPrettyDefault(i)));
}

void writeDefaultsOf(const QZParameter& parameter, QZWriter& writer) {
  if (!parameter.GetHasDefault(0)) {
    writer("Default : (parameter does not have a default)");
    writer.NewLine();
    return;
  }
  if (!parameter.GetHasDefault(1)) {
    writer("Default : " + shownDefault(parameter, 0));
    writer.NewLine();
    return;
  }
  writer("Default is a list :");
  writer.NewLine();
  writer.Indent();
  for (unsigned int i = 0; parameter.GetHasDefault(i); ++i) {
    writer(shownDefault(parameter, i));
    writer.NewLine();
  }
  writer.EndIndent();
}

void writeVisibility(const QZParameter& parameter, QZWriter& writer) {
  if (parameter.GetVisibility() == simpleVisibility) writer("Simple : true");
  if (parameter.GetVisibility() == normalVisibility) writer("Simple : false");
  if (parameter.GetVisibility() == hiddenVisibility) writer("Hidden flag");
  writer.NewLine();
}

void writeValues(const char* heading, QZIter<const std::string> values, QZWriter& writer) {
  if (!values) return;
  std::string line = heading;
  for (const std::string& value : values) line += " " + value;
  writer(line);
  writer.NewLine();
}

void writeRanges(const char* heading, QZIter<const QZParameter::Range> ranges, QZWriter& writer) {
  if (!ranges) return;
  writer(heading);
  writer.NewLine();
  writer.Indent();
  for (const QZParameter::Range& range : ranges) {
    writer(range.second + " to " + range.first);
    writer.NewLine();
  }
  writer.EndIndent();
}

void writeDetailLines(const QZParameter& parameter, QZWriter& writer) {
  QZIter<const std::string> lines(parameter.GetDetail());
  if (!lines) return;
  writer("Detail");
  writer.NewLine();
  writer.Indent();
  for (const std::string& line : lines) {
    writer(ReplaceReferences(line, [](const std::string& text, const std::string&) { return text; }));
    writer.NewLine();
  }
  writer.EndIndent();
}

bool hasVisible(const QZInterface& category) {
  for (const QZParameter& parameter : QZIter(category.GetParameters(true))) {
    if (parameter.GetVisibility() != hiddenVisibility) return true;
  }
  return false;
}

}  // namespace

bool QZCheckHelp(const QZInterface& itf, int argc, char** argv, bool noArguments, qzostream& out) {
  if (argc <= 0 || (argc == 1 && !noArguments)) return false;
  const bool given = answer(itf, argc, argv, out);
  if (given) {
    out.flush();
    qzout.flush();
  }
  return given;
}

void WriteTopLevelBriefDescription(const QZInterface& itf, const char* program, qzostream& out) {
  if (itf.GetBrief().empty()) return;
  out << (itf.GetName().empty() ? std::string(program) : itf.GetName()) << " : " << itf.GetBrief() << '\n';
}

bool WriteBriefHelpDescription(const QZInterface& itf, const char* program, qzostream& out, unsigned int visibility,
                               unsigned int columns) {
  WriteTopLevelBriefDescription(itf, program, out);
  const std::string_view kind = visibility == normalVisibility   ? "Complete"
                                : visibility == hiddenVisibility ? "Power user"
                                                                 : "Simple";
  out << kind << " parameter list\n";
  return WriteBrief(itf, out, "    ", visibility, columns);
}

bool WriteBrief(const QZInterface& itf, qzostream& out, std::string indent, unsigned int visibility,
                unsigned int columns) {
  bool any = false;
  for (const QZParameter& parameter : QZIter(itf.GetParameters(false))) {
    if (parameter.GetVisibility() > visibility) continue;
    any = true;
    const std::string name = parameter.GetName();
    out << indent << name;
    if (!parameter.GetBrief().empty()) {
      out << " :";
      writeWrapped(parameter.GetBrief(), name.size() + indent.size() + 2, columns, out);
    }
    out << '\n';
  }
  if (any) out << '\n';

  any = false;
  for (const QZInterface& category : QZIter(itf.GetInterfaces(false))) {
    if (!HasParametersWithVis(category, visibility)) continue;
    any = true;
    out << indent << category.GetName();
    if (!category.GetBrief().empty()) out << " : " << category.GetBrief();
    out << '\n';
    WriteBrief(category, out, indent + "  ", visibility, columns);
  }
  if (any) out << '\n';
  return true;
}

bool WriteParameterDetailImpl(const QZParameter* parameter, QZWriter& writer) {
  if (!parameter) return false;
  const auto line = [&writer](const std::string& text) {
    writer(text);
    writer.NewLine();
  };
  const auto word = [](bool yes) { return yes ? "true" : "false"; };
  line("Contents of parameter " + parameter->GetName());
  writer.Indent();
  if (QZIter<const std::string> aliases(parameter->GetAliases()); aliases) {
    std::string text = "Aliases : ";
    for (const std::string& alias : aliases) text += alias + "  ";
    line(text);
  }
  line("Type : " + parameter->ClassID());
  line(std::string("Allow list : ") + word(parameter->GetIsList()));
  writeDefaultsOf(*parameter, writer);
  if (parameter->GetKeyless() != 0) line("Keyless : " + QZNumberToString(parameter->GetKeyless(), 10));
  writeVisibility(*parameter, writer);
  line(std::string("Required : ") + word(parameter->GetRequired()));
  writeValues("Legal values :", QZIter(parameter->GetPrettyLegalValues()), writer);
  writeRanges("Legal ranges :", QZIter(parameter->GetLegalRanges()), writer);
  writeValues("Illegal values :", QZIter(parameter->GetIllegalValues()), writer);
  writeRanges("Illegal ranges :", QZIter(parameter->GetIllegalRanges()), writer);
  line("Brief : " + (parameter->GetBrief().empty() ? "(No brief description)" : parameter->GetBrief()));
  writeDetailLines(*parameter, writer);
  writer.EndIndent();
  return true;
}

bool WriteDefaultsImpl(const QZInterface& itf, QZWriter& writer) {
  for (const QZParameter& parameter : QZIter(itf.GetParameters(false))) {
    if (parameter.GetVisibility() == hiddenVisibility) continue;
    std::string text = parameter.GetName();
    for (unsigned int i = 0; parameter.GetHasDefault(i); ++i) {
      text += " " + QuotedString(parameter.GetPrettyDefault(i));
    }
    writer(parameter.GetHasDefault(0) ? text : "#" + text + " : (no default setting)");
    writer.NewLine();
  }
  for (const QZInterface& category : QZIter(itf.GetInterfaces(false))) {
    if (!hasVisible(category)) continue;
    writer.NewLine();
    writer("#" + category.GetName() + " " + category.GetBrief());
    writer.NewLine();
    writer.Indent();
    WriteDefaultsImpl(category, writer);
    writer.EndIndent();
  }
  return true;
}

}  // namespace QZSystem
