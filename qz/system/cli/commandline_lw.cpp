#include <string>
#include <string_view>
#include <vector>

#include "qz/system/cli/commandline.h"
#include "qz/system/cli/interface_impl.h"
#include "qz/system/cli/keytable_impl.h"
#include "qz/system/cli/parsevalues_impl.h"
#include "qz/system/cli/requirement.h"
#include "qz/system/cli/typedparameter.h"

namespace QZSystem {

namespace {

constexpr char kNoParameterFiles[] = "ParseCommandLineLW : does not support parameter files (%s)";
constexpr char kNotBool[] = "ParseCommandLineLW : \n All non-keyless parameter keys must be booleans (%s is not)";
constexpr char kNoDefault[] =
    "ParseCommandLineLW : bool parameters must have a default value of false (%s does not have a default value)";
constexpr char kDefaultIsTrue[] =
    "ParseCommandLineLW : bool parameters must have a default value of false (%s does has a default value of true)";
constexpr char kLongName[] =
    "ParseCommandLineLW : \n non-keyless bool parameters must have a - followed by a single character as a key "
    "(%s does not)";
constexpr char kLongAlias[] =
    "ParseCommandLineLW : \n non-keyless bool parameters must have a - followed by a single character as a key "
    "(an alias of %s, %s, does not)";
constexpr char kSingleDash[] = " - is not a valid command line arg";
constexpr char kKeylessByKey[] = "%s is a keyless parameter, do not specify it with a key";
constexpr char kNotASwitch[] = "switch %s is not a boolean parameter";
constexpr char kUnknownSwitch[] = "Unknow switch %s";
constexpr char kUnknownInGroup[] = "Unknow switch %s (specified as part of group %s)";
constexpr char kInvalidArgument[] = "Invalid command line argument %s";
constexpr char kTooManyArguments[] = "Too many arguments on the command line";

/// Whether a parameter is one that a light-weight command line can serve; an Error tells why not.
bool FitsLightWeight(const QZParameter& parameter) {
  const std::string name = parameter.GetName();
  if (IsParameterFile(parameter)) QZThrow.Error(kNoParameterFiles, name.c_str());
  if (parameter.GetKeyless() != 0) return true;
  const auto* switchParameter = QZTypedParameter<bool>::From(&parameter);
  bool on = false;
  if (switchParameter == nullptr) {
    QZThrow.Error(kNotBool, name.c_str());
  } else if (!switchParameter->GetDefault(on, 0)) {
    QZThrow.Error(kNoDefault, name.c_str());
  } else if (on) {
    QZThrow.Error(kDefaultIsTrue, name.c_str());
  } else if (name.size() != 2) {
    QZThrow.Error(kLongName, name.c_str());
  } else {
    for (const std::string& alias : QZIter<const std::string>(parameter.GetAliases())) {
      if (alias.size() == 2) continue;
      QZThrow.Error(kLongAlias, name.c_str(), alias.c_str());
      return false;
    }
    return true;
  }
  return false;
}

bool AllFitLightWeight(const QZInterface& itf) {
  for (const QZParameter& parameter : QZIter<const QZParameter>(itf.GetParameters(true)))
    if (!FitsLightWeight(parameter)) return false;
  return true;
}

/// The parse of one command line of switches and positional arguments.
class LightCommandLine {
 public:
  LightCommandLine(QZInterface& itf, const char* programVersion, int argCount, char** args, unsigned int errorLevel)
      : keys(AllParameters(itf)), version(programVersion), argc(argCount), argv(args), level(errorLevel) {}

  bool Parse(const std::vector<QZParameter*>& keyless) { return TakeSwitches() && TakePositional(keyless) && good; }

 private:
  /// Takes the arguments up to the first without a dash. False, other than `good`, ends the parse.
  bool TakeSwitches() {
    for (; at < argc; ++at) {
      const std::string argument = argv[at];
      if (argument == kVersionArgument) {
        PrintVersionAndEnd(version);
        return false;
      }
      if (argument.empty() || argument.front() != '-') return true;
      if (argument.size() == 1) {
        QZThrow.Msg(level, kSingleDash);
        return false;
      }
      const QZParameter* whole = keys.Find(argument);
      if (whole != nullptr && whole->GetKeyless() != 0)
        RefuseKeyless(argument);
      else
        for (const char letter : std::string_view(argument).substr(1)) TakeSwitch({'-', letter}, argument);
    }
    return true;
  }

  void RefuseKeyless(const std::string& argument) {
    good = false;
    QZThrow.Msg(level, kKeylessByKey, argument.c_str());
  }

  void TakeSwitch(const std::string& key, const std::string& argument) {
    QZParameter* parameter = keys.Find(key);
    if (parameter == nullptr) return RefuseUnknown(key, argument);
    if (parameter->GetKeyless() != 0) RefuseKeyless(argument);
    if (!IsBool(*parameter)) {
      good = false;
      QZThrow.Msg(level, kNotASwitch, key.c_str());
    }
    parameter->SetStringValue("true");
    parameter->Load();
  }

  void RefuseUnknown(const std::string& key, const std::string& argument) {
    good = false;
    if (argument.size() == 2)
      QZThrow.Msg(level, kUnknownSwitch, key.c_str());
    else
      QZThrow.Msg(level, kUnknownInGroup, key.c_str(), argument.c_str());
  }

  /// Gives an argument to each keyless parameter in order, and what is left to the last if it is a list.
  bool TakePositional(const std::vector<QZParameter*>& keyless) {
    for (auto next = keyless.begin(); next != keyless.end() && at < argc; ++next, ++at) {
      const std::string argument = argv[at];
      QZParameter& parameter = **next;
      if (!parameter.IsLegalString(argument) || !parameter.SetStringValue(argument) || !parameter.Load())
        RefuseArgument(argument);
    }
    if (at >= argc) return true;
    if (keyless.empty() || !keyless.back()->GetIsList()) {
      QZThrow.Msg(level, kTooManyArguments);
      return false;
    }
    const std::vector<std::string> arguments(argv + at, argv + argc);
    TakeAllTexts(*keyless.back(), arguments, [&](std::size_t i, Intake::Failure) { RefuseArgument(arguments[i]); });
    return true;
  }

  void RefuseArgument(const std::string& argument) {
    good = false;
    QZThrow.Msg(level, kInvalidArgument, argument.c_str());
  }

  const KeyTable keys;
  const char* const version;
  const int argc;
  char** const argv;
  const unsigned int level;
  int at = 1;
  bool good = true;
};

}  // namespace

bool QZParseCommandLineLW(QZInterface& itf, const char* version, int argc, char** argv,
                          const unsigned char* requirements, unsigned int level) {
  std::vector<QZParameter*> keyless;
  const bool keylessAreGood = GetKeylessParameters(itf, keyless);
  return AllFitLightWeight(itf) && LightCommandLine(itf, version, argc, argv, level).Parse(keyless) && keylessAreGood &&
         QZHasRequired(itf, requirements, level);
}

bool QZParseCommandLineLW(QZInterface& itf, int argc, char** argv, const unsigned char* requirements,
                          unsigned int level) {
  return QZParseCommandLineLW(itf, nullptr, argc, argv, requirements, level);
}

}  // namespace QZSystem
