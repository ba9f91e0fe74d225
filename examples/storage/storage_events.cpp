// A storage product and its events: what a program does with qzlog, from its settings to readable messages.
//
// Usage: storage_events FOLDER [SECTION...]
// FOLDER holds storage.ldf, storage_aux.ldf and the resource bundles in messages/, as the build makes them.
#include <qzlog.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "sections.h"

namespace {

struct Section {
  const char* name;
  const char* title;
  void (*show)(const std::string& folder);
};

// The auxiliary definitions come last: they stay loaded.
constexpr Section kSections[] = {
    {"entries", "Entries, built with every add method and with SetEntry", show_entries},
    {"attributes", "What entries hold", show_attributes},
    {"messages", "Their messages, without ICU and in three languages", show_messages},
    {"choices", "Ways to ask for a message", show_choices},
    {"refusals", "What does not get in", show_refusals},
    {"auxiliary", "More definitions from an auxiliary file", show_auxiliary},
};

int usage() {
  std::cerr << "Usage: storage_events FOLDER [SECTION...]\nSections:";
  for (const Section& section : kSections) std::cerr << ' ' << section.name;
  std::cerr << '\n';
  return 2;
}

bool is_section(const std::string& name) {
  return std::any_of(std::begin(kSections), std::end(kSections),
                     [&](const Section& section) { return name == section.name; });
}

void configure(const std::string& folder) {
  // Times come out the same wherever this program runs. A product leaves the time zone to its host.
  setenv("TZ", "Europe/Berlin", 1);
  tzset();
  qz_LOG_LogConfig::SetDefinitionPath((folder + "/storage.ldf").c_str());
  qz_LOG_LogConfig::SetCodePage("UTF-8");
}

void show(const std::string& folder, const std::vector<std::string>& wanted) {
  for (const Section& section : kSections) {
    if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), section.name) == wanted.end()) continue;
    std::cout << "== " << section.title << '\n';
    section.show(folder);
    std::cout << '\n';
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.empty()) return usage();
  const std::string& folder = arguments[0];
  const std::vector<std::string> wanted(arguments.begin() + 1, arguments.end());
  if (!std::all_of(wanted.begin(), wanted.end(), is_section)) return usage();
  try {
    configure(folder);
    show(folder, wanted);
  } catch (const QZX_logging_all& error) {
    std::cerr << "storage_events: " << error.get_message() << '\n';
    return 1;
  } catch (const QZX_memory_alloc&) {
    std::cerr << "storage_events: out of memory\n";
    return 1;
  }
  return 0;
}
