// Readable messages: through ICU and narrowly, in three languages, and the ways to ask for them.
#include <qzlog.h>

#include <iostream>
#include <vector>

#include "attempt.h"
#include "events.h"
#include "sample_entries.h"
#include "sections.h"
#include "settings.h"

namespace {

void print_messages(const char* title, const std::vector<qz_LOG_LogEntry>& entries) {
  std::cout << title << ":\n";
  for (const qz_LOG_LogEntry& entry : entries) std::cout << "  " << entry.FormatMessage() << '\n';
}

void show_default_and_selector_messages() {
  qz_LOG_LogEntry entry = volume_almost_full();
  entry.AddAttrib2u("Reason", kSnapshots);
  std::cout << "One entry, three messages:\n"
            << "  FormatMessage()                    " << entry.FormatMessage() << '\n'
            << "  FormatMessage(true)                " << entry.FormatMessage(true) << '\n'
            << "  FormatMessage(false, 1)            " << entry.FormatMessage(false, 1) << '\n';
}

/// Text in memory of the caller's own. On the narrow path what does not fit is cut, through ICU it is refused.
void show_buffer_form() {
  constexpr long kSize = 40;
  char buffer[kSize + 1];  // the terminator comes on top
  const qz_LOG_LogEntry entry = disk_failed();
  std::cout << "The buffer form, in " << kSize << " bytes:\n";
  use_narrow_path();
  std::cout << "  narrow: \"" << entry.GetReadableMessage(buffer, kSize, false, 0) << "\"\n";
  use_definition_texts(QZ_LOCALE_EN_US);
  attempt("ICU:", [&] { entry.GetReadableMessage(buffer, kSize, false, 0); });
  char large[200 + 1];
  std::cout << "  ICU, 200 bytes: \"" << entry.GetReadableMessage(large, 200, false, 0) << "\"\n";
}

}  // namespace

void show_entries(const std::string& /*folder*/) {
  use_definition_texts(QZ_LOCALE_EN_US);
  for (const qz_LOG_LogEntry& entry : all_samples()) {
    std::cout << entry.GetEntryID() << " level " << entry.GetLogLevel() << "  " << entry.FormatMessage() << '\n';
  }
  unsigned major = 0;
  unsigned minor = 0;
  qz_LOG_LogEntry::GetLogVersion(major, minor);
  std::cout << "Version of the definitions: " << major << '.' << minor << '\n';
}

void show_messages(const std::string& folder) {
  const std::vector<qz_LOG_LogEntry> entries = {volume_almost_full(), disk_failed(),   disk_temperature(),
                                                backup_planned(),     cloud_charges(), setting_changed()};
  use_narrow_path();
  print_messages("Without ICU, the texts of the definition file", entries);
  use_catalog(folder, QZ_LOCALE_EN_US);
  print_messages("Through ICU, English", entries);
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);  // the open catalog follows
  print_messages("Through ICU, German", entries);
  qz_LOG_LogConfig::SetLocale(QZ_LOCALE_JA_JP);
  print_messages("Through ICU, Japanese", entries);
}

void show_choices(const std::string& /*folder*/) {
  use_definition_texts(QZ_LOCALE_EN_US);
  show_default_and_selector_messages();
  show_buffer_form();
}
