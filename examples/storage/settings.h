#ifndef STORAGE_SETTINGS_H
#define STORAGE_SETTINGS_H

#include <qzlog.h>

#include <string>

/// Messages through ICU, with the texts of the definition files.
void use_definition_texts(qz_Locale locale);

/// Messages through ICU, with the texts of the resource bundles in `folder`/messages for the locale.
void use_catalog(const std::string& folder, qz_Locale locale);

/// Messages on the narrow path: bytes as they are, numbers and dates the same everywhere, no catalog.
void use_narrow_path();

#endif  // STORAGE_SETTINGS_H
