#include "qz/system.h"
#include "tests/tools/toolrun.h"

using namespace QZTools;

namespace {

class Convert : public ToolRun {};

TEST_F(Convert, CarriesATableThroughEveryForm) {
  const std::string table =
      "name,count,mass,known,note\n"
      "\"a,b\",9223372036854775807,0.1,true,\"\"\n"
      "c,-1,1e+300,false,\"two\nlines\"\n"
      "d,,,,\n";
  write("a.csv", table);
  EXPECT_EQ(
      run("qzconvert a.csv b.qzr && qzconvert b.qzr c.tsv && qzconvert c.tsv d.qzr && qzconvert d.qzr e.csv").messages,
      "");
  EXPECT_EQ(read("e.csv"), table);
  write("s.csv", "x,y\n1,a\n,\n");
  EXPECT_EQ(run("qzconvert s.csv s.jsonl && qzconvert s.jsonl t.csv").messages, "");
  EXPECT_EQ(
      read("s.jsonl"),
      "{\"version\":[1,0],\"fields\":[{\"name\":\"x\",\"type\":\"Int\",\"idx\":1,\"nullable\":true,\"value\":1},"
      "{\"name\":\"y\",\"type\":\"String\",\"idx\":2,\"nullable\":true,\"value\":\"a\"}]}\n"
      "{\"version\":[1,0],\"fields\":[{\"name\":\"x\",\"type\":\"Int\",\"idx\":1,\"nullable\":true,\"value\":null},"
      "{\"name\":\"y\",\"type\":\"String\",\"idx\":2,\"nullable\":true,\"value\":null}]}\n");
  EXPECT_EQ(read("t.csv"), "x,y\n1,a\n,\n");
}

TEST_F(Convert, SetsMetadata) {
  write("a.csv", "m\n1.5\n");
  const Outcome outcome =
      run("qzconvert -outformat json -meta 'm:Units.Mass.Da; m:Annotation.Description=the mass' a.csv -");
  EXPECT_EQ(outcome.out,
            "{\"version\":[1,0],\"fields\":[{\"name\":\"m\",\"type\":\"Float\",\"idx\":1,\"meta\":{\"options\":["
            "\"Units.Mass.Da\"],\"attributes\":[[\"Annotation.Description\",\"the mass\"]]},\"nullable\":true,"
            "\"value\":1.5}]}\n");
  EXPECT_EQ(refusal("qzconvert -meta m:Units.Mas.Da a.csv b.qzr"),
            "Fatal: -meta: there is no metadata Units.Mas.Da; did you mean Units.Mass.Da or Units.Mass.kg or "
            "Units.Mass.g?\n");
  EXPECT_EQ(refusal("qzconvert -meta n:Units.Mass.Da a.csv b.qzr"),
            "Fatal: a.csv: has no column n (named in -meta); did you mean m?\n");
  EXPECT_EQ(refusal("qzconvert -meta m: a.csv b.qzr"),
            "Fatal: -meta: 'm:' isn't a column, a colon and the name of metadata\n");
  EXPECT_EQ(refusal("qzconvert -meta m:Annotation.Author a.csv b.qzr"),
            "Fatal: -meta: Annotation.Author needs a value: Annotation.Author=...\n");
}

TEST_F(Convert, NamesThePlaceOfABadCell) {
  write("a.csv", "n,x\n1,a\n2,b\nthree,c\n");
  EXPECT_EQ(refusal("qzconvert -infer 2 a.csv b.qzr"),
            "Fatal: a.csv: line 4 (record 3), column n: 'three' is no Int; give the column another type with -types "
            "n:String, or look at more rows with -infer\n");
  EXPECT_FALSE(exists("b.qzr"));
  EXPECT_EQ(run("qzconvert -infer 2 -types n:String a.csv b.qzr").status, 0);
  EXPECT_EQ(refusal("qzconvert -types m:Int a.csv b.qzr"),
            "Fatal: a.csv: has no column m (named in -types); did you mean n or x?\n");
  EXPECT_EQ(refusal("qzconvert -types n:Number a.csv b.qzr"),
            "Fatal: -types: 'n:Number' isn't a name, a colon and one of Int, Float, Bool, String\n");
  write("short.csv", "a,b\n1\n");
  EXPECT_EQ(refusal("qzconvert short.csv b.qzr"),
            "Fatal: short.csv: line 2 (record 1): has 1 cell, the header line has 2\n");
  write("quote.csv", "a,b\n1,\"2\n");
  EXPECT_EQ(refusal("qzconvert quote.csv b.qzr"),
            "Fatal: quote.csv: line 2 (record 1), column 2: the quote is never closed\n");
  write("twice.csv", "\xEF\xBB\xBFn,x,n\n1,2,3\n");
  EXPECT_EQ(refusal("qzconvert twice.csv b.qzr"),
            "Fatal: twice.csv: line 1: column n occurs twice; give each column a name of its own\n");
}

TEST_F(Convert, RefusesWhatItCannotOpenOrName) {
  EXPECT_EQ(refusal("qzconvert nosuch.csv b.qzr"), "Fatal: Cannot open nosuch.csv: No such file or directory\n");
  EXPECT_EQ(refusal("mkdir d.csv; qzconvert d.csv b.qzr"), "Fatal: Cannot open d.csv: Is a directory\n");
  EXPECT_EQ(refusal("qzconvert -informat csv - b.qzr <&-"), "Fatal: Cannot open standard input: Bad file descriptor\n");
  EXPECT_EQ(refusal("qzconvert -informat csv - b.qzr <d.csv"), "Fatal: Cannot open standard input: Is a directory\n");
  EXPECT_EQ(refusal("qzconvert a.dat b.qzr"),
            "Fatal: a.dat: the name doesn't tell the format; give -informat csv, tsv, json or binary\n");
  write("a.csv", "n\n1\n");
  EXPECT_EQ(refusal("qzconvert a.csv nosuch/b.qzr"), "Fatal: Cannot write nosuch/b.qzr: No such file or directory\n");
  EXPECT_EQ(refusal("qzconvert -outformat csv a.csv /dev/full"),
            "Fatal: Cannot write /dev/full: No space left on device\n");
  EXPECT_EQ(refusal("qzconvert -outformat csv a.csv - >/dev/full"),
            "Fatal: Cannot write standard output: No space left on device\n");
}

TEST_F(Convert, NamesARecordThatIsDamaged) {
  write("a.csv", "n\n1\n2\n3\n");
  ASSERT_EQ(run("qzconvert a.csv a.qzr").status, 0);
  const std::string whole = read("a.qzr");
  const std::size_t each = whole.size() / 3;
  write("cut.qzr", whole.substr(0, whole.size() - 1));
  EXPECT_EQ(refusal("qzconvert cut.qzr b.csv"),
            "Fatal: cut.qzr: record 3 (byte " + std::to_string(2 * each) + "): the record is damaged or cut short\n");
  const Outcome piped = run("qzconvert -informat binary -outformat csv - - <cut.qzr");
  EXPECT_EQ(piped.out, "n\n1\n2\n");
  EXPECT_EQ(piped.status, 1);
  write("text.qzr", "no record at all");
  EXPECT_EQ(refusal("qzconvert text.qzr b.csv"),
            "Fatal: text.qzr: record 1 (byte 0): the record is damaged or cut short; is this a file of binary records? "
            "see -informat\n");
}

TEST_F(Convert, NeverMakesAWideNumberOfJSONNull) {
  write("a.csv", "n\n1\n2147483648\n");
  ASSERT_EQ(run("qzconvert a.csv a.jsonl").status, 0);
  EXPECT_EQ(refusal("qzconvert a.jsonl b.csv"),
            "Fatal: a.jsonl: line 2 (record 2), field n: a whole number of more than 32 bits can't be read from JSON; "
            "use the binary form or a table\n");
  const std::string open = "{\"version\":[1,0],\"fields\":[";
  const std::string inner = open + "{\"name\":\"k\",\"type\":\"Int\",\"idx\":1,\"value\":-2147483649}]}";
  const struct {
    std::string value;
    const char* field;
  } cases[] = {
      {"\"type\":\"Int\",\"value\":12345678901234567890123", "v"},
      {"\"type\":\"IntVec\",\"value\":[1,-2147483649]", "v"},
      {"\"type\":\"Record\",\"value\":" + inner, "v.k"},
      {"\"type\":\"RecordVec\",\"value\":[null," + inner + "]", "v.k"},
      {"\"type\":\"Int\",\"value\":1,\"child\":{\"a\":" + inner + "}", "v.k"},
      {"\"type\":\"Int\",\"value\":-2147483648", nullptr},
      {"\"type\":\"Float\",\"value\":123456789012", nullptr},
      {"\"type\":\"String\",\"value\":\"123456789012\"", nullptr},
  };
  for (const auto& each : cases) {
    write("v.jsonl", open + "{\"name\":\"v\",\"idx\":1," + each.value + "}]}\n");
    const Outcome outcome = run("qzconvert v.jsonl v.qzr");
    const std::string place = each.field ? std::string(", field ") + each.field + ": a whole number" : "";
    EXPECT_EQ(outcome.status, each.field ? 1 : 0) << each.value << outcome.messages;
    EXPECT_NE(outcome.messages.find(place), std::string::npos) << each.value << outcome.messages;
  }
  write("bad.jsonl", "{\"version\":[1,0],\"fields\":[{\"name\":\"n\",\"type\":\"Int\",\"idx\":1,\"value\":\"x\"}]}\n");
  EXPECT_EQ(refusal("qzconvert bad.jsonl b.csv"),
            "Fatal: bad.jsonl: line 1 (record 1): JSON: expects type of: integer, key: value\n");
  write("deep.jsonl", std::string(100000, '[') + "\n");
  const std::string message = refusal("qzconvert deep.jsonl b.csv");
  EXPECT_EQ(message.rfind("Fatal: deep.jsonl: line 1 (record 1): JSON: parse error offset 1024: ", 0), 0U) << message;
}

TEST_F(Convert, SaysWhatAFormatDrops) {
  write("a.csv", "n\n1\n");
  ASSERT_EQ(run("qzconvert -meta n:Units.Mass.Da a.csv a.qzr").status, 0);
  const Outcome outcome = run("qzconvert a.qzr b.csv");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.messages, "b.csv: the format can't hold the metadata of 1 field\n");
  EXPECT_EQ(refusal("qzconvert -strict a.qzr c.csv"), "Fatal: c.csv: the format can't hold the metadata of 1 field\n");
  EXPECT_FALSE(exists("c.csv"));
}

