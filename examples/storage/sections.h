#ifndef STORAGE_SECTIONS_H
#define STORAGE_SECTIONS_H

#include <string>

/// What storage_events shows, one function for each section. `folder` holds the compiled definitions and, in messages/,
/// the resource bundles. Each section makes the settings that it needs.
void show_entries(const std::string& folder);
void show_attributes(const std::string& folder);
void show_messages(const std::string& folder);
void show_choices(const std::string& folder);
void show_refusals(const std::string& folder);
void show_auxiliary(const std::string& folder);

#endif  // STORAGE_SECTIONS_H
