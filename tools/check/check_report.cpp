#include "tools/check/check_report.h"

namespace qzlog_tool {

void CheckReport::about_file() {
  entry_id_.reset();
  subject_.clear();
}

void CheckReport::about_entry(std::uint32_t entry_id, std::string subject) {
  entry_id_ = entry_id;
  subject_ = std::move(subject);
}

void CheckReport::about(std::string subject) {
  entry_id_.reset();
  subject_ = std::move(subject);
}

void CheckReport::add(qzlog_compiler::Severity severity, qzlog_compiler::AnyRule rule, std::string text,
                      std::string hint) {
  qzlog_compiler::Finding finding{file_, {}, severity, rule, std::move(text)};
  finding.hint = std::move(hint);
  finding.entry_id = entry_id_;
  finding.subject = subject_;
  findings_.push_back(std::move(finding));
}

}  // namespace qzlog_tool
