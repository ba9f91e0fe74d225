#include "sinks/sink_plan.h"

#include <algorithm>
#include <iterator>

#include "sinks/sink_value.h"
#include "sinks/syslog_facility.h"

namespace qzlog {

namespace {

using Way = qz_LOG_FileSinkSettings::Way;
using Form = qz_LOG_StreamSinkSettings::Form;
using Syslog = qz_LOG_SyslogSinkSettings;

const std::initializer_list<std::string_view> kKindNames = {"file",   "stream",   "text",    "memory", "journal",
                                                            "syslog", "filtered", "limited", "split"};

constexpr unsigned bit(SinkKind kind) { return 1U << static_cast<unsigned>(kind); }
constexpr unsigned kFile = bit(SinkKind::kFile);
constexpr unsigned kStream = bit(SinkKind::kStream);
constexpr unsigned kText = bit(SinkKind::kText);
constexpr unsigned kMemory = bit(SinkKind::kMemory);
constexpr unsigned kJournal = bit(SinkKind::kJournal);
constexpr unsigned kSyslog = bit(SinkKind::kSyslog);
constexpr unsigned kFiltered = bit(SinkKind::kFiltered);
constexpr unsigned kLimited = bit(SinkKind::kLimited);
constexpr unsigned kSplit = bit(SinkKind::kSplit);
constexpr unsigned kFiles = kFile | kText;
constexpr unsigned kAll = (kSplit << 1) - 1;

/// A setting of some kinds of sinks. Whether a value is in the range of the sink's is left to the sink.
struct Row {
  unsigned kinds;
  const char* key;
  void (*set)(SinkPlan& plan, const SinkValue& value);
};

constexpr Row kRows[] = {
    {kAll, "wanted_level",
     [](SinkPlan& plan, const SinkValue& value) { plan.wanted_level = static_cast<unsigned>(value.number(0, 9)); }},
    {kAll, "wanted_mask", [](SinkPlan& plan, const SinkValue& value) { plan.wanted_mask = value.word(); }},

    {kFiles, "path", [](SinkPlan& plan, const SinkValue& value) { plan.file.path = value.text(); }},
    {kFiles, "prefix", [](SinkPlan& plan, const SinkValue& value) { plan.file.prefix = value.text(); }},
    {kFiles, "folder", [](SinkPlan& plan, const SinkValue& value) { plan.file.folder = value.text(); }},
    {kFiles, "way",
     [](SinkPlan& plan, const SinkValue& value) {
       plan.file.way = static_cast<Way>(value.choice({"write", "shared", "buffered"}));
     }},
    {kFiles, "largest_file_bytes",
     [](SinkPlan& plan, const SinkValue& value) { plan.file.largest_file_bytes = value.number(0, ~0ULL); }},
    {kFiles, "keep_files", [](SinkPlan& plan, const SinkValue& value) { plan.file.keep_files = value.word(); }},
    {kFiles, "keep_days", [](SinkPlan& plan, const SinkValue& value) { plan.file.keep_days = value.word(); }},
    {kFiles, "buffer_bytes", [](SinkPlan& plan, const SinkValue& value) { plan.file.buffer_bytes = value.word(); }},
    {kFiles, "longest_delay_milliseconds",
     [](SinkPlan& plan, const SinkValue& value) { plan.file.longest_delay_milliseconds = value.word(); }},
    {kFiles | kStream | kJournal | kSyslog, "longest_wait_milliseconds",
     [](SinkPlan& plan, const SinkValue& value) {
       plan.file.longest_wait_milliseconds = plan.stream.longest_wait_milliseconds =
           plan.journal.longest_wait_milliseconds = plan.syslog.longest_wait_milliseconds = value.word();
     }},
    {kFiles, "sync_level",
     [](SinkPlan& plan, const SinkValue& value) { plan.file.sync_level = value.level_or_never(); }},
    {kFiles, "sync_at_rotation",
     [](SinkPlan& plan, const SinkValue& value) { plan.file.sync_at_rotation = value.flag(); }},
    {kFiles, "file_permissions",
     [](SinkPlan& plan, const SinkValue& value) { plan.file.file_permissions = value.octal(); }},
    {kFile, "lost_event_id", [](SinkPlan& plan, const SinkValue& value) { plan.file.lost_event_id = value.word(); }},

    {kStream | kText, "descriptor",
     [](SinkPlan& plan, const SinkValue& value) { plan.descriptor = value.descriptor(); }},
    {kStream, "form",
     [](SinkPlan& plan, const SinkValue& value) {
       plan.stream.form = static_cast<Form>(value.choice({"json", "text"}));
     }},
    {kStream | kText, "format",
     [](SinkPlan& plan, const SinkValue& value) { plan.stream.format = plan.text.format = value.text(); }},
    {kStream, "colour", [](SinkPlan& plan, const SinkValue& value) { plan.stream.colour = value.flag(); }},

    {kMemory, "most_entries", [](SinkPlan& plan, const SinkValue& value) { plan.memory.most_entries = value.word(); }},
    {kMemory, "most_bytes",
     [](SinkPlan& plan, const SinkValue& value) { plan.memory.most_bytes = value.number(0, ~0ULL); }},

    {kJournal, "product", [](SinkPlan& plan, const SinkValue& value) { plan.journal.product = value.text(); }},
    {kJournal, "journal_namespace",
     [](SinkPlan& plan, const SinkValue& value) { plan.journal.journal_namespace = value.text(); }},
    {kJournal, "socket_path", [](SinkPlan& plan, const SinkValue& value) { plan.journal.socket_path = value.text(); }},

    {kSyslog, "transport",
     [](SinkPlan& plan, const SinkValue& value) {
       plan.syslog.transport = static_cast<Syslog::Transport>(value.choice({"local", "udp", "tcp"}));
     }},
    {kSyslog, "path", [](SinkPlan& plan, const SinkValue& value) { plan.syslog.path = value.text(); }},
    {kSyslog, "host", [](SinkPlan& plan, const SinkValue& value) { plan.syslog.host = value.text(); }},
    {kSyslog, "port", [](SinkPlan& plan, const SinkValue& value) { plan.syslog.port = value.word(); }},
    {kSyslog, "form",
     [](SinkPlan& plan, const SinkValue& value) {
       plan.syslog.form = static_cast<Syslog::Form>(value.choice({"usual", "rfc5424", "older"}));
     }},
    {kSyslog, "application", [](SinkPlan& plan, const SinkValue& value) { plan.syslog.application = value.text(); }},
    {kSyslog, "facility",
     [](SinkPlan& plan, const SinkValue& value) {
       plan.syslog.facility = static_cast<unsigned>(value.choice(kSyslogFacilities));
     }},
    {kSyslog, "enterprise_number",
     [](SinkPlan& plan, const SinkValue& value) { plan.syslog.enterprise_number = value.word(); }},
    {kSyslog, "entries", [](SinkPlan& plan, const SinkValue& value) { plan.syslog.entries = value.flag(); }},
    {kSyslog, "largest_message_bytes",
     [](SinkPlan& plan, const SinkValue& value) { plan.syslog.largest_message_bytes = value.word(); }},
    {kSyslog, "longest_pause_milliseconds",
     [](SinkPlan& plan, const SinkValue& value) { plan.syslog.longest_pause_milliseconds = value.word(); }},

    {kFiltered, "section", [](SinkPlan& plan, const SinkValue& value) { plan.filter_section = value.text(); }},
    {kFiltered, "lowest_level",
     [](SinkPlan& plan, const SinkValue& value) { plan.lowest_level = static_cast<unsigned>(value.number(0, 9)); }},
    {kFiltered, "highest_level",
     [](SinkPlan& plan, const SinkValue& value) { plan.highest_level = static_cast<unsigned>(value.number(0, 9)); }},
    {kFiltered, "property_mask", [](SinkPlan& plan, const SinkValue& value) { plan.property_mask = value.word(); }},

    {kLimited, "entries_per_second",
     [](SinkPlan& plan, const SinkValue& value) { plan.limited.entries_per_second = value.word(); }},
    {kLimited, "unlimited_level",
     [](SinkPlan& plan, const SinkValue& value) { plan.limited.unlimited_level = value.level_or_never(); }},
    {kLimited, "held_event_id",
     [](SinkPlan& plan, const SinkValue& value) { plan.limited.held_event_id = value.word(); }},
};

constexpr const char* kKindKey = "sink";
constexpr const char* kInnerKey = "to";

class Planner {
 public:
  explicit Planner(const SinkFile& file) : file_(file), owners_(file.sections().size()) {}

