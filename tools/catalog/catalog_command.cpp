#include "tools/catalog/catalog_command.h"

#include <fcntl.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/catalog/catalog_build.h"
#include "tools/catalog/catalog_extract.h"
#include "tools/catalog/catalog_messages.h"
#include "tools/catalog/catalog_rules.h"
#include "tools/catalog/catalog_status.h"
#include "tools/catalog/folder_update.h"
#include "tools/catalog/genrb.h"
#include "tools/catalog/journal_catalog.h"
#include "tools/catalog/language_catalog.h"
#include "tools/catalog/po_language.h"
#include "tools/definitions/definitions.h"
#include "tools/options/option_checks.h"
#include "tools/report/finding_printer.h"
#include "tools/report/passed_over.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"
#include "tools/system/file_lock.h"
#include "tools/system/output_file.h"
#include "tools/system/standard_input.h"
#include "tools/system/terminal.h"

namespace qzlog_tool {
namespace {

namespace fs = std::filesystem;

using qzlog_catalog::CatalogMessages;
using qzlog_catalog::JournalCatalog;
using qzlog_catalog::LanguageCatalog;
using qzlog_catalog::LanguageFile;
using qzlog_catalog::NamedBundle;
using qzlog_catalog::PoFile;
using qzlog_catalog::PoText;
using qzlog_compiler::Finding;
using qzlog_compiler::Findings;

struct CatalogOptions {
  std::vector<std::string> sources;
  std::vector<std::string> po;
  std::string output;
  std::string genrb = "genrb";
  std::string source_language = "en";
  std::string product;
  bool adopt = false;
  bool json = false;
  bool require_complete = false;
};

constexpr const char* kCatalogFooter =
    R"(Translators work on PO files, one for each language; readers get the catalog that is built from them. A catalog holds the
messages of a standard source and of the auxiliary sources that extend it.

Examples:
  qzlog catalog extract storage.yaml -o po/all.pot --update po/de.po po/ja.po
  qzlog catalog status storage.yaml --po po
  qzlog catalog build storage.yaml --po po -o messages
  qzlog catalog journal storage.yaml --po po -o journal

'qzlog catalog COMMAND --help' shows more.)";

constexpr const char* kExtractFooter =
    R"(A message's ID is its context (msgctxt), its text as the author wrote it the text to translate (msgid). An update keeps the
translations of unchanged texts, marks those of changed ones fuzzy beside the previous text, keeps those of vanished messages
as obsolete, and begins a file that does not exist for the language that its name gives. Nothing is written when there is an
error, and a file that would not change is not rewritten.

Examples:
  qzlog catalog extract storage.yaml storage_aux.yaml -o po/storage.pot
  qzlog catalog extract storage.yaml --update po/de.po po/ja.po
)";

constexpr const char* kBuildFooter =
    R"(Writes root.res with the texts of the sources, and a bundle for each PO file; the folder is what
qz_LOG_LogConfig::SetMessageCatalogPath and 'qzlog render --catalog' take. Fuzzy, untranslated and outdated messages show the
source text. Nothing is written when a file or a translation is refused, and a bundle that would not change is not rewritten.

What it has made in DIR is listed there in qzlog-catalog.json. A bundle that is made no more, as that of a language whose PO file
is gone, is removed; what the command did not make is neither removed nor replaced.

Examples:
  qzlog catalog build storage.yaml storage_aux.yaml --po po -o messages
  qzlog catalog build storage.yaml --po po/de.po -o messages --genrb icu/genrb
)";

constexpr const char* kStatusFooter =
    R"(Fuzzy are translations that are marked so and those of an older source text; refused are those that 'qzlog catalog build' would
not take, each with its reason; obsolete are those of messages that are no more.

Examples:
  qzlog catalog status storage.yaml storage_aux.yaml --po po
  qzlog catalog status storage.yaml --po po/de.po --require-complete
  qzlog catalog status storage.yaml --po po --json | jq '.languages[].percent'
)";

constexpr const char* kJournalFooter =
    R"(Writes files of journald's catalog, PRODUCT.catalog with the texts of the sources and PRODUCT.LANGUAGE.catalog for each PO
file, by which 'journalctl -x' explains entries that qz_LOG_JournalSink has written. journald knows an event by its MESSAGE_ID,
which the product's name and the event's ID give: the name has to be the one that the sink has. It stands in the standard
source ('product: storage'), unless --product gives another. 'journalctl --update-catalog' takes the files into use.

Examples:
  qzlog catalog journal storage.yaml storage_aux.yaml --po po -o journal
  qzlog catalog journal storage.yaml --product storage -o journal
)";

struct SourceText {
  std::string name;
  std::string content;
};

/// What the command reads and finds.
struct CatalogRun {
  std::vector<SourceText> sources;
  std::vector<PoText> files;
  Findings findings = Findings();
};

