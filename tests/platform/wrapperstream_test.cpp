#include "qz/platform/wrapperstream.h"

#include "qz/platform/filestream.h"
#include "qz/platform/memorystream.h"
#include "streamtest.h"

namespace {

using namespace streamtest;

class Watched : public qzisstream {
 public:
  Watched(int& deaths, const std::string& content) : count(deaths) { set(content); }
  ~Watched() override { ++count; }

 private:
  int& count;
};

TEST(WrapperStream, DestroysOnlyWhatItOwns) {
  int deaths = 0;
  Watched mine(deaths, "mine");
  {
    qziwrapperstream in;
    in.set(new Watched(deaths, "first"), true);
    in.set(new Watched(deaths, "second"), true);
    EXPECT_EQ(deaths, 1);
    in.clear();
    in.clear();
    EXPECT_EQ(deaths, 2);
    EXPECT_EQ(in.source(), nullptr);
    EXPECT_TRUE(in.eof());
    EXPECT_EQ(in.get(), -1);
    EXPECT_FALSE(in.seek(0));
    in.set(nullptr, true);
    mine.skip(2);
    in.set(&mine, false);
    EXPECT_EQ(in.tell(), 2U);
    EXPECT_EQ(in.get(), 'n');
    in.set(new Watched(deaths, "third"), false);
    in.set(in.source(), true);  // the same one: from now on owned
    EXPECT_EQ(deaths, 2);
    EXPECT_EQ(in.get(), 't');
  }
  EXPECT_EQ(deaths, 3);
}

TEST(WrapperStream, TakesUpASourceThatWasOpenedAnew) {
  for (const char* first : {"", "a", "abc"}) {
    qzisstream source;
    source.set(std::string(first));
    qziwrapperstream in;
    in.set(&source, false);
    EXPECT_EQ(in.eof(), *first == '\0');
    in.get();
    source.set("new");
    in.set(&source, false);
    EXPECT_EQ(Rest(in), "new") << first;
    EXPECT_EQ(in.tell(), 3U) << first;
  }
}

TEST(WrapperStream, ForwardsCloseAndHasNothingToOpen) {
  Folder folder;
  qzifstream file;
  file.open(folder.File("a", "content"));
  qziwrapperstream in;
  in.set(&file, false);
  EXPECT_EQ(in.get(), 'c');
  in.close();
  EXPECT_TRUE(in.eof() && file.eof());
  EXPECT_EQ(in.size(), 0U);
  in.open("a");
  EXPECT_TRUE(in.eof());
}

TEST(WrapperStream, TakesWhatThePipeHasReady) {
  Pipe pipe;
  qzifstream source;
  source.attach(pipe.Read(), false);
  qziwrapperstream in;
  in.set(&source, false);
  pipe.Give("line\n");
  std::string line;
  EXPECT_TRUE(in.getline(line));  // and doesn't wait for more
  EXPECT_EQ(line, "line");
  EXPECT_EQ(in.size(), ~0UL);
  EXPECT_FALSE(in.eof());
  pipe.Close(pipe.Write());
  EXPECT_FALSE(in.getline(line));
}

}  // namespace
