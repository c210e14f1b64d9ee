#include "qz/system/frame/error.h"

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <cstdarg>
#include <memory>
#include <new>
#include <thread>
#include <typeinfo>
#include <utility>

#include "qz/platform/formattext_impl.h"
#include "qz/platform/version.h"
#include "qz/system/frame/buildinfo_impl.h"
#include "qz/system/frame/endprocess_impl.h"
#include "qz/system/frame/errorimpl.h"

namespace QZSystem {

// QZThrow is raw memory under that name, so that no destructor of the language ends it: static destructors and threads
// that run on may use it for as long as the process has instructions to execute. Zeros, which is what a unit finds that
// runs before the first initialiser here, are a handler with no implementation yet.
//
// The end is a change of implementation. The last QZThrowUser puts in one that prints and never ends the process, then
// deletes the former one, once the calls that are inside it have come back. The stream implementation itself isn't
// deleted: its going would show nowhere, and so its calls needn't be counted.

// The name that the compiler gives to QZThrow.
alignas(QZErrorHandler) unsigned char throwMemory[sizeof(QZErrorHandler)] __asm__("_ZN8QZSystem7QZThrowE");

namespace {

constexpr std::size_t TextSize = 8192;
constexpr auto LongestWait = std::chrono::seconds(1);

const bool versionIsRegistered = (QZRegisterVersion(&BuildVersion), true);

std::atomic<unsigned int> users{0};

// The calls that are inside the implementation of QZThrow, as long as it is another than the stream implementation:
// those of all threads, counted in several places so that threads don't wait for each other's cache lines, and those of
// this thread.
struct alignas(64) Counter {
  std::atomic<unsigned int> calls{0};
};
constexpr unsigned int Counters = 16;
Counter callsInside[Counters];
std::atomic<bool> callsAreCounted{false};
std::atomic<unsigned int> threadsSeen{0};
thread_local unsigned int ownCallsInside = 0;
thread_local unsigned int ownCounter = Counters;

std::atomic<unsigned int>& OwnCounter() {
  if (ownCounter == Counters) ownCounter = threadsSeen++ % Counters;
  return callsInside[ownCounter].calls;
}

// The threshold of the main thread, for the case that another thread ends the process.
std::atomic<unsigned int> mainThreshold{QZErrorLevel::Info};

bool IsMainThread() { return gettid() == getpid(); }

bool IsPlain(const QZErrorHandlerImplBase& impl) { return typeid(impl) == typeid(QZErrorHandlerStreamImpl); }

// No call enters while this is asked, so that the sum is right once it is reached.
unsigned int AllCallsInside() {
  unsigned int calls = 0;
  for (const Counter& each : callsInside) calls += each.calls.load();
  return calls;
}

// The threads that called didn't come along.
void CountAfterFork() {
  for (Counter& each : callsInside) each.calls.store(0);
  OwnCounter().store(ownCallsInside);
}

// A call that is stuck, writing to a pipe that nobody reads, doesn't keep the process from ending.
bool OthersCameBack() {
  const auto start = std::chrono::steady_clock::now();
  while (AllCallsInside() > ownCallsInside) {
    if (std::chrono::steady_clock::now() - start > LongestWait) return false;
    std::this_thread::yield();
  }
  return true;
}

void MakeQZThrow() {
  static const bool made = [] {
    pthread_atfork(nullptr, nullptr, &CountAfterFork);
    new (&QZThrow) QZErrorHandler;
    return true;
  }();
  static_cast<void>(made);
}

// What QZThrow is after its end, with one threshold for all threads.
class AfterTheEnd : public QZErrorHandlerStreamImpl {
 public:
  AfterTheEnd(const QZErrorHandlerImplBase& former, unsigned int lastThreshold)
      : QZErrorHandlerStreamImpl(former, qzerr), threshold(lastThreshold) {}

  unsigned int GetLevel() const override { return threshold.load(); }
  void SetLevel(unsigned int newThreshold) override { threshold.store(newThreshold); }

 private:
  std::atomic<unsigned int> threshold;
};

}  // namespace

QZThrowUser::QZThrowUser() {
  ++users;
  MakeQZThrow();
}

QZThrowUser::~QZThrowUser() {
  static bool ended = false;
  if (--users > 0 || std::exchange(ended, true)) return;
  ProcessIsEnding();

  QZErrorHandlerImplBase* const former = &QZThrow.Implementation();
  const unsigned int level = IsMainThread() ? former->GetLevel() : mainThreshold.load();
  alignas(AfterTheEnd) static unsigned char memory[sizeof(AfterTheEnd)];
  const bool mayBeDeleted = QZThrow.owned && !IsPlain(*former);
  QZThrow.Install(new (memory) AfterTheEnd(*former, level), false);
  callsAreCounted.store(false);

  static QZErrorHandlerImplBase* kept = nullptr;
  if (mayBeDeleted && OthersCameBack()) {
    delete former;
  } else {
    kept = former;  // where a search for leaks finds it
  }
  static_cast<void>(kept);
}

// A call into the implementation of a handler.
class QZErrorHandler::Use {
 public:
  explicit Use(const QZErrorHandler& handler) : isCounted(&handler == &QZThrow && callsAreCounted.load()) {
    if (isCounted) {
      ++OwnCounter();
      ++ownCallsInside;
    }
    impl = &handler.Implementation();
  }
  ~Use() {
    if (isCounted) {
      --ownCallsInside;
      --OwnCounter();
    }
  }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;