void print(std::span<const Finding> findings, const CatalogRun& run) {
  FindingPrinter printer(stderr_has_colour());
  for (const SourceText& source : run.sources) printer.add_source(source.name, source.content);
  for (const PoText& file : run.files) {
    printer.add_source(file.name, file.content, qzlog_compiler::LineBreaks::kLineFeed);
  }
  printer.print(findings, std::cerr);
}

/// False where one of the findings, which are taken, is an error.
bool print(CatalogRun& run) {
  const std::vector<Finding> findings = run.findings.take_sorted();
  print(findings, run);
  return !has_errors(findings);
}

/// The standard source and those that extend it. Throws CommandError (findings) after errors, which are printed.
std::vector<Definitions> read_sources(const std::vector<std::string>& paths) {
  std::vector<Definitions> sources;
  sources.reserve(paths.size());  // the first one is referred to
  ReadingOptions options{.path = qzlog_compiler::RenderingPaths::kIcu};
  bool ok = true;
  for (const std::string& path : paths) {
    sources.push_back(read_errors_only(read_definition_source(path), options));
    print_findings(sources.back(), options.standard);
    ok = ok && sources.back().ok();
    if (options.standard == nullptr && !ok) break;  // the others would only repeat it
    options.standard = &sources.front();
  }
  if (!ok) throw CommandError(kExitFindings, "");
  return sources;
}

/// None after an error, which is then printed.
std::optional<CatalogMessages> collect_messages(const CatalogOptions& options, CatalogRun& run) {
  std::vector<std::string> inputs = options.sources;
  inputs.insert(inputs.end(), options.po.begin(), options.po.end());
  refuse_repeated_standard_input(inputs);
  std::vector<Definitions> sources = read_sources(options.sources);
  for (Definitions& source : sources) run.sources.push_back({source.shown_path, std::move(source.source)});
  std::optional<CatalogMessages> messages = CatalogMessages::collect(std::move(sources), run.findings);
  if (!messages) print(run);
  return messages;
}

/// The PO files of a folder, sorted, in the place of the folder.
std::vector<std::string> po_paths(const std::vector<std::string>& named) {
  std::vector<std::string> paths;
  for (const std::string& name : named) {
    std::error_code error;
    if (!fs::is_directory(name, error)) {
      paths.push_back(name);
      continue;
    }
    std::vector<std::string> inside;
    for (const fs::directory_entry& entry : fs::directory_iterator(name)) {
      if (entry.path().extension() == ".po") inside.push_back(entry.path().string());
    }
    if (inside.empty()) throw CommandError(kExitCannotRun, "no PO file is in '" + name + "'");
    std::sort(inside.begin(), inside.end());
    paths.insert(paths.end(), inside.begin(), inside.end());
  }
  return paths;
}

void read_po_files(const CatalogOptions& options, CatalogRun& run) {
  for (const std::string& path : po_paths(options.po)) run.files.push_back({display_name(path), read_file(path)});
}

// --- extract ---------------------------------------------------------------------------------------------------------

/// "storage 2.5"
std::string product_name(const CatalogOptions& options, const CatalogMessages& messages) {
  const fs::path source = options.sources.front();
  return (source == "-" ? "definitions" : source.stem().string()) + ' ' + messages.version();
}

struct Update {
  std::string path;
  PoFile content;
};

PoFile begin_file(const std::string& path, const PoFile& po_template) {
  const std::string language = fs::path(path).stem().string();
  if (!qzlog_catalog::bundle_name(language)) {
    throw CommandError(kExitCannotRun, "cannot begin '" + path + "': its name gives no language that ICU knows");
  }
  return update_po(begin_language(po_template, language), po_template);
}

/// The files that would change, with what they would hold. What cannot be updated is in the findings.
std::vector<Update> plan_updates(const CatalogOptions& options, const PoFile& po_template, CatalogRun& run) {
  std::vector<Update> updates;
  for (const std::string& path : options.po) {
    if (!fs::exists(path)) {
      updates.push_back({path, begin_file(path, po_template)});
      continue;
    }
    run.files.push_back({path, read_file(path)});
    const std::optional<LanguageFile> old = qzlog_catalog::read_language(run.files.back(), run.findings);
    if (!old) continue;
    PoFile updated = update_po(old->po, po_template);
    if (updated.messages != old->po.messages) updates.push_back({path, std::move(updated)});
  }
  return updates;
}

/// All of them are made before the first is written.
void write_po_files(const std::string& template_path, const PoFile& po_template, const std::vector<Update>& updates) {
  std::list<std::string> texts;
  std::vector<OutputFile> outputs;
  const auto add = [&](const std::string& path, const PoFile& content) {
    outputs.push_back({path, texts.emplace_back(write_po(content))});
  };
  if (!template_path.empty()) add(template_path, po_template);
  for (const Update& update : updates) add(update.path, update.content);
  write_files(outputs);
}