// A table takes its columns from the first record; a later one may have others, and other types.
TEST_F(Convert, PutsRecordsOfDifferentFieldsIntoATable) {
  const auto document = [](const std::string& fields) { return "{\"version\":[1,0],\"fields\":[" + fields + "]}\n"; };
  const std::string inner = "{\"version\":[1,0],\"fields\":[{\"name\":\"k\",\"type\":\"Int\",\"idx\":1,\"value\":7}]}";
  write("a.jsonl", document("{\"name\":\"x\",\"type\":\"Int\",\"idx\":1,\"value\":1},"
                            "{\"name\":\"y\",\"type\":\"Bool\",\"idx\":2,\"value\":true}") +
                       document("{\"name\":\"x\",\"type\":\"String\",\"idx\":1,\"value\":\"a,b\"},"
                                "{\"name\":\"z\",\"type\":\"Int\",\"idx\":2,\"value\":2}") +
                       document("{\"name\":\"y\",\"type\":\"Float\",\"idx\":1,\"value\":0.5},"
                                "{\"name\":\"x\",\"type\":\"Record\",\"idx\":2,\"value\":" +
                                inner + "}"));
  const Outcome outcome = run("qzconvert -outformat csv -informat json - - <a.jsonl");
  EXPECT_EQ(outcome.out, "x,y\n1,true\n\"a,b\",\n<QZRecord>,0.5\n");
  EXPECT_EQ(outcome.messages, "standard output: the format can't hold 2 fields\n");
}

