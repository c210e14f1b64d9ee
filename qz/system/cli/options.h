#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qz/system/cli/parameter.h"
#include "qz/system/frame/iterator.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// Settings as an object: a class derives from it, adds its parameters in the constructor, and is passed on, copied,
/// put inside another one, and kept when the command line is gone. See interface_opts.h for how it meets the command
/// line.
///
///     class FileOptions : public QZOptions {
///      public:
///       FileOptions() : QZOptions("Files") { AddParameter(QZStringParameter("-in"))->SetRequired(true); }
///       FileOptions* CreateCopy() const override { return new FileOptions(*this); }
///       std::string In() const { return GetParameter("-in")->GetStringValue(0); }
///     };
///
/// A group owns its parameters and its sub-groups, and lists both by order priority and then by name. Lookups of
/// parameters see aliases and ignore case; lookups of groups compare exactly. Null slots are passed over everywhere.
/// Every pointer handed out stays the group's, and lives until it is deleted, cleared or assigned over, or the group
/// ends. The iterators are the caller's to delete (QZIter does); each holds a list of its own, so that it stays good
/// while entries are added. Const operations may run in parallel; a change needs exclusive access.
class QZOptions {
 public:
  /// Without parameters and sub-groups, brief and detail; order priority 0.
  explicit QZOptions(const std::string& groupName);
  /// The same with so many null slots, which a derived class fills by SetParameter and SetOption.
  QZOptions(const std::string& groupName, unsigned long nParams, unsigned long nOptions);

  /// A deep copy: each parameter and each sub-group through its CreateCopy, in the same slots.
  QZOptions(const QZOptions& other);
  /// The same in place of what this group held. The source is copied first, so it may be a part of this group;
  /// assigning a group to itself does nothing.
  QZOptions& operator=(const QZOptions& other);

  /// Ends all parameters and sub-groups.
  virtual ~QZOptions();

  /// Whether the values go together. Here true. An override may refuse a combination; nothing in the toolkit calls
  /// it: the program does, once the values are there.
  virtual bool Validate() const;

  /// A new object of the derived class with all that this one holds. The caller deletes it.
  [[nodiscard]] virtual QZOptions* CreateCopy() const = 0;

  std::string GetName() const { return name; }
  void SetName(const std::string& newName) { name = newName; }
  std::string GetBrief() const { return brief; }
  void SetBrief(const std::string& text) { brief = text; }
  int GetOrderPriority() const { return orderPriority; }
  void SetOrderPriority(int priority) { orderPriority = priority; }
  /// Appends a line of long help.
  void AddDetail(const std::string& line) { detail.push_back(line); }
  /// The lines of long help in order of addition; valid while no line is added.
  [[nodiscard]] QZIterBase<const std::string>* GetDetail() const;

  /// Keeps a copy, made by CreateCopy, and returns it.
  QZParameter* AddParameter(const QZParameter& parameter);
  QZOptions* AddOption(const QZOptions& group);

  /// Ends this very parameter, whether it is the group's own or that of a sub-group directly below. False, and nothing
  /// ends, if neither has it, also where it stands deeper.
  bool DeleteParameter(QZParameter& parameter);
  /// Ends this very group, which stands directly below. False, and nothing ends, if it doesn't.
  bool DeleteOptions(QZOptions& group);

  /// Ends the group's own parameters and those of the sub-groups directly below. The sub-groups stay, and what is
  /// below them, and all texts.
  void Clear();

  /// All parameters, of the group alone or recursively of those below too, sorted together.
  [[nodiscard]] QZIterBase<QZParameter>* GetParameters(bool recursive);
  [[nodiscard]] QZIterBase<const QZParameter>* GetParameters(bool recursive) const;
  /// Those that answer to the key, sorted; all for an empty key.
  [[nodiscard]] QZIterBase<QZParameter>* GetParameters(const std::string& key, bool recursive);
  [[nodiscard]] QZIterBase<const QZParameter>* GetParameters(const std::string& key, bool recursive) const;
  /// Appends them unsorted: the group's own in order of addition, then those of each sub-group in the same way.
  void GetParameters(std::vector<QZParameter*>& out, const std::string& key, bool recursive) const;
  /// A key alone would count as `true`.
  void GetParameters(const char* key) = delete;

