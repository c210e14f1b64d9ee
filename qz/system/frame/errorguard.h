#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qz/system/frame/errorlevel.h"
#include "qz/system/frame/errortester.h"

/// Guards that check what a piece of code reports to QZThrow.
///
///     {
///       const QZPushQZThrowTest expected(QZErrorLevel::Warning, "no charge");
///       ReadMolecule(in);
///     }  // throws std::runtime_error unless there was such a warning
///
/// While a guard stands, every message is recorded, and a Fatal, or an Error in strict mode, throws std::runtime_error
/// where it is sent instead of ending the process. When it goes, QZThrow has its former implementation, strict flag,
/// threshold and counts again, and then a failed check leaves the guard's destructor as std::runtime_error; while
/// another exception is on its way it is sent to the former implementation as a Warning instead. Guards nest like a
/// stack. One thread at a time, const operations included; but messages of any thread are recorded, and a guard comes
/// and goes, and is asked, when no other thread reports.
namespace QZSystem {

/// Swaps the implementation of QZThrow for one that records, and in the end swaps it back.
class QZPushTestHandler {
 public:
  /// The new implementation has the strict flag, the threshold, the counts and the stream of the present one.
  QZPushTestHandler();
  QZPushTestHandler(const QZPushTestHandler&) = delete;
  QZPushTestHandler& operator=(const QZPushTestHandler&) = delete;
  virtual ~QZPushTestHandler() noexcept(false);

 protected:
  [[nodiscard]] QZErrorHandlerTester& Tester() const { return testImpl->GetTester(); }
  /// For the destructors: the text of a failed check is thrown as std::runtime_error, or sent to the former
  /// implementation as a Warning if another exception is on its way. `check` gives "" if all is well.
  void Finish(const std::function<std::string()>& check) const;

 private:
  std::unique_ptr<QZErrorHandlerTestImpl> testImpl;
  std::unique_ptr<QZErrorHandlerImplBase> saved;
};

/// Holds search strings and answers questions about the record; checks nothing itself.
class QZPushSimpleQZThrowTester : public QZPushTestHandler {
 public:
  /// Always true.
  bool AddSearchString(unsigned int level, const std::string& text);

  [[nodiscard]] bool HasMessages() const;
  [[nodiscard]] unsigned int NumMessages() const;
  [[nodiscard]] bool HasMessagesAtLevel(unsigned int level) const;
  [[nodiscard]] unsigned int NumMessagesAtLevel(unsigned int level) const;

  /// Forgets the search strings and the messages.
  void Clear();

  /// The whole record: for each level "level = " with its number, then its messages, each on a line of its own. Good
  /// until the next call on the guard.
  [[nodiscard]] const std::string& GetErrorLog();

 protected:
  QZErrorMessages searchStrings;
  std::string errorText;
};

/// Expects that each search string occurs in a message of its level or above.
class QZPushQZThrowTest : public QZPushSimpleQZThrowTester {
 public:
  QZPushQZThrowTest(unsigned int level, const std::string& text);
  ~QZPushQZThrowTest() noexcept(false) override;

  /// The text of the check that fails with the record as it is. So with the other guards.
  [[nodiscard]] std::string GetErrorMessage();
};

/// Expects no message at the levels 1 to 8.
class QZPushQZThrowHasNoMessages : public QZPushSimpleQZThrowTester {
 public:
  QZPushQZThrowHasNoMessages() = default;
  /// Messages of these levels are fine.
  explicit QZPushQZThrowHasNoMessages(const std::vector<unsigned int>& ignoredLevels);
  ~QZPushQZThrowHasNoMessages() noexcept(false) override;

  [[nodiscard]] std::string GetErrorMessage();

 private:
  std::vector<unsigned int> ignored;
};

/// Expects no message at one level.
class QZPushQZThrowHasNoMessagesAtLevel : public QZPushSimpleQZThrowTester {
 public:
  explicit QZPushQZThrowHasNoMessagesAtLevel(unsigned int checkedLevel);
  ~QZPushQZThrowHasNoMessagesAtLevel() noexcept(false) override;

  [[nodiscard]] std::string GetErrorMessage();

 private:
  unsigned int level;
};

/// Expects that each message contains one of the search strings of its level.
class QZPushQZThrowHasSpecficMessages : public QZPushSimpleQZThrowTester {
 public:
  QZPushQZThrowHasSpecficMessages(unsigned int searchLevel, const std::string& text);
  ~QZPushQZThrowHasSpecficMessages() noexcept(false) override;

  /// The level that the report names; 0, as at first, for none. It has no part in the check.
  void SetReportLevel(unsigned int reportLevel) { level = reportLevel; }
  [[nodiscard]] std::string GetErrorMessage();

 private:
  unsigned int level = 0;
};

}  // namespace QZSystem
