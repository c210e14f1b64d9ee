#include "qz/system/util/role.h"

#include "qz/system/data/tagmap.h"
#include "qz/system/frame/iterempty.h"
#include "qz/system/frame/iterstl.h"

namespace QZSystem {

QZRole::QZRole(const std::string& name) : tag(QZGetTag(name)) {}

const char* QZRole::GetName() const { return QZGetTag(tag); }

QZRoleSet::QZRoleSet(const QZRoleSet& other)
    : roles(other.roles ? std::make_unique<std::set<QZRole>>(*other.roles) : nullptr) {}

QZRoleSet& QZRoleSet::operator=(const QZRoleSet& other) { return *this = QZRoleSet(other); }

QZRoleSet::~QZRoleSet() = default;

bool QZRoleSet::HasRole(const QZRole& role) const { return roles && roles->count(role) != 0; }

bool QZRoleSet::HasRole(const std::string& name) const { return roles && HasRole(QZRole(name)); }

bool QZRoleSet::AddRole(const QZRole& role) {
  if (!roles) roles = std::make_unique<std::set<QZRole>>();
  roles->insert(role);
  return true;
}

bool QZRoleSet::AddRole(const std::string& name) { return AddRole(QZRole(name)); }

bool QZRoleSet::DeleteRole(const QZRole& role) { return roles && roles->erase(role) != 0; }

bool QZRoleSet::DeleteRole(const std::string& name) { return roles && DeleteRole(QZRole(name)); }

QZIterBase<const QZRole>* QZRoleSet::GetRoles() const {
  if (!roles) return new QZEmptyIter<const QZRole>;
  return new QZSTLCacheIter<ConstIterGuts<std::set<QZRole>>>(*roles);
}

unsigned int QZRoleSet::NumRoles() const { return roles ? static_cast<unsigned int>(roles->size()) : 0; }

void QZRoleSet::ClearRoles() {
  if (roles) roles->clear();
}

QZRoles* QZRoles::CreateCopy() const { return new QZRoles(*this); }

}  // namespace QZSystem
