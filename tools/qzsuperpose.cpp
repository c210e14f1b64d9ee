// Superposes two sets of points: how near they come, and the motion that brings the second onto the first.

#include <array>
#include <climits>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "qz/math/qcprms.h"
#include "qz/math/simplerms.h"
#include "tools/common/display.h"
#include "tools/common/recordsettings.h"
#include "tools/common/rundisplay.h"
#include "tools/common/texttable.h"
#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

using namespace QZSystem;
using namespace QZDataFlow;
using namespace QZTools;

namespace {

constexpr const char* configuration = R"(
!BRIEF Superpose two sets of points: the RMS, and the motion of the second set
!DETAIL
  Record i of one file is the partner of record i of the other. The coordinates stand in
  the fields x, y and z. A field weight gives each pair its weight: that of the first
  file, or of the second where the first has none. A point p of the second set comes to
  lie at rotation * p + translation.
!CATEGORY "Points" 1
  !BRIEF What is superposed
  !PARAMETER -fixed 1
    !TYPE string
    !KEYLESS 1
    !REQUIRED true
    !SIMPLE true
    !INPUT 1
    !BRIEF The file of the points that stay, - for standard input
    !DETAIL
      Its extension tells the format: .csv and .tsv are tables, .json and .jsonl records
      as JSON documents, one a line, .qzr binary records.
  !END
  !PARAMETER -moved 2
    !TYPE string
    !KEYLESS 2
    !REQUIRED true
    !SIMPLE true
    !INPUT 2
    !BRIEF The file of the points that are moved, - for standard input
  !END
  !PARAMETER -informat 3
    !TYPE string
    !LEGAL_VALUE csv
    !LEGAL_VALUE tsv
    !LEGAL_VALUE json
    !LEGAL_VALUE binary
    !BRIEF The format of both files where their names don't tell
  !END
  !PARAMETER -method 4
    !TYPE string
    !DEFAULT polynomial
    !LEGAL_VALUE polynomial
    !LEGAL_VALUE jacobi
    !SIMPLE true
    !BRIEF The solver
    !DETAIL
      polynomial: the greatest root of the characteristic polynomial, fast; an RMS below
      0.001 is given as 0. jacobi: the whole eigenproblem by Jacobi rotations.
  !END
!END
)";

struct PointSet {
  std::string path;
  std::vector<double> coordinates;
  std::vector<double> weights;  // empty where there is no such field
  std::vector<QZRecord> records;
  std::vector<QZFieldBase> columns;
  bool carriesMore = false;

  std::size_t Count() const { return coordinates.size() / 3; }
};

// The names that say which field is what, and the fields of one record that bear them.
class PointReader {
 public:
  void Read(const QZRecord& record, const std::string& place, PointSet& set) {
    if (watch.See(record)) find();
    for (std::size_t i = 0; i < 3; ++i) set.coordinates.push_back(number(record, i, place));
    // The first record tells whether there are weights.
    if (set.Count() == 1) hasWeights = fields[3].GetName() == names[3];
    if (hasWeights) set.weights.push_back(number(record, 3, place));
  }

 private:
  static constexpr const char* names[4] = {"x", "y", "z", "weight"};

  void find() {
    fields.fill(QZFieldBase());
    for (const QZFieldBase& field : watch.Fields()) {
      for (std::size_t i = 0; i < fields.size(); ++i) {
        if (field.GetName() == names[i]) fields[i] = field;
      }
    }
  }

  double number(const QZRecord& record, std::size_t which, const std::string& place) {
    const std::string name = names[which];
    if (fields[which].GetName() != name) throw ToolError(place + ": no field " + name);
    const std::string text = DisplayText(record, fields[which]);
    const std::optional<double> value = numberIn(record, fields[which], text);
    if (!value) throw ToolError(place + ", column " + name + ": '" + text + "' is no number");
    if (!QZIsNormalNum(*value)) throw ToolError(place + ", column " + name + ": " + text + " is not finite");
    if (which == 3 && *value < 0) throw ToolError(place + ", column " + name + ": " + text + " is below 0");
    return *value;
  }

  // One cell that is no number makes its column one of texts, and the others are still numbers.
  std::optional<double> numberIn(const QZRecord& record, const QZFieldBase& field, const std::string& text) {
    double value = 0;
    if (QZGetFieldKind(field.GetType()) != QZFieldKind::String) return NumberOf(record, field, room);
    return QZStringToNumber(text, value) ? std::optional<double>(value) : std::nullopt;
  }

  FieldWatch watch;
  std::array<QZFieldBase, 4> fields;
  std::vector<unsigned char> room;
  bool hasWeights = false;
};

PointSet readPoints(const QZInterface& settings, const std::string& key, bool keepRecords) {
  const std::string path = TextSetting(settings, key);
  RefuseOption(settings, path);
  TableOptions options;
  // All rows are kept anyway, and so a column's type is that of all of them.
  options.inferRows = UINT_MAX;
  const Format format = FormatOf(path, TextSetting(settings, "-informat"), "-informat");
  const auto source = OpenRecords(path, format, options, TextSetting(settings, "-progress"), "Reading");
  PointSet set;
  set.path = path == "-" ? "standard input" : path;
  set.columns = source->Columns();
  set.carriesMore = source->CarriesMore();
  PointReader reader;
  for (QZRecord record; source->Next(record); CountRecord()) {
    reader.Read(record, source->Place(), set);
    if (keepRecords) set.records.push_back(record);
  }
  return set;
}

