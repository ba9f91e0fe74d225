#!/usr/bin/env python3
"""Checks that the source units form a chain: a file includes only what stands before it. The library has one chain, the command
another. Checks too that every folder with sources stands in each list of folders that the other checks go by.

Usage: folder_order.py [ROOT]      Prints FILE:LINE for every include that breaks the order; exit status 1 if there is one.
"""
import fnmatch
import pathlib
import re
import sys

import check_headers

# The chain. A file belongs to the layer with the longest pattern that matches its path, and may include files of its own
# layer and of those above it in this table. A public header stands in the layer of its unit.
CHAIN = [
    ("foundation", ["foundation/*", "include/qzlog/export.h", "include/qzlog/file_io.h", "include/qzlog/qz_*.h"]),
    ("texts as JSON", ["lines/json_blocks.h", "lines/json_escape.h", "lines/json_text.*", "lines/line_output.h"]),
    ("debug log", ["util/debug_log.*", "util/debug_record.h", "util/assertion.*",
                   "include/qzlog/debug_log.h", "include/qzlog/version.h"]),
    ("attribute types", ["entry/logattrib.*", "entry/text_limits.h", "entry/ustring.*", "include/qzlog/logattrib.h", "message/format_types.h"]),
    ("definition records", ["definitions/def_read.*", "definitions/definition_format.h", "definitions/names_*.h",
                            "definitions/record_*.*", "definitions/file_blocks.*", "definitions/file_changes.*",
                            "definitions/definition_memory.h"]),
    ("entry definition", ["definitions/ldf_def.*", "definitions/attribute_name.*", "definitions/event_names.*", "definitions/file_names.*", "definitions/prepared_message.h",
                          "definitions/prepared_texts.*", "definitions/definition_reader.*", "definitions/definition_stream.h"]),
    ("definition table", ["definitions/ldf_load.*", "definitions/definition_hold.*", "definitions/entry_index.*", "definitions/definitions_digest.*",
                          "definitions/cached_definitions.*", "include/qzlog/definition_cache.h"]),
    ("configuration file and catalog", ["config/logconf.*", "config/configuration_format.h", "config/configuration_source.*", "config/filter_values.h", "config/text_tbl.h", "message/logmsg.h", "message/logmsg_catalog.*",
                                        "message/resource_*.*", "message/whole_file.*",
                                        "message/code_page.*", "message/icu_memory.h", "message/text_cut.*"]),
    ("message templates", ["message/icu_template.*", "message/logmsg_tokens.*", "message/pattern_nesting.*", "message/shared_template.h",
                           "message/template_limits.h", "message/template_pieces.*", "message/template_walk.h"]),
    ("settings", ["config/logcfg.*", "config/loaded_names.h", "include/qzlog/logcfg.h"]),
    ("entry implementation", ["entry/*"]),
    ("rendering", ["message/*"]),
    ("readable message", ["entry/logentry_i_message.*"]),
    ("entry facade", ["entry/logentry.*", "include/qzlog/logentry.h"]),
    ("entry filter", ["config/entry_filt.*", "include/qzlog/entry_filt.h"]),
    ("lines", ["lines/*", "include/qzlog/entry_lines.h"]),
    ("log file names", ["util/log_util.*", "include/qzlog/log_util.h"]),
    ("entry counter", ["counter/*", "include/qzlog/logentrycounter.h", "include/qzlog/shared_counter.h"]),
    ("sinks", ["sinks/*", "include/qzlog/sink.h", "include/qzlog/*_sink.h", "include/qzlog/open_sinks.h"]),
]

# Layers that use less than everything above them.
ONLY = {
    "log file names": {"foundation", "debug log"},
    "entry counter": {"foundation", "debug log"},
}

# Includes that the order would forbid, each with its reason.
ALLOWED = {
    ("entry implementation", "include/qzlog/logentry.h"): "declares qz_LOG_AttributeVisitor, which the implementation calls",
    ("sinks", "include/qzlog/log_util.h"): "the names of the files of a series",
}

