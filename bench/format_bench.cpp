// The ICU path in several languages: plain arguments, and everything that a language has rules for. What must come out
// is what MessageFormat gives.
#include <string>

#include "bench/case.h"
#include "bench/languages.h"
#include "bench/message_format_job.h"
#include "bench/whole_job.h"
#include "bench/workloads.h"

namespace qzlog_bench {
namespace {

template <typename Workload>
void add_group(CaseList& cases, const std::string& group, const Language& language) {
  const std::string name = group + "/" + language.name;
  const Expected expected([=] { return icu_text<Workload>(language.icu_locale, Workload::kPattern); });
  cases.add_text(name + "/qzlog", icu_path(language.locale), expected, [] { return WholeJob<Workload>(); });
  add_message_format_pair<Workload>(cases, name, language.icu_locale, Workload::kPattern, expected);
}

}  // namespace

void add_format_cases(CaseList& cases) {
  const Language& english = kLanguages[0];
  for (const Language& language : kLanguages) {
    // In English it is the case "A/icu_plain".
    if (&language != &english) add_group<WorkloadAPlain>(cases, "plain", language);
    // In English it is the case "A/icu_float".
    if (&language != &english) add_group<WorkloadA>(cases, "float", language);
    add_group<WorkloadFormats>(cases, "formats", language);
  }
  add_group<WorkloadNumber>(cases, "number", english);
  add_group<WorkloadCurrency>(cases, "currency", english);
  add_group<WorkloadPercent>(cases, "percent", english);
  add_group<WorkloadDate>(cases, "date", english);
  add_group<WorkloadTime>(cases, "time", english);
}

}  // namespace qzlog_bench
