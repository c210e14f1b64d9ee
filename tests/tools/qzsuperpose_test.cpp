#include "tests/tools/toolrun.h"

using namespace QZTools;

namespace {

// A set of points, and the same turned by a quarter about the z axis, then moved by (1, 2, 3).
class Superpose : public ToolRun {
 protected:
  void SetUp() override {
    write("a.csv", "name,x,y,z\no,0,0,0\np,1,0,0\nq,0,2,0\nr,0,0,3.5\n");
    write("b.csv", "name,x,y,z\no,1,2,3\np,1,3,3\nq,-1,2,3\nr,1,2,6.5\n");
  }
};

TEST_F(Superpose, TellsTheMotion) {
  for (const char* method : {"", "-method polynomial ", "-method jacobi "}) {
    const Outcome outcome = run(std::string("qzsuperpose ") + method + "a.csv b.csv | sed 's/RMS .*e-.*/RMS    0/'");
    EXPECT_EQ(outcome.out,
              "points 4\n"
              "RMS    0\n"
              "\n"
              " rotation                      translation\n"
              " 0.000000  1.000000  0.000000           -2\n"
              "-1.000000  0.000000  0.000000            1\n"
              " 0.000000  0.000000  1.000000           -3\n")
        << method;
    EXPECT_EQ(outcome.messages, "") << method;
  }
}

// The points of b lie twice as far apart as those of a: each of the two stays 1 away.
TEST_F(Superpose, TellsWhatRemains) {
  write("short.tsv", "x\ty\tz\n0\t0\t0\n2\t0\t0\n");
  write("long.tsv", "x\ty\tz\n5\t0\t0\n9\t0\t0\n");
  EXPECT_EQ(run("qzsuperpose short.tsv long.tsv").out.substr(0, 18), "points 2\nRMS    1\n");
}

TEST_F(Superpose, WritesTheMovedPointsWithWhatTheyCarry) {
  ASSERT_EQ(run("qzsuperpose -out m.csv a.csv b.csv").status, 0);
  const std::string moved = run("qzsuperpose -out - -outformat csv a.csv b.csv").out;
  EXPECT_EQ(read("m.csv"), moved);
  EXPECT_EQ(moved.substr(0, 11), "name,x,y,z\n");
  // They lie where the points of a do, and so don't move again.
  EXPECT_EQ(run("qzsuperpose a.csv m.csv").out,
            "points 4\n"
            "RMS    0\n"
            "\n" +
                run("qzsuperpose a.csv a.csv | tail -n 4").out);
  EXPECT_EQ(run("cut -d, -f1 m.csv").out, "name\no\np\nq\nr\n");
}

TEST_F(Superpose, ReadsRecordsOfAnyFormat) {
  ASSERT_EQ(run("qzconvert a.csv a.qzr && qzconvert b.csv b.jsonl").status, 0);
  const std::string expected = run("qzsuperpose a.csv b.csv").out;
  EXPECT_EQ(run("qzsuperpose a.qzr b.jsonl").out, expected);
  EXPECT_EQ(run("qzsuperpose -informat csv a.csv - <b.csv").out, expected);
}

// A pair of weight 0 plays no part, whichever file says so; the first file's weights go before the second's.
TEST_F(Superpose, WeighsPairs) {
  write("w.csv", "x,y,z,weight\n0,0,0,1\n1,0,0,1\n0,2,0,1\n0,0,3.5,1\n50,50,50,0\n");
  write("v.csv", "x,y,z\n1,2,3\n1,3,3\n-1,2,3\n1,2,6.5\n-9,0,0\n");
  write("u.csv", "x,y,z,weight\n1,2,3,7\n1,3,3,7\n-1,2,3,7\n1,2,6.5,7\n-9,0,0,7\n");
  for (const char* files : {"w.csv v.csv", "v.csv w.csv", "w.csv u.csv"}) {
    EXPECT_EQ(run(std::string("qzsuperpose ") + files).out.substr(0, 18), "points 5\nRMS    0\n") << files;
  }
  EXPECT_NE(run("qzsuperpose u.csv w.csv").out.substr(0, 18), "points 5\nRMS    0\n");
}

TEST_F(Superpose, SaysWhatIsWrong) {
  const std::pair<const char*, const char*> files[] = {{"two.csv", "x,y,z\n1,2,3\n4,5,6\n"},
                                                       {"one.csv", "x,y,z\n1,2,3\n"},
                                                       {"none.csv", "x,y,z\n"},
                                                       {"text.csv", "x,y,z\n1,2,3\n4,here,6\n"},
                                                       {"empty.csv", "x,y,z\n1,2,3\n4,,6\n"},
                                                       {"inf.csv", "x,y,z\n1,2,inf\n"},
                                                       {"flat.csv", "x,y\n1,2\n"},
                                                       {"minus.csv", "x,y,z,weight\n1,2,3,-1\n"}};
  for (const auto& [name, content] : files) write(name, content);
  const std::pair<const char*, const char*> cases[] = {
      {"one.csv two.csv", "one.csv has 1 point, two.csv has 2 points: each point needs its partner"},
      {"none.csv none.csv", "none.csv has 0 points; there is nothing to superpose"},
      {"two.csv text.csv", "text.csv: line 3 (record 2), column y: 'here' is no number"},
      {"two.csv empty.csv", "empty.csv: line 3 (record 2), column y: '' is no number"},
      {"inf.csv one.csv", "inf.csv: line 2 (record 1), column z: inf is not finite"},
      {"flat.csv one.csv", "flat.csv: line 2 (record 1): no field z"},
      {"minus.csv one.csv", "minus.csv: line 2 (record 1), column weight: -1 is below 0"},
      {"- -", "Standard input can be one of the files only"},
      {"a.csv -methd", "-methd is neither an option nor a file; did you mean -method?"},
  };
  for (const auto& [arguments, message] : cases)
    EXPECT_EQ(refusal(std::string("qzsuperpose ") + arguments), std::string("Fatal: ") + message + "\n");
}

}  // namespace
