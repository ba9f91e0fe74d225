// Reads the input as a translators' file for a fixed source, makes the resource bundle of its language as `qzlog
// catalog build` does, short of running genrb, and brings the file up to date as `qzlog catalog extract --update` does.
// What is written has to read as it was, and what was brought up to date has to be so.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tools/catalog/catalog_build.h"
#include "tools/catalog/catalog_extract.h"
#include "tools/catalog/catalog_messages.h"
#include "tools/catalog/catalog_status.h"
#include "tools/catalog/language_catalog.h"
#include "tools/definitions/definitions.h"
#include "tools/report/finding_printer.h"

using namespace qzlog_catalog;

namespace {

/// libgettextpo ends the process when memory runs out.
constexpr std::size_t kMaximumSize = 16'384;

/// A message of every kind, under an ID as short as can be.
constexpr const char* kSource = R"(version: "1.0"
globals:
  - {name: G, type: MBChar64}
entries:
  - id: 1
    name: A
    message: "a {N} b {F:d}"
    attributes:
      - {name: N, type: MBChar32}
      - {name: F, type: UInt4}
      - {name: R, type: UInt2}
    selector:
      attribute: R
      messages:
        - {index: 1, value: 1, id: S, text: "s {N} {G}"}
        - {index: 2, value: 2, id: E, text: ""}
  - {id: 2, name: B, message: "b"}
  - {id: 3, name: T, message: "{TIMESTAMP} it's {{c}}"}
  - id: 4
    name: W
    raw: "w %s%N% %d%F%"
    attributes:
      - {name: N, type: Char32}
      - {name: F, type: SInt4}
)";

CatalogMessages collect_messages() {
  std::vector<qzlog_tool::Definitions> sources;
  sources.push_back(qzlog_tool::read_errors_only({"source.yaml", "source.yaml", kSource, true},
                                                 {.path = qzlog_compiler::RenderingPaths::kIcu}));
  Findings findings;
  std::optional<CatalogMessages> messages = CatalogMessages::collect(std::move(sources), findings);
  if (!messages) std::abort();
  return std::move(*messages);
}

/// The source of a bundle is ASCII, whatever the texts are.
void check_bundle(const BundleSource& bundle) {
  const auto is_expected = [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); };
  const std::string text = genrb_text(bundle);
  if (!std::all_of(text.begin(), text.end(), is_expected)) std::abort();
}

void build(const CatalogMessages& messages, const PoText& text) {
  Findings findings;
  const std::vector<LanguageCatalog> catalogs = make_catalogs(messages, {&text, 1}, findings);
  if (catalogs.empty() && !findings.has_errors()) std::abort();
  for (const BundleSource& bundle : bundle_sources(messages, catalogs, "en")) check_bundle(bundle);
  qzlog_tool::FindingPrinter printer(true);
  printer.add_source(text.name, text.content, qzlog_compiler::LineBreaks::kLineFeed);
  const std::vector<Finding> found = findings.take_sorted();
  std::ostringstream out;
  printer.print(found, out);
  print_status_table(out, catalogs);
  print_status_json(out, catalogs, found);
}

void update(const CatalogMessages& messages, const PoText& text) {
  Findings findings;
  std::optional<PoFile> old = parse_po(text.content, text.name, findings);
  if (old.has_value() == findings.has_errors()) std::abort();
  if (!old) return;
  const std::optional<PoFile> copy = parse_po(write_po(*old), text.name, findings);
  std::erase_if(old->messages, [](const auto& message) { return message.is_left_over(); });
  if (!copy || copy->messages != old->messages) std::abort();
  const PoFile po_template = make_template(messages, "product");
  const std::string updated = write_po(update_po(*old, po_template));
  const std::optional<PoFile> again = parse_po(updated, text.name, findings);
  if (!again || write_po(update_po(*again, po_template)) != updated) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size > kMaximumSize) return 0;
  static const CatalogMessages messages = collect_messages();
  const PoText text{"de.po", std::string(reinterpret_cast<const char*>(bytes), size)};
  build(messages, text);
  update(messages, text);
  return 0;
}
