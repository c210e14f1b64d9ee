// The command line, and requests for help on it: a first line with the arguments, blanks between them, and behind it
// requirements. A second parse of the same arguments gives the same settings.
#include <vector>

#include "fuzz/fuzzing.h"

using namespace QZSystem;

namespace {

const char* const configuration = R"(
!PARAMETER -in
  !TYPE string
  !KEYLESS 1
  !ALIAS -i
!END
!PARAMETER -n
  !TYPE int
  !LIST true
  !LEGAL_RANGE -10 inf
!END
!PARAMETER -x
  !TYPE double
  !ILLEGAL_RANGE 1 2
!END
!PARAMETER -mode
  !TYPE const
  !LEGAL_VALUE 1
  !LEGAL_VALUE fast
!END
!PARAMETER -v
  !TYPE bool
  !DEFAULT false
!END
!PARAMETER -rest
  !TYPE string
  !LIST true
  !KEYLESS 2
!END
)";

const char* const switches = R"(
!PARAMETER -v
  !TYPE bool
  !DEFAULT false
!END
!PARAMETER -q
  !TYPE bool
  !DEFAULT false
  !ALIAS -s
!END
!PARAMETER -rest
  !TYPE string
  !LIST true
  !KEYLESS 1
!END
)";

// Never an argument that ends the process by its nature.
std::vector<std::string> argumentsOf(const std::string& line) {
  std::vector<std::string> arguments{"program"};
  std::vector<std::string> words;
  QZStringTokenize(words, line, " ", false);
  for (const std::string& word : words) {
    if (word != "--version") arguments.push_back(word);
  }
  return arguments;
}

// What would go to a file or to the standard output isn't asked for.
void askForHelp(const QZInterface& itf, std::vector<char*>& argv) {
  if (argv.size() < 2 || std::string(argv[1]) != "--help") return;
  if (argv.size() > 2 && std::string(argv[2]) == "html") return;
  qzosstream out;
  Require(QZCheckHelp(itf, static_cast<int>(argv.size()), argv.data(), true, out) == (argv.size() < 5));
}

struct Outcome {
  bool parsed;
  std::string settings;
};

Outcome parse(const QZInterface& empty, std::vector<char*>& argv, const unsigned char* requirements) {
  QZInterface itf(empty);
  Outcome outcome;
  const int argc = static_cast<int>(argv.size());
  outcome.parsed = QZParseCommandLine(itf, "1", argc, argv.data(), requirements, QZErrorLevel::Warning, false);
  qzosstream out;
  QZWriteSettings(itf, out, false);
  outcome.settings = out.str();
  return outcome;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  static const QZInterface full(configuration);
  static const QZInterface light(switches);
  std::string text = TextOf(data, size);
  for (char& byte : text) {
    if (byte == 0) byte = ' ';
  }
  const std::size_t end = text.find('\n');
  std::vector<std::string> arguments = argumentsOf(text.substr(0, end));
  const std::string behind = end == std::string::npos ? "" : text.substr(end + 1);
  const auto* const requirements = reinterpret_cast<const unsigned char*>(behind.c_str());
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());

  askForHelp(full, argv);
  const Outcome first = parse(full, argv, requirements);
  const Outcome second = parse(full, argv, requirements);
  Require(first.parsed == second.parsed && first.settings == second.settings);

  QZInterface small(light);
  QZParseCommandLineLW(small, "1", static_cast<int>(argv.size()), argv.data(), requirements, QZErrorLevel::Warning);
  return 0;
}
