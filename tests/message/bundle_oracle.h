#ifndef QZLOG_TESTS_MESSAGE_BUNDLE_ORACLE_H
#define QZLOG_TESTS_MESSAGE_BUNDLE_ORACLE_H

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/resbund.h>

#include <string>
#include <vector>

#include "message/resource_bundle.h"
#include "tests/message/message_fixture.h"

namespace qz_test {

/// What opening a catalog for a locale and looking texts up gives, in words: by ICU's own class and by ours.

inline std::string text_by_icu(const icu::ResourceBundle& bundle, const std::string& key) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::ResourceBundle table = bundle.get("STRING_TABLE", status);
  if (U_FAILURE(status)) return "no table";
  const icu::UnicodeString text = table.getStringEx(key.c_str(), status);
  return U_FAILURE(status) ? "no text" : "'" + to_utf8(text) + "'";
}

inline std::string seen_by_icu(const std::string& path, const std::string& locale,
                               const std::vector<std::string>& keys) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::ResourceBundle bundle(path.c_str(), icu::Locale(locale.c_str()), status);
  if (status == U_MISSING_RESOURCE_ERROR) return "missing";
  if (U_FAILURE(status)) return "failed";
  status = U_ZERO_ERROR;
  std::string seen = std::string("opened ") + bundle.getLocale(ULOC_ACTUAL_LOCALE, status).getName();
  for (const std::string& key : keys) seen += ", " + text_by_icu(bundle, key);
  return seen;
}

inline std::string text_by_us(const qzlog::MessageBundle& bundle, const std::string& key) {
  using State = qzlog::MessageBundle::Text::State;
  const qzlog::MessageBundle::Text found = bundle.find_text("STRING_TABLE", key);
  if (found.state == State::kNoTable) return "no table";
  if (found.state == State::kNoText) return "no text";
  return "'" + to_utf8(icu::UnicodeString(found.text.data(), static_cast<std::int32_t>(found.text.size()))) + "'";
}

inline std::string seen_by_us(const std::string& path, const std::string& locale,
                              const std::vector<std::string>& keys) {
  using State = qzlog::MessageBundle::State;
  qzlog::MessageBundle bundle;
  const State state = bundle.open(path, icu::Locale(locale.c_str()).getName());
  if (state == State::kMissing) return "missing";
  if (state == State::kFailed) return "failed";
  // ICU shows a name as a locale's, and the root's as an empty one.
  const std::string name = icu::Locale(bundle.name().c_str()).getName();
  std::string seen = "opened " + name;
  for (const std::string& key : keys) seen += ", " + text_by_us(bundle, key);
  return seen;
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_MESSAGE_BUNDLE_ORACLE_H
