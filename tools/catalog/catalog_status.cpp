#include "tools/catalog/catalog_status.h"

#include <array>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include <utility>
#include "tools/report/text_table.h"

#include "tools/report/finding_json.h"

namespace qzlog_catalog {
namespace {

using qzlog_compiler::TextRow;

struct Column {
  std::string_view name;
  std::size_t TranslationCounts::*count;
};

constexpr std::array kColumns = {
    Column{"translated", &TranslationCounts::translated},     Column{"fuzzy", &TranslationCounts::fuzzy},
    Column{"untranslated", &TranslationCounts::untranslated}, Column{"refused", &TranslationCounts::refused},
    Column{"obsolete", &TranslationCounts::obsolete},
};

}  // namespace

unsigned int percent_translated(const TranslationCounts& counts) {
  return counts.messages() == 0 ? 100 : static_cast<unsigned int>(counts.translated * 100 / counts.messages());
}

void print_status_table(std::ostream& out, std::span<const LanguageCatalog> catalogs) {
  TextRow titles = {"language"};
  for (const Column& column : kColumns) titles.push_back('>' + std::string(column.name));
  titles.emplace_back(">complete");
  const auto row = [&](std::size_t i) {
    const LanguageCatalog& catalog = catalogs[i];
    TextRow cells = {catalog.language};
    for (const Column& column : kColumns) cells.push_back(std::to_string(catalog.counts.*column.count));
    cells.push_back(std::to_string(percent_translated(catalog.counts)) + " %");
    return cells;
  };
  qzlog_compiler::write_text_table({std::move(titles), catalogs.size(), row}, 0, 0, out);
}

void print_status_json(std::ostream& out, std::span<const LanguageCatalog> catalogs,
                       std::span<const Finding> findings) {
  nlohmann::ordered_json languages = nlohmann::ordered_json::array();
  for (const LanguageCatalog& catalog : catalogs) {
    nlohmann::ordered_json language = {{"language", catalog.language}, {"messages", catalog.counts.messages()}};
    for (const Column& column : kColumns) language[std::string(column.name)] = catalog.counts.*column.count;
    language["percent"] = percent_translated(catalog.counts);
    languages.push_back(std::move(language));
  }
  nlohmann::ordered_json result = qzlog_tool::json_result(findings);
  result["languages"] = std::move(languages);
  out << qzlog_tool::json_result_text(result);
}

}  // namespace qzlog_catalog
