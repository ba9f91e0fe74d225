#ifndef QZLOG_TOOLS_OPTIONS_READER_ZONE_H
#define QZLOG_TOOLS_OPTIONS_READER_ZONE_H

#include <memory>
#include <string>
#include <vector>

#include <unicode/timezone.h>

namespace qzlog_tool {

/// The clock that a reader goes by. One thread uses it.
class ReaderZone {
 public:
  /// That of the process: TZ, or the system's.
  ReaderZone();
  static ReaderZone utc();
  /// A zone of the time zone database, by a name that check_time_zone takes: the process's where use_time_zone has made
  /// it that, else as ICU knows it.
  static ReaderZone named(const std::string& name);

  /// UTC itself, not a zone that has the same time.
  bool is_utc() const { return kind_ == Kind::kUtc; }

  /// Seconds east of Greenwich at a moment, in seconds since 1970-01-01 00:00:00 GMT. Takes no memory, and little time
  /// while moments are near each other.
  long offset_at(long long moment) {
    if (moment < kept_from_ || moment >= kept_to_) keep(moment);
    return kept_offset_;
  }

 private:
  enum class Kind { kProcess, kUtc, kNamed };

  explicit ReaderZone(Kind kind) : kind_(kind) {}

  void keep(long long moment);
  long ask(long long moment) const;

  Kind kind_;
  std::shared_ptr<const icu::TimeZone> zone_;
  long long kept_from_ = 0;
  long long kept_to_ = 0;
  long kept_offset_ = 0;
};

/// For an option: "" for a zone that the system's database or ICU's has ("Europe/Berlin", "UTC"), else what is wrong,
/// with a suggestion. Throws CommandError (cannot run) for a zone that the system's database has and cannot be read.
std::string check_time_zone(const std::string& name);

/// The zones of places, and UTC, for completions: old names and abbreviations are left out.
std::vector<std::string> offered_zones();

/// Makes it the process's, so that messages show their times by it too, and whoever asks for the process's clock. False
/// where the system's database does not have it: the process then keeps the zone that it had. Throws CommandError
/// (cannot run) where it has it and it cannot be read.
bool use_time_zone(const std::string& name);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_OPTIONS_READER_ZONE_H
