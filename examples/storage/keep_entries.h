#ifndef STORAGE_KEEP_ENTRIES_H
#define STORAGE_KEEP_ENTRIES_H

#include <string>

/// Works for some seconds and writes what happens to the sinks of the section [log] of a file (see sinks.conf).
/// `folder` holds the definitions and the messages. Prints what became of the entries; whether none is missing.
bool keep_entries(const std::string& folder, const std::string& sinks_file);

#endif  // STORAGE_KEEP_ENTRIES_H
