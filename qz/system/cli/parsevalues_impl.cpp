#include "qz/system/cli/parsevalues_impl.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "qz/platform/standardstream.h"
#include "qz/system/cli/typedparameter.h"

namespace QZSystem {

namespace {

using Texts = QZIter<const std::string>;
using Ranges = QZIter<const QZParameter::Range>;

void AppendValues(std::string& text, const char* title, Texts values) {
  for (const std::string& value : values) text.append(title).append(value);
}

void AppendRanges(std::string& text, const char* title, Ranges ranges) {
  for (const auto& [from, to] : ranges) text.append(title).append(from).append(" to ").append(to);
}

/// Of texts that are in the list of a parameter that failed to load, the index of the first at which it began to fail.
std::size_t FirstNotLoading(const QZParameter& parameter, const std::vector<std::string>& texts) {
  const std::unique_ptr<QZParameter> probe(parameter.CreateCopy());
  const auto fails = [&probe](const std::string& text) { return !probe->SetStringValue(text) || !probe->Load(); };
  const auto first = std::find_if(texts.begin(), texts.end(), fails);
  return first != texts.end() ? static_cast<std::size_t>(first - texts.begin()) : 0;
}

/// Drops the last texts of the list of values, which is not loaded.
void DropLastTexts(QZParameter& parameter, std::size_t count) {
  std::vector<std::string> texts;
  for (const std::string& text : Texts(parameter.GetStringValues())) texts.push_back(text);
  texts.resize(texts.size() - count);
  parameter.ClearValues();
  for (const std::string& text : texts) parameter.AddStringValue(text);
}

}  // namespace

void PrintVersionAndExit(const char* version) {
  qzout << (version != nullptr ? version : "version not set") << qzendl;
  std::exit(0);
}

bool IsBool(const QZParameter& parameter) { return QZTypedParameter<bool>::From(&parameter) != nullptr; }

bool IsParameterFile(const QZParameter& parameter) { return parameter.ClassID() == "param_file"; }

std::string LimitsText(const QZParameter& parameter, Legal values) {
  std::string text;
  AppendValues(text, "\n  Legal value : ",
               Texts(values == Legal::kAsShown ? parameter.GetPrettyLegalValues() : parameter.GetLegalValues()));
  AppendRanges(text, "\n  Legal Range : ", Ranges(parameter.GetLegalRanges()));
  AppendValues(text, "\n  Illegal value : ", Texts(parameter.GetIllegalValues()));
  AppendRanges(text, "\n  Illegal Range : ", Ranges(parameter.GetIllegalRanges()));
  return text;
}

Intake TakeTexts(QZParameter& parameter, const std::vector<std::string>& texts) {
  Intake intake;
  for (const std::string& text : texts) {
    if (!parameter.IsLegalString(text) || !parameter.AddStringValue(text)) {
      intake.failure = Intake::kRefused;
      break;
    }
    ++intake.taken;
  }
  if (intake.taken == 0 || parameter.Load()) return intake;
  const std::size_t added = intake.taken;
  intake = {FirstNotLoading(parameter, texts), Intake::kNotLoaded};
  DropLastTexts(parameter, added - intake.taken - 1);
  return intake;
}

std::vector<Intake::Failure> TakeAllTexts(QZParameter& parameter, const std::vector<std::string>& texts) {
  std::vector<Intake::Failure> failures(texts.size(), Intake::kNone);
  std::vector<std::size_t> added;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (!parameter.IsLegalString(texts[i]))
      failures[i] = Intake::kRefused;
    else if (!parameter.AddStringValue(texts[i]))
      failures[i] = Intake::kNotLoaded;
    else
      added.push_back(i);
  }
  if (added.empty() || parameter.Load()) return failures;
  std::vector<std::string> addedTexts;
  for (const std::size_t i : added) addedTexts.push_back(texts[i]);
  // From the first that doesn't load on, no load of the list succeeds.
  for (std::size_t i = FirstNotLoading(parameter, addedTexts); i < added.size(); ++i)
    failures[added[i]] = Intake::kNotLoaded;
  return failures;
}

}  // namespace QZSystem
