#include "tests/processes/logging.h"

#include <cstdio>

#include "qzlog.h"
#include "tests/support/ldf_file.h"
#include "tests/support/settings_test.h"

namespace qz_test {
namespace {

constexpr unsigned kIds = 200;
constexpr const char* kTemplate = " %s%Name% %d%Count% %C%Count% %P%Count% %f%Size% %D%When% %T%When%";

LdfFile definitions() {
  LdfFile file{.tag = "1.0"};
  for (unsigned id = 1; id <= kIds; ++id) {
    file.entries.push_back(
        {.id = id,
         .mask = 1,
         .message_id = "greeting",
         .message_text = std::to_string(id) + kTemplate,
         .attributes = {{"Name", TypeMBChar64}, {"Count", TypeUInt4}, {"Size", TypeFloat}, {"When", TypeTimestamp}}});
  }
  return file;
}

std::string name_of(unsigned id) { return "Jürgen " + std::to_string(id); }

/// In a code page that ICU has to open.
bool converts() {
  char text[32];
  unsigned size = sizeof text - 1;
  return qz_LOG_LogEntry::ConvertFromUTF8("漢", text, size, "Shift_JIS") == 1 && std::string(text) == "\x8A\xBF";
}

}  // namespace

Logging::Logging(Path path) : path_(path) {
  reset_settings();
  folder_.write("std.ldf", definitions().bytes());
  set();
}

Logging::~Logging() { reset_settings(); }

// The files stay as they are: other processes read them.
void Logging::set() const {
  qz_LOG_LogConfig::ClearDefinitions();
  qz_LOG_LogConfig::SetDefinitionPath(folder_.path("std.ldf").c_str());
  qz_LOG_LogConfig::SetICUEnabled(path_ != Path::kNarrow);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  if (path_ == Path::kCatalog) qz_LOG_LogConfig::SetMessageCatalogPath(QZLOG_TEST_CATALOGS "/whole");
  // What exists and cannot be read is looked at again by every lookup, under the lock of the configuration.
  qz_LOG_LogConfig::SetConfigurationSource(folder_.path().c_str(), QZ_CONFIGURATION_FILE);
}

std::string Logging::expected_message(unsigned id) const {
  return path_ == Path::kCatalog ? "Hello " + name_of(id) : std::to_string(id) + " " + name_of(id) + " ";
}

bool Logging::is_right(unsigned id) const {
  const _qz_LOG_entry_filter filter = {nullptr, nullptr, 0xFFFFFFFFU, 0, 9, "app", false, false};
  qz_LOG_LogEntry entry(id, 1);
  entry.AddAttribMBStr("Name", name_of(id).c_str());
  entry.AddAttrib4u("Count", id);
  entry.AddAttribFloat8("Size", id + 0.5);
  entry.AddAttribTime("When", qz_Time::from_unix_seconds(id));
  char buffer[1025];
  entry.GetReadableMessage(buffer, 1024, false, 0);
  return filter.check_entry(entry) && entry.FormatMessage() == buffer &&
         std::string(buffer).rfind(expected_message(id), 0) == 0 && converts();
}

int Logging::wrong_entries(unsigned seed, int count) const {
  RandomNumbers random(random_.seed() + seed);
  int wrong = 0;
  for (int i = 0; i < count; ++i) {
    const unsigned id = 1 + static_cast<unsigned>(random.below(kIds));
    try {
      wrong += is_right(id) ? 0 : 1;
    } catch (const QZX_logging_all& error) {
      std::fprintf(stderr, "%u: %s\n", id, error.get_message());
      ++wrong;
    }
  }
  return wrong;
}

int Logging::wrong_entries_after_new_settings(unsigned seed, int count) const {
  set();
  return wrong_entries(seed, count);
}

LoggingThreads::LoggingThreads(const Logging& logging, unsigned count) {
  for (unsigned seed = 1; seed <= count; ++seed) {
    threads_.emplace_back([this, &logging, seed] {
      for (unsigned round = 0; !stopped_; ++round) wrong_ += logging.wrong_entries(seed * 1000 + round, 5);
    });
  }
}

LoggingThreads::~LoggingThreads() {
  stopped_ = true;
  for (std::thread& thread : threads_) thread.join();
}

}  // namespace qz_test
