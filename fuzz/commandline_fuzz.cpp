// The command line: a first line with the arguments, blanks between them, then a configuration and, behind a line of
// dashes, requirements.
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Silence silence;
  std::string text = TextOf(data, size);
  for (char& byte : text) {
    if (byte == 0) byte = ' ';
  }
  const std::size_t end = text.find('\n');
  std::vector<std::string> arguments = argumentsOf(text.substr(0, end));
  const std::string requirements = end == std::string::npos ? "" : text.substr(end + 1);
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  const int argc = static_cast<int>(argv.size());

  static const QZInterface full(configuration);
  static const QZInterface light(switches);
  QZInterface itf(full);
  const auto* const conditions = reinterpret_cast<const unsigned char*>(requirements.c_str());
  const bool parsed = QZParseCommandLine(itf, "1", argc, argv.data(), conditions, QZErrorLevel::Warning, false);
  qzosstream settings;
  QZWriteSettings(itf, settings, false);
  QZInterface second(full);
  const bool again = QZParseCommandLine(second, "1", argc, argv.data(), conditions, QZErrorLevel::Warning, false);
  qzosstream settingsAgain;
  QZWriteSettings(second, settingsAgain, false);
  Require(parsed == again && settings.str() == settingsAgain.str());

  QZInterface small(light);
  QZParseCommandLineLW(small, "1", argc, argv.data(), conditions, QZErrorLevel::Warning);
  return 0;
}