int extract(const CatalogOptions& options) {
  if (options.output.empty() && options.po.empty()) {
    throw CommandError(kExitCannotRun, "give -o for a template, --update for the files to update, or both");
  }
  for (const std::string& source : options.sources) {
    refuse_overwriting(source, options.output);
    for (const std::string& path : options.po) refuse_overwriting(source, path);
  }
  CatalogRun run;
  const std::optional<CatalogMessages> messages = collect_messages(options, run);
  if (!messages) return kExitFindings;
  const PoFile po_template = make_template(*messages, product_name(options, *messages));
  const std::vector<Update> updates = plan_updates(options, po_template, run);
  if (!print(run)) return kExitFindings;
  write_po_files(options.output, po_template, updates);
  return kExitSuccess;
}

// --- build -----------------------------------------------------------------------------------------------------------

FileDescriptor make_folder(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (error) throw CommandError(kExitCannotRun, "cannot make the folder '" + path + "': " + error.message());
  const int descriptor = open_path(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) throw CommandError(kExitCannotRun, "cannot open '" + path + "': " + std::strerror(errno));
  return FileDescriptor(descriptor);
}

int update_folder(const CatalogOptions& options, const std::vector<NamedBundle>& bundles) {
  const FileDescriptor folder = make_folder(options.output);
  const FileLock lock(folder.get());  // what is found there has to be what is replaced and listed
  CatalogRun run;
  qzlog_catalog::FolderUpdate update(options.output, bundles);
  const bool ok = update.prepare(options.adopt, run.findings);
  print(run);
  if (!ok) return kExitFindings;
  for (const std::string& path : update.carry_out()) {
    std::cerr << "qzlog: removed '" << path << "', which is not part of the catalog any more\n";
  }
  return kExitSuccess;
}

int build(const CatalogOptions& options) {
  CatalogRun run;
  const std::optional<CatalogMessages> messages = collect_messages(options, run);
  if (!messages) return kExitFindings;
  read_po_files(options, run);
  const std::vector<LanguageCatalog> catalogs = make_catalogs(*messages, run.files, run.findings);
  if (!print(run)) return kExitFindings;
  const std::string source_language = qzlog_catalog::bundle_name(options.source_language).value();
  const std::vector<NamedBundle> bundles =
      run_genrb(options.genrb, bundle_sources(*messages, catalogs, source_language));
  return update_folder(options, bundles);
}

// --- status ----------------------------------------------------------------------------------------------------------

/// Files that no language was counted for.
void note_unread_files(std::span<const PoText> files) {
  std::set<std::string> languages;
  for (const PoText& text : files) {
    Findings findings;
    const std::optional<LanguageFile> file = qzlog_catalog::read_language(text, findings);
    if (file && languages.insert(file->language).second) continue;
    if (file) {
      passed_over().add("PO file", qzlog_compiler::rule_name(qzlog_catalog::CatalogRule::kDuplicateLanguage),
                        text.name);
    } else {
      passed_over().add("PO file", findings.all().front().rule.name(), text.name, findings.all().front().place);
    }
  }
}

int status(const CatalogOptions& options) {
  CatalogRun run;
  const std::optional<CatalogMessages> messages = collect_messages(options, run);
  if (!messages) return kExitFindings;
  read_po_files(options, run);
  const std::vector<LanguageCatalog> catalogs = make_catalogs(*messages, run.files, run.findings);
  const std::vector<Finding> findings = run.findings.take_sorted();
  print(findings, run);
  options.json ? print_status_json(std::cout, catalogs, findings) : print_status_table(std::cout, catalogs);
  const bool complete = std::all_of(catalogs.begin(), catalogs.end(),
                                    [](const LanguageCatalog& catalog) { return catalog.counts.complete(); });
  note_unread_files(run.files);
  const bool all_read = catalogs.size() == run.files.size();
  return all_read && (complete || !options.require_complete) ? kExitSuccess : kExitFindings;
}

// --- journal ---------------------------------------------------------------------------------------------------------

bool is_control(char character) { return static_cast<unsigned char>(character) < ' ' || character == '\x7F'; }

/// As the sink has it.
std::string journal_product(const CatalogOptions& options, const CatalogMessages& messages) {
  const std::string& product = options.product.empty() ? messages.sources().front().model.product : options.product;
  if (product.empty()) {
    throw CommandError(kExitCannotRun, "give --product, or 'product:' in the source: events are known by it");
  }
  if (std::any_of(product.begin(), product.end(), is_control)) {
    throw CommandError(kExitCannotRun, "the product's name has a control character");
  }
  return product;
}

