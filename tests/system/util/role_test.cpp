#include "qz/system/util/role.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "qz/system/data/tagmap.h"
#include "qz/system/frame/iterator.h"

using namespace QZSystem;

namespace {

std::string NamesOf(const QZRoleSet& roles) {
  std::string names;
  for (const QZRole& role : QZIter(roles.GetRoles())) names += std::string(role.GetName()) + " ";
  return names;
}

TEST(Role, ASetHoldsEachRoleOnceInTheOrderOfTags) {
  const QZRole late(QZGetTag("b-role")), early("b-role"), second("c-role");
  EXPECT_EQ(late, early);
  QZRoleSet roles;
  EXPECT_TRUE(roles.AddRole(second) && roles.AddRole("a-role") && roles.AddRole(early) && roles.AddRole("c-role"));
  EXPECT_EQ(NamesOf(roles), "b-role c-role a-role ") << "tags grow in the order in which names are met";
  EXPECT_EQ(roles.NumRoles(), 3U);
  EXPECT_TRUE(roles.HasRole(second) && roles.HasRole("a-role"));

  const std::unique_ptr<QZIterBase<const QZRole>> snapshot(roles.GetRoles());
  EXPECT_TRUE(roles.DeleteRole("b-role"));
  EXPECT_FALSE(roles.DeleteRole(early) || roles.HasRole(early));
  EXPECT_EQ(NamesOf(roles), "c-role a-role ");
  EXPECT_EQ(**snapshot, early);
  roles.ClearRoles();
  EXPECT_EQ(NamesOf(roles), "");
}

TEST(Role, AskingAnEmptySetRegistersNoName) {
  QZRoleSet roles;
  EXPECT_FALSE(roles.HasRole("role never added") || roles.DeleteRole("role never added"));
  EXPECT_FALSE(roles.HasRole(QZRole(1)) || roles.DeleteRole(QZRole(1)));
  EXPECT_FALSE(QZHasTag(std::string("role never added")));
  roles.ClearRoles();
  EXPECT_EQ(roles.NumRoles(), 0U);
}

TEST(Role, CopiesAreIndependent) {
  QZRoles roles, assigned;
  const std::unique_ptr<QZRoles> empty(roles.CreateCopy());
  roles.AddRole("donor");
  const std::unique_ptr<QZRoles> copy(roles.CreateCopy());
  assigned.AddRole("acceptor");
  assigned = roles;
  const QZRoles& self = assigned;
  assigned = self;
  roles.DeleteRole("donor");
  EXPECT_EQ(NamesOf(*copy) + NamesOf(assigned) + NamesOf(*empty), "donor donor ");
  assigned = *empty;
  EXPECT_EQ(NamesOf(assigned), "");
}

}  // namespace
