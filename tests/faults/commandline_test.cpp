// Interfaces from texts and command lines, parameter files, and all that is written of them.
#include <memory>
#include <string>
#include <vector>

#include "qz/system.h"
#include "tests/faults/faults.h"

using namespace QZSystem;

namespace {

const char* const configuration = R"(
!BRIEF Filters a file of records and does it well
!PARAMETER -in
  !TYPE string
  !REQUIRED true
  !KEYLESS 1
  !ALIAS -input_file_with_a_long_name
  !BRIEF The file that is read, with a description of some length
!END
!PARAMETER -count
  !TYPE int
  !LIST true
  !DEFAULT 3
  !LEGAL_RANGE 0 1000
  !ILLEGAL_VALUE 13
!END
!PARAMETER -settings
  !TYPE param_file
!END
!PARAMETER -table
  !TYPE file
!END
!CATEGORY "Details of the run" 2
  !BRIEF More of it
  !DETAIL
    A line of detail, see :ref:$the count$-count$
  !PARAMETER -mode
    !TYPE const
    !LEGAL_VALUE 1
    !LEGAL_VALUE fast
    !DEFAULT fast
  !END
  !PARAMETER -scale
    !TYPE double
    !DEFAULT 0.5
    !VISIBILITY hidden
  !END
  !PARAMETER -v
    !TYPE bool
    !DEFAULT false
  !END
!END
)";

const char* const filterConfiguration = R"(
!PARAMETER -v
  !TYPE bool
  !DEFAULT false
!END
!PARAMETER -s
  !TYPE bool
  !DEFAULT false
!END
!PARAMETER -files
  !TYPE string
  !LIST true
  !KEYLESS 1
!END
)";

const unsigned char requirements[] =
    "!REQUIREMENT\n  !OPTION -in a_file_with_a_long_name.qzr -count 7\n  !OPTION !-v\n  !ERROR_MSG\n    Give "
    "both.\n!END\n";

// The arguments of a command line, as `main` has them.
class Arguments {
 public:
  explicit Arguments(std::vector<std::string> given) : texts(std::move(given)) {
    for (std::string& text : texts) pointers.push_back(text.data());
  }
  int Count() const { return static_cast<int>(pointers.size()); }
  char** Values() { return pointers.data(); }

 private:
  std::vector<std::string> texts;
  std::vector<char*> pointers;
};

std::string written(const QZInterface& itf) {
  qzosstream out;
  QZWriteInterfaceConfigurationFile(itf, out);
  return out.str();
}

// Whatever has happened to an interface, it can be used up to its end.
void expectSound(QZInterface& itf) {
  static const std::string expected = written(QZInterface(configuration));
  const QZInterface copy(itf);
  EXPECT_EQ(written(copy), written(itf));
  itf.Clear();
  EXPECT_TRUE(QZConfigure(itf, reinterpret_cast<const unsigned char*>(configuration)));
  EXPECT_EQ(written(itf), expected);
}

void textIsConfigured(Attempt& attempt) {
  QZInterface itf;
  const std::string text = configuration;
  attempt([&] {
    qzisstream in;
    in.set(text.data(), text.size(), false);
    const QZInterface constructed(configuration);
    return QZConfigure(itf, in) && QZConfigure(itf, reinterpret_cast<const unsigned char*>("!CATEGORY a\n!END\n"));
  });
  expectSound(itf);
}

void wrongTextIsConfigured(Attempt& attempt) {
  QZInterface itf;
  const std::string text =
      "!PARAMETER -a\n!TYPE int\n!DEFAULT no_number_and_long\n!LEGAL_RANGE a\n!END\n!CATEGORY \"b\n!END\n"
      "!PARAMETER -c\n!TYPE nothing_that_is_known\n!END\n";
  attempt([&] { return !QZConfigure(itf, reinterpret_cast<const unsigned char*>(text.c_str())); });
  expectSound(itf);
}

void interfaceIsCopied(Attempt& attempt) {
  const QZInterface itf(configuration);
  QZInterface target(filterConfiguration);
  const bool done = attempt([&] {
    const QZInterface copy(itf);
    target = copy;
    target = *target.GetInterface("Details of the run");
    return target.GetParameter("-mode") != nullptr;
  });
  EXPECT_TRUE(!done || target.GetParameter("-in") == nullptr);
  expectSound(target);
}

void interfaceIsChanged(Attempt& attempt) {
  QZInterface itf(configuration);
  attempt([&] {
    QZParameter* const made = itf.AddParameter("int");
    if (made == nullptr || !made->SetName("-made") || !made->AddDetail(std::string(50, 'd'))) return false;
    QZInterface* const category = itf.AddInterface();
    category->SetName("made as well, with a name of some length");
    category->AddParameter(*made);
    return itf.AddParameter("nothing") == nullptr && itf.DeleteParameter(*made) && itf.DeleteInterface(*category);
  });
  expectSound(itf);
}

