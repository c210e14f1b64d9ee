#include "tools/common/programtext.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;

namespace {

constexpr const char* configuration = R"(
!PARAMETER -program 1
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !INPUT 1
  !BRIEF The program: its path, or its name where the shell finds it
  !DETAIL
    It is run with the argument --json. A - stands for what it answers, on standard input.
!END
!PARAMETER -out 2
  !TYPE string
  !KEYLESS 2
  !DEFAULT -
  !SIMPLE true
  !OUTPUT true
  !BRIEF The file to write, - for standard output
!END
!PARAMETER -name 3
  !TYPE string
  !BRIEF What the program is called by, where that isn't the last part of its path
!END
)";

// More than any program says about itself.
constexpr std::size_t longestDocument = 64UL << 20;

[[noreturn]] void fail(const std::string& program, const std::string& what) { throw ToolError(program + ": " + what); }

std::string readAll(int descriptor, const std::string& origin) {
  std::string text;
  char room[4096];
  while (true) {
    const ssize_t count = ::read(descriptor, room, sizeof room);
    if (count == 0) return text;
    if (count < 0) {
      CheckInterrupt();
      if (errno == EINTR) continue;
      fail(origin, std::string("can't be read: ") + std::strerror(errno));
    }
    text.append(room, static_cast<std::size_t>(count));
    if (text.size() > longestDocument) fail(origin, "says too much to be a description");
  }
}

// A running program whose standard output is read here.
class Child {
 public:
  explicit Child(const std::string& path) : program(path) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) fail(program, std::strerror(errno));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    // A tool ignores the signal of a closed pipe; the program is to have it.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    std::string name = program;
    std::string option = "--json";
    char* arguments[] = {name.data(), option.data(), nullptr};
    const int error = posix_spawnp(&process, program.c_str(), &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    output = ends[0];
    if (error == 0) return;
    ::close(output);
    fail(program, std::string("can't be run: ") + std::strerror(error));
  }

  ~Child() {
    ::close(output);
    if (process <= 0) return;
    // Its answer is of no use any more.
    ::kill(process, SIGTERM);
    wait();
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  std::string Answer() {
    const std::string text = readAll(output, program);
    const int status = wait();
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) fail(program, "fails when it is asked for --json");
    return text;
  }

 private:
  int wait() {
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
    process = 0;
    return status;
  }

  std::string program;
  pid_t process = 0;
  int output = -1;
};

// The words of a brief come with a blank behind each.
std::string textOf(rapidjson::Value& object, const char* key) {
  return QZStringStripWhiteSpace(GetJSONStringAttr(object, key, true).value);
}

std::vector<std::string> textsOf(rapidjson::Value& object, const char* key) {
  std::vector<std::string> texts;
  const QZJSONAttr<rapidjson::Value*> list = GetJSONArrayAttr(object, key, true);
  if (list.error) return texts;
  for (const rapidjson::Value& each : list.value->GetArray()) {
    if (!each.IsString()) QZWarnJSONKind(QZJSONKind::String, key);
    if (each.IsString()) texts.emplace_back(each.GetString(), each.GetStringLength());
  }
  return texts;
}

std::vector<ParameterText::Range> rangesOf(rapidjson::Value& object, const char* key) {
  std::vector<ParameterText::Range> ranges;
  const QZJSONAttr<rapidjson::Value*> list = GetJSONArrayAttr(object, key, true);
  if (list.error) return ranges;
  for (const rapidjson::Value& each : list.value->GetArray()) {
    const bool isPair = each.IsArray() && each.Size() == 2 && each[0].IsString() && each[1].IsString();
    if (!isPair) QZWarnJSONKind(QZJSONKind::Array, key);
    if (isPair) ranges.emplace_back(each[0].GetString(), each[1].GetString());
  }
  return ranges;
}

ParameterText parameterOf(rapidjson::Value& object) {
  ParameterText parameter;
  parameter.name = textOf(object, "name");
  parameter.type = textOf(object, "type");
  parameter.brief = textOf(object, "brief");
  parameter.aliases = textsOf(object, "alias");
  parameter.defaults = textsOf(object, "default");
  parameter.legalValues = textsOf(object, "legal_value");
  parameter.illegalValues = textsOf(object, "illegal_value");
  parameter.legalRanges = rangesOf(object, "legal_range");
  parameter.illegalRanges = rangesOf(object, "illegal_range");
  parameter.detail = textsOf(object, "detail");
  parameter.isList = GetJSONBoolAttr(object, "list", true).value;
  parameter.required = GetJSONBoolAttr(object, "required", true).value;
  parameter.isOutput = GetJSONBoolAttr(object, "output", true).value;
  parameter.input = GetJSONUnsignedAttr(object, "input", true).value;
  parameter.keyless = GetJSONUnsignedAttr(object, "keyless", true).value;
  // Beyond the three words there is null, for a number without one.
  const auto visibility = object.FindMember("visibility");
  parameter.hidden = visibility == object.MemberEnd() || !visibility->value.IsString() ||
                     std::strcmp(visibility->value.GetString(), "hidden") == 0;
  return parameter;
}

