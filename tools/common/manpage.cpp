#include "tools/common/manpage.h"

#include <algorithm>
#include <vector>

#include "qz/system/cli/reference_impl.h"

namespace QZTools {

using namespace QZSystem;

namespace {

constexpr const char* argumentsText =
    "An option is followed by its value, a list by several, and keys are compared without regard to case. A switch "
    "needs no value. Arguments without a key come behind the last option.";

constexpr const char* parameterFileText =
    "A value on the command line wins over one in a parameter file, and that over the default.";

struct Request {
  const char* arguments;
  const char* meaning;
};

constexpr Request requests[] = {
    {"--help", "Show the simple options."},
    {"--help all", "Show all options; behind it stands, if wanted, the number of columns."},
    {"--help KEY", "Show everything about one option."},
    {"--help defaults", "Show the defaults, as a parameter file."},
    {"--help html", "Write a help page for a browser."},
    {"--help versions", "Show the libraries and their versions."},
    {"--json", "Show the options as a JSON document, for other programs."},
    {"--version", "Show the version."},
};

// Text that shows as it is: signs that roff would set as others or take for its own are named.
std::string shown(const std::string& text) {
  std::string made;
  for (const char byte : text) {
    switch (byte) {
      case '\\':
        made += "\\e";
        break;
      case '-':
        made += "\\-";
        break;
      case '^':
        made += "\\(ha";
        break;
      case '~':
        made += "\\(ti";
        break;
      case '`':
        made += "\\(ga";
        break;
      case '\'':
        made += "\\(aq";
        break;
      case '"':
        made += "\\(dq";
        break;
      default:
        made += static_cast<unsigned char>(byte) < 0x20 ? ' ' : byte;
    }
  }
  return made;
}

std::string inFont(const char* font, const std::string& text) {
  std::string made = font;
  return made.append(shown(text)).append("\\fR");
}

std::string bold(const std::string& text) { return inFont("\\fB", text); }
std::string italic(const std::string& text) { return inFont("\\fI", text); }

// A line of text, which mustn't look like a request.
std::string line(const std::string& made) {
  std::string text = !made.empty() && made.front() == '.' ? "\\&" : "";
  return text.append(made).append("\n");
}

std::string sentence(const std::string& text) {
  if (text.empty() || std::string(".!?:").find(text.back()) != std::string::npos) return text;
  return text + ".";
}

bool isBlank(const std::string& text) { return text.find_first_not_of(" \t\r") == std::string::npos; }

void cutCommonIndent(std::vector<std::string>& lines) {
  std::size_t common = std::string::npos;
  for (const std::string& each : lines) common = std::min(common, each.find_first_not_of(" \r"));
  for (std::string& each : lines) each.erase(0, std::min(common, each.size()));
}

// The lines of a detail entry may stand in one text, with references to pages of their own.
std::vector<std::string> linesOf(const std::vector<std::string>& detail) {
  std::vector<std::string> lines;
  for (const std::string& entry : detail) {
    const std::string text = ReplaceReferences(entry, [](const std::string& word, const std::string&) { return word; });
    std::size_t begin = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
      lines.push_back(QZStringTabsToSpaces(text.substr(begin, end - begin)));
      begin = end + 1;
    }
    if (begin < text.size() || text.empty()) lines.push_back(QZStringTabsToSpaces(text.substr(begin)));
  }
  cutCommonIndent(lines);
  return lines;
}

// Prose is filled; lines that are indented stay as they are; an empty line ends a paragraph, begun anew by `paragraph`.
std::string detailText(const std::vector<std::string>& detail, const std::string& paragraph) {
  std::string text;
  bool asIs = false;
  bool ended = true;
  const auto fill = [&](bool on) {
    if (asIs == on) text += on ? ".fi\n" : ".nf\n";
    asIs = !on;
  };
  for (const std::string& each : linesOf(detail)) {
    if (isBlank(each)) {
      ended = true;
      continue;
    }
    fill(each.front() != ' ');
    if (ended) text += paragraph;
    ended = false;
    text += line(shown(each));
  }
  fill(true);
  return text;
}

const char* valueWord(const ParameterText& parameter) {
  if (parameter.TakesFile()) return "file";
  return parameter.type == "string" ? "text" : "number";
}

std::string keysLine(const ParameterText& parameter) {
  std::string text;
  for (const std::string& key : parameter.Keys()) text += (text.empty() ? "" : ", ") + bold(key);
  if (parameter.type != "bool" || parameter.isList) text.append(" ").append(italic(valueWord(parameter)));
  if (parameter.isList) text += " ...";
  return line(text);
}

std::string joined(const std::vector<std::string>& words, const std::string& between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + bold(word.empty() ? "''" : word);
  return text;
}

std::string rangeText(const ParameterText::Range& range) {
  const bool firstIsWord = range.first == "inf" || range.first == "-inf";
  const bool secondIsWord = range.second == "inf" || range.second == "-inf";
  if (!firstIsWord && !secondIsWord) return bold(range.first) + " to " + bold(range.second);
  const bool below = (firstIsWord ? range.first : range.second) == "-inf";
  const std::string& end = firstIsWord ? range.second : range.first;
  return below ? "up to " + bold(end) : "from " + bold(end) + " on";
}

std::string limits(const std::vector<std::string>& values, const std::vector<ParameterText::Range>& ranges) {
  std::string text = joined(values, ", ");
  for (const ParameterText::Range& range : ranges) text += (text.empty() ? "" : ", or ") + rangeText(range);
  return text;
}

// What may be given, and what holds where nothing is.
std::string factsLine(const ParameterText& parameter) {
  std::vector<std::string> facts;
  if (parameter.required) facts.emplace_back("Required.");
  const std::string legal = limits(parameter.legalValues, parameter.legalRanges);
  const std::string illegal = limits(parameter.illegalValues, parameter.illegalRanges);
  if (!legal.empty()) facts.push_back("Legal: " + legal + ".");
  if (!illegal.empty()) facts.push_back("Not legal: " + illegal + ".");
  const bool isOff = parameter.type == "bool" && parameter.defaults == std::vector<std::string>{"false"};
  if (!parameter.defaults.empty() && !isOff) facts.push_back("Default: " + joined(parameter.defaults, " ") + ".");
  std::string text;
  for (const std::string& fact : facts) text += line(fact);
  return text;
}

std::string optionText(const ParameterText& parameter) {
  const std::string facts = factsLine(parameter);
  std::string text = ".TP\n" + keysLine(parameter);
  if (!parameter.brief.empty()) text += line(shown(sentence(parameter.brief)));
  text += facts;
  const std::string detail = detailText(parameter.detail, ".IP\n");
  // An item needs a body.
  if (parameter.brief.empty() && facts.empty() && detail.empty()) text += "\\&\n";
  return text + detail;
}

bool shows(const CategoryText& category) {
  const std::vector<const ParameterText*> all = category.All();
  return std::any_of(all.begin(), all.end(), [](const auto* each) { return !each->hidden; });
}

std::string optionsText(const CategoryText& category, bool isRoot) {
  if (!shows(category)) return "";
  std::string text;
  if (!isRoot) {
    text.append(".SS \"").append(shown(category.name)).append("\"\n");
    if (!category.brief.empty()) text += line(shown(sentence(category.brief)));
    text += detailText(category.detail, ".PP\n");
  }
  for (const ParameterText& each : category.parameters) {
    if (!each.hidden) text += optionText(each);
  }
  for (const CategoryText& each : category.categories) text += optionsText(each, false);
  return text;
}

std::string synopsis(const CategoryText& program, const std::string& name) {
  std::string text = bold(name) + " [" + italic("options") + "]";
  for (const ParameterText* each : program.Keyless()) {
    std::string word = italic(each->name.empty() ? "" : each->name.substr(1));
    if (each->isList) word += " ...";
    text.append(each->required ? " " : " [").append(word).append(each->required ? "" : "]");
  }
  return line(text);
}

std::string requestsText(const CategoryText& program) {
  std::string text;
  for (const Request& each : requests) text += ".TP\n" + line(bold(each.arguments)) + line(shown(each.meaning));
  if (!program.TakesParameterFile()) return text;
  return text + ".TP\n" + line(bold("--unset-KEY")) + "Take back what a parameter file has set.\n";
}

}  // namespace

std::string ManPage::Text(const CategoryText& program) const {
  std::string text = ".\\\" Made by qzman.\n.TH \"" + shown(QZStringUpper(name)) + "\" \"1\" \"\" \"" + shown(source) +
                     "\" \"" + shown(manual) + "\"\n";
  text += ".SH NAME\n" + line(shown(name) + " \\- " + shown(program.brief.empty() ? "a program" : program.brief));
  text += ".SH SYNOPSIS\n" + synopsis(program, name);
  text += ".SH DESCRIPTION\n" + detailText(program.detail, ".PP\n") + ".PP\n" + line(shown(argumentsText));
  if (program.TakesParameterFile()) text += line(shown(parameterFileText));
  const std::string options = optionsText(program, true);
  if (!options.empty()) text += ".SH OPTIONS\n" + options;
  return text + ".SH HELP\nEach of these stands alone.\n" + requestsText(program);
}

}  // namespace QZTools
