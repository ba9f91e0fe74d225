// Written by tests/lint/check_rules.py --update, from the golden cases of the tests and from docs/diagnostics.md.

#include "tools/explain/rule_examples.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Severity;

// clang-format off
constexpr RuleExample kExamples[] = {
    {"compile", "invalid-utf8", Severity::kError,
     R"~(in.yaml:3:36: error: the source is not UTF-8 from here on [invalid-utf8]
    3 |   - {id: 1, name: A, message: 'voil�'}
      |                                    ^
  hint: save it as UTF-8)~"},
    {"compile", "invalid-utf8", Severity::kWarning,
     R"~(in.ldf: warning: entry 1: the text is not UTF-8, so ICU shows substitution characters [invalid-utf8])~"},
    {"compile", "control-character", Severity::kError,
     R"~(in.yaml:3:33: error: the character U+0000 cannot stand in a source [control-character]
    3 |   - {id: 1, name: A, message: 'a\u0000b\u001B'}
      |                                 ^
  hint: write it as an escape in a double-quoted text)~"},
    {"compile", "yaml-syntax", Severity::kError,
     R"~(in.yaml:4:1: error: found unexpected end of stream while scanning a quoted scalar [yaml-syntax])~"},
    {"compile", "yaml-feature", Severity::kError,
     R"~(in.yaml:5:5: error: a tag has no place in a definition source [yaml-feature]
    5 |   - !!map {id: 2, name: B, message: "text"}
      |     ^
  hint: write the value out)~"},
    {"compile", "yaml-depth", Severity::kError,
     R"~(in.yaml:1:17: error: nested deeper than 16 levels [yaml-depth]
    1 | [[[[[[[[[[[[[[[[[[[[
      |                 ^)~"},
    {"compile", "wrong-type", Severity::kError,
     R"~(in.yaml:1:10: error: expected the version, found a list [wrong-type]
    1 | version: [1, 0]
      |          ^)~"},
    {"compile", "unknown-key", Severity::kError,
     R"~(in.yaml:6:5: error: unknown key 'mesage' in an entry [unknown-key]
    6 |     mesage: "text"
      |     ^
  hint: did you mean 'message'? allowed are id, name, summary, mask, word, message, raw, message_id, attributes, accept, selector)~"},
    {"compile", "missing-key", Severity::kError,
     R"~(in.yaml:3:5: error: an entry lacks the key 'id' [missing-key]
    3 |   - {}
      |     ^)~"},
    {"compile", "duplicate-key", Severity::kError,
     R"~(in.yaml:4:38: error: the key 'id' stands in an entry twice [duplicate-key]
    4 |   - {id: 1, name: A, message: "one", id: 2, message: "two"}
      |                                      ^
in.yaml:4:6: note: the first is here
    4 |   - {id: 1, name: A, message: "one", id: 2, message: "two"}
      |      ^)~"},
    {"compile", "conflicting-keys", Severity::kError,
     R"~(in.yaml:6:10: error: 'message' and 'raw' exclude each other [conflicting-keys]
    6 |     raw: "text"
      |          ^
in.yaml:5:14: note: the 'message' is here
    5 |     message: "text"
      |              ^)~"},
    {"compile", "bad-number", Severity::kError,
     R"~(in.yaml:4:10: error: '-1' is no number [bad-number]
    4 |   - {id: -1, name: B, message: m, mask: 0xG, word: 1.5}
      |          ^
  hint: the id is decimal or 0x hexadecimal, from 0 to 4294967295)~"},
    {"compile", "number-out-of-range", Severity::kError,
     R"~(in.yaml:3:10: error: '4294967296' is too large [number-out-of-range]
    3 |   - {id: 4294967296, name: A, message: m, mask: 0x100000000, word: 99999999999999999999}
      |          ^
  hint: the id is at most 4294967295)~"},
    {"compile", "bad-version", Severity::kError,
     R"~(in.yaml:1:10: error: bad version '2' [bad-version]
    1 | version: "2"
      |          ^
  hint: a version is MAJOR.MINOR in digits without leading zeros, at most 8 bytes, as in "2.5")~"},
    {"compile", "bad-version", Severity::kWarning,
     R"~(in.ldf: warning: entries cannot take their version from the tag 'beta'; a version is MAJOR.MINOR in digits [bad-version])~"},
    {"compile", "bad-entry-name", Severity::kError,
     R"~(in.yaml:5:19: error: bad entry name '' [bad-entry-name]
    5 |   - {id: 3, name: "", message: m}
      |                   ^
  hint: a name begins with A-Z and goes on with A-Z, 0-9 and _)~"},
    {"compile", "bad-attribute-name", Severity::kError,
     R"~(in.yaml:8:16: error: bad attribute name '' [bad-attribute-name]
    8 |       - {name: "", type: Bool}
      |                ^
  hint: messages could not refer to a name that is empty or holds one of % { } :)~"},
    {"compile", "nul-character", Severity::kError,
     R"~(in.yaml:3:31: error: a message text holds a NUL character [nul-character]
    3 |   - {id: 1, name: A, message: "a\0b", summary: "\x00"}
      |                               ^
  hint: a NUL would end the text in the compiled file; leave it out)~"},
    {"compile", "unknown-type", Severity::kError,
     R"~(in.yaml:3:21: error: unknown type 'Int4' for attribute 'G' [unknown-type]
    3 |   - {name: G, type: Int4}
      |                     ^
  hint: did you mean 'UInt4'? types are Bool, UInt1, SInt1, UInt2, SInt2, UInt4, SInt4, Float, Char32, Char64, Char128, Char256, Char1K, Char2K, MBChar32, MBChar64, MBChar128, MBChar256, MBChar1K, MBChar2K, Date, Time, Timestamp, GUID)~"},
    {"compile", "unknown-type", Severity::kWarning,
     R"~(in.ldf: warning: the type code 0 of 'G' means nothing; no value can be set [unknown-type])~"},
    {"compile", "bad-sensitivity", Severity::kError,
     R"~(a.yaml:3:45: error: unknown sensitivity 'hide' [bad-sensitivity]
    3 |   - {name: USER, type: MBChar64, sensitive: hide}
      |                                             ^
  hint: it is one of keep, hash and drop)~"},
    {"compile", "hashed-type", Severity::kError,
     R"~(a.yaml:5:85: error: UInt4 cannot be hashed: a hash takes the place of a text [hashed-type]
    5 |   - {id: 1, name: A, message: "{N}", attributes: [{name: N, type: UInt4, sensitive: hash}]}
      |                                                                                     ^
  hint: leave the value out with drop)~"},
    {"compile", "duplicate-id", Severity::kError,
     R"~(in.yaml:12:10: error: the ID 1 is the ID of another entry [duplicate-id]
   12 |   - {id: 1, name: B, message: "50%"}
      |          ^
in.yaml:5:9: note: the first is here
    5 |   - id: 1
      |         ^)~"},
    {"compile", "duplicate-id", Severity::kWarning,
     R"~(in.ldf: warning: entry 1: the map lists the ID again; of several records the last one counts [duplicate-id])~"},
    {"compile", "duplicate-entry-name", Severity::kError,
     R"~(in.yaml:4:19: error: 'A' is the name of another entry [duplicate-entry-name]
    4 |   - {id: 2, name: A, message: m}
      |                   ^
in.yaml:3:19: note: the first is here
    3 |   - {id: 1, name: A, message: m}
      |                   ^)~"},
    {"compile", "duplicate-attribute", Severity::kError,
     R"~(in.yaml:8:16: error: 'Free' is the name of another of these attributes [duplicate-attribute]
    8 |       - {name: Free, type: UInt2}
      |                ^
in.yaml:7:16: note: the first is here
    7 |       - {name: Free, type: UInt4}
      |                ^)~"},
    {"compile", "duplicate-global", Severity::kError,
     R"~(in.yaml:4:12: error: 'SITE' is the name of another of these global attributes [duplicate-global]
    4 |   - {name: SITE, type: MBChar32}
      |            ^
in.yaml:3:12: note: the first is here
    3 |   - {name: SITE, type: MBChar32}
      |            ^)~"},
    {"compile", "duplicate-global", Severity::kWarning,
     R"~(in.ldf: warning: 'SITE' is the name of another global attribute, which this one replaces [duplicate-global])~"},
    {"compile", "too-many-attributes", Severity::kError,
     R"~(in.yaml:262:16: error: 256 attributes are too many; 255 are allowed [too-many-attributes]
  262 |       - {name: P256, type: Bool}
      |                ^)~"},
    {"compile", "too-many-globals", Severity::kError,
     R"~(in.yaml:258:12: error: 256 global attributes are too many; 255 are allowed [too-many-globals]
  258 |   - {name: P256, type: Bool}
      |            ^)~"},
    {"compile", "too-many-selector-messages", Severity::kError,
     R"~(in.yaml:265:11: error: 256 selector messages are too many; 255 are allowed [too-many-selector-messages]
  265 |         - {index: 256, value: 256, id: i256, text: t}
      |           ^)~"},
    {"compile", "unknown-selector-attribute", Severity::kError,
     R"~(in.yaml:3:44: error: 'N' is no selector in the standard definitions [unknown-selector-attribute]
    3 |   - {id: 1, name: E, selector: {attribute: N, messages: []}}
      |                                            ^
  hint: list the attribute here again, with its type, to make it one)~"},
    {"compile", "unknown-selector-attribute", Severity::kWarning,
     R"~(in.ldf: warning: entry 1: the entry has no attribute 'K' to select its messages by [unknown-selector-attribute])~"},
    {"compile", "selector-attribute-type", Severity::kError,
     R"~(in.yaml:4:93: error: 'K' is Bool, by which no message can be selected [selector-attribute-type]
    4 | ... attributes: [{name: K, type: Bool}], selector: {attribute: K, messages: []}}
      |                                                                ^
  hint: a selector attribute is UInt1, UInt2 or UInt4)~"},
    {"compile", "selector-value-range", Severity::kError,
     R"~(in.yaml:11:29: error: the value 256 is never met: the selector attribute holds at most 255 [selector-value-range]
   11 |         - {index: 2, value: 256, id: i2, text: t}
      |                             ^)~"},
    {"compile", "selector-value-range", Severity::kWarning,
     R"~(in.ldf: warning: entry 1, selector message 1: the value 256 is never met: the selector attribute holds at most 255 [selector-value-range])~"},
    {"compile", "duplicate-selector-index", Severity::kError,
     R"~(in.yaml:11:19: error: the index 1 belongs to another selector message of the entry [duplicate-selector-index]
   11 |         - {index: 1, value: 2, id: i2, text: t}
      |                   ^
in.yaml:10:19: note: the first is here
   10 |         - {index: 1, value: 1, id: i1, text: t}
      |                   ^)~"},
    {"compile", "duplicate-selector-index", Severity::kWarning,
     R"~(in.ldf: warning: entry 1, selector message 7: an earlier message has the index 7, so nobody can ask for this one [duplicate-selector-index])~"},
    {"compile", "duplicate-selector-value", Severity::kError,
     R"~(in.yaml:12:29: error: the value 1 belongs to another selector message of the entry [duplicate-selector-value]
   12 |         - {index: 3, value: 1, id: i3, text: t}
      |                             ^
in.yaml:10:29: note: the first is here
   10 |         - {index: 1, value: 1, id: i1, text: t}
      |                             ^)~"},
    {"compile", "duplicate-selector-value", Severity::kWarning,
     R"~(in.ldf: warning: entry 1, selector message 9: an earlier message has the value 8, which never selects this one [duplicate-selector-value])~"},
    {"compile", "empty-message-id", Severity::kWarning,
     R"~(in.yaml:3:40: warning: an empty catalog key: the message fails wherever a catalog is in use [empty-message-id]
    3 |   - {id: 3, name: KEYLESS, message_id: "", message: "Keyless"}
      |                                        ^
  hint: name a key, such as the entry's name)~"},
    {"compile", "unbalanced-brace", Severity::kError,
     R"~(in.yaml:4:40: error: a closing brace without an opening one [unbalanced-brace]
    4 |   - {id: 2, name: B, message: "set 1, 2}"}
      |                                        ^
  hint: write '}}' for a literal brace)~"},
    {"compile", "bad-placeholder", Severity::kError,
     R"~(in.yaml:3:37: error: a placeholder without a name [bad-placeholder]
    3 |   - {id: 1, name: A, message: "from {} to {:d}"}
      |                                     ^
  hint: write {Name}, or '{{' for a literal brace)~"},
    {"compile", "unknown-attribute", Severity::kError,
     R"~(in.yaml:3:38: error: unknown attribute 'X' [unknown-attribute]
    3 |   - {id: 1, name: TAB,  message: "a b {X}"}
      |                                       ^
  hint: a placeholder names an attribute of the entry, a global attribute or a standard field)~"},
    {"compile", "unknown-format", Severity::kError,
     R"~(in.yaml:3:38: error: unknown format '' [unknown-format]
    3 |   - {id: 1, name: A, message: "{N:x} {N:} {N:dd}", attributes: [{name: N, type: UInt4}]}
      |                                      ^
  hint: formats are s C P D T f d u)~"},
    {"compile", "unknown-format", Severity::kWarning,
     R"~(in.ldf: warning: entry 1: the format 'x' of 'Name' does not exist, so the reference shows nothing [unknown-format]
  hint: formats are s C P D T f d u)~"},
    {"compile", "format-type-mismatch", Severity::kError,
     R"~(in.yaml:5:39: error: the format 's' does not accept Date attributes as 'D' [format-type-mismatch]
    5 |     message: "{N:s} {N:f} {F:d} {X:d} {D:s} {TIMESTAMP:s} {X:D}"
      |                                       ^
  hint: the type is shown by D T)~"},
    {"compile", "guid-reference", Severity::kError,
     R"~(in.yaml:3:32: error: 'G' is a GUID attribute, which can be neither set nor shown [guid-reference]
    3 |   - {id: 1, name: A, message: "{G}", attributes: [{name: G, type: GUID}]}
      |                                ^
  hint: give it the type Char64)~"},
    {"compile", "standard-field-type", Severity::kError,
     R"~(in.yaml:7:32: error: the standard field PRODUCT_ID is read as an MBChar text, but is defined as UInt4 [standard-field-type]
    7 |   - {id: 1, name: A, message: "{PRODUCT_ID} {TIMESTAMP} {VERSION_ID}"}
      |                                ^
  hint: define it as MBChar32)~"},
    {"compile", "undefined-standard-field", Severity::kWarning,
     R"~(in.yaml:3:32: warning: nothing here defines the standard field PRODUCT_ID, so no entry can set it and the message fails [undefined-standard-field]
    3 |   - {id: 1, name: A, message: "{PRODUCT_ID} at {TIMESTAMP}"}
      |                                ^
  hint: define it as a global attribute of type MBChar32)~"},
    {"compile", "adjacent-placeholders", Severity::kError,
     R"~(in.yaml:3:35: error: no path can show two placeholders side by side [adjacent-placeholders]
    3 |   - {id: 1, name: A, message: "{N}{N}", attributes: [{name: N, type: UInt4}]}
      |                                   ^
  hint: put a character between them)~"},
    {"compile", "literal-percent", Severity::kError,
     R"~(in.yaml:3:32: error: the narrow path cannot show a percent sign [literal-percent]
    3 |   - {id: 1, name: A, message: "%{N} of all", attributes: [{name: N, type: UInt2}]}
      |                                ^
  hint: the format P shows a number with a percent sign)~"},
    {"compile", "literal-percent", Severity::kWarning,
     R"~(in.yaml:3:32: warning: the narrow path cannot show a percent sign [literal-percent]
    3 |   - {id: 1, name: A, message: "%{N} of all", attributes: [{name: N, type: UInt2}]}
      |                                ^
  hint: the format P shows a number with a percent sign)~"},
    {"compile", "too-many-references", Severity::kError,
     R"~(in.yaml:5:55: error: the ICU path shows at most ten references in a message [too-many-references]
    5 |     message: "{N} {N} {N} {N} {N} {N} {N} {N} {N} {N} {N}"
      |                                                       ^
  hint: a time stamp without a format counts as two)~"},
    {"compile", "too-many-references", Severity::kWarning,
     R"~(in.yaml:5:55: warning: the ICU path shows at most ten references in a message [too-many-references]
    5 |     message: "{N} {N} {N} {N} {N} {N} {N} {N} {N} {N} {N}"
      |                                                       ^
  hint: a time stamp without a format counts as two)~"},
    {"compile", "long-reference-name", Severity::kError,
     R"~(in.yaml:3:37: error: the ICU path cannot refer to '漢字の': the name takes 9 bytes where it has room for 8 [long-reference-name]
    3 |   - {id: 1, name: A, message: "{漢字} {漢字の} {Größe}", attributes: [{name: 漢字, type: Char32}, {n...
      |                                       ^
  hint: give the attribute a shorter name, or one in ASCII)~"},
    {"compile", "long-reference-name", Severity::kWarning,
     R"~(in.yaml:3:37: warning: the ICU path cannot refer to '漢字の': the name takes 9 bytes where it has room for 8 [long-reference-name]
    3 |   - {id: 1, name: A, message: "{漢字} {漢字の} {Größe}", attributes: [{name: 漢字, type: Char32}, {n...
      |                                       ^
  hint: give the attribute a shorter name, or one in ASCII)~"},
    {"compile", "path-conflict", Severity::kWarning,
     R"~(in.yaml:3:39: warning: no single stored text shows 'a {{b}} c' on both paths: what is quoted here for the ICU path, the narrow path shows with its quotes [path-conflict]
    3 |   - {id: 1, name: BRACES, message: "a {{b}} c"}
      |                                       ^
  hint: --path icu or --path narrow says which path counts)~"},
    {"compile", "bad-definition-file", Severity::kError,
     R"~(std.ldf: error: the file ends within the header, at offset 0 [bad-definition-file])~"},
    {"compile", "bad-names-section", Severity::kWarning,
     R"~(bad.ldf: offset 191: warning: the names section is damaged (its checksum is wrong) and is ignored [bad-names-section])~"},
    {"compile", "aux-selector-conflict", Severity::kError,
     R"~(in.yaml:3:90: error: the entry has the selector attribute 'Reason' in the standard definitions; it cannot have 'K' as well [aux-selector-conflict]
    3 | ...attributes: [{name: K, type: UInt1}], selector: {attribute: K, messages: []}}
      |                                                                ^
std.yaml:14:18: note: the standard one is here
   14 |       attribute: Reason
      |                  ^)~"},
    {"compile", "aux-attribute-exists", Severity::kError,
     R"~(in.yaml:6:16: error: the entry has the attribute 'Name' in the standard definitions already [aux-attribute-exists]
    6 |       - {name: Name, type: Char32}
      |                ^
std.yaml:11:16: note: the standard one is here
   11 |       - {name: Name, type: Char32}
      |                ^
  hint: leave it out here; messages can refer to it all the same)~"},
    {"compile", "aux-selector-message-conflict", Severity::kError,
     R"~(in.yaml:8:19: error: the index 1 belongs to a selector message of the entry in the standard definitions [aux-selector-message-conflict]
    8 |         - {index: 1, value: 11, id: a, text: a}
      |                   ^
std.yaml:16:19: note: the standard one is here
   16 |         - {index: 1, value: 10, id: quota, text: "The quota of {Name} is used up"}
      |                   ^)~"},
    {"compile", "aux-mask-ignored", Severity::kWarning,
     R"~(in.yaml:3:36: warning: the entry keeps the mask 0x00000005 of the standard definitions [aux-mask-ignored]
    3 |   - {id: 1, name: DISK_FULL, mask: 8}
      |                                    ^
std.yaml:7:11: note: the standard one is here
    7 |     mask: 5
      |           ^
  hint: leave the mask out here)~"},
    {"compile", "aux-message-ignored", Severity::kWarning,
     R"~(in.yaml:3:53: warning: the entry has no message [aux-message-ignored]
    3 |   - {id: 3, name: KEYLESS, message_id: "", message: "Keyless"}
      |                                                     ^
  hint: only a text and a catalog key together, neither of them empty, make one in an auxiliary file)~"},
    {"compile", "aux-type-changed", Severity::kWarning,
     R"~(in.yaml:5:50: warning: the selector attribute 'Reason' becomes UInt4; the standard definitions have it as UInt2 [aux-type-changed]
    5 |   - {id: 1, name: DISK_FULL, attributes: [{name: Reason, type: UInt4}], selector: {attribute: Reason...
      |                                                  ^
std.yaml:12:16: note: the standard one is here
   12 |       - {name: Reason, type: UInt2}
      |                ^)~"},
    {"compile", "aux-sensitivity-lowered", Severity::kWarning,
     R"~(aux.yaml:3:12: warning: the global attribute 'USER' becomes less sensitive: the standard definitions say drop, this one hash [aux-sensitivity-lowered]
    3 |   - {name: USER, type: MBChar64, sensitive: hash}
      |            ^
std.yaml:3:12: note: the standard one is here
    3 |   - {name: USER, type: MBChar64, sensitive: drop}
      |            ^)~"},
    {"compile", "aux-name-mismatch", Severity::kWarning,
     R"~(in.yaml:3:19: warning: the entry 1 is named 'DISK_FULL' in the standard definitions [aux-name-mismatch]
    3 |   - {id: 1, name: DISC_FULL}
      |                   ^
std.yaml:6:11: note: the standard one is here
    6 |     name: DISK_FULL
      |           ^)~"},
    {"compile", "negative-unsigned", Severity::kWarning,
     R"~(a.yaml:6:32: warning: values of 'N' above 2147483647 show as negative numbers on the ICU path [negative-unsigned]
    6 |   - {id: 1, name: A, message: "{N} {S}", attributes: [{name: N, type: UInt4, sensitive: drop}, {name...
      |                                ^
  hint: accept this where values stay below, or store them as text)~"},
    {"compile", "boolean-as-zero", Severity::kWarning,
     R"~(in.yaml:5:15: warning: the Bool 'B' shows as 0 on the ICU path, whatever its value [boolean-as-zero]
    5 |     message: "{B} {U1} {S1} {U2} {S2} {U4} {S4} {F} {C} {M}"
      |               ^
  hint: give it the type UInt1 to show 1 or 0, or let a UInt1 select the message)~"},
    {"compile", "currency-of-reader", Severity::kWarning,
     R"~(in.yaml:4:32: warning: 'N' shows as an amount of dollars, without its sign, on the narrow path [currency-of-reader]
    4 |   - {id: 2, name: B, message: "{N:C}, {N:P}", attributes: [{name: N, type: UInt4}]}
      |                                ^
  hint: name the currency in the text, or accept this where all readers have the same one)~"},
    {"compile", "unused-attribute", Severity::kWarning,
     R"~(in.yaml:31:16: warning: the attribute 'G' is in no message of its entry and selects none [unused-attribute]
   31 |       - {name: G, type: GUID}
      |                ^
  hint: leave it out; a GUID attribute can be neither set nor shown)~"},
    {"compile", "long-message", Severity::kWarning,
     R"~(in.yaml:5:14: warning: the message takes 82905 bytes in the compiled file [long-message]
    5 |     message: >-
      |              ^
  hint: keep messages within 65,535 bytes; long texts belong into attributes or documents)~"},
    {"compile", "hidden-global", Severity::kWarning,
     R"~(in.yaml:6:71: warning: the entry's attribute 'HOST' hides the global attribute of that name [hidden-global]
    6 | ..., name: TWO, message: "{HOST}, {SITE}", attributes: [{name: HOST, type: Char32}, {name: SITE, type: ...
      |                                                                ^
in.yaml:3:12: note: the global attribute is here
    3 |   - {name: HOST, type: MBChar32}
      |            ^
  hint: give one of them another name)~"},
    {"compile", "quoted-placeholder", Severity::kWarning,
     R"~(in.yaml:3:34: warning: an apostrophe switches the reference to 'Name' off on the ICU path, which shows its number in braces [quoted-placeholder]
    3 |   - {id: 1, name: A, raw: "Disk '%s%Name%' is full%_%TIMESTAMP%", attributes: [{name: Name, type: Ch...
      |                                  ^
  hint: write the apostrophe before it twice for a literal one)~"},
    {"compile", "broken-template", Severity::kError,
     R"~(in.ldf: error: entry 1: a percent sign ends the text [broken-template])~"},
    {"compile", "broken-template", Severity::kWarning,
     R"~(in.yaml:3:32: warning: no entry can be rendered with this template on the ICU path: unknown attribute 'Nam' [broken-template]
    3 |   - {id: 1, name: NOBODY, raw: "Disk %s%Nam%", accept: [{rule: unused-attribute, reason: x}], attrib...
      |                                ^
  hint: the compiler checks and writes the template where the source has a text instead of 'raw')~"},
    {"compile", "pattern-argument", Severity::kWarning,
     R"~(in.yaml:6:32: warning: ICU takes '{x}' for an argument of its own [pattern-argument]
    6 |   - {id: 4, name: BRACES, raw: "Disk {x} %s%Name%", attributes: [{name: Name, type: Char32}]}
      |                                ^
  hint: write a brace as '{')~"},
    {"compile", "aux-shared-entries", Severity::kWarning,
     R"~(in.yaml:4:10: warning: 1 entry extends a standard one, and both files have 129 together; the library keeps 128 in memory, and an extended one that it reads again lacks what the standard file defines [aux-shared-entries]
    4 |   - {id: 7, name: E7}
      |          ^
  hint: make one file of both: qzlog compile STD.yaml --merge AUX.yaml -o ALL.ldf)~"},
    {"compile", "unknown-rule", Severity::kError,
     R"~(in.yaml:5:50: error: there is no rule 'everything' [unknown-rule]
    5 |   - {id: 1, name: A, message: m, accept: [{rule: everything, reason: none of it matters}]}
      |                                                  ^
  hint: a warning names its rule in brackets at its end)~"},
    {"compile", "rule-not-acceptable", Severity::kError,
     R"~(in.yaml:4:12: error: 'unused-accept' is nothing that can be accepted [rule-not-acceptable]
    4 |   - {rule: unused-accept, reason: they come and go}
      |            ^
  hint: only warnings about definitions and texts can be accepted)~"},
    {"compile", "empty-reason", Severity::kError,
     R"~(in.yaml:3:38: error: an empty reason [empty-reason]
    3 |   - {rule: unused-attribute, reason: ""}
      |                                      ^
  hint: say to the next reader why the warning does no harm here)~"},
    {"compile", "unused-accept", Severity::kWarning,
     R"~(in.yaml:3:12: warning: the warning unused-attribute is accepted here, but does not occur [unused-accept]
    3 |   - {rule: unused-attribute, reason: for programs}
      |            ^
  hint: take it off the list)~"},
    {"catalog", "message-id-conflict", Severity::kError,
     R"~(storage.yaml:4:31: error: the message ID 'm' stands for another message in storage.yaml, line 3; give one of them another ID [message-id-conflict]
    4 |   - {id: 2, name: B, message: "two", message_id: m}
      |                               ^)~"},
    {"catalog", "message-id-character", Severity::kError,
     R"~(storage.yaml:4:31: error: a catalog cannot hold the message ID 'a\b'; IDs are made of letters and digits of ASCII, blanks and "%&'()*+,-./:;<=>?_ [message-id-character]
    4 |   - {id: 2, name: B, message: "two", message_id: "a\\b"}
      |                               ^)~"},
    {"catalog", "po-syntax", Severity::kError,
     R"~(de.po:1: error: syntax error [po-syntax]
    1 | garbage 1
      | ^)~"},
    {"catalog", "po-charset", Severity::kError,
     R"~(po/de.po:7: error: the file is not UTF-8 [po-charset]
    7 | msgstr "gr��er"
      | ^)~"},
    {"catalog", "po-language", Severity::kError,
     R"~(po/a.po: error: ICU knows no language 'xx'; the header's field 'Language' names one, as in 'Language: pt_BR' [po-language])~"},
    {"catalog", "po-domain", Severity::kError,
     R"~(po/de.po: error: the file names a domain; a catalog has only one, without a name [po-domain])~"},
    {"catalog", "po-plural", Severity::kError,
     R"~(po/de.po:6: error: a message with plural forms; the messages of a catalog have none [po-plural]
    6 | msgctxt "disk.full"
      | ^)~"},
    {"catalog", "duplicate-language", Severity::kError,
     R"~(po/german.po: error: the language 'de' is that of po/de.po, too [duplicate-language])~"},
    {"catalog", "duplicate-message", Severity::kError,
     R"~(po/de.po:10: error: a second message for the ID 'disk.full'; the first is in line 6 [duplicate-message]
   10 | msgctxt "disk.full"
      | ^)~"},
    {"catalog", "source-changed", Severity::kWarning,
     R"~(po/de.po:6: warning: the source text of 'disk.full' has changed; 'qzlog catalog extract --update' brings the file up to date [source-changed]
    6 | msgctxt "disk.full"
      | ^)~"},
    {"catalog", "unknown-message", Severity::kWarning,
     R"~(po/de.po:6: warning: the sources have no message with the ID 'gone'; 'qzlog catalog extract --update' brings the file up to date [unknown-message]
    6 | msgctxt "gone"
      | ^)~"},
    {"catalog", "bad-manifest", Severity::kError,
     R"~(messages/qzlog-catalog.json: error: the list of what 'qzlog catalog build' has made here is damaged: it is no JSON [bad-manifest]
  hint: restore it, or remove it and build with --adopt)~"},
    {"catalog", "foreign-bundle", Severity::kError,
     R"~(messages/de.res: error: 'qzlog catalog build' did not make this file and does not replace it [foreign-bundle]
  hint: move it away, or let --adopt replace it)~"},
    {"catalog", "foreign-bundle", Severity::kWarning,
     R"~(messages/ja.res: warning: 'qzlog catalog build' did not make this bundle as it is now and leaves it; readers of ja get its messages [foreign-bundle]
  hint: take it away unless it is meant to be there)~"},
    {"check", "refused-file", Severity::kError,
     R"~(in.ldf: error: <QZX_logging_invalid_definition> Unable to access definition file successfully. [refused-file])~"},
    {"check", "refused-record", Severity::kError,
     R"~(in.ldf: error: entry 3: <QZX_logging_invalid_definition> Unable to access definition file successfully. [refused-record])~"},
    {"check", "refused-entry-id", Severity::kError,
     R"~(in.ldf: error: entry 2: <QZX_logging_invalid_definition> The definition file is corrupted. [refused-entry-id])~"},
    {"check", "refused-attribute", Severity::kError,
     R"~(in.ldf: error: entry 2: <QZX_logging_invalid_definition> attribute Name already exist. [refused-attribute])~"},
    {"check", "refused-selector-attribute", Severity::kError,
     R"~(in.ldf: error: entry 1: <QZX_logging_invalid_definition> selector_attribute name conflict. [refused-selector-attribute])~"},
    {"check", "refused-selector-message", Severity::kError,
     R"~(in.ldf: error: entry 1: <QZX_logging_invalid_definition> selector message index in AUX definition file conflict with STD definition [refused-selector-message])~"},
    {"check", "rejected-pattern", Severity::kError,
     R"~(messages/de.res: error: entry 1, message 'FULL': ICU refuses the pattern with U_PATTERN_SYNTAX_ERROR [rejected-pattern]
  hint: write a brace as '{')~"},
    {"check", "rejected-pattern", Severity::kWarning,
     R"~(in.ldf: warning: entry 1: on the ICU path: ICU refuses the pattern with U_PATTERN_SYNTAX_ERROR [rejected-pattern]
  hint: write a brace as '{')~"},
    {"check", "lost-text", Severity::kError,
     R"~(po/de.po:10: error: ' ist voll' is never shown [lost-text]
   10 | msgctxt "RAW_TOO"
      | ^
  hint: a text that ends in words needs %_%TIMESTAMP% behind it)~"},
    {"check", "lost-text", Severity::kWarning,
     R"~(in.ldf: warning: entry 1: ' full' is never shown [lost-text]
  hint: a text that ends in words needs %_%TIMESTAMP% behind it)~"},
    {"check", "bad-bundle", Severity::kError,
     R"~(messages/it.res: error: the file is no resource bundle [bad-bundle])~"},
    {"check", "no-root-bundle", Severity::kWarning,
     R"~(messages: warning: the catalog has no root.res: readers whose language has no bundle get no messages [no-root-bundle])~"},
    {"check", "missing-message", Severity::kError,
     R"~(messages/de.res: error: entry 1, message 'FULL.quota': the language de lacks it, so the message fails for its readers [missing-message]
  hint: a bundle with messages of its own gets none from the bundles that it falls back to)~"},
    {"check", "unused-message", Severity::kWarning,
     R"~(messages/de.res: warning: message 'OLD': no definition has this key [unused-message])~"},
    {"check", "reference-lost", Severity::kError,
     R"~(po/de.po:6: error: the translation lacks '{Free:d}', which the source text has [reference-lost]
    6 | msgctxt "disk.full"
      | ^)~"},
    {"check", "reference-lost", Severity::kWarning,
     R"~(messages/de.res: warning: entry 1, message 'FULL': the translation lacks '{Used:P}', which the source text has [reference-lost])~"},
    {"check", "reference-added", Severity::kError,
     R"~(po/de.po:6: error: the translation has '{Name:s}', which the source text has not, or not as often [reference-added]
    6 | msgctxt "disk.full"
      | ^)~"},
    {"check", "reference-added", Severity::kWarning,
     R"~(messages/de.res: warning: entry 1, message 'FULL': the translation has '{Size:d}', which the source text has not, or not as often [reference-added])~"},
    {"check", "reference-format", Severity::kError,
     R"~(po/de.po:6: error: the translation has '{Free:P}' where the source text has '{Free:d}', another format [reference-format]
    6 | msgctxt "disk.full"
      | ^)~"},
    {"check", "reference-format", Severity::kWarning,
     R"~(messages/de.res: warning: entry 1, message 'FULL': the translation has '{Used:d}' where the source text has '{Used:P}', another format [reference-format])~"},
    {"check", "unchanged-text", Severity::kWarning,
     R"~(messages/de.res: warning: the bundle has no table STRING_TABLE; its readers get the one that it falls back to [unchanged-text])~"},
    {"check", "stale-catalog", Severity::kWarning,
     R"~(messages/de.res: warning: 1 message was built from another text than the definitions have: 'FULL' (entry 1) [stale-catalog]
  hint: build the catalog again, with 'qzlog catalog build')~"},
    {"check", "syslog-name", Severity::kWarning,
     R"~(std.ldf: warning: 'Entry' has no parameter in messages of syslog, where the sink itself gives one of that name [syslog-name])~"},
    {"entries", "bad-json", Severity::kError,
     R"~(wrong.jsonl:1:8: error: not valid JSON: a comma or '}' has to stand here [bad-json]
    1 | {"id":7
      |        ^)~"},
    {"entries", "not-an-object", Severity::kError,
     R"~(wrong.jsonl:2:1: error: an entry is an object in braces, not an array [not-an-object]
    2 | [7]
      | ^)~"},
    {"entries", "unknown-key", Severity::kError,
     R"~(wrong.jsonl:3:9: error: unknown key 'colour'; an entry has 'id', 'level', 'time', 'attributes', 'default' and 'selector' [unknown-key]
    3 | {"id":7,"colour":"red"}
      |         ^)~"},
    {"entries", "duplicate-key", Severity::kError,
     R"~(wrong.jsonl:4:9: error: the key 'id' is given twice [duplicate-key]
    4 | {"id":7,"id":7}
      |         ^)~"},
    {"entries", "missing-id", Severity::kError,
     R"~(wrong.jsonl:5: error: the entry has no 'id' [missing-id]
    5 | {"level":3}
      | ^)~"},
    {"entries", "bad-id", Severity::kError,
     R"~(wrong.jsonl:6:7: error: 'id' has to be an integer from 0 to 4294967295 or an entry's name [bad-id]
    6 | {"id":-7}
      |       ^)~"},
    {"entries", "unknown-id", Severity::kError,
     R"~(wrong.jsonl:7:7: error: entry ID 8: Entry id argument is invalid [unknown-id]
    7 | {"id":8}
      |       ^)~"},
    {"entries", "unknown-name", Severity::kError,
     R"~(wrong.jsonl:8:7: error: the definitions have no entry 'STACK' [unknown-name]
    8 | {"id":"STACK"}
      |       ^)~"},
    {"entries", "bad-level", Severity::kError,
     R"~(wrong.jsonl:9:17: error: 'level' has to be an integer from 0 to 9 [bad-level]
    9 | {"id":7,"level":10}
      |                 ^)~"},
    {"entries", "bad-time", Severity::kError,
     R"~(wrong.jsonl:10:31: error: attribute 'Since': 'yesterday' is not a date and time with its zone, such as 2026-11-21T08:15:30Z or 2026-11-21T09:15:30.5+01:00 [bad-time]
   10 | {"id":7,"attributes":{"Since":"yesterday"}}
      |                               ^)~"},
    {"entries", "time-globals", Severity::kError,
     R"~(wrong.jsonl:11:16: error: TIMEZONE_DIFFERENCEis an invalid attibute under Entry ID 7 !; a 'time' needs the definitions TIMEZONE_DIFFERENCE (SInt2) and DAYLIGHT_SAVING_ACTIVE (Bool), best as globals [time-globals]
   11 | {"id":7,"time":"2026-11-21T08:15:30Z"}
      |                ^)~"},
    {"entries", "bad-choice", Severity::kError,
     R"~(wrong.jsonl:12:20: error: 'selector' has to be an integer from 0 to 4294967295 [bad-choice]
   12 | {"id":7,"selector":"one"}
      |                    ^)~"},
    {"entries", "bad-attributes", Severity::kError,
     R"~(wrong.jsonl:13:22: error: 'attributes' has to be an object, not an array [bad-attributes]
   13 | {"id":7,"attributes":[]}
      |                      ^)~"},
    {"entries", "unknown-attribute", Severity::kError,
     R"~(wrong.jsonl:14:23: error: attribute 'Colour' is not defined for entry ID 7 [unknown-attribute]
   14 | {"id":7,"attributes":{"Colour":"red"}}
      |                       ^)~"},
    {"entries", "duplicate-attribute", Severity::kError,
     R"~(wrong.jsonl:15:34: error: attribute 'Name' is given twice [duplicate-attribute]
   15 | {"id":7,"attributes":{"Name":"a","Name":"b"}}
      |                                  ^)~"},
    {"entries", "unsupported-type", Severity::kError,
     R"~(wrong.jsonl:16:32: error: attribute 'TICKET': nothing can be put into an attribute of type GUID [unsupported-type]
   16 | {"id":7,"attributes":{"TICKET":"0"}}
      |                                ^)~"},
    {"entries", "wrong-kind", Severity::kError,
     R"~(wrong.jsonl:17:30: error: attribute 'Name': Char32 takes a text, not an integer [wrong-kind]
   17 | {"id":7,"attributes":{"Name":12}}
      |                              ^)~"},
    {"entries", "out-of-range", Severity::kError,
     R"~(wrong.jsonl:18:31: error: attribute 'Count': 70000 does not fit UInt2 (0 to 65535) [out-of-range]
   18 | {"id":7,"attributes":{"Count":70000}}
      |                               ^)~"},
    {"entries", "nul-character", Severity::kError,
     R"~(wrong.jsonl:19:30: error: the text 'a\u0000b' holds U+0000, which no text can [nul-character]
   19 | {"id":7,"attributes":{"Name":"a\u0000b"}}
      |                              ^)~"},
    {"entries", "refused-value", Severity::kError,
     R"~(wrong.jsonl:20:30: error: Name Attribute value is overflow under Entry ID 7 ! [refused-value]
   20 | {"id":7,"attributes":{"Name":"a name that is longer than the 32 bytes of its type"}}
      |                              ^)~"},
    {"entries", "no-message", Severity::kError,
     R"~(wrong.jsonl:21: error: <QZX_logging_invalid_message_string> Invalid selector message index specified. [no-message]
   21 | {"id":7,"selector":1}
      | ^)~"},
    {"configuration", "config-last-line", Severity::kError,
     R"~(log.conf:2: error: the last line has no empty line behind it and is not read [config-last-line]
    2 | LogLevelLow = 2
      | ^
  hint: end the file with an empty line)~"},
    {"configuration", "config-near-key", Severity::kWarning,
     R"~(log.conf:3:1: warning: no filter asks for 'LogLevelHgh' [config-near-key]
    3 | LogLevelHgh = 3
      | ^
  hint: did you mean 'LogLevelHigh'?)~"},
    {"configuration", "config-bad-value", Severity::kError,
     R"~(log.conf:2:15: error: 'banana' is no number of 32 bits: it is read as 0 [config-bad-value]
    2 | LogLevelLow = banana
      |               ^
  hint: write digits, or 0x and hexadecimal digits)~"},
    {"configuration", "config-bad-value", Severity::kWarning,
     R"~(log.conf:5:18: warning: what stands behind the value is not read [config-bad-value]
    5 | DebugEnabled = 1 now
      |                  ^)~"},
    {"configuration", "config-repeated-key", Severity::kWarning,
     R"~(log.conf:6:1: warning: 'DebugEnabled' stands here again: this value counts [config-repeated-key]
    6 | DebugEnabled = 0
      | ^
log.conf:5:16: note: the value before
    5 | DebugEnabled = 1 now
      |                ^)~"},
    {"configuration", "config-bad-section", Severity::kError,
     R"~(log.conf:9:1: error: the section is read as 'tw' [config-bad-section]
    9 | [two words]
      | ^
  hint: a name has no blanks and no equals signs, and ']' directly behind it)~"},
    {"configuration", "config-no-section", Severity::kWarning,
     R"~(log.conf:1:1: warning: 'PropertyMask' stands in no section and is not read [config-no-section]
    1 | PropertyMask = 0x1
      | ^
  hint: put '[global]' in front of it)~"},
    {"configuration", "config-missing-section", Severity::kError,
     R"~(log.conf: error: there is no section 'stored': nothing counts [config-missing-section]
  hint: did you mean 'storaged'?)~"},
    {"configuration", "config-nothing-passes", Severity::kWarning,
     R"~(log.conf:7:20: warning: no debug entry passes with a low level above 9 [config-nothing-passes]
    7 | DebugLogLevelLow = 10
      |                    ^)~"},
    {"inspect", "no-yaml-form", Severity::kError,
     R"~(a.ldf: offset 0: error: bad version 'two' [no-yaml-form])~"},
};
// clang-format on

}  // namespace

std::span<const RuleExample> all_rule_examples() { return kExamples; }

}  // namespace qzlog_tool
