#include "qz/system/cli/interface_impl.h"

#include <algorithm>

#include "qz/system/cli/configure.h"
#include "qz/system/frame/error.h"

namespace QZSystem {

namespace {

constexpr char kUnknownClass[] = "QZInterfaceImpl::AddParamter.  Unknown classid %s";
constexpr char kNotConfigured[] = "Problem configuring QZInterface!";

template <class T>
bool DeleteFrom(std::vector<T*>& owned, const T& wanted) {
  const auto at = std::find(owned.begin(), owned.end(), &wanted);
  if (at == owned.end()) return false;
  const std::unique_ptr<T> ended(*at);
  owned.erase(at);
  return true;
}

/// Room for one more in front of a push_back, which then can't fail and lose what it is given.
template <class T>
void Reserve(std::vector<T*>& owned) {
  if (owned.size() == owned.capacity()) owned.reserve(2 * owned.size() + 4);
}

}  // namespace

QZInterfaceImpl::~QZInterfaceImpl() {
  for (const QZParameter* parameter : parameters) delete parameter;
  for (const QZInterface* category : interfaces) delete category;
}

void QZInterfaceImpl::Copy(const QZInterfaceImpl& other, QZInterface& self) {
  for (const QZParameter* parameter : other.parameters)
    AddParameter(std::unique_ptr<QZParameter>(parameter->CreateCopy()));
  for (const QZInterface* category : other.interfaces) AddInterface(std::make_unique<QZInterface>(*category), self);
  name = other.name;
  brief = other.brief;
  detail = other.detail;
  orderPriority = other.orderPriority;
}

QZParameter* QZInterfaceImpl::AddParameter(std::unique_ptr<QZParameter> parameter) {
  Reserve(parameters);
  parameters.push_back(parameter.release());
  return parameters.back();
}

QZParameter* QZInterfaceImpl::AddParameter(const std::string& classid) {
  std::unique_ptr<QZParameter> parameter(QZInterface::Factory().Construct(classid));
  if (parameter != nullptr) return AddParameter(std::move(parameter));
  QZThrow.Warning(kUnknownClass, classid.c_str());
  return nullptr;
}

QZInterface* QZInterfaceImpl::AddInterface(std::unique_ptr<QZInterface> category, QZInterface& self) {
  Reserve(interfaces);
  category->SetParent(&self);
  interfaces.push_back(category.release());
  return interfaces.back();
}

bool QZInterfaceImpl::DeleteParameter(const QZParameter& parameter) {
  return DeleteFrom(parameters, parameter) ||
         std::any_of(interfaces.begin(), interfaces.end(),
                     [&](QZInterface* category) { return Of(*category).DeleteParameter(parameter); });
}

bool QZInterfaceImpl::DeleteInterface(const QZInterface& category) {
  return DeleteFrom(interfaces, category) || std::any_of(interfaces.begin(), interfaces.end(), [&](QZInterface* each) {
           return Of(*each).DeleteInterface(category);
         });
}

bool ConfigureNewInterface(QZInterface& itf, const unsigned char* text) {
  if (QZConfigure(itf, text)) return true;
  QZThrow.Error(kNotConfigured);
  return false;
}

}  // namespace QZSystem