  std::vector<SinkPlan> plan() {
    for (const SinkSection& section : file_.sections()) plans_.push_back(plan_section(section));
    for (SinkPlan& plan : plans_) link(plan);
    for (std::size_t i = 0; i < plans_.size(); ++i) check_for_cycle(i);
    return std::move(plans_);
  }

 private:
  const SinkSetting& require(const SinkSection& section, const char* key) const {
    const SinkSetting* const setting = section.find(key);
    if (setting == nullptr) file_.refuse(section.line, std::string(key) + ": it is missing in [" + section.name + "]");
    return *setting;
  }

  SinkPlan plan_section(const SinkSection& section) const {
    SinkPlan plan;
    plan.section = &section;
    plan.kind = static_cast<SinkKind>(SinkValue(file_, require(section, kKindKey)).choice(kKindNames));
    for (const SinkSetting& setting : section.settings) set(plan, setting);
    if (has_inner(plan.kind)) require(section, kInnerKey);
    if (plan.kind == SinkKind::kStream) require(section, "descriptor");
    if (plan.kind == SinkKind::kText) check_text(plan);
    return plan;
  }

  static bool has_inner(SinkKind kind) { return (bit(kind) & (kFiltered | kLimited | kSplit)) != 0; }

  void set(SinkPlan& plan, const SinkSetting& setting) const {
    if (setting.key == kKindKey || (setting.key == kInnerKey && has_inner(plan.kind))) return;
    const auto* const row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& each) {
      return setting.key == each.key && (each.kinds & bit(plan.kind)) != 0;
    });
    const SinkValue value(file_, setting);
    if (row == std::end(kRows)) {
      value.refuse("a " + std::string(kKindNames.begin()[static_cast<unsigned>(plan.kind)]) +
                   " sink has no such setting");
    }
    row->set(plan, value);
  }

