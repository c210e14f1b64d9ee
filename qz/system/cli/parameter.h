#pragma once

#include <string>
#include <utility>
#include <vector>

#include "qz/system/frame/functor.h"
#include "qz/system/frame/iterator.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// One named setting of a program, such as `-in`: its help texts, aliases, limits and rank, and the values and
/// defaults that it holds, each as text and, in the kinds derived from it, converted.
///
///     QZIntParameter count("-count", 10);
///     count.AddLegalRange("1", "inf");
///     if (count.IsLegalString("20") && count.SetStringValue("20") && count.Load()) {
///       int n = 0;
///       count.GetSetting(n);  // 20
///     }
///
/// Text goes to the lists of text alone; Load() then converts it, and only what is converted counts as set. Typed
/// writes (see typedparameter.h) change both. Values and defaults stand apart; a setting is the value if there is one,
/// else the default. Operations that can fail give false and, where not told otherwise, change nothing. The iterators
/// are the caller's to delete (QZIter does) and are valid while the parameter stands and the list is not changed.
/// Const operations may run in parallel; a change needs exclusive access.
class QZParameter {
 public:
  using Range = std::pair<std::string, std::string>;

  /// No name, no texts, no limits, nothing set; visibility 1, everything else 0 or false.
  QZParameter() = default;
  /// The same, with the name as SetName takes it: it stays empty if the text isn't one word.
  explicit QZParameter(const std::string& newName) { SetName(newName); }
  QZParameter(const QZParameter& other) = default;
  virtual ~QZParameter();

  /// The legal values as a reader of help should see them. Here GetLegalValues.
  [[nodiscard]] virtual QZIterBase<const std::string>* GetPrettyLegalValues() const;
  /// A default as a reader of help should see it. Here GetStringDefault.
  virtual std::string GetPrettyDefault(unsigned int i = 0) const;

  /// Set replaces the whole list of texts by this one, Add appends. False, with nothing changed, if IsValidString
  /// refuses the text. Legality is not asked, and the converted lists stay as they are until a Load.
  virtual bool SetStringValue(const std::string& text);
  virtual bool SetStringDefault(const std::string& text);
  virtual bool AddStringValue(const std::string& text);
  virtual bool AddStringDefault(const std::string& text);

  /// Empties the values (the defaults), always true. An override that keeps converted values empties them too.
  virtual bool ClearValues();
  virtual bool ClearDefaults();

  /// Takes several values in one text, in place of the present ones. Here false.
  virtual bool SetStringValues(const std::string& texts);

  /// Appends to the limits. False, with nothing changed, if IsValidString refuses the value or an end of the illegal
  /// range; the ends of a legal range are not looked at. The words "inf" and "-inf" leave a range open, and its ends
  /// may come in either order, both inclusive. Kinds without such limits refuse them.
  virtual bool AddLegalValue(const std::string& value);
  virtual bool AddIllegalValue(const std::string& value);
  virtual bool AddLegalRange(const std::string& from, const std::string& to);
  virtual bool AddIllegalRange(const std::string& from, const std::string& to);

  /// Whether the text keeps within the limits. Here by pattern, without regard to case: false if it matches an illegal
  /// value (QZStringMatch), else true if there are no legal values or it matches one. Ranges play no part.
  virtual bool IsLegalString(const std::string& text) const;
  /// Whether the text is one of the values, or, if there is no value, one of the defaults. Here the texts of what is
  /// set are compared exactly.
  virtual bool IsSetToString(const std::string& text) const;

  /// Converts the texts: LoadValue, and if that succeeds LoadDefault. False if either fails.
  virtual bool Load();
  /// Replaces the converted values (defaults) by those of the texts. If one doesn't convert, false, and none is set;
  /// the texts stay.
  virtual bool LoadValue() = 0;
  virtual bool LoadDefault() = 0;

  /// Whether there is an i-th value or default, converted. Text that is not loaded doesn't count.
  virtual bool IsSet(unsigned int i = 0) const;
  virtual bool GetHasValue(unsigned int i = 0) const = 0;
  virtual bool GetHasDefault(unsigned int i = 0) const = 0;

  /// The identity of QZTypedParameter<T> (QZGetDataType), by which a caller learns the type of the values.
  virtual const void* TypedParameterTypeID() const = 0;
  /// The word that names the kind in the configuration language, such as "int".
  virtual std::string ClassID() const = 0;

  /// The binary form of the converted values and defaults; texts and descriptions are no part of it. The write returns
  /// the number of bytes written, which is the size; the read returns the number of bytes used, and leaves the texts
  /// as they were. REQUIRES: for the write, room for ValueAndDefaultBinarySize() bytes; for the read, bytes that are
  /// whole, as a write made them (for others see the bounded reads of the kinds).
  virtual unsigned long WriteValueAndDefaultBinary(unsigned char* bytes) const = 0;
  virtual unsigned long ReadValueAndDefaultBinary(const unsigned char* bytes) = 0;
  virtual unsigned long ValueAndDefaultBinarySize() const = 0;

  /// A new parameter of the same kind with everything this one holds. The caller deletes it.
  [[nodiscard]] virtual QZParameter* CreateCopy() const = 0;

