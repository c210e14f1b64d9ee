#include "tools/common/fieldstats.h"

#include <algorithm>
#include <cmath>

namespace QZTools {

namespace {

constexpr std::size_t sampleSize = 4096;
constexpr std::size_t keptTexts = 10000;
constexpr std::size_t longestText = 200;

// xorshift64* (Vigna 2016): a sample that every run draws in the same way.
std::uint64_t nextRandom(std::uint64_t& state) {
  state ^= state >> 12;
  state ^= state << 25;
  state ^= state >> 27;
  return state * 0x2545F4914F6CDD1DU;
}

}  // namespace

void NumberStats::Add(double value) {
  if (std::isnan(value)) {
    ++nans;
    return;
  }
  ++count;
  least = count == 1 ? value : std::min(least, value);
  greatest = count == 1 ? value : std::max(greatest, value);
  const double before = value - mean;
  mean += before / static_cast<double>(count);
  squares += before * (value - mean);
  if (sample.size() < sampleSize) {
    sample.push_back(value);
  } else if (const std::uint64_t place = nextRandom(randomState) % count; place < sampleSize) {
    sample[place] = value;
  }
}

double NumberStats::Deviation() const { return count < 2 ? 0 : std::sqrt(squares / static_cast<double>(count - 1)); }

bool NumberStats::IsLogarithmic() const {
  return count > 0 && least > 0 && std::isfinite(greatest) && greatest / least > 1e4;
}

std::string NumberStats::Histogram(unsigned int cells) const {
  static constexpr const char* blocks[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  if (count == 0 || !std::isfinite(least) || !std::isfinite(greatest)) return "";
  const bool byLogarithm = IsLogarithmic();
  const double from = byLogarithm ? std::log(least) : least;
  const double to = byLogarithm ? std::log(greatest) : greatest;
  std::vector<unsigned long> bins(cells);
  for (double value : sample) {
    const double place = to > from ? ((byLogarithm ? std::log(value) : value) - from) / (to - from) : 0;
    bins[std::min<std::size_t>(cells - 1, static_cast<std::size_t>(std::max(place, 0.0) * cells))]++;
  }
  const unsigned long most = *std::max_element(bins.begin(), bins.end());
  std::string text;
  for (unsigned long bin : bins) text += blocks[bin == 0 ? 0 : (bin * 8 + most - 1) / most];
  return text;
}

void TextStats::Add(const std::string& text) {
  ++total;
  const std::string key = text.substr(0, longestText);
  const auto found = counts.find(key);
  if (found != counts.end()) {
    ++found->second;
  } else if (counts.size() < keptTexts) {
    counts.emplace(key, 1);
  } else {
    replaceRarest(key);
  }
}

// The rarest are listed once and used up one by one; their counts may have grown since.
void TextStats::replaceRarest(const std::string& text) {
  cut = true;
  for (;;) {
    if (rarest.empty()) {
      rarestCount = counts.begin()->second;
      for (const auto& [each, times] : counts) rarestCount = std::min(rarestCount, times);
      for (const auto& [each, times] : counts) {
        if (times == rarestCount) rarest.push_back(each);
      }
    }
    const auto found = counts.find(rarest.back());
    rarest.pop_back();
    if (found == counts.end() || found->second != rarestCount) continue;
    counts.erase(found);
    counts.emplace(text, rarestCount + 1);
    return;
  }
}

std::vector<std::pair<std::string, unsigned long>> TextStats::MostFrequent(std::size_t number) const {
  std::vector<std::pair<std::string, unsigned long>> all(counts.begin(), counts.end());
  std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) {
    return a.second != b.second ? a.second > b.second : a.first < b.first;
  });
  if (all.size() > number) all.resize(number);
  return all;
}

}  // namespace QZTools