  /// A text goes to a descriptor or to files.
  void check_text(const SinkPlan& plan) const {
    if (plan.descriptor == SinkPlan::kNoDescriptor) return;
    for (const SinkSetting& setting : plan.section->settings) {
      const bool is_for_files = std::any_of(std::begin(kRows), std::end(kRows), [&](const Row& row) {
        return setting.key == row.key && (row.kinds & kFile) != 0 && row.kinds != kAll;
      });
      if (is_for_files) SinkValue(file_, setting).refuse("it is for files, and there is a descriptor");
    }
  }

  void link(SinkPlan& plan) {
    const SinkSetting* const setting = has_inner(plan.kind) ? plan.section->find(kInnerKey) : nullptr;
    if (setting == nullptr) return;
    const auto owner = static_cast<std::size_t>(&plan - plans_.data());
    const SinkValue value(file_, *setting);
    const std::vector<std::string> names = value.names();
    if (plan.kind != SinkKind::kSplit && names.size() != 1) value.refuse("it is the name of one section");
    for (const std::string& name : names) plan.to.push_back(own(owner, *setting, value, name));
  }

  std::size_t own(std::size_t owner, const SinkSetting& setting, const SinkValue& value, const std::string& name) {
    const SinkSection* const section = file_.find(name);
    if (section == nullptr) value.refuse("there is no section [" + name + "]");
    const auto index = static_cast<std::size_t>(section - file_.sections().data());
    if (const SinkSetting* const other = owners_[index].setting) {
      value.refuse("[" + name + "] is the sink of line " + std::to_string(other->line) + " already");
    }
    owners_[index] = {owner, &setting};
    return index;
  }

  /// Each has one owner at most, so that going up ends, or leads to a cycle, which is found from each of its sections.
  void check_for_cycle(std::size_t start) const {
    std::size_t at = start;
    for (std::size_t steps = 0; steps < plans_.size() && owners_[at].setting != nullptr; ++steps) {
      const Owner& owner = owners_[at];
      at = owner.index;
      if (at != start) continue;
      SinkValue(file_, *owner.setting).refuse("[" + plans_[start].section->name + "] leads back to itself");
    }
  }

  /// Who hands on to a section, by which setting.
  struct Owner {
    std::size_t index = 0;
    const SinkSetting* setting = nullptr;
  };

  const SinkFile& file_;
  std::vector<Owner> owners_;  // by section
  std::vector<SinkPlan> plans_;
};

}  // namespace

std::vector<SinkPlan> plan_sinks(const SinkFile& file) { return Planner(file).plan(); }

}  // namespace qzlog