  /// Whether the text can be converted at all, legal or not.
  virtual bool IsValidString(const std::string& text) const = 0;

  /// The key as a user types it, with its dash; one word. Blanks, tabs and line feeds around it are dropped; a text of
  /// no word or of several gives false. That names differ is not checked.
  bool SetName(const std::string& newName);
  /// A further key, by the same rule.
  bool AddAlias(const std::string& alias);

  /// The one-line description; the free texts of "!ELEMENT" and "!COMMAND", which are stored and written out. True.
  bool SetBrief(const std::string& text);
  bool SetElement(const std::string& text);
  bool SetCommand(const std::string& text);
  /// Appends a line of long help. True.
  bool AddDetail(const std::string& line);

  /// Rank and role; all true. Keyless n above 0: it may be given without its key, as the n-th such argument.
  /// Visibility: 0 simple, 1 normal, 2 hidden, not checked. Order priority: smaller ones are listed first. Input and
  /// output are only stored and written out. A list takes several values.
  bool SetRequired(bool on);
  bool SetKeyless(unsigned int place);
  bool SetVisibility(unsigned int level);
  bool SetOrderPriority(int priority);
  bool SetInput(unsigned int mark);
  bool SetOutput(bool on);
  bool SetIsList(bool on);

  std::string GetName() const { return name; }
  std::string GetBrief() const { return brief; }
  std::string GetElement() const { return element; }
  std::string GetCommand() const { return command; }
  bool GetRequired() const { return required; }
  unsigned int GetKeyless() const { return keyless; }
  unsigned int GetVisibility() const { return visibility; }
  int GetOrderPriority() const { return orderPriority; }
  unsigned int GetInput() const { return input; }
  bool GetOutput() const { return output; }
  bool GetIsList() const { return isList; }

  /// Whether the test holds for the name or, in their order, for an alias; what lookups by key ask of every parameter,
  /// without a copy.
  template <class Test>
  bool AnyKey(const Test& test) const {
    if (test(name)) return true;
    for (const std::string& alias : aliases)
      if (test(alias)) return true;
    return false;
  }

  /// The i-th text, loaded or not; "" if there is none.
  std::string GetStringValue(unsigned int i = 0) const;
  std::string GetStringDefault(unsigned int i = 0) const;

  /// The lists in the order of addition.
  [[nodiscard]] QZIterBase<const std::string>* GetStringValues() const;
  [[nodiscard]] QZIterBase<const std::string>* GetStringDefaults() const;
  [[nodiscard]] QZIterBase<const std::string>* GetAliases() const;
  [[nodiscard]] QZIterBase<const std::string>* GetDetail() const;
  [[nodiscard]] QZIterBase<const std::string>* GetLegalValues() const;
  [[nodiscard]] QZIterBase<const std::string>* GetIllegalValues() const;
  [[nodiscard]] QZIterBase<const Range>* GetLegalRanges() const;
  [[nodiscard]] QZIterBase<const Range>* GetIllegalRanges() const;

 protected:
  QZParameter& operator=(const QZParameter& other) = default;

  /// The lists for derived kinds, which read them for every value.
  const std::vector<std::string>& StringValues() const { return values; }
  const std::vector<std::string>& StringDefaults() const { return defaults; }
  const std::vector<std::string>& LegalValues() const { return legalValues; }
  const std::vector<std::string>& IllegalValues() const { return illegalValues; }
  const std::vector<Range>& LegalRanges() const { return legalRanges; }
  const std::vector<Range>& IllegalRanges() const { return illegalRanges; }

 private:
  std::string name;
  std::string brief;
  std::vector<std::string> values;
  std::vector<std::string> defaults;
  bool required = false;
  unsigned int keyless = 0;
  unsigned int visibility = 1;
  int orderPriority = 0;
  unsigned int input = 0;
  bool output = false;
  std::vector<std::string> aliases;
  std::vector<std::string> legalValues;
  std::vector<std::string> illegalValues;
  std::vector<Range> legalRanges;
  std::vector<Range> illegalRanges;
  std::vector<std::string> detail;
  std::string element;
  std::string command;
  bool isList = false;
};

/// The order of every listing, of parameters, categories and their kin: by order priority, smaller first, then by name
/// as bytes. Safe from any thread.
template <class T>
class SortItfStuff : public QZBinaryPredicate<T, T> {
 public:
  bool operator()(const T& a, const T& b) const override {
    if (a.GetOrderPriority() != b.GetOrderPriority()) return a.GetOrderPriority() < b.GetOrderPriority();
    return a.GetName() < b.GetName();
  }
  [[nodiscard]] SortItfStuff* CreateCopy() const override { return new SortItfStuff(*this); }
};

/// The order of parameters that may be given without their keys: by their places, and nothing else. Safe from any
/// thread.
class KeylessSort : public QZBinaryPredicate<QZParameter, QZParameter> {
 public:
  bool operator()(const QZParameter& a, const QZParameter& b) const override { return a.GetKeyless() < b.GetKeyless(); }
  [[nodiscard]] KeylessSort* CreateCopy() const override { return new KeylessSort(*this); }
};

}  // namespace QZSystem
