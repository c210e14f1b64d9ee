// A program with parsing, checks and help, in ten lines.
#include <qz/system.h>

const char* settings = R"(!BRIEF Greet somebody
!PARAMETER -name
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !BRIEF Who is greeted
!END
)";

int main(int argc, char** argv) {
  QZSystem::QZInterface itf(settings, argc, argv);
  QZSystem::qzout << "Hello, " << itf.GetParameter("-name")->GetStringValue(0) << "!" << QZSystem::qzendl;
}