  /// The first that answers to the key in the unsorted recursive list, so that one of the group itself comes before
  /// one below; null if none does.
  QZParameter* GetParameter(const std::string& key);
  const QZParameter* GetParameter(const std::string& key) const;
  bool HasParameter(const std::string& key) const;

  /// The sub-groups, those directly below or recursively all, sorted together.
  [[nodiscard]] QZIterBase<QZOptions>* GetOptions(bool recursive);
  [[nodiscard]] QZIterBase<const QZOptions>* GetOptions(bool recursive) const;
  /// Appends them unsorted: each in order of addition, followed at once by those below it.
  void GetOptions(std::vector<QZOptions*>& out, bool recursive) const;
  /// A name alone would count as `true`.
  void GetOptions(const char* groupName) = delete;

  /// The first of exactly this name in the unsorted recursive list; null if there is none. The group itself is not
  /// looked at.
  QZOptions* GetOption(const std::string& groupName);
  const QZOptions* GetOption(const std::string& groupName) const;
  bool HasOption(const std::string& groupName) const;

  /// Appends the parameters that share a key with another, or hold one twice: for each such key, in the order in which
  /// the second use of it was met, all that answer to it, so that a parameter may stand there several times. Hidden
  /// parameters are removed from `out`, whoever put them there; with `ignoreHidden` they don't make a key shared
  /// either.
  void GetDuplicateParams(std::vector<QZParameter*>& out, bool ignoreHidden) const;
  /// Whether that finds any.
  bool HasDupParameters(bool ignoreHidden) const;
  /// The same list, sorted.
  [[nodiscard]] QZIterBase<QZParameter>* FindDupParameters(bool ignoreHidden);
  [[nodiscard]] QZIterBase<const QZParameter>* FindDupParameters(bool ignoreHidden) const;

  /// Sets the visibility (0 simple, 1 normal, 2 hidden) of all parameters, those below included, or of those that
  /// answer to the key.
  void SetParameterVisibility(unsigned int visibility);
  void SetParameterVisibility(const std::string& key, unsigned int visibility);

  /// Takes over the values of parameters of the same names: their texts replace what was there and are loaded. Where
  /// the other has no value the present one stays; defaults are not touched. False at the first text that is refused
  /// or doesn't load; what was taken before stays.
  bool UpdateValues(const QZOptions& other);

  /// Change the names of all parameters, those below included, so that one class of options can stand twice in a
  /// program; aliases stay. A suffix goes behind the name; a prefix goes behind the dash, followed by an underscore or
  /// by the name's first letter in upper case: -width becomes -out_width or -outWidth. A name that isn't one word
  /// then stays as it was. Always true.
  bool AddParameterSuffix(const std::string& suffix);
  bool AddParameterPrefix(const std::string& prefix, bool underscore);

  /// Whether the name or an alias of the parameter is the key without regard to case.
  bool ParamHasName(const QZParameter& parameter, const std::string& key) const;

 protected:
  /// Puts a copy into a slot, in place of what was there, and returns it. REQUIRES: there is such a slot.
  QZParameter* SetParameter(unsigned long slot, const QZParameter& parameter);
  QZOptions* SetOption(unsigned long slot, const QZOptions& group);

 private:
  std::vector<QZParameter*> Listed(const std::string& key, bool recursive) const;
  std::vector<QZOptions*> ListedOptions(bool recursive) const;
  std::vector<QZParameter*> Duplicates(bool ignoreHidden) const;
  QZParameter* First(const std::string& key) const;
  QZOptions* FirstOption(const std::string& groupName) const;

  std::vector<std::unique_ptr<QZParameter>> parameters;
  std::vector<std::unique_ptr<QZOptions>> options;
  std::string name;
  std::string brief;
  std::vector<std::string> detail;
  int orderPriority = 0;
};

}  // namespace QZSystem
