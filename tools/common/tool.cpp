#include "tools/common/tool.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "tools/common/files.h"
#include "tools/common/rundisplay.h"
#include "tools/common/toolerror.h"

namespace QZTools {

using namespace QZSystem;

namespace {

constexpr const char* sharedConfiguration = R"(
!CATEGORY "Messages and progress" 100
  !BRIEF What is told on standard error
  !PARAMETER -progress 1
    !TYPE string
    !DEFAULT auto
    !LEGAL_VALUE auto
    !LEGAL_VALUE bar
    !LEGAL_VALUE dots
    !LEGAL_VALUE none
    !BRIEF How progress is shown
    !DETAIL
      auto: a bar on a terminal, else a line every tenth of the work, once a run lasts longer
      than two seconds. bar: the same from the start. dots: a dot for each 1000 records, and their
      number at the end. none: nothing.
  !END
  !PARAMETER -status 2
    !TYPE string
    !OUTPUT true
    !BRIEF A file that tells how far the run is, for others to watch
    !DETAIL
      It is written anew after each half second of processor time, and holds the line Finished
      when the run has ended.
  !END
  !PARAMETER -quiet 3
    !TYPE bool
    !DEFAULT false
    !BRIEF Tell errors only
  !END
  !PARAMETER -verbose 4
    !TYPE bool
    !DEFAULT false
    !BRIEF Tell more about what is done
  !END
!END
)";

constexpr const char* exitStatusText =
    "The exit status is 0, 1 after one message that tells what is wrong and what to do, or 130 where the user stopped "
    "the run.";

std::atomic<bool> interrupted{false};

extern "C" void onInterrupt(int) { interrupted.store(true, std::memory_order_relaxed); }

// A second Ctrl-C ends the process at once: the first one has put the default action back.
void installSignals() {
  struct sigaction action = {};
  action.sa_handler = onInterrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  // A reader that goes away shows as a failed write.
  std::signal(SIGPIPE, SIG_IGN);
}

thread_local std::string firstWarning;

// Keeps warnings back; everything else goes on to the handler that was there before.
class WarningKeeper : public QZErrorHandlerImplBase {
 public:
  explicit WarningKeeper(const QZErrorHandlerImplBase& other)
      : QZErrorHandlerImplBase(other), next(other.CreateCopy()) {}
  WarningKeeper(const WarningKeeper& other) : WarningKeeper(static_cast<const QZErrorHandlerImplBase&>(*other.next)) {}

  void Msg(unsigned int severity, const std::string& text) override {
    if (severity == QZErrorLevel::Warning) {
      if (firstWarning.empty()) firstWarning = text;
    } else if (severity >= GetLevel()) {
      next->Msg(severity, text);
    }
  }
  QZErrorHandlerImplBase* CreateCopy() const override { return new WarningKeeper(*this); }

 private:
  std::unique_ptr<QZErrorHandlerImplBase> next;
};

unsigned int editDistance(const std::string& a, const std::string& b) {
  std::vector<unsigned int> row(b.size() + 1);
  for (unsigned int j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    unsigned int diagonal = row[0]++;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const unsigned int change = diagonal + (a[i - 1] == b[j - 1] ? 0U : 1U);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, change});
    }
  }
  return row.back();
}

}  // namespace

void CheckInterrupt() {
  if (interrupted.load(std::memory_order_relaxed)) throw ToolEnd(130);
}

std::string TextSetting(const QZInterface& settings, const std::string& key) {
  const QZParameter* parameter = settings.GetParameter(key);
  if (!parameter) return "";
  return parameter->GetHasValue(0) ? parameter->GetStringValue(0) : parameter->GetStringDefault(0);
}

bool FlagSetting(const QZInterface& settings, const std::string& key) {
  bool value = false;
  return QZStringToNumber(TextSetting(settings, key), value) && value;
}

unsigned int CountSetting(const QZInterface& settings, const std::string& key) {
  unsigned int value = 0;
  QZStringToNumber(TextSetting(settings, key), value);
  return value;
}

std::vector<std::string> NearWords(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string wanted = QZStringLower(word);
  std::vector<std::pair<unsigned int, std::string>> ranked;
  for (const std::string& candidate : candidates) {
    const std::string lower = QZStringLower(candidate);
    const bool inside = wanted.size() >= 3 && lower.find(wanted) != std::string::npos;
    const unsigned int distance = inside ? 1 : editDistance(wanted, lower);
    if (distance <= std::max<std::size_t>(2, wanted.size() / 3)) ranked.emplace_back(distance, candidate);
  }
  std::stable_sort(ranked.begin(), ranked.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> near;
  for (std::size_t i = 0; i < ranked.size() && i < 3; ++i) near.push_back(ranked[i].second);
  return near;
}

std::string TakeWarning() { return std::exchange(firstWarning, {}); }

namespace {

bool isSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  if (std::filesystem::weakly_canonical(a, error) == std::filesystem::weakly_canonical(b, error) && !error) return true;
  return std::filesystem::is_regular_file(a, error) && std::filesystem::equivalent(a, b, error);
}

// The status file is written over and over: it would destroy a file that the run reads or writes.
void refuseStatusOverFile(const QZInterface& settings) {
  const std::string status = TextSetting(settings, "-status");
  if (status.empty()) return;
  if (status == "-") throw ToolError("-status wants the name of a file");
  for (const QZParameter& each : QZIter(settings.GetParameters(true))) {
    if (each.GetName() == "-status" || (each.GetInput() == 0 && !each.GetOutput())) continue;
    for (const std::string& file : QZIter(each.GetStringValues())) {
      if (file != "-" && isSameFile(status, file))
        throw ToolError("-status and " + each.GetName() + " name the same file, " + file +
                        "; give -status another one");
    }
  }
}

}  // namespace

int RunTool(int argc, char** argv, const std::string& configuration,
            const std::function<void(QZInterface& settings)>& body) {
  installSignals();
  QZInterface settings((configuration + sharedConfiguration).c_str());
  settings.AddDetail(exitStatusText);
  try {
    if (QZCheckHelp(settings, argc, argv, true, argc == 1 ? qzerr : qzout)) {
      CheckStandardOutput();
      return 0;
    }
    if (!QZParseCommandLine(settings, QZSystemGetRelease(), argc, argv, nullptr, QZErrorLevel::Error, false)) return 1;
    if (FlagSetting(settings, "-verbose")) QZThrow.SetLevel(QZErrorLevel::Verbose);
    if (FlagSetting(settings, "-quiet")) QZThrow.SetLevel(QZErrorLevel::Error);
    QZThrow.SetHandlerImpl(new WarningKeeper(*QZThrow.GetHandlerImpl()), true);
    refuseStatusOverFile(settings);
    RunDisplay display(TextSetting(settings, "-progress"), TextSetting(settings, "-status"));
    body(settings);
    display.Finish();
    CheckStandardOutput();
  } catch (const ToolEnd& end) {
    return end.Status();
  } catch (const ToolError& error) {
    QZThrow.Error(std::string(error.what()));
    return 1;
  } catch (const std::bad_alloc&) {
    QZThrow.Error("Out of memory");
    return 1;
  }
  return 0;
}

}  // namespace QZTools
