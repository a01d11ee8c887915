#!/usr/bin/env python3
"""Measures the programs beside their peers, all in one run on this machine, and prints the tables.

    scripts/benchmarks.py [--runs N] [--quick] [--fragmented] [--write]

    --runs N   how often each pair is run (5)
    --quick    small inputs, to try the script itself
    --fragmented  has the memory in small pieces first, as on a machine that has run for long
    --write    puts the tables in place of those in docs/benchmarks.md

Builds the preset "bench" and installs the peers that are missing (Debian packages). Whole processes are timed in turn,
ours and the peer's, with the files in the cache; a ratio is taken from each pair (below 1: we are faster), and its
median, least and greatest value are given. QUORIL_REAL_DATA names a folder with System.evtx.xz; the other inputs are made.
"""

import argparse
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BIN = ROOT / "build/bench/bin"
PEERS = {"lnav": "lnav", "evtxexport": "libevtx-utils", "evtexport": "libevt-utils", "hivexml": "libhivex-bin"}
TARGETS = ["quorilctl", "load_emulator_log", "make_event_log", "write_report", "panel", "window", "bench_catalogue", "bench_regf"]


def prepare():
    missing = [package for program, package in PEERS.items()
               if subprocess.run(["which", program], stdout=subprocess.DEVNULL).returncode != 0]
    if missing:
        root = [] if os.geteuid() == 0 else ["sudo"]
        subprocess.run([*root, "apt-get", "install", "-y", "-qq", "--no-install-recommends", *missing],
                       check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--preset", "bench", "-Wno-dev"], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", "--preset", "bench", "--target", *TARGETS], cwd=ROOT, check=True,
                   stdout=subprocess.DEVNULL)


class Run:
    """One process: wall seconds, processor seconds, peak memory in bytes."""

    def __init__(self, command):
        begin = time.perf_counter()
        process = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        self.wall = time.perf_counter() - begin
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            sys.exit(f"exit code {process.returncode}: {command}")
        self.processor = usage.ru_utime + usage.ru_stime
        self.memory = usage.ru_maxrss * 1024


def spread(values, digits=2):
    return f"{statistics.median(values):.{digits}f} ({min(values):.{digits}f} to {max(values):.{digits}f})"


class Report:
    """The tables, printed as they grow."""

    def __init__(self, runs):
        self.runs = runs
        self.lines = []

    def line(self, text=""):
        print(text, flush=True)
        self.lines.append(text)

    def table(self, title, *columns):
        self.line(f"\n### {title}\n")
        self.line("| " + " | ".join(columns) + " |")
        self.line("|---" * len(columns) + "|")

    def row(self, *cells):
        self.line("| " + " | ".join(str(cell) for cell in cells) + " |")

    def paired_table(self, title):
        self.table(title, "ours", "peer", "input", "ours, ms", "peer, ms", "ratio", "ratio of processor time",
                   "our peak, MB")

    def pair(self, name, ours, peer_name, peer, what):
        """A row for two commands over the same input; the median wall time of ours in seconds."""
        Run(ours), Run(peer)  # fills the cache
        both = [(Run(ours), Run(peer)) for _ in range(self.runs)]
        wall = statistics.median(a.wall for a, _ in both)
        self.row(f"`{name}`", f"`{peer_name}`", what, f"{wall * 1000:.1f}",
                 f"{statistics.median(b.wall for _, b in both) * 1000:.1f}",
                 spread([a.wall / b.wall for a, b in both]),
                 f"{statistics.median(a.processor / max(b.processor, 0.001) for a, b in both):.2f}",
                 f"{statistics.median(a.memory for a, _ in both) / 2**20:.0f}")
        return wall

    def growth(self, name, times):
        """How time grew with size, from {size: seconds}."""
        sizes = sorted(times)
        for small, large in zip(sizes, sizes[1:]):
            self.line(f"\n`{name}`: {large / small:.1f} times the input took {times[large] / times[small]:.1f} times as long.")


