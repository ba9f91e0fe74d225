#ifndef QZLOG_TESTS_SINKS_FILE_SINK_FIXTURE_H
#define QZLOG_TESTS_SINKS_FILE_SINK_FIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "qzlog/file_sink.h"
#include "qzlog/log_util.h"
#include "tests/support/ldf_file.h"
#include "tests/support/settings_test.h"
#include "tests/support/strict_json.h"

namespace qz_test {

constexpr unsigned kEvent = 1001;       // Source and Number (TypeUInt4), Text (TypeMBChar2K)
constexpr unsigned kLostEvent = 1002;   // tells of losses
constexpr unsigned kWrongEvent = 1003;  // has not all that it needs for that

inline LdfFile sink_definitions() {
  const std::vector<LdfAttribute> lost = {
      {"LostId", TypeUInt4}, {"LostLevel", TypeUInt1}, {"LostCount", TypeUInt4}, {"LostSince", TypeTimestamp}};
  return {.tag = "1.0",
          .entries = {{.id = kEvent,
                       .mask = 5,
                       .attributes = {{"Source", TypeUInt4}, {"Number", TypeUInt4}, {"Text", TypeMBChar2K}}},
                      {.id = kLostEvent, .mask = 1, .attributes = lost},
                      {.id = kWrongEvent, .mask = 1, .attributes = {{"LostId", TypeUInt4}}}}};
}

/// Hands over the entry that says `source` and `number`.
inline bool write_entry(qz_LOG_Sink& sink, unsigned source, unsigned number, std::string_view text = {},
                        unsigned level = 3) {
  qz_LOG_LogEntry entry(kEvent, level);
  entry.AddAttrib4u("Source", source);
  entry.AddAttrib4u("Number", number);
  if (!text.empty()) entry.AddAttribMBStr("Text", std::string(text).c_str());
  return sink.Write(entry);
}

/// The number behind `"name":` in a line; -1 when it has none.
inline long long member(std::string_view line, std::string_view name) {
  const std::string key = '"' + std::string(name) + "\":";
  const std::size_t at = line.find(key);
  return at == std::string_view::npos ? -1 : std::stoll(std::string(line.substr(at + key.size(), 20)));
}

/// The text behind `"name":"` up to the next quote.
inline std::string text_member(std::string_view line, std::string_view name) {
  const std::string key = '"' + std::string(name) + "\":\"";
  const std::size_t at = line.find(key);
  if (at == std::string_view::npos) return "";
  const std::string_view rest = line.substr(at + key.size());
  return std::string(rest.substr(0, rest.find('"')));
}

/// What files hold: each line is looked at when it is taken.
class WrittenLines {
 public:
  void take_file(const std::string& path) { take_text(read_file(path), path); }

  /// The files of a series in order.
  void take_series(const std::string& folder, const std::string& prefix) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      const std::string name = entry.path().filename();
      if (is_a_valid_text_log(name.c_str(), prefix.c_str(), nullptr, nullptr, nullptr, nullptr) != 0) {
        names.push_back(name);
      }
    }
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) take_file(folder + '/' + name);
    files = names;
  }

  void take_text(std::string_view text, const std::string& path) {
    while (!text.empty()) {
      const std::size_t end = text.find('\n');
      if (end == std::string_view::npos) {
        torn.push_back(std::string(text.substr(0, 80)) + "... at the end of " + path);
        return;
      }
      take_line(text.substr(0, end), path);
      text.remove_prefix(end + 1);
    }
  }

  /// Each writer's numbers are 1, 2, 3, ...
  void expect_no_gaps() const {
    EXPECT_EQ(torn, std::vector<std::string>());
    EXPECT_EQ(damaged, std::vector<std::string>());
    EXPECT_EQ(out_of_order, std::vector<std::string>());
  }

  std::vector<std::string> lines;
  std::vector<std::string> files;
  std::vector<std::string> torn;
  std::vector<std::string> damaged;
  std::vector<std::string> out_of_order;
  std::map<std::string, long long> last_seq;                  // by writer
  std::map<long long, std::vector<long long>> numbers;        // by source, in order
  std::map<long long, std::string> writer_of;                 // by source
  std::map<std::pair<long long, long long>, long long> lost;  // by event and level

 private:
  void take_line(std::string_view line, const std::string& path) {
    if (!StrictJson::is_value(line)) {
      damaged.push_back(std::string(line.substr(0, 200)) + " in " + path);
      return;
    }
    const std::string writer = text_member(line, "writer");
    const long long seq = member(line, "seq");
    if (seq != ++last_seq[writer]) {
      out_of_order.push_back(writer + " has " + std::to_string(seq) + " where " + std::to_string(last_seq[writer]) +
                             " was expected in " + path);
      last_seq[writer] = seq;
    }
    lines.emplace_back(line);
    if (line.find("\"lost\":[") != std::string_view::npos) return take_losses(line);
    if (member(line, "Number") < 0) return;
    numbers[member(line, "Source")].push_back(member(line, "Number"));
    writer_of[member(line, "Source")] = writer;
  }

  void take_losses(std::string_view line) {
    line.remove_prefix(line.find("\"lost\":["));
    for (std::size_t at = 0; (at = line.find("{\"id\":")) != std::string_view::npos; line.remove_prefix(at + 1)) {
      const std::string_view row = line.substr(at);
      lost[{member(row, "id"), member(row, "level")}] += member(row, "count");
    }
  }
};

inline std::vector<long long> counted_to(long long count) {
  std::vector<long long> numbers;
  for (long long number = 0; number < count; ++number) numbers.push_back(number);
  return numbers;
}

/// Names of what stands in a folder, hidden files too, in order.
inline std::vector<std::string> names_in(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

/// Definitions are loaded; logs have a folder of their own.
class SinkTest : public SettingsTest {
 protected:
  SinkTest() {
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", sink_definitions().bytes()).c_str());
    std::filesystem::create_directory(logs());
  }

  std::string logs() const { return folder_.path("logs"); }
  std::string log_path() const { return logs() + "/app.log"; }

  qz_LOG_FileSinkSettings single(qz_LOG_FileSinkSettings::Way way) const {
    qz_LOG_FileSinkSettings settings;
    settings.path = log_path();
    settings.way = way;
    return settings;
  }
  qz_LOG_FileSinkSettings series(qz_LOG_FileSinkSettings::Way way) const {
    qz_LOG_FileSinkSettings settings;
    settings.folder = logs();
    settings.prefix = "app";
    settings.way = way;
    return settings;
  }
};

constexpr qz_LOG_FileSinkSettings::Way kWays[] = {qz_LOG_FileSinkSettings::kWrite, qz_LOG_FileSinkSettings::kShared,
                                                  qz_LOG_FileSinkSettings::kBuffered};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SINKS_FILE_SINK_FIXTURE_H
