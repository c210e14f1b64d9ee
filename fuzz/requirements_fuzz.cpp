// Requirements, asked of interfaces in which much, little and nothing is set.
#include <memory>

#include "fuzz/fuzzing.h"

using namespace QZSystem;

namespace {

const char* const configuration = R"(
!PARAMETER -in
  !TYPE string
  !ALIAS -i
!END
!PARAMETER -n
  !TYPE int
  !LIST true
!END
!PARAMETER -x
  !TYPE double
!END
!PARAMETER -mode
  !TYPE const
  !LEGAL_VALUE 1
  !LEGAL_VALUE fast
  !DEFAULT fast
!END
!PARAMETER -v
  !TYPE bool
!END
)";

std::unique_ptr<QZInterface> interfaceWith(std::initializer_list<std::pair<const char*, const char*>> settings) {
  auto itf = std::make_unique<QZInterface>(configuration);
  for (const auto& [name, value] : settings) {
    QZParameter* const parameter = itf->GetParameter(name);
    Require(parameter->AddStringValue(value) && parameter->Load());
  }
  return itf;
}

bool met(const QZInterface& itf, const std::string& text) {
  return QZHasRequired(itf, reinterpret_cast<const unsigned char*>(text.c_str()), QZErrorLevel::Warning);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  static const std::unique_ptr<QZInterface> interfaces[] = {
      interfaceWith({}), interfaceWith({{"-in", "a"}, {"-v", "false"}}),
      interfaceWith({{"-in", "b"}, {"-n", "3"}, {"-n", "4"}, {"-x", "0.5"}, {"-mode", "1"}, {"-v", "true"}})};
  const std::string text = TextOf(data, size);
  const std::string once = text.c_str();
  for (const auto& itf : interfaces) {
    const bool result = met(*itf, text);
    Require(met(*itf, "# comment\n\n" + text) == result);
    // What is met is met twice. The text may end inside a requirement, which the lines between close.
    if (result) Require(met(*itf, once + "\n!REQUIREMENT\n!OPTION\n!END\n" + once));
  }
  return 0;
}
