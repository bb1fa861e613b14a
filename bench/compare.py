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
- the hosts on a device-like root (300 apps, a flat Preferences folder of 2,000 files): `script`
  start to its first JSON against a C program that parses the largest definition with libplist;
  `serve` start to its first /api/state against `script` start; a `set` with 32 clients at once
  (p99) against 32 x the p50 of one client; `serve`'s resident size with 32 sessions against after
  start; `script` after 10,000 reloads whose events nobody reads against the same with `events`
  read; the app picker's `rows` with 3,000 apps all chosen against none chosen.
- the page application in headless Chromium (browser_rows below), when Chromium, node and
  playwright-core are there (else the rows say why they were skipped): the first screen of a fresh
  tab against the same page without its module preload links, and a switch tap from the click to
  the frame painted with its answer against one frame of a 60 Hz display.

--quick takes 1,000 instead of 10,000 for the memory figures, leaves out the 100,000-file tree and
takes fewer browser runs. --only storage or --only browser measures only those rows.
"""

import argparse
import http.client
import json
import os
import re
import socket
import struct
import threading
import zlib
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


# The hosts at a device's scale.

DEVICE_APPS = 300
DEVICE_FILES = 2000
C_PARSE = r"""
#include <plist/plist.h>
#include <stdio.h>
#include <stdlib.h>
int main(int argc, char** argv) {
    FILE* f = fopen(argv[1], "rb");
    if (!f) return 2;
    fseek(f, 0, SEEK_END); long n = ftell(f); fseek(f, 0, SEEK_SET);
    char* data = malloc(n); if (fread(data, 1, n, f) != (size_t)n) return 2;
    plist_t root = NULL; plist_from_xml(data, (uint32_t)n, &root);
    puts(root ? "{}" : "null"); fflush(stdout);
    plist_free(root); free(data); fclose(f);
    return 0;
}
"""


def device_root(exe, apps=DEVICE_APPS, files=DEVICE_FILES):
    """A seeded root with apps installed apps and a flat Preferences folder of files files."""
    root = Root(exe)
    installed = root.path / ".rootfs/var/mobile/Library/MobileInstallation/InstalledApplications.plist"
    installed.parent.mkdir(parents=True, exist_ok=True)
    installed.write_bytes(plistlib.dumps([{"CFBundleIdentifier": f"com.vendor.app{i:04d}", "CFBundleDisplayName": f"App {i:04d}"}
                                          for i in range(apps)]))
    folder = root.path / PREFERENCES
    folder.mkdir(parents=True, exist_ok=True)
    for i in range(files):
        (folder / f"com.othervendor.tweak{i}.plist").write_bytes(plistlib.dumps({"enabled": True}))
    return root


def first_line_seconds(command, stdin_text=""):
    """Wall seconds from starting command to its first line of standard output."""
    start = time.perf_counter()
    child = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    child.stdin.write(stdin_text)
    child.stdin.close()
    child.stdout.readline()
    seconds = time.perf_counter() - start
    child.stdout.read()
    child.wait()
    return seconds


class Serve:
    """`nimbra-prefs serve --port 0` on a root, stopped with stop()."""

    def __init__(self, exe, root):
        self.start = time.perf_counter()
        self.child = subprocess.Popen([exe, "--root", root, "serve", "--port", "0"], stdout=subprocess.PIPE,
                                      stderr=subprocess.DEVNULL, text=True)
        line = self.child.stdout.readline()
        self.port = int(re.search(r"127\.0\.0\.1:(\d+)/", line).group(1))

    def request(self, method, path, body=None, session=None, connection=None):
        own = connection is None
        connection = connection or http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        headers = {"Host": f"127.0.0.1:{self.port}"}
        if body is not None:
            headers["Content-Type"] = "application/json"
        if session:
            headers["X-Nimbra-Session"] = session
        connection.request(method, path, json.dumps(body) if body is not None else None, headers)
        answer = connection.getresponse()
        data = answer.read()
        if own:
            connection.close()
        return answer.status, data

    def resident_kib(self, field="VmRSS"):
        for line in Path(f"/proc/{self.child.pid}/status").read_text().splitlines():
            if line.startswith(field + ":"):
                return int(line.split()[1])
        return 0

    def stop(self):
        self.child.terminate()
        self.child.wait()


def serve_start(exe, root):
    """Wall seconds from starting serve to its first /api/state answered."""
    server = Serve(exe, root)
    server.request("GET", "/api/state")
    seconds = time.perf_counter() - server.start
    server.stop()
    return seconds


def concurrent_sets(exe, root, clients, each=20):
    """Wall seconds of each `set` (a switch flip in a tab's own session, kept-alive connection) with
    clients tabs flipping at once: all the times, pooled."""
    server = Serve(exe, root)
    times, lock = [], threading.Lock()

    def tab(n):
        session = f"bench-tab-{n:04d}"
        connection = http.client.HTTPConnection("127.0.0.1", server.port, timeout=60)
        server.request("POST", "/api/session", {"id": session}, session, connection)
        server.request("POST", "/api/open", {"class": "NIMBatteryLineColorsPrefsListController"}, session, connection)
        mine = []
        for i in range(each):
            start = time.perf_counter()
            server.request("POST", "/api/set", {"key": "lpmColorEnabled", "value": i % 2 == 0}, session, connection)
            mine.append(time.perf_counter() - start)
        with lock:
            times.extend(mine)

    threads = [threading.Thread(target=tab, args=(n,)) for n in range(clients)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    server.stop()
    return sorted(times)


def percentile(values, fraction):
    return values[min(len(values) - 1, int(fraction * len(values)))]


def serve_memory(exe, root, sessions=32):
    """serve's resident KiB after start and with sessions tabs open, each on the largest page."""
    server = Serve(exe, root)
    server.request("GET", "/api/state")
    after_start = server.resident_kib()
    for n in range(sessions):
        session = f"bench-mem-{n:04d}"
        server.request("POST", "/api/session", {"id": session}, session)
        server.request("POST", "/api/open", {"class": LARGEST}, session)
    loaded = server.resident_kib()
    server.stop()
    return after_start, loaded


def picker_rows(exe, chosen, apps=3000):
    """CPU seconds of `rows` in the app picker of apps installed apps with chosen of them chosen."""
    root = device_root(exe, apps=apps, files=0)
    store = root.path / PREFERENCES / "com.veltram.nimbraprefs.batteryline.blackListedApps.plist"
    store.write_bytes(plistlib.dumps({"blackListedApps": [f"com.vendor.app{i:04d}" for i in range(chosen)]}))
    opening = ("open NIMBatteryLineVisibilityPrefsListController\nset visibility 2\nset enableBlackListedApps true\n"
               "tap topLevelChild8Child\n")
    base = root.script(opening)[1]
    drawn = root.script(opening + "rows\n" * 10)[1]
    root.remove()
    return (drawn - base) / 10


def idle_connections(exe, root, count=1000, requests=20):
    """Wall seconds of each GET /api/state beside count idle connections (sorted)."""
    import resource
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    want = count + 256
    if soft < want and (hard == resource.RLIM_INFINITY or hard >= want):
        resource.setrlimit(resource.RLIMIT_NOFILE, (want, hard))
    server = Serve(exe, root)
    idle = [socket.create_connection(("127.0.0.1", server.port)) for _ in range(count)]
    times = []
    for _ in range(requests):
        start = time.perf_counter()
        server.request("GET", "/api/state")
        times.append(time.perf_counter() - start)
    for connection in idle:
        connection.close()
    server.stop()
    return sorted(times)


# What an 8192 x 8192 picture's pixels take decoded (8-bit RGBA), in KiB.
PICTURE_PIXEL_KIB = 8192 * 8192 * 4 // 1024


def png(width, height):
    """A PNG of one colour, width x height pixels (small: it compresses to almost nothing)."""
    row = b"\x00" + bytes([90, 140, 200]) * width
    chunk = lambda kind, data: (struct.pack(">I", len(data)) + kind + data +
                                struct.pack(">I", zlib.crc32(kind + data) & 0xffffffff))
    # Row by row: the raw pixels never sit in this process's memory (its children would count them).
    compressor = zlib.compressobj(9)
    compressed = b"".join(compressor.compress(row) for _ in range(height)) + compressor.flush()
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
            chunk(b"IDAT", compressed) + chunk(b"IEND", b""))