TEST_F(Convert, ReadsStandardInputFromItsPlace) {
  write("a.csv", "a comment\nn\n1\n");
  EXPECT_EQ(run("{ read -r comment; qzconvert -informat csv -outformat csv - -; } <a.csv").out, "n\n1\n");
  EXPECT_EQ(run("printf 'a,b\\n1,x\\n' | qzconvert -informat csv -outformat tsv - -").out, "a\tb\n1\tx\n");
}

TEST_F(Convert, EndsQuietlyWhenItsReaderDoes) {
  const Outcome outcome =
      run("{ echo n; seq 1 200000; } >a.csv\n"
          "{ qzconvert -outformat csv a.csv -; echo $? >status; } | head -n 2; cat status");
  EXPECT_EQ(outcome.out, "n\n1\n0\n");
  EXPECT_EQ(outcome.messages, "");
}

TEST_F(Convert, LeavesNothingBehindWhenInterrupted) {
  const Outcome outcome =
      run("mkfifo pipe; { echo n; seq 1 1000; sleep 1; } >pipe & qzconvert -informat csv pipe b.qzr & pid=$!\n"
          "sleep 0.3; kill -TERM $pid; wait $pid; echo $?; ls");
  EXPECT_EQ(outcome.out, "130\npipe\n");
}

TEST_F(Convert, AnswersForHelpOnStandardOutput) {
  const Outcome help = run("qzconvert --help");
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.messages, "");
  EXPECT_EQ(help.out.rfind("qzconvert : Convert tables and records into each other \nSimple parameter list\n", 0), 0U)
      << help.out;
  const Outcome bare = run("qzconvert");
  EXPECT_EQ(bare.out, "");
  EXPECT_EQ(bare.messages.rfind("No arguments specified on the command line\n", 0), 0U) << bare.messages;
  EXPECT_EQ(run("qzconvert --version").out, QZSystem::QZSystemGetRelease() + std::string("\n"));
  EXPECT_EQ(refusal("qzconvert -nosuch a.csv b.qzr"),
            "Fatal: Unknown argument -nosuch on command line (too many arguments to be keyless)\n");
  EXPECT_EQ(refusal("qzconvert -metta a.csv"), "Fatal: -metta is neither an option nor a file; did you mean -meta?\n");
}

}  // namespace
