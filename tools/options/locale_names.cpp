#include "tools/options/locale_names.h"

#include "qzlog/qz_locale.h"

namespace qzlog_tool {

std::vector<std::string> locale_names() {
  std::vector<std::string> names;
  for (unsigned code = QZ_LOCALE_PROCESS + 1;; ++code) {
    std::string name = qz_I18N_get_locale_name(static_cast<qz_Locale>(code));
    if (name.empty()) return names;
    names.push_back(std::move(name));
  }
}

}  // namespace qzlog_tool
