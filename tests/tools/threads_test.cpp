#include "tests/tools/toolrun.h"

using namespace QZTools;

namespace {

// Some thousand rows, of which a few are long ones over several lines: many pieces for each thread.
std::string longTable() {
  std::string text = "id,mass,note\n";
  for (int i = 0; i < 12000; ++i) {
    const std::string id = std::to_string(i);
    text += id + "," + std::to_string(i % 977) + ".5,";
    text += i % 100 == 3 ? "\"a \"\"quote\"\",\n and " + std::string(static_cast<std::size_t>(i % 7) * 100, 'x') + "\""
                         : "note " + id;
    text += i % 2 == 0 ? "\n" : "\r\n";
  }
  return text;
}

class Threads : public ToolRun {
 protected:
  void SetUp() override {
    write("n.csv", longTable());
    ASSERT_EQ(run("qzconvert n.csv n.qzr && qzconvert n.csv n.jsonl").messages, "");
  }

  // What a run leaves behind, the same for every number of threads.
  Outcome filtered(const std::string& options) {
    const auto once = [&](int threads) {
      Outcome outcome = run("qzfilter -verbose -threads " + std::to_string(threads) + " " + options);
      outcome.out += exists("out") ? read("out") : "";
      std::filesystem::remove(path("out"));
      return outcome;
    };
    const Outcome one = once(1);
    for (const int threads : {2, 5}) {
      const Outcome several = once(threads);
      EXPECT_TRUE(several.out == one.out) << options << ", threads " << threads;
      EXPECT_EQ(several.messages, one.messages) << options << ", threads " << threads;
      EXPECT_EQ(several.status, one.status) << options << ", threads " << threads;
    }
    return one;
  }
};

TEST_F(Threads, GiveTheSameBytes) {
  const char* const inputs[] = {"n.csv", "n.qzr", "n.jsonl"};
  const char* const formats[] = {"csv", "binary", "json"};
  for (const std::string input : inputs) {
    for (const std::string format : formats) {
      const Outcome outcome =
          filtered("-where 'mass > 400' -set 'd = 2 * mass' -drop id -outformat " + format + " " + input + " out");
      EXPECT_EQ(outcome.status, 0) << outcome.messages;
      EXPECT_GT(outcome.out.size(), 100000U) << input << " " << format;
    }
    EXPECT_EQ(filtered("-count -where 'mass < 100' " + input).out, "1300\n");
  }
}

TEST_F(Threads, StopAtTheLimitAndAtTheFirstFault) {
  std::string broken = longTable();
  broken.replace(broken.find("\n9000,"), 6, "\nnine,");
  write("cell.csv", broken);
  write("quote.csv", longTable() + "1,2,\"never closed\n3,4,5\n");
  ASSERT_EQ(run("head -c 500000 n.qzr > cut.qzr; (head -n 9000 n.jsonl; echo '{'; cat n.jsonl) > bad.jsonl").status, 0);
  const std::pair<const char*, const char*> cases[] = {
      {"-limit 4321 -outformat csv n.csv out", "kept 4321 of 4321"},
      {"-limit 4321 -where 'mass > 400' -outformat csv n.qzr out", "kept 4321 of"},
      {"-limit 1 -match 'note=*9999' -keep absent,id -outformat csv n.jsonl out", "kept 1 of 10000"},
      {"-limit 3 -meta 'none:Units.Mass.Da' -outformat csv n.qzr out", "no record has the field none"},
      {"-outformat csv cell.csv -", "(record 9001), column id: 'nine' is no Int"},
      {"-outformat csv quote.csv -", "the quote is never closed"},
      {"-outformat csv cut.qzr -", "damaged or cut short"},
      {"-outformat csv bad.jsonl -", "line 9001 (record 9001)"},
      {"-where 'note > 1' -outformat csv n.qzr -", "the field note is no number"},
      {"-where 'mass > 1 && nowhere > 1' -outformat csv n.qzr out", "no record has the field nowhere"},
  };
  for (const auto& [options, message] : cases) {
    const std::string messages = filtered(options).messages;
    EXPECT_NE(messages.find(message), std::string::npos) << options << ": " << messages;
  }
}

TEST_F(Threads, ReadPipesAndCountWithDots) {
  EXPECT_EQ(filtered("-informat json -outformat json - - < n.jsonl").out, read("n.jsonl"));
  EXPECT_EQ(run("cat n.csv | qzfilter -threads 3 -informat csv -outformat csv - - | cmp - n.csv").messages,
            run("qzfilter -outformat csv n.csv - | cmp - n.csv").messages);
  for (const char* threads : {"1", "4"}) {
    const Outcome dots = run("qzfilter -progress dots -status run.status -count -threads " + std::string(threads) +
                             " -where 'mass > 0' n.csv && cat run.status");
    EXPECT_EQ(dots.messages, "............\nTotal: 12000 records processed.\n") << threads;
    EXPECT_EQ(dots.out, "12000\nFinished\n") << threads;
  }
}

}  // namespace
