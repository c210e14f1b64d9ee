#include <vector>

#include "qz/system/cli/exports.h"
#include "qz/system/cli/reference_impl.h"
#include "qz/system/frame/error.h"
#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

constexpr const char* interfaceTwice = "Problem with interface auto-links in html file";
constexpr const char* parameterTwice = "Problem with parameter auto-links in html file";
constexpr const char* topLink = "<br><a href=#top_of_file>Top</a>";

constexpr unsigned int simpleVisibility = 0;
constexpr unsigned int hiddenVisibility = 2;

// Where the page goes, with the names that have anchors in it.
struct Page {
  qzostream& out;
  HtmlLinks links;
};

HtmlLinks collectLinks(const QZInterface& itf) {
  HtmlLinks links;
  for (const QZInterface& category : QZIter(itf.GetInterfaces(true))) {
    if (!links.Add(category.GetName())) QZThrow.Warning(interfaceTwice);
  }
  for (const QZParameter& parameter : QZIter(itf.GetParameters(true))) {
    if (!links.Add(parameter.GetName())) QZThrow.Warning(parameterTwice);
  }
  return links;
}

void writeBriefParameter(const QZParameter& parameter, const Page& page) {
  const bool isSimple = parameter.GetVisibility() == simpleVisibility;
  if (isSimple) page.out << "<b>";
  page.links.WriteLink(parameter.GetName(), page.out);
  if (isSimple) page.out << "</b>";
  page.out << ' ';
  if (parameter.GetHasDefault(0)) {
    page.out << '(' << parameter.GetStringDefault(0);
    for (unsigned int i = 1; parameter.GetHasDefault(i); ++i) page.out << ' ' << parameter.GetStringDefault(i);
    page.out << ") ";
  }
  page.out << ": ";
  if (parameter.GetBrief().empty()) {
    page.out << "No brief description available\n";
  } else {
    page.links.WriteLine(parameter.GetBrief(), page.out);
  }
  page.out << "<br>\n";
}

void WriteHtmlBrief(const QZInterface& itf, const Page& page) {
  page.out << "<blockquote>";
  for (const QZParameter& parameter : QZIter(itf.GetParameters(false))) {
    if (parameter.GetVisibility() != hiddenVisibility) writeBriefParameter(parameter, page);
  }
  page.out << "<br>";
  for (const QZInterface& category : QZIter(itf.GetInterfaces(false))) {
    page.out << "<u>";
    page.links.WriteLink(category.GetName(), page.out);
    page.out << "</u>";
    if (!category.GetBrief().empty()) page.out << " : ";
    page.links.WriteLine(category.GetBrief(), page.out);
    page.out << '\n';
    WriteHtmlBrief(category, page);
  }
  page.out << "</blockquote>";
}

void writeNames(const char* heading, const std::vector<std::string>& names, const Page& page) {
  if (names.empty()) return;
  page.out << heading;
  for (const std::string& name : names) {
    page.links.WriteWord(name, page.out);
    page.out << "   ";
  }
  page.out << "<br>";
}

std::vector<std::string> visibleParameters(const QZInterface& itf) {
  std::vector<std::string> names;
  for (const QZParameter& parameter : QZIter(itf.GetParameters(false))) {
    if (parameter.GetVisibility() != hiddenVisibility) names.push_back(parameter.GetName());
  }
  return names;
}

std::vector<std::string> categories(const QZInterface& itf) {
  std::vector<std::string> names;
  for (const QZInterface& category : QZIter(itf.GetInterfaces(false))) names.push_back(category.GetName());
  return names;
}

void beginSection(const char* kind, const std::string& name, const Page& page) {
  page.out << "<hr>"
           << "<font size=\"4\"><u>" << kind;
  page.links.WriteAnchor(name, page.out);
  page.out << "</font></u><br>"
           << "<blockquote>";
}

void writeBriefLine(const std::string& brief, const Page& page) {
  if (brief.empty()) return;
  page.out << "Brief : ";
  page.links.WriteLine(brief, page.out);
}

void writeCategory(const QZInterface& category, const QZInterface& parent, const Page& page) {
  beginSection("Category : ", category.GetName(), page);
  writeNames("Parameters : ", visibleParameters(category), page);
  writeNames("Child Categories : ", categories(category), page);
  page.out << "Parent Category : ";
  if (parent.GetName().empty()) {
    page.out << "<a href=#top_of_file>Top level</a>";
  } else {
    page.links.WriteWord(parent.GetName(), page.out);
  }
  page.out << "<br>";
  writeBriefLine(category.GetBrief(), page);
  if (QZIter<const std::string> lines(category.GetDetail()); lines) {
    page.out << "<u> Detailed description</u><br>"
             << "<blockquote>";
    for (const std::string& line : lines) page.links.WriteLine(line, page.out);
    page.out << "</blockquote>";
  }
  page.out << topLink << "</blockquote>";
}

void writeDefaults(const QZParameter& parameter, qzostream& out) {
  if (!parameter.GetHasDefault(0)) return;
  out << (parameter.GetHasDefault(1) ? "Default :" : "Default : ");
  for (unsigned int i = 0; parameter.GetHasDefault(i); ++i) {
    out << (parameter.GetHasDefault(1) ? " " : "") << parameter.GetStringDefault(i);
  }
  out << "<br>";
}

