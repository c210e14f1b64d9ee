#include "qz/dataflow.h"
#include "tests/tools/toolrun.h"

using namespace QZDataFlow;
using namespace QZTools;

namespace {

class Filter : public ToolRun {
 protected:
  void SetUp() override {
    write("n.csv",
          "name,mass,half_life,spin,stable\n"
          "H-1,1.5,,1/2+,true\n"
          "C-14,14,1.8e11,0+,false\n"
          "F-18,18,6586,1+,false\n"
          "Cl-36,36,9.5e12,2+,false\n");
  }

  // The table that is left, from a table and from binary records.
  std::string kept(const std::string& options) {
    const Outcome table = run("qzfilter -outformat csv " + options + " n.csv -");
    EXPECT_EQ(table.messages, "") << options;
    EXPECT_EQ(table.status, 0) << options;
    const Outcome records = run("qzconvert n.csv n.qzr && qzfilter -outformat csv " + options + " n.qzr -");
    if (table.out.find('\n') + 1 != table.out.size()) {
      EXPECT_EQ(records.out, table.out) << options;
    }
    return table.out;
  }

  std::string refusal(const std::string& options) {
    const Outcome outcome = run("qzfilter " + options + " n.csv o.csv");
    EXPECT_EQ(outcome.status, 1) << options;
    EXPECT_FALSE(exists("o.csv")) << options;
    return outcome.messages;
  }
};

TEST_F(Filter, PicksByConditionsAndPatterns) {
  const std::string head = "name,mass,half_life,spin,stable\n";
  const std::string h1 = "H-1,1.5,,1/2+,true\n";
  const std::string c14 = "C-14,14,1.8e+11,0+,false\n";
  const std::string f18 = "F-18,18,6586,1+,false\n";
  const std::string cl36 = "Cl-36,36,9.5e+12,2+,false\n";
  const std::pair<const char*, std::string> cases[] = {
      {"", h1 + c14 + f18 + cl36},
      {"-where 'half_life > 1e9 && mass < 20'", c14},
      {"-where 'stable == 1'", h1},
      {"-where '!(half_life > 1e9)'", f18},
      {"-where '!stable && mass != 18'", c14 + cl36},
      {"-match 'name=C*'", c14 + cl36},
      {"-match 'name=C*; spin=*2+'", cl36},
      {"-where 'mass > 1' -match 'name=*-1*' -limit 2", h1 + c14},
      {"-where 'mass > 100'", ""},
  };
  for (const auto& [options, rows] : cases) EXPECT_EQ(kept(options), head + rows) << options;
}

TEST_F(Filter, ComputesFieldsInOrder) {
  EXPECT_EQ(kept("-set 'double = 2 * mass; more = double + half_life' -where 'double > 20' -keep name,double,more"),
            "name,double,more\nC-14,28,180000000028\nF-18,36,6622\nCl-36,72,9500000000072\n");
  // A condition sees the fields as they are after the last formula that it uses, and before those that follow.
  EXPECT_EQ(kept("-set 'a = 2 * mass; b = a; a = 3 * mass; mass = 0' -where 'a == 42' -keep a,b,mass"),
            "mass,a,b\n0,42,28\n");
  EXPECT_EQ(kept("-set 'late = 1 / half_life; twice = 2 * late' -match 'twice=*e-11' -keep name,twice"),
            "name,twice\nC-14,1.1111111111111111e-11\n");
  EXPECT_EQ(kept("-set 'mass = half_life / 2' -drop spin,stable,half_life -limit 2"), "name,mass\nH-1,\nC-14,9e+10\n");
  const Outcome meta =
      run("qzfilter -outformat json -set 'd = 2 * mass' -meta d:Units.Mass.Da -keep d -limit 1 n.csv -");
  EXPECT_EQ(meta.out,
            "{\"version\":[1,0],\"fields\":[{\"name\":\"d\",\"type\":\"Float\",\"idx\":6,\"meta\":{\"options\":["
            "\"Units.Mass.Da\"]},\"nullable\":true,\"value\":3.0}]}\n");
}

TEST_F(Filter, PassesUntouchedBytesOn) {
  ASSERT_EQ(run("qzconvert -meta mass:Units.Mass.Da n.csv n.qzr && qzfilter n.qzr all.qzr && qzfilter "
                "-where 'mass > 10' n.qzr some.qzr")
                .status,
            0);
  const std::string all = read("n.qzr");
  const std::string some = read("some.qzr");
  EXPECT_EQ(read("all.qzr"), all);
  EXPECT_EQ(some, all.substr(all.size() - some.size()));
}

// A record with a child, and with a section of a later version behind the known ones.
TEST_F(Filter, PassesOnWhatItDoesNotKnow) {
  QZRecord child;
  child.SetValue(QZField<long>("k"), 5000000000L);
  QZRecord record;
  const QZField<double> mass("mass");
  record.SetValue(mass, 12.5);
  record.AddChildRecord(mass, "a", child);
  // The sections of the record, and one more.
  const std::vector<unsigned char> plain = record.ToBytes();
  std::string name;
  QZReadBuffer in(plain), content;
  ASSERT_TRUE(in.Unwrap(name, content));
  QZWriteBuffer later("later"), whole(name);
  later.WriteString("something new");
  whole.Append({content.Position(), content.Position() + content.Remaining()});
  later.CopyWrapped(whole);
  std::vector<unsigned char> bytes;
  whole.CopyWrapped(bytes);
  const std::string file(bytes.begin(), bytes.end());
  write("a.qzr", file + file);
  EXPECT_EQ(run("qzfilter -where 'mass > 1' -match 'mass=12*' a.qzr b.qzr").messages, "");
  EXPECT_EQ(read("b.qzr"), file + file);
  EXPECT_EQ(run("qzfilter -set 'twice = 2 * mass' a.qzr c.qzr && qzfilter -drop twice c.qzr d.qzr").messages, "");
  EXPECT_EQ(read("d.qzr"), file + file);
  EXPECT_EQ(run("qzconvert -outformat csv a.qzr -").messages,
            "standard output: the format can't hold 2 child records, 2 unknown sections\n");
  EXPECT_EQ(run("qzconvert -outformat json a.qzr -").messages,
            "standard output: the format can't hold 2 unknown sections\n");
}

TEST_F(Filter, ExplainsWhatItCannotDo) {
  const std::pair<const char*, const char*> cases[] = {
      {"-where 'mas > 1'", "Fatal: -where: the table has no column mas; did you mean mass?\n"},
      {"-where 'spin > 1'", "Fatal: -where: the field spin is no number; -match looks at texts\n"},
      {"-where 'mass = 1'", "Fatal: -where: 'mass = 1': a single = compares nothing; use ==\n"},
      {"-where 'mass > 1, stable'",
       "Fatal: -where: 'mass > 1, stable' is several formulas; use && or || between conditions\n"},
      {"-match 'name=*a*b*'", "Fatal: -match: the pattern '*a*b*' has more than two *\n"},
      {"-match name", "Fatal: -match: 'name' isn't a name, = and a text\n"},
      {"-set '= 2'", "Fatal: -set: '= 2' isn't a name, = and a text\n"},
      {"-keep nosuch", "Fatal: -keep: the table has no column nosuch\n"},
      {"-drop name,mass,half_life,spin,stable", "Fatal: -keep and -drop leave no field\n"},
  };
  for (const auto& [options, message] : cases) EXPECT_EQ(refusal(options), message) << options;
  const std::string broken = refusal("-where 'mass >'");
  EXPECT_EQ(broken.rfind("Fatal: -where: 'mass >': ", 0), 0U) << broken;
  const Outcome unmet = run("qzconvert n.csv n.qzr && qzfilter -where 'nosuch > 1' n.qzr o.csv");
  EXPECT_EQ(unmet.messages, "n.qzr: no record has the field nosuch\n");
  EXPECT_EQ(run("qzfilter -match 'mass=1*' -drop nosuch,spin n.qzr o.csv").messages,
            "n.qzr: no record that was kept or matched has the field nosuch\n");
}

TEST_F(Filter, KeepsTheStatusFileAwayFromItsOwnFiles) {
  write("in.csv", "a\n1\n");
  ASSERT_EQ(run("ln -s in.csv link").status, 0);
  for (const char* const files :
       {"in.csv -count in.csv", "./in.csv -count in.csv", "link -count in.csv", "o.csv in.csv o.csv"}) {
    const Outcome outcome = run(std::string("qzfilter -status ") + files);
    EXPECT_EQ(outcome.status, 1) << files;
    EXPECT_NE(outcome.messages.find("name the same file"), std::string::npos) << files << outcome.messages;
    EXPECT_EQ(read("in.csv"), "a\n1\n") << files;
    EXPECT_FALSE(exists("o.csv")) << files;
  }
}

TEST_F(Filter, DoesNotWaitForAReaderOfItsStatus) {
  EXPECT_EQ(run("mkfifo pipe && timeout 20 qzfilter -status pipe -count -where 'mass > 10' n.csv").out, "3\n");
  EXPECT_EQ(run("qzfilter n.csv").messages,
            "Fatal: Give the file to write as -out (or second), or -count to count only\n");
}

TEST_F(Filter, ToldToBeQuietIs) {
  EXPECT_EQ(run("qzconvert n.csv n.qzr && qzfilter -where 'nosuch > 1' -quiet n.qzr o.csv").messages, "");
  EXPECT_EQ(run("qzfilter -where 'mass > 10' -verbose n.csv o.csv").messages, "n.csv: kept 3 of 4 records\n");
}

}  // namespace
