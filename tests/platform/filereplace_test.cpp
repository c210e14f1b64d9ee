#include "qz/platform/filereplace.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "qz/platform/syscalls_impl.h"
#include "streamtest.h"

namespace {

using namespace QZPlatform;
using streamtest::Content;
using streamtest::Folder;
using SystemCalls::Call;
using SystemCalls::Fault;
using SystemCalls::ScheduledFault;

int entries(const Folder& folder) {
  DIR* const directory = ::opendir(folder.path.c_str());
  int count = -2;  // itself and its parent
  while (::readdir(directory)) ++count;
  ::closedir(directory);
  return count;
}

mode_t permissions(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

bool replace(const std::string& path, const std::string& content) {
  QZFileReplacement file(path);
  file.Out() << content;
  return file.Commit();
}

TEST(FileReplace, TheFileAppearsWhenItIsWhole) {
  Folder folder;
  QZFileReplacement file(folder / "a");
  file.Out() << std::string(100000, 'x');
  EXPECT_NE(::access((folder / "a").c_str(), F_OK), 0);
  EXPECT_TRUE(file.Commit());
  EXPECT_TRUE(file.Commit());
  file.Abandon();
  EXPECT_EQ(Content(folder / "a"), std::string(100000, 'x'));
  EXPECT_EQ(entries(folder), 1);
}

TEST(FileReplace, TheOldFileStaysUntilThen) {
  Folder folder;
  folder.File("a", "old");
  {
    QZFileReplacement file(folder / "a");
    file.Out() << "new" << qzendl;
    EXPECT_EQ(Content(folder / "a"), "old");
  }
  EXPECT_EQ(Content(folder / "a"), "old");
  EXPECT_EQ(entries(folder), 1);
  EXPECT_TRUE(replace(folder / "a", "new"));
  EXPECT_EQ(Content(folder / "a"), "new");
}

TEST(FileReplace, TakesThePermissionsOfTheOldFile) {
  Folder folder;
  for (mode_t mode : {0600U, 0644U, 0755U, 0660U}) {
    folder.File("a", "old");
    ASSERT_EQ(::chmod((folder / "a").c_str(), mode), 0);
    EXPECT_TRUE(replace(folder / "a", "new"));
    EXPECT_EQ(permissions(folder / "a"), mode);
  }
  const mode_t mask = ::umask(027);
  EXPECT_TRUE(replace(folder / "b", "new"));
  ::umask(mask);
  EXPECT_EQ(permissions(folder / "b"), 0640U);
}

TEST(FileReplace, ALinkStaysALink) {
  Folder folder;
  folder.File("a", "old");
  for (const char* to : {"a", "new"}) {
    ::unlink((folder / "link").c_str());
    ASSERT_EQ(::symlink(to, (folder / "link").c_str()), 0);
    EXPECT_TRUE(replace(folder / "link", "content"));
    EXPECT_EQ(Content(folder / to), "content") << to;
    std::string said;
    EXPECT_TRUE(SystemCalls::ReadLink((folder / "link").c_str(), said));
    EXPECT_EQ(said, to);
  }
  ASSERT_EQ(::symlink("round", (folder / "round").c_str()), 0);
  QZFileReplacement file(folder / "round");
  EXPECT_TRUE(file.Out().eof());
  EXPECT_EQ(file.Error(), ELOOP);
  EXPECT_FALSE(file.Commit());
}

TEST(FileReplace, WhatIsNoRegularFileIsWrittenDirectly) {
  EXPECT_TRUE(replace("/dev/null", "x"));
  QZFileReplacement file("/dev/full");
  file.Out() << "x";
  EXPECT_FALSE(file.Commit());
  EXPECT_EQ(file.Error(), ENOSPC);
  struct stat status = {};
  EXPECT_EQ(::stat("/dev/full", &status), 0);
  EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST(FileReplace, WhatCannotBeMadeSaysWhy) {
  Folder folder;
  const std::pair<std::string, int> cases[] = {
      {folder.path, EISDIR}, {folder / "no/such", ENOENT}, {folder / std::string("a\0b", 3), ENOENT}};
  for (const auto& [path, number] : cases) {
    QZFileReplacement file(path);
    EXPECT_TRUE(file.Out().eof()) << path;
    EXPECT_EQ(file.Out().write("x", 1), 0U) << path;
    EXPECT_EQ(file.Error(), number) << path;
    EXPECT_FALSE(file.Commit()) << path;
  }
  EXPECT_EQ(entries(folder), 0);
}

// Whichever call fails, either the new file is there whole or the old one is, and nothing else.
TEST(FileReplace, AnyFailureLeavesTheOldFileAlone) {
  Folder folder;
  const std::string content(100000, 'n');
  folder.File("a", "old");
  unsigned long calls = 0;
  {
    ScheduledFault counting(Call::Any, 0, Fault::None());
    EXPECT_TRUE(replace(folder / "a", content));
    calls = counting.Count();
  }
  for (unsigned long nth = 1; nth <= calls; ++nth) {
    folder.File("a", "old");
    bool done = false;
    {
      ScheduledFault scheduled(Call::Any, nth, Fault::Fail(EIO));
      done = replace(folder / "a", content);
    }
    EXPECT_EQ(Content(folder / "a"), done ? content : "old") << nth;
    EXPECT_EQ(entries(folder), 1) << nth;
  }
}

TEST(FileReplace, TheExitOfTheProcessRemovesWhatIsUnderWay) {
  Folder folder;
  std::fflush(nullptr);  // or the child would write it too
  const pid_t child = ::fork();
  if (child == 0) {
    auto* const file = new QZFileReplacement(folder / "a");
    file->Out() << "part" << qzendl;
    std::exit(entries(folder) == 1 ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(entries(folder), 0);
}

TEST(FileReplace, AChildLeavesItsParentsFileAlone) {
  Folder folder;
  QZFileReplacement file(folder / "a");
  file.Out() << "content" << qzendl;
  std::fflush(nullptr);  // or the child would write it too
  const pid_t child = ::fork();
  if (child == 0) std::exit(0);
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(file.Commit());
  EXPECT_EQ(Content(folder / "a"), "content\n");
}

}  // namespace
