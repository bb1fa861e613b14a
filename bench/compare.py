#!/usr/bin/env python3
"""Measures the bundle's figures side by side with their peers, in one run, and prints the ratios.

    python3 bench/compare.py [--build build] [--rounds 5] [--quick]

Every figure is the median of interleaved rounds (this machine's cores are shared and noisy):

- opening the largest page (SystemRoot) in-process, and a reload of it, against libplist's parse
  of its definition (nimbra-bench, Google Benchmark) and Python's plistlib parse of the same file,
  in CPU time;
- peak resident size of `nimbra-prefs script` after 100 and 10,000 reloads, and after 100 and
  10,000 open/back cycles;
- the shipped tour (resources/tour.nps) on a fresh root on tmpfs, wall time;
- the root page and the largest page opened cold, one process each, CPU time;
- resetAll over 10,000 and 100,000 files on tmpfs against `find -iregex ... -delete` on the same tree;
- the storage rows (storage_rows below), on device-like roots (a flat Preferences folder of 2,000
  other files): a value write beside 10,000 other files against the same write in an empty folder;
  resetAll's sweep of a flat folder of 10,000 and 100,000 files against `find -iregex -delete`; a
  value write in a domain of 100,000 keys against one of 10,000 keys and against Python's plistlib
  rewriting the file durably (load, change, dump, fsync, rename); export and import of 100 domains
  of 1,000 keys against `tar -c` and `tar -x` of the same files.

--quick takes 1,000 instead of 10,000 for the memory figures and leaves out the 100,000-file tree.
"""

import argparse
import json
import os
import plistlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent
LARGEST = "NIMSystemRootPrefsListController"
LARGEST_FILE = SOURCE / "resources/pages/System/SystemRoot.plist"
PREFERENCES = "var/mobile/Library/Preferences"
TMPFS = Path("/dev/shm") if Path("/dev/shm").is_dir() else Path(tempfile.gettempdir())


def run(command, stdin_text=""):
    """Runs a command; answers (wall seconds, CPU seconds, peak resident KiB)."""
    start = time.perf_counter()
    child = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                             text=True)
    child.stdin.write(stdin_text)
    child.stdin.close()
    _, status, usage = os.wait4(child.pid, 0)
    wall = time.perf_counter() - start
    errors = child.stderr.read()
    child.stderr.close()
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{' '.join(map(str, command))} failed: {errors}")
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss


class Root:
    """A fresh, seeded installation root on tmpfs."""

    def __init__(self, exe):
        self.path = Path(tempfile.mkdtemp(prefix="nimbra-compare-", dir=TMPFS))
        self.exe = exe
        self.script("")

    def script(self, text):
        return run([self.exe, "--root", self.path, "script"], text)

    def remove(self):
        shutil.rmtree(self.path, ignore_errors=True)


def google_benchmark(bench, names):
    """One run of nimbra-bench over the named benchmarks: name -> CPU seconds per iteration (CPU
    rather than wall time, which on shared cores measures the neighbours too)."""
    pattern = "^(" + "|".join(names) + ")$"
    out = subprocess.run([bench, f"--benchmark_filter={pattern}", "--benchmark_format=json",
                          "--benchmark_min_time=0.2"], check=True, capture_output=True, text=True).stdout
    scale = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    return {b["name"]: b["cpu_time"] * scale[b["time_unit"]] for b in json.loads(out)["benchmarks"]}


def plistlib_parse(data, seconds=0.2):
    """CPU seconds per plistlib parse of data."""
    count, start = 0, time.process_time()
    while time.process_time() - start < seconds:
        plistlib.loads(data)
        count += 1
    return (time.process_time() - start) / count


def make_tree(folder, files):
    """files files below folder, in 100 subfolders; half of them product files that a full reset
    deletes, in mixed letter case."""
    for i in range(files):
        sub = folder / f"d{i % 100:03d}"
        if i < 100:
            sub.mkdir(parents=True, exist_ok=True)
        name = f"com.veltram.nimbraprefs.g{i}.plist" if i % 2 == 0 else f"com.othervendor.tweak{i}.plist"
        if i % 10 == 0:
            name = name.upper()
        (sub / name).write_bytes(b"x")


