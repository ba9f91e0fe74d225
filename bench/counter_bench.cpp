// The entry counter with few and with many records in its file.
#include <memory>
#include <string>
#include <utility>

#include <qzlog.h>

#include "bench/big_endian.h"
#include "bench/case.h"
#include "bench/temporary_folder.h"

namespace qzlog_bench {
namespace {

constexpr int kYear = 2026;
constexpr int kMonth = 11;
constexpr int kDay = 21;

/// How often a case is called: new keys make the file larger, keys in turn do not.
constexpr long kCallsWithNewKeys = 1000;
constexpr long kCallsInTurn = 20000;

/// How many calls are left out: the file has to be read once.
constexpr int kFirstCalls = 10;

/// A counter over a file with the keys from 0 on, one record each.
class OpenCounter {
 public:
  explicit OpenCounter(unsigned records) : path_(temporary_file("bench.cnt")) {
    write_file(path_, records_with_keys(records));
    counter_.OpenEntryCounterFile(temporary_folder().c_str(), "bench");
  }

  void increase(unsigned key) {
    require(counter_.IncreaseCount(kYear, kMonth, kDay, static_cast<int>(key)) == 0, "the counter counts");
  }

 private:
  static std::string records_with_keys(unsigned count) {
    constexpr unsigned kRecordSize = 32;
    std::string bytes;
    bytes.reserve(count * kRecordSize);
    for (unsigned key = 0; key < count; ++key) {
      for (const unsigned field : {kRecordSize, 0U + kYear, 0U + kMonth, 0U + kDay, key, 1U, 0U, 0U}) {
        append_int4(bytes, field);
      }
    }
    return bytes;
  }

  std::string path_;
  _qz_LOG_EntryCounter counter_;
};

/// Two keys in turn, so that each call has another key than the one before.
class IncreaseAlternating {
 public:
  explicit IncreaseAlternating(unsigned records)
      : counter_(std::make_shared<OpenCounter>(records)), key_(records - 1), other_key_(records / 2) {
    for (int i = 0; i < kFirstCalls; ++i) (*this)();
  }

  void operator()() {
    std::swap(key_, other_key_);
    counter_->increase(key_);
  }

 private:
  std::shared_ptr<OpenCounter> counter_;
  unsigned key_;
  unsigned other_key_;
};

class IncreaseNew {
 public:
  explicit IncreaseNew(unsigned records) : counter_(std::make_shared<OpenCounter>(records)), next_key_(records) {
    for (int i = 0; i < kFirstCalls; ++i) (*this)();
  }

  void operator()() { counter_->increase(next_key_++); }

 private:
  std::shared_ptr<OpenCounter> counter_;
  unsigned next_key_;
};

}  // namespace

void add_counter_cases(CaseList& cases) {
  for (const unsigned records : {100U, 10000U, 1000000U}) {
    const std::string size = std::to_string(records);
    cases.add("counter/alternating/" + size, narrow_path(), [=] { return IncreaseAlternating(records); }).iterations =
        kCallsInTurn;
    cases.add("counter/new/" + size, narrow_path(), [=] { return IncreaseNew(records); }).iterations =
        kCallsWithNewKeys;
  }
}

}  // namespace qzlog_bench
