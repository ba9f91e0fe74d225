#ifndef QZLOG_TOOLS_STATS_NUMBER_SUMMARY_H
#define QZLOG_TOOLS_STATS_NUMBER_SUMMARY_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace qzlog_tool {

/// What is known of many numbers: how many, the smallest, the largest, their mean, and quantiles. At first it keeps the
/// numbers themselves and quantiles are exact; then it counts them in steps, each a 128th of a power of two, and later
/// in larger ones. One thread uses it.
class NumberSummary {
 public:
  /// Adds a number; one that is not finite is left out.
  void add(double number);
  /// Adds what another one has; the numbers may be those of either then.
  void add(const NumberSummary& other);

  std::uint64_t count() const { return count_; }
  // Of no numbers these mean nothing.
  double minimum() const { return minimum_; }
  double maximum() const { return maximum_; }
  double mean() const { return (sum_ + lost_) / static_cast<double>(count_); }
  /// The number at the place count * percent / 100, rounded up and counted from 1, of all in their order; `percent` is
  /// 1 to 100.
  double quantile(unsigned percent) const;
  /// By how much quantiles may be wrong, as a part of themselves; 0: they are exact.
  double error() const;

  /// The numbers or steps that are held.
  std::size_t held() const { return numbers_.size() + steps_.size(); }
  /// Takes less memory, and is less exact: numbers become steps, steps twice as large ones.
  void shrink();

 private:
  /// A step by its place: those of numbers below zero are negative.
  using Step = std::pair<std::int32_t, std::uint64_t>;

  std::int32_t step_of(double number) const;
  double number_of(std::int32_t step) const;
  void count_step(std::int32_t step, std::uint64_t count);
  void count_number(double number);
  void add_sum(double number);

  std::uint64_t count_ = 0;
  double minimum_ = std::numeric_limits<double>::infinity();
  double maximum_ = -std::numeric_limits<double>::infinity();
  double sum_ = 0;
  double lost_ = 0;  // what rounding took from the sum
  bool is_exact_ = true;
  bool has_fractions_ = false;
  unsigned coarseness_ = 0;              // how often steps became twice as large
  mutable std::vector<double> numbers_;  // sorted by whoever needs them so
  std::vector<Step> steps_;              // in order
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_STATS_NUMBER_SUMMARY_H