template <class Item, class Read>
void readList(rapidjson::Value& object, const char* key, bool required, std::vector<Item>& items, Read read) {
  const QZJSONAttr<rapidjson::Value*> list = GetJSONArrayAttr(object, key, required);
  if (!list.found || list.error) return;
  for (rapidjson::Value& each : list.value->GetArray()) {
    if (each.IsObject()) {
      items.push_back(read(each));
    } else {
      QZWarnJSONKind(QZJSONKind::Object, key);
    }
  }
}

CategoryText categoryOf(rapidjson::Value& object) {
  CategoryText category;
  category.name = textOf(object, "name");
  category.brief = textOf(object, "brief");
  category.detail = textsOf(object, "detail");
  readList(object, "params", true, category.parameters, parameterOf);
  readList(object, "interfaces", false, category.categories, categoryOf);
  return category;
}

void collect(const CategoryText& category, std::vector<const ParameterText*>& all) {
  for (const ParameterText& each : category.parameters) all.push_back(&each);
  for (const CategoryText& each : category.categories) collect(each, all);
}

}  // namespace

std::vector<std::string> ParameterText::Keys() const {
  std::vector<std::string> keys = {name};
  keys.insert(keys.end(), aliases.begin(), aliases.end());
  return keys;
}

bool ParameterText::TakesFile() const {
  return type == "file" || type == "stringEx" || type == "param_file" || input != 0 || isOutput;
}

std::vector<const ParameterText*> CategoryText::All() const {
  std::vector<const ParameterText*> all;
  collect(*this, all);
  return all;
}

std::vector<const ParameterText*> CategoryText::Keyless() const {
  std::vector<const ParameterText*> keyless = All();
  keyless.erase(std::remove_if(keyless.begin(), keyless.end(), [](const auto* each) { return each->keyless == 0; }),
                keyless.end());
  std::stable_sort(keyless.begin(), keyless.end(),
                   [](const auto* a, const auto* b) { return a->keyless < b->keyless; });
  return keyless;
}

bool CategoryText::TakesParameterFile() const {
  const std::vector<const ParameterText*> all = All();
  return std::any_of(all.begin(), all.end(), [](const auto* each) { return each->type == "param_file"; });
}

CategoryText AskProgram(const std::string& program) {
  if (program == "-") return ReadProgramText(readAll(STDIN_FILENO, "standard input"), "standard input");
  return ReadProgramText(Child(program).Answer(), program);
}

CategoryText ReadProgramText(std::string_view document, const std::string& origin) {
  rapidjson::Document json;
  TakeWarning();
  CategoryText root;
  const bool read = JSONParseHelper(json, EscapeControls(document));
  if (read) root = categoryOf(json);
  const std::string warning = TakeWarning();
  if (!read || !warning.empty()) {
    fail(origin, "is no program on this framework: what it answers to --json can't be read" +
                     (warning.empty() ? "" : " (" + warning + ")"));
  }
  return root;
}

std::string EscapeControls(std::string_view document) {
  constexpr char digits[] = "0123456789abcdef";
  std::string escaped;
  escaped.reserve(document.size());
  bool inString = false;
  bool behindBackslash = false;
  for (const char byte : document) {
    const auto code = static_cast<unsigned char>(byte);
    if (inString && code < 0x20 && !behindBackslash) {
      escaped.append("\\u00");
      escaped += digits[code >> 4];
      escaped += digits[code & 15];
      continue;
    }
    if (byte == '"' && !behindBackslash) inString = !inString;
    behindBackslash = inString && byte == '\\' && !behindBackslash;
    escaped += byte;
  }
  return escaped;
}

std::string ProgramConfiguration() { return configuration; }

std::string CalledName(const QZInterface& settings) {
  const std::string program = TextSetting(settings, "-program");
  std::string name = TextSetting(settings, "-name");
  if (name.empty() && program != "-") name = QZPlatform::QZFileDetermineName(program);
  if (name.empty()) throw ToolError("Give the name of the program as -name");
  return name;
}

}  // namespace QZTools