def instances_text(path, count):
    """A .reg text of so many instances with settings and devices."""
    with open(path, "w", encoding="utf-16", newline="") as out:
        out.write("Windows Registry Editor Version 5.00\r\n")
        for i in range(count):
            key = f"HKEY_LOCAL_MACHINE\\SYSTEM\\ControlSet001\\Services\\BENCH{i:05d}"
            lines = [f"[{key}]", '"Group"="TargetPlatformEmulator"', '"ImagePath"="C:\\\\q\\\\emulator.exe"',
                     '"Type"=dword:00000010', '"Start"=dword:00000003',
                     f"[{key}\\Parameters]", '"TargetPlatformEmulator"="quoril_64"', '"Home"="C:\\\\q"']
            for setting in ("session\\log", "ram\\size", "cpu\\ace_enable", "rom\\container", "toy\\container"):
                lines += [f"[{key}\\Parameters\\{setting}\\0]", '"Value"="setting.txt"']
            for device in ("pka_0", "pkb_0", "dua", "xqa"):
                lines += [f"[{key}\\Parameters\\{device}]", '"Class"="virtual_scsi_disk"']
                for unit in range(4):
                    lines += [f"[{key}\\Parameters\\{device}\\container\\{unit}]", '"Value"="C:\\\\disk.vdisk"']
            out.write("\r\n" + "\r\n".join(lines) + "\r\n")


def measure_start(report):
    report.paired_table("Start of a process")
    report.pair("quorilctl --help", [BIN / "quorilctl", "--help"], "bash --version", ["bash", "--version"], "")


def measure_emulator_logs(report, folder, sizes):
    report.paired_table("Emulator log")
    loads, summaries = {}, {}
    log, narrow = folder / "emulator.log", folder / "narrow.log"
    for size in sizes:
        subprocess.run([ROOT / "bench/make_emulator_log.py", log, str(size)], check=True)
        # lnav knows no 16-bit text, so it gets the same lines in 8 bits and half the bytes.
        with open(narrow, "wb") as out:
            subprocess.run(["iconv", "-f", "UTF-16LE", "-t", "UTF-8", log], check=True, stdout=out)
        load, what = [BIN / "load_emulator_log", log], f"{size} MB"
        summary = [BIN / "quorilctl", "log", "--summary", log]
        loads[size] = report.pair("load_emulator_log", load, "wc -l", ["wc", "-l", log], what)
        summaries[size] = report.pair("quorilctl log --summary", summary, "wc -l", ["wc", "-l", log], what)
        report.pair("load_emulator_log --last-run", [*load, "--last-run"], "wc -l", ["wc", "-l", log], what)
        iconv = ["iconv", "-f", "UTF-16LE", "-t", "UTF-8", log]
        report.pair("quorilctl log", [BIN / "quorilctl", "log", log], "iconv", iconv, what)
        report.pair("quorilctl log --json", [BIN / "quorilctl", "log", "--json", log], "iconv", iconv, what)
        report.pair("load_emulator_log", load, "lnav -n", ["lnav", "-n", "-q", "-c", ":filter-in started", narrow], what)
    report.growth("load_emulator_log", loads)
    report.growth("quorilctl log --summary", summaries)


