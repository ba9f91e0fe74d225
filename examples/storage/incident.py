#!/usr/bin/env python3
"""Writes the logs of a night on which backups failed, as two hosts of the storage product had them.

docs/reading-logs.md looks for the cause. Every run writes the same lines.

Usage: incident.py FOLDER             the logs up to eight in the morning: series in FOLDER/filer-1 and FOLDER/filer-2
       incident.py --repaired FOLDER  what came after the repair, behind them
"""
import datetime
import json
import pathlib
import sys

EVENTS = {
    "VOLUME_ALMOST_FULL": 1001, "SNAPSHOT_POLICY_CHANGED": 1003, "DISK_FAILED": 1101, "DISK_TEMPERATURE": 1102,
    "POOL_REBALANCED": 1201, "REPLICATION_SLOW": 1202, "BACKUP_PLANNED": 1203, "BACKUP_FINISHED": 1204,
    "SETTING_CHANGED": 1301, "OPERATOR_NOTE": 1303, "UPDATE_INSTALLED": 1401, "SELF_TEST_ENDED": 1402}
TRACE, NOTICE, WARNING, ERROR = 1, 3, 5, 7
SNAPSHOTS, BAD_MEDIA, TARGET_FULL = 20, 2, 0xE0010070
EVENING = datetime.datetime(2026, 11, 20, 17, 30)

# The processes that log: host, process ID.
DISKS, COPIES, TARGET = ("filer-1", 1840), ("filer-1", 2210), ("filer-2", 977)


def at(text):
    """A time of the night: before noon it is the second day's."""
    hour, minute, second = map(int, text.split(":"))
    return datetime.datetime(2026, 11, 21 if hour < 12 else 20, hour, minute, second)


def rfc_3339(time):
    return time.strftime("%Y-%m-%dT%H:%M:%SZ")


def entry(writer, time, level, name, **attributes):
    return (time if isinstance(time, datetime.datetime) else at(time), writer, level, name, attributes)


