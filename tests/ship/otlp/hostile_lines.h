#ifndef QZLOG_TESTS_SHIP_OTLP_HOSTILE_LINES_H
#define QZLOG_TESTS_SHIP_OTLP_HOSTILE_LINES_H

#include <bit>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/ship/otlp/otlp_fixture.h"
#include "tests/support/seeded_random.h"

namespace qzlog_test {

/// Random lines with whatever attributes may hold, and now and then bytes that are no JSON.
class HostileLines {
 public:
  explicit HostileLines(qz_test::SeededRandom& random) : random_(random) {}

  SentLine next() {
    ++number_;
    SentLine sent;
    sent.identity = "web1/7/1/" + std::to_string(number_);
    sent.level = static_cast<int>(random_.between(-1, 9));
    sent.event = random_.one_in(3) ? "" : "DISK_FULL";
    sent.id = static_cast<std::uint32_t>(random_.between(0, 0xFFFFFFFF));
    sent.product = random_.one_in(3) ? "other product" : "storage";
    sent.writer = random_.one_in(3) ? "" : "web" + std::to_string(random_.below(3)) + "/7/1";
    sent.line = random_.one_in(10) ? bytes() : entry(sent);
    return sent;
  }

 private:
  std::string text() {
    static constexpr const char* kPieces[] = {
        "a", "Zz",           "\"",       "\\",           "{",    "}",    "[",    "]", ",",
        ":", "\n",           "\r",       "\t",           "\x01", "\x1f", "\x7f", "é", "€",
        "😀", "\xEF\xBF\xBF", "\xC2\x80", "\xE2\x80\xA8", "%",    "</x>", "'"};
    std::string text;
    const std::size_t count = random_.one_in(200) ? 5000 : random_.below(12);
    for (std::size_t at = 0; at < count; ++at) text += kPieces[random_.below(std::size(kPieces))];
    if (random_.one_in(20)) text += std::string(1, '\0');
    return text;
  }
  nlohmann::json value() {
    switch (random_.below(6)) {
      case 0:
        return random_.between(INT64_MIN, INT64_MAX);
      case 1:
        return static_cast<std::uint64_t>(random_.between(INT64_MIN, INT64_MAX));
      case 2: {
        const auto number = std::bit_cast<double>(random_.between(INT64_MIN, INT64_MAX));
        return std::isfinite(number) ? number : 0.1;
      }
      case 3:
        return random_.one_in(2);
      case 4:
        return random_.between(-1, 1);
      default:
        return text();
    }
  }
  std::string entry(const SentLine& sent) {
    nlohmann::json line = {{"id", sent.id}, {"time", "2026-11-21T08:15:30.123456789Z"}};
    if (sent.level >= 0) line["level"] = sent.level;
    nlohmann::json& attributes = line["attributes"] = nlohmann::json::object();
    for (std::size_t count = random_.one_in(30) ? 40 : random_.below(6); count != 0; --count) {
      const std::string name = random_.one_in(10) ? text() : "N" + std::to_string(count);
      attributes[name] = value();
    }
    return line.dump(-1, ' ', random_.one_in(2));
  }
  std::string bytes() {
    std::string text = random_.text(random_.below(200));
    for (char& byte : text) byte = byte == '\n' ? ' ' : byte;
    return text;
  }

  qz_test::SeededRandom& random_;
  int number_ = 0;
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_SHIP_OTLP_HOSTILE_LINES_H
