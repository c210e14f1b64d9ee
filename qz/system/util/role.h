#pragma once

#include <memory>
#include <set>
#include <string>

#include "qz/system/frame/iterbase.h"

namespace QZSystem {

/// The name of a role, held as its tag, by which roles are ordered.
///
///     const QZRole donor("donor");
///     if (roles.HasRole(donor)) qzout << donor.GetName() << qzendl;
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZRole {
 public:
  /// Registers the name if it is new.
  explicit QZRole(const std::string& name);
  explicit QZRole(unsigned int roleTag) : tag(roleTag) {}

  [[nodiscard]] unsigned int GetTag() const { return tag; }
  /// Good to the end of the process; "" for a number that is no tag.
  [[nodiscard]] const char* GetName() const;

 private:
  unsigned int tag;
};

[[nodiscard]] inline bool operator==(const QZRole& a, const QZRole& b) { return a.GetTag() == b.GetTag(); }
[[nodiscard]] inline bool operator!=(const QZRole& a, const QZRole& b) { return !(a == b); }
[[nodiscard]] inline bool operator<(const QZRole& a, const QZRole& b) { return a.GetTag() < b.GetTag(); }

/// A set of roles, which takes one pointer until the first is added.
///
///     QZRoleSet roles;
///     roles.AddRole("donor");
///     for (const QZRole& role : QZIter(roles.GetRoles())) Use(role);
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZRoleSet {
 public:
  QZRoleSet() = default;
  /// Copies the set itself.
  QZRoleSet(const QZRoleSet& other);
  QZRoleSet(QZRoleSet&&) noexcept = default;
  QZRoleSet& operator=(const QZRoleSet& other);
  QZRoleSet& operator=(QZRoleSet&&) noexcept = default;
  virtual ~QZRoleSet();

  /// Asking for a name registers it if it is new, except in a set that never had a role.
  [[nodiscard]] bool HasRole(const QZRole& role) const;
  [[nodiscard]] bool HasRole(const std::string& name) const;

  /// Always true, also if the role was there.
  bool AddRole(const QZRole& role);
  bool AddRole(const std::string& name);

  /// True if a role was removed. Registers a new name as HasRole does.
  bool DeleteRole(const QZRole& role);
  bool DeleteRole(const std::string& name);

  /// The roles by rising tags, as they are now: later changes don't touch the iterator, which the caller deletes.
  [[nodiscard]] QZIterBase<const QZRole>* GetRoles() const;
  [[nodiscard]] unsigned int NumRoles() const;
  void ClearRoles();

 private:
  std::unique_ptr<std::set<QZRole>> roles;
};

/// A set of roles that copies itself behind a pointer.
///
///     const std::unique_ptr<QZRoles> copy(roles.CreateCopy());
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZRoles : public QZRoleSet {
 public:
  /// A new object with a copy of the set; the caller's.
  [[nodiscard]] virtual QZRoles* CreateCopy() const;
};

}  // namespace QZSystem
