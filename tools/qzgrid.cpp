// Shows what an old-style file of grids holds, and paints planes of them.

#include <png.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "qz/system/objects/qzbgrid.h"
#include "qz/system/util/color.h"
#include "qz/system/util/colorgradient.h"
#include "tools/common/colors.h"
#include "tools/common/fieldstats.h"
#include "tools/common/files.h"
#include "tools/common/recordsettings.h"
#include "tools/common/texttable.h"
#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

using namespace QZSystem;
using namespace QZTools;

namespace {

constexpr const char* configuration = R"(
!BRIEF Show what an old-style file of grids holds, or paint a plane of one
!PARAMETER -in 1
  !TYPE string
  !INPUT 1
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !BRIEF The file to read, - for standard input
!END
!PARAMETER -slice 2
  !TYPE string
  !SIMPLE true
  !BRIEF The plane to paint: x, y or z, =, and its number from 0, as z=12
  !DETAIL
    The first axis that remains goes to the right and the second one up. A point is a
    square of -zoom pixels, the colour is that of its value between -first, for the least
    value of the grid, and -last, for the greatest. A value that isn't a number is white.
!END
!PARAMETER -out 3
  !TYPE string
  !OUTPUT true
  !SIMPLE true
  !BRIEF The PNG file that -slice is painted to, - for standard output
!END
!PARAMETER -grid 4
  !TYPE unsigned
  !DEFAULT 0
  !BRIEF The number of the grid that -slice is of, from 0
!END
!PARAMETER -first 5
  !TYPE string
  !DEFAULT #27325f
  !BRIEF The colour of the least value, as #rrggbb or by name
!END
!PARAMETER -last 6
  !TYPE string
  !DEFAULT #e8d664
  !BRIEF The colour of the greatest value, as #rrggbb or by name
!END
!PARAMETER -zoom 7
  !TYPE unsigned
  !DEFAULT 4
  !BRIEF The pixels of a point's side
!END
)";

constexpr unsigned int significantDigits = 6;
constexpr unsigned long mostPixels = 100000000;

std::string shortNumber(double value) {
  std::string text;
  QZNumberToString(value, text, 'g', significantDigits);
  return text;
}

std::string shortNumber(float value) { return shortNumber(static_cast<double>(value)); }

NumberStats statisticsOf(const QZFixedGrid<float>& grid) {
  NumberStats statistics;
  const float* const values = grid.GetValues();
  for (std::size_t i = 0; i < grid.GetSize(); ++i) statistics.Add(static_cast<double>(values[i]));
  return statistics;
}

// The least and the greatest of the finite values.
std::pair<double, double> rangeOf(const QZFixedGrid<float>& grid) {
  std::optional<std::pair<float, float>> range;
  const float* const values = grid.GetValues();
  for (std::size_t i = 0; i < grid.GetSize(); ++i) {
    if (!std::isfinite(values[i])) continue;
    if (!range) range.emplace(values[i], values[i]);
    range->first = std::min(range->first, values[i]);
    range->second = std::max(range->second, values[i]);
  }
  return range.value_or(std::pair(0.0F, 0.0F));
}

void readGrids(const QZInterface& settings, QZMultiGrid<float>& grids) {
  const std::string path = TextSetting(settings, "-in");
  RefuseOption(settings, path);
  Input input(path, TextSetting(settings, "-progress"), "Reading");
  const bool whole = QZReadOldStyleGrid(input.Stream(), grids);
  const unsigned long end = input.Stream().tell();
  const bool more = whole && input.Stream().peek() >= 0;
  input.Finish();
  const std::string warning = TakeWarning();
  if (!whole) throw ToolError(input.Name() + ": the file is damaged or cut short, or isn't one of grids");
  if (!warning.empty()) throw ToolError(input.Name() + ": the header is damaged: " + warning);
  if (more) QZThrow.Info(input.Name() + ": more follows behind the grids, from byte " + QZNumberToString(end));
}

void addAxis(TextTable& table, const char* name, unsigned int points, float mid, float spacing) {
  const double half = (static_cast<double>(points) - 1.0) / 2.0 * static_cast<double>(spacing);
  const double center = static_cast<double>(mid);
  table.AddRow(
      {name, QZNumberToString(points), shortNumber(center - half), shortNumber(mid), shortNumber(center + half)});
}

void show(const QZMultiGrid<float>& grids) {
  const float spacing = grids.GetSpacing();
  TextTable axes({{"axis"}, {"points", true}, {"first", true}, {"centre", true}, {"last", true}});
  addAxis(axes, "x", grids.GetXDim(), grids.GetXMid(), spacing);
  addAxis(axes, "y", grids.GetYDim(), grids.GetYMid(), spacing);
  addAxis(axes, "z", grids.GetZDim(), grids.GetZMid(), spacing);
  axes.Write(qzout, TerminalWidth());
  qzout << "spacing " << shortNumber(spacing) << ", " << grids.GetSize()
        << (grids.GetSize() == 1 ? " point\n" : " points\n");

  TextTable table(
      {{"grid", true}, {"least", true}, {"mean", true}, {"greatest", true}, {"deviation", true}, {"NaN", true}});
  for (unsigned int n = 0; n < grids.GetNumGrids(); ++n) {
    CheckInterrupt();
    const NumberStats statistics = statisticsOf(grids.GetGrid(n));
    const auto shown = [&](double value) { return statistics.Count() > 0 ? shortNumber(value) : std::string(); };
    table.AddRow({QZNumberToString(n), shown(statistics.Least()), shown(statistics.Mean()),
                  shown(statistics.Greatest()), shown(statistics.Deviation()),
                  QZNumberToString(statistics.NaNCount())});
  }
  table.Write(qzout, TerminalWidth());
}

