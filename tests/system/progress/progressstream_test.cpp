#include "qz/system/progress/progressstream.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qz/platform/memorystream.h"

using namespace QZSystem;

namespace {

using Reports = std::vector<std::pair<unsigned int, unsigned int>>;

// Writes down what it is told, elsewhere, so that the list outlives it.
class Recorder : public QZTracerBase {
 public:
  explicit Recorder(Reports& reports, bool* deleted = nullptr) : told(reports), gone(deleted) {}
  ~Recorder() override {
    if (gone) *gone = true;
  }
  void SetTask(std::string) override { ADD_FAILURE(); }
  void Push(std::string) override { ADD_FAILURE(); }
  void Pop() override { ADD_FAILURE(); }
  void Refresh() override { ADD_FAILURE(); }
  void SetProgress(unsigned int done, unsigned int total) override { told.emplace_back(done, total); }
  void SetProgress(double) override { ADD_FAILURE(); }
  bool Aborted() override {
    ADD_FAILURE() << "nobody asks";
    return true;
  }

 private:
  Reports& told;
  bool* gone;
};

std::string Bytes(std::size_t size) {
  std::string bytes(size, ' ');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7);
  return bytes;
}

std::unique_ptr<qzisstream> Memory(const std::string& bytes) {
  auto stream = std::make_unique<qzisstream>();
  stream->set(bytes);
  return stream;
}

// A stream that delivers each byte of its source three times.
class Tripling : public qziwrapperstream {
 public:
  explicit Tripling(qzistream* from) { set(from, true); }
  bool _qzfill() override {
    resetBuffer(offset + static_cast<unsigned long>(end - start), false);
    std::string few(1000, ' ');
    few.resize(source()->read(few, few.size()));
    for (char each : few) end = std::fill_n(end, 3, static_cast<unsigned char>(each));
    return !few.empty() || qzistream::_qzfill();
  }
};

// Memory that doesn't tell its size, as a pipe doesn't.
class Sizeless : public qziwrapperstream {
 public:
  unsigned long _qzsize() override { return ~0UL; }
};

TEST(ProgressStream, ReportsTheStateBeforeEachRefill) {
  const std::pair<std::size_t, Reports> cases[] = {
      {0, {}}, {100, {}}, {32768, {}}, {32769, {{128, 128}}}, {100000, {{128, 390}, {256, 390}, {384, 390}}},
  };
  for (const auto& [size, expected] : cases) {
    Reports reports;
    Recorder tracer(reports);
    const std::string bytes = Bytes(size);
    std::string read;
    qzprogressstream in(Memory(bytes).release(), true, &tracer, false);
    in.read(read);
    EXPECT_EQ(read, bytes);
    EXPECT_EQ(in.get(), -1);
    EXPECT_EQ(reports, expected) << size;
  }
}

TEST(ProgressStream, MeasuresTheStreamBeneathAWrapper) {
  Reports reports;
  Recorder tracer(reports);
  auto beneath = Memory(Bytes(25600));
  qzprogressstream in(new Tripling(beneath.release()), true, &tracer, false);
  std::string read;
  EXPECT_EQ(in.read(read), 3 * 25600U);
  ASSERT_GE(reports.size(), 20U);
  for (std::size_t i = 0; i < reports.size(); ++i) {
    EXPECT_EQ(reports[i].second, 100U);
    EXPECT_EQ(reports[i].first, (i + 1) * 1000 / 256);
  }
}

TEST(ProgressStream, AWrapperOverNothingIsEmpty) {
  Reports reports;
  Recorder tracer(reports);
  qzprogressstream in(new qziwrapperstream, true, &tracer, false);
  EXPECT_EQ(in.get(), -1);
  EXPECT_TRUE(reports.empty());
}

TEST(ProgressStream, ASourceWithoutASizeHasNoShares) {
  Reports reports;
  Recorder tracer(reports);
  auto sizeless = std::make_unique<Sizeless>();
  sizeless->set(Memory(Bytes(100000)).release(), true);
  Sizeless outer;
  outer.set(sizeless.release(), true);
  qzprogressstream in(&outer, false, &tracer, false);
  std::string read;
  EXPECT_EQ(in.read(read), 100000U);
  EXPECT_TRUE(reports.empty());
}

TEST(ProgressStream, TracersChangeHands) {
  Reports first, second;
  bool firstDeleted = false, secondDeleted = false;
  {
    qzprogressstream in(Memory(Bytes(200000)).release(), true, new Recorder(first, &firstDeleted), true);
    in.skip(70000);
    EXPECT_EQ(first.size(), 2U);
    Recorder kept(second);
    in.SetTracer(&kept, false);
    EXPECT_TRUE(firstDeleted);
    in.skip(70000);
    EXPECT_EQ(second.size(), 2U);
    in.SetTracer(nullptr, true);
    in.skip(40000);
    EXPECT_EQ(second.size(), 2U);
    auto* owned = new Recorder(second, &secondDeleted);
    in.SetTracer(owned, false);
    in.SetTracer(owned, true);
    EXPECT_FALSE(secondDeleted);
  }
  EXPECT_TRUE(secondDeleted);
}

TEST(ProgressStream, AnotherSourceIsMeasuredAnew) {
  Reports reports;
  Recorder tracer(reports);
  qzprogressstream in(new Tripling(Memory(Bytes(25600)).release()), true, &tracer, false);
  in.skip(10000);
  reports.clear();
  in.set(Memory(Bytes(100000)).release(), true);  // the wrapper is gone
  std::string read;
  EXPECT_EQ(in.read(read), 100000U);
  EXPECT_EQ(reports, (Reports{{128, 390}, {256, 390}, {384, 390}}));
}

TEST(ProgressStream, ASeekTakesItsPositionOffTheFigure) {
  Reports reports;
  Recorder tracer(reports);
  qzprogressstream in(Memory(Bytes(100000)).release(), true, &tracer, false);
  in.skip(40000);
  EXPECT_FALSE(in.seek(200000));
  EXPECT_TRUE(in.seek(1024));
  EXPECT_EQ(in.get(), static_cast<unsigned char>(Bytes(1025).back()));
  EXPECT_EQ(reports, (Reports{{128, 390}, {(65536 - 1024) / 256, 390}}));
}

}  // namespace
