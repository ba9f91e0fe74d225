#include "tools/stats/number_summary.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace qzlog_tool {

namespace {

constexpr std::size_t kMostNumbers = 500'000;
constexpr std::size_t kMostSteps = 8192;
constexpr unsigned kStepBits = 7;                  // of a power of two
constexpr unsigned kDroppedBits = 52 - kStepBits;  // of a number's

// The bits of numbers above zero sort as they do.
std::uint64_t bits_of(double number) { return std::bit_cast<std::uint64_t>(number); }

}  // namespace

void NumberSummary::add(double number) {
  if (!std::isfinite(number)) return;
  ++count_;
  minimum_ = std::min(minimum_, number);
  maximum_ = std::max(maximum_, number);
  add_sum(number);
  has_fractions_ = has_fractions_ || number != std::floor(number);
  count_number(number);
}

void NumberSummary::add(const NumberSummary& other) {
  count_ += other.count_;
  minimum_ = std::min(minimum_, other.minimum_);
  maximum_ = std::max(maximum_, other.maximum_);
  add_sum(other.sum_);
  lost_ += other.lost_;
  has_fractions_ = has_fractions_ || other.has_fractions_;
  for (const double number : other.numbers_) count_number(number);
  if (other.is_exact_) return;
  if (is_exact_) shrink();
  while (coarseness_ < other.coarseness_) shrink();
  for (const auto& [step, count] : other.steps_) {
    const unsigned difference = coarseness_ - other.coarseness_;  // counting may have made steps larger
    count_step(step < 0 ? ~(~step >> difference) : step >> difference, count);
  }
}

// Neumaier's sum: what is rounded away is summed on its own.
void NumberSummary::add_sum(double number) {
  const double sum = sum_ + number;
  lost_ += std::abs(sum_) >= std::abs(number) ? (sum_ - sum) + number : (number - sum) + sum_;
  sum_ = sum;
}

void NumberSummary::count_number(double number) {
  if (is_exact_ && numbers_.size() == kMostNumbers) shrink();
  if (is_exact_) return numbers_.push_back(number);
  count_step(step_of(number), 1);
}

std::int32_t NumberSummary::step_of(double number) const {
  const auto step = static_cast<std::int32_t>(bits_of(std::abs(number)) >> kDroppedBits >> coarseness_);
  return number < 0 ? ~step : step;
}

// The middle of the step; integers are at the beginnings of steps that are small.
double NumberSummary::number_of(std::int32_t step) const {
  const auto place = static_cast<std::uint64_t>(step < 0 ? ~step : step) << coarseness_;
  const auto edge = [](std::uint64_t at) { return std::bit_cast<double>(at << kDroppedBits); };
  const double begin = edge(place);
  double middle = begin + (edge(place + (std::uint64_t{1} << coarseness_)) - begin) / 2;
  if (!has_fractions_) middle = std::floor(middle);
  return std::clamp(step < 0 ? -middle : middle, minimum_, maximum_);
}

void NumberSummary::count_step(std::int32_t step, std::uint64_t count) {
  const auto place = std::lower_bound(steps_.begin(), steps_.end(), step,
                                      [](const Step& own, std::int32_t wanted) { return own.first < wanted; });
  if (place != steps_.end() && place->first == step) {
    place->second += count;
    return;
  }
  steps_.insert(place, {step, count});
  if (steps_.size() > kMostSteps) shrink();
}

void NumberSummary::shrink() {
  if (is_exact_) {
    is_exact_ = false;
    std::vector<double> numbers;
    numbers.swap(numbers_);
    for (const double number : numbers) count_step(step_of(number), 1);
    return;
  }
  ++coarseness_;
  std::vector<Step> steps;
  for (const auto& [step, count] : steps_) {
    const std::int32_t larger = step < 0 ? ~(~step >> 1) : step >> 1;
    if (!steps.empty() && steps.back().first == larger) {
      steps.back().second += count;
    } else {
      steps.emplace_back(larger, count);
    }
  }
  steps_.assign(steps.begin(), steps.end());
  steps_.shrink_to_fit();
}

double NumberSummary::quantile(unsigned percent) const {
  const std::uint64_t place =
      std::max<std::uint64_t>((count_ / 100) * percent + (count_ % 100 * percent + 99) / 100, 1);
  if (is_exact_) {
    const auto number = numbers_.begin() + static_cast<std::ptrdiff_t>(place - 1);
    std::nth_element(numbers_.begin(), number, numbers_.end());
    return *number;
  }
  std::uint64_t passed = 0;
  for (const auto& [step, count] : steps_) {
    passed += count;
    if (passed >= place) return number_of(step);
  }
  return maximum_;
}

double NumberSummary::error() const {
  if (is_exact_) return 0;
  const double steps_of_power = std::ldexp(1.0, static_cast<int>(kStepBits) - static_cast<int>(coarseness_));
  return steps_of_power >= 1 ? 1 / steps_of_power / 2 : (std::exp2(1 / steps_of_power) - 1) / 2;
}

}  // namespace qzlog_tool