def reset_all(exe, files):
    """(ours, find): wall seconds of a confirmed resetAll and of find -iregex -delete, each over
    a fresh tree of that many files on tmpfs."""
    root = Root(exe)
    make_tree(root.path / PREFERENCES, files)
    ours, _, _ = root.script("open NIMNimbraSettingsPrefsListController\ncall resetAll\nalert Confirm\n")
    root.remove()
    peer = Path(tempfile.mkdtemp(prefix="nimbra-find-", dir=TMPFS))
    make_tree(peer, files)
    theirs, _, _ = run(["find", peer, "-iregex", ".*veltram.nimbraprefs.*", "-delete"])
    shutil.rmtree(peer, ignore_errors=True)
    return ours, theirs


def fill_flat(folder, count, prefix="com.othervendor.tweak"):
    """count small property lists of other products, flat in folder."""
    folder.mkdir(parents=True, exist_ok=True)
    data = plistlib.dumps({"k": 1}, fmt=plistlib.FMT_BINARY)
    for i in range(count):
        (folder / f"{prefix}{i}.plist").write_bytes(data)


def script_cpu(exe, root, text):
    """CPU seconds of one `script` run."""
    return run([exe, "--root", root, "script"], text)[1]


def write_cost(exe, others, writes=200):
    """CPU seconds of one value write beside `others` other files (the script's start left out)."""
    root = Root(exe)
    fill_flat(root.path / PREFERENCES, others)
    body = "".join(f"write com.veltram.nimbraprefs.misc key{i % 7} {i}\n" for i in range(writes))
    cost = (script_cpu(exe, root.path, body) - script_cpu(exe, root.path, "")) / writes
    root.remove()
    return cost


def big_domain_write(exe, keys, writes=5):
    """(ours, plistlib): CPU seconds of one value write into a domain of `keys` keys, and of
    plistlib's durable rewrite of the same file, on a device-like root."""
    root = Root(exe)
    folder = root.path / PREFERENCES
    fill_flat(folder, 2000)
    domain = folder / "com.veltram.nimbraprefs.misc.plist"
    domain.write_bytes(plistlib.dumps({f"key{i}": i for i in range(keys)}, fmt=plistlib.FMT_BINARY))
    body = "".join(f"write com.veltram.nimbraprefs.misc key{i} -{i + 1}\n" for i in range(writes))
    ours = (script_cpu(exe, root.path, body) - script_cpu(exe, root.path, "")) / writes
    start = time.process_time()
    for i in range(writes):
        values = plistlib.loads(domain.read_bytes())
        values[f"key{i}"] = -(i + 1000)
        temporary = domain.with_name(".plistlib.tmp")
        with open(temporary, "wb") as out:
            plistlib.dump(values, out, fmt=plistlib.FMT_BINARY)
            out.flush()
            os.fsync(out.fileno())
        os.rename(temporary, domain)
    theirs = (time.process_time() - start) / writes
    root.remove()
    return ours, theirs


def flat_reset(exe, files):
    """(ours, find): wall seconds of resetAll's deletions over a flat Preferences folder of that
    many files (the same session cancelling instead is subtracted), and of find -iregex -delete."""
    def tree(folder):
        folder.mkdir(parents=True, exist_ok=True)
        for i in range(files):
            name = f"com.veltram.nimbraprefs.g{i}.plist" if i % 2 == 0 else f"com.othervendor.tweak{i}.plist"
            (folder / (name.upper() if i % 10 == 0 else name)).write_bytes(b"x")
    times = {}
    for answer in ("Cancel", "Confirm"):
        root = Root(exe)
        tree(root.path / PREFERENCES)
        times[answer] = root.script(f"open NIMNimbraSettingsPrefsListController\ncall resetAll\nalert {answer}\n")[0]
        root.remove()
    peer = Path(tempfile.mkdtemp(prefix="nimbra-find-", dir=TMPFS))
    tree(peer)
    theirs = run(["find", peer, "-iregex", ".*veltram.nimbraprefs.*", "-delete"])[0]
    shutil.rmtree(peer, ignore_errors=True)
    return max(times["Confirm"] - times["Cancel"], 0.0), theirs


