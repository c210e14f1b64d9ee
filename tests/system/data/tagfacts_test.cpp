#include "qz/system/data/tagfacts_impl.h"

#include <gtest/gtest.h>

#include <string>

namespace QZSystem {
namespace {

struct Fact {
  void Learn(unsigned int theTag, const char* theName) {
    tag = theTag;
    name = theName;
    ++learned;
  }

  unsigned int tag;
  std::string name;
  static inline int learned = 0;
};

TagFacts<Fact> facts;

// A place is the first tag's that comes with a name: another tag with that place, and a number that has no name yet,
// are looked up each time.
TEST(TagFacts, AreKeptForATagThatHasANameAndAPlace) {
  const unsigned int first = QZGetTag("TagFacts first");
  const unsigned int later = first + 1;
  const unsigned int colliding = first + 4096;
  const struct {
    unsigned int tag;
    const char* name;
    bool isLearned;
  } cases[] = {{first, "TagFacts first", true},
               {first, "TagFacts first", false},
               {colliding, "", true},
               {colliding, "", true},
               {first, "TagFacts first", false},
               {later, "", true},
               {later, "", true}};
  for (const auto& each : cases) {
    Fact::learned = 0;
    const Fact& fact = facts.Of(each.tag);
    EXPECT_EQ(fact.name, each.name) << each.tag - first;
    EXPECT_EQ(fact.tag, each.tag) << each.tag - first;
    EXPECT_EQ(Fact::learned, each.isLearned ? 1 : 0) << each.tag - first;
  }
  ASSERT_EQ(QZGetTag("TagFacts later"), later);
  EXPECT_EQ(facts.Of(later).name, "TagFacts later");
}

}  // namespace
}  // namespace QZSystem
