#include "qz/system/cli/options.h"

#include <algorithm>
#include <cassert>
#include <unordered_set>
#include <utility>

#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

constexpr unsigned int hidden = 2;

bool isHidden(const QZParameter& parameter) { return parameter.GetVisibility() == hidden; }

template <class T>
std::unique_ptr<T> copyOf(const T& original) {
  return std::unique_ptr<T>(original.CreateCopy());
}

/// Copies in the same slots.
template <class T>
std::vector<std::unique_ptr<T>> copiesOf(const std::vector<std::unique_ptr<T>>& originals) {
  std::vector<std::unique_ptr<T>> copies;
  copies.reserve(originals.size());
  for (const auto& each : originals) copies.push_back(each ? copyOf(*each) : nullptr);
  return copies;
}

template <class T>
bool removeFrom(std::vector<std::unique_ptr<T>>& owned, const T& wanted) {
  const auto at = std::find_if(owned.begin(), owned.end(), [&](const auto& each) { return each.get() == &wanted; });
  if (at == owned.end()) return false;
  owned.erase(at);
  return true;
}

/// Sorted once, over a list that the iterator keeps: its copies sort that list anew.
template <class T>
QZIterBase<T>* sortedOf(std::vector<std::remove_const_t<T>*> list) {
  using Plain = std::remove_const_t<T>;
  using Guts = std::conditional_t<std::is_const_v<T>, ConstDerefIterGuts<std::vector<Plain*>>,
                                  DerefIterGuts<std::vector<Plain*>>>;
  auto kept = std::make_unique<QZSTLCacheIter<Guts>>(std::move(list));
  return new QZSortedIter<T>(kept.release(), SortItfStuff<Plain>());
}

/// Finds texts that come a second time.
class Repeats {
 public:
  void Add(const std::string& text) {
    if (!seen.insert(text).second && known.insert(text).second) repeated.push_back(text);
  }
  const std::vector<std::string>& InOrder() const { return repeated; }

 private:
  std::unordered_set<std::string> seen;
  std::unordered_set<std::string> known;
  std::vector<std::string> repeated;
};

}  // namespace

QZOptions::QZOptions(const std::string& groupName) : name(groupName) {}

QZOptions::QZOptions(const std::string& groupName, unsigned long nParams, unsigned long nOptions)
    : parameters(nParams), options(nOptions), name(groupName) {}

QZOptions::QZOptions(const QZOptions& other)
    : parameters(copiesOf(other.parameters)),
      options(copiesOf(other.options)),
      name(other.name),
      brief(other.brief),
      detail(other.detail),
      orderPriority(other.orderPriority) {}

QZOptions& QZOptions::operator=(const QZOptions& other) {
  if (this == &other) return *this;
  auto newParameters = copiesOf(other.parameters);
  auto newOptions = copiesOf(other.options);
  // What is replaced ends with this function: the other group may be part of it.
  auto newDetail = other.detail;
  name = other.name;
  brief = other.brief;
  orderPriority = other.orderPriority;
  detail.swap(newDetail);
  parameters.swap(newParameters);
  options.swap(newOptions);
  return *this;
}

QZOptions::~QZOptions() = default;

bool QZOptions::Validate() const { return true; }

QZIterBase<const std::string>* QZOptions::GetDetail() const {
  return new QZSTLIter<ConstIterGuts<std::vector<std::string>>>(detail);
}

QZParameter* QZOptions::AddParameter(const QZParameter& parameter) {
  parameters.push_back(copyOf(parameter));
  return parameters.back().get();
}

QZOptions* QZOptions::AddOption(const QZOptions& group) {
  options.push_back(copyOf(group));
  return options.back().get();
}

QZParameter* QZOptions::SetParameter(unsigned long slot, const QZParameter& parameter) {
  assert(slot < parameters.size());
  parameters[slot] = copyOf(parameter);
  return parameters[slot].get();
}

QZOptions* QZOptions::SetOption(unsigned long slot, const QZOptions& group) {
  assert(slot < options.size());
  options[slot] = copyOf(group);
  return options[slot].get();
}

bool QZOptions::DeleteParameter(QZParameter& parameter) {
  return removeFrom(parameters, parameter) || std::any_of(options.begin(), options.end(), [&](const auto& each) {
           return each && removeFrom(each->parameters, parameter);
         });
}

bool QZOptions::DeleteOptions(QZOptions& group) { return removeFrom(options, group); }

void QZOptions::Clear() {
  parameters.clear();
  for (const auto& each : options)
    if (each) each->parameters.clear();
}

void QZOptions::GetParameters(std::vector<QZParameter*>& out, const std::string& key, bool recursive) const {
  for (const auto& each : parameters)
    if (each && (key.empty() || ParamHasName(*each, key))) out.push_back(each.get());
  if (!recursive) return;
  for (const auto& each : options)
    if (each) each->GetParameters(out, key, true);
}

std::vector<QZParameter*> QZOptions::Listed(const std::string& key, bool recursive) const {
  std::vector<QZParameter*> list;
  GetParameters(list, key, recursive);
  return list;
}

QZIterBase<QZParameter>* QZOptions::GetParameters(bool recursive) {
  return sortedOf<QZParameter>(Listed("", recursive));
}

QZIterBase<const QZParameter>* QZOptions::GetParameters(bool recursive) const {
  return sortedOf<const QZParameter>(Listed("", recursive));
}

