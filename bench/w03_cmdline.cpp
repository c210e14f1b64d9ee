// W3: define 50 options and parse a command line of 40 arguments, our side. The definitions are a text of the
// configuration language, made once as a program has it compiled in; "define" reads it and looks each parameter up by
// its key. Ends, as the peers do, with all 50 values in typed variables, ranges and choices checked. A second parse of
// the same interface first clears the values of the one before, which the parser would take for keys given twice.
#include <string>
#include <vector>

#include "bench.h"
#include "inputs.h"
#include "qz/system/cli/commandline.h"
#include "qz/system/cli/interface.h"
#include "qz/system/cli/typedparameter.h"

namespace {

using namespace QZSystem;

struct Vars {
  bool b[10] = {};
  int i[10] = {};
  std::string c[10];
  double d[10] = {};
  std::string s[10];
  bool good() const {
    return b[6] && !b[1] && i[8] == 71 && i[9] == 9 && c[1] == "normal" && c[3] == "exact" && c[0] == "none" &&
           d[6] == 1.75 && d[7] == 7 && s[7] == "output_file_3.dat" && s[0] == "text";
  }
};

std::string text() {
  static const char* const types[] = {"bool", "int", "string", "double", "string"};
  std::string all;
  int k = 0;
  for (const inputs::Option& option : inputs::options()) {
    const std::string index = std::to_string(k++ % 10);
    const std::string defaults[] = {"false", index, "none", index, "text"};
    const auto kind = static_cast<std::size_t>(option.kind);
    all += "!PARAMETER --" + option.name + "\n  !TYPE " + types[kind] + "\n  !DEFAULT " + defaults[kind] + "\n";
    if (option.kind == inputs::Kind::integer) all += "  !LEGAL_RANGE 0 1000\n";
    for (const std::string& choice : option.choices) all += "  !LEGAL_VALUE " + choice + "\n";
    all += "  !BRIEF " + option.help + "\n!END\n";
  }
  return all;
}

// The keys as a program writes them in its source.
const std::vector<std::string>& keys() {
  static const std::vector<std::string> all = [] {
    std::vector<std::string> texts;
    for (const inputs::Option& option : inputs::options()) texts.push_back("--" + option.name);
    return texts;
  }();
  return all;
}

// Ten parameters of a kind and the variables that their values go to.
template <class T>
struct Bound {
  QZTypedParameter<T>* parameters[10];
  T* variables;

  void clear() {
    for (QZTypedParameter<T>* parameter : parameters) parameter->ClearValues();
  }
  void get() {
    for (int i = 0; i < 10; ++i) parameters[i]->GetSetting(variables[i]);
  }
};

struct UseOurs {
  QZInterface itf;
  Vars v;
  Bound<bool> bools{{}, v.b};
  Bound<int> ints{{}, v.i};
  Bound<std::string> choices{{}, v.c};
  Bound<double> doubles{{}, v.d};
  Bound<std::string> strings{{}, v.s};

  explicit UseOurs(const std::string& definitions) : itf(definitions.c_str()) {
    bind(bools, 0);
    bind(ints, 10);
    bind(choices, 20);
    bind(doubles, 30);
    bind(strings, 40);
  }

  template <class T>
  void bind(Bound<T>& bound, std::size_t first) {
    for (std::size_t i = 0; i < 10; ++i)
      bound.parameters[i] = QZTypedParameter<T>::From(itf.GetParameter(keys()[first + i].c_str()));
  }

  void clear() {
    bools.clear();
    ints.clear();
    choices.clear();
    doubles.clear();
    strings.clear();
  }

  bool parse(int argc, char** argv) {
    if (!QZParseCommandLine(itf, argc, argv)) return false;
    bools.get();
    ints.get();
    choices.get();
    doubles.get();
    strings.get();
    return true;
  }
};

struct Argv {
  std::vector<std::string> texts = inputs::command_line();
  std::vector<char*> pointers;
  Argv() {
    for (std::string& each : texts) pointers.push_back(each.data());
    pointers.push_back(nullptr);
  }
  int argc() const { return static_cast<int>(texts.size()); }
};

void defineAndParse(benchmark::State& st) {
  Argv a;
  const std::string definitions = text();
  for (auto _ : st) {
    UseOurs ours(definitions);
    if (!ours.parse(a.argc(), a.pointers.data()) || !ours.v.good()) st.SkipWithError("wrong values");
    benchmark::DoNotOptimize(&ours);
  }
  ops(st, 1);
}

void parse(benchmark::State& st) {
  Argv a;
  UseOurs ours(text());
  for (auto _ : st) {
    ours.clear();
    if (!ours.parse(a.argc(), a.pointers.data())) st.SkipWithError("refused");
    benchmark::DoNotOptimize(&ours);
  }
  if (!ours.v.good()) st.SkipWithError("wrong values");
  ops(st, 1);
}

}  // namespace

int main(int argc, char** argv) {
  add("W3/define+parse/ours", defineAndParse);
  add("W3/parse/ours", parse);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