# The command: a folder includes only what stands before it. The subcommands, which stand behind all of it, use nothing of each other
# but what is named; the files in tools/ itself use everything.
TOOLS = ["compiler/text", "system", "report", "options", "compiler/model", "compiler/file", "compiler/message", "compiler/source",
         "configuration", "definitions", "logs", "syslog", "choice", "transport", "merge", "shown", "templates", "manual"]
SUBCOMMANDS = {
    "compile": [],
    "complete": [],
    "inspect": [],
    "diff": [],
    "check": [],
    "explain": [],
    "catalog": [],
    "count": [],
    "render": ["count"],  # counts what it renders
    "ship": ["render"],  # waits for logs as `render --follow` does, and gives plug-ins its messages
    "stats": ["count", "render"],  # has the bars of counts, and tells of lines that are wrong as `render` does
}

# Folders whose files may include public headers and the folders named here, nothing else of ours.
OUTSIDE = {
    "include": ["include"],
    "examples": ["include", "examples"],
    "ship": ["ship"],
    "tools": ["include", "tools"],
    "bench": ["include", "ship", "bench"],
}

# Files of the library that are compiled into the tools as well, each with its reason.
SHARED = {
    "config/configuration_format.h": "the tools tell of the lines that the library does not read",
    "config/filter_values.h": "the tools check the values of keys that filters ask for",
    "counter/record_layout.h": "the tools read the file that the library counts in",
    "definitions/definition_format.h": "the tools write and show the file that the library reads",
    "definitions/names_*.h": "the tools write, show and check the names that the library reads",
    "entry/text_limits.h": "the tools say how long texts may be",
    "foundation/sha256.h": "the tools name definitions as lines do",
    "foundation/crc32.h": "the tools give the checksum that the library looks for",
    "lines/envelope_form.h": "what a writer adds to its lines has one form",
    "lines/level_name.h": "levels have the same names everywhere",
    "lines/json_text.h": "one way to write a text as JSON",
    "lines/library_text.h": "the library's failures in the same words, whoever shows them",
    "lines/line_rule.h": "the tools document the rules that the library reports",
    "lines/utf8_text.h": "one way to show texts that can hold anything",
    "message/format_types.h": "the tools know the formats that messages show, and of which types",
    "message/icu_memory.h": "the tools see as the library does whether ICU ran out of memory",
    "message/pattern_nesting.h": "the tools refuse the patterns that the library refuses, before ICU sees them",
    "message/template_limits.h": "the tools tell of the templates that the library does not render",
    "message/template_walk.h": "one way through a template",
    "message/resource_*.h": "the tools see in a catalog what the library finds there",
    "sinks/brace_format.h": "formats of lines are cut in one way",
    "sinks/journal_names.h": "the tools read and explain what the journal was written",
    "sinks/line_colour.h": "levels have the same colours everywhere",
    "ship/transport.h": "what the command and its plug-ins agree on",
    "sinks/syslog_content.h": "the plug-in for syslog writes messages as the sink does",
    "sinks/syslog_facility.h": "facilities have the same names everywhere",
    "sinks/syslog_name.h": "the tools know what the sink calls what it sends",
    "sinks/syslog_severity.h": "levels become the same severities everywhere",
    "sinks/syslog_text.h": "the plug-in for syslog writes texts as the sink does",
    "message/whole_file.h": "the tools read the file of a bundle as the library does, which waits for no pipe",
}

# Folders that may include everything.
UNORDERED = ["tests", "fuzz"]

LAYERS = [name for name, _ in CHAIN]
OUR_FOLDERS = ["foundation", "util", "entry", "definitions", "config", "message", "counter", "lines", "sinks", "ship", "tools", "examples", "bench"]
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]')


def layer_of(path):
    """The layer of a path relative to the root, or None."""
    matches = [(len(pattern), name) for name, patterns in CHAIN for pattern in patterns if fnmatch.fnmatch(path, pattern)]
    return max(matches)[1] if matches else None


def may_include(layer, other):
    if layer in ONLY:
        return other == layer or other in ONLY[layer]
    return other not in ONLY and LAYERS.index(other) <= LAYERS.index(layer)


def tools_folder(path):
    """The folder of a path below tools/, "" for tools/ itself; None outside it."""
    parts = pathlib.PurePosixPath(path).parent.parts
    return "/".join(parts[1:]) if parts[:1] == ("tools",) else None


