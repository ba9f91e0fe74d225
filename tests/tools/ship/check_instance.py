"""Checks that a JSON file is valid for a schema, and that it is not without one of its members, with another one, or with another
type of one. Usage: check_instance.py SCHEMA FILE. Exit status 77 where Debian's python3-jsonschema is missing."""
import copy
import json
import sys

try:
    import jsonschema
except ImportError:
    sys.exit(print("python3-jsonschema is not installed", file=sys.stderr) or 77)


def objects(value):
    """The object, and the objects in its lists."""
    yield value
    for member in value.values():
        if isinstance(member, list):
            for item in member:
                yield from objects(item)


def wrong_ones(instance, optional):
    """Pairs of what was done to the instance, and what came of it."""
    for number, part in enumerate(objects(instance)):
        for key in [*part, "another"]:
            for how in ("without", "with another"):
                wrong = copy.deepcopy(instance)
                target = list(objects(wrong))[number]
                if how == "without":
                    if target.pop(key, None) is None or key in optional:
                        continue
                else:
                    target[key] = None
                yield f"{how} {key}", wrong


def main(schema_path, path):
    with open(schema_path, encoding="utf-8") as schema_file, open(path, encoding="utf-8") as file:
        schema, instance = json.load(schema_file), json.load(file)
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    findings = [f"not valid: {error.message}" for error in validator.iter_errors(instance)]
    optional = set(schema["properties"]) - set(schema["required"])
    findings += [f"still valid {how}" for how, wrong in wrong_ones(instance, optional) if validator.is_valid(wrong)]
    print("\n".join(findings))
    return 1 if findings else 0


sys.exit(main(*sys.argv[1:]))
