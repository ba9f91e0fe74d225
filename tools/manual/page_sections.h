#ifndef QZLOG_TOOLS_MANUAL_PAGE_SECTIONS_H
#define QZLOG_TOOLS_MANUAL_PAGE_SECTIONS_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/manual/environment_rows.h"

namespace qzlog_tool {

// Sections that all manual pages have.

/// The title, without a date, and NAME. `volume` is what the section is called: "User Commands".
std::string page_beginning(std::string_view name, int section, std::string_view volume, std::string_view description,
                           std::string_view version);

/// ENVIRONMENT, without what else is said there.
std::string environment_section(const std::vector<EnvironmentRow>& rows);

/// "0 success; 1 findings or bad input", one line each; as a paragraph when it is written in another way.
std::string exit_status_list(const std::string& text);

/// "\fBqzlog\fR(7)"
std::string page_reference(std::string_view name, int section);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_MANUAL_PAGE_SECTIONS_H
