// Shows the colours of the library, its colour sets and its gradients on one HTML page.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qz/system/util/color.h"
#include "qz/system/util/colorgradient.h"
#include "tools/common/colors.h"
#include "tools/common/files.h"
#include "tools/common/tool.h"
#include "tools/common/toolerror.h"

using namespace QZSystem;
using namespace QZTools;

namespace {

constexpr const char* configuration = R"(
!BRIEF Show the named colours, the colour sets and the gradients on an HTML page
!PARAMETER -out 1
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !OUTPUT true
  !SIMPLE true
  !BRIEF The page to write, - for standard output
!END
!PARAMETER -first 2
  !TYPE string
  !DEFAULT #27325f
  !SIMPLE true
  !BRIEF The colour that the gradients begin with, as #rrggbb or by name
!END
!PARAMETER -last 3
  !TYPE string
  !DEFAULT #e8d664
  !SIMPLE true
  !BRIEF The colour that they end with
!END
!PARAMETER -count 4
  !TYPE unsigned
  !DEFAULT 32
  !LEGAL_RANGE 1 1000
  !SIMPLE true
  !BRIEF How many colours each bar shows
!END
!PARAMETER -exponent 5
  !TYPE double
  !DEFAULT 2
  !LEGAL_RANGE 0.1 10
  !SIMPLE true
  !BRIEF The exponent of the gradient that is a power of its value
!END
)";

// The values that the bars go along: far enough for the kinds to differ.
constexpr double greatestValue = 5;

// Colours lie over squares in two greys, so that one that lets light through shows them.
constexpr const char* head = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>Colours</title>
<style>
body { font: 14px/1.4 sans-serif; margin: 2em auto; max-width: 72em; padding: 0 1em; color: #222; background: #fff; }
h1 { font-size: 1.5em; } h2 { font-size: 1.15em; margin: 1.6em 0 .5em; }
.set { display: grid; grid-template-columns: repeat(auto-fill, minmax(7.5em, 1fr)); gap: .8em; }
.color, .bar { background: repeating-conic-gradient(#bbb 0 25%, #fff 0 50%) 0 0/12px 12px; border: 1px solid #999; }
.color { height: 3.2em; } .color i, .bar i { display: block; height: 100%; }
.bar { display: flex; height: 2.4em; } .bar i { flex: 1; }
figure { margin: 0; } figure.bars { margin-bottom: 1em; } figcaption { overflow-wrap: anywhere; }
code { color: #555; }
</style>
</head>
<body>
<h1>Colours</h1>
)";

std::string shortNumber(double value) {
  std::string text;
  QZNumberToString(value, text, 'g', 3);
  return text;
}

void writeCell(qzostream& out, const QZColor& color) {
  out << "<i style=\"background:" << color.GetText(true) << "\"></i>";
}

void writeSwatch(qzostream& out, const std::string& name, const QZColor& color) {
  out << "<figure><div class=\"color\">";
  writeCell(out, color);
  out << "</div><figcaption>" << name << "<br><code>" << color.GetText(color.GetA() != 255)
      << "</code></figcaption></figure>\n";
}

void writeHeading(qzostream& out, const std::string& text) { out << "<h2>" << text << "</h2>\n"; }

void writeNamedColors(qzostream& out) {
  writeHeading(out, "Named colours");
  out << "<div class=\"set\">\n";
  for (const NamedColor& each : NamedColors()) writeSwatch(out, each.name, each.color);
  out << "</div>\n";
}

// The swatches are numbered as the functions of the set count.
void writeSet(qzostream& out, const std::string& name, QZIterBase<QZColor>* colors) {
  writeHeading(out, name);
  out << "<div class=\"set\">\n";
  unsigned int number = 0;
  for (const QZColor& color : QZIter(colors)) writeSwatch(out, QZNumberToString(number++), color);
  out << "</div>\n";
}

void writeBar(qzostream& out, const std::string& caption, QZIterBase<QZColor>* colors) {
  out << "<figure class=\"bars\"><div class=\"bar\">";
  for (const QZColor& color : QZIter(colors)) writeCell(out, color);
  out << "</div><figcaption>" << caption << "</figcaption></figure>\n";
}

std::vector<QZColor> along(const QZColorGradientBase& gradient, unsigned int count) {
  std::vector<QZColor> colors;
  const double step = count > 1 ? greatestValue / (count - 1) : 0;
  for (unsigned int i = 0; i < count; ++i) colors.push_back(gradient.GetColorAt(i * step));
  return colors;
}

void writeGradients(qzostream& out, const QZColor& first, const QZColor& last, unsigned int count, double exponent) {
  const QZColorStop low(0, first), high(greatestValue, last);
  const QZLinearColorGradient linear(low, high);
  const QZExponentialColorGradient exponential(low, high);
  const QZLogarithmicColorGradient logarithmic(low, high);
  const QZExponentColorGradient power(exponent, low, high);
  const std::pair<std::string, const QZColorGradientBase*> kinds[] = {
      {"linear", &linear},
      {"exponential", &exponential},
      {"logarithmic", &logarithmic},
      {"power, exponent " + shortNumber(power.GetExponent()), &power}};
  writeHeading(out, "Gradients from " + first.GetText(true) + " to " + last.GetText(true) + ", values from 0 to " +
                        shortNumber(greatestValue));
  for (const auto& [name, gradient] : kinds) writeBar(out, name, QZGetColors(along(*gradient, count)));
  writeBar(out, "blend in " + QZNumberToString(count) + (count == 1 ? " step" : " steps"),
           QZGetColors(first, last, count));
}

void show(QZInterface& settings) {
  const QZColor first = ColorSetting(settings, "-first");
  const QZColor last = ColorSetting(settings, "-last");
  double exponent = 1;
  QZStringToNumber(TextSetting(settings, "-exponent"), exponent);
  Output output(TextSetting(settings, "-out"));
  qzostream& out = output.Stream();
  out << head;
  writeGradients(out, first, last, CountSetting(settings, "-count"), exponent);
  writeSet(out, "Light colours", QZGetLightColors());
  writeSet(out, "Vivid colours", QZGetVividColors());
  writeSet(out, "Deep colours", QZGetDeepColors());
  writeSet(out, "Contrast colours", QZGetContrastColors(true));
  writeNamedColors(out);
  out << "</body>\n</html>\n";
  output.Finish();
}

}  // namespace

int main(int argc, char** argv) { return RunTool(argc, argv, configuration, show); }