// What is to be painted, and how.
struct Painting {
  char axis = 'z';
  unsigned int number = 0;
  unsigned int zoom = 0;
  QZColor first, last;
};

Painting paintingOf(const QZInterface& settings) {
  Painting painting;
  const std::string text = TextSetting(settings, "-slice");
  if (text.size() < 3 || std::string("xyz").find(text[0]) == std::string::npos || text[1] != '=' ||
      text.find_first_not_of("0123456789", 2) != std::string::npos ||
      !QZStringToNumber(text.substr(2), painting.number)) {
    throw ToolError("-slice: '" + text + "' isn't x, y or z, =, and the number of a plane");
  }
  painting.axis = text[0];
  painting.zoom = CountSetting(settings, "-zoom");
  if (painting.zoom == 0) throw ToolError("-zoom: a point has at least one pixel");
  painting.first = ColorSetting(settings, "-first");
  painting.last = ColorSetting(settings, "-last");
  RefuseOption(settings, TextSetting(settings, "-out"));
  return painting;
}

// A plane of a grid as a picture has it: its value at a column, from the left, and a row, from the top.
class Plane {
 public:
  Plane(const QZFixedGrid<float>& shownGrid, char shownAxis, unsigned int plane)
      : grid(shownGrid), axis(shownAxis), number(plane) {
    const unsigned int x = grid.GetXDim(), y = grid.GetYDim(), z = grid.GetZDim();
    const unsigned int planes = axis == 'x' ? x : axis == 'y' ? y : z;
    if (number >= planes) {
      throw ToolError("-slice: the planes of " + std::string(1, axis) + " are 0 to " + QZNumberToString(planes - 1));
    }
    columns = axis == 'x' ? y : x;
    rows = axis == 'z' ? y : z;
  }

  unsigned int Columns() const { return columns; }
  unsigned int Rows() const { return rows; }
  float At(unsigned int column, unsigned int row) const {
    const unsigned int up = rows - 1 - row;
    if (axis == 'x') return grid.GetValue(number, column, up);
    if (axis == 'y') return grid.GetValue(column, number, up);
    return grid.GetValue(column, up, number);
  }

 private:
  const QZFixedGrid<float>& grid;
  char axis;
  unsigned int number;
  unsigned int columns = 0, rows = 0;
};

using Pixels = std::vector<unsigned char>;

Pixels paint(const Plane& plane, const QZColorGradientBase& gradient, unsigned int zoom) {
  Pixels pixels;
  pixels.reserve(std::size_t{3} * plane.Columns() * plane.Rows() * zoom * zoom);
  for (unsigned int row = 0; row < plane.Rows(); ++row) {
    const std::size_t begin = pixels.size();
    for (unsigned int column = 0; column < plane.Columns(); ++column) {
      const QZColor color = gradient.GetColorAt(static_cast<double>(plane.At(column, row)));
      for (unsigned int i = 0; i < zoom; ++i) pixels.insert(pixels.end(), color.GetRGBA(), color.GetRGBA() + 3);
    }
    const std::size_t end = pixels.size();
    for (unsigned int i = 1; i < zoom; ++i) {
      for (std::size_t at = begin; at < end; ++at) pixels.push_back(pixels[at]);
    }
    CheckInterrupt();
  }
  return pixels;
}

std::vector<unsigned char> pngOf(const Pixels& pixels, unsigned int width, unsigned int height) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = 0;
  std::vector<unsigned char> file;
  if (!png_image_write_to_memory(&image, nullptr, &size, 0, pixels.data(), 0, nullptr) ||
      (file.resize(size), !png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr))) {
    throw ToolError(std::string("Cannot make the picture: ") + image.message);
  }
  file.resize(size);
  return file;
}

void paintSlice(const QZInterface& settings, const QZMultiGrid<float>& grids, const Painting& painting) {
  const unsigned int number = CountSetting(settings, "-grid");
  if (number >= grids.GetNumGrids())
    throw ToolError("-grid: the grids are 0 to " + QZNumberToString(grids.GetNumGrids() - 1));
  const QZFixedGrid<float>& grid = grids.GetGrid(number);
  const Plane plane(grid, painting.axis, painting.number);
  const unsigned long width = std::size_t{plane.Columns()} * painting.zoom;
  const unsigned long height = std::size_t{plane.Rows()} * painting.zoom;
  if (width > mostPixels || height > mostPixels || width * height > mostPixels) {
    throw ToolError("-zoom: the picture would have more than " + QZNumberToString(mostPixels) + " pixels");
  }
  const auto [least, greatest] = rangeOf(grid);
  const QZLinearColorGradient gradient(QZColorStop(least, painting.first), QZColorStop(greatest, painting.last));
  const std::vector<unsigned char> file =
      pngOf(paint(plane, gradient, painting.zoom), static_cast<unsigned int>(width), static_cast<unsigned int>(height));
  Output output(TextSetting(settings, "-out"));
  output.Stream().write(file.data(), file.size());
  output.Finish();
}

void run(QZInterface& settings) {
  const bool paints = !TextSetting(settings, "-slice").empty();
  const bool hasOutput = !TextSetting(settings, "-out").empty();
  if (paints != hasOutput)
    throw ToolError(paints ? "-slice needs a file for the picture: -out" : "-out needs the plane to paint: -slice");
  const std::optional<Painting> painting = paints ? std::optional(paintingOf(settings)) : std::nullopt;
  QZMultiGrid<float> grids;
  readGrids(settings, grids);
  if (painting) {
    paintSlice(settings, grids, *painting);
  } else {
    show(grids);
  }
}

}  // namespace

int main(int argc, char** argv) { return RunTool(argc, argv, configuration, run); }