  QZErrorHandlerImplBase* operator->() const { return impl; }
  QZErrorHandlerImplBase& operator*() const { return *impl; }

 private:
  bool isCounted;
  QZErrorHandlerImplBase* impl;
};

QZErrorHandler::QZErrorHandler() : implementation(nullptr), owned(false) { Install(nullptr, true); }

QZErrorHandler::QZErrorHandler(QZErrorHandler& other) : implementation(nullptr), owned(false) {
  QZErrorHandlerImplBase& source = other.Implementation();
  Install(other.owned ? source.CreateCopy() : &source, other.owned);
}

QZErrorHandler& QZErrorHandler::operator=(QZErrorHandler& other) {
  if (this == &other) return *this;
  QZErrorHandlerImplBase& source = other.Implementation();
  SetHandlerImpl(other.owned ? source.CreateCopy() : &source, other.owned);
  return *this;
}

QZErrorHandler::~QZErrorHandler() {
  if (owned) delete implementation.load();
}

void QZErrorHandler::SetHandlerImpl(QZErrorHandlerImplBase* impl, bool own) {
  const std::unique_ptr<QZErrorHandlerImplBase> former(owned && &Implementation() != impl ? &Implementation()
                                                                                          : nullptr);
  Install(impl, own);
}

void QZErrorHandler::Install(QZErrorHandlerImplBase* impl, bool own) {
  owned = own || impl == nullptr;
  if (impl == nullptr) impl = new QZErrorHandlerStreamImpl;
  implementation.store(impl);
  if (this != &QZThrow) return;
  callsAreCounted.store(!IsPlain(*impl));
  CloseErrorGate(DropsBelowLevel(*impl));
  if (IsMainThread()) mainThreshold.store(impl->GetLevel());
}

// A class that derives from the stream implementation may do anything with a message, unless it says that it does as
// the stream implementation.
bool QZErrorHandler::DropsBelowLevel(const QZErrorHandlerImplBase& impl) {
  return impl.dropsBelowLevel || IsPlain(impl);
}

// Null stands in the memory of QZThrow alone, and there until its making.
QZErrorHandlerImplBase& QZErrorHandler::Implementation() const {
  if (implementation.load() == nullptr) MakeQZThrow();
  return *implementation.load();
}

QZErrorHandlerImplBase* QZErrorHandler::GetHandlerImpl() { return &Implementation(); }

void QZErrorHandler::SetOutputStream(qzostream& stream) {
  SetHandlerImpl(new QZErrorHandlerStreamImpl(Implementation(), stream), true);
}

void QZErrorHandler::SetLevel(unsigned int level) {
  Use(*this)->SetLevel(level);
  if (this == &QZThrow && IsMainThread()) mainThreshold.store(level);
}

unsigned int QZErrorHandler::GetLevel() const { return Use(*this)->GetLevel(); }

void QZErrorHandler::SetStrict(bool strict) { Use(*this)->SetStrict(strict); }

bool QZErrorHandler::GetStrict() const { return Use(*this)->GetStrict(); }

unsigned int QZErrorHandler::Count(unsigned int level) const { return Use(*this)->Count(level); }

void QZErrorHandler::Clear() { Use(*this)->Clear(); }

void QZErrorHandler::Info(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(QZErrorLevel::Info, format, arguments);
  va_end(arguments);
}

void QZErrorHandler::Warning(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(QZErrorLevel::Warning, format, arguments);
  va_end(arguments);
}

void QZErrorHandler::Error(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(QZErrorLevel::Error, format, arguments);
  va_end(arguments);
}

void QZErrorHandler::Fatal(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(QZErrorLevel::Fatal, format, arguments);
  va_end(arguments);
}

void QZErrorHandler::Usage(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(QZErrorLevel::Usage, format, arguments);
  va_end(arguments);
}

void QZErrorHandler::Msg(unsigned int level, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(level, format, arguments);
  va_end(arguments);
}

// What Debug and Verbose hand on; the format was checked there.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
void QZErrorHandler::Send(unsigned int level, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Format(level, format, arguments);
  va_end(arguments);
}
#pragma GCC diagnostic pop

void QZErrorHandler::Info(const std::string& text) { Msg(QZErrorLevel::Info, text); }

void QZErrorHandler::Warning(const std::string& text) { Msg(QZErrorLevel::Warning, text); }

void QZErrorHandler::Error(const std::string& text) { Msg(QZErrorLevel::Error, text); }

void QZErrorHandler::Fatal(const std::string& text) { Msg(QZErrorLevel::Fatal, text); }

void QZErrorHandler::Usage(const std::string& text) { Msg(QZErrorLevel::Usage, text); }

void QZErrorHandler::Msg(unsigned int level, const std::string& text) { Use(*this)->Msg(level, text); }

// A message that will be dropped isn't formed. Fatal and Usage act even when they are dropped.
void QZErrorHandler::Format(unsigned int level, const char* format, std::va_list arguments) {
  const Use impl(*this);
  if (level < QZErrorLevel::Fatal && DropsBelowLevel(*impl) && level < impl->GetLevel()) return;
  char text[TextSize];
  text[0] = '\0';
  FormatText(text, sizeof text, format, arguments);
  impl->Msg(level, text);
}

}  // namespace QZSystem