void requirePartners(const PointSet& fixed, const PointSet& moved) {
  const auto points = [](const PointSet& set) {
    return set.path + " has " + QZNumberToString(set.Count()) + (set.Count() == 1 ? " point" : " points");
  };
  if (fixed.Count() != moved.Count()) {
    throw ToolError(points(fixed) + ", " + points(moved) + ": each point needs its partner");
  }
  if (fixed.Count() == 0) throw ToolError(points(fixed) + "; there is nothing to superpose");
  if (fixed.Count() > INT_MAX) throw ToolError(points(fixed) + ", more than can be superposed");
}

struct Motion {
  double rms;
  double values[12];  // the rotation, row by row, and the translation
};

Motion superpose(const PointSet& fixed, const PointSet& moved, const std::string& method) {
  const std::vector<double>& weights = fixed.weights.empty() ? moved.weights : fixed.weights;
  const double* const a = fixed.coordinates.data();
  const double* const b = moved.coordinates.data();
  const double* const w = weights.empty() ? nullptr : weights.data();
  const auto n = static_cast<unsigned int>(fixed.Count());
  Motion motion;
  motion.rms = method == "jacobi" ? QZMath::SimpleRMSBetweenWeightedPoints(a, b, w, n, motion.values)
                                  : QZMath::QZQCPRMSBetweenWeightedPoints(a, b, w, n, motion.values, motion.values + 9);
  return motion;
}

// Elements of a rotation don't exceed 1; what rounding leaves of a 0 isn't shown, nor its sign.
std::string elementText(double value) {
  std::string text;
  QZNumberToString(std::abs(value) < 5e-7 ? 0 : value, text, 'f', 6);
  return text;
}

// Beside coordinates of the size `scale`, what rounding leaves of a 0 isn't shown.
std::string lengthText(double value, double scale) {
  std::string text;
  QZNumberToString(std::abs(value) < 1e-14 * scale ? 0 : value, text, 'g', 8);
  return text;
}

double greatestCoordinate(const PointSet& set) {
  double greatest = 0;
  for (const double coordinate : set.coordinates) greatest = std::max(greatest, std::abs(coordinate));
  return greatest;
}

void show(const Motion& motion, std::size_t count, double scale) {
  qzout << "points " << QZNumberToString(count) << "\nRMS    " << lengthText(motion.rms, scale) << "\n\n";
  TextTable table({{"rotation", true}, {"", true}, {"", true}, {"translation", true}});
  for (std::size_t i = 0; i < 3; ++i) {
    const double* row = motion.values + 3 * i;
    table.AddRow(
        {elementText(row[0]), elementText(row[1]), elementText(row[2]), lengthText(motion.values[9 + i], scale)});
  }
  table.Write(qzout, UINT_MAX);
}

void writeMoved(const QZInterface& settings, PointSet& moved, const Motion& motion) {
  const QZField<double> axes[3] = {QZField<double>("x"), QZField<double>("y"), QZField<double>("z")};
  for (QZFieldBase& column : moved.columns) {
    for (const QZField<double>& axis : axes) {
      if (column.GetName() == axis.GetName()) column = axis;
    }
  }
  const auto sink = CreateOutput(settings, moved.columns, moved.carriesMore);
  for (std::size_t i = 0; i < moved.records.size(); ++i) {
    QZRecord& record = moved.records[i];
    const double* p = moved.coordinates.data() + 3 * i;
    for (std::size_t k = 0; k < 3; ++k) {
      const double* row = motion.values + 3 * k;
      // A field of whole numbers becomes one of numbers.
      if (record.CheckField(axes[k]) == QZRecord::OtherType) record.DeleteField(axes[k]);
      record.SetValue(axes[k], row[0] * p[0] + row[1] * p[1] + row[2] * p[2] + motion.values[9 + k]);
    }
    sink->Put(record);
    CheckInterrupt();
  }
  FinishOutput(settings, *sink);
}

void run(QZInterface& settings) {
  const bool writes = !TextSetting(settings, "-out").empty();
  if (TextSetting(settings, "-fixed") == "-" && TextSetting(settings, "-moved") == "-") {
    throw ToolError("Standard input can be one of the files only");
  }
  const PointSet fixed = readPoints(settings, "-fixed", false);
  PointSet moved = readPoints(settings, "-moved", writes);
  FinishDots();
  requirePartners(fixed, moved);
  const Motion motion = superpose(fixed, moved, TextSetting(settings, "-method"));
  if (writes) writeMoved(settings, moved, motion);
  if (TextSetting(settings, "-out") != "-") {
    show(motion, fixed.Count(), std::max(greatestCoordinate(fixed), greatestCoordinate(moved)));
  }
}

}  // namespace

int main(int argc, char** argv) { return RunTool(argc, argv, configuration + OutputConfiguration(false, false), run); }
