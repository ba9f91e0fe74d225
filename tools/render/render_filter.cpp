#include "tools/render/render_filter.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <iostream>

#include "qzlog/logcfg.h"
#include "tools/configuration/config_file.h"
#include "tools/options/option_checks.h"
#include "tools/report/finding_printer.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Finding;

constexpr std::uint32_t kAllProperties = 0xFFFFFFFF;

std::uint32_t mask_of(const FilterOptions& options) {
  return options.mask.empty() ? kAllProperties : *parse_mask(options.mask);
}

}  // namespace

void add_filter_options(CLI::App& command, FilterOptions& options) {
  const CLI::Validator level = CLI::Range(0U, 9U).description("");
  const auto activate = [&options](const std::string&) { options.active = true; };
  CLI::Option* const config =
      command.add_option("--config", options.config, "Render only what this configuration file lets through")
          ->type_name("FILE")
          ->check(check_not_empty)
          ->each(activate);
  command.add_option("--section", options.section, "The section of the configuration file that counts before 'global'")
      ->type_name("NAME")
      ->needs(config)
      ->each([&options](const std::string&) { options.section_given = true; });
  command
      .add_option("--mask", options.mask, "Render only entries whose property mask shares a bit (default: all bits)")
      ->type_name("MASK")
      ->check(check_mask)
      ->each(activate);
  command.add_option("--level-low", options.level_low, "Render only entries of this level and above")
      ->type_name("0-9")
      ->check(level)
      ->each(activate);
  command.add_option("--level-high", options.level_high, "Render only entries of this level and below")
      ->type_name("0-9")
      ->check(level)
      ->each(activate);
}

std::optional<LossBounds> loss_bounds(const FilterOptions& options) {
  if (!options.active || !options.config.empty()) return std::nullopt;
  return LossBounds{mask_of(options), {options.level_low, options.level_high}};
}

RenderFilter::RenderFilter(const FilterOptions& options)
    : filter_{nullptr, nullptr, mask_of(options), 0, 0, options.section.c_str(), false, false} {
  filter_.set_filter_log_level(options.level_low, options.level_high);
}

// The library reads the file when the first entry is checked; what came through a pipe would be gone by then.
RenderConfig::RenderConfig(const FilterOptions& options) {
  if (options.config.empty()) return;
  ConfigFile file = read_config_file(options.config, options.section_given ? options.section : "");
  // Entries are rendered all the same.
  for (Finding& found : file.findings) found.severity = qzlog_compiler::Severity::kWarning;
  FindingPrinter printer(stderr_has_colour());
  printer.add_source(file.shown_path, file.content, qzlog_compiler::LineBreaks::kLineFeed);
  printer.print(file.findings, std::cerr);
  if (!file.is_regular) copy_.emplace(file.content);
  qz_LOG_LogConfig::SetConfigurationSource(file.is_regular ? options.config.c_str() : copy_->path().c_str(),
                                           QZ_CONFIGURATION_FILE);
}

}  // namespace qzlog_tool
