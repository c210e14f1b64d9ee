#include "qz/system/cli/interface.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "qz/system/cli/interface_impl.h"
#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

const QZInterfaceImpl& Of(const QZInterface& itf) { return QZInterfaceImpl::Of(itf); }

// The lookups below take the order of the recursive listings without building them: a lookup in an interface without
// categories, which is most of them, then neither allocates nor sorts.

template <class Test>
QZInterface* FirstInterface(const QZInterfaceImpl& itf, const Test& test) {
  bool deeper = false;
  for (QZInterface* category : itf.interfaces) {
    if (test(*category)) return category;
    deeper = deeper || !Of(*category).interfaces.empty();
  }
  if (!deeper) return nullptr;
  std::vector<QZInterface*> sorted = itf.interfaces;
  const SortItfStuff<QZInterface> order;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [&order](const QZInterface* a, const QZInterface* b) { return order(*a, *b); });
  for (const QZInterface* category : sorted)
    if (QZInterface* found = FirstInterface(Of(*category), test)) return found;
  return nullptr;
}

/// The first parameter of the sorted listing for which the test holds: the least in that order among those that hold.
template <class Test>
QZParameter* FirstOfSorted(const QZInterfaceImpl& itf, const Test& test) {
  const SortItfStuff<QZParameter> order;
  QZParameter* first = nullptr;
  for (QZParameter* parameter : itf.parameters)
    if (test(*parameter) && (first == nullptr || order(*parameter, *first))) first = parameter;
  return first;
}

template <class Test>
QZParameter* FirstParameter(const QZInterfaceImpl& itf, const Test& test) {
  for (QZParameter* parameter : itf.parameters)
    if (test(*parameter)) return parameter;
  QZParameter* first = nullptr;
  FirstInterface(itf, [&](const QZInterface& category) {
    first = FirstOfSorted(Of(category), test);
    return first != nullptr;
  });
  return first;
}

/// The first parameter with a key that `same` finds to be the wanted one.
template <class Same>
QZParameter* FirstWithKey(const QZInterface& itf, const Same& same) {
  return FirstParameter(Of(itf), [&same](const QZParameter& parameter) { return parameter.AnyKey(same); });
}

QZParameter* WithKey(const QZInterface& itf, const std::string& key) {
  // Asked of many for each that holds; the keys of a program often differ in their last letter alone.
  const std::size_t size = key.size();
  const std::size_t last = size > 0 ? size - 1 : 0;
  return FirstWithKey(itf, [&](const std::string& each) {
    return each.size() == size && each.data()[last] == key.data()[last] && each == key;
  });
}

QZParameter* WithKeyInAnyCase(const QZInterface& itf, const std::string& key) {
  return FirstWithKey(itf, [&key](const std::string& each) { return QZStringEquals(each, key); });
}

QZInterface* Named(const QZInterface& itf, const std::string& name) {
  return FirstInterface(Of(itf), [&name](const QZInterface& category) { return Of(category).name == name; });
}

// The iterators of the changeable and the const listings differ in the view of the containers alone.
struct Changeable {
  using Parameter = QZParameter;
  using Interface = QZInterface;
  using ParameterIter = QZSTLIter<DerefIterGuts<std::vector<QZParameter*>>>;
  using InterfaceIter = QZSTLIter<DerefIterGuts<std::vector<QZInterface*>>>;
  static QZInterfaceImpl& Of(QZInterface& itf) { return QZInterfaceImpl::Of(itf); }
};

struct Const {
  using Parameter = const QZParameter;
  using Interface = const QZInterface;
  using ParameterIter = QZSTLIter<ConstDerefIterGuts<std::vector<QZParameter*>>>;
  using InterfaceIter = QZSTLIter<ConstDerefIterGuts<std::vector<QZInterface*>>>;
  static const QZInterfaceImpl& Of(const QZInterface& itf) { return QZInterfaceImpl::Of(itf); }
};

template <class View, class Interface = typename View::Interface>
QZIterBase<Interface>* SortedInterfaces(Interface& itf) {
  auto direct = std::make_unique<typename View::InterfaceIter>(View::Of(itf).interfaces);
  return new QZSortedIter<Interface>(direct.release(), SortItfStuff<QZInterface>());
}

template <class View, class Parameter = typename View::Parameter>
QZIterBase<Parameter>* SortedParameters(typename View::Interface& itf) {
  auto direct = std::make_unique<typename View::ParameterIter>(View::Of(itf).parameters);
  return new QZSortedIter<Parameter>(direct.release(), SortItfStuff<QZParameter>());
}

/// The categories below as one flat concatenation: a step through it then costs the same at any depth.
template <class View, class Interface = typename View::Interface>
void PushInterfaces(QZConcatIter<Interface>& all, Interface& itf) {
  if (View::Of(itf).interfaces.empty()) return;
  all.Push(new typename View::InterfaceIter(View::Of(itf).interfaces));
  for (Interface& category : QZIter<Interface>(SortedInterfaces<View>(itf))) PushInterfaces<View>(all, category);
}

template <class View, class Interface = typename View::Interface>
QZIterBase<Interface>* ListInterfaces(Interface& itf, bool recursive) {
  if (!recursive) return SortedInterfaces<View>(itf);
  auto all = std::make_unique<QZConcatIter<Interface>>();
  PushInterfaces<View>(*all, itf);
  return all.release();
}