def measure_last_run(report, folder, megabytes):
    """The same run alone in its file, after a log of years, and after a sparse file; each on a machine of its own."""
    report.paired_table("Last run of 1 MB")
    run, years = folder / "run.log", folder / "years.log"
    subprocess.run([ROOT / "bench/make_emulator_log.py", run, "2"], check=True)
    content = run.read_bytes()[:1_000_000]
    subprocess.run([ROOT / "bench/make_emulator_log.py", years, str(megabytes)], check=True)
    logs = {}
    for name in ("alone", "years", "sparse"):
        machine = folder / f"last-{name}"
        subprocess.run([BIN / "quorilctl", "machine", "create", machine], check=True, stdout=subprocess.DEVNULL)
        log = machine / "Emulators/Ceres/ceres.log"
        log.unlink()
        if name == "years":
            years.rename(log)
        with open(log, "ab") as out:
            if name == "sparse":
                out.truncate(20 * megabytes * 1_000_000)
                out.seek(0, os.SEEK_END)
                out.write("\r\n".encode("utf-16-le"))
            out.write(content)
        logs[name] = (log, [BIN / "quorilctl", "--machine", machine, "logs", "CERES"])
    for name, what in (("years", f"after {megabytes} MB"), ("sparse", f"after {20 * megabytes} MB, sparse")):
        log, command = logs[name]
        report.pair("quorilctl logs", command, "quorilctl logs of the run alone", logs["alone"][1], what)
        load = [BIN / "load_emulator_log", "--last-run"]
        report.pair("load_emulator_log --last-run", [*load, log], "the run alone", [*load, logs["alone"][0]], what)
    log, command = logs["years"]
    report.pair("quorilctl logs --list-runs", [*command, "--list-runs"], "wc -l", ["wc", "-l", log], f"{megabytes} MB")


