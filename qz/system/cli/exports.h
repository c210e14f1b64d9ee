#pragma once

#include <set>
#include <string>

#include "qz/system/cli/interface.h"

namespace QZSystem {

/// Documents made of an interface for other readers: JSON for programs, a help page for a browser, LaTeX for a manual.
///
///     QZWriteJSON(itf, out);
///     QZWriteHtml(itf, page, "Convert", "2.1");
///
/// Const operations may run in parallel; a change needs exclusive access.

/// Writes the interface as one JSON object: name, order, brief, detail, params and, where there are categories,
/// interfaces. In strings the double quote and the backslash are escaped and nothing else, so that a tab in a text
/// comes out raw. The layout is part of the format. Always true; a failed write shows in the stream.
bool QZWriteJSON(const QZInterface& itf, qzostream& out);

/// Writes the help page: an overview, then a section for each category and parameter, with links between them. A word
/// of a brief or detail that is the name of one becomes a link. `program` with its first letter in upper case, and
/// `version`, make the title; either may be empty. A name that occurs twice gives the Warning "Problem with interface
/// auto-links in html file" or "Problem with parameter auto-links in html file". Always true.
bool QZWriteHtml(const QZInterface& itf, qzostream& out, std::string program, std::string version = "");

/// Writes one parameter as an item for a description list of a LaTeX manual. Always true.
bool QZWriteParameterLatex(const QZParameter& parameter, qzostream& out);

/// The names that have anchors in a help page, and text with links to them. Const operations may run in parallel; a
/// change needs exclusive access.
class HtmlLinks {
 public:
  /// Adds a name; false if it is there already.
  bool Add(const std::string& word) { return names.insert(word).second; }

  /// The place that links to the word lead to.
  void WriteAnchor(std::string word, qzostream& out) const;
  /// A link to the word, whether or not it has an anchor.
  void WriteLink(std::string word, qzostream& out) const;
  /// A link if the word has an anchor, else the word.
  void WriteWord(std::string word, qzostream& out) const;
  /// The words of a text, each followed by a blank, and a break at the end.
  void WriteLine(std::string text, qzostream& out) const;

 private:
  std::set<std::string> names;
};

}  // namespace QZSystem
