#!/usr/bin/env python3
"""From one machine to many, on one machine: two writers keep entries in files, two shippers deliver them to three NATS servers that keep
each of them three times, and two readers in different languages share them. In the middle of it one server is killed. At the end the
entries that were written are compared with those that were read.

Usage: cluster_demo.py QZLOG_BUILD_DIR [SECONDS]     Ends by itself; exit status 1 if an entry is missing or was shown twice.
"""
import collections
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

SOURCES = pathlib.Path(__file__).resolve().parent.parent / "storage"
STREAM = "ENTRIES"
LANGUAGES = ("en_US", "ja_JP")
PATIENCE = 30.0


def free_ports(count):
    """Ports that nobody has now."""
    sockets = [socket.socket() for _ in range(count)]
    for each in sockets:
        each.bind(("127.0.0.1", 0))
    ports = [each.getsockname()[1] for each in sockets]
    for each in sockets:
        each.close()
    return ports


def wait_for(what, condition, seconds=PATIENCE):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise RuntimeError(f"{what} did not happen within {seconds:.0f} s")
        time.sleep(0.05)


class Cluster:
    """The processes of the demonstration, in a folder of their own; all of them end with it."""

    def __init__(self, build, folder):
        self.folder = folder
        self.qzlog = build / "tools" / "qzlog"
        self.writer = build / "examples" / "storage" / "storage_events"
        self.plugins = next(build.glob("lib*/**/ship-nats.so")).parent
        self.client_ports, self.route_ports = free_ports(3), free_ports(3)
        self.url = "nats://" + ",".join(f"127.0.0.1:{port}" for port in self.client_ports) + "/" + STREAM
        self.running = []
        self.servers = []
        self.shippers = []
        self.readers = []

    def start(self, name, command, **options):
        with open(self.folder / f"{name}.log", "ab") as log:
            process = subprocess.Popen([str(word) for word in command], stdin=subprocess.DEVNULL, stderr=log,
                                       **{"stdout": log, "cwd": self.folder, **options})
        self.running.append(process)
        return process

    def stop(self):
        for process in self.running:
            if process.poll() is None:
                process.kill()
        for process in self.running:
            process.wait()

    def run(self, *command):
        subprocess.run([str(word) for word in command], cwd=self.folder, check=True, stdin=subprocess.DEVNULL)

    def prepare(self):
        for name in ("storage.yaml", "storage_aux.yaml", "sinks.conf"):
            shutil.copy(SOURCES / name, self.folder)
        shutil.copytree(SOURCES / "po", self.folder / "po")
        self.run(self.qzlog, "compile", "storage.yaml", "-o", "storage.ldf")
        self.run(self.qzlog, "compile", "storage_aux.yaml", "--aux-of", "storage.yaml", "-o", "storage_aux.ldf")
        self.run(self.qzlog, "catalog", "build", "storage.yaml", "storage_aux.yaml", "--po", "po", "-o", "messages")

    def start_servers(self):
        routes = ",".join(f"nats://127.0.0.1:{port}" for port in self.route_ports)
        for number, (client, route) in enumerate(zip(self.client_ports, self.route_ports), 1):
            self.servers.append(self.start(f"server{number}", [
                "nats-server", "-a", "127.0.0.1", "-p", client, "-n", f"server{number}", "-js", "-sd", self.folder / f"store{number}",
                "-cluster_name", "demo", "-cluster", f"nats://127.0.0.1:{route}", "-routes", routes]))
        logs = [self.folder / f"server{number}.log" for number in (1, 2, 3)]
        wait_for("the choice of a leader", lambda: any("metadata leader" in log.read_text(errors="replace") for log in logs))

    def start_writer(self, number):
        """One product, which logs a while and ends; the loop lets it start again until it is enough."""
        folder = self.folder / f"machine{number}"
        (folder / "logs").mkdir(parents=True)
        settings = (self.folder / "sinks.conf").read_text()
        (folder / "sinks.conf").write_text(settings.replace("keep_files = 50", "keep_files = 100000"))
        script = 'while test ! -e "$1/enough"; do "$0" keep "$1" sinks.conf || exit 1; done'
        return self.start(f"writer{number}", ["sh", "-c", script, self.writer, self.folder], cwd=folder)

    def start_shipper(self, number):
        self.shippers.append(self.start(f"shipper{number}", [
            self.qzlog, "ship", f"machine{number}/logs", "--to", self.url, "--plugins", self.plugins, "--product", "storage",
            "--option", "create=yes", "--option", "replicas=3", "--state", f"ship{number}.json", "--metrics", f"metrics{number}.json"]))

    def start_reader(self, language):
        output = open(self.folder / f"read.{language}.txt", "wb")
        with output:
            self.readers.append(self.start(f"reader.{language}", [
                self.qzlog, "render", "--from", self.url, "--plugins", self.plugins, "--group", "readers", "--follow", "--unique",
                "--definitions", "storage.ldf", "--aux", "storage_aux.ldf", "--catalog", "messages", "--locale", language,
                "--format", "{writer}/{seq}\t{message}"], stdout=output))

    def written(self):
        """The identities in the files of the writers."""
        identities = []
        for file in sorted(self.folder.glob("machine*/logs/storage.*")):
            for line in file.read_text().splitlines():
                entry = json.loads(line)
                identities.append(f"{entry['writer']}/{entry['seq']}")
        return identities

    def read(self, language):
        lines = (self.folder / f"read.{language}.txt").read_text().splitlines()
        return [line.partition("\t") for line in lines]

    def read_count(self):
        return sum(len(self.read(language)) for language in LANGUAGES)


