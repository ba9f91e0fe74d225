// The ICU path with a message catalog, in several languages. The texts stand in bench/catalog.
#include <iterator>
#include <string>

#include "bench/case.h"
#include "bench/languages.h"
#include "bench/message_format_job.h"
#include "bench/whole_job.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

/// What the catalog says, as patterns, in the order of the languages.
constexpr const char* kPatterns[] = {
    "Volume {0}: {1,number,##########} blocks, change {2,number,##########}, load {3,number,##########}, label {4}",
    "Datenträger {0}: {1,number,##########} Blöcke, Änderung {2,number,##########}, Last {3,number,##########}, "
    "Etikett {4}",
    "وحدة التخزين {0}: {1,number,##########} كتلة، التغيير {2,number,##########}، الحمل {3,number,##########}، الوسم "
    "{4}",
    "ボリューム{0}：{1,number,##########}ブロック、変化{2,number,##########}、負荷{3,number,##########}、ラベル{4}"};
static_assert(std::size(kPatterns) == std::size(kLanguages));

Settings with_catalog(const Language& language) {
  Settings settings = icu_path(language.locale);
  settings.catalog = built_file("catalog");
  return settings;
}

void add_group(CaseList& cases, const Language& language, const char* pattern) {
  const std::string name = std::string("catalog/") + language.name;
  const Expected expected([=] { return icu_text<WorkloadAPlain>(language.icu_locale, pattern); });
  cases.add_text(name + "/qzlog", with_catalog(language), expected, [] { return WholeJob<WorkloadAPlain>(); });
  add_message_format_pair<WorkloadAPlain>(cases, name, language.icu_locale, pattern, expected);
}

}  // namespace

void add_catalog_cases(CaseList& cases) {
  for (std::size_t i = 0; i < std::size(kLanguages); ++i) add_group(cases, kLanguages[i], kPatterns[i]);
}

}  // namespace qzlog_bench
