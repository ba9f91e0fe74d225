#include "tools/check/syslog_check.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "sinks/syslog_name.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/check_rules.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::AttributeDefinition;
using qzlog_compiler::DefinitionModel;
using qzlog_compiler::EntryDefinition;
using qzlog_compiler::quoted;

/// The attributes that one event may carry, by what they are called in messages of syslog. Names have to outlive it.
class ParameterNames {
 public:
  explicit ParameterNames(CheckReport& report) : report_(report) {}

  struct Whether {
    bool is_known = false;  ///< it was told of before, by itself and with others of these
    bool is_new = true;     ///< it is of the file under check: of two one has to be
  };

  void add(std::string_view name, Whether whether) {
    if (qzlog::is_own_syslog_name(name)) {
      if (whether.is_new && !whether.is_known) tell_own(name);
      return;
    }
    const auto [found, is_first] = names_.try_emplace(qzlog::lowered_syslog_name(name), Name{name, whether});
    const Name& first = found->second;
    if (is_first || first.name == name || (first.whether.is_known && whether.is_known)) return;
    if (first.whether.is_new || whether.is_new) tell_two(first.name, name);
  }

 private:
  struct Name {
    std::string_view name;
    Whether whether;
  };

  void tell_own(std::string_view name) {
    report_.warning(CheckRule::kSyslogName, quoted(name) +
                                                " has no parameter in messages of syslog, where the sink "
                                                "itself gives one of that name");
  }

  /// What the first becomes is shown, as receivers have it that keep the case.
  void tell_two(std::string_view first, std::string_view second) {
    std::string parameter;
    qzlog::append_syslog_name(first, parameter);
    std::string other;
    qzlog::append_syslog_name(second, other);
    report_.warning(CheckRule::kSyslogName,
                    quoted(first) + " and " + quoted(second) + " are the same parameter in messages of syslog, " +
                        quoted(parameter) +
                        (parameter == other ? "" : ", for receivers that make no difference between cases"));
  }

  CheckReport& report_;
  std::map<std::string, Name> names_;
};

bool has_attribute(const std::vector<AttributeDefinition>& attributes, std::string_view name) {
  return std::any_of(attributes.begin(), attributes.end(),
                     [&](const AttributeDefinition& attribute) { return attribute.name == name; });
}

/// What files say of globals, and of entries, apart.
class SyslogCheck {
 public:
  SyslogCheck(const DefinitionModel& model, const DefinitionModel* standard, CheckReport& report)
      : model_(model),
        standard_(standard),
        definitions_(standard != nullptr ? *standard : model, standard != nullptr ? &model : nullptr),
        report_(report) {}

  void check() {
    report_.about_file();
    ParameterNames globals(report_);
    add_globals(globals, false);
    for (const std::uint32_t id : definitions_.entry_ids()) check_entry(id);
  }

 private:
  void add_globals(ParameterNames& names, bool is_known) const {
    if (standard_ != nullptr) {
      for (const AttributeDefinition& global : standard_->globals) names.add(global.name, {is_known, false});
    }
    for (const AttributeDefinition& global : model_.globals) {
      const bool is_new = standard_ == nullptr || !has_attribute(standard_->globals, global.name);
      names.add(global.name, {is_known, is_new});
    }
  }

  void check_entry(std::uint32_t id) {
    const EntryDefinition* const former = standard_ != nullptr ? definitions_.find_standard(id) : nullptr;
    const EntryDefinition entry = *definitions_.find_entry(id);
    report_.about_entry(id);
    ParameterNames names(report_);
    add_globals(names, true);
    for (const AttributeDefinition& attribute : entry.attributes) {
      const bool is_of_standard = standard_ != nullptr && definitions_.find_auxiliary(id) == nullptr;
      const bool is_new = !is_of_standard && (former == nullptr || !has_attribute(former->attributes, attribute.name));
      names.add(attribute.name, {false, is_new});
    }
  }

  const DefinitionModel& model_;
  const DefinitionModel* standard_;
  const DefinitionPair definitions_;
  CheckReport& report_;
};

}  // namespace

void check_syslog_names(const DefinitionModel& model, const DefinitionModel* standard, CheckReport& report) {
  SyslogCheck(model, standard, report).check();
}

}  // namespace qzlog_tool
