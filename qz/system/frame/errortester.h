#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "qz/platform/lock_impl.h"
#include "qz/system/frame/errorimpl.h"

namespace QZSystem {

/// The texts of messages by level, in the order of their arrival.
using QZErrorMessages = std::map<unsigned int, std::vector<std::string>>;

/// The record of messages that a test implementation shares with its copies.
///
///     for (const auto& [level, texts] : tester.GetMessages()) Check(level, texts);
///
/// One thread at a time. `Add` alone is safe from any thread; the record is read when those that report have stopped.
class QZErrorHandlerTester {
 public:
  QZErrorHandlerTester() : mutex(LockRank::Report) {}

  void Add(unsigned int level, const std::string& text);
  void Clear() { messages.clear(); }
  [[nodiscard]] const QZErrorMessages& GetMessages() const { return messages; }

 private:
  QZErrorMessages messages;
  ForkSafeMutex mutex;
};

/// The implementation that records every message, whatever the threshold, and instead of ending the process on a Fatal,
/// or on an Error in strict mode, throws std::runtime_error with the text and "\nFatal message in error handler.".
///
///     QZErrorHandlerTestImpl recording;
///     QZThrow.SetHandlerImpl(&recording, false);
///
/// All other messages then go the way of the stream implementation: they are printed and counted, and a Usage ends the
/// process. Safe from any thread; copying from an object needs exclusive access to it.
class QZErrorHandlerTestImpl : public QZErrorHandlerStreamImpl {
 public:
  /// Prints to qzerr; a new record.
  QZErrorHandlerTestImpl();
  /// Takes over strict, the calling thread's threshold, the counts and the stream of another implementation; one that
  /// prints to no stream gets qzerr. A new record.
  explicit QZErrorHandlerTestImpl(const QZErrorHandlerImplBase& present);

  void Msg(unsigned int level, const std::string& text) override;
  /// A new object that shares the record.
  [[nodiscard]] QZErrorHandlerTestImpl* CreateCopy() const override;

  [[nodiscard]] QZErrorHandlerTester& GetTester() const { return *tester; }

 private:
  QZErrorHandlerTestImpl(const QZErrorHandlerTestImpl&) = default;

  std::shared_ptr<QZErrorHandlerTester> tester;
};

/// The implementation of QZThrow, if it is a test implementation; otherwise throws std::runtime_error "QZThrow error
/// test impl not installed". It is not the caller's. One thread at a time.
[[nodiscard]] QZErrorHandlerTestImpl* QZGetErrorHandlerTestImpl();
void GetErrorHandlerTestImpl(QZErrorHandlerTestImpl*& impl);

/// Whether each search string occurs in a message of its level or above, and each level with search strings has
/// messages. If not, `err` tells the first string that doesn't and the messages that it was looked for in. Safe from
/// any thread.
[[nodiscard]] bool QZContainAllSearchStrings(std::string& err, const QZErrorMessages& messages,
                                             const QZErrorMessages& search);

/// Whether each message contains a search string of its level. If not, `err` tells the messages that don't, of the
/// first level with such. Safe from any thread.
[[nodiscard]] bool QZContainOnlySearchStrings(std::string& err, const QZErrorMessages& messages,
                                              const QZErrorMessages& search);

}  // namespace QZSystem
