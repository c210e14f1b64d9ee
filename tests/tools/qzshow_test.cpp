#include "tests/tools/toolrun.h"

using namespace QZTools;

namespace {

class Show : public ToolRun {
 protected:
  void SetUp() override { write("n.csv", "name,mass,spin\nH-1,1.5,1/2+\nC-14,14,\nÅ,2.25,\"a\nb\"\n"); }
};

TEST_F(Show, AlignsTheFirstRows) {
  EXPECT_EQ(run("qzshow n.csv").out,
            "name  mass  spin\n"
            "H-1    1.5  1/2+\n"
            "C-14    14\n"
            "Å     2.25  a\\nb\n");
  EXPECT_EQ(run("qzshow -rows 1 n.csv").out, "name  mass  spin\nH-1    1.5  1/2+\nand more rows; see -rows\n");
  write("empty.csv", "a,b\n");
  EXPECT_EQ(run("qzshow empty.csv").out, "no records\n");
}

TEST_F(Show, FitsTheTerminal) {
  write("w.csv", "a,b,c\n" + std::string(50, 'x') + "," + std::string(50, 'y') + ",1\n");
  EXPECT_EQ(run("COLUMNS=30 qzshow w.csv").out, "a             b              c\nxxxxxxxxxxx…  yyyyyyyyyyyy…  1\n");
  EXPECT_EQ(run("COLUMNS=19 qzshow w.csv").out, "a         b\nxxxxxxx…  yyyyyyy…\nand 1 more column:\n  c\n");
}

TEST_F(Show, TellsTheFields) {
  ASSERT_EQ(run("qzconvert -meta mass:Units.Mass.Da n.csv n.qzr").status, 0);
  EXPECT_EQ(run("qzshow -schema n.qzr").out,
            "name  type    values  nulls  missing  metadata\n"
            "name  String       3      0        0\n"
            "mass  Float        3      0        0  Units.Mass.Da\n"
            "spin  String       2      1        0\n"
            "3 records\n");
}

TEST_F(Show, TellsTheStatistics) {
  EXPECT_EQ(run("COLUMNS=120 qzshow -stats n.csv").out,
            "number  count  nulls  least  mean  greatest  deviation  histogram\n"
            "mass        3      0    1.5  5.92        14       7.01  █      ▄\n"
            "text  count  nulls  distinct  most frequent\n"
            "name      3      0         3  C-14 (1), H-1 (1), Å (1)\n"
            "spin      2      1         2  1/2+ (1), a\\nb (1)\n"
            "3 records\n");
}

TEST_F(Show, TakesRecordsThatDisagreeAboutAType) {
  write("a.jsonl",
        "{\"version\":[1,0],\"fields\":[{\"name\":\"x\",\"type\":\"Int\",\"idx\":1,\"value\":1}]}\n"
        "{\"version\":[1,0],\"fields\":[{\"name\":\"x\",\"type\":\"String\",\"idx\":1,\"value\":\"one\"}]}\n");
  EXPECT_EQ(run("qzshow -schema a.jsonl").out,
            "name  type            values  nulls  missing  metadata\n"
            "x     Int and others       2      0        0\n"
            "2 records\n");
  EXPECT_EQ(run("qzshow -stats a.jsonl").out,
            "number  count  nulls  least  mean  greatest  deviation  histogram\n"
            "x           1      0      1     1         1          0  █\n"
            "text  count  nulls  distinct  most frequent\n"
            "x         1      0         1  one (1)\n"
            "2 records\n");
}

}  // namespace
