#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "qz/platform/lock_impl.h"
#include "qz/platform/threadlocal.h"
#include "qz/system/frame/names.h"

namespace QZPlatform {
class qzostream;
}

namespace QZSystem {

/// The threshold of one thread; a thread that has set none sees Info.
struct QZDefaultErrorLevel {
  unsigned int level = 3;
};

/// Decides what happens to the messages of a QZErrorHandler: which are dropped, where the others go, what they count.
///
///     class MyLog : public QZErrorHandlerImplBase {
///      public:
///       void Msg(unsigned int at, const std::string& text) override { IncrementCount(at); Append(text); }
///       QZErrorHandlerImplBase* CreateCopy() const override { return new MyLog(*this); }
///     };
///     QZThrow.SetHandlerImpl(new MyLog, true);
///
/// Safe from any thread; copying from and assigning to an object needs exclusive access to both.
class QZErrorHandlerImplBase {
 public:
  QZErrorHandlerImplBase();
  /// Copies strict, the counts, and the threshold of the calling thread; other threads start from the default in the
  /// copy.
  QZErrorHandlerImplBase(const QZErrorHandlerImplBase& other);
  QZErrorHandlerImplBase& operator=(const QZErrorHandlerImplBase& other);
  virtual ~QZErrorHandlerImplBase();

  /// Whether an Error ends the process; true at first, and the same for all threads.
  virtual bool GetStrict() const;
  /// The threshold of the calling thread, 3 (Info) at first: messages below it are dropped.
  virtual unsigned int GetLevel() const;
  /// The messages counted under a level from 1 to 8; for a level of 9 and more those of unknown level; for 0 the sum
  /// over the levels 1 to 8.
  virtual unsigned int Count(unsigned int level) const;

  virtual void SetStrict(bool strict);
  /// Sets the threshold of the calling thread alone.
  virtual void SetLevel(unsigned int level);
  /// Adds one to the count of a level; a level of 9 and more counts under 0, as 0 itself does.
  virtual void IncrementCount(unsigned int level);
  /// Sets the counts 1 to 8 to zero; that of unknown levels keeps its value.
  virtual void Clear();

  /// Takes one message with its finished text, which has no line end; called by any thread, with no lock held. An
  /// override decides by GetLevel whether to drop it, counts it with IncrementCount, and may end the process; if it
  /// returns, the sender goes on with its failure value.
  virtual void Msg(unsigned int level, const std::string& text) = 0;
  /// A new object with the same state, in the sense of the copy constructor; the caller's.
  virtual QZErrorHandlerImplBase* CreateCopy() const = 0;

 protected:
  /// Takes over what the copy constructor tells.
  void Copy(const QZErrorHandlerImplBase& other);
  /// For the constructor of a class whose Msg begins by dropping what is below GetLevel(): from then on such messages
  /// may stay unformed, and Msg isn't called for them. It holds for this object alone and not for copies of it.
  /// REQUIRES: GetLevel and SetLevel are those of this class.
  void DropBelowLevel() { dropsBelowLevel = true; }

 private:
  friend class QZErrorHandler;

  static constexpr std::size_t Levels = 9;

  QZThreadLocal<QZDefaultErrorLevel> level;
  std::array<std::atomic<std::uint32_t>, Levels> counts;
  std::atomic<bool> strict;
  bool dropsBelowLevel = false;
};

/// The implementation that prints to a stream, one line for each message, with a prefix that tells the level.
///
///     qzofstream log;
///     log.open("run.log");
///     QZThrow.SetHandlerImpl(new QZErrorHandlerStreamImpl(*QZThrow.GetHandlerImpl(), log), true);
///
/// A Fatal, and an Error in strict mode, ends the process with status 1, a Usage with status 0, through the normal exit
/// path. Safe from any thread; copying from and assigning to an object needs exclusive access to both.
class QZErrorHandlerStreamImpl : public QZErrorHandlerImplBase {
 public:
  /// Prints to qzerr.
  QZErrorHandlerStreamImpl();
  /// As the copy of the base, on the same stream, with a lock of its own.
  QZErrorHandlerStreamImpl(const QZErrorHandlerStreamImpl& other);
  /// Takes strict, counts and the calling thread's threshold from any implementation, and prints to `stream`, which
  /// stays the caller's and must outlive this object and its copies.
  QZErrorHandlerStreamImpl(const QZErrorHandlerImplBase& other, qzostream& stream);
  QZErrorHandlerStreamImpl& operator=(const QZErrorHandlerStreamImpl& other);
  ~QZErrorHandlerStreamImpl() override;

  /// Drops a message below the threshold. Otherwise prints and counts it, an Error as a Fatal when strict and as a
  /// Warning when not; Quiet is counted only. Then ends the process on a Fatal or Usage, also on one that was dropped,
  /// unless the process is ending already.
  void Msg(unsigned int level, const std::string& text) override;
  QZErrorHandlerImplBase* CreateCopy() const override;

 private:
  void Print(unsigned int level, const std::string& text);

  qzostream* stream;
  ForkSafeMutex mutex;
};

}  // namespace QZSystem
