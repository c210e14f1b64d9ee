#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qz/system/cli/interface.h"

namespace QZSystem {

/// What an interface holds. Parameters and categories are owned.
class QZInterfaceImpl {
 public:
  QZInterfaceImpl() = default;
  QZInterfaceImpl(const QZInterfaceImpl&) = delete;
  QZInterfaceImpl& operator=(const QZInterfaceImpl&) = delete;
  ~QZInterfaceImpl();

  static const QZInterfaceImpl& Of(const QZInterface& itf) { return *itf.impl; }
  static QZInterfaceImpl& Of(QZInterface& itf) { return *itf.impl; }

  /// Takes copies of what the other holds, its parent excepted; `self`, which holds this, is the parent of the
  /// categories. REQUIRES: this is new.
  void Copy(const QZInterfaceImpl& other, QZInterface& self);

  QZParameter* AddParameter(std::unique_ptr<QZParameter> parameter);
  QZParameter* AddParameter(const std::string& classid);
  QZInterface* AddInterface(std::unique_ptr<QZInterface> category, QZInterface& self);
  bool DeleteParameter(const QZParameter& parameter);
  bool DeleteInterface(const QZInterface& category);

  std::vector<QZParameter*> parameters;
  std::vector<QZInterface*> interfaces;
  QZInterface* parent = nullptr;
  std::string name;
  std::string brief;
  std::vector<std::string> detail;
  int orderPriority = 0;
};

/// The parameters of GetParameters(true), in that order; for walks that needn't give them away.
std::vector<QZParameter*> AllParameters(const QZInterface& itf);

/// QZConfigure for a constructor: false, after the Error that tells it, if the text doesn't configure.
bool ConfigureNewInterface(QZInterface& itf, const unsigned char* text);

}  // namespace QZSystem
