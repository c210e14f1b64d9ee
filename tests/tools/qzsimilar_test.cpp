#include <algorithm>

#include "tests/tools/toolrun.h"
#include "tools/common/fingerprint.h"

using namespace QZTools;

namespace {

class Similar : public ToolRun {
 protected:
  // Bits 0-7, 0-3, 4-11, none, 0-7 and 100.
  void SetUp() override {
    write("p.csv", "name,fingerprint\na,FFJ\nb,F0J\nc,0FFJ\nd,\ne,FF00J\nf,0000000000000000000000000001J\n");
  }

  std::string refusal(const std::string& arguments) { return ToolRun::refusal("qzsimilar " + arguments); }
};

TEST_F(Similar, TheMostSimilarComeFirst) {
  const std::string head = "similarity  record  name\n";
  EXPECT_EQ(run("qzsimilar name=a p.csv").out,
            head +
                "    1.0000       1  a\n    1.0000       5  e\n    0.5000       2  b\n    0.3333       3  c\n"
                "    0.0000       6  f\n");
  EXPECT_EQ(run("qzsimilar -n 1 FFJ p.csv").out, head + "    1.0000       1  a\n");
  EXPECT_EQ(run("qzsimilar -min 0.5 ff p.csv").out,
            head + "    1.0000       1  a\n    1.0000       5  e\n    0.5000       2  b\n");
  EXPECT_EQ(run("qzsimilar -min 0.9 0F p.csv").out, head + "    1.0000       2  b\n");
  EXPECT_EQ(run("qzsimilar -min 0.9 F0F p.csv").out, "no similar records\n");
  EXPECT_EQ(run("qzsimilar -n 0 FF p.csv").out, "no similar records\n");
}

TEST_F(Similar, EachRecordOfAFileIsAQuery) {
  write("q.csv", "label,bits\nx,F0J\ny,\nz,0FFJ\n");
  EXPECT_EQ(run("sed 's/name,fingerprint/label,bits/' p.csv >s.csv; "
                "qzsimilar -field bits -name label -n 1 -out - -outformat csv q.csv s.csv")
                .out,
            "query,name,record,similarity\nx,b,2,1\nz,c,3,1\n");
}

TEST_F(Similar, FingerprintsAreMadeOfTexts) {
  const std::string elements = " '" QZ_DATA "/elements.csv'";
  const std::string direct = run("qzsimilar -n 4 -text name,configuration,family name=Gold" + elements).out;
  EXPECT_EQ(direct.substr(0, direct.find('1', 60)),
            "similarity  record  name\n    1.0000      79  Gold\n    0.6316      80  Mercury\n    0.5366      78  "
            "Platinum\n    0.4878      76  Osmium\n");
  EXPECT_EQ(run("qzsimilar -text name,configuration,family -prints e.qzr -in" + elements +
                " && qzsimilar -n 4 name=Gold e.qzr")
                .out,
            direct);
}

TEST_F(Similar, AnyNumberOfThreadsFindsTheSame) {
  std::string table = "name,fingerprint\n";
  for (unsigned int i = 0; i < 20000; ++i) {
    QZSystem::QZBitVector print(512);
    for (unsigned int k = 0; k < 40; ++k) print.SetBit((i * i * 7 + k * k * (i % 11 + 1)) % 512);
    std::string text;
    print.ToHexString(text);
    table += "n" + std::to_string(i) + "," + text + "\n";
  }
  write("many.csv", table);
  const std::string command = "qzsimilar -n 50 -out - -outformat csv -threads ";
  const std::string one = run(command + "1 name=n777 many.csv").out;
  EXPECT_EQ(std::count(one.begin(), one.end(), '\n'), 51);
  for (const char* threads : {"2", "7", "0"})
    EXPECT_EQ(run(command + threads + " name=n777 many.csv").out, one) << threads;

  // A fault far into the file is told with its place.
  write("bad.csv", table + "last,xyz\n");
  for (const char* threads : {"1", "7"}) {
    EXPECT_EQ(refusal(std::string("-threads ") + threads + " F0J bad.csv"),
              "Fatal: bad.csv: line 20002 (record 20001), field fingerprint: 'xyz' is no fingerprint in hexadecimal "
              "digits; see -field and -text\n");
  }
}

TEST_F(Similar, SaysWhatIsWrong) {
  write("q.csv", "name,other\nx,1\n");
  const std::pair<const char*, const char*> cases[] = {
      {"-in p.csv", "Fatal: Give what to look for as -query (or first)\n"},
      {"hello p.csv", "Fatal: -query: hello is neither a file of records, nor field=text, nor a fingerprint\n"},
      {"q.csv p.csv", "Fatal: q.csv: no record has a fingerprint; see -field and -text\n"},
      {"name=z p.csv", "Fatal: p.csv: no record with a fingerprint has name=z\n"},
      {"name=a -", "Fatal: Standard input can't be searched for the query as well\n"},
      {"-min 1.5 FFJ p.csv", "Fatal: -min: 1.5 isn't from 0 to 1\n"},
  };
  for (const auto& [arguments, message] : cases) EXPECT_EQ(refusal(arguments), message);
}

TEST(Fingerprint, HexadecimalTextIsTakenWhole) {
  const std::pair<const char*, long> cases[] = {{"", -1},         {"J", 0},     {"FF", 8},   {"fFJ", 8},
                                                {"F\nF1I\n", -1}, {"F\n1I", 5}, {"FJF", -1}, {"xF", -1},
                                                {"G", -1},        {"F-", -1},   {"F F", 8},  {"0x1", -1}};
  for (const auto& [text, size] : cases) {
    const auto print = PrintOfHex(text);
    EXPECT_EQ(print ? static_cast<long>(print->GetSize()) : -1, size) << text;
  }
}

TEST(Fingerprint, TextsOfTheSameGroupsAreTheSame) {
  QZSystem::QZBitVector iron(2048), same(2048), none(2048);
  AddTrigrams(iron, "Iron");
  AddTrigrams(same, "iron iron");
  AddTrigrams(none, "");
  EXPECT_EQ(iron.CountBits(), 4U);
  EXPECT_EQ((iron & same), iron);
  EXPECT_TRUE(none.IsEmpty());
}

}  // namespace
