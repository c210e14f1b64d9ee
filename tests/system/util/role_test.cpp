#include "qz/system/util/role.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "qz/system/data/tagmap.h"
#include "qz/system/frame/iterator.h"

using namespace QZSystem;

namespace {

std::vector<std::string> NamesOf(const QZRoleSet& roles) {
  std::vector<std::string> names;
  for (const QZRole& role : QZIter(roles.GetRoles())) names.emplace_back(role.GetName());
  return names;
}

using Names = std::vector<std::string>;

}  // namespace

TEST(Role, ASetHoldsEachRoleOnceInTheOrderOfTags) {
  const QZRole late(QZGetTag("role test b")), early("role test b");
  EXPECT_EQ(late, early);
  QZRoleSet roles;
  EXPECT_EQ(NamesOf(roles), Names());
  const QZRole second("role test c");
  EXPECT_TRUE(roles.AddRole(second) && roles.AddRole("role test a") && roles.AddRole(early));
  EXPECT_TRUE(roles.AddRole("role test c"));
  // Tags grow in the order in which names are met.
  EXPECT_EQ(NamesOf(roles), (Names{"role test b", "role test c", "role test a"}));
  EXPECT_EQ(roles.NumRoles(), 3U);
  EXPECT_TRUE(roles.HasRole(second) && roles.HasRole("role test a"));

  const std::unique_ptr<QZIterBase<const QZRole>> snapshot(roles.GetRoles());
  EXPECT_TRUE(roles.DeleteRole("role test b"));
  EXPECT_FALSE(roles.DeleteRole(early));
  EXPECT_FALSE(roles.HasRole(early));
  EXPECT_EQ(NamesOf(roles), (Names{"role test c", "role test a"}));
  EXPECT_EQ(**snapshot, early);
  roles.ClearRoles();
  EXPECT_EQ(roles.NumRoles(), 0U);
  EXPECT_EQ(NamesOf(roles), Names());
}

TEST(Role, AskingAnEmptySetRegistersNoName) {
  QZRoleSet roles;
  EXPECT_FALSE(roles.HasRole("role never added"));
  EXPECT_FALSE(roles.DeleteRole("role never added"));
  EXPECT_FALSE(roles.HasRole(QZRole(1)) || roles.DeleteRole(QZRole(1)));
  EXPECT_FALSE(QZHasTag(std::string("role never added")));
  roles.ClearRoles();
  EXPECT_EQ(roles.NumRoles(), 0U);
}

TEST(Role, CopiesAreIndependent) {
  QZRoles roles;
  const std::unique_ptr<QZRoles> empty(roles.CreateCopy());
  roles.AddRole("donor");
  const std::unique_ptr<QZRoles> copy(roles.CreateCopy());
  QZRoles assigned;
  assigned.AddRole("acceptor");
  assigned = roles;
  const QZRoles& self = assigned;
  assigned = self;
  roles.DeleteRole("donor");
  EXPECT_EQ(NamesOf(*empty), Names());
  EXPECT_EQ(NamesOf(*copy), Names{"donor"});
  EXPECT_EQ(NamesOf(assigned), Names{"donor"});
  assigned = *empty;
  EXPECT_EQ(NamesOf(assigned), Names());
}
