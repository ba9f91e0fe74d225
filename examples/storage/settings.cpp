#include "settings.h"

void use_definition_texts(qz_Locale locale) {
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetMessageCatalogPath(nullptr);
  qz_LOG_LogConfig::SetLocale(locale);
}

void use_catalog(const std::string& folder, qz_Locale locale) {
  qz_LOG_LogConfig::SetICUEnabled(true);
  qz_LOG_LogConfig::SetLocale(locale);
  qz_LOG_LogConfig::SetMessageCatalogPath((folder + "/messages").c_str());
}

void use_narrow_path() { qz_LOG_LogConfig::SetICUEnabled(false); }
