#ifndef QZLOG_TESTS_TOOLS_CATALOG_SOURCE_MESSAGES_H
#define QZLOG_TESTS_TOOLS_CATALOG_SOURCE_MESSAGES_H

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/tools/printed_findings.h"
#include "tools/catalog/catalog_messages.h"
#include "tools/definitions/definitions.h"

namespace qzlog_catalog {

struct SourceText {
  std::string name;
  std::string content;
};

/// Sources without a mistake, the standard one and those that extend it.
inline std::vector<qzlog_tool::Definitions> read_sources(const std::vector<SourceText>& texts) {
  std::vector<qzlog_tool::Definitions> sources;
  sources.reserve(texts.size());
  for (const SourceText& text : texts) {
    sources.push_back(qzlog_tool::read_errors_only(
        {text.name, text.name, text.content, true},
        {.standard = sources.empty() ? nullptr : &sources.front(), .path = qzlog_compiler::RenderingPaths::kIcu}));
    EXPECT_TRUE(sources.back().ok()) << text.name;
  }
  return sources;
}

/// The messages of sources without a mistake.
inline CatalogMessages messages_of(const std::vector<SourceText>& sources) {
  Findings findings;
  std::optional<CatalogMessages> messages = CatalogMessages::collect(read_sources(sources), findings);
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
