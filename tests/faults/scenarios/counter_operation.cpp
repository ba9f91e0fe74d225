#include <qzlog/logentrycounter.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "tests/faults/scenarios/operations.h"

namespace {

constexpr const char* kName = "events";
constexpr const char* kFile = "events.cnt";
constexpr std::size_t kRecordSize = 32;
constexpr int kYear = 2026;

// What each key's count on a day of its own may be once the operation is over.
struct Expectation {
  int day;
  int key;
  unsigned before;
  unsigned after;
  int result = 0;
};

std::string g_content;
bool g_content_is_known = false;
Expectation g_expectations[4];
bool g_writable = false;

std::string read_file() {
  std::string content;
  std::FILE* const file = std::fopen(kFile, "rb");
  if (file == nullptr) return content;
  for (int byte = std::fgetc(file); byte != EOF; byte = std::fgetc(file)) content += static_cast<char>(byte);
  std::fclose(file);
  return content;
}

unsigned number_at(const std::string& content, std::size_t offset) {
  unsigned number = 0;
  for (std::size_t index = 0; index < 4; ++index)
    number = number << 8 | static_cast<unsigned char>(content[offset + index]);
  return number;
}

// The counts by day and key; false where the file is damaged.
bool read_counts(std::map<std::pair<unsigned, unsigned>, unsigned>& counts) {
  const std::string content = read_file();
  if (content.size() % kRecordSize != 0) return false;
  for (std::size_t start = 0; start < content.size(); start += kRecordSize) {
    if (number_at(content, start + 4) != 0 && number_at(content, start + 8) == 11) {
      counts[{number_at(content, start + 12), number_at(content, start + 16)}] = number_at(content, start + 20);
    }
  }
  return true;
}

bool is_in_order(const Expectation& expected, unsigned now) {
  if (!g_writable || expected.result != 0) return now == expected.before;
  return now == expected.after;
}

}  // namespace

void put_counter_back() {
  if (!g_content_is_known) g_content = read_file();
  g_content_is_known = true;
  std::FILE* const file = std::fopen(kFile, "wb");
  if (file == nullptr || std::fwrite(g_content.data(), 1, g_content.size(), file) != g_content.size()) std::abort();
  std::fclose(file);
}

void remove_counter() { unlink(kFile); }

// Increments one record and makes another, sets a third and takes the fourth away, each on a day of its own.
void count(SeenText& seen) {
  const unsigned old = g_content.empty() ? 0 : 1;
  g_expectations[0] = {1, 1001, 21 * old, 21 * old + 1};
  g_expectations[1] = {25, 7, 0, 1};
  g_expectations[2] = {2, 1101, 22 * old, 99};
  g_expectations[3] = {3, 2001, 23 * old, 0};
  g_writable = false;
  _qz_LOG_EntryCounter counter;
  counter.OpenEntryCounterFile(".", kName);
  // One that could be opened for reading only counts nothing, and says so.
  g_writable = counter.IsWritable();
  g_expectations[0].result = counter.IncreaseCount(kYear, 11, 1, 1001);
  g_expectations[1].result = counter.IncreaseCount(kYear, 11, 25, 7);
  g_expectations[2].result = counter.UpdateEntryCount(kYear, 11, 2, 1101, 99);
  g_expectations[3].result = counter.DeleteEntryElement(kYear, 11, 3, 2001);
  counter.CloseEntryCounterFile();
  if (!g_writable) throw StatedFailure{"the counter is not open for writing"};
  for (const Expectation& expected : g_expectations) {
    if (expected.result != 0) throw StatedFailure{"an operation returned -1"};
  }
  seen.add("counted\n");
}

// What is stated to have failed has not been done.
bool check_counts(bool /*failed*/) {
  std::map<std::pair<unsigned, unsigned>, unsigned> counts;
  if (!read_counts(counts)) return false;
  for (const Expectation& expected : g_expectations) {
    const unsigned now = counts[{static_cast<unsigned>(expected.day), static_cast<unsigned>(expected.key)}];
    if (!is_in_order(expected, now)) return false;
  }
  return true;
}
