#include "qz/platform/wrapperstream.h"

#include "qz/platform/filestream.h"
#include "qz/platform/memorystream.h"
#include "streamtest.h"

namespace {

using namespace QZPlatform;
using streamtest::ChunkedStream;

class Watched : public qzisstream {
 public:
  Watched(int& deaths, const std::string& content) : count(deaths) { set(content); }
  ~Watched() override { ++count; }

 private:
  int& count;
};

class CountingWrapper : public qziwrapperstream {
 public:
  bool _qzfill() override {
    const bool filled = qziwrapperstream::_qzfill();
    fills += filled;
    return filled;
  }

  int fills = 0;
};

TEST(WrapperStream, DeliversTheSourceInBlocks) {
  const std::string bytes = streamtest::Bytes(100000);
  qzisstream source;
  source.set(bytes.data(), bytes.size(), false);
  CountingWrapper in;
  in.set(&source, false);
  std::string got;
  EXPECT_EQ(in.size(), 100000U);
  for (int c = in.get(); c >= 0; c = in.get()) got += static_cast<char>(c);
  EXPECT_EQ(got, bytes);
  EXPECT_EQ(in.fills, 4);
  EXPECT_TRUE(in.eof());
}

TEST(WrapperStream, EndsWithItsSource) {
  qzisstream source;
  source.set("ab");
  qziwrapperstream in;
  in.set(&source, false);
  EXPECT_FALSE(in.eof());
  in.get();
  EXPECT_FALSE(in.eof());
  in.get();
  EXPECT_TRUE(in.eof());
  source.set("");
  in.set(nullptr, true);
  in.set(&source, false);
  EXPECT_TRUE(in.eof());
}

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
    in.set(&mine, false);
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
    in.get();
    source.set("new");
    in.set(&source, false);
    std::string got;
    in.read(got);
    EXPECT_EQ(got, "new") << first;
    EXPECT_EQ(in.tell(), 3U) << first;
  }
}

TEST(WrapperStream, KeepsTheSourcesPositions) {
  qzisstream source;
  source.set(streamtest::Bytes(90000));
  source.skip(100);
  qziwrapperstream in;
  in.set(&source, false);
  EXPECT_EQ(in.tell(), 100U);
  in.skip(50000);
  EXPECT_EQ(in.tell(), 50100U);
  EXPECT_TRUE(in.seek(10));
  EXPECT_EQ(in.tell(), 10U);
  qzisstream other(source);
  other.seek(10);
  EXPECT_EQ(in.get(), other.get());
  EXPECT_TRUE(in.seek(90000));
  EXPECT_EQ(in.get(), -1);
  EXPECT_FALSE(in.seek(90001));
  EXPECT_EQ(in.tell(), 90000U);
}

TEST(WrapperStream, ForwardsCloseAndHasNothingToOpen) {
  streamtest::Folder folder;
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
  streamtest::Pipe pipe;
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
  pipe.CloseWrite();
  EXPECT_FALSE(in.getline(line));
}

TEST(WrapperStream, WrapsAWrapper) {
  const std::string bytes = streamtest::Bytes(70000);
  ChunkedStream source(bytes, 999);
  qziwrapperstream inner;
  inner.set(&source, false);
  qziwrapperstream outer;
  outer.set(&inner, false);
  std::string got;
  outer.read(got);
  EXPECT_EQ(got, bytes);
}

}  // namespace
