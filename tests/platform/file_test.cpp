#include "qz/platform/file.h"

#include "streamtest.h"

using namespace streamtest;

TEST(File, TellsWhatIsThere) {
  const Folder folder;
  const std::string file = folder.File("five", "12345");
  std::filesystem::create_symlink("five", folder / "link");
  std::filesystem::create_symlink("nothing", folder / "dangling");
  const struct {
    std::string path;
    bool exists;
    unsigned long size;
  } cases[] = {
      {file, true, 5},
      {folder / "link", true, 5},
      {folder / "dangling", false, 0},
      {folder.path, true, 0},
      {"/dev/null", true, 0},
      {file + "/below", false, 0},
      {"", false, 0},
      {file + std::string("\0x", 2), false, 0},
  };
  for (const auto& [path, exists, size] : cases) {
    EXPECT_EQ(QZFile(path).Exists(), exists) << path;
    EXPECT_EQ(QZFile(path).Size(), size) << path;
  }
}

TEST(File, TheNameFollowsTheLastSeparator) {
  const std::pair<const char*, const char*> cases[] = {
      {"/a/b.tar.gz", "b.tar.gz"}, {"b", "b"}, {"a/", ""}, {"", ""}, {"a\\b", "a\\b"}};
  for (const auto& [path, name] : cases) EXPECT_EQ(QZFileDetermineName(path), name) << path;
}