int write_journal_catalogs(const CatalogOptions& options) {
  CatalogRun run;
  const std::optional<CatalogMessages> messages = collect_messages(options, run);
  if (!messages) return kExitFindings;
  const std::string product = journal_product(options, *messages);
  read_po_files(options, run);
  const std::vector<LanguageCatalog> languages = make_catalogs(*messages, run.files, run.findings);
  if (!print(run)) return kExitFindings;
  const std::vector<JournalCatalog> catalogs = journal_catalogs(product, *messages, languages);
  const FileDescriptor folder = make_folder(options.output);
  std::vector<OutputFile> outputs;
  outputs.reserve(catalogs.size());
  for (const JournalCatalog& catalog : catalogs) {
    outputs.push_back({(fs::path(options.output) / catalog.name).string(), catalog.content});
  }
  write_files(outputs);
  return kExitSuccess;
}

// --- the options -----------------------------------------------------------------------------------------------------

std::string check_language(const std::string& language) {
  return qzlog_catalog::bundle_name(language) ? "" : "ICU knows no language '" + language + "'";
}

CLI::App* add_command(CLI::App& catalog_command, const char* name, const char* help, const char* footer,
                      CatalogOptions& options) {
  CLI::App* const command = catalog_command.add_subcommand(name, help);
  command->footer(footer);
  command
      ->add_option("SRC", options.sources,
                   "Definition source (YAML), - is standard input; then the auxiliary sources that extend it")
      ->type_name("SRC.yaml [AUX.yaml ...]")
      ->required();
  return command;
}

CLI::Option* add_po_option(CLI::App& command, CatalogOptions& options) {
  return command.add_option("--po", options.po, "PO files, or folders of them")
      ->type_name("DIR|FILE ...")
      ->check(check_not_empty);
}

void add_extract(CLI::App& catalog_command, int& exit_status) {
  const auto options = std::make_shared<CatalogOptions>();
  CLI::App* const command =
      add_command(catalog_command, "extract", "Write and update files for translators", kExtractFooter, *options);
  command->add_option("-o,--output", options->output, "The template to write; - is standard output")
      ->type_name("MESSAGES.pot")
      ->check(check_not_empty);
  command->add_option("--update", options->po, "PO files to bring up to date, or to begin")
      ->type_name("FILE.po ...")
      ->check(check_not_empty);
  command->callback([options, &exit_status] { exit_status = extract(*options); });
}

void add_build(CLI::App& catalog_command, int& exit_status) {
  const auto options = std::make_shared<CatalogOptions>();
  CLI::App* const command =
      add_command(catalog_command, "build", "Build the catalog that the library opens", kBuildFooter, *options);
  add_po_option(*command, *options)->required();
  command->add_option("-o,--output", options->output, "The folder for the resource bundles")
      ->type_name("DIR")
      ->check(check_not_empty)
      ->required();
  command->add_option("--source-language", options->source_language, "The language of the texts in the sources")
      ->type_name("ll[_CC]")
      ->check(check_language)
      ->capture_default_str();
  command->add_flag("--adopt", options->adopt, "Replace bundles in DIR that this command did not make");
  command->add_option("--genrb", options->genrb, "ICU's compiler for resource bundles")
      ->type_name("PATH")
      ->check(check_not_empty)
      ->capture_default_str();
  command->callback([options, &exit_status] { exit_status = build(*options); });
}

void add_status(CLI::App& catalog_command, int& exit_status) {
  const auto options = std::make_shared<CatalogOptions>();
  CLI::App* const command =
      add_command(catalog_command, "status", "Show how far each language is translated", kStatusFooter, *options);
  add_po_option(*command, *options)->required();
  command->add_flag("--json", options->json, "Print JSON");
  command->add_flag("--require-complete", options->require_complete,
                    "Exit with 1 unless every message of every language is translated");
  command->callback([options, &exit_status] { exit_status = status(*options); });
}

void add_journal(CLI::App& catalog_command, int& exit_status) {
  const auto options = std::make_shared<CatalogOptions>();
  CLI::App* const command =
      add_command(catalog_command, "journal", "Write catalog files of journald", kJournalFooter, *options);
  add_po_option(*command, *options);
  command->add_option("-o,--output", options->output, "The folder for the files")
      ->type_name("DIR")
      ->check(check_not_empty)
      ->required();
  command->add_option("--product", options->product, "The product's name, as the sink has it")
      ->type_name("NAME")
      ->check(check_not_empty);
  command->callback([options, &exit_status] { exit_status = write_journal_catalogs(*options); });
}

}  // namespace

void add_catalog_command(CLI::App& app, int& exit_status) {
  CLI::App* const command = app.add_subcommand("catalog", "Hand message texts to translators and build catalogs");
  command->footer(kCatalogFooter);
  command->require_subcommand(1);
  add_extract(*command, exit_status);
  add_build(*command, exit_status);
  add_status(*command, exit_status);
  add_journal(*command, exit_status);
}

}  // namespace qzlog_tool
