#include "sinks/shown_entry.h"

#include <string>
#include <vector>

#include "foundation/sha256.h"
#include "lines/entry_access.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

/// An attribute that is not to be shown, and what is shown in its place: nothing, if that is empty.
struct Replacement {
  std::string name;
  qz_AttributeType type;
  std::string text;
};

std::string short_hash(const char* text, unsigned length) {
  Sha256 hash;
  hash.add(text, length);
  char digits[kShortDigestDigits];
  write_short_digest(hash.digest(), digits);
  return std::string("sha256:").append(digits, kShortDigestDigits);
}

/// Finds what is sensitive.
class SensitiveAttributes : public qz_LOG_AttributeVisitor {
 public:
  SensitiveAttributes(const _qz_LOG_log_definition& definition, const EntryMarks& marks)
      : definition_(definition), marks_(marks) {}

  const std::vector<Replacement>& found() const { return found_; }

  void VisitBool(const char* name, qz_AttributeType type, bool) override { take(name, type); }
  void VisitUnsigned(const char* name, qz_AttributeType type, unsigned) override { take(name, type); }
  void VisitSigned(const char* name, qz_AttributeType type, int) override { take(name, type); }
  void VisitFloat(const char* name, qz_AttributeType type, double) override { take(name, type); }
  void VisitTime(const char* name, qz_AttributeType type, const qz_Time&) override { take(name, type); }
  void VisitText(const char* name, qz_AttributeType type, const char* text, unsigned length) override {
    const Sensitivity sensitivity = sensitivity_of(name);
    if (sensitivity == Sensitivity::kKeep) return;
    found_.push_back({name, type, sensitivity == Sensitivity::kHash ? short_hash(text, length) : ""});
  }

 private:
  Sensitivity sensitivity_of(const char* name) const { return marks_.sensitivity(definition_, KnownName::of(name)); }
  void take(const char* name, qz_AttributeType type) {
    if (sensitivity_of(name) != Sensitivity::kKeep) found_.push_back({name, type, ""});
  }

  const _qz_LOG_log_definition& definition_;
  const EntryMarks& marks_;
  std::vector<Replacement> found_;
};

void replace(qz_LOG_LogEntry& entry, const Replacement& replacement) {
  const char* const name = replacement.name.c_str();
  entry.RemoveAttrib(name);
  if (replacement.text.empty()) return;
  try {
    if (is_unicode_string_attribute(replacement.type)) {
      entry.AddAttribMBStr(name, replacement.text.c_str());
    } else {
      entry.AddAttribStr(name, replacement.text.c_str());
    }
  } catch (const QZX_logging_all&) {  // NOLINT(bugprone-empty-catch): its type is too short, and it stays dropped
  }
}

}  // namespace

qz_LOG_LogEntry shown_copy(const qz_LOG_LogEntry& entry, const EntryMarks& marks) {
  SensitiveAttributes sensitive(EntryAccess::of(entry).require_definition(), marks);
  if (marks.sensitivity != nullptr) entry.VisitAttributes(sensitive);
  qz_LOG_LogEntry copy(entry);
  for (const Replacement& replacement : sensitive.found()) replace(copy, replacement);
  return copy;
}

}  // namespace qzlog