def fragment(folder):
    """Leaves memory in pieces: the page cache is filled and every second 64 kB of it given back."""
    piece, step = 64 * 1024, 1 << 24
    available = int(re.search(r"MemAvailable:\s*(\d+)", Path("/proc/meminfo").read_text())[1]) * 1024
    size = min(available * 9 // 10, os.statvfs(folder).f_bavail * os.statvfs(folder).f_frsize // 2)
    file = os.open(folder / "filler", os.O_RDWR | os.O_CREAT)
    for offset in range(0, size, step):
        os.pwrite(file, bytes(step), offset)
    os.fsync(file)
    for offset in range(0, size, 2 * piece):
        os.posix_fadvise(file, offset, piece, os.POSIX_FADV_DONTNEED)
    os.close(file)


def measure_event_logs(report, folder, counts):
    report.paired_table("Event logs")
    times = {}
    for count in counts:
        log = folder / "made.evt"
        subprocess.run([BIN / "make_event_log", log, str(count)], check=True)
        times[count] = report.pair("quorilctl events --summary", [BIN / "quorilctl", "events", "--summary", log],
                                   "evtexport", ["evtexport", log], f"{count} events, .evt")
    if real := os.environ.get("QUORIL_REAL_DATA"):
        log = folder / "System.evtx"
        with open(log, "wb") as out:
            subprocess.run(["xz", "-dc", Path(real) / "System.evtx.xz"], check=True, stdout=out)
        for name in ("events --summary", "--json events"):
            report.pair("quorilctl " + name, [BIN / "quorilctl", *name.split(), log], "evtxexport", ["evtxexport", log],
                        "real System.evtx")
    report.growth("quorilctl events --summary", times)


def measure_machines(report, folder, counts):
    report.paired_table("Machine with many instances")
    times = {}
    for count in counts:
        machine, text = folder / f"machine{count}", folder / "instances.reg"
        instances_text(text, count)
        subprocess.run([BIN / "quorilctl", "machine", "create", machine], check=True, stdout=subprocess.DEVNULL)
        subprocess.run([BIN / "quorilctl", "--machine", machine, "machine", "import", text], check=True,
                       stdout=subprocess.DEVNULL)
        hive = machine / "Windows/System32/config/SYSTEM"
        times[count] = report.pair("quorilctl list", [BIN / "quorilctl", "--machine", machine, "list"], "hivexml",
                                   ["hivexml", hive], f"{count} instances with devices")
        report.pair("window", [BIN / "window", machine], "an empty window", [BIN / "window"],
                    f"{count} instances with devices")
        report.pair("quorilctl status", [BIN / "quorilctl", "--machine", machine, "status"], "hivexml",
                    ["hivexml", hive], f"{count} services")
    report.growth("quorilctl list", times)


def measure_reports(report, folder, sizes):
    report.paired_table("Problem report")
    times = {}
    for megabytes, keys in sizes:
        machine = folder / f"report{megabytes}"
        subprocess.run([BIN / "write_report", "make", machine, str(keys)], check=True)
        log = machine / "emulator.log"
        subprocess.run([ROOT / "bench/make_emulator_log.py", log, str(megabytes)], check=True)
        copy = ["sh", "-c", 'cat "$1" >"$1.copy"', "sh", log]
        times[megabytes] = report.pair("write_report", [BIN / "write_report", machine], "cat of the log to a file", copy,
                                       f"log of {megabytes} MB, {keys} keys")
        log.unlink(), Path(f"{log}.copy").unlink()
    report.growth("write_report", times)


def measure_panel(report, folder, megabytes):
    """The panel prints its own figures, a text with numbers in it for each."""
    subprocess.run([ROOT / "bench/make_emulator_log.py", folder / "panel.log", str(megabytes)], check=True)
    figures = {}
    for _ in range(report.runs):
        output = subprocess.run([BIN / "panel", folder], check=True, capture_output=True, text=True).stdout
        for line in output.splitlines():
            name, number, unit = re.match(r"(.*?) ?(-?\d[\d.]*) ?(.*)", line).groups()
            figures.setdefault(f"{name}, {unit}" if name else unit, []).append(float(number))
    report.table("Panel of an emulator log, off screen", "figure", "median (least to greatest)")
    for name, values in figures.items():
        report.row(name, spread(values, 1))


def measure_inside(report, program, only):
    """Cases of Google Benchmark, which measure without the start of a process."""
    output = subprocess.run([BIN / program, f"--benchmark_filter={only}", f"--benchmark_repetitions={report.runs}",
                             "--benchmark_format=json"], check=True, capture_output=True, text=True).stdout
    cases = {}
    for case in json.loads(output)["benchmarks"]:
        if case["run_type"] == "iteration":
            scale = {"ns": 1e-6, "us": 1e-3, "ms": 1}[case["time_unit"]]
            cases.setdefault(case["run_name"], []).append(case["real_time"] * scale)
    for name, values in cases.items():
        short = max(values) < 0.1
        report.row(f"`{name}`", f"{spread([value * 1000 for value in values])} µs" if short else f"{spread(values)} ms")


def write_document(lines):
    document = ROOT / "docs/benchmarks.md"
    begin, end = "<!-- figures: scripts/benchmarks.py --write -->", "<!-- end of figures -->"
    head, rest = document.read_text().split(begin)
    document.write_text(head + begin + "\n" + "\n".join(lines) + "\n\n" + end + rest.split(end)[1])


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--fragmented", action="store_true")
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    prepare()
    report = Report(arguments.runs)
    quick = arguments.quick
    model = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())
    load = " ".join(f"{value:.1f}" for value in os.getloadavg())
    report.line(f"{time.strftime('%Y-%m-%d')}, {os.cpu_count()} processors ({model[1] if model else 'unknown'}), load before "
                f"the run {load}, {arguments.runs} pairs each"
                f"{', memory in small pieces' if arguments.fragmented else ''}.")
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        os.environ["XDG_RUNTIME_DIR"] = name
        if arguments.fragmented:
            fragment(folder)
        measure_start(report)
        measure_last_run(report, folder, 20 if quick else 1000)
        measure_emulator_logs(report, folder, (10, 30) if quick else (100, 300, 1000))
        measure_event_logs(report, folder, (1000, 10000) if quick else (10000, 100000))
        measure_machines(report, folder, (100, 1000) if quick else (1000, 10000))
        measure_reports(report, folder, ((10, 1000),) if quick else ((100, 10000), (1000, 100000)))
        measure_panel(report, folder, 20 if quick else 206)
    report.table("Inside the process", "case", "median (least to greatest)")
    measure_inside(report, "bench_catalogue", "1000(/|$)" if quick else ".")
    measure_inside(report, "bench_regf", "1000(/|$)" if quick else ".")
    report.line(f"\nLoad after the run: {' '.join(f'{value:.1f}' for value in os.getloadavg())}.")
    if arguments.write:
        write_document(report.lines)


main()
