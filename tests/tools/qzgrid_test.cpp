#include <png.h>

#include <limits>
#include <numeric>

#include "qz/platform/memorystream.h"
#include "qz/system/objects/qzbgrid.h"
#include "tests/tools/toolrun.h"

using namespace QZSystem;
using namespace QZTools;

namespace {

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

// Red, green and blue of each pixel, a row a line: "000 f00 / fff 123", each channel cut to a digit.
std::string picture(const std::string& png) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, png.data(), png.size())) return image.message;
  image.format = PNG_FORMAT_RGB;
  std::vector<unsigned char> pixels(std::size_t{3} * image.width * image.height);
  if (!png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) return image.message;
  std::string shown;
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    if (i > 0 && i % 3 == 0) shown += i % (3 * image.width) == 0 ? " / " : " ";
    shown += "0123456789abcdef"[pixels[i] / 16];
  }
  return shown;
}

// Two grids of 2 by 3 by 2: the first has the values 0 to 11, the second 0 throughout and one NaN.
class Grid : public ToolRun {
 protected:
  void SetUp() override {
    QZMultiGrid<float> grids(QZGridBase(2, 3, 2, 1.0F, -2.0F, 0.5F, 0.25F, ""), 2);
    std::iota(grids.GetGrid(0).GetValues(), grids.GetGrid(0).GetValues() + 12, 0.0F);
    grids.GetGrid(1).SetValue(1, 2, 1, NaN);
    write("two.grid", bytesOf(grids));
  }

  static std::string bytesOf(const QZMultiGrid<float>& grids) {
    qzosstream out;
    EXPECT_TRUE(QZWriteOldStyleGrid(out, grids, 0));
    return out.str();
  }

  std::string paint(const std::string& options) {
    const Outcome outcome = run("qzgrid -first '#000000' " + options + " -out a.png two.grid");
    EXPECT_EQ(outcome.messages, "");
    EXPECT_EQ(outcome.out, "");
    return picture(read("a.png"));
  }
};

TEST_F(Grid, TellsGeometryAndStatistics) {
  const std::string expected =
      "axis  points  first  centre   last\n"
      "x          2  0.875       1  1.125\n"
      "y          3  -2.25      -2  -1.75\n"
      "z          2  0.375     0.5  0.625\n"
      "spacing 0.25, 12 points\n"
      "grid  least  mean  greatest  deviation  NaN\n"
      "   0      0   5.5        11    3.60555    0\n"
      "   1      0     0         0          0    1\n";
  EXPECT_EQ(run("qzgrid two.grid").out, expected);
  EXPECT_EQ(run("qzgrid - <two.grid").out, expected);
  EXPECT_EQ(run("cat two.grid | qzgrid -").out, expected);
  const Outcome more = run("cat two.grid two.grid >four.grid; qzgrid four.grid");
  EXPECT_EQ(more.out, expected);
  EXPECT_EQ(more.messages, "four.grid: more follows behind the grids, from byte 145\n");
}

// Digits are a sixteenth of the channel, so a step of the value is one.
TEST_F(Grid, PaintsAPlaneWithItsSecondAxisUp) {
  EXPECT_EQ(paint("-slice z=0 -zoom 1 -last '#b0b0b0'"), "444 555 / 222 333 / 000 111");
  EXPECT_EQ(paint("-slice z=1 -zoom 1 -last '#b0b0b0'"), "aaa bbb / 888 999 / 666 777");
  EXPECT_EQ(paint("-slice y=2 -zoom 1 -last '#b0b0b0'"), "aaa bbb / 444 555");
  EXPECT_EQ(paint("-slice x=1 -zoom 1 -last '#b0b0b0'"), "777 999 bbb / 111 333 555");
  EXPECT_EQ(paint("-slice x=1 -zoom 2 -last '#b0b0b0'"),
            "777 777 999 999 bbb bbb / 777 777 999 999 bbb bbb / "
            "111 111 333 333 555 555 / 111 111 333 333 555 555");
  EXPECT_EQ(paint("-slice y=2 -grid 1 -last '#f08040' -zoom 1"), "f84 fff / f84 f84");
}

TEST_F(Grid, RefusesWhatItCannotPaint) {
  const std::pair<const char*, const char*> cases[] = {
      {"-slice z=0", "-slice needs a file for the picture: -out"},
      {"-out a.png", "-out needs the plane to paint: -slice"},
      {"-out a.png -slice z", "-slice: 'z' isn't x, y or z, =, and the number of a plane"},
      {"-out a.png -slice z=2", "-slice: the planes of z are 0 to 1"},
      {"-out a.png -slice y=99999999999", "-slice: 'y=99999999999' isn't x, y or z, =, and the number of a plane"},
      {"-out a.png -slice z=0 -grid 2", "-grid: the grids are 0 to 1"},
      {"-out a.png -slice z=0 -zoom 0", "-zoom: a point has at least one pixel"},
      {"-out a.png -slice z=0 -zoom 5000", "-zoom: the picture would have more than 100000000 pixels"},
      {"-out a.png -slice z=0 -last '#12345'", "-last: '#12345' is no colour; give it as #rrggbb or by name"},
  };
  for (const auto& [options, message] : cases)
    EXPECT_EQ(refusal(std::string("qzgrid ") + options + " two.grid"), std::string("Fatal: ") + message + "\n");
  EXPECT_FALSE(exists("a.png"));
  EXPECT_EQ(refusal("qzgrid -slice z=0 -out nosuch/a.png two.grid"),
            "Fatal: Cannot write nosuch/a.png: No such file or directory\n");
  EXPECT_EQ(refusal("qzgrid -slice z=0 -out - two.grid >/dev/full"),
            "Fatal: Cannot write standard output: No space left on device\n");
}

TEST_F(Grid, RefusesADamagedFile) {
  const std::string whole = read("two.grid");
  const char* const damaged = "Fatal: bad.grid: the file is damaged or cut short, or isn't one of grids\n";
  for (const std::string& bytes : {std::string(), std::string("a text that is no grid"), whole.substr(0, 40),
                                   whole.substr(0, whole.size() - 1), "x" + whole.substr(1)}) {
    write("bad.grid", bytes);
    EXPECT_EQ(refusal("qzgrid bad.grid"), damaged) << bytes.size();
  }
  write("bad.grid", whole.substr(0, 40) + std::string("\0\0\xC0\x7F", 4) + whole.substr(44));
  EXPECT_EQ(refusal("qzgrid bad.grid"),
            "Fatal: bad.grid: the header is damaged: SetSpacing unable to handle NaN: nan\n");
  EXPECT_EQ(refusal("qzgrid nosuch.grid"), "Fatal: Cannot open nosuch.grid: No such file or directory\n");
}

}  // namespace