def say(text):
    print(f"# {text}", flush=True)


def report(cluster):
    """Whether every entry was read exactly once, of which the figures are printed."""
    written = cluster.written()
    counts = collections.Counter()
    for language in LANGUAGES:
        lines = cluster.read(language)
        counts.update(identity for identity, _, _ in lines)
        print(f"{len(lines):6} read in {language}, such as: {lines[-1][2] if lines else '-'}")
    missing = set(written) - set(counts)
    strange = set(counts) - set(written)
    doubles = sum(count - 1 for count in counts.values())
    print(f"{len(written):6} written, {len(missing)} not read, {doubles} read twice, {len(strange)} read that nobody wrote")
    for number in (1, 2):
        metrics = json.loads((cluster.folder / f"metrics{number}.json").read_text())
        print(f"       shipper {number}: {metrics['acknowledged']} acknowledged, {metrics['sent_again']} sent again, "
              f"{metrics['doubles']} dropped by the stream as doubles, {metrics['failures']} failures")
    is_right = bool(written) and len(set(written)) == len(written) and not missing and not doubles and not strange
    print("Every entry was read exactly once." if is_right else "That is wrong.")
    return is_right


def play(cluster, seconds):
    say("Definitions are compiled, and messages built as their translators wrote them.")
    cluster.prepare()
    say(f"Three servers: {cluster.url}")
    cluster.start_servers()
    say("Two machines with a writer and a shipper each; the first shipper makes the stream, with three replicas.")
    writers = [cluster.start_writer(number) for number in (1, 2)]
    for number in (1, 2):
        cluster.start_shipper(number)
        state = cluster.folder / f"ship{number}.json"
        wait_for(f"the first delivery of shipper {number}", lambda: state.exists() and '"offset"' in state.read_text())
    say("Two readers, who share the entries: one reads English, the other Japanese.")
    for language in LANGUAGES:
        cluster.start_reader(language)
    wait_for("the first messages", lambda: cluster.read_count() > 0)
    time.sleep(seconds / 2)
    say(f"Server 2 is killed, after {cluster.read_count()} messages.")
    cluster.servers[1].kill()
    time.sleep(seconds / 2)
    (cluster.folder / "enough").touch()
    for writer in writers:
        if writer.wait(PATIENCE) != 0:
            raise RuntimeError(f"a writer failed: {cluster.folder}")
    count = len(cluster.written())
    say(f"The writers have ended, with {count} entries. The rest is delivered and read.")
    wait_for(f"reading {count} entries", lambda: cluster.read_count() >= count)
    time.sleep(1)  # for what comes twice
    for process in cluster.shippers + cluster.readers:
        process.send_signal(signal.SIGTERM)
    for process in cluster.shippers + cluster.readers:
        process.wait(PATIENCE)
    return report(cluster)


def main():
    if len(sys.argv) not in (2, 3):
        print(__doc__, file=sys.stderr)
        return 2
    build = pathlib.Path(sys.argv[1]).resolve()
    folder = pathlib.Path(tempfile.mkdtemp(prefix="qzlog-cluster-"))
    cluster = Cluster(build, folder)
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    is_right = False
    try:
        is_right = play(cluster, float(sys.argv[2]) if len(sys.argv) == 3 else 12.0)
        return 0 if is_right else 1
    except KeyboardInterrupt:
        is_right = True
        return 130
    except RuntimeError as error:
        print(f"cluster_demo.py: {error}", file=sys.stderr)
        return 1
    finally:
        cluster.stop()
        if is_right:
            shutil.rmtree(folder)
        else:
            print(f"What there is of it stands in {folder}", file=sys.stderr)


if __name__ == "__main__":
    sys.exit(main())