def beside_a_big_picture(exe, root, side=8192):
    """While one tab uploads a side x side picture: the wall seconds of each `set` of another tab
    (sorted), the upload's own wall seconds, and serve's peak resident KiB (VmHWM) once it is stored."""
    picture = png(side, side)
    server = Serve(exe, root)
    painter, other = "bench-painter", "bench-other1"
    for session in (painter, other):
        server.request("POST", "/api/session", {"id": session}, session)
    server.request("POST", "/api/open", {"class": "NIMControlCenterRootPrefsListController"}, painter)
    server.request("POST", "/api/set", {"key": "enabled", "value": True}, painter)
    server.request("POST", "/api/set", {"key": "backgroundStyle", "value": 2}, painter)
    server.request("POST", "/api/tap", {"id": "backgroundImageChild1"}, painter)
    upload = {}

    def send():
        connection = http.client.HTTPConnection("127.0.0.1", server.port, timeout=300)
        start = time.perf_counter()
        connection.request("POST", "/api/image", picture, {"Host": f"127.0.0.1:{server.port}", "Content-Type": "image/png",
                                                           "X-Nimbra-Session": painter})
        connection.getresponse().read()
        upload["seconds"] = time.perf_counter() - start
        connection.close()

    thread = threading.Thread(target=send)
    thread.start()
    times = []
    connection = http.client.HTTPConnection("127.0.0.1", server.port, timeout=60)
    while thread.is_alive():
        start = time.perf_counter()
        server.request("POST", "/api/set", {"key": "nimbraEnabled", "value": len(times) % 2 == 0}, other, connection)
        times.append(time.perf_counter() - start)
    thread.join()
    peak = server.resident_kib("VmHWM")
    server.stop()
    return sorted(times), upload["seconds"], peak


