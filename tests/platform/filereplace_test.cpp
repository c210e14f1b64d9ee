#include "qz/platform/filereplace.h"

#include <sys/stat.h>

#include "streamtest.h"
#include "tests/platform/childstatus.h"

namespace {

using namespace streamtest;
namespace fs = std::filesystem;

long Entries(const Folder& folder) { return std::distance(fs::directory_iterator(folder.path), {}); }

bool Replace(const std::string& path, const std::string& content) {
  QZFileReplacement file(path);
  file.Out() << content;
  return file.Commit();
}

TEST(FileReplace, TheNewFileTakesTheNameWhenItIsWhole) {
  for (const char* old : {"", "old"}) {
    Folder folder;
    if (*old) folder.File("a", old);
    const long before = Entries(folder);
    { QZFileReplacement(folder / "a").Out() << "abandoned" << qzendl; }
    EXPECT_EQ(Entries(folder), before);
    QZFileReplacement file(folder / "a");
    file.Out() << std::string(100000, 'x') << qzendl;
    EXPECT_EQ(Entries(folder), before + 1);
    EXPECT_EQ(Content(folder / "a"), old);
    EXPECT_TRUE(file.Commit());
    EXPECT_TRUE(file.Commit());
    file.Abandon();
    EXPECT_EQ(Content(folder / "a"), std::string(100000, 'x') + "\n");
    EXPECT_EQ(Entries(folder), 1);
  }
}

TEST(FileReplace, TakesThePermissionsOfTheOldFile) {
  Folder folder;
  const auto permissions = [&] { return static_cast<unsigned>(fs::status(folder / "a").permissions()); };
  const mode_t mask = ::umask(027);
  EXPECT_TRUE(Replace(folder / "a", "new"));
  ::umask(mask);
  EXPECT_EQ(permissions(), 0640U);
  for (const unsigned mode : {0600U, 0755U, 0660U}) {
    fs::permissions(folder / "a", fs::perms(mode));
    EXPECT_TRUE(Replace(folder / "a", "new"));
    EXPECT_EQ(permissions(), mode);
  }
}

TEST(FileReplace, ALinkStaysALink) {
  Folder folder;
  folder.File("a", "old");
  for (const char* to : {"a", "new"}) {
    fs::remove(folder / "link");
    fs::create_symlink(to, folder / "link");
    EXPECT_TRUE(Replace(folder / "link", "content"));
    EXPECT_EQ(Content(folder / to), "content");
    EXPECT_EQ(fs::read_symlink(folder / "link"), to);
  }
}

TEST(FileReplace, WhatIsNoRegularFileIsWrittenDirectly) {
  EXPECT_TRUE(Replace("/dev/null", "x"));
  QZFileReplacement file("/dev/full");
  file.Out() << "x";
  EXPECT_FALSE(file.Commit());
  EXPECT_EQ(file.Error(), ENOSPC);
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST(FileReplace, WhatCannotBeMadeSaysWhy) {
  Folder folder;
  fs::create_symlink("round", folder / "round");
  const std::pair<std::string, int> cases[] = {{folder.path, EISDIR},
                                               {folder / "no/such", ENOENT},
                                               {folder / std::string("a\0b", 3), ENOENT},
                                               {folder / "round", ELOOP}};
  for (const auto& [path, number] : cases) {
    QZFileReplacement file(path);
    EXPECT_TRUE(file.Out().eof()) << path;
    EXPECT_EQ(file.Out().write("x", 1), 0U) << path;
    EXPECT_EQ(file.Error(), number) << path;
    EXPECT_FALSE(file.Commit()) << path;
  }
  EXPECT_EQ(Entries(folder), 1);
}

TEST(FileReplace, TheExitOfTheProcessRemovesWhatIsItsOwn) {
  Folder folder;
  QZFileReplacement file(folder / "a");
  file.Out() << "content" << qzendl;
  EXPECT_EQ(StatusOfChild([&] {
              auto* const inChild = new QZFileReplacement(folder / "b");
              inChild->Out() << "part" << qzendl;
              std::exit(Entries(folder) == 2 ? 0 : 1);
              return 2;
            }),
            0);
  EXPECT_EQ(Entries(folder), 1);
  EXPECT_TRUE(file.Commit());
  EXPECT_EQ(Content(folder / "a"), "content\n");
}

}  // namespace
