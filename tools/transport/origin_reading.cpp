#include "tools/transport/origin_reading.h"

#include <memory>

#include "tools/report/passed_over.h"
#include "tools/syslog/syslog_source.h"

namespace qzlog_tool {

namespace {

/// Writes out what was made of the lines so far before more are waited for.
class FlushedSource : public qz_LOG_ByteSource {
 public:
  FlushedSource(qz_LOG_ByteSource& source, BufferedOutput& output) : source_(source), output_(output) {}

  std::size_t Read(char* buffer, std::size_t size) override {
    output_.flush();
    return source_.Read(buffer, size);
  }

 private:
  qz_LOG_ByteSource& source_;
  BufferedOutput& output_;
};

std::string summary_of(const SyslogCounts& counts, const std::string& file) {
  std::string text = file + ": messages of syslog: " + std::to_string(counts.entries) + " with entries";
  const auto add = [&text](std::uint64_t count, const char* what) {
    if (count != 0) text += ", " + std::to_string(count) + ' ' + what;
  };
  add(counts.omitted, "whose entries were too long for them");
  add(counts.broken, "that are not whole");
  add(counts.others, "of others");
  return text;
}

void note_lost(const SyslogCounts& counts, const std::string& file) {
  const qzlog_compiler::TextPlace first(counts.first_lost);
  passed_over().add_several("message", "too-long", file, counts.omitted, first);
  passed_over().add_several("message", "not-whole", file, counts.broken, first);
}

bool read_syslog_file(const std::string& path, const LogReading& reading,
                      const std::function<void(const std::string&)>& tell) {
  try {
    const std::unique_ptr<LogInput> input = open_log(path, false, reading.output);
    SyslogSource source(*input);
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(source, input->shown_path().c_str(), &reading.handler);
    reading.read(reader);
    const SyslogCounts& counts = source.counts();
    note_lost(counts, input->shown_path());
    if (counts.omitted + counts.broken + counts.others != 0) tell(summary_of(counts, input->shown_path()));
  } catch (const UnreadableInput& failure) {
    reading.fail(failure.what());
    return false;
  }
  return true;
}

}  // namespace

bool read_journal(const JournalAddress& address, bool follow, const LogReading& reading) {
  try {
    JournalLog log(address, follow ? JournalLog::End::kNever : JournalLog::End::kNow);
    FlushedSource source(log, reading.output);
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(source, address.text().c_str(), &reading.handler);
    reading.read(reader);
  } catch (const UnreadableInput& failure) {
    reading.fail(failure.what());
    return false;
  }
  return true;
}

bool read_syslog(const std::vector<std::string>& files, const LogReading& reading,
                 const std::function<void(const std::string&)>& tell) {
  bool all_read = true;
  for (const std::string& file : files) {
    if (reading.is_complete()) break;
    all_read = read_syslog_file(file, reading, tell) && all_read;
  }
  return all_read;
}

}  // namespace qzlog_tool