def host_figures(exe, rounds, add):
    """The hosts' rows, measured in interleaved rounds into add(name, value)."""
    cc = shutil.which("cc")
    parser = None
    if cc:
        parser = Path(tempfile.mkdtemp(prefix="nimbra-cparse-", dir=TMPFS)) / "parse"
        source = parser.with_suffix(".c")
        source.write_text(C_PARSE)
        flags = subprocess.run(["pkg-config", "--cflags", "--libs", "libplist-2.0"], capture_output=True, text=True).stdout.split()
        subprocess.run([cc, "-O2", source, "-o", parser, *flags], check=True)
    for _ in range(rounds):
        root = device_root(exe)
        add("scriptStart", first_line_seconds([exe, "--root", root.path, "script"], "show\n"))
        if parser:
            add("cParse", first_line_seconds([parser, LARGEST_FILE]))
        add("serveStart", serve_start(exe, root.path))
        one = concurrent_sets(exe, root.path, 1, each=60)
        many = concurrent_sets(exe, root.path, 32)
        add("setP50one", percentile(one, 0.5))
        add("setP99many", percentile(many, 0.99))
        beside = idle_connections(exe, root.path)
        add("idleP50", percentile(beside, 0.5))
        add("idleWorst", beside[-1])
        others, upload, peak = beside_a_big_picture(exe, root.path)
        add("picturePeak", peak)
        add("pictureOtherP99", percentile(others, 0.99))
        add("pictureOtherWorst", others[-1])
        add("pictureUpload", upload)
        start_kib, loaded_kib = serve_memory(exe, root.path)
        add("serveRssStart", start_kib)
        add("serveRss32", loaded_kib)
        root.remove()
        add("pickerNone", picker_rows(exe, 0))
        add("pickerAll", picker_rows(exe, 3000))
    if parser:
        shutil.rmtree(parser.parent, ignore_errors=True)


def host_rows(m, memory, many):
    ms = lambda s: f"{s * 1e3:,.1f} ms"
    mib = lambda kib: f"{kib / 1024:,.1f} MiB"
    rows = []
    if "cParse" in m:
        rows.append(("script start to first JSON", ms(m["scriptStart"]), "C libplist parse " + ms(m["cParse"]),
                     m["scriptStart"] / m["cParse"], "<= 3"))
    rows += [
        ("serve start to first /api/state", ms(m["serveStart"]), "script start " + ms(m["scriptStart"]),
         m["serveStart"] / m["scriptStart"], "<= 1.5"),
        ("set p99, 32 clients at once", ms(m["setP99many"]), "32 x p50 of one " + ms(32 * m["setP50one"]),
         m["setP99many"] / (32 * m["setP50one"]), "<= 2"),
        ("GET beside 1,000 idle connections, worst", ms(m["idleWorst"]), "p50 " + ms(m["idleP50"]), None, "<= 100 ms"),
        ("other tab's set, 8192x8192 upload, p99", ms(m["pictureOtherP99"]),
         f"worst {ms(m['pictureOtherWorst'])}; upload {m['pictureUpload']:.1f} s", None, "<= 50 ms"),
        ("peak RSS of an 8192x8192 upload", mib(m["picturePeak"]), "decoded pixels " + mib(PICTURE_PIXEL_KIB),
         m["picturePeak"] / PICTURE_PIXEL_KIB, "<= 1.25"),
        ("serve RSS with 32 sessions", mib(m["serveRss32"]), "after start " + mib(m["serveRssStart"]),
         m["serveRss32"] / m["serveRssStart"], "<= 2"),
        (f"script RSS, {many:,} reloads, events unread", mib(memory[f"unread{many}"]),
         "events read " + mib(memory[f"reload{many}"]), memory[f"unread{many}"] / memory[f"reload{many}"], "<= 2"),
        ("app picker rows, 3,000 apps all chosen", ms(m["pickerAll"]), "none chosen " + ms(m["pickerNone"]),
         m["pickerAll"] / m["pickerNone"], "<= 2"),
    ]
    return rows


