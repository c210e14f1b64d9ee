#pragma once

#include <string>

#include "qz/platform/memorystream.h"
#include "qz/system/cli/plainparameter.h"

namespace QZSystem {

/// A setting that is the contents of a file: its text is the path, its value the bytes, read whole by Load().
///
///     QZFileParameter table("-table");
///     qzisstream contents;
///     if (table.SetStringValue("masses.txt") && table.Load() && table.GetValue(contents))
///       for (std::string line; contents.getline(line);) qzout << line << qzendl;
///
/// Every path is legal; a file that can't be opened, is empty or comes short fails to load. It has no limits: adding
/// one gives false. A typed write keeps a copy of the stream, and a stream that reads a block in place goes on doing
/// so. Const operations may run in parallel; a change needs exclusive access.
class QZFileParameter : public QZTypedParameter<qzisstream> {
 public:
  QZFileParameter() = default;
  explicit QZFileParameter(const std::string& newName) : QZTypedParameter(newName) {}

  /// "file"
  static std::string StaticClassID();
  bool AddLegalValue(const std::string& value) override;
  bool AddIllegalValue(const std::string& value) override;
  bool AddLegalRange(const std::string& from, const std::string& to) override;
  bool AddIllegalRange(const std::string& from, const std::string& to) override;
  std::string ClassID() const override;
  unsigned long WriteValueAndDefaultBinary(unsigned char* bytes) const override;
  unsigned long ReadValueAndDefaultBinary(const unsigned char* bytes) override;
  unsigned long ValueAndDefaultBinarySize() const override;
  /// The same read of bytes that come from outside, of which there are `size`: nothing behind them is looked at.
  /// Returns the bytes used, or 0 if they end before what their counts and lengths claim; what was read before stays.
  unsigned long ReadValueAndDefaultBinary(const unsigned char* bytes, unsigned long size);
  [[nodiscard]] QZFileParameter* CreateCopy() const override;
  /// Always true: whether the file can be read shows when it is loaded.
  bool IsValidString(const std::string& text) const override;
  [[nodiscard]] QZIterBase<const qzisstream>* GetValues() const override;
  [[nodiscard]] QZIterBase<const qzisstream>* GetDefaults() const override;
  bool IsLegal(const qzisstream& value) const override;
  /// Reads the file of this path whole. A pipe or another source without a size is read to its end. False, with the
  /// output unchanged, if it doesn't open, delivers nothing, or delivers less than its size.
  bool GetTypedValue(qzisstream& value, const std::string& path) const override;
  /// Always false: contents have no text, so a typed write leaves none.
  bool GetString(std::string& text, const qzisstream& value) const override;
  const void* FactoryTypeID() const override;
};

/// The setting that names a parameter file: QZParseCommandLine reads further settings from its contents. See
/// QZFileParameter.
class QZParamFileParameter : public QZFileParameter {
 public:
  QZParamFileParameter() = default;
  explicit QZParamFileParameter(const std::string& newName) : QZFileParameter(newName) {}

  /// "param_file"
  static std::string StaticClassID();
  std::string ClassID() const override;
  [[nodiscard]] QZParamFileParameter* CreateCopy() const override;
  const void* FactoryTypeID() const override;
};

/// A setting that is a text, one of the legal values, or else the contents of a file.
///
///     QZStringExtParameter matrix("-matrix");
///     matrix.AddLegalValue("unit");
///     matrix.SetStringValue("unit");        // the value is "unit"
///     matrix.SetStringValue("m/mine.txt");  // the value, once loaded, is the text of that file
///
/// Without legal values every text is taken as it stands. Const operations may run in parallel; a change needs
/// exclusive access.
class QZStringExtParameter : public QZStringParameter {
 public:
  QZStringExtParameter() = default;
  explicit QZStringExtParameter(const std::string& newName) : QZStringParameter(newName) {}
  QZStringExtParameter(const std::string& newName, const std::string& value);

  /// "stringEx"
  static std::string StaticClassID();
  std::string ClassID() const override;
  [[nodiscard]] QZStringExtParameter* CreateCopy() const override;
  /// What QZStringParameter takes, or the path of a file that isn't empty. If neither, false and the Warning
  /// "%s file %s does not exist or is empty." with the parameter's name and the text.
  bool IsLegal(const std::string& value) const override;
  /// The text itself if QZStringParameter takes it, else the contents of the file of that path. False if it doesn't
  /// open or delivers nothing.
  bool GetTypedValue(std::string& value, const std::string& text) const override;
  const void* FactoryTypeID() const override;
};

}  // namespace QZSystem
