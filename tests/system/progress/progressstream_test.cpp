#include "qz/system/progress/progressstream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qz/platform/memorystream.h"

using namespace QZSystem;

namespace {

using Reports = std::vector<std::pair<unsigned int, unsigned int>>;

// Writes down what it is told, elsewhere, so that the list outlives it.
class Recorder : public QZNullTracer {
 public:
  explicit Recorder(Reports& reports, bool* deleted = nullptr) : told(reports), gone(deleted) {}
  ~Recorder() override {
    if (gone) *gone = true;
  }
  void SetProgress(unsigned int done, unsigned int total) override { told.emplace_back(done, total); }

 private:
  Reports& told;
  bool* gone;
};

qzisstream* Memory(std::size_t size) {
  std::string bytes(size, ' ');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7);
  auto stream = std::make_unique<qzisstream>();
  stream->set(bytes);
  return stream.release();
}

// A stream that delivers each byte of its source three times, and doesn't know beforehand how many.
class Tripling : public qziwrapperstream {
 public:
  explicit Tripling(qzistream* from) { set(from, true); }
  unsigned long _qzsize() override { return ~0UL; }
  bool _qzfill() override {
    resetBuffer(offset + static_cast<unsigned long>(end - start), false);
    std::string few(1000, ' ');
    few.resize(source()->read(few, few.size()));
    for (char each : few) end = std::fill_n(end, 3, static_cast<unsigned char>(each));
    return !few.empty() || qzistream::_qzfill();
  }
};

// The reports while all of the source is read, which holds that many bytes.
Reports WhileReading(qzistream* source, std::size_t size) {
  Reports reports;
  Recorder tracer(reports);
  qzprogressstream in(source, true, &tracer, false);
  std::string read;
  EXPECT_EQ(in.read(read), size);
  EXPECT_EQ(in.get(), -1);
  return reports;
}

TEST(ProgressStream, ReportsTheStateBeforeEachRefill) {
  EXPECT_EQ(WhileReading(Memory(32768), 32768), Reports());
  EXPECT_EQ(WhileReading(Memory(32769), 32769), (Reports{{128, 128}}));
  EXPECT_EQ(WhileReading(Memory(100000), 100000), (Reports{{128, 390}, {256, 390}, {384, 390}}));
}

TEST(ProgressStream, MeasuresTheStreamBeneathAWrapper) {
  Reports expected;
  for (unsigned int i = 1; i <= 25; ++i) expected.emplace_back(i * 1000 / 256, 100);
  EXPECT_EQ(WhileReading(new Tripling(Memory(25600)), 3 * 25600), expected);
  EXPECT_EQ(WhileReading(new Tripling(new Tripling(Memory(10000))), 9 * 10000), Reports()) << "beneath has no size";
  EXPECT_EQ(WhileReading(new qziwrapperstream, 0), Reports()) << "nothing is beneath";
}

TEST(ProgressStream, TracersAndSourcesChangeHands) {
  Reports first, second;
  bool firstDeleted = false, secondDeleted = false;
  {
    qzprogressstream in(new Tripling(Memory(200000)), true, new Recorder(first, &firstDeleted), true);
    in.skip(9000);
    EXPECT_EQ(first, (Reports{{3, 781}, {7, 781}}));
    Recorder kept(second);
    in.SetTracer(&kept, false);
    EXPECT_TRUE(firstDeleted);
    in.set(Memory(200000), true);  // is measured anew, and the wrapper is gone
    in.skip(70000);
    in.SetTracer(nullptr, true);
    in.skip(40000);
    EXPECT_EQ(second, (Reports{{128, 781}, {256, 781}}));
    auto* owned = new Recorder(second, &secondDeleted);
    in.SetTracer(owned, false);
    in.SetTracer(owned, true);
    EXPECT_FALSE(secondDeleted);
  }
  EXPECT_TRUE(secondDeleted);
}

TEST(ProgressStream, ASeekTakesItsPositionOffTheFigure) {
  Reports reports;
  Recorder tracer(reports);
  qzprogressstream in(Memory(100000), true, &tracer, false);
  in.skip(40000);
  EXPECT_FALSE(in.seek(200000));
  EXPECT_TRUE(in.seek(1024));
  EXPECT_EQ(in.get(), 1024 * 7 % 256);
  EXPECT_EQ(reports, (Reports{{128, 390}, {(65536 - 1024) / 256, 390}}));
}

}  // namespace
