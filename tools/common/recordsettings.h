#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "tools/common/recordfile.h"

namespace QZTools {

/// The options of every tool that reads records, in the configuration language: -in (the first argument without a key),
/// -informat, -types, -infer.
std::string InputConfiguration();

/// The options of every tool that writes records: -out (the second argument without a key, or with `keyless` false
/// none), -outformat, -strict.
std::string OutputConfiguration(bool required, bool keyless = true);

/// Throws ToolError, naming near options, where `path` looks like an option: a mistyped one stands where a file is
/// expected.
void RefuseOption(const QZSystem::QZInterface& settings, const std::string& path);

using MetaByName = std::map<std::string, QZDataFlow::QZFieldMeta>;

/// Opens what -in and its companions say. `meta` becomes the metadata of a table's columns.
std::unique_ptr<RecordSource> OpenInput(const QZSystem::QZInterface& settings, const MetaByName& meta,
                                        const std::string& task);

/// The names of -in and -out for messages: the path, or "standard input" and "standard output".
std::string InputName(const QZSystem::QZInterface& settings);
std::string OutputName(const QZSystem::QZInterface& settings);

/// Creates what -out and its companions say.
std::unique_ptr<RecordSink> CreateOutput(const QZSystem::QZInterface& settings,
                                         const std::vector<QZDataFlow::QZFieldBase>& columns, bool carriesMore);

/// Completes the output: says what the format dropped, which -strict makes an error, and gives the file its name.
void FinishOutput(const QZSystem::QZInterface& settings, RecordSink& sink);

/// Sets the metadata of fields in records that bring their own fields along.
///
///     FieldMetaSetter setter(meta);
///     setter.Apply(record);
///     setter.RequireMet(path);
///
/// One thread at a time.
class FieldMetaSetter {
 public:
  explicit FieldMetaSetter(const MetaByName& metaByName) : meta(metaByName) {}

  /// Adds the metadata to the fields that the record has.
  void Apply(QZDataFlow::QZRecord& record);

  /// The names that records have had, of this one or another of the same metadata.
  const std::set<std::string>& Met() const { return met; }
  void AddMet(const std::set<std::string>& names) {
    met.insert(names.begin(), names.end());
    anyRecord = true;
  }

  /// Throws ToolError where a name was met in no record of `path`, provided that there were any.
  void RequireMet(const std::string& path) const;

 private:
  MetaByName meta;
  std::set<std::string> met;
  bool anyRecord = false;
};

}  // namespace QZTools
