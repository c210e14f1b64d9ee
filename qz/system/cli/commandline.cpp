#include "qz/system/cli/commandline.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "qz/system/cli/help.h"
#include "qz/system/cli/interface_impl.h"
#include "qz/system/cli/keytable_impl.h"
#include "qz/system/cli/parsevalues_impl.h"
#include "qz/system/cli/requirement.h"
#include "qz/system/cli/typedparameter.h"
#include "qz/system/frame/endprocess_impl.h"

namespace QZSystem {

namespace {

constexpr char kFirstKeyless[] = "Missing keyless parameter 1, have keyless parameter %d (%s)";
constexpr char kNextKeyless[] = "Missing keyless parameter %d, have keyless parameter %d (%s) and %d (%s)";
constexpr char kKeylessList[] =
    "If a keyless parameter is also a list type parameter it must be the last keyless entry.\n"
    "Parameter %s is violating this rule (%s is after it)";
constexpr char kKeyBehindWord[] = "Unknown parameter, %s, on command line";
constexpr char kTwice[] = "%s is specified twice on the command line";
constexpr char kNoValue[] = "Parameter %s on the command line is not followed by a value";
constexpr char kIllegalValue[] = "%s is not a legal setting for parameter %s (specified on command line)%s";
constexpr char kIllegalListValue[] = "%s is not a legal setting for list parameter %s (specified on command line)%s";
constexpr char kNotLoaded[] = "Problem loading parameter %s with setting %s";
constexpr char kUnknownArgument[] = "Unknown argument on command line %s";
constexpr char kTooManyWords[] = "Unknown argument %s on command line (too many arguments to be keyless)";
constexpr char kTooManyWordsBesideKeys[] =
    "Unknown argument %s on command line.  There are too many arguments to be keyless (one or more keyless parameters "
    "are explicitly specified)";
constexpr char kIllegalKeyless[] =
    "%s is not a legal setting for the keyless parameter %s specified on the command line";
constexpr char kKeylessNotLoaded[] = "Problem loading keyless parameter %s with setting %s";
constexpr char kParameterFile[] = "Problem parsing parameter file";

constexpr std::string_view kUnset = "--unset";

/// The parse of one command line. An argument that is neither a key nor a value of one is a word.
class CommandLine {
 public:
  CommandLine(const std::vector<QZParameter*>& parameters, const char* programVersion, int argCount, char** args,
              unsigned int errorLevel)
      : keys(parameters), version(programVersion), arguments(args, args + argCount), level(errorLevel) {}

  bool Parse(const std::vector<QZParameter*>& keyless) {
    if (!TakeArguments() || !TakeWords(keyless) || !ReadParameterFiles()) return false;
    for (QZParameter* parameter : unset) parameter->ClearValues();
    return true;
  }

 private:
  bool TakeArguments() {
    while (HasNext()) {
      const std::string_view argument = arguments[at++];
      if (TakeUnset(argument)) continue;
      if (argument == kVersionArgument) {
        PrintVersionAndEnd(version);
        return false;
      }
      QZParameter* parameter = keys.Find(argument);
      if (parameter == nullptr)
        words.emplace_back(argument);
      else if (!StandsBeforeWords() || !TakeKey(*parameter))
        return false;
    }
    return true;
  }

  bool TakeUnset(std::string_view argument) {
    if (argument.size() <= kUnset.size() || argument.substr(0, kUnset.size()) != kUnset) return false;
    QZParameter* parameter = keys.Find(argument.substr(kUnset.size()));
    if (parameter != nullptr) unset.push_back(parameter);
    return parameter != nullptr;
  }

  bool StandsBeforeWords() const {
    for (const std::string& word : words) QZThrow.Msg(level, kKeyBehindWord, word.c_str());
    return words.empty();
  }

  /// Takes the values of a key, which is the argument before `at`.
  bool TakeKey(QZParameter& parameter) {
    const char* key = arguments[at - 1].data();
    const bool isList = parameter.GetIsList();
    if (!isList && parameter.GetHasValue(0)) {
      QZThrow.Msg(level, kTwice, parameter.GetName().c_str());
      return false;
    }
    if (IsBool(parameter) && !(HasNext() && parameter.IsLegalString(Next()))) {
      parameter.AddStringValue("true");
      parameter.Load();
      return true;
    }
    if (!HasNext()) {
      QZThrow.Msg(level, kNoValue, key);
      return false;
    }
    const std::size_t first = at;
    if (!TakeValue(parameter, key) || (isList && !TakeFurtherValues(parameter))) return false;
    if (!parameter.Load()) {
      QZThrow.Msg(level, kNotLoaded, key, Together(first, at).c_str());
      return false;
    }
    NoteParameterFile(parameter);
    return true;
  }