def backup_costs(exe, domains=100, keys=1000):
    """(export, tar -c, import, tar -x) wall seconds for `domains` domains of `keys` keys on a
    device-like root."""
    root = Root(exe)
    folder = root.path / PREFERENCES
    fill_flat(folder, 2000)
    for d in range(domains):
        values = {f"key{k}": (k if k % 3 == 0 else f"value {k}" if k % 3 == 1 else k / 7) for k in range(keys)}
        (folder / f"com.veltram.nimbraprefs.d{d}.plist").write_bytes(plistlib.dumps(values, fmt=plistlib.FMT_BINARY))
    work = Path(tempfile.mkdtemp(prefix="nimbra-backup-", dir=TMPFS))
    backup = work / "backup.plist"
    export = run([exe, "--root", root.path, "export", backup])[0]
    names = [f"com.veltram.nimbraprefs.d{d}.plist" for d in range(domains)]
    archive = work / "backup.tar"
    tar_c = run(["tar", "-cf", archive, "-C", folder] + names)[0]
    restore = run([exe, "--root", root.path, "import", backup])[0]
    unpacked = work / "unpacked"
    unpacked.mkdir()
    tar_x = run(["tar", "-xf", archive, "-C", unpacked])[0]
    shutil.rmtree(work, ignore_errors=True)
    root.remove()
    return export, tar_c, restore, tar_x


def storage_rows(exe, rounds, quick):
    """The storage rows: (what, ours, peer, ratio, target), medians of interleaved rounds."""
    sweeps = [10000] if quick else [10000, 100000]
    figures = {}
    add = lambda name, value: figures.setdefault(name, []).append(value)
    for _ in range(rounds):
        add("write10000", write_cost(exe, 10000))
        add("write0", write_cost(exe, 0))
        for files in sweeps:
            ours, theirs = flat_reset(exe, files)
            add(f"sweep{files}", ours)
            add(f"find{files}", theirs)
        for keys in (10000, 100000):
            ours, theirs = big_domain_write(exe, keys)
            add(f"keys{keys}", ours)
            add(f"plistlib{keys}", theirs)
        export, tar_c, restore, tar_x = backup_costs(exe)
        add("export", export)
        add("tarc", tar_c)
        add("import", restore)
        add("tarx", tar_x)
    m = {name: statistics.median(values) for name, values in figures.items()}
    ms = lambda s: f"{s * 1e3:,.2f} ms"
    rows = [("write beside 10,000 files (CPU)", ms(m["write10000"]), "in an empty folder " + ms(m["write0"]),
             m["write10000"] / m["write0"], "<= 2")]
    for files in sweeps:
        rows.append((f"resetAll sweep, flat {files:,} files", ms(m[f"sweep{files}"]), "find -delete " + ms(m[f"find{files}"]),
                     m[f"sweep{files}"] / m[f"find{files}"], "<= 1.0"))
    rows += [
        ("write, domain of 100,000 keys (CPU)", ms(m["keys100000"]), "10,000 keys " + ms(m["keys10000"]),
         m["keys100000"] / m["keys10000"], "<= 15"),
        ("write, domain of 100,000 keys (CPU)", ms(m["keys100000"]), "plistlib rewrite " + ms(m["plistlib100000"]),
         m["keys100000"] / m["plistlib100000"], "<= 0.25"),
        ("export 100 domains x 1,000 keys", ms(m["export"]), "tar -c " + ms(m["tarc"]), m["export"] / m["tarc"], "<= 10"),
        ("import 100 domains x 1,000 keys", ms(m["import"]), "tar -x " + ms(m["tarx"]), m["import"] / m["tarx"], "<= 10"),
    ]
    return rows


