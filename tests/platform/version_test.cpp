#include "qz/platform/version.h"

#include <gtest/gtest.h>

#include "qz/platform/memorystream.h"

using namespace QZPlatform;

namespace {

std::string Listed() {
  qzosstream out;
  QZGetVersions(out);
  return out.str();
}

QZVersion Second() { return {"beta", "Two", "2.0 debug"}; }

// A version function may itself use the registry.
QZVersion First() {
  static const bool registered = (QZRegisterVersion(&Second), true);
  return {"alpha", "One", registered ? "1.0" : ""};
}

}  // namespace

TEST(QZGetVersions, PrintsALineForEachVersionInOrderOfRegistration) {
  const std::string before = Listed();
  QZRegisterVersion(&First);
  EXPECT_EQ(Listed(), before + "alpha One 1.0\n");
  EXPECT_EQ(Listed(), before + "alpha One 1.0\nbeta Two 2.0 debug\n");
}