  bool TakeValue(QZParameter& parameter, const char* key) {
    const std::string& value = Next();
    ++at;
    if (parameter.IsLegalString(value) && parameter.AddStringValue(value)) return true;
    // A list may stand in one argument, with commas.
    if (parameter.GetIsList() && parameter.SetStringValues(value)) return true;
    QZThrow.Msg(level, kIllegalValue, value.c_str(), key, LimitsText(parameter, Legal::kAsShown).c_str());
    return false;
  }

  bool TakeFurtherValues(QZParameter& parameter) {
    for (; HasNext() && keys.Find(arguments[at]) == nullptr; ++at) {
      const std::string& value = Next();
      if (!parameter.IsLegalString(value)) return true;
      if (parameter.AddStringValue(value)) continue;
      QZThrow.Msg(level, kIllegalListValue, value.c_str(), parameter.GetName().c_str(),
                  LimitsText(parameter, Legal::kAsDeclared).c_str());
      return false;
    }
    return true;
  }

  /// Gives the words to the keyless parameters in their order. One that has its value by key is passed over, and a
  /// list, which is the last, takes all words that are left.
  bool TakeWords(const std::vector<QZParameter*>& keyless) {
    if (words.empty()) return true;
    if (!MayTakeWords(keyless)) return false;
    auto next = keyless.begin();
    for (std::size_t word = 0; word < words.size();) {
      next = std::find_if(next, keyless.end(), [](const QZParameter* parameter) {
        return parameter->GetIsList() || !parameter->GetHasValue(0);
      });
      if (next == keyless.end()) {
        QZThrow.Msg(level, kTooManyWordsBesideKeys, words.front().c_str());
        return false;
      }
      const std::size_t count = (*next)->GetIsList() ? words.size() - word : 1;
      const auto first = words.begin() + static_cast<std::ptrdiff_t>(word);
      if (!GiveWords(**next, {first, first + static_cast<std::ptrdiff_t>(count)})) return false;
      word += count;
    }
    return true;
  }

  bool MayTakeWords(const std::vector<QZParameter*>& keyless) const {
    if (keyless.empty()) {
      for (const std::string& word : words) QZThrow.Msg(level, kUnknownArgument, word.c_str());
    } else if (keyless.size() < words.size() && !keyless.back()->GetIsList()) {
      QZThrow.Msg(level, kTooManyWords, words.front().c_str());
    } else {
      return true;
    }
    return false;
  }

  bool GiveWords(QZParameter& parameter, const std::vector<std::string>& texts) {
    const Intake intake = TakeTexts(parameter, texts);
    if (intake.failure == Intake::kRefused) {
      QZThrow.Msg(level, kIllegalKeyless, texts[intake.taken].c_str(), parameter.GetName().c_str());
    } else if (intake.failure == Intake::kNotLoaded) {
      QZThrow.Msg(level, kKeylessNotLoaded, parameter.GetName().c_str(), texts[intake.taken].c_str());
    } else {
      NoteParameterFile(parameter);
    }
    return intake.failure == Intake::kNone;
  }

  /// Once is enough for each: a second reading finds all values there already.
  void NoteParameterFile(QZParameter& parameter) {
    if (IsParameterFile(parameter) &&
        std::find(parameterFiles.begin(), parameterFiles.end(), &parameter) == parameterFiles.end())
      parameterFiles.push_back(&parameter);
  }

  bool ReadParameterFiles() const {
    for (const QZParameter* parameter : parameterFiles) {
      const auto* files = QZTypedParameter<qzisstream>::From(parameter);
      if (files == nullptr) continue;
      for (const qzisstream& contents : QZIter<const qzisstream>(files->GetSettings())) {
        qzisstream in(contents);
        if (ParseParameterFile(keys, in, false, level)) continue;
        QZThrow.Msg(level, kParameterFile);
        return false;
      }
    }
    return true;
  }

  bool HasNext() const { return at < arguments.size(); }

