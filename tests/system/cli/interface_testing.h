#pragma once

#include <string>
#include <utility>
#include <vector>

#include "qz/system/cli/interface.h"
#include "qz/system/cli/options.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/errorimpl.h"

namespace QZSystem {

/// While it stands, the messages of QZThrow are kept as "Level: text" and nothing ends the process.
class CapturedMessages {
 public:
  CapturedMessages() { QZThrow.SetHandlerImpl(new Sink(messages), true); }
  ~CapturedMessages() { QZThrow.SetHandlerImpl(new QZErrorHandlerStreamImpl, true); }
  CapturedMessages(const CapturedMessages&) = delete;
  CapturedMessages& operator=(const CapturedMessages&) = delete;

  /// The messages since the last call.
  std::vector<std::string> Take() { return std::exchange(messages, {}); }

 private:
  class Sink : public QZErrorHandlerImplBase {
   public:
    explicit Sink(std::vector<std::string>& target) : messages(&target) {}
    void Msg(unsigned int severity, const std::string& text) override {
      messages->push_back(QZErrorLevelToString(severity) + ": " + text);
    }
    Sink* CreateCopy() const override { return new Sink(*this); }

   private:
    std::vector<std::string>* messages;
  };

  std::vector<std::string> messages;
};

using Told = std::vector<std::string>;

/// The texts of an iterator with a bar between them.
inline std::string Joined(QZIterBase<const std::string>* texts) {
  std::string joined;
  for (const std::string& text : QZIter<const std::string>(texts)) joined += (joined.empty() ? "" : "|") + text;
  return joined;
}

/// What an iterator goes through.
template <class T>
std::vector<std::remove_const_t<T>> List(QZIterBase<T>* iter) {
  std::vector<std::remove_const_t<T>> all;
  for (T& each : QZIter(iter)) all.push_back(each);
  return all;
}

/// The names of the things of an iterator with a blank between them.
template <class T>
std::string Names(QZIterBase<T>* things) {
  std::string names;
  for (const T& thing : QZIter<T>(things)) names += (names.empty() ? "" : " ") + thing.GetName();
  return names;
}

/// The values of all parameters of an interface or a group of options that have any, loaded ones only:
/// "-in=a.txt -n=1|2".
template <class Level>
std::string ValuesOf(const Level& level) {
  std::string values;
  for (const QZParameter& parameter : QZIter<const QZParameter>(level.GetParameters(true)))
    if (parameter.GetHasValue(0))
      values += (values.empty() ? "" : " ") + parameter.GetName() + "=" + Joined(parameter.GetStringValues());
  return values;
}

/// A group of options as programs derive theirs.
class Group : public QZOptions {
 public:
  explicit Group(const std::string& groupName) : QZOptions(groupName) {}
  Group* CreateCopy() const override { return new Group(*this); }
};

/// Texts as the argc and argv of a program called "prog".
class Arguments {
 public:
  Arguments(const std::vector<std::string>& arguments) : texts(arguments) {
    texts.insert(texts.begin(), "prog");
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
  }
  int Count() const { return static_cast<int>(texts.size()); }
  char** Values() { return pointers.data(); }

 private:
  std::vector<std::string> texts;
  std::vector<char*> pointers;
};

inline const unsigned char* Bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.c_str());
}

}  // namespace QZSystem
