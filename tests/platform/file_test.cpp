#include "qz/platform/file.h"

#include <unistd.h>

#include "streamtest.h"

namespace {

using namespace QZPlatform;

TEST(File, TellsWhatIsThere) {
  streamtest::Folder folder;
  const std::string file = folder.File("five", "12345");
  ASSERT_EQ(::symlink("five", (folder / "link").c_str()), 0);
  ASSERT_EQ(::symlink("nothing", (folder / "dangling").c_str()), 0);
  struct Case {
    std::string path;
    bool exists;
    unsigned long size;
  };
  const Case cases[] = {
      {file, true, 5},
      {folder / "link", true, 5},
      {folder.File("empty", ""), true, 0},
      {folder / "dangling", false, 0},
      {folder / "nothing", false, 0},
      {folder.path, true, 0},
      {file + "/below", false, 0},
      {"/dev/null", true, 0},
      {"", false, 0},
      {file + std::string("\0x", 2), false, 0},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(QZFile(each.path).Exists(), each.exists) << each.path;
    EXPECT_EQ(QZFile(each.path).Size(), each.size) << each.path;
  }
}

TEST(File, TheNameFollowsTheLastSeparator) {
  const std::pair<const char*, const char*> cases[] = {
      {"/a/b.tar.gz", "b.tar.gz"}, {"b", "b"}, {"a/", ""}, {"/", ""}, {"", ""}, {"./.x", ".x"}, {"a\\b", "a\\b"}};
  for (const auto& [path, name] : cases) EXPECT_EQ(QZFileDetermineName(path), name) << path;
}

}  // namespace
