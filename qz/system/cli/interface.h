#pragma once

#include <memory>
#include <string>

#include "qz/system/cli/parameter.h"
#include "qz/system/cli/parameterfactory.h"
#include "qz/system/frame/iterator.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

class QZInterfaceImpl;

/// The settings of a program: a tree of categories that own parameters. The root and each category are the same
/// class. Most programs write their settings in the configuration language (see configure.h) and parse their command
/// line in one line:
///
///     int main(int argc, char** argv) {
///       QZInterface itf("!PARAMETER -in\n  !TYPE string\n  !REQUIRED true\n!END\n", argc, argv);
///       for (const QZParameter& p : QZIter(itf.GetParameters(true)))
///         qzout << p.GetName() << " " << p.GetStringValue(0) << qzendl;
///     }
///
/// Every parameter and category pointer handed out stays the interface's, and lives until it is deleted, cleared or
/// assigned over, or the interface ends. Const operations may run in parallel; a change needs exclusive access.
class QZInterface {
 public:
  /// Without name, texts, parameters or categories; order priority 0.
  QZInterface();

  /// A deep copy: parameters through CreateCopy, categories with the copy's own interfaces as their parents. The copy
  /// itself has no parent.
  QZInterface(const QZInterface& other);

  /// As Clear() followed by the copy. The source is copied first, so it may be a category of this interface;
  /// assigning an interface to itself does nothing.
  QZInterface& operator=(const QZInterface& other);

  /// Configures the new interface from a zero-terminated text of the configuration language. A text with an error at
  /// its outer level sends the Error "Problem configuring QZInterface!", and what was read before it stays.
  /// REQUIRES: text is not null.
  explicit QZInterface(const unsigned char* text);
  explicit QZInterface(const char* text);

  /// A program's one-line entry: configures from the text, answers requests for help, and fills the parameters from
  /// the command line. Ends the process with status 0 when help was given, and with status 1 when the command line is
  /// refused and its Error did not end the process already. A text that doesn't configure sends the Error
  /// "Problem configuring QZInterface!", and the arguments are not looked at.
  /// REQUIRES: text is not null, argv holds argc texts.
  QZInterface(const unsigned char* text, int argc, char** argv);
  QZInterface(const char* text, int argc, char** argv);

  /// Ends all parameters and categories.
  ~QZInterface();

  /// The category's name, any text; the name of the root heads the help. Always true.
  bool SetName(std::string name);
  /// The one-line description. Always true.
  bool SetBrief(std::string brief);
  /// Appends one line of long help. Always true.
  bool AddDetail(const std::string& line);
  /// The first sort key among sibling categories, smaller first. Always true.
  bool SetOrderPriority(int order);

  std::string GetName() const;
  std::string GetBrief() const;
  /// The lines of long help in order of addition. The caller deletes the iterator (QZIter does).
  [[nodiscard]] QZIterBase<const std::string>* GetDetail() const;
  int GetOrderPriority() const;

  /// Makes a parameter of the kind that the class word names ("int", "string" and so on; see Factory()) and keeps it.
  /// An unknown word gives null and the Warning "QZInterfaceImpl::AddParamter.  Unknown classid %s" after that of the
  /// factory.
  QZParameter* AddParameter(std::string classid);
  /// Keeps a copy, made by CreateCopy, and returns it.
  QZParameter* AddParameter(const QZParameter& parameter);

  /// Ends this very parameter, whether it stands in this interface or in a category below. False, and nothing ends,
  /// if none of them has it.
  bool DeleteParameter(QZParameter& parameter);

  /// The first parameter of GetParameters(true) that has this name or alias, compared exactly; null if none has.
  QZParameter* GetParameter(std::string name);
  const QZParameter* GetParameter(std::string name) const;

  /// Recursive: this interface's own parameters in order of addition, then for each category of GetInterfaces(true)
  /// its own in sorted order. Otherwise this interface's own parameters only, sorted by order priority and then by
  /// name. The caller deletes the iterator; it is valid while no parameter or category is added or deleted.
  [[nodiscard]] QZIterBase<QZParameter>* GetParameters(bool recursive = true);
  [[nodiscard]] QZIterBase<const QZParameter>* GetParameters(bool recursive = true) const;

  /// A new category below this interface.
  QZInterface* AddInterface();

  /// Ends this very category with all it holds, wherever it stands below this interface. False, and nothing ends, if
  /// it doesn't.
  bool DeleteInterface(QZInterface& category);

  /// The first category of GetInterfaces(true) of this name, compared exactly; null if there is none.
  QZInterface* GetInterface(std::string name);
  const QZInterface* GetInterface(std::string name) const;

  /// Recursive: the categories directly below in order of addition, then for each of them in sorted order its own
  /// GetInterfaces(true). Otherwise the categories directly below, sorted by order priority and then by name. The
  /// caller deletes the iterator; it is valid while no category is added or deleted.
  [[nodiscard]] QZIterBase<QZInterface>* GetInterfaces(bool recursive = true);
  [[nodiscard]] QZIterBase<const QZInterface>* GetInterfaces(bool recursive = true) const;

  /// The interface above; null at the root.
  QZInterface* Parent();
  const QZInterface* Parent() const;
  /// Stores the pointer alone: neither interface owns the other by it. Always true.
  bool SetParent(QZInterface* parent);

  /// Ends all parameters and categories, empties name, brief and detail, and sets order priority 0 and no parent.
  /// Always true.
  bool Clear();

  /// The makers of parameters by class word, one for the process, filled at first use. Safe from any thread.
  static QZSimpleFactory<std::string, QZParameter>& Factory();

 private:
  friend class QZInterfaceImpl;

  std::unique_ptr<QZInterfaceImpl> impl;
};

/// The first parameter of GetParameters(true) whose name or an alias is `name` without regard to case: the way in which
/// keys of the command line are looked up. Null if there is none.
QZParameter* ParameterWithFullname(QZInterface& itf, std::string name);
const QZParameter* ParameterWithFullname(const QZInterface& itf, std::string name);

/// Whether the interface or a category below it has a parameter of this visibility or a smaller one (0 simple, 1
/// normal, 2 hidden).
bool HasParametersWithVis(const QZInterface& itf, unsigned int visibility);

}  // namespace QZSystem
