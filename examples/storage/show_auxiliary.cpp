// A second definition file, loaded on top of the product's own.
#include <qzlog.h>

#include <iostream>

#include "attempt.h"
#include "events.h"
#include "sample_entries.h"
#include "sections.h"
#include "settings.h"

namespace {

qz_LOG_LogEntry waits_for_tape() {
  qz_LOG_LogEntry entry = volume_almost_full();
  entry.AddAttribStr("Pool", "fast");  // an attribute that only the auxiliary file defines
  entry.AddAttrib2u("Reason", kWaitsForTape);
  return entry;
}

qz_LOG_LogEntry tape_loaded() {
  qz_LOG_LogEntry entry;
  entry.SetEntry(kTapeLoaded, kTrace, "Barcode", "LTO417", "Drive", 3, "Library", "T-Rack 80", "SITE", "München",
                 nullptr);
  return entry;
}

qz_LOG_LogEntry tape_worn() {
  qz_LOG_LogEntry entry;
  entry.SetEntry(kTapeWorn, kWarning, "Barcode", "LTO388", "Wear", 0.97, "Passes", 15520, nullptr);
  return entry;
}

void print_messages(const char* title) {
  std::cout << title << ":\n";
  for (const qz_LOG_LogEntry& entry : {waits_for_tape(), tape_loaded(), tape_worn()}) {
    std::cout << "  " << entry.FormatMessage() << '\n';
  }
}

}  // namespace

void show_auxiliary(const std::string& folder) {
  use_definition_texts(QZ_LOCALE_EN_US);
  std::cout << "With storage.ldf alone:\n";
  attempt("TAPE_LOADED", tape_loaded);
  attempt("VOLUME_ALMOST_FULL with the attribute Pool", waits_for_tape);
  qz_LOG_LogConfig::SetAuxDefinitionPath((folder + "/storage_aux.ldf").c_str());
  print_messages("With storage_aux.ldf on top");
  use_catalog(folder, QZ_LOCALE_DE_DE);
  print_messages("The same in German");
}
