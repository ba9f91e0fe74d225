#ifndef QZLOG_MESSAGE_RESOURCE_LOCALES_H
#define QZLOG_MESSAGE_RESOURCE_LOCALES_H

#include <string>

namespace qzlog {

/// The names of bundles for locales, as ICU has them.

/// A locale's name without what does not choose a bundle; false for one that is longer than the names of bundles may
/// be. Throws std::bad_alloc.
bool base_locale(const char* locale, std::string& base);

/// Cuts the last part off a name; false when it has one part.
bool chop_locale(std::string& name);

/// Where to look for a bundle when there is none for `name`: the parent that the locale data name, or the name with a
/// script for a region, or without its last part. `origin` is the locale that was asked for. False when only the root
/// is left. Throws std::bad_alloc.
bool next_locale(std::string& name, const std::string& origin);

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_RESOURCE_LOCALES_H