QZIterBase<QZParameter>* QZOptions::GetParameters(const std::string& key, bool recursive) {
  return sortedOf<QZParameter>(Listed(key, recursive));
}

QZIterBase<const QZParameter>* QZOptions::GetParameters(const std::string& key, bool recursive) const {
  return sortedOf<const QZParameter>(Listed(key, recursive));
}

// The first of the unsorted list without making it.
QZParameter* QZOptions::First(const std::string& key) const {
  for (const auto& each : parameters)
    if (each && (key.empty() || ParamHasName(*each, key))) return each.get();
  for (const auto& each : options)
    if (QZParameter* found = each ? each->First(key) : nullptr) return found;
  return nullptr;
}

QZParameter* QZOptions::GetParameter(const std::string& key) { return First(key); }

const QZParameter* QZOptions::GetParameter(const std::string& key) const { return First(key); }

bool QZOptions::HasParameter(const std::string& key) const { return First(key) != nullptr; }

void QZOptions::GetOptions(std::vector<QZOptions*>& out, bool recursive) const {
  for (const auto& each : options) {
    if (!each) continue;
    out.push_back(each.get());
    if (recursive) each->GetOptions(out, true);
  }
}

std::vector<QZOptions*> QZOptions::ListedOptions(bool recursive) const {
  std::vector<QZOptions*> list;
  GetOptions(list, recursive);
  return list;
}

QZIterBase<QZOptions>* QZOptions::GetOptions(bool recursive) { return sortedOf<QZOptions>(ListedOptions(recursive)); }

QZIterBase<const QZOptions>* QZOptions::GetOptions(bool recursive) const {
  return sortedOf<const QZOptions>(ListedOptions(recursive));
}

QZOptions* QZOptions::FirstOption(const std::string& groupName) const {
  for (const auto& each : options) {
    if (!each) continue;
    if (each->name == groupName) return each.get();
    if (QZOptions* found = each->FirstOption(groupName)) return found;
  }
  return nullptr;
}

QZOptions* QZOptions::GetOption(const std::string& groupName) { return FirstOption(groupName); }

const QZOptions* QZOptions::GetOption(const std::string& groupName) const { return FirstOption(groupName); }

bool QZOptions::HasOption(const std::string& groupName) const { return FirstOption(groupName) != nullptr; }

void QZOptions::GetDuplicateParams(std::vector<QZParameter*>& out, bool ignoreHidden) const {
  Repeats keys;
  for (const QZParameter* parameter : Listed("", true)) {
    if (ignoreHidden && isHidden(*parameter)) continue;
    keys.Add(QZStringLower(parameter->GetName()));
    for (const std::string& alias : QZIter(parameter->GetAliases())) keys.Add(QZStringLower(alias));
  }
  for (const std::string& key : keys.InOrder()) GetParameters(out, key, true);
  out.erase(std::remove_if(out.begin(), out.end(), [](const QZParameter* each) { return isHidden(*each); }), out.end());
}

std::vector<QZParameter*> QZOptions::Duplicates(bool ignoreHidden) const {
  std::vector<QZParameter*> list;
  GetDuplicateParams(list, ignoreHidden);
  return list;
}

bool QZOptions::HasDupParameters(bool ignoreHidden) const { return !Duplicates(ignoreHidden).empty(); }

QZIterBase<QZParameter>* QZOptions::FindDupParameters(bool ignoreHidden) {
  return sortedOf<QZParameter>(Duplicates(ignoreHidden));
}

QZIterBase<const QZParameter>* QZOptions::FindDupParameters(bool ignoreHidden) const {
  return sortedOf<const QZParameter>(Duplicates(ignoreHidden));
}

void QZOptions::SetParameterVisibility(unsigned int visibility) { SetParameterVisibility("", visibility); }

void QZOptions::SetParameterVisibility(const std::string& key, unsigned int visibility) {
  for (QZParameter* each : Listed(key, true)) each->SetVisibility(visibility);
}

bool QZOptions::UpdateValues(const QZOptions& other) {
  for (QZParameter& parameter : QZIter(GetParameters(true))) {
    const QZParameter* source = other.GetParameter(parameter.GetName());
    if (source == nullptr) continue;
    // Copied: the source may be this parameter or share it with another.
    std::vector<std::string> texts;
    for (const std::string& text : QZIter(source->GetStringValues())) texts.push_back(text);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (!(i == 0 ? parameter.SetStringValue(texts[i]) : parameter.AddStringValue(texts[i]))) return false;
    }
    if (!parameter.LoadValue()) return false;
  }
  return true;
}

bool QZOptions::AddParameterSuffix(const std::string& suffix) {
  for (QZParameter* each : Listed("", true)) each->SetName(each->GetName() + suffix);
  return true;
}

bool QZOptions::AddParameterPrefix(const std::string& prefix, bool underscore) {
  for (QZParameter* each : Listed("", true)) {
    const std::string key = each->GetName();
    std::string base = key.empty() ? key : key.substr(1);
    if (!underscore && !base.empty()) base.replace(0, 1, QZStringUpper(base.substr(0, 1)));
    std::string prefixed = "-";
    prefixed.append(prefix).append(underscore ? "_" : "").append(base);
    each->SetName(prefixed);
  }
  return true;
}

bool QZOptions::ParamHasName(const QZParameter& parameter, const std::string& key) const {
  return parameter.AnyKey([&key](const std::string& each) { return QZStringEquals(each, key); });
}

}  // namespace QZSystem
