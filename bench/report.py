#!/usr/bin/env python3
"""Tables from the JSON files of a run.

  report.py DIR                       all tables, Markdown
  report.py DIR --csv                 job,peer,median,min,unit
  report.py DIR --fill T.md           the text T.md with {{W1}} .. replaced
  report.py DIR --ours                one table: the toolkit beside every peer
goals.tsv (job, ratio) gives the goal for ours: our time / fastest peer's time.
"""
import glob, json, os, statistics, sys

here = os.path.dirname(os.path.abspath(__file__))


def goals(reason=False):
    g = {}
    path = os.path.join(here, "goals.tsv")
    if os.path.exists(path):
        for line in open(path):
            f = line.rstrip("\n").split("\t")
            if len(f) >= 2 and not line.startswith("#"):
                g[f[0]] = f[2] if reason else float(f[1])
    return g


def load(d):
    runs, order = {}, []
    for f in sorted(glob.glob(os.path.join(d, "*.json"))):
        for b in json.load(open(f))["benchmarks"]:
            if b.get("run_type") == "aggregate":
                continue
            name = b["run_name"]
            if name not in runs:
                runs[name] = dict(t=[], bytes=None, gb=None, relerr=None, error=None)
                order.append(name)
            r = runs[name]
            if b.get("error_occurred"):
                r["error"] = b.get("error_message")
                continue
            ns = b["real_time"] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[b["time_unit"]]
            r["t"].append(ns / b.get("ops", 1.0))
            for k in ("bytes", "gb", "relerr"):
                if k in b:
                    r[k] = b[k]
    out = []
    for n in order:
        w, job, peer = n.split("/", 2)
        r = runs[n]
        if r["error"] or not r["t"]:
            out.append(dict(w=w, job=w + "/" + job, peer=peer, error=r["error"] or "no figure"))
            continue
        out.append(dict(w=w, job=w + "/" + job, peer=peer, med=statistics.median(r["t"]), lo=min(r["t"]),
                        bytes=r["bytes"], gb=r["gb"], relerr=r["relerr"], error=None,
                        spread=(max(r["t"]) - min(r["t"])) / statistics.median(r["t"])))
    return out


def figure(ns, gb):
    if gb:
        return "%.2f GB/s" % (gb / ns)
    if ns >= 1e5:
        return "%.0f us" % (ns / 1e3)
    if ns >= 1e4:
        return "%.1f us" % (ns / 1e3)
    return ("%.0f ns" if ns >= 100 else "%.1f ns" if ns >= 10 else "%.2f ns") % ns


def is_limit(p):
    return p.startswith("limit")


def competes(p):
    """part_... does less than the job asks and is shown for information."""
    return not p.startswith(("limit", "part_", "ours"))


def workload_key(w):
    d = "".join(c for c in w if c.isdigit())
    return (int(d), w)


def by_job(rows):
    """Jobs in the order of goals.tsv (the runs are interleaved at random)."""
    place = {j: i for i, j in enumerate(goals())}
    jobs = {}
    for r in sorted(rows, key=lambda r: (workload_key(r["w"]), place.get(r["job"], 1e9), r["job"])):
        jobs.setdefault(r["job"], []).append(r)
    return jobs


def best(rs):
    c = [r for r in rs if not r["error"] and competes(r["peer"])]
    return min(c, key=lambda r: r["med"]) if c else None


def limit(rs):
    c = [r for r in rs if not r["error"] and is_limit(r["peer"])]
    return min(c, key=lambda r: r["med"]) if c else None


