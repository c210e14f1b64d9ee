#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qz/system.h"

namespace QZTools {

/// A parameter as a program describes it.
struct ParameterText {
  using Range = std::pair<std::string, std::string>;

  std::string name;
  std::string type;
  std::string brief;
  std::vector<std::string> aliases;
  std::vector<std::string> defaults;
  std::vector<std::string> legalValues;
  std::vector<std::string> illegalValues;
  std::vector<Range> legalRanges;
  std::vector<Range> illegalRanges;
  std::vector<std::string> detail;
  bool isList = false;
  bool required = false;
  bool isOutput = false;
  bool hidden = false;
  unsigned int input = 0;
  unsigned int keyless = 0;

  /// The name, then the aliases.
  std::vector<std::string> Keys() const;
  /// Whether a value can be the name of a file: by the type, or as the input or output that the program marks.
  bool TakesFile() const;
};

/// A program's settings as it describes them under "--json": the root or a category, in the order of the document.
struct CategoryText {
  std::string name;
  std::string brief;
  std::vector<std::string> detail;
  std::vector<ParameterText> parameters;
  std::vector<CategoryText> categories;

  /// The parameters of the category and of all below it.
  std::vector<const ParameterText*> All() const;
  /// Those that may be given without a key, by their places.
  std::vector<const ParameterText*> Keyless() const;
  /// Whether a value can come from a parameter file.
  bool TakesParameterFile() const;
};

/// Asks a program, by path or as the search path finds it, for its description; "-" stands for a document on standard
/// input. Throws ToolError where it can't be run, ends with another status than 0, or answers with something else.
CategoryText AskProgram(const std::string& program);

/// Reads a description; `origin` names it in the ToolError that is thrown for another text.
CategoryText ReadProgramText(std::string_view document, const std::string& origin);

/// A document whose strings may hold raw control characters, which a program leaves in its texts, with these escaped.
std::string EscapeControls(std::string_view document);

/// The options of every tool that reads a description, in the configuration language: -program (the first argument
/// without a key), -out (the second), -name.
std::string ProgramConfiguration();

/// What users call the program by: -name, or the last part of -program. Throws ToolError where neither tells.
std::string CalledName(const QZSystem::QZInterface& settings);

}  // namespace QZTools
