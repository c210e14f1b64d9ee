#include "qz/system/frame/errortester.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "qz/platform/standardstream.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/errorlevel.h"

namespace QZSystem {

namespace {

constexpr const char* FatalMessage = "\nFatal message in error handler.";
constexpr const char* NotInstalled = "QZThrow error test impl not installed";
constexpr const char* NotFound = "Could not find substring '";
constexpr const char* AtLevel = "'\n at error level ";
constexpr const char* AmongMessages = "\ninside the following messages:";
constexpr const char* OpenQuote = "\n'''\n";
constexpr const char* CloseQuote = "\n'''";

using Texts = std::vector<std::string>;

QZErrorHandlerStreamImpl LikeStreamOf(const QZErrorHandlerImplBase& present) {
  const auto* const stream = dynamic_cast<const QZErrorHandlerStreamImpl*>(&present);
  return stream != nullptr ? QZErrorHandlerStreamImpl(*stream) : QZErrorHandlerStreamImpl(present, qzerr);
}

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

bool ContainsAny(const std::string& text, const Texts& parts) {
  return std::any_of(parts.begin(), parts.end(), [&](const std::string& part) { return Contains(text, part); });
}

std::string Quoted(const Texts& texts) {
  std::string quoted = OpenQuote;
  for (const std::string& text : texts) {
    if (&text != &texts.front()) quoted += '\n';
    quoted += text;
  }
  return quoted += CloseQuote;
}

// The messages of a level and above, in rising order of levels; none if the level itself has none.
Texts MessagesFrom(const QZErrorMessages& messages, unsigned int level) {
  Texts texts;
  for (auto each = messages.find(level); each != messages.end(); ++each)
    texts.insert(texts.end(), each->second.begin(), each->second.end());
  return texts;
}

}  // namespace

void QZErrorHandlerTester::Add(unsigned int level, const std::string& text) {
  const ForkSafeLock lock(mutex);
  messages[level].push_back(text);
}

QZErrorHandlerTestImpl::QZErrorHandlerTestImpl() : tester(std::make_shared<QZErrorHandlerTester>()) {}

QZErrorHandlerTestImpl::QZErrorHandlerTestImpl(const QZErrorHandlerImplBase& present)
    : QZErrorHandlerStreamImpl(LikeStreamOf(present)), tester(std::make_shared<QZErrorHandlerTester>()) {}

QZErrorHandlerTestImpl* QZErrorHandlerTestImpl::CreateCopy() const { return new QZErrorHandlerTestImpl(*this); }

void QZErrorHandlerTestImpl::Msg(unsigned int messageLevel, const std::string& text) {
  tester->Add(messageLevel, text);
  if (messageLevel == QZErrorLevel::Fatal || (messageLevel == QZErrorLevel::Error && GetStrict()))
    throw std::runtime_error(text + FatalMessage);
  QZErrorHandlerStreamImpl::Msg(messageLevel, text);
}

QZErrorHandlerTestImpl* QZGetErrorHandlerTestImpl() {
  auto* const impl = dynamic_cast<QZErrorHandlerTestImpl*>(QZThrow.GetHandlerImpl());
  if (impl == nullptr) throw std::runtime_error(NotInstalled);
  return impl;
}

void GetErrorHandlerTestImpl(QZErrorHandlerTestImpl*& impl) { impl = QZGetErrorHandlerTestImpl(); }

bool QZContainAllSearchStrings(std::string& err, const QZErrorMessages& messages, const QZErrorMessages& search) {
  for (const auto& [level, strings] : search) {
    const Texts texts = MessagesFrom(messages, level);
    for (const std::string& string : strings) {
      if (std::any_of(texts.begin(), texts.end(), [&](const std::string& text) { return Contains(text, string); }))
        continue;
      err = NotFound + string + AtLevel + QZErrorLevelToString(level) + AmongMessages + Quoted(texts);
      return false;
    }
  }
  return true;
}

bool QZContainOnlySearchStrings(std::string& err, const QZErrorMessages& messages, const QZErrorMessages& search) {
  for (const auto& [level, texts] : messages) {
    const auto strings = search.find(level);
    Texts others;
    std::copy_if(texts.begin(), texts.end(), std::back_inserter(others), [&](const std::string& text) {
      return strings == search.end() || !ContainsAny(text, strings->second);
    });
    if (others.empty()) continue;
    err = Quoted(others);
    return false;
  }
  return true;
}

}  // namespace QZSystem
