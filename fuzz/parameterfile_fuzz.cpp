// Parameter files: what a run was set to by a file is written as one, and read back sets the same.
#include "fuzz/fuzzing.h"

using namespace QZSystem;

namespace {

const char* const configuration = R"(
!PARAMETER -n
  !TYPE int
!END
!PARAMETER -names
  !TYPE string
  !LIST true
!END
!PARAMETER -scale
  !TYPE unsigned
  !LIST true
  !LEGAL_RANGE 0 50
!END
!PARAMETER -flag
  !TYPE bool
!END
)";

std::string settingsFrom(const std::string& file, bool overwrite) {
  static const QZInterface empty(configuration);
  QZInterface itf(empty);
  BytesStream in(file);
  QZParseParameterFile(itf, in, overwrite, QZErrorLevel::Warning);
  qzosstream out;
  QZWriteSettings(itf, out, false);
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  const std::string file = TextOf(data, size);
  (void)settingsFrom(file, true);
  const std::string settings = settingsFrom(file, false);
  // A text with quotes of its own in it can't be quoted, and doesn't come back.
  if (settings.find_first_of("'\"") == std::string::npos && settings.find('\r') == std::string::npos &&
      settings.find('\0') == std::string::npos && settings.find("\n-names  #") == std::string::npos) {
    const std::string again = settingsFrom(settings, false);
    Require(settingsFrom(again, false) == again);
  }
  return 0;
}