def peak_memory(exe, body, times):
    """Peak resident KiB of a script session that opens the largest page and repeats body."""
    root = Root(exe)
    text = "open NIMRootListController\nopen " + LARGEST + "\n" + body * times
    _, _, peak = root.script(text)
    root.remove()
    return peak


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default=str(SOURCE / "build"))
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--only", choices=["storage"], help="measure only these rows")
    args = parser.parse_args()
    build = Path(args.build)
    exe, bench = build / "nimbra-prefs", build / "bench" / "nimbra-bench"
    many = 1000 if args.quick else 10000
    trees = [10000] if args.quick else [10000, 100000]
    definition = LARGEST_FILE.read_bytes()

    if args.only == "storage":
        print(f"medians of {args.rounds} interleaved rounds; tmpfs at {TMPFS}")
        for what, ours, peer, ratio, target in storage_rows(exe, args.rounds, args.quick):
            ratio_text = f"{ratio:5.2f}x" if ratio is not None else "      "
            print(f"{what:38} {ours:>14}  {peer:32} {ratio_text}  {target}")
        return

    figures = {}

    def add(name, value):
        figures.setdefault(name, []).append(value)

    for _ in range(args.rounds):
        timings = google_benchmark(bench, ["openPage/systemRoot", "reloadPage", "libplistParse"])
        add("open", timings["openPage/systemRoot"])
        add("reload", timings["reloadPage"])
        add("libplist", timings["libplistParse"])
        add("plistlib", plistlib_parse(definition))

        root = Root(exe)
        add("rootCold", root.script("open NIMRootListController\n")[1])
        add("largestCold", root.script(f"open {LARGEST}\n")[1])
        root.remove()

        tour = Path(tempfile.mkdtemp(prefix="nimbra-tour-", dir=TMPFS))
        add("tour", run([exe, "--root", tour, "script", SOURCE / "resources/tour.nps"])[0])
        shutil.rmtree(tour, ignore_errors=True)

        for files in trees:
            ours, theirs = reset_all(exe, files)
            add(f"reset{files}", ours)
            add(f"find{files}", theirs)

    memory = {
        "reload100": peak_memory(exe, "reload\nevents\n", 100),
        f"reload{many}": peak_memory(exe, "reload\nevents\n", many),
        "cycle100": peak_memory(exe, f"back\nopen {LARGEST}\nevents\n", 100),
        f"cycle{many}": peak_memory(exe, f"back\nopen {LARGEST}\nevents\n", many),
    }

    m = {name: statistics.median(values) for name, values in figures.items()}
    us = lambda s: f"{s * 1e6:,.0f} µs"
    ms = lambda s: f"{s * 1e3:,.1f} ms"
    mib = lambda kib: f"{kib / 1024:,.1f} MiB"
    rows = [
        ("open the largest page in-process", us(m["open"]), "libplist parse " + us(m["libplist"]),
         m["open"] / m["libplist"], "<= 1.5"),
        ("reload of the open page", us(m["reload"]), "libplist parse " + us(m["libplist"]),
         m["reload"] / m["libplist"], "<= 0.1"),
        ("reload of the open page", us(m["reload"]), "plistlib parse " + us(m["plistlib"]),
         m["reload"] / m["plistlib"], ""),
        ("root page cold (CPU)", ms(m["rootCold"]), "largest page cold " + ms(m["largestCold"]),
         m["rootCold"] / m["largestCold"], "<= 1.2"),
        ("tour on tmpfs (wall)", ms(m["tour"]), "", None, "<= 250 ms"),
    ]
    for files in trees:
        rows.append((f"resetAll over {files:,} files", ms(m[f"reset{files}"]), "find -delete " + ms(m[f"find{files}"]),
                     m[f"reset{files}"] / m[f"find{files}"], "<= 1.0"))
    rows += [
        (f"peak RSS after {many:,} reloads", mib(memory[f"reload{many}"]), "after 100: " + mib(memory["reload100"]),
         None, f"+{(memory[f'reload{many}'] - memory['reload100']) / 1024:.1f} MiB (<= 2)"),
        (f"peak RSS after {many:,} open/back", mib(memory[f"cycle{many}"]), "after 100: " + mib(memory["cycle100"]),
         None, f"+{(memory[f'cycle{many}'] - memory['cycle100']) / 1024:.1f} MiB (<= 2)"),
    ]
    rows += storage_rows(exe, args.rounds, args.quick)
    print(f"medians of {args.rounds} interleaved rounds; tmpfs at {TMPFS}")
    for what, ours, peer, ratio, target in rows:
        ratio_text = f"{ratio:5.2f}x" if ratio is not None else "      "
        print(f"{what:38} {ours:>14}  {peer:32} {ratio_text}  {target}")


if __name__ == "__main__":
    main()
