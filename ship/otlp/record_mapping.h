#ifndef QZLOG_SHIP_OTLP_RECORD_MAPPING_H
#define QZLOG_SHIP_OTLP_RECORD_MAPPING_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "ship/otlp/log_record.h"
#include "ship/transport.h"

namespace qzlog_ship {

/// What of records is sent, as somebody asked for it.
struct MappingChoices {
  std::string trace_attribute;  // the names of attributes that hold identities of traces; empty: none does
  std::string span_attribute;
  bool body = true;
  bool event_name_attribute = false;  // for receivers that know no eventName
};

/// What OTLP calls a level of ours: the numbers that its data model gives to syslog's words, each level with one of its
/// own in the same order.
struct Severity {
  int number = 0;  // 0: not known
  std::string_view text;
};
Severity severity_of(std::int32_t level) noexcept;

/// Turns records of the host into those of OTLP.
class RecordMapping {
 public:
  RecordMapping(MappingChoices choices, const qzlog_host& host, std::string_view client);

  /// Valid until the next call, and as long as what it was made of.
  const LogRecord& map(const qzlog_record& record, std::uint64_t now);
  /// Valid as long as the record and this object.
  LogResource resource_of(const qzlog_record& record) const;

 private:
  void add_attributes(const qzlog_record& record);
  bool is_new(std::string_view name);
  void add_own(const qzlog_record& record);
  void add_body(const qzlog_record& record);
  template <class Id>
  void find_id(const qzlog_record& record, const std::string& attribute, std::optional<Id>& id) const;

  MappingChoices choices_;
  const qzlog_host& host_;
  std::string own_host_;
  std::string body_;  // the host's texts are valid until the next question alone
  LogRecord log_;
  std::unordered_set<std::string_view> many_names_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_OTLP_RECORD_MAPPING_H
