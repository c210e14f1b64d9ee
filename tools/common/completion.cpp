#include "tools/common/completion.h"

#include <algorithm>
#include <vector>

#include "qz/system.h"

namespace QZTools {

using namespace QZSystem;

namespace {

const std::vector<std::string> helpWords = {"simple", "all", "hidden", "defaults", "versions", "html"};

// Everything behind the case tables.
constexpr const char* bashBody = R"(
FUNCTION() {
  local kind= list=0 values=() files=() words=() candidates=()
  local word current cut quote='' open='' place=1 first line=$COMP_LINE i
  # bash splits words at = and : too, which mean nothing to the program.
  for ((i = 0; i <= COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if ((i == 0)) || [[ $line == [[:space:]]* ]]; then words+=("$word"); else words[-1]+=$word; fi
    line=${line#*"$word"}
  done
  current=${words[-1]}
  unset 'words[-1]'
  first=$((${#words[@]} == 1))
  cut=${current%"${current##*[=:]}"}
  if [[ $current == [\'\"]* ]]; then quote=${current:0:1} current=${current:1} cut=; fi

  # What the words before mean: "open" is the kind of word that may come now.
  for word in "${words[@]:1}"; do
    if [[ $open == value ]]; then
      open=
      ((list)) && open=list
    elif FUNCTION_key "$word"; then
      place=1 open=value
      [[ $kind == bool ]] && open=flag
    elif [[ $open == list ]]; then
      continue
    elif [[ $open == flag && ${word,,} == @(true|yes|on|y|t|1|false|no|off|n|f|0) ]]; then
      open=
    else
      open=
      ((place++))
    fi
  done

  if [[ ${#words[@]} == 2 && ${words[1]} == --help ]]; then
    kind=word
    candidates=("${FUNCTION_help[@]}" "${FUNCTION_keys[@]}")
  elif [[ $open == value || $open == list && $current != -* ]]; then
    candidates=("${values[@]}")
  elif [[ $current == -* ]]; then
    kind=word
    candidates=("${FUNCTION_keys[@]}")
    [[ $current == --* ]] && candidates+=("${FUNCTION_unset[@]}")
    ((first)) && candidates+=(--help --version)
  else
    [[ $open == flag ]] && candidates=(true false)
    if FUNCTION_place "$place"; then
      candidates+=("${values[@]}")
    elif ((${#candidates[@]} == 0)); then
      kind=word
      candidates=("${FUNCTION_keys[@]}")
    fi
  fi

  COMPREPLY=()
  if [[ $kind == file ]]; then
    # Without values the shell itself completes the name of a file.
    ((${#candidates[@]} == 0)) && return
    compopt -o filenames 2>/dev/null
    quote=none
    mapfile -t files < <(compgen -f -- "$current")
  else
    compopt +o default 2>/dev/null
  fi
  for word in "${candidates[@]}"; do
    [[ ${word,,} == "${current,,}"* ]] || continue
    [[ -n $quote ]] || printf -v word %q "$word"
    COMPREPLY+=("${word:${#cut}}")
  done
  COMPREPLY+=("${files[@]}")
}
)";

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

// For both shells.
std::string quoted(const std::string& text) { return "'" + replaced(text, "'", "'\\''") + "'"; }

std::string quotedWords(const std::vector<std::string>& words) {
  std::vector<std::string> items;
  for (const std::string& word : words) items.push_back(quoted(word));
  return QZStringJoin(items, " ");
}

// A name that a shell takes for a function.
std::string functionName(const std::string& program) {
  std::string name = "_qz_";
  for (const char byte : program) {
    const bool plain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
    name += plain ? byte : '_';
  }
  return name;
}

// What can be typed: a legal value of a text that is a pattern can't.
std::vector<std::string> valuesOf(const ParameterText& parameter) {
  if (parameter.type == "bool") return {"true", "false"};
  std::vector<std::string> values;
  for (const std::string& each : parameter.legalValues) {
    if (each.find('*') == std::string::npos) values.push_back(each);
  }
  return values;
}

const char* kindOf(const ParameterText& parameter) {
  if (parameter.type == "bool") return "bool";
  return parameter.TakesFile() ? "file" : "word";
}

std::vector<std::string> shownKeys(const CategoryText& program, const std::string& before) {
  std::vector<std::string> keys;
  for (const ParameterText* parameter : program.All()) {
    if (parameter->hidden) continue;
    for (const std::string& key : parameter->Keys()) keys.push_back(before + key);
  }
  return keys;
}

std::string bashKeys(const CategoryText& program) {
  std::string text;
  for (const ParameterText* parameter : program.All()) {
    std::vector<std::string> keys;
    for (const std::string& key : parameter->Keys()) keys.push_back(quoted(QZStringLower(key)));
    text += "    " + QZStringJoin(keys, " | ") + ") kind=" + kindOf(*parameter) +
            " list=" + (parameter->isList ? "1" : "0") + " values=(" + quotedWords(valuesOf(*parameter)) + ") ;;\n";
  }
  return text;
}

std::string bashPlaces(const CategoryText& program, const std::string& function) {
  std::string text;
  unsigned int place = 0;
  for (const ParameterText* parameter : program.Keyless()) {
    const std::string pattern = parameter->isList ? "*" : QZNumberToString(++place);
    text += "    " + pattern + ") " + function + "_key " + quoted(parameter->name) + " ;;\n";
    if (parameter->isList) return text;
  }
  return text + "    *) return 1 ;;\n";
}

// In the entries that _arguments takes, a colon separates, and a bracket ends the explanation.
std::string zshText(const std::string& text, const std::string& special) {
  std::string escaped;
  for (const char byte : text) {
    if (special.find(byte) != std::string::npos) escaped += '\\';
    // An entry is one line.
    escaped += byte == '\n' || byte == '\t' ? ' ' : byte;
  }
  return escaped;
}

// Words of a list in round brackets, which the shell parses once more.
std::string zshWords(const std::vector<std::string>& words) {
  std::vector<std::string> items;
  for (const std::string& word : words) {
    std::string item;
    for (const char byte : word) {
      const bool plain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
                         byte == '_' || byte == '-' || byte == '.' || byte == '/' || byte < 0;
      if (!plain) item += '\\';
      item += byte;
    }
    items.push_back(item.empty() ? "''" : item);
  }
  return "(" + QZStringJoin(items, " ") + ")";
}

// What completes a value: ":message:action".
std::string zshAction(const ParameterText& parameter) {
  const std::vector<std::string> values = valuesOf(parameter);
  std::string name = parameter.name;
  if (!name.empty()) name.erase(0, 1);
  const std::string message = ":" + zshText(name, "\\:") + ":";
  const std::string words = values.empty() ? "" : zshText(zshWords(values), ":");
  if (!parameter.TakesFile()) return message + (values.empty() ? " " : words);
  if (values.empty()) return message + "_files";
  return message + "_alternative \"values\\:value\\:" + zshText(zshText(zshWords(values), "\\\"$`"), ":") +
         "\" files\\:file\\:_files";
}

// One for each key; each excludes the other keys of the parameter.
std::string zshOptions(const ParameterText& parameter) {
  const std::vector<std::string> keys = parameter.Keys();
  std::string text;
  for (const std::string& key : keys) {
    std::string entry =
        "(" + QZStringJoin(keys, " ") + ")" + zshText(key, "\\:[]=+") + "[" + zshText(parameter.brief, "\\[]") + "]";
    if (parameter.isList) {
      entry += ":*-*" + zshAction(parameter);
    } else if (parameter.type != "bool") {
      entry += zshAction(parameter);
    }
    text += " \\\n  " + quoted(entry);
  }
  return text;
}

}  // namespace

std::string BashCompletion(const CategoryText& program, const std::string& name) {
  const std::string function = functionName(name);
  const std::vector<std::string> unset =
      program.TakesParameterFile() ? shownKeys(program, "--unset") : std::vector<std::string>();
  std::string text = "# bash completion for " + name + ", made by qzcomplete\n\n";
  text += function + "_keys=(" + quotedWords(shownKeys(program, "")) + ")\n";
  text += function + "_unset=(" + quotedWords(unset) + ")\n";
  text += function + "_help=(" + quotedWords(helpWords) + ")\n\n";
  text += "# What the parameter of a key takes; false for another word.\n";
  text += function + "_key() {\n  case ${1,,} in\n" + bashKeys(program) + "    *) return 1 ;;\n  esac\n}\n\n";
  text += "# The same for the place of an argument without a key.\n";
  text += function + "_place() {\n  case $1 in\n" + bashPlaces(program, function) + "  esac\n}\n";
  text += replaced(bashBody, "FUNCTION", function);
  return text + "\ncomplete -o default -F " + function + " " + quoted(name) + "\n";
}

std::string ZshCompletion(const CategoryText& program, const std::string& name) {
  std::string text = "#compdef " + name + "\n# zsh completion for " + name + ", made by qzcomplete\n\n_arguments";
  for (const ParameterText* parameter : program.All()) {
    if (!parameter->hidden) text += zshOptions(*parameter);
  }
  if (program.TakesParameterFile()) {
    for (const std::string& key : shownKeys(program, "--unset")) {
      text += " \\\n  " + quoted("*" + zshText(key, "\\:[]=+") + "[Take back what a parameter file has set]");
    }
  }
  unsigned int place = 0;
  for (const ParameterText* parameter : program.Keyless()) {
    const std::string at = parameter->isList ? "*" : QZNumberToString(++place);
    text += " \\\n  " + quoted(at + zshAction(*parameter));
  }
  text += " \\\n  " + quoted("(- *)--help[Show help]::topic:" + zshWords(helpWords));
  return text + " \\\n  '(- *)--version[Show the version]'\n";
}

}  // namespace QZTools
