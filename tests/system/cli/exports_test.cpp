#include "qz/system/cli/exports.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "qz/platform/memorystream.h"
#include "qz/system/cli/configure.h"
#include "qz/system/frame/error.h"

using namespace QZSystem;

namespace {

void configure(QZInterface& itf, const char* text) {
  ASSERT_TRUE(QZConfigure(itf, reinterpret_cast<const unsigned char*>(text)));
}

template <class Write>
std::string written(Write write) {
  qzosstream out;
  EXPECT_TRUE(write(out));
  return out.str();
}

TEST(Exports, WriteJSON) {
  QZInterface itf;
  configure(itf,
            "!PARAMETER -n\n!TYPE int\n!ALIAS -count\n!DEFAULT 1\n!LEGAL_RANGE 0 5\n!END\n"
            "!CATEGORY Out 3\n!DETAIL\na \"b\" \\c\n!END\n");
  std::string text = written([&](qzostream& out) { return QZWriteJSON(itf, out); });
  std::replace(text.begin(), text.end(), '\n', '|');
  EXPECT_EQ(text,
            R"({|"name" : "",|"order" : 0,|"brief" : "",|"detail" : [],|"params" : [|{|"name" : "-n",|"order" : 0,|)"
            R"("type" : "int",|"list" : false,|"alias" : ["-count"],|"default" : ["1"],|"required" : false,|)"
            R"("input" : 0,|"output" : false,|"visibility" : "normal",|"keyless" : 0,|"legal_value" : [],|)"
            R"("illegal_value" : [],|"legal_range" : [["0","5"]],|"illegal_range" : [],|"element" : "",|)"
            R"("command" : "",|"brief" : "",|"detail" : []|}],|"interfaces" : [|{|"name" : "Out",|"order" : 3,|)"
            R"("brief" : "",|"detail" : ["a \"b\" \\c"],|"params" : [|]}|]|}|)");
}

TEST(Exports, WriteHtml) {
  QZInterface itf;
  configure(itf,
            "!PARAMETER -in\n!TYPE string\n!REQUIRED true\n!SIMPLE true\n!BRIEF Read by -n times\n!END\n"
            "!CATEGORY Out 3\n!BRIEF What comes out\n"
            "!PARAMETER -n\n!TYPE int\n!LIST true\n!DEFAULT 1\n!DEFAULT 2\n!LEGAL_RANGE 0 5\n!ILLEGAL_VALUE 3\n"
            "!DETAIL\n  See :ref:$this page$a.html$ or -in\n  ab\n!END\n"
            "!PARAMETER -h\n!TYPE bool\n!VISIBILITY hidden\n!END\n!END\n");
  EXPECT_EQ(
      written([&](qzostream& out) { return QZWriteHtml(itf, out, "convert", "2.1"); }),
      "<html>\n<head>\n<title> Help for Convert version 2.1\n</title>\n</head>\n<body>\n"
      "<a name=\"top_of_file\"></a><font size=\"6\">Help for Convert version 2.1\n</font>\n<hr>\n"
      "<font size=\"5\"><b><u>Parameter list</u></b></font> - Simple parameters are listed in boldface.  Defaults are "
      "listed in parenthesis.<br>"
      "<blockquote><b><a href=#-in>-in</a></b> : Read by <a href=#-n>-n</a> times <br><br>\n<br>"
      "<u><a href=#Out>Out</a></u> : What comes out <br>\n"
      "<blockquote><a href=#-n>-n</a> (1 2) : No brief description available\n<br>\n<br></blockquote></blockquote>"
      "<a href=#top_of_file>Top</a> of page<br>"
      "<hr><font size=\"4\"><u>Parameter : <a name=\"-in\">-in</a></font></u><br><blockquote>"
      "Type : string<br>List allowed : false<br>Simple : yes<br>Required : yes<br>"
      "Brief : Read by <a href=#-n>-n</a> times <br><br><a href=#top_of_file>Top</a></blockquote>"
      "<hr><font size=\"4\"><u>Category : <a name=\"Out\">Out</a></font></u><br><blockquote>"
      "Parameters : <a href=#-n>-n</a>   <br>Parent Category : <a href=#top_of_file>Top level</a><br>"
      "Brief : What comes out <br><br><a href=#top_of_file>Top</a></blockquote>"
      "<hr><font size=\"4\"><u>Parameter : <a name=\"-h\">-h</a></font></u><br><blockquote>"
      "Type : bool<br>List allowed : false<br>Category : <a href=#Out>Out</a><br>Parameter is hidden <br>"
      "Required : no<br><br><a href=#top_of_file>Top</a></blockquote>"
      "<hr><font size=\"4\"><u>Parameter : <a name=\"-n\">-n</a></font></u><br><blockquote>"
      "Type : int<br>List allowed : true<br>Category : <a href=#Out>Out</a><br>Default : 1 2<br>Simple : no<br>"
      "Required : no<br>Legal Ranges : <br><blockquote>0 to 5<br></blockquote>Illegal Values : 3<br>"
      "<u> Detailed description</u><br><blockquote>"
      "<p>See <a href=a.html>this page</a> or -in</p> <br>\n</blockquote>"
      "<br><a href=#top_of_file>Top</a></blockquote>"
      "</body>\n</html>\n");
}

TEST(Exports, WarnOfNamesThatOccurTwice) {
  QZInterface itf;
  configure(itf, "!PARAMETER A\n!TYPE int\n!END\n!CATEGORY A\n!CATEGORY B\n!END\n!END\n");
  itf.AddInterface()->SetName("B");
  qzosstream messages;
  QZThrow.SetOutputStream(messages);
  const std::string page = written([&](qzostream& out) { return QZWriteHtml(itf, out, "", ""); });
  QZThrow.SetOutputStream(qzerr);
  EXPECT_EQ(messages.str(),
            "Warning: Problem with interface auto-links in html file\n"
            "Warning: Problem with parameter auto-links in html file\n");
  EXPECT_EQ(page.rfind("<html>\n<head>\n</head>\n<body>\n<a name=\"top_of_file\"></a><font size=\"6\"></font>\n", 0),
            0U)
      << page;
}

TEST(Exports, WriteLatexItems) {
  QZInterface itf;
  configure(itf,
            "!PARAMETER -n\n!TYPE int\n!ALIAS -a\n!ALIAS -b\n!ALIAS -c\n!LEGAL_VALUE 1\n!LEGAL_VALUE 2\n"
            "!ILLEGAL_VALUE 7\n!LEGAL_RANGE 0 5\n!ILLEGAL_RANGE 8 9\n!ILLEGAL_RANGE 11 12\n!BRIEF How many\n"
            "!DETAIL\n  More\n!END\n");
  const QZParameter& n = *itf.GetParameter("-n");
  EXPECT_EQ(written([&](qzostream& out) { return QZWriteParameterLatex(n, out); }),
            "\n\\item[\\code{-n}] How many \n\n\\begin{description}\n"
            "\n\\item[\\code{Aliases}] -a, -b and -c\n"
            "\n\\item[\\code{Type}] int\n"
            "\n\\item[\\code{Default}] No default\n"
            "\n\\item[\\code{Legal Values}] 1 and 2\n"
            "\n\\item[\\code{Illegal Value}] 7\n"
            "\n\\item[\\code{LegalRange}] (0 to 5)\n"
            "\n\\item[\\code{IllegalRanges}] (8 to 9) and (11 to 12)\n"
            "\n\\end{description}\n\nMore\n\n");
}

}  // namespace
