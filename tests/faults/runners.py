"""Runs a program with a fault in it, through the fork server or under fault_run."""
import dataclasses
import os
import pathlib
import subprocess

import folders
import judge

TIMEOUT_MS = 20000


@dataclasses.dataclass(frozen=True)
class Tools:
    """Where the build has what is needed."""
    build: pathlib.Path

    @property
    def qzlog(self):
        return self.build / "tools/qzlog"

    @property
    def shim(self):
        return self.build / "tests/faults/libqzlog_faults.so"

    @property
    def fault_run(self):
        return self.build / "tests/faults/fault_run"

    def can_trace(self):
        """Whether there is a fault_run for this processor, and whether processes may be traced here."""
        return self.fault_run.exists() and subprocess.run([self.fault_run, "--report", os.devnull, "--", "true"], check=False,
                                                          capture_output=True).returncode == 0

    def program(self, name):
        folders_of_programs = (self.build / "tests/faults/scenarios", self.build / "tools")
        return next(folder / name for folder in folders_of_programs if (folder / name).exists())


class Place:
    """A folder for one run at a time: `run` is where the program works, `run`/tmp what it has for temporary files."""

    def __init__(self, tools, folder):
        self.tools = tools
        self.folder = pathlib.Path(folder)
        self.run = self.folder / "run"
        self.run.mkdir(parents=True, exist_ok=True)
        self.out, self.err, self.report = (self.folder / name for name in ("out", "err", "report"))
        self.none = self.folder / "none"
        self.none.write_bytes(b"")
        self.tree = None

    def prepare(self, tree):
        folders.write_tree(self.run, tree, self.tree)
        self.tree = tree

    def forget(self):
        """What the folder holds is not known: somebody may still have written there."""
        self.tree = None

    def environment(self, scenario, **more):
        """Little of the caller's, and no file that a run would read outside its folder."""
        return {"PATH": f"{self.tools.qzlog.parent}:{os.environ['PATH']}", "HOME": str(self.folder), "TZ": "XYZ-3:30",
                "LANG": "C.UTF-8", "TMPDIR": str(self.run / "tmp"), "GIT_CONFIG_NOSYSTEM": "1",
                "LD_PRELOAD": str(self.tools.shim), "QZ_FAULT_PROGRAM": scenario.program,
                **({"QZ_FAULT_MARKED": "1"} if scenario.marked else {}), **more}

    def input(self, scenario):
        return self.run / scenario.input if scenario.input else self.none

    def result(self, **fields):
        self.tree = folders.read_tree(self.run)
        return judge.Run(out=self.out.read_bytes(), err=self.err.read_bytes(), tree=folders.steady(self.tree), **fields)


class ForkServer:
    """Runs one scenario again and again, with failing memory: a fork for each run. See fork_server.h."""
    REQUESTS, REPLIES = 198, 199

    def __init__(self, place, scenario):
        self.place, self.scenario = place, scenario
        request_read, request_write = os.pipe()
        reply_read, reply_write = os.pipe()
        os.dup2(request_read, self.REQUESTS)
        os.dup2(reply_write, self.REPLIES)
        self.process = subprocess.Popen(
            scenario.command(place.tools), cwd=place.run, env=place.environment(scenario, QZ_FAULT_SERVER="1"),
            stdin=subprocess.DEVNULL, pass_fds=(self.REQUESTS, self.REPLIES))
        for descriptor in (request_read, reply_write, self.REQUESTS, self.REPLIES):
            os.close(descriptor)
        self.requests = open(request_write, "w", encoding="ascii", buffering=1)
        self.replies = open(reply_read, encoding="ascii")

    def close(self):
        self.requests.close()
        self.replies.close()
        self.process.wait()

    def run(self, tree, nth, from_then_on):
        place = self.place
        place.prepare(tree)
        paths = (place.run, place.input(self.scenario), place.out, place.err)
        print(nth, int(from_then_on), TIMEOUT_MS, "\t".join(map(str, paths)), file=self.requests)
        reply = self.replies.readline().split()
        if len(reply) != 5:
            raise RuntimeError(f"the fork server of {self.scenario.name} ended with status {self.process.wait()}")
        return place.result(kind=reply[0], number=int(reply[1]), points=int(reply[2]), left_running=int(reply[4]))


def run_traced(place, scenario, tree, calls="", nth=0, error="EIO", repeated=False, closed="", environment=None):
    """One run under fault_run. `calls` is a list of what may fail, separated by commas."""
    place.prepare(tree)
    place.report.unlink(missing_ok=True)
    command = [place.tools.fault_run, "--report", place.report, "--timeout", str(TIMEOUT_MS), "--at", str(nth), "--error", error]
    command += ["--calls", calls] if calls else []
    command += ["--repeated"] if repeated else []
    command += ["--marked"] if scenario.marked else []
    command += ["--closed", closed] if closed else []
    with open(place.input(scenario), "rb") as given, open(place.out, "wb") as out, open(place.err, "wb") as err:
        ended = subprocess.run(command + ["--"] + scenario.command(place.tools), cwd=place.run, check=False, stdin=given,
                               stdout=out, stderr=err, env=place.environment(scenario, **(environment or {})))
    if ended.returncode != 0:
        raise RuntimeError(place.err.read_text(errors="replace").strip())
    return place.result(**_read_report(place.report))


def _read_report(path):
    fields = {"frames": [], "sequence": []}
    for line in path.read_text(encoding="utf-8", errors="replace").splitlines():
        key, _, value = line.partition(" ")
        if key == "end":
            fields["kind"], number = value.split()
            fields["number"] = int(number)
        elif key in ("frame", "call"):
            fields["frames" if key == "frame" else "sequence"].append(value)
        elif key in ("left_running", "calls"):
            fields["points" if key == "calls" else key] = int(value)
        elif key == "hit":
            fields["hit"] = value
    return fields
