// Compares the numbers of two files, line by line: categories, limits, defaults, typed access.
#include <qz/system.h>

#include <cmath>
#include <string>

using namespace QZSystem;

namespace {

const char* settings = R"(!BRIEF Compare the numbers of two files
!PARAMETER -in 1
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !BRIEF The first file, one number a line
!END
!PARAMETER -with 2
  !TYPE string
  !KEYLESS 2
  !REQUIRED true
  !SIMPLE true
  !BRIEF The second file
!END
!CATEGORY "Output options" 2
  !BRIEF What to write
  !PARAMETER -format
    !ALIAS -f
    !TYPE string
    !DEFAULT txt
    !LEGAL_VALUE txt
    !LEGAL_VALUE csv
    !BRIEF The output format
    !DETAIL
        Either of the two forms.
  !END
  !PARAMETER -tolerance
    !TYPE double
    !DEFAULT 1e-6
    !LEGAL_RANGE 0 inf
    !BRIEF Differences up to this aren't told
  !END
!END
)";

bool nextNumber(qzistream& in, double& value) {
  std::string line;
  return in.getline(line) && QZStringToNumber(line, value);
}

}  // namespace

int main(int argc, char** argv) {
  QZInterface itf(settings, argc, argv);
  double tolerance = 0;
  QZTypedParameter<double>::From(itf.GetParameter("-tolerance"))->GetSetting(tolerance);
  const bool asCsv = itf.GetParameter("-format")->IsSetToString("csv");

  qzifstream first;
  qzifstream second;
  first.open(itf.GetParameter("-in")->GetStringValue(0));
  second.open(itf.GetParameter("-with")->GetStringValue(0));
  if (first.failed() || second.failed()) QZThrow.Fatal("Cannot open the two files");

  double a = 0;
  double b = 0;
  for (unsigned int line = 1; nextNumber(first, a) && nextNumber(second, b); ++line) {
    if (std::abs(a - b) <= tolerance) continue;
    if (asCsv) {
      qzout << line << ',' << a << ',' << b << qzendl;
    } else {
      qzout << "line " << line << ": " << a << " and " << b << qzendl;
    }
  }
}
