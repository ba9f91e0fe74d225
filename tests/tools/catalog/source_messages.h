#ifndef QZLOG_TESTS_TOOLS_CATALOG_SOURCE_MESSAGES_H
#define QZLOG_TESTS_TOOLS_CATALOG_SOURCE_MESSAGES_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/tools/printed_findings.h"
#include "tools/catalog/catalog_messages.h"

namespace qzlog_catalog {

/// The messages of sources without a mistake.
inline CatalogMessages messages_of(const std::vector<SourceText>& sources) {
  Findings findings;
  std::optional<CatalogMessages> messages = CatalogMessages::collect(sources, findings);
  EXPECT_EQ(printed(findings), "");
  return std::move(messages.value());
}

/// A text as a scalar of YAML in double quotes.
inline std::string yaml_text(const std::string& text) {
  constexpr std::string_view kByteOrderMark = "\uFEFF";
  std::string out = "\"";
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text.compare(at, kByteOrderMark.size(), kByteOrderMark) == 0) {
      out += "\\uFEFF";
      at += kByteOrderMark.size() - 1;
    } else if (text[at] == '\n') {
      out += "\\n";
    } else {
      if (text[at] == '"' || text[at] == '\\') out += '\\';
      out += text[at];
    }
  }
  return out + '"';
}

/// A PO file's header for a language.
inline std::string po_header(const std::string& language) {
  return "msgid \"\"\nmsgstr \"\"\n\"Language: " + language +
         "\\n\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n\n";
}

inline std::string po_message(const std::string& id, const std::string& source, const std::string& translation) {
  return "msgctxt \"" + id + "\"\nmsgid \"" + source + "\"\nmsgstr \"" + translation + "\"\n\n";
}

}  // namespace qzlog_catalog

#endif  // QZLOG_TESTS_TOOLS_CATALOG_SOURCE_MESSAGES_H
