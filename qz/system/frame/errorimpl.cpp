#include "qz/system/frame/errorimpl.h"

#include "qz/platform/standardstream.h"
#include "qz/system/frame/endprocess_impl.h"
#include "qz/system/frame/errorgate_impl.h"
#include "qz/system/frame/errorlevel.h"

namespace QZSystem {

namespace {

constexpr const char* DebugPrefix = "Debug: ";
constexpr const char* WarningPrefix = "Warning: ";
constexpr const char* FatalPrefix = "Fatal: ";
constexpr const char* UsagePrefix = "Usage: ";
constexpr const char* UnknownPrefix = "Unknown Error Level(";
constexpr const char* UnknownPrefixEnd = "): ";

constexpr const char* LevelNames[] = {"Undefined", "Debug", "Verbose", "Info", "Warning",
                                      "Error",     "Fatal", "Usage",   "Quiet"};
constexpr const char* UnknownLevelName = "Unknown Error Level";

}  // namespace

std::string QZErrorLevelToString(unsigned int level) {
  return level <= QZErrorLevel::Quiet ? LevelNames[level] : UnknownLevelName;
}

QZErrorHandlerImplBase::QZErrorHandlerImplBase() : strict(true) {
  for (std::atomic<std::uint32_t>& count : counts) count.store(0, std::memory_order_relaxed);
}

QZErrorHandlerImplBase::QZErrorHandlerImplBase(const QZErrorHandlerImplBase& other) : QZErrorHandlerImplBase() {
  Copy(other);
}

QZErrorHandlerImplBase& QZErrorHandlerImplBase::operator=(const QZErrorHandlerImplBase& other) {
  if (this != &other) Copy(other);
  return *this;
}

QZErrorHandlerImplBase::~QZErrorHandlerImplBase() = default;

bool QZErrorHandlerImplBase::GetStrict() const { return strict.load(); }

unsigned int QZErrorHandlerImplBase::GetLevel() const { return level->level; }

unsigned int QZErrorHandlerImplBase::Count(unsigned int which) const {
  if (which >= Levels) return counts[0].load();
  if (which > 0) return counts[which].load();
  unsigned int sum = 0;
  for (std::size_t each = 1; each < Levels; ++each) sum += counts[each].load();
  return sum;
}

void QZErrorHandlerImplBase::SetStrict(bool isStrict) { strict.store(isStrict); }

void QZErrorHandlerImplBase::SetLevel(unsigned int threshold) {
  level->level = threshold;
  LowerErrorFloor(threshold);
}

void QZErrorHandlerImplBase::IncrementCount(unsigned int which) { ++counts[which < Levels ? which : 0]; }

void QZErrorHandlerImplBase::Clear() {
  for (std::size_t each = 1; each < Levels; ++each) counts[each].store(0);
}

// The flag and the threshold are those that the other shows, which a class of its own may compute. They are stored as
// this class does it: in a constructor nothing else is there yet.
void QZErrorHandlerImplBase::Copy(const QZErrorHandlerImplBase& other) {
  QZErrorHandlerImplBase::SetStrict(other.GetStrict());
  QZErrorHandlerImplBase::SetLevel(other.GetLevel());
  for (std::size_t each = 0; each < Levels; ++each) counts[each].store(other.counts[each].load());
}

QZErrorHandlerStreamImpl::QZErrorHandlerStreamImpl() : stream(&qzerr), mutex(LockRank::Report) {}

QZErrorHandlerStreamImpl::QZErrorHandlerStreamImpl(const QZErrorHandlerStreamImpl& other)
    : QZErrorHandlerImplBase(other), stream(other.stream), mutex(LockRank::Report) {}

QZErrorHandlerStreamImpl::QZErrorHandlerStreamImpl(const QZErrorHandlerImplBase& other, qzostream& output)
    : QZErrorHandlerImplBase(other), stream(&output), mutex(LockRank::Report) {}

QZErrorHandlerStreamImpl& QZErrorHandlerStreamImpl::operator=(const QZErrorHandlerStreamImpl& other) {
  QZErrorHandlerImplBase::operator=(other);
  stream = other.stream;
  return *this;
}

QZErrorHandlerStreamImpl::~QZErrorHandlerStreamImpl() = default;

QZErrorHandlerImplBase* QZErrorHandlerStreamImpl::CreateCopy() const { return new QZErrorHandlerStreamImpl(*this); }

void QZErrorHandlerStreamImpl::Msg(unsigned int messageLevel, const std::string& text) {
  unsigned int as = messageLevel;
  if (GetLevel() <= as) {
    if (as == QZErrorLevel::Error) as = GetStrict() ? QZErrorLevel::Fatal : QZErrorLevel::Warning;
    const ForkSafeLock lock(mutex);
    Print(as, text);
    IncrementCount(as);
  }
  // With the lock given back: static destructors may report.
  if (as == QZErrorLevel::Fatal) EndProcess(1);
  if (as == QZErrorLevel::Usage) EndProcess(0);
}

void QZErrorHandlerStreamImpl::Print(unsigned int as, const std::string& text) {
  switch (as) {
    case QZErrorLevel::Debug:
      *stream << DebugPrefix << text << qzendl;
      break;
    case QZErrorLevel::Verbose:
    case QZErrorLevel::Info:
      *stream << text << qzendl;
      break;
    case QZErrorLevel::Warning:
      *stream << WarningPrefix << text << qzendl;
      break;
    case QZErrorLevel::Fatal:
      *stream << FatalPrefix << text << qzendl;
      break;
    case QZErrorLevel::Usage:
      *stream << UsagePrefix << text << qzendl;
      break;
    case QZErrorLevel::Quiet:
      break;
    default:
      *stream << UnknownPrefix << as << UnknownPrefixEnd << text << qzendl;
  }
}

}  // namespace QZSystem
