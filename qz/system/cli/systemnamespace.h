#pragma once

#include <string>
#include <utility>
#include <vector>

#include "qz/system/cli/interface.h"
#include "qz/system/cli/parameter.h"
#include "qz/system/frame/iterator.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// A word, its number, and a line that explains it. Words are compared exactly. Const operations may run in parallel; a
/// change needs exclusive access.
struct QZNamespacePrim {
  QZNamespacePrim(const std::string& word, unsigned int number, const std::string& explanation = "")
      : name(word), value(number), detail(explanation) {}

  std::string name;
  unsigned int value;
  std::string detail;
};

/// A table of named constants: turns the word that a user typed into the number that a library wants, and back.
///
///     const QZNamespaceInterface colours("Colour", QZNamespaceInterface::Flags,
///                                        {{"Red", 1, "warm"}, {"Green", 2}, {"Blue", 4, "cold"}});
///     colours.GetValue("Red|Blue", 0);  // 5
///     colours.GetName(6, "");           // "Green|Blue"
///     QZAddLegalValues(parameter, &colours, true);
///
/// Of plain constants exactly one is meant at a time. Flags are bit masks, and an expression of them is words with "|"
/// between them, without blanks. An unknown word or number is told as a Warning. Const operations may run in parallel;
/// a change needs exclusive access.
class QZNamespaceInterface {
 public:
  /// The kinds of table; every number but 1 stands for flags.
  static constexpr int Constants = 1;
  static constexpr int Flags = 2;

  /// The entries keep their order. Where several have the same number, the first of them gives its name.
  QZNamespaceInterface(const std::string& tableName, int tableKind, std::vector<QZNamespacePrim> entries)
      : primitives(std::move(entries)), kind(tableKind), name(tableName) {}

  /// The entries in the table's order. The caller deletes the iterator; it is valid while the table stands.
  [[nodiscard]] QZIterBase<const QZNamespacePrim>* GetPrimitives() const;

  /// Whether the text is a word of the table or, with flags, an expression of its words; the empty text is one. If not,
  /// the Warning "%s is not a valid %s expression primitive!" tells the first word that is unknown, and the name of
  /// the table.
  bool IsValid(const std::string& text) const;

  /// The number of the word, or of the expression: its numbers by bitwise or, 0 for the empty text. `defaultValue` for
  /// any other text, after the same Warning.
  unsigned int GetValue(const std::string& text, unsigned int defaultValue) const;

  /// The word of the number. With flags, for a number that is none of the table's, an expression of all words whose
  /// bits it has, which reads back to these bits alone. `defaultName` where there is none, after the Warning "%i is
  /// not a valid %s constant!", for flags "%i is not a valid %s value!".
  std::string GetName(unsigned int value, const std::string& defaultName) const;

 private:
  friend void QZAddDetails(QZParameter* p, const QZNamespaceInterface* ns);
  friend bool QZAddLegalValues(QZParameter* p, const QZNamespaceInterface* ns, bool addDetails);

  const QZNamespacePrim* Find(const std::string& word) const;
  void TellUnknown(const std::string& word) const;
  /// The numbers of an expression by bitwise or; false, after the Warning, at the first unknown word.
  bool Combine(const std::string& text, unsigned int& value) const;
  /// All words whose bits the value has; false if there are none.
  bool Express(unsigned int value, std::string& expression) const;

  std::vector<QZNamespacePrim> primitives;
  int kind;
  std::string name;
};

/// Adds an explanation of the table's words to the detail of a parameter, as one entry with line ends inside. Of plain
/// constants those without a line of their own are left out. REQUIRES: neither is null.
void QZAddDetails(QZParameter* p, const QZNamespaceInterface* ns);

/// Makes the words of a table of plain constants legal for a parameter; those of flags aren't, as they may be combined.
/// With `addDetails` QZAddDetails follows. Always true. REQUIRES: neither is null.
bool QZAddLegalValues(QZParameter* p, const QZNamespaceInterface* ns, bool addDetails);

/// Makes a parameter of the kind that the class word names, with name, alias and brief, of simple visibility, and, if
/// `isList` isn't 0, one that takes several values. Null, after the Warnings of AddParameter, for an unknown word.
QZParameter* QZCreateParam(QZInterface& itf, const std::string& classid, const std::string& name,
                           const std::string& alias, const std::string& brief, unsigned int isList);

/// The same for one value, with a legal range whose ends are not looked at.
QZParameter* QZCreateParamWithRange(QZInterface& itf, const std::string& classid, const std::string& name,
                                    const std::string& alias, const std::string& brief, const std::string& low,
                                    const std::string& high);

/// The same for one text.
QZParameter* QZCreateStringParam(QZInterface& itf, const std::string& name, const std::string& alias,
                                 const std::string& brief);

}  // namespace QZSystem