void commandLineIsParsed(Attempt& attempt) {
  static const TemporaryFile settings("# comment\n-scale 2.5\n-count 7 8 'and' \n-mode 1\n-unknown 3\n");
  static const TemporaryFile good("-scale 2.5\n-count 7 8\n");
  static const TemporaryFile table(std::string(40000, 't'));
  QZInterface itf(configuration);
  Arguments arguments({"program", "-settings", good.Path(), "-table", table.Path(), "-v", "--unset-mode",
                       "a_file_with_a_long_name.qzr"});
  Arguments wrong({"program", "-settings", settings.Path(), "-count", "13", "-x", "word"});
  const bool done = attempt([&] {
    QZInterface other(itf);
    QZParseCommandLine(other, "1", wrong.Count(), wrong.Values(), requirements, QZErrorLevel::Warning, false);
    return QZParseCommandLine(itf, "1", arguments.Count(), arguments.Values(), requirements, QZErrorLevel::Warning,
                              false);
  });
  double scale = 0;
  if (done) QZTypedParameter<double>::From(itf.GetParameter("-scale"))->GetSetting(scale);
  EXPECT_EQ(scale, done ? 2.5 : 0);
  expectSound(itf);
}

void filterLineIsParsed(Attempt& attempt) {
  QZInterface itf(filterConfiguration);
  Arguments arguments({"program", "-vs", "-s", "first_file_with_a_long_name", "-second"});
  const bool done = attempt([&] {
    return QZParseCommandLineLW(itf, "1", arguments.Count(), arguments.Values(), nullptr, QZErrorLevel::Warning);
  });
  EXPECT_TRUE(!done || itf.GetParameter("-files")->GetStringValue(1) == "-second");
  expectSound(itf);
}

void parameterFileIsParsed(Attempt& attempt) {
  QZInterface itf(configuration);
  const std::string text = "-in 'a name with blanks in it'\n-count 1 2 3\n-scale 1e3\n";
  qzisstream in;
  in.set(text.data(), text.size(), false);
  const bool done = attempt([&] { return QZParseParameterFile(itf, in, true, QZErrorLevel::Warning); });
  EXPECT_TRUE(!done || itf.GetParameter("-count")->GetStringValue(2) == "3");
  expectSound(itf);
}

void everythingIsWritten(Attempt& attempt) {
  QZInterface itf(configuration);
  itf.GetParameter("-count")->SetStringValues("4 5 6");
  const auto write = [&](qzostream& out) {
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
  };
  qzosstream reference, out;
  write(reference);
  const bool done = attempt([&] {
    write(out);
    return !out.failed();
  });
  EXPECT_TRUE(!done || out.str() == reference.str());
  expectSound(itf);
}

void helpIsGiven(Attempt& attempt) {
  const QZInterface itf(configuration);
  const TemporaryFile program;
  const std::string page = program.Path() + "_help.html";
  attempt([&] {
    bool given = true;
    for (const char* const word : {"simple", "all", "defaults", "versions", "count", "none", "html"}) {
      Arguments arguments({program.Path(), "--help", word});
      qzosstream out;
      given = QZCheckHelp(itf, arguments.Count(), arguments.Values(), true, out) && given;
    }
    Arguments alone({"program"});
    qzosstream out;
    return QZCheckHelp(itf, alone.Count(), alone.Values(), true, out) && given;
  });
  std::remove(page.c_str());
}

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

void parametersAreChanged(Attempt& attempt) {
  changeParameter<QZIntParameter>(attempt, "4 4,4 4", "4");
  changeParameter<QZDoubleParameter>(attempt, "0.5 0.5", "0.5");
  changeParameter<QZStringParameter>(attempt, "a_text_that_is_longer_than_a_string",
                                     "a_text_that_is_longer_than_a_string");
}

const Road roads[] = {
    {"TextIsConfigured", textIsConfigured},
    {"WrongTextIsConfigured", wrongTextIsConfigured},
    {"InterfaceIsCopied", interfaceIsCopied},
    {"InterfaceIsChanged", interfaceIsChanged},
    {"CommandLineIsParsed", commandLineIsParsed},
    {"FilterLineIsParsed", filterLineIsParsed},
    {"ParameterFileIsParsed", parameterFileIsParsed},
    {"EverythingIsWritten", everythingIsWritten},
    {"HelpIsGiven", helpIsGiven},
    {"ParametersAreChanged", parametersAreChanged},
};
const Road callRoads[] = {
    {"CommandLineIsParsed", commandLineIsParsed},
    {"HelpIsGiven", helpIsGiven},
};
const Road firstUses[] = {{"InterfaceIsChanged", interfaceIsChanged}};

INSTANTIATE_TEST_SUITE_P(CommandLine, Roads,
                         testing::Combine(testing::ValuesIn(roads),
                                          testing::Values(Fails::Allocation, Fails::AllocationsFrom)),
                         NameOfCase);
INSTANTIATE_TEST_SUITE_P(CommandLineCalls, Roads,
                         testing::Combine(testing::ValuesIn(callRoads), testing::Values(Fails::Call, Fails::CallsFrom)),
                         NameOfCase);
INSTANTIATE_TEST_SUITE_P(CommandLine, FirstUses,
                         testing::Combine(testing::ValuesIn(firstUses), testing::Values(Fails::Allocation)),
                         NameOfCase);

}  // namespace