void writeVisibility(unsigned int visibility, qzostream& out) {
  static constexpr const char* words[] = {"Simple : yes<br>", "Simple : no<br>", "Parameter is hidden <br>"};
  if (visibility <= hiddenVisibility) out << words[visibility];
}

void writeValues(const char* heading, QZIter<const std::string> values, qzostream& out) {
  if (!values) return;
  out << heading;
  for (const std::string& value : values) out << ' ' << value;
  out << "<br>";
}

void writeRanges(const char* heading, QZIter<const QZParameter::Range> ranges, qzostream& out) {
  if (!ranges) return;
  out << heading << "<blockquote>";
  for (const QZParameter::Range& range : ranges) out << range.first << " to " << range.second << "<br>";
  out << "</blockquote>";
}

// A line as a paragraph, its line ends as breaks and its references as links.
std::string paragraph(const std::string& line) {
  std::string text = "<p>";
  for (char byte : line) {
    if (byte == '\n') {
      text += "<br>";
    } else {
      text += byte;
    }
  }
  return ReplaceReferences(text + "</p>", [](const std::string& shown, const std::string& target) {
    return "<a href=" + target + ">" + shown + "</a>";
  });
}

void writeDetail(const QZParameter& parameter, const Page& page) {
  QZIter<const std::string> lines(parameter.GetDetail());
  if (!lines) return;
  page.out << "<u> Detailed description</u><br>"
           << "<blockquote>";
  for (const std::string& line : lines) {
    // A line as short as this is there to part paragraphs.
    if (line.size() <= 2) continue;
    page.links.WriteLine(paragraph(line), page.out);
    page.out << '\n';
  }
  page.out << "</blockquote>";
}

void writeParameter(const QZParameter& parameter, const std::string& category, const Page& page) {
  beginSection("Parameter : ", parameter.GetName(), page);
  page.out << "Type : " << parameter.ClassID() << "<br>";
  page.out << "List allowed : " << (parameter.GetIsList() ? "true" : "false") << "<br>";
  if (!category.empty()) {
    page.out << "Category : ";
    page.links.WriteWord(category, page.out);
    page.out << "<br>";
  }
  writeDefaults(parameter, page.out);
  writeVisibility(parameter.GetVisibility(), page.out);
  page.out << (parameter.GetRequired() ? "Required : yes" : "Required : no") << "<br>";
  writeValues("Legal Values :", QZIter(parameter.GetLegalValues()), page.out);
  writeRanges("Legal Ranges : <br>", QZIter(parameter.GetLegalRanges()), page.out);
  writeValues("Illegal Values :", QZIter(parameter.GetIllegalValues()), page.out);
  writeRanges("Illegal Ranges : <br>", QZIter(parameter.GetIllegalRanges()), page.out);
  writeBriefLine(parameter.GetBrief(), page);
  writeDetail(parameter, page);
  page.out << topLink << "</blockquote>";
}

void WriteHtml(const QZInterface& itf, const Page& page) {
  if (const QZInterface* parent = itf.Parent()) writeCategory(itf, *parent, page);
  for (const QZParameter& parameter : QZIter(itf.GetParameters(false))) {
    writeParameter(parameter, itf.GetName(), page);
  }
  for (const QZInterface& category : QZIter(itf.GetInterfaces(false))) WriteHtml(category, page);
}

// "Help for Convert version 2.1"
void writeTitle(const std::string& program, const std::string& version, qzostream& out) {
  out << "Help for " << program;
  if (!version.empty()) out << " version " << version << '\n';
}

}  // namespace

void HtmlLinks::WriteAnchor(std::string word, qzostream& out) const {
  out << "<a name=\"" << word << "\">" << word << "</a>";
}

void HtmlLinks::WriteLink(std::string word, qzostream& out) const {
  out << "<a href=#" << word << ">" << word << "</a>";
}

void HtmlLinks::WriteWord(std::string word, qzostream& out) const {
  if (names.count(word) != 0) {
    WriteLink(std::move(word), out);
  } else {
    out << word;
  }
}

void HtmlLinks::WriteLine(std::string text, qzostream& out) const {
  std::vector<std::string> words;
  QZStringTokenize(words, text, " \t\n", true);
  for (std::string& word : words) {
    WriteWord(std::move(word), out);
    out << ' ';
  }
  out << "<br>";
}

bool QZWriteHtml(const QZInterface& itf, qzostream& out, std::string program, std::string version) {
  const Page page{out, collectLinks(itf)};
  if (!program.empty()) program.replace(0, 1, QZStringUpper(program.substr(0, 1)));
  out << "<html>\n<head>\n";
  if (!program.empty()) {
    out << "<title> ";
    writeTitle(program, version, out);
    out << "</title>\n";
  }
  out << "</head>\n<body>\n";
  out << "<a name=\"top_of_file\"></a>"
      << "<font size=\"6\">";
  if (!program.empty()) writeTitle(program, version, out);
  out << "</font>\n<hr>\n";
  out << "<font size=\"5\"><b><u>Parameter list</u></b></font>"
      << " - Simple parameters are listed in boldface.  Defaults are listed in parenthesis.<br>";
  WriteHtmlBrief(itf, page);
  out << "<a href=#top_of_file>Top</a> of page<br>";
  WriteHtml(itf, page);
  out << "</body>\n</html>\n";
  return true;
}

}  // namespace QZSystem