def table(rows, w):
    g = goals()
    jobs = by_job([r for r in rows if r["w"] == w])
    size = any(r.get("bytes") for rs in jobs.values() for r in rs)
    err = any(r.get("relerr") for rs in jobs.values() for r in rs)
    head = ["job", "peer", "figure", "x fastest", "spread", "limit", "goal for ours (ratio, figure)"]
    if size:
        head.insert(3, "bytes")
    if err:
        head.insert(3, "largest relative error")
    o = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    for job, rs in jobs.items():
        b, l = best(rs), limit(rs)
        for r in sorted(rs, key=lambda r: (is_limit(r["peer"]), r.get("med", 1e99))):
            if r["error"]:
                o.append("| %s | %s | failed: %s |" % (job, r["peer"], r["error"]) + " |" * (len(head) - 3))
                continue
            bold = "**" if r is b else ""
            row = [job, bold + r["peer"].replace("limit_", "limit: ") + bold, bold + figure(r["med"], r["gb"]) + bold,
                   "%.2f" % (r["med"] / b["med"]) if b else "",
                   "%.0f %%" % (100 * r["spread"]),
                   figure(l["med"], l["gb"]) if r is b and l else "", ""]
            if r is b and job in g:
                row[-1] = "%.2f, %s" % (g[job], figure(b["med"] * g[job], b["gb"]))
            if size:
                row.insert(3, "%.0f" % r["bytes"] if r["bytes"] else "")
            if err:
                row.insert(3, "%.1e" % r["relerr"] if r["relerr"] and not is_limit(r["peer"]) else "")
            o.append("| " + " | ".join(row) + " |")
    why = goals(reason=True)
    o.append("")
    for job in jobs:
        if job in g:
            o.append("- goal %s: %.2f; %s." % (job, g[job], why[job]))
    return "\n".join(o)


def summary(rows):
    g = goals()
    o = ["| workload | fastest peer | figure | limit | goal for ours |", "|---|---|---|---|---|"]
    for job, rs in by_job(rows).items():
        b, l = best(rs), limit(rs)
        if not b:
            continue
        o.append("| %s | %s | %s | %s | %s |" % (
            job, b["peer"], figure(b["med"], b["gb"]), figure(l["med"], l["gb"]) if l else "",
            "%.2f (%s)" % (g[job], figure(b["med"] * g[job], b["gb"])) if job in g else ""))
    return "\n".join(o)


def ours(rows):
    """One row a job: the toolkit beside every peer, its ratio to the fastest one, and the goal."""
    g = goals()
    o = ["| job | ours | fastest peer | ratio | goal | other peers |", "|---|---|---|---|---|---|"]
    for job, rs in by_job(rows).items():
        mine = [r for r in rs if not r["error"] and r["peer"].startswith("ours")]
        b = best(rs)
        others = sorted((r for r in rs if not r["error"] and competes(r["peer"]) and r is not b), key=lambda r: r["med"])
        for m in mine or [None]:
            ratio = m["med"] / b["med"] if m and b else None
            o.append("| %s | %s | %s | %s | %s | %s |" % (
                job + (m["peer"][4:] if m else ""), figure(m["med"], m["gb"]) if m else "",
                "%s %s" % (b["peer"], figure(b["med"], b["gb"])) if b else "",
                "%.2f%s" % (ratio, " (missed)" if job in g and ratio > g[job] else "") if ratio else "",
                "%.2f" % g[job] if job in g else "",
                ", ".join("%s %s" % (r["peer"], figure(r["med"], r["gb"])) for r in others)))
        for r in rs:
            if r["error"]:
                o.append("| %s | failed: %s: %s | | | | |" % (job, r["peer"], r["error"]))
    return "\n".join(o)


def main():
    d = sys.argv[1]
    rows = load(d)
    rows.sort(key=lambda r: workload_key(r["w"]))
    ws = sorted({r["w"] for r in rows}, key=workload_key)
    if "--csv" in sys.argv:
        print("job,peer,median,min,unit,bytes,spread")
        for r in rows:
            if not r["error"]:
                print("%s,%s,%.5g,%.5g,%s,%s,%.2f" % (r["job"], r["peer"], r["med"], r["lo"], "ns/64MiB-pass" if r["gb"] else "ns/op",
                                            "%.0f" % r["bytes"] if r["bytes"] else "", r["spread"]))
        return
    if "--summary" in sys.argv:
        print(summary(rows))
        return
    if "--fill" in sys.argv:
        t = open(sys.argv[sys.argv.index("--fill") + 1]).read()
        for w in ws:
            t = t.replace("{{%s}}" % w, table(rows, w))
        print(t.replace("{{summary}}", summary(rows)), end="")
        return
    if "--ours" in sys.argv:
        print(ours(rows))
        return
    for w in ws:
        print("\n## %s\n\n%s" % (w, table(rows, w)))
    bad = [r for r in rows if r["error"]]
    if bad:
        print("\nfailed:", ", ".join(r["job"] + "/" + r["peer"] for r in bad))


main()
