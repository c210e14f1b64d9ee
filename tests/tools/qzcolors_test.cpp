#include "tests/tools/toolrun.h"

using namespace QZTools;

namespace {

class Colors : public ToolRun {
 protected:
  static std::size_t count(const std::string& text, const std::string& part) {
    std::size_t times = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++times;
    return times;
  }
  static std::string bar(const std::string& caption, const std::vector<std::string>& colors) {
    std::string text = "<figure class=\"bars\"><div class=\"bar\">";
    for (const std::string& color : colors) text += "<i style=\"background:" + color + "\"></i>";
    return text + "</div><figcaption>" + caption + "</figcaption></figure>\n";
  }
};

TEST_F(Colors, BarsGoFromTheFirstColorToTheLast) {
  ASSERT_EQ(run("qzcolors -first black -last '#ff00ff00' -count 3 -exponent 3 page.html").status, 0);
  const std::string page = read("page.html");
  const std::string black = "#000000ff", last = "#ff00ff00";
  EXPECT_NE(
      page.find("<h2>Gradients from #000000ff to #ff00ff00, values from 0 to 5</h2>\n" +
                bar("linear", {black, "#7f007f7f", last}) + bar("exponential", {black, "#130013eb", last}) +
                bar("logarithmic", {black, "#b200b24c", last}) + bar("power, exponent 3", {black, "#1f001fdf", last}) +
                bar("blend in 3 steps", {black, "#7f007f7f", last})),
      std::string::npos)
      << page;
}

TEST_F(Colors, EachSetHasItsSwatches) {
  const std::string page = run("qzcolors -").out;
  EXPECT_EQ(page.substr(0, 16), "<!DOCTYPE html>\n");
  EXPECT_EQ(page.substr(page.size() - 16), "</body>\n</html>\n");
  EXPECT_EQ(count(page, "<div class=\"color\">"), 8U + 8 + 8 + 22 + 61);
  EXPECT_EQ(count(page, "<i style"), 5 * 32U + 8 + 8 + 8 + 22 + 61);
  EXPECT_EQ(count(page, "<h2>"), 6U);
  for (const char* swatch :
       {"<figcaption>QZSkyBlue<br><code>#3a90ff</code>", "<figcaption>QZTransparentColor<br><code>#ffffff00</code>",
        "<figcaption>7<br><code>#bc99b9</code>", "<figcaption>21<br><code>#263120</code>"}) {
    EXPECT_EQ(count(page, swatch), 1U) << swatch;
  }
}

TEST_F(Colors, TellsWhatIsNoColor) {
  const std::pair<const char*, const char*> cases[] = {
      {"-first bleu", "'bleu' is no colour; did you mean Blue?"},
      {"-last '#12345'", "'#12345' is no colour; give it as #rrggbb or by name"},
      {"-last '#12345g'", "'#12345g' is no colour; give it as #rrggbb or by name"},
      {"-first ''", "'' is no colour; give it as #rrggbb or by name"},
  };
  for (const auto& [option, message] : cases) {
    const std::string key = std::string(option).substr(0, std::string(option).find(' '));
    EXPECT_EQ(refusal(std::string("qzcolors ") + option + " page.html"), "Fatal: " + key + ": " + message + "\n");
  }
  for (const char* arguments : {"-count 0", "-count 1001", "-exponent 0", "-exponent 11", ""}) {
    EXPECT_EQ(run("qzcolors " + std::string(arguments) + (*arguments ? " page.html" : " -count 5")).status, 1)
        << arguments;
  }
  EXPECT_FALSE(exists("page.html"));
  EXPECT_EQ(run("qzcolors -first QZRED -last skyblue -count 1 page.html").messages, "");
}

}  // namespace