template <class View, class Parameter = typename View::Parameter>
QZIterBase<Parameter>* ListParameters(typename View::Interface& itf, bool recursive) {
  using Interface = typename View::Interface;
  if (!recursive) return SortedParameters<View>(itf);
  auto all = std::make_unique<QZConcatIter<Parameter>>();
  all->Push(new typename View::ParameterIter(View::Of(itf).parameters));
  for (Interface& category : QZIter<Interface>(ListInterfaces<View>(itf, true)))
    if (!View::Of(category).parameters.empty()) all->Push(SortedParameters<View>(category));
  return all.release();
}

}  // namespace

QZInterface::QZInterface() : impl(std::make_unique<QZInterfaceImpl>()) {}

QZInterface::QZInterface(const QZInterface& other) : QZInterface() { impl->Copy(*other.impl, *this); }

QZInterface& QZInterface::operator=(const QZInterface& other) {
  if (this == &other) return *this;
  auto copy = std::make_unique<QZInterfaceImpl>();
  copy->Copy(*other.impl, *this);
  impl = std::move(copy);
  return *this;
}

QZInterface::QZInterface(const unsigned char* text) : QZInterface() { ConfigureNewInterface(*this, text); }

QZInterface::QZInterface(const char* text) : QZInterface(reinterpret_cast<const unsigned char*>(text)) {}

QZInterface::~QZInterface() = default;

bool QZInterface::SetName(std::string name) {
  impl->name = std::move(name);
  return true;
}

bool QZInterface::SetBrief(std::string brief) {
  impl->brief = std::move(brief);
  return true;
}

bool QZInterface::AddDetail(const std::string& line) {
  impl->detail.push_back(line);
  return true;
}

bool QZInterface::SetOrderPriority(int order) {
  impl->orderPriority = order;
  return true;
}

std::string QZInterface::GetName() const { return impl->name; }

std::string QZInterface::GetBrief() const { return impl->brief; }

QZIterBase<const std::string>* QZInterface::GetDetail() const {
  return new QZSTLIter<ConstIterGuts<std::vector<std::string>>>(impl->detail);
}

int QZInterface::GetOrderPriority() const { return impl->orderPriority; }

QZParameter* QZInterface::AddParameter(std::string classid) { return impl->AddParameter(classid); }

QZParameter* QZInterface::AddParameter(const QZParameter& parameter) {
  return impl->AddParameter(std::unique_ptr<QZParameter>(parameter.CreateCopy()));
}

bool QZInterface::DeleteParameter(QZParameter& parameter) { return impl->DeleteParameter(parameter); }

QZParameter* QZInterface::GetParameter(std::string name) { return WithKey(*this, name); }

const QZParameter* QZInterface::GetParameter(std::string name) const { return WithKey(*this, name); }

QZIterBase<QZParameter>* QZInterface::GetParameters(bool recursive) {
  return ListParameters<Changeable>(*this, recursive);
}

QZIterBase<const QZParameter>* QZInterface::GetParameters(bool recursive) const {
  return ListParameters<Const>(*this, recursive);
}

QZInterface* QZInterface::AddInterface() { return impl->AddInterface(std::make_unique<QZInterface>(), *this); }

bool QZInterface::DeleteInterface(QZInterface& category) { return impl->DeleteInterface(category); }

QZInterface* QZInterface::GetInterface(std::string name) { return Named(*this, name); }

const QZInterface* QZInterface::GetInterface(std::string name) const { return Named(*this, name); }

QZIterBase<QZInterface>* QZInterface::GetInterfaces(bool recursive) {
  return ListInterfaces<Changeable>(*this, recursive);
}

QZIterBase<const QZInterface>* QZInterface::GetInterfaces(bool recursive) const {
  return ListInterfaces<Const>(*this, recursive);
}

QZInterface* QZInterface::Parent() { return impl->parent; }

const QZInterface* QZInterface::Parent() const { return impl->parent; }

bool QZInterface::SetParent(QZInterface* parent) {
  impl->parent = parent;
  return true;
}

bool QZInterface::Clear() {
  impl = std::make_unique<QZInterfaceImpl>();
  return true;
}

QZSimpleFactory<std::string, QZParameter>& QZInterface::Factory() { return QZParameterFactory(); }

QZParameter* ParameterWithFullname(QZInterface& itf, std::string name) { return WithKeyInAnyCase(itf, name); }

const QZParameter* ParameterWithFullname(const QZInterface& itf, std::string name) {
  return WithKeyInAnyCase(itf, name);
}

std::vector<QZParameter*> AllParameters(const QZInterface& itf) {
  std::vector<QZParameter*> all = Of(itf).parameters;
  FirstInterface(Of(itf), [&all](QZInterface& category) {
    for (QZParameter& parameter : QZIter<QZParameter>(category.GetParameters(false))) all.push_back(&parameter);
    return false;
  });
  return all;
}

bool HasParametersWithVis(const QZInterface& itf, unsigned int visibility) {
  return FirstParameter(Of(itf), [visibility](const QZParameter& parameter) {
           return parameter.GetVisibility() <= visibility;
         }) != nullptr;
}

}  // namespace QZSystem