CHROMIUM = Path(os.environ.get("NIMBRA_CHROMIUM", "/usr/bin/chromium"))
FRAME_MS = 1000 / 60


def browser_missing():
    """Why the browser rows cannot be measured on this machine, or None."""
    if not CHROMIUM.exists():
        return f"no Chromium at {CHROMIUM}"
    if not shutil.which("node"):
        return "no node"
    if not (SOURCE / "node_modules" / "playwright-core").is_dir():
        return "no playwright-core (bash scripts/bootstrap.sh)"
    return None


def browser_bench(exe, script, count):
    """The raw times of a browser benchmark of bench/ (its --json line)."""
    done = subprocess.run(["node", str(SOURCE / "bench" / script), str(count), "--json"], cwd=SOURCE,
                          env={**os.environ, "NIMBRA_PREFS_EXE": str(exe)}, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"bench/{script} failed: {done.stdout}{done.stderr}")
    return json.loads(done.stdout.strip().splitlines()[-1])


def browser_rows(exe, quick):
    """The page application in headless Chromium at 1440 x 900, each benchmark interleaving its own
    runs: a fresh tab's first screen (bench/first-screen.mjs) and a switch tap (bench/switch-tap.mjs)."""
    missing = browser_missing()
    if missing:
        return [("browser rows", "skipped", missing, None, "")]
    first = browser_bench(exe, "first-screen.mjs", 10 if quick else 25)
    tap = browser_bench(exe, "switch-tap.mjs", 60 if quick else 200)
    ms = lambda value: f"{value:,.1f} ms"
    at = lambda values, fraction: percentile(sorted(values), fraction)
    fresh, chains, taps = first["fresh"], first["chains"], tap["times"]
    return [
        ("first screen, fresh tab, median", ms(at(fresh, 0.5)), "no preload links " + ms(at(chains, 0.5)),
         at(fresh, 0.5) / at(chains, 0.5), "<= 300 ms"),
        ("first screen, fresh tab, p95", ms(at(fresh, 0.95)), "no preload links " + ms(at(chains, 0.95)),
         at(fresh, 0.95) / at(chains, 0.95), ""),
        ("first screen, the tab reloaded, median", ms(at(first["reload"], 0.5)),
         f"{first['notModified']} of {first['reloadRequests']} requests 304", None, ""),
        ("switch tap, click to painted, median", ms(at(taps, 0.5)), f"a 60 Hz frame {ms(FRAME_MS)}",
         at(taps, 0.5) / FRAME_MS, ""),
        ("switch tap, click to painted, p95", ms(at(taps, 0.95)), f"a 60 Hz frame {ms(FRAME_MS)}",
         at(taps, 0.95) / FRAME_MS, "<= 16 ms"),
        ("switch tap, the session's answer, p95", ms(at(tap["answers"], 0.95)),
         "server alone p95 " + ms(at(tap["server"], 0.95)), None, ""),
    ]


def print_rows(rounds, rows):
    print(f"medians of {rounds} interleaved rounds; tmpfs at {TMPFS}")
    for what, ours, peer, ratio, target in rows:
        ratio_text = f"{ratio:5.2f}x" if ratio is not None else "      "
        print(f"{what:38} {ours:>14}  {peer:32} {ratio_text}  {target}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default=str(SOURCE / "build"))
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--only", choices=["storage", "browser"], help="measure only these rows")
    parser.add_argument("--hosts", action="store_true", help="only the hosts' rows")
    args = parser.parse_args()
    build = Path(args.build)
    exe, bench = build / "nimbra-prefs", build / "bench" / "nimbra-bench"
    many = 1000 if args.quick else 10000
    trees = [10000] if args.quick else [10000, 100000]
    definition = LARGEST_FILE.read_bytes()

    if args.only == "storage":
        print_rows(args.rounds, storage_rows(exe, args.rounds, args.quick))
        return
    if args.only == "browser":
        print_rows(args.rounds, browser_rows(exe, args.quick))
        return

    figures = {}

    def add(name, value):
        figures.setdefault(name, []).append(value)

    if args.hosts:
        host_figures(exe, args.rounds, add)
        m = {name: statistics.median(values) for name, values in figures.items()}
        memory = {f"reload{many}": peak_memory(exe, "reload\nevents\n", many),
                  f"unread{many}": peak_memory(exe, "reload\n", many)}
        print_rows(args.rounds, host_rows(m, memory, many))
        return

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

    host_figures(exe, args.rounds, add)
    memory = {
        f"unread{many}": peak_memory(exe, "reload\n", many),
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
    rows += host_rows(m, memory, many)
    rows += browser_rows(exe, args.quick)
    print_rows(args.rounds, rows)


if __name__ == "__main__":
    main()
