#include "tools/options/reader_zone.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <new>
#include <string_view>
#include <system_error>
#include <vector>

#include <unicode/strenum.h>
#include <unicode/unistr.h>

#include "message/icu_memory.h"
#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/process_start.h"

namespace qzlog_tool {

namespace {

// Zones change their offset at full quarters of an hour, but for some long ago.
constexpr long long kBlockSeconds = 900;
constexpr const char* kVariable = "TZ";

long long floor_to(long long value, long long step) {
  const long long rest = value % step;
  return value - (rest < 0 ? rest + step : rest);
}

long local_offset(long long moment) {
  const auto time = static_cast<std::time_t>(moment);
  std::tm fields = {};
  return ::localtime_r(&time, &fields) != nullptr ? fields.tm_gmtoff : 0;
}

bool is_process_in_utc() {
  const std::time_t time = 0;
  std::tm fields = {};
  return ::localtime_r(&time, &fields) != nullptr && std::string_view(fields.tm_zone) == "UTC";
}

long offset_of(const icu::TimeZone& zone, long long moment) {
  std::int32_t raw = 0;
  std::int32_t saving = 0;
  UErrorCode status = U_ZERO_ERROR;
  zone.getOffset(static_cast<double>(moment) * 1000, 0, raw, saving, status);
  return U_SUCCESS(status) ? (raw + saving) / 1000 : 0;
}

std::unique_ptr<icu::TimeZone> make_zone(const std::string& name) {
  return qzlog::with_icu_memory([&] {
    const qzlog::IcuMemory memory;
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(name)));
    memory.check_made(zone.get());
    memory.check();
    return zone;
  });
}

std::vector<std::string> zone_names(USystemTimeZoneType type) {
  return qzlog::with_icu_memory([type] {
    const qzlog::IcuMemory memory;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::StringEnumeration> all(
        icu::TimeZone::createTimeZoneIDEnumeration(type, nullptr, nullptr, status));
    memory.check(status);
    std::vector<std::string> names;
    std::int32_t length = 0;
    while (const char* const name = all->next(&length, status)) {
      // What ICU calls Etc/Unknown is no zone.
      if (std::string_view(name) != "Etc/Unknown") names.emplace_back(name, static_cast<std::size_t>(length));
    }
    memory.check(status);
    return names;
  });
}

std::string read_beginning(const std::string& path, std::size_t size) {
  const FileDescriptor file = open_regular_file(path);
  std::string text(size, '\0');
  std::size_t taken = 0;
  while (taken < size) {
    const std::size_t count = read_some(file.get(), text.data() + taken, size - taken, path);
    if (count == 0) break;
    taken += count;
  }
  text.resize(taken);
  return text;
}

/// Whether the system's database has the zone. A name cannot lead out of it. Throws CommandError (cannot run) where the
/// file is there, or may be, and cannot be read.
bool is_in_system(const std::string& name) {
  namespace fs = std::filesystem;
  constexpr std::string_view kMagic = "TZif";
  constexpr std::size_t kMostNameBytes = 255;
  if (name.empty() || name.size() > kMostNameBytes) return false;
  if (name.front() == '/' || name.find("..") != std::string::npos) return false;
  const char* const folder = std::getenv("TZDIR");
  const std::string path = std::string(folder != nullptr ? folder : "/usr/share/zoneinfo") + '/' + name;
  std::error_code ignored;
  const fs::file_type type = fs::status(path, ignored).type();
  if (type != fs::file_type::regular && type != fs::file_type::none) return false;
  return read_beginning(path, kMagic.size()) == kMagic;
}

bool is_of_process(const std::string& name) {
  const char* const zone = std::getenv(kVariable);
  return zone != nullptr && name == zone && is_in_system(name);
}

}  // namespace

ReaderZone::ReaderZone() : kind_(is_process_in_utc() ? Kind::kUtc : Kind::kProcess) {}

ReaderZone ReaderZone::utc() { return ReaderZone(Kind::kUtc); }

ReaderZone ReaderZone::named(const std::string& name) {
  if (name == "UTC") return utc();
  if (is_of_process(name)) return {};
  ReaderZone zone(Kind::kNamed);
  zone.zone_ = make_zone(name);
  return zone;
}

void ReaderZone::keep(long long moment) {
  const long long begin = floor_to(moment, kBlockSeconds);
  kept_offset_ = ask(moment);
  const bool is_same = ask(begin) == kept_offset_ && ask(begin + kBlockSeconds - 1) == kept_offset_;
  kept_from_ = is_same ? begin : moment;
  kept_to_ = is_same ? begin + kBlockSeconds : moment + 1;
}

long ReaderZone::ask(long long moment) const {
  if (kind_ == Kind::kUtc) return 0;
  return kind_ == Kind::kNamed ? offset_of(*zone_, moment) : local_offset(moment);
}

std::string check_time_zone(const std::string& name) {
  if (is_in_system(name)) return "";
  const std::vector<std::string> names = zone_names(UCAL_ZONE_TYPE_ANY);
  const std::vector<std::string_view> candidates(names.begin(), names.end());
  for (const std::string_view known : candidates) {
    if (known == name) return "";
  }
  const std::string question = qzlog_compiler::did_you_mean(name, candidates);
  return "unknown time zone " + qzlog_compiler::quoted(name) + "; " +
         (question.empty() ? "zones are called as in Europe/Berlin, or UTC" : question);
}

std::vector<std::string> offered_zones() {
  std::vector<std::string> names = zone_names(UCAL_ZONE_TYPE_CANONICAL_LOCATION);
  names.emplace_back("UTC");
  return names;
}

bool use_time_zone(const std::string& name) {
  if (!is_in_system(name)) return false;
  if (::setenv(kVariable, name.c_str(), 1) != 0) throw std::bad_alloc();
  if (const int error = read_time_zone(); error != 0) {
    throw CommandError(kExitCannotRun,
                       "cannot read the time zone " + qzlog_compiler::quoted(name) + ": " + std::strerror(error));
  }
  return true;
}

}  // namespace qzlog_tool
