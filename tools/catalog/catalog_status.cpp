#include "tools/catalog/catalog_status.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "tools/report/finding_json.h"

namespace qzlog_catalog {
namespace {

constexpr std::string_view kLanguage = "language";

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
  std::size_t width = kLanguage.size();
  for (const LanguageCatalog& catalog : catalogs) width = std::max(width, catalog.language.size());
  const auto first_column = [&](std::string_view text) {
    out << std::left << std::setw(static_cast<int>(width)) << text << std::right;
  };
  const auto further_column = [&](const Column& column, const auto& value) {
    out << "  " << std::setw(static_cast<int>(column.name.size())) << value;
  };
  first_column(kLanguage);
  for (const Column& column : kColumns) further_column(column, column.name);
  out << "  complete\n";
  for (const LanguageCatalog& catalog : catalogs) {
    first_column(catalog.language);
    for (const Column& column : kColumns) further_column(column, catalog.counts.*column.count);
    out << "  " << std::setw(6) << percent_translated(catalog.counts) << " %\n";
  }
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
