// A storage product and its events: what a program does with qzlog, from its settings to readable messages.
//
// Usage: storage_events FOLDER [SECTION...]
//        storage_events keep FOLDER SINKS.conf
// FOLDER holds storage.ldf, storage_aux.ldf and the resource bundles in messages/, as the build makes them.
#include <qzlog.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "keep_entries.h"
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
  std::cerr << "Usage: storage_events FOLDER [SECTION...]\n"
               "       storage_events keep FOLDER SINKS.conf\n"
               "Sections:";
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

/// Prints the sections, or keeps entries; the exit status.
int run(const std::vector<std::string>& arguments) {
  if (arguments.empty()) return usage();
  if (arguments[0] == "keep") {
    if (arguments.size() != 3) return usage();
    configure(arguments[1]);
    return keep_entries(arguments[1], arguments[2]) ? 0 : 1;
  }
  const std::vector<std::string> wanted(arguments.begin() + 1, arguments.end());
  if (!std::all_of(wanted.begin(), wanted.end(), is_section)) return usage();
  configure(arguments[0]);
  show(arguments[0], wanted);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const QZX_logging_all& error) {
    std::cerr << "storage_events: " << error.get_message() << '\n';
  } catch (const QZX_memory_alloc&) {
    std::cerr << "storage_events: out of memory\n";
  }
  return 1;
}
