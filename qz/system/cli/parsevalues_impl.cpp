#include "qz/system/cli/parsevalues_impl.h"

#include <memory>

#include "qz/platform/standardstream.h"
#include "qz/system/cli/typedparameter.h"
#include "qz/system/frame/endprocess_impl.h"

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

/// Tells text by text whether the list of a parameter loads up to there; a Load of the list as a whole only tells that
/// something in it doesn't.
class Probe {
 public:
  /// Of the texts of the parameter, the last `added` are still to be tried.
  Probe(const QZParameter& parameter, std::size_t added) : copy(parameter.CreateCopy()) {
    std::vector<std::string> texts;
    for (const std::string& text : Texts(parameter.GetStringValues())) texts.push_back(text);
    texts.resize(texts.size() - added);
    for (const std::string& text : texts) Loads(text);
  }

  /// Whether the list, with this text as its next, loads.
  bool Loads(const std::string& text) {
    good = good && copy->SetStringValue(text) && copy->Load();
    return good;
  }

 private:
  const std::unique_ptr<QZParameter> copy;
  bool good = true;
};

/// Of texts that are the last in the list of a parameter that failed to load, the index of the first at which it began
/// to fail.
std::size_t FirstNotLoading(const QZParameter& parameter, const std::vector<std::string>& texts, std::size_t count) {
  Probe probe(parameter, count);
  std::size_t first = 0;
  while (first < count && probe.Loads(texts[first])) ++first;
  return first < count ? first : 0;
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

void PrintVersionAndEnd(const char* version) {
  qzout << (version != nullptr ? version : "version not set") << qzendl;
  EndProcess(0);
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
  intake = {FirstNotLoading(parameter, texts, added), Intake::kNotLoaded};
  DropLastTexts(parameter, added - intake.taken - 1);
  return intake;
}

namespace {

/// Texts on their way into a parameter. Those that are in are loaded together at the end; before a failure is told, it
/// is found out whether one of them failed.
class Batch {
 public:
  Batch(QZParameter& target, const std::vector<std::string>& all, const TellFailure& teller)
      : parameter(target), texts(all), tell(teller) {}

  void Take(std::size_t i) {
    if (!parameter.IsLegalString(texts[i])) {
      Settle();
      tell(i, Intake::kRefused);
    } else if (!parameter.AddStringValue(texts[i])) {
      Settle();
      tell(i, Intake::kNotLoaded);
    } else {
      ++added;
      last = i;
      open.push_back(i);
      if (isSpoilt) Settle();
    }
  }

  void Finish() {
    if (added == 0 || parameter.Load()) return;
    Settle();
    if (!isSpoilt) tell(last, Intake::kNotLoaded);  // a file that came and went
  }

 private:
  /// From the first text that doesn't load on, no load of the list succeeds.
  void Settle() {
    if (open.empty()) return;
    if (probe == nullptr) probe = std::make_unique<Probe>(parameter, added);
    for (const std::size_t i : open) {
      isSpoilt = !probe->Loads(texts[i]);
      if (isSpoilt) tell(i, Intake::kNotLoaded);
    }
    open.clear();
  }

  QZParameter& parameter;
  const std::vector<std::string>& texts;
  const TellFailure& tell;
  std::size_t added = 0;
  std::size_t last = 0;
  std::vector<std::size_t> open;  ///< in, and not known to load
  bool isSpoilt = false;
  std::unique_ptr<Probe> probe;
};

}  // namespace

void TakeAllTexts(QZParameter& parameter, const std::vector<std::string>& texts, const TellFailure& tell) {
  Batch batch(parameter, texts, tell);
  for (std::size_t i = 0; i < texts.size(); ++i) batch.Take(i);
  batch.Finish();
}

}  // namespace QZSystem
