// What the library does not let into an entry.
#include <qzlog.h>

#include <iostream>

#include "attempt.h"
#include "events.h"
#include "sample_entries.h"
#include "sections.h"
#include "settings.h"

namespace {

constexpr const char* kLongName = "a-volume-name-of-thirty-six-letters!";
constexpr const char* kLongJapaneseName = "株式会社日本大規模記憶装置研究開発機構情報基盤部門第二運用管理課山田花子";

void show_wrong_values() {
  std::cout << "Refused, with the entry left as it was:\n";
  qz_LOG_LogEntry entry(kVolumeAlmostFull, kWarning);
  attempt("AddAttrib4u(\"Volume\", 7)", [&] { entry.AddAttrib4u("Volume", 7); });
  attempt("AddAttribStr(\"Volum\", \"home\")", [&] { entry.AddAttribStr("Volum", "home"); });
  attempt("AddAttribStr(\"Volume\", 36 bytes)", [&] { entry.AddAttribStr("Volume", kLongName); });
  attempt("GetAttrib4(\"Free\")", [&] { entry.GetAttrib4("Free"); });
  attempt("qz_LOG_LogEntry(4711, 3)", [] { const qz_LOG_LogEntry unknown(4711, kNotice); });
}

/// In this mode a read of an attribute that is defined but not set is an error as well.
void show_strict_reads() {
  constexpr unsigned kStrict = 1;
  constexpr unsigned kLenient = 2;
  const qz_LOG_LogEntry entry(kVolumeAlmostFull, kWarning);
  qz_LOG_LogEntry::SetOperationMode(kStrict);
  attempt("GetAttrib4u(\"Free\") of an entry without it, in mode 1", [&] { entry.GetAttrib4u("Free"); });
  qz_LOG_LogEntry::SetOperationMode(kLenient);
}

/// Char types count bytes, MBChar types count characters.
void show_truncation() {
  std::cout << "Cut to the limit instead, after SetActionAttrLenExceed(QZ_ACTION_TRUNCATE):\n";
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  qz_LOG_LogEntry entry(kVolumeMounted, kTrace);
  entry.AddAttribStr("Volume", kLongName);
  qz_LOG_LogEntry note(kOperatorNote, kNotice);
  note.AddAttribMBStr("User", kLongJapaneseName);
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_REFUSE);
  std::cout << "  Char32    " << kLongName << "\n         -> " << entry.GetAttribStr("Volume") << '\n'
            << "  MBChar32  " << kLongJapaneseName << "\n         -> " << note.GetAttribMBStr("User") << '\n';
}

}  // namespace

void show_refusals(const std::string& /*folder*/) {
  use_definition_texts(QZ_LOCALE_EN_US);
  show_wrong_values();
  show_strict_reads();
  show_truncation();
}
