#pragma once

#include <atomic>
#include <cstdarg>
#include <string>
#include <type_traits>

#include "qz/platform/standardstream.h"
#include "qz/system/frame/errorgate_impl.h"
#include "qz/system/frame/errorlevel.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

class QZErrorHandlerImplBase;

/// The channel for failures, warnings and remarks. Code sends its message to the global `QZThrow` and then returns its
/// failure value, since a message may or may not end the process.
///
///     if (count < 0) {
///       QZThrow.Error("The count of %s is %d", name.c_str(), count);
///       return false;
///     }
///
/// With the default implementation a message goes to qzerr; an Error or Fatal ends the process with status 1, a Usage
/// with status 0; after SetStrict(false) an Error is printed as a warning and the program goes on.
///
/// Safe from any thread. Replacing the implementation (SetHandlerImpl, SetOutputStream, assignment) is for quiet
/// moments, in which no other thread uses the handler.
class QZErrorHandler {
 public:
  /// Prints to qzerr.
  QZErrorHandler();
  /// Copies the implementation of a handler that owns its own, else shares it.
  QZErrorHandler(QZErrorHandler& other);
  /// As the copy constructor, after disposing of the present implementation; to itself it does nothing.
  QZErrorHandler& operator=(QZErrorHandler& other);
  ~QZErrorHandler();

  /// Installs an implementation, and deletes the former one if it was owned. With `own` the handler deletes `impl` in
  /// its turn. For the implementation that is there already only the flag changes. Null stands for a new one that
  /// prints to qzerr.
  void SetHandlerImpl(QZErrorHandlerImplBase* impl, bool own);
  /// The present implementation, never null; the handler's or its caller's, as the owned flag tells.
  [[nodiscard]] QZErrorHandlerImplBase* GetHandlerImpl();
  /// Sends messages to `stream` from now on, with the present counts, strict flag and threshold of the calling thread;
  /// other threads start from Info again. The stream stays the caller's and must outlive its use here.
  void SetOutputStream(qzostream& stream);

  /// Sets the threshold of the calling thread alone.
  void SetLevel(unsigned int level);
  /// The threshold of the calling thread.
  [[nodiscard]] unsigned int GetLevel() const;
  /// Sets for all threads whether an Error ends the process.
  void SetStrict(bool strict);
  [[nodiscard]] bool GetStrict() const;

  /// The messages of a level from 1 to 8; of unknown levels for 9 and more; the sum over 1 to 8 for 0. An Error counts
  /// as the Fatal or Warning that it was printed as, and a dropped message isn't counted.
  [[nodiscard]] unsigned int Count(unsigned int level) const;
  /// Sets the counts 1 to 8 to zero.
  void Clear();

  // Each level has a form that takes a printf format and one that takes a finished text. Neither adds a line end. What
  // a format gives beyond 8191 characters is cut; numbers have a decimal point in every locale.
  //
  // A Debug or Verbose that no thread wants to see costs a load and a branch. A function of C's variable arguments
  // can't be inlined, so these two hand theirs on: under GCC with its check of the format, elsewhere as a template.
#if defined(__GNUC__) && !defined(__clang__)
  [[gnu::always_inline, gnu::format(printf, 2, 3)]] void Debug(const char* format, ...) {
    if (Passes(QZErrorLevel::Debug)) Send(QZErrorLevel::Debug, format, __builtin_va_arg_pack());
  }
  [[gnu::always_inline, gnu::format(printf, 2, 3)]] void Verbose(const char* format, ...) {
    if (Passes(QZErrorLevel::Verbose)) Send(QZErrorLevel::Verbose, format, __builtin_va_arg_pack());
  }
#else
  template <class... Arguments>
  void Debug(const char* format, Arguments... arguments) {
    static_assert((std::is_scalar_v<Arguments> && ...), "a printf format takes numbers and pointers");
    if (Passes(QZErrorLevel::Debug)) Send(QZErrorLevel::Debug, format, arguments...);
  }
  template <class... Arguments>
  void Verbose(const char* format, Arguments... arguments) {
    static_assert((std::is_scalar_v<Arguments> && ...), "a printf format takes numbers and pointers");
    if (Passes(QZErrorLevel::Verbose)) Send(QZErrorLevel::Verbose, format, arguments...);
  }
#endif
  void Debug(const std::string& text) {
    if (Passes(QZErrorLevel::Debug)) Msg(QZErrorLevel::Debug, text);
  }
  void Verbose(const std::string& text) {
    if (Passes(QZErrorLevel::Verbose)) Msg(QZErrorLevel::Verbose, text);
  }

  [[gnu::format(printf, 2, 3)]] void Info(const char* format, ...);
  void Info(const std::string& text);
  [[gnu::format(printf, 2, 3)]] void Warning(const char* format, ...);
  void Warning(const std::string& text);
  /// Ends the process with status 1 in strict mode, the default; else a warning. Code goes on as if it returned.
  [[gnu::format(printf, 2, 3)]] void Error(const char* format, ...);
  void Error(const std::string& text);
  /// Ends the process with status 1, also if the message is below the threshold and so isn't printed.
  [[gnu::format(printf, 2, 3)]] void Fatal(const char* format, ...);
  void Fatal(const std::string& text);
  /// Ends the process with status 0, also if the message is below the threshold and so isn't printed.
  [[gnu::format(printf, 2, 3)]] void Usage(const char* format, ...);
  void Usage(const std::string& text);
  /// The same with the level given by the caller, which may be any number.
  [[gnu::format(printf, 3, 4)]] void Msg(unsigned int level, const char* format, ...);
  void Msg(unsigned int level, const std::string& text);

 private:
  friend class QZThrowUser;

  [[nodiscard]] bool Passes(unsigned int level) const;
  void Send(unsigned int level, const char* format, ...);
  [[gnu::format(printf, 3, 0)]] void Format(unsigned int level, const char* format, std::va_list arguments);
  [[nodiscard]] QZErrorHandlerImplBase& Implementation() const;
  void Install(QZErrorHandlerImplBase* impl, bool own);
  [[nodiscard]] static bool DropsBelowLevel(const QZErrorHandlerImplBase& impl);

  class Use;

  std::atomic<QZErrorHandlerImplBase*> implementation;
  bool owned;
};

/// The one channel of the process. It works from any static initialiser to the last static destructor. After that its
/// implementation is gone, and whoever still sends a message finds it printed to qzerr, by the last strict flag and the
/// main thread's last threshold, with no effect on the process, which is ending.
extern QZErrorHandler QZThrow;

/// Counts the units that can use QZThrow. Each unit that includes this header has one: the first makes QZThrow, the
/// last ends it.
class QZThrowUser {
 public:
  QZThrowUser();
  ~QZThrowUser();
  QZThrowUser(const QZThrowUser&) = delete;
  QZThrowUser& operator=(const QZThrowUser&) = delete;
};

static const QZThrowUser qzThrowUserOfThisUnit;

// A message that is dropped is the usual case: what a loop jumps over is the sending of one.
inline bool QZErrorHandler::Passes(unsigned int level) const {
  return __builtin_expect(this != &QZThrow || level >= errorGate.load(std::memory_order_relaxed), false);
}

}  // namespace QZSystem
