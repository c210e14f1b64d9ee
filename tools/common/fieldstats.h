#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace QZTools {

/// Least, mean, greatest value and deviation of a stream of numbers, with a sample of them for a histogram. Memory is
/// bounded. One thread at a time.
class NumberStats {
 public:
  /// Takes a number in; NaN is counted apart.
  void Add(double value);

  unsigned long Count() const { return count; }
  unsigned long NaNCount() const { return nans; }
  double Least() const { return least; }
  double Greatest() const { return greatest; }
  double Mean() const { return mean; }
  /// The standard deviation of a sample (n - 1); 0 for fewer than two numbers. Welford 1962, Note on a method for
  /// calculating corrected sums of squares and products.
  double Deviation() const;

  /// Whether the histogram counts by the logarithm, as it does where positive numbers span more than four decades.
  bool IsLogarithmic() const;
  /// The share of the numbers in each of `cells` intervals of equal width from least to greatest, as block characters.
  /// Up to 4096 numbers it is exact, beyond that it is that of a random sample of so many (reservoir sampling, Vitter
  /// 1985), which a run repeats.
  std::string Histogram(unsigned int cells) const;

 private:
  unsigned long count = 0;
  unsigned long nans = 0;
  double least = 0;
  double greatest = 0;
  double mean = 0;
  double squares = 0;
  std::vector<double> sample;
  std::uint64_t randomState = 1;
};

/// The number of distinct texts of a stream and the most frequent ones. Up to 10,000 distinct texts both are exact;
/// beyond that new texts take the place of the rarest, and the counts are upper bounds (Metwally, Agrawal and El Abbadi
/// 2005, Efficient computation of frequent and top-k elements). One thread at a time.
class TextStats {
 public:
  void Add(const std::string& text);

  unsigned long Count() const { return total; }
  std::size_t Distinct() const { return counts.size(); }
  /// Whether there were more distinct texts than are kept.
  bool IsCut() const { return cut; }
  /// The texts that occur most often, at most `number`, most frequent first, ties in order of the text.
  std::vector<std::pair<std::string, unsigned long>> MostFrequent(std::size_t number) const;

 private:
  void replaceRarest(const std::string& text);

  std::unordered_map<std::string, unsigned long> counts;
  std::vector<std::string> rarest;
  unsigned long rarestCount = 0;
  unsigned long total = 0;
  bool cut = false;
};

}  // namespace QZTools
