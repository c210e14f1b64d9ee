#include "qz/system/util/version.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "qz/platform/memorystream.h"

using namespace QZSystem;

namespace {

const QZVersion asked = QZSystemVersion();  // during static initialisation

TEST(Version, TheConstantsHaveTheirForms) {
  EXPECT_THAT(std::to_string(QZSystemGetVersion()), testing::MatchesRegex("20[0-9][0-9][01][0-9][0-3][0-9]"));
  EXPECT_THAT(QZSystemGetNonDebugRelease(), testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+\\.[0-9]+"));
  EXPECT_EQ(QZSystemGetDebugRelease(), std::string(QZSystemGetNonDebugRelease()) + " debug");
  EXPECT_THAT(QZSystemGetConfigureArgs(), testing::MatchesRegex("[A-Z]*"));
  const bool isDebug = QZSystemGetConfigureArgs() == std::string("DEBUG");
  EXPECT_STREQ(QZSystemGetRelease(), isDebug ? QZSystemGetDebugRelease() : QZSystemGetNonDebugRelease());

  const std::string arch = QZSystemGetArch();
  const std::size_t cut = arch.rfind('-');
  ASSERT_NE(cut, std::string::npos) << arch;
  EXPECT_THAT(QZSystemGetPlatform(), testing::StartsWith(arch.substr(0, cut + 1)));
  EXPECT_THAT(QZSystemGetPlatform(), testing::EndsWith(arch.substr(cut)));
  EXPECT_THAT(QZSystemGetPlatform(), testing::ContainsRegex("-[a-z]+[+][+][0-9]+[.][0-9]+-"));
}

TEST(Version, TheLibraryIsListedOnceWithNoActionByTheProgram) {
  qzosstream out;
  QZGetVersions(out);
  EXPECT_EQ(out.str(), std::string("qztoolkit QZSystem ") + QZSystemGetRelease() + "\n");
  EXPECT_EQ(asked.toolkit + asked.library + asked.release, std::string("qztoolkitQZSystem") + QZSystemGetRelease());
}

}  // namespace
