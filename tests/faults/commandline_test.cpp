// Interfaces from texts and command lines, parameter files, and all that is written of them.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "qz/system.h"
#include "tests/faults/faults.h"
#include "tests/platform/streamtest.h"

using namespace QZSystem;
using streamtest::Folder;

namespace {

// The lines of a configuration.
std::string lines(std::string text) {
  std::replace(text.begin(), text.end(), ';', '\n');
  return text;
}

const std::string configuration = lines(
    "!BRIEF Filters a file of records and does it well;"
    "!PARAMETER -in; !TYPE string; !REQUIRED true; !KEYLESS 1; !ALIAS -input_file_with_a_long_name;"
    "  !BRIEF The file that is read, with a description of some length; !END;"
    "!PARAMETER -count; !TYPE int; !LIST true; !DEFAULT 3; !LEGAL_RANGE 0 1000; !ILLEGAL_VALUE 13; !END;"
    "!PARAMETER -settings; !TYPE param_file; !END;"
    "!PARAMETER -table; !TYPE file; !END;"
    "!CATEGORY \"Details of the run\" 2; !BRIEF More of it; !DETAIL;"
    "    A line of detail, see :ref:$the count$-count$;"
    "  !PARAMETER -mode; !TYPE const; !LEGAL_VALUE 1; !LEGAL_VALUE fast; !DEFAULT fast; !END;"
    "  !PARAMETER -scale; !TYPE double; !DEFAULT 0.5; !VISIBILITY hidden; !END;"
    "  !PARAMETER -v; !TYPE bool; !DEFAULT false; !END;"
    "!END;");

const std::string filterConfiguration = lines(
    "!PARAMETER -v; !TYPE bool; !DEFAULT false; !END;"
    "!PARAMETER -s; !TYPE bool; !DEFAULT false; !END;"
    "!PARAMETER -files; !TYPE string; !LIST true; !KEYLESS 1; !END;");

const std::string wrongConfiguration = lines(
    "!PARAMETER -a; !TYPE int; !DEFAULT no_number_and_long; !LEGAL_RANGE a; !END;"
    "!CATEGORY \"b; !END;"
    "!PARAMETER -c; !TYPE nothing_that_is_known; !END;");

const std::string requirements = lines(
    "!REQUIREMENT; !OPTION -in a_file_with_a_long_name.qzr -count 7; !OPTION !-v; !ERROR_MSG;    Give both.;!END;");

bool configure(QZInterface& itf, const std::string& text) {
  return QZConfigure(itf, reinterpret_cast<const unsigned char*>(text.c_str()));
}

// The arguments of a command line, as `main` has them.
struct Arguments {
  explicit Arguments(std::vector<std::string> given) : texts(std::move(given)) {
    for (std::string& text : texts) values.push_back(text.data());
    count = static_cast<int>(values.size());
  }
  std::vector<std::string> texts;
  std::vector<char*> values;
  int count = 0;
};

std::string written(const QZInterface& itf) {
  qzosstream out;
  QZWriteInterfaceConfigurationFile(itf, out);
  return out.str();
}

// Whatever has happened to an interface, it can be used up to its end.
void expectSound(QZInterface& itf) {
  static const std::string expected = written(QZInterface(configuration.c_str()));
  const QZInterface copy(itf);
  EXPECT_EQ(written(copy), written(itf));
  itf.Clear();
  EXPECT_TRUE(configure(itf, configuration));
  EXPECT_EQ(written(itf), expected);
}

const Road textIsConfigured("TextIsConfigured", allocations, [](Attempt& attempt) {
  QZInterface itf, wrong;
  attempt([&] {
    qzisstream in;
    in.set(configuration);
    const QZInterface constructed(configuration.c_str());
    return QZConfigure(itf, in) && configure(itf, "!CATEGORY a\n!END\n");
  });
  expectSound(itf);
  attempt([&] { return !configure(wrong, wrongConfiguration); });
  expectSound(wrong);
});

const Road interfaceIsCopied("InterfaceIsCopied", allocations, [](Attempt& attempt) {
  const QZInterface itf(configuration.c_str());
  QZInterface target(filterConfiguration.c_str());
  const bool done = attempt([&] {
    const QZInterface copy(itf);
    target = copy;
    target = *target.GetInterface("Details of the run");
    return target.GetParameter("-mode") != nullptr;
  });
  EXPECT_TRUE(!done || target.GetParameter("-in") == nullptr);
  expectSound(target);
});

const Road interfaceIsChanged("InterfaceIsChanged", allocations | firstUse, [](Attempt& attempt) {
  QZInterface itf(configuration.c_str());
  attempt([&] {
    QZParameter* const made = itf.AddParameter("int");
    if (made == nullptr || !made->SetName("-made") || !made->AddDetail(std::string(50, 'd'))) return false;
    QZInterface* const category = itf.AddInterface();
    category->SetName("made as well, with a name of some length");
    category->AddParameter(*made);
    return itf.AddParameter("nothing") == nullptr && itf.DeleteParameter(*made) && itf.DeleteInterface(*category);
  });
  expectSound(itf);
});

const Road commandLineIsParsed("CommandLineIsParsed", allocations | calls, [](Attempt& attempt) {
  static const Folder folder;
  static const std::string good = folder.File("good", "-scale 2.5\n-count 7 8\n");
  static const std::string bad = folder.File("bad", "# comment\n-scale 2.5\n-count 7 8 'and' \n-mode 1\n-unknown 3\n");
  static const std::string table = folder.File("table", std::string(40000, 't'));
  QZInterface itf(configuration.c_str());
  Arguments right({"program", "-settings", good, "-table", table, "-v", "--unset-mode", "a_file_with_a_long_name.qzr"});
  Arguments wrong({"program", "-settings", bad, "-count", "13", "-x", "word"});
  const auto parse = [](QZInterface& into, Arguments& arguments) {
    const auto* const required = reinterpret_cast<const unsigned char*>(requirements.c_str());
    return QZParseCommandLine(into, "1", arguments.count, arguments.values.data(), required, QZErrorLevel::Warning,
                              false);
  };
  const bool done = attempt([&] {
    QZInterface other(itf);
    parse(other, wrong);
    return parse(itf, right);
  });
  double scale = 0;
  if (done) QZTypedParameter<double>::From(itf.GetParameter("-scale"))->GetSetting(scale);
  EXPECT_EQ(scale, done ? 2.5 : 0);
  expectSound(itf);
});

const Road filterLineAndFileAreParsed("FilterLineAndFileAreParsed", allocations, [](Attempt& attempt) {
  QZInterface filter(filterConfiguration.c_str()), itf(configuration.c_str());
  Arguments line({"program", "-vs", "-s", "first_file_with_a_long_name", "-second"});
  const bool hasLine = attempt([&] {
    return QZParseCommandLineLW(filter, "1", line.count, line.values.data(), nullptr, QZErrorLevel::Warning);
  });
  EXPECT_TRUE(!hasLine || filter.GetParameter("-files")->GetStringValue(1) == "-second");
  expectSound(filter);
  const bool hasFile = attempt([&] {
    qzisstream in;
    in.set("-in 'a name with blanks in it'\n-count 1 2 3\n-scale 1e3\n");
    return QZParseParameterFile(itf, in, true, QZErrorLevel::Warning);
  });
  EXPECT_TRUE(!hasFile || itf.GetParameter("-count")->GetStringValue(2) == "3");
  expectSound(itf);
});

const Road everythingIsWritten("EverythingIsWritten", allocations, [] {
  QZInterface itf(configuration.c_str());
  itf.GetParameter("-count")->SetStringValues("4 5 6");
  qzosstream out;
  QZWriteInterfaceConfigurationFile(itf, out);
  QZWriteSettings(itf, out, true, "a mode");
  QZWriteJSON(itf, out);
  QZWriteHtml(itf, out, "program", "1");
  WriteBriefHelpDescription(itf, "program", out, 2, 40);
  QZTextWriter writer(out);
  WriteDefaultsImpl(itf, writer);
  for (const QZParameter& parameter : QZIter(itf.GetParameters(true))) {
    WriteParameterDetailImpl(&parameter, writer);
    QZWriteParameterLatex(parameter, out);
  }
  writer.End();
  return out.failed() ? "failed" : out.str();
});

const Road helpIsGiven("HelpIsGiven", allocations | calls, [](Attempt& attempt) {
  static const Folder folder;
  const QZInterface itf(configuration.c_str());
  attempt([&] {
    Arguments alone({"program"});
    qzosstream out;
    bool given = QZCheckHelp(itf, alone.count, alone.values.data(), true, out);
    for (const char* const word : {"simple", "all", "defaults", "versions", "count", "none", "html"}) {
      Arguments arguments({folder / "program", "--help", word});
      given = QZCheckHelp(itf, arguments.count, arguments.values.data(), true, out) && given;
    }
    return given;
  });
});

template <class Parameter>
void changeParameter(Attempt& attempt, const char* values, const char* legal) {
  Parameter parameter("-p");
  attempt([&] {
    if (!parameter.AddLegalValue(legal) || !parameter.SetStringValues(values)) return false;
    parameter.AddIllegalRange("1000", "2000");
    if (!parameter.AddStringDefault(legal) || !parameter.Load()) return false;
    std::vector<unsigned char> bytes(parameter.ValueAndDefaultBinarySize());
    parameter.WriteValueAndDefaultBinary(bytes.data());
    const std::unique_ptr<QZParameter> copy(parameter.CreateCopy());
    const QZIter<const std::string> pretty(copy->GetPrettyLegalValues());
    return copy->ReadValueAndDefaultBinary(bytes.data()) == bytes.size() && copy->IsSetToString(legal);
  });
  // The texts and the converted values are those of before the step that failed, or of behind it.
  EXPECT_TRUE(parameter.ClearValues() && parameter.ClearDefaults());
  EXPECT_TRUE(parameter.AddStringValue(legal) && parameter.Load());
  EXPECT_TRUE(parameter.GetHasValue(0) && !parameter.GetHasValue(1));
}

const Road parametersAreChanged("ParametersAreChanged", allocations, [](Attempt& attempt) {
  changeParameter<QZIntParameter>(attempt, "4 4,4 4", "4");
  changeParameter<QZDoubleParameter>(attempt, "0.5 0.5", "0.5");
  changeParameter<QZStringParameter>(attempt, "a_text_that_is_longer_than_a_string",
                                     "a_text_that_is_longer_than_a_string");
});

}  // namespace
