#!/usr/bin/env python3
"""Times qzconvert and qzfilter on a million rows beside Miller (mlr), where it is installed: wall time and memory.

  tools.py TOOLS OUT [ROWS]

TOOLS is the folder of the programs, OUT a folder for the files (some 700 MB). Each pair of commands does the same work on
the same table, on CSV and on JSON lines; the commands of a pair take turns, and the median of five runs counts. Then
qzfilter with two threads beside one.
"""
import os, shutil, statistics, sys, time

tools, out = sys.argv[1], sys.argv[2]
rows = int(sys.argv[3]) if len(sys.argv) > 3 else 1000000
repetitions = 5
os.makedirs(out, exist_ok=True)


def make_table(path):
    state = 1
    with open(path, "w") as f:
        f.write("name,count,group,mass,half_life,score,note\n")
        for i in range(rows):
            state = (state * 6364136223846793005 + 1442695040888963407) % 2**64
            a, b = state >> 40, (state >> 20) % 1000000
            f.write("item%d,%d,%d,%.6f,%g,%.3f,%s\n" % (i, a, b % 7, a / 977.0, b * 1e4, b / 1e3, "abc" if b % 3 else ""))


def run(command):
    """Wall seconds and the greatest resident size in MB."""
    start = time.perf_counter()
    pid = os.fork()
    if pid == 0:
        null = os.open(os.devnull, os.O_WRONLY)
        os.dup2(null, 2)
        os.execvp("sh", ["sh", "-c", "exec " + command])
    _, status, usage = os.wait4(pid, 0)
    if status != 0:
        sys.exit("failed: " + command)
    return time.perf_counter() - start, usage.ru_maxrss / 1024


def compare(job, pair):
    taken = {name: [] for name in pair}
    for _ in range(repetitions):
        for name, command in pair.items():
            taken[name].append(run(command))
    line = [job]
    for name in pair:
        line.append("%.2f s" % statistics.median(t for t, _ in taken[name]))
        line.append("%.0f MB" % max(m for _, m in taken[name]))
    if len(pair) == 2:
        first, second = (statistics.median(t for t, _ in taken[name]) for name in pair)
        line.append("%.2f" % (first / second))
    else:
        line += ["", "", ""]
    print("| " + " | ".join(line) + " |", flush=True)


table, binary, lines, plain = (os.path.join(out, n) for n in ("t.csv", "t.qzr", "t.jsonl", "plain.jsonl"))
if not os.path.exists(table):
    make_table(table)
convert, filter_ = os.path.join(tools, "qzconvert"), os.path.join(tools, "qzfilter")
quiet = "-progress none"
run("%s %s %s %s" % (convert, quiet, table, binary))
run("%s %s %s %s" % (convert, quiet, table, lines))
has_peer = shutil.which("mlr") is not None
if has_peer:
    run("mlr --icsv --ojsonl cat %s > %s" % (table, plain))
print("| job, %d rows | ours | memory | mlr | memory | ratio |" % rows)
print("|---|---|---|---|---|---|")
condition = "mass > 5000 && group < 3"
ours_mlr = [
    ("convert csv to csv", f"{convert} {quiet} -outformat csv {table} - > {out}/o1", f"mlr --csv cat {table} > {out}/o2"),
    ("convert csv to json lines", f"{convert} {quiet} -outformat json {table} - > {out}/o1",
     f"mlr --icsv --ojsonl cat {table} > {out}/o2"),
    ("convert json lines to csv", f"{convert} {quiet} -outformat csv {lines} - > {out}/o1",
     f"mlr --ijsonl --ocsv cat {plain} > {out}/o2"),
    ("filter csv", f"{filter_} {quiet} -where '{condition}' -outformat csv {table} - > {out}/o1",
     f"mlr --csv filter '$mass > 5000 && $group < 3' {table} > {out}/o2"),
    ("filter and compute csv",
     f"{filter_} {quiet} -where '{condition}' -set 'decay = ln(2) / half_life' -outformat csv {table} - > {out}/o1",
     f"mlr --csv filter '$mass > 5000 && $group < 3' then put '$decay = log(2) / $half_life' {table} > {out}/o2"),
    ("filter json lines", f"{filter_} {quiet} -where '{condition}' -outformat json {lines} - > {out}/o1",
     f"mlr --jsonl filter '$mass > 5000 && $group < 3' {plain} > {out}/o2"),
]
for job, ours, peer in ours_mlr:
    compare(job, {"ours": ours, "mlr": peer} if has_peer else {"ours": ours})
for job, ours in [
    ("convert csv to binary", f"{convert} {quiet} {table} {out}/o1.qzr"),
    ("filter binary", f"{filter_} {quiet} -where '{condition}' {binary} {out}/o1.qzr"),
]:
    compare(job, {"ours": ours})

print("\n| job, %d rows | 2 threads | memory | 1 thread | memory | ratio |" % rows)
print("|---|---|---|---|---|---|")
for job, form, source in [("filter csv", "csv", table), ("filter json lines", "json", lines), ("filter binary", "binary", binary)]:
    threads = f"{filter_} {quiet} -where '{condition}' -outformat {form} -threads %d {source} - > {out}/o1"
    compare(job, {"2 threads": threads % 2, "1 thread": threads % 1})
