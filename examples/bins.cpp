// Counts pairs of numbers in cells: an options class with groups that stand twice, each under a prefix of its own, a
// table of constants as a parameter, requirements over several parameters, and a parameter file.
#include <qz/system.h>
#include <qz/system/cli/interface_opts.h>
#include <qz/system/cli/options.h>
#include <qz/system/cli/systemnamespace.h>

#include <cmath>
#include <string>
#include <vector>

using namespace QZSystem;

namespace {

enum Scale : unsigned int { Linear = 1, Logarithmic = 2 };

const QZNamespaceInterface scales("Scale", QZNamespaceInterface::Constants,
                                  {{"linear", Linear, "cells of the same width"},
                                   {"log", Logarithmic, "cells of the same ratio"}});

// What both axes have: where it begins and ends, and how it is divided.
class AxisOptions : public QZOptions {
 public:
  AxisOptions(const std::string& axis, const std::string& prefix) : QZOptions(axis) {
    AddParameter(QZDoubleParameter("-low"))->SetBrief("Where the first cell begins");
    AddParameter(QZDoubleParameter("-high", 1.0))->SetBrief("Where the last cell ends");
    AddParameter(QZUIntParameter("-cells", 2))->AddLegalRange("1", "1000");
    QZParameter* scale = AddParameter(QZStringParameter("-scale"));
    QZAddLegalValues(scale, &scales, true);
    scale->SetStringDefault("linear");
    scale->Load();
    AddParameterPrefix(prefix, false);
    key = "-" + prefix;
  }

  AxisOptions* CreateCopy() const override { return new AxisOptions(*this); }
  bool Validate() const override { return From() < number("High") && (!IsLog() || From() > 0); }

  unsigned int Cells() const {
    unsigned int cells = 0;
    QZTypedParameter<unsigned int>::From(GetParameter(key + "Cells"))->GetSetting(cells);
    return cells;
  }

  // The cell of a value; Cells() for one outside.
  unsigned int CellOf(double value) const {
    const double high = number("High");
    const double share =
        IsLog() ? std::log(value / From()) / std::log(high / From()) : (value - From()) / (high - From());
    return share >= 0 && share < 1 ? static_cast<unsigned int>(share * Cells()) : Cells();
  }

 private:
  double number(const std::string& name) const {
    double value = 0;
    QZTypedParameter<double>::From(GetParameter(key + name))->GetSetting(value);
    return value;
  }
  double From() const { return number("Low"); }
  bool IsLog() const {
    const QZParameter& scale = *GetParameter(key + "Scale");
    const std::string word = scale.GetHasValue(0) ? scale.GetStringValue(0) : scale.GetStringDefault(0);
    return scales.GetValue(word, Linear) == Logarithmic;
  }

  std::string key;
};

class BinOptions : public QZOptions {
 public:
  BinOptions() : QZOptions("bins") {
    SetBrief("Count pairs of numbers in cells");
    QZParameter* in = AddParameter(QZStringParameter("-in"));
    in->SetBrief("The file to read, a pair on each line");
    in->SetKeyless(1);
    in->SetRequired(true);
    in->SetInput(1);
    AddParameter(QZParamFileParameter("-settings"))->SetBrief("A parameter file");
    AddOption(AxisOptions("First number", "x"));
    AddOption(AxisOptions("Second number", "y"));
    SetParameterVisibility(0);
  }

  BinOptions* CreateCopy() const override { return new BinOptions(*this); }
  bool Validate() const override { return X().Validate() && Y().Validate(); }

  std::string In() const { return GetParameter("-in")->GetStringValue(0); }
  const AxisOptions& X() const { return static_cast<const AxisOptions&>(*GetOption("First number")); }
  const AxisOptions& Y() const { return static_cast<const AxisOptions&>(*GetOption("Second number")); }
};

// A logarithm has no zero to begin at.
const unsigned char requirements[] = R"(
!REQUIREMENT
  !OPTION !-xScale log
  !OPTION -xLow
  !ERROR_MSG
    Give -xLow with -xScale log.
!END
!REQUIREMENT
  !OPTION !-yScale log
  !OPTION -yLow
  !ERROR_MSG
    Give -yLow with -yScale log.
!END
)";

void count(const BinOptions& options) {
  qzifstream in;
  in.open(options.In());
  if (in.failed()) QZThrow.Fatal("Cannot open %s", options.In().c_str());
  const unsigned int columns = options.X().Cells();
  std::vector<unsigned int> cells(columns * options.Y().Cells());
  unsigned int outside = 0;
  double x = 0;
  double y = 0;
  for (std::string line; in.getline(line);) {
    std::vector<std::string> words;
    QZStringTokenize(words, line, " \t", true);
    if (words.size() != 2 || !QZStringToNumber(words[0], x) || !QZStringToNumber(words[1], y)) continue;
    const unsigned int column = options.X().CellOf(x);
    const unsigned int row = options.Y().CellOf(y);
    const bool inside = column < columns && row < options.Y().Cells();
    ++(inside ? cells[row * columns + column] : outside);
  }
  for (std::size_t i = 0; i < cells.size(); ++i) qzout << cells[i] << ((i + 1) % columns == 0 ? "\n" : " ");
  qzout << outside << " outside" << qzendl;
}

}  // namespace

int main(int argc, char** argv) {
  BinOptions options;
  QZInterface itf;
  QZConfigureItf(itf, options);
  // QZConfigureOpts does these steps at once, without requirements.
  if (QZCheckHelp(itf, argc, argv)) return 0;
  if (!QZParseCommandLine(itf, "1.0", argc, argv, requirements)) return 1;
  QZUpdateOpts(options, itf);
  if (!options.Validate()) QZThrow.Fatal("An axis begins where it ends, behind its end, or, with a log scale, at 0");
  count(options);
}