def may_tool_include(folder, other):
    if folder in ("", other):
        return True
    if folder in SUBCOMMANDS:
        return other in TOOLS or other in SUBCOMMANDS[folder]
    return other in TOOLS and TOOLS.index(other) <= TOOLS.index(folder)


def our_includes(root, path):
    """Pairs of line number and included path, for the includes that name files of ours."""
    for number, line in enumerate((root / path).read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        name = match.group(1)
        if name.split("/")[0] in OUR_FOLDERS:
            yield number, name
        elif (root / "include" / name).is_file():
            yield number, f"include/{name}"


def check_file(root, path):
    """The findings in one file, as texts."""
    folder = path.split("/")[0]
    layer = layer_of(path)
    if layer is None and folder not in OUTSIDE:
        return [f"{path}:1: belongs to no layer; add it to the table in folder_order.py"]
    tool = tools_folder(path)
    if tool and tool not in TOOLS and tool not in SUBCOMMANDS:
        return [f"{path}:1: tools/{tool}/ has no place in the order; add it to the tables in folder_order.py"]
    findings = []
    for number, other in our_includes(root, path):
        other_tool = tools_folder(other)
        other_layer = layer_of(other)
        is_shared = any(fnmatch.fnmatch(other, pattern) for pattern in SHARED)
        if folder in OUTSIDE and other.split("/")[0] not in OUTSIDE[folder] and not is_shared:
            findings.append(f"{path}:{number}: {folder}/ must not include {other}")
        elif layer and other_layer and not may_include(layer, other_layer) and (layer, other) not in ALLOWED:
            findings.append(f"{path}:{number}: the {layer} must not include {other} ({other_layer})")
        elif tool is not None and other_tool is not None and not may_tool_include(tool, other_tool):
            findings.append(f"{path}:{number}: tools/{tool}/ must not include {other}")
    return findings


def has_sources(folder):
    return any(file.suffix in (".h", ".cpp") for file in folder.rglob("*"))


def check_lists(root):
    """Folders with sources that a check passes over because its list does not name them."""
    root = pathlib.Path(root)
    folders = sorted(folder.name for folder in root.iterdir()
                     if folder.is_dir() and not folder.name.startswith((".", "build")) and has_sources(folder))
    script = (root / "dev").read_text(encoding="utf-8")
    in_script = re.search(r"^readonly SOURCE_FOLDERS=\((.*?)\)", script, re.MULTILINE).group(1).split()
    findings = []
    for folder in folders:
        if folder in UNORDERED:
            continue
        if folder not in OUR_FOLDERS + ["include"]:
            findings.append(f"{folder}/ is not in OUR_FOLDERS of folder_order.py")
        if folder not in in_script + ["bench"]:
            findings.append(f"{folder}/ is not in SOURCE_FOLDERS of dev")
        if folder not in check_headers.INTERNAL_FOLDERS + ["include", "examples", "bench"]:
            findings.append(f"{folder}/ is not in INTERNAL_FOLDERS of check_headers.py")
    for settings, checked in ((".clang-tidy", check_headers.INTERNAL_FOLDERS), ("tools/.clang-tidy", ["tools"])):
        text = (root / settings).read_text(encoding="utf-8")
        filtered = re.compile(re.search(r"^HeaderFilterRegex: '(.*)'$", text, re.MULTILINE).group(1))
        for folder in checked:
            places = {file.parent.relative_to(root) for file in (root / folder).rglob("*.h")}
            findings += [f"{place}/ does not match HeaderFilterRegex in {settings}"
                         for place in sorted(places) if not filtered.search(f"/{place}/a.h")]
    return findings


def check_tree(root):
    root = pathlib.Path(root)
    files = sorted(
        str(file.relative_to(root))
        for folder in OUR_FOLDERS + ["include"]
        for file in (root / folder).rglob("*")
        if file.suffix in (".h", ".cpp"))
    return [finding for file in files for finding in check_file(root, file)]


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else "."
    findings = check_tree(root) + check_lists(root)
    print("\n".join(findings) if findings else "folder order: no finding")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
