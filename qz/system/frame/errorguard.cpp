#include "qz/system/frame/errorguard.h"

#include <algorithm>
#include <exception>
#include <stdexcept>

#include "qz/system/frame/error.h"

namespace QZSystem {

namespace {

constexpr const char* Failure = "Failure: ";
constexpr const char* NotEmpty = "Failure: ErrorHandler not empty, found the following messages:\n";
constexpr const char* HasMessagesAt = "Failure: Has Messages at Error Level ";
constexpr const char* HasExtraAt = "Failure: Has Extra Messages at Error Level ";
constexpr const char* HasExtra = "Failure: Has Extra Messages: ";

}  // namespace

QZPushTestHandler::QZPushTestHandler()
    : testImpl(new QZErrorHandlerTestImpl(*QZThrow.GetHandlerImpl())), saved(QZThrow.GetHandlerImpl()->CreateCopy()) {
  QZThrow.SetHandlerImpl(testImpl.get(), false);
}

QZPushTestHandler::~QZPushTestHandler() noexcept(false) { QZThrow.SetHandlerImpl(saved.release(), true); }

// A destructor that throws while another exception passes would end the program; so nothing may come out then, be it
// for want of memory.
void QZPushTestHandler::Finish(const std::function<std::string()>& check) const {
  const bool mayThrow = std::uncaught_exceptions() == 0;
  try {
    const std::string failure = check();
    if (failure.empty()) return;
    if (mayThrow) throw std::runtime_error(failure);
    saved->Msg(QZErrorLevel::Warning, failure);
  } catch (...) {
    if (mayThrow) throw;
  }
}

bool QZPushSimpleQZThrowTester::AddSearchString(unsigned int level, const std::string& text) {
  searchStrings[level].push_back(text);
  return true;
}

bool QZPushSimpleQZThrowTester::HasMessages() const { return NumMessages() > 0; }

unsigned int QZPushSimpleQZThrowTester::NumMessages() const {
  std::size_t count = 0;
  for (const auto& [level, texts] : Tester().GetMessages()) count += texts.size();
  return static_cast<unsigned int>(count);
}

bool QZPushSimpleQZThrowTester::HasMessagesAtLevel(unsigned int level) const { return NumMessagesAtLevel(level) > 0; }

unsigned int QZPushSimpleQZThrowTester::NumMessagesAtLevel(unsigned int level) const {
  const QZErrorMessages& messages = Tester().GetMessages();
  const auto found = messages.find(level);
  return found == messages.end() ? 0 : static_cast<unsigned int>(found->second.size());
}

void QZPushSimpleQZThrowTester::Clear() {
  searchStrings.clear();
  Tester().Clear();
}

const std::string& QZPushSimpleQZThrowTester::GetErrorLog() {
  errorText.clear();
  for (const auto& [level, texts] : Tester().GetMessages()) {
    errorText += "level = " + std::to_string(level) + '\n';
    for (const std::string& text : texts) errorText += text + '\n';
  }
  return errorText;
}

QZPushQZThrowTest::QZPushQZThrowTest(unsigned int level, const std::string& text) { AddSearchString(level, text); }

QZPushQZThrowTest::~QZPushQZThrowTest() noexcept(false) {
  Finish([this] {
    const bool passes = QZContainAllSearchStrings(errorText, Tester().GetMessages(), searchStrings);
    return passes ? std::string() : GetErrorMessage();
  });
}

std::string QZPushQZThrowTest::GetErrorMessage() {
  errorText.clear();
  static_cast<void>(QZContainAllSearchStrings(errorText, Tester().GetMessages(), searchStrings));
  return Failure + errorText;
}

QZPushQZThrowHasNoMessages::QZPushQZThrowHasNoMessages(const std::vector<unsigned int>& ignoredLevels)
    : ignored(ignoredLevels) {}

QZPushQZThrowHasNoMessages::~QZPushQZThrowHasNoMessages() noexcept(false) {
  Finish([this] {
    for (unsigned int level = QZErrorLevel::Debug; level <= QZErrorLevel::Quiet; ++level) {
      const bool isChecked = std::find(ignored.begin(), ignored.end(), level) == ignored.end();
      if (isChecked && HasMessagesAtLevel(level)) return GetErrorMessage();
    }
    return std::string();
  });
}

std::string QZPushQZThrowHasNoMessages::GetErrorMessage() { return NotEmpty + GetErrorLog(); }

QZPushQZThrowHasNoMessagesAtLevel::QZPushQZThrowHasNoMessagesAtLevel(unsigned int checkedLevel) : level(checkedLevel) {}

QZPushQZThrowHasNoMessagesAtLevel::~QZPushQZThrowHasNoMessagesAtLevel() noexcept(false) {
  Finish([this] { return HasMessagesAtLevel(level) ? GetErrorMessage() : std::string(); });
}

std::string QZPushQZThrowHasNoMessagesAtLevel::GetErrorMessage() {
  return HasMessagesAt + QZErrorLevelToString(level) + GetErrorLog();
}

QZPushQZThrowHasSpecficMessages::QZPushQZThrowHasSpecficMessages(unsigned int searchLevel, const std::string& text) {
  AddSearchString(searchLevel, text);
}

QZPushQZThrowHasSpecficMessages::~QZPushQZThrowHasSpecficMessages() noexcept(false) {
  Finish([this] {
    const bool passes = QZContainOnlySearchStrings(errorText, Tester().GetMessages(), searchStrings);
    return passes ? std::string() : GetErrorMessage();
  });
}

std::string QZPushQZThrowHasSpecficMessages::GetErrorMessage() {
  if (level == 0) return HasExtra + GetErrorLog();
  return HasExtraAt + QZErrorLevelToString(level) + ": " + GetErrorLog();
}

}  // namespace QZSystem
