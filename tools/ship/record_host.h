#ifndef QZLOG_TOOLS_SHIP_RECORD_HOST_H
#define QZLOG_TOOLS_SHIP_RECORD_HOST_H

#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "ship/transport.h"
#include "tools/choice/known_definitions.h"
#include "tools/merge/definition_sets.h"
#include "tools/render/line_renderer.h"
#include "tools/ship/line_values.h"

namespace qzlog_tool {

/// Makes the messages of lines, of which each is given alone.
class RecordMessages : private qz_LOG_ByteSource {
 public:
  /// For the definitions that are loaded; `sets` where there are several, else null.
  explicit RecordMessages(DefinitionSets* sets);

  /// Nothing where the line has no message; valid until the next call.
  const std::string* message(std::string_view line);

 private:
  struct NoMore {};

  std::size_t Read(char* buffer, std::size_t size) override;

  LineDefinitions definitions_;
  qz_LOG_EntryReader reader_;
  qz_LOG_EntryLine line_;
  LineRenderer renderer_{nullptr};
  std::string text_;  // that the reader has not got yet
  std::string message_;
};

/// What plug-ins may ask of the command.
class RecordHost {
 public:
  /// Without definitions `known` is empty and `messages` null; all have to outlive this object. `warn` is called once
  /// for each text, `is_ending` at any time.
  RecordHost(const KnownDefinitions& known, RecordMessages* messages, std::function<void(const std::string&)> warn,
             std::function<bool()> is_ending);
  RecordHost(const RecordHost&) = delete;
  RecordHost& operator=(const RecordHost&) = delete;

  const qzlog_host& host() const noexcept { return host_; }
  /// Before each call of a plug-in: records may be others at the same place.
  void forget() { record_ = nullptr; }

 private:
  const LineValues& values_of(const qzlog_record& record);
  void set_types();
  void warn(const std::string& text);
  bool find_moment(const qzlog_record& record, std::int64_t& nanoseconds);

  static RecordHost& self(void* context) { return *static_cast<RecordHost*>(context); }
  static void warn_for(void* context, const char* text);
  static int is_ending_for(void* context);
  static qzlog_value find_member_for(void* context, const qzlog_record* record, const char* name);
  static qzlog_value find_attribute_for(void* context, const qzlog_record* record, const char* name);
  static const qzlog_attribute* attributes_for(void* context, const qzlog_record* record, size_t* count);
  static int moment_for(void* context, const qzlog_record* record, int64_t* nanoseconds);
  static int body_for(void* context, const qzlog_record* record, qzlog_text* body);

  const KnownDefinitions& known_;
  RecordMessages* messages_;
  std::function<void(const std::string&)> warn_;
  std::function<bool()> is_ending_;
  qzlog_host host_;
  const qzlog_record* record_ = nullptr;  // whose values are there
  LineValues values_;
  std::set<std::string> warned_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_RECORD_HOST_H