  /// The next argument, which stays so. The text lives until the next call.
  const std::string& Next() { return text.assign(arguments[at]); }

  std::string Together(std::size_t from, std::size_t to) const {
    std::string all;
    for (std::size_t i = from; i < to; ++i) all += arguments[i];
    return all;
  }

  const KeyTable keys;
  const char* const version;
  const std::vector<std::string_view> arguments;  ///< each ends in a zero byte
  const unsigned int level;
  std::size_t at = 1;
  std::string text;
  std::vector<std::string> words;
  std::vector<QZParameter*> unset;
  std::vector<QZParameter*> parameterFiles;
};

// --------------------------------------------------------------------------------------------------------- keyless

bool CheckKeylessNumbers(const std::vector<QZParameter*>& keyless) {
  bool good = true;
  const QZParameter* before = nullptr;
  for (const QZParameter* parameter : keyless) {
    const unsigned int number = parameter->GetKeyless();
    const unsigned int expected = before != nullptr ? before->GetKeyless() + 1 : 1;
    const int shown = static_cast<int>(number);
    if (number != expected) {
      good = false;
      if (before == nullptr)
        QZThrow.Error(kFirstKeyless, shown, parameter->GetName().c_str());
      else
        QZThrow.Error(kNextKeyless, static_cast<int>(expected), static_cast<int>(before->GetKeyless()),
                      before->GetName().c_str(), shown, parameter->GetName().c_str());
    }
    before = parameter;
  }
  return good;
}

bool CheckKeylessLists(const std::vector<QZParameter*>& keyless) {
  bool good = true;
  for (const QZParameter* parameter : keyless)
    if (parameter->GetIsList() && parameter != keyless.back()) {
      good = false;
      QZThrow.Error(kKeylessList, parameter->GetName().c_str(), keyless.back()->GetName().c_str());
    }
  return good;
}

/// Of all parameters leaves the keyless ones, in the order of their numbers; false if these are at fault.
bool SelectKeyless(std::vector<QZParameter*>& parameters) {
  const auto needsKey = [](const QZParameter* parameter) { return parameter->GetKeyless() == 0; };
  parameters.erase(std::remove_if(parameters.begin(), parameters.end(), needsKey), parameters.end());
  std::stable_sort(parameters.begin(), parameters.end(),
                   [before = KeylessSort()](const QZParameter* a, const QZParameter* b) { return before(*a, *b); });
  const bool numbersAreGood = CheckKeylessNumbers(parameters);
  return CheckKeylessLists(parameters) && numbersAreGood;
}

void EnterProgram(QZInterface& itf, const unsigned char* text, int argc, char** argv) {
  if (!ConfigureNewInterface(itf, text)) return;
  if (QZCheckHelp(itf, argc, argv, true, qzerr))
    EndProcess(0);
  else if (!QZParseCommandLine(itf, argc, argv, nullptr, QZErrorLevel::Error, true))
    EndProcess(1);
}

}  // namespace

bool GetKeylessParameters(QZInterface& itf, std::vector<QZParameter*>& keyless) {
  keyless = AllParameters(itf);
  return SelectKeyless(keyless);
}

bool QZParseCommandLine(QZInterface& itf, const char* version, int argc, char** argv, const unsigned char* requirements,
                        unsigned int level, bool checkHelp) {
  if (checkHelp && QZCheckHelp(itf, argc, argv, true, qzerr)) {
    EndProcess(0);
    return false;
  }
  const std::vector<QZParameter*> parameters = AllParameters(itf);
  std::vector<QZParameter*> keyless = parameters;
  return SelectKeyless(keyless) && CommandLine(parameters, version, argc, argv, level).Parse(keyless) &&
         QZHasRequired(itf, requirements, level);
}

bool QZParseCommandLine(QZInterface& itf, int argc, char** argv, const unsigned char* requirements, unsigned int level,
                        bool checkHelp) {
  return QZParseCommandLine(itf, nullptr, argc, argv, requirements, level, checkHelp);
}

QZInterface::QZInterface(const unsigned char* text, int argc, char** argv) : QZInterface() {
  EnterProgram(*this, text, argc, argv);
}

QZInterface::QZInterface(const char* text, int argc, char** argv)
    : QZInterface(reinterpret_cast<const unsigned char*>(text), argc, argv) {}

}  // namespace QZSystem
