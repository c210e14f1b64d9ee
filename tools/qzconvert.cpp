// Converts tables and records into each other.

#include "tools/common/metasetting.h"
#include "tools/common/recordsettings.h"
#include "tools/common/rundisplay.h"
#include "tools/common/tool.h"

using namespace QZSystem;
using namespace QZDataFlow;
using namespace QZTools;

namespace {

constexpr const char* ownConfiguration = R"(
!BRIEF Convert tables and records into each other
!PARAMETER -meta
  !TYPE string
  !BRIEF Metadata of columns, as column:Name; column:Name=value
  !DETAIL
    For example "exact_mass:Units.Mass.Da; spin:Annotation.Description=spin and parity".
    A name that doesn't exist is answered with near ones.
!END
)";

void convert(QZInterface& settings) {
  const MetaByName meta = ParseMeta(TextSetting(settings, "-meta"));
  const auto source = OpenInput(settings, meta, "Converting");
  const auto sink = CreateOutput(settings, source->Columns(), source->CarriesMore());
  FieldMetaSetter setter(source->CarriesMore() ? meta : MetaByName());

  unsigned long count = 0;
  for (QZRecord record; source->Next(record); ++count) {
    setter.Apply(record);
    sink->Put(record);
    CountRecord();
  }
  const std::string path = InputName(settings);
  setter.RequireMet(path);
  FinishOutput(settings, *sink);
  QZThrow.Verbose(path + ": " + QZNumberToString(count) + " records");
}

}  // namespace

int main(int argc, char** argv) {
  return RunTool(argc, argv, ownConfiguration + InputConfiguration() + OutputConfiguration(true), convert);
}