def temperatures():
    """Disk 7 of shelf 2 is too warm, every five minutes until it fails: what fills the log and has nothing to do with it."""
    for number in range(66):
        yield entry(DISKS, at("21:02:40") + datetime.timedelta(minutes=5 * number), WARNING, "DISK_TEMPERATURE",
                    Shelf=2, Slot=7, Celsius=61 + number // 20 + number % 2, Lowest=5, Highest=60)


def replication():
    rates = [96.5, 71.25, 38, 22.5, 9.75, 4, 1.25, 0.5, 0.5, 0.25, 0.25, 0.25]
    for number, rate in enumerate(rates):
        yield entry(COPIES, at("21:20:05") + datetime.timedelta(minutes=50 * number), WARNING, "REPLICATION_SLOW",
                    Target="filer-2", Rate=rate, Pending=1 + number)


def backups():
    for volume, minute in (("home", 1), ("mail", 2), ("projects", 3)):
        yield entry(COPIES, f"18:00:0{minute}", TRACE, "BACKUP_PLANNED", Volume=volume, Day="2026-11-21T00:00:00Z",
                    Start="2026-11-21T01:30:00Z")
    yield entry(COPIES, "01:41:12", NOTICE, "BACKUP_FINISHED", Volume="home", Begin="2026-11-21T01:30:00Z", Size=2048,
                Result=0)
    yield entry(COPIES, "01:58:37", ERROR, "BACKUP_FINISHED", Volume="mail", Begin="2026-11-21T01:30:00Z", Size=1017,
                Result=TARGET_FULL)
    yield entry(COPIES, "01:58:40", ERROR, "BACKUP_FINISHED", Volume="projects", Begin="2026-11-21T01:30:00Z", Size=6,
                Result=TARGET_FULL)


def filling():
    for number, free in enumerate([40960, 34816, 28160, 20992, 14336, 7680, 3071]):
        yield entry(TARGET, at("19:00:00") + datetime.timedelta(hours=number), WARNING, "VOLUME_ALMOST_FULL",
                    Volume="backup", Used=1 - free / 409600, Free=free, Total=409600, Reason=SNAPSHOTS,
                    COMPUTER_NAME="filer-2")
    yield entry(TARGET, "01:58:31", ERROR, "VOLUME_ALMOST_FULL", Volume="backup", Used=1, Free=0, Total=409600,
                Reason=SNAPSHOTS, COMPUTER_NAME="filer-2")


def the_rest():
    yield entry(DISKS, "17:30:00", NOTICE, "UPDATE_INSTALLED", PRODUCT_ID="Storage Manager", VERSION_ID="4.2",
                COMPONENT_ID="Firmware", COMPONENT_VERSION_ID="9.0.1")
    yield entry(DISKS, "02:31:09", ERROR, "DISK_FAILED", Shelf=2, Slot=7, Serial="WX41A7731", Cause=BAD_MEDIA)
    yield entry(DISKS, "03:40:52", TRACE, "POOL_REBALANCED", Pool="fast", Moved=18230, Change=-2048)
    yield entry(DISKS, "05:00:12", TRACE, "SELF_TEST_ENDED", COMPUTER_NAME="filer-1", REASON_CODE=0,
                REASON_CODE_SOURCE=17)
    yield entry(TARGET, "17:41:55", NOTICE, "SETTING_CHANGED", User="Jürgen Groß", Setting="snapshot.autodelete",
                Before="on", After="off")
    yield entry(TARGET, "17:42:10", NOTICE, "SNAPSHOT_POLICY_CHANGED", Volume="backup", Hourly=96, Daily=7, Weekly=4)
    yield entry(TARGET, "05:00:09", TRACE, "SELF_TEST_ENDED", COMPUTER_NAME="filer-2", REASON_CODE=0,
                REASON_CODE_SOURCE=17)


def repaired():
    yield entry(TARGET, "09:04:31", NOTICE, "SNAPSHOT_POLICY_CHANGED", Volume="backup", Hourly=24, Daily=7, Weekly=4)
    yield entry(TARGET, "09:04:40", NOTICE, "SETTING_CHANGED", User="Ana", Setting="snapshot.autodelete", Before="off",
                After="on")
    yield entry(COPIES, "09:31:16", NOTICE, "BACKUP_FINISHED", Volume="mail", Begin="2026-11-21T09:10:00Z", Size=81920,
                Result=0)
    yield entry(COPIES, "09:52:48", NOTICE, "BACKUP_FINISHED", Volume="projects", Begin="2026-11-21T09:10:00Z",
                Size=104448, Result=0)


def line_of(number, time, writer, level, name, attributes):
    host, process = writer
    start = int(EVENING.replace(tzinfo=datetime.timezone.utc).timestamp()) * 10**9 + process
    return json.dumps(
        {"writer": f"{host}/{process}/{start}", "seq": number, "written": rfc_3339(time)[:-1] + f".{number:03}417Z",
         "id": EVENTS[name], "level": level, "time": rfc_3339(time), "name": name, "attributes": attributes},
        ensure_ascii=False, separators=(",", ":"))


def main():
    adds = sys.argv[1:2] == ["--repaired"]
    if len(sys.argv) != 2 + adds:
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[-1])
    entries = [*temperatures(), *replication(), *backups(), *filling(), *the_rest()]
    numbers = {}
    for time, writer, level, name, attributes in sorted(entries + adds * [*repaired()], key=lambda entry: entry[0]):
        numbers[writer] = numbers.get(writer, 0) + 1
        if adds and time < at("09:00:00"):
            continue
        series = folder / writer[0] / time.strftime("storage.%Y%m%d.0001")
        series.parent.mkdir(parents=True, exist_ok=True)
        with series.open("a", encoding="utf-8") as log:
            log.write(line_of(numbers[writer], time, writer, level, name, attributes) + "\n")


if __name__ == "__main__":
    main()
