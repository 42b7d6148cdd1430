#!/usr/bin/python3
"""Turns kaip_bench runs into a Markdown table: ours, the peer and memcpy of each case side by side.

Usage: report.py [--size WxH] [--peers-only | --decoders] LABEL=run.json[,run.json...] [LABEL=...] > table.md
  e.g. report.py default=default.json "SIMD.Level 4=level4.json"
Several files under one label are one configuration run in parts (a later file's figures win).
--size keeps the rows of one frame size only (e.g. --size 2448x2048); --peers-only the cases
that have a peer (OpenCV, libyuv; our own scalar variants are left out). --decoders compares instead
each Bayer decoder case (Bayer/<Decoder><depth>_<rest>) with the bilinear case of the same depth,
destination and LUT in the same run: its time over the bilinear decoder's.

Each run is Google Benchmark JSON output (--benchmark_format=json or --benchmark_out=FILE). Benchmarks
are named Family/Case/Role[/arguments]; Role is Ours, Memcpy or a peer (OpenCV, libyuv). The roles of one
Family/Case/arguments in one run form a row. Times are CPU times per iteration (the median when the run
has repetitions); the ratios compare runs of the same binary on the same buffers:
  peer/ours     = peer time / our time   (above 1: ours is faster)
  ours/memcpy   = memcpy time / our time (the fraction of the speed of copying the destination once)
Standard library only.
"""

import json
import sys

ROLE_ORDER = ("Ours", "Memcpy")
ROLES = {"ours": "Ours", "memcpy": "Memcpy", "opencv": "OpenCV", "libyuv": "libyuv", "scalar": "scalar"}


def load(path):
    """Family/Case, arguments, role -> CPU time in ms, from one JSON run."""
    with open(path, encoding="utf-8") as f:
        data = json.load(f)
    times, medians = {}, {}
    for b in data.get("benchmarks", []):
        name = b.get("run_name", b["name"])
        parts = name.split("/")
        if len(parts) < 3:
            continue
        # The role is the third part (Family/Case/Role/arguments) or, failing that, the last one
        # (Family/Case/arguments/role); either spelling of Ours and Memcpy.
        at = 2 if parts[2].lower() in ROLES else len(parts) - 1
        role = ROLES.get(parts[at].lower(), parts[at])
        family, case = parts[0], parts[1]
        args = "/".join(parts[2:at] + parts[at + 1:])
        if b.get("error_occurred"):
            continue
        unit = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[b.get("time_unit", "ns")]
        ms = b["cpu_time"] * unit
        key = (family + "/" + case, args, role)
        if b.get("run_type") == "aggregate":
            if b.get("aggregate_name") == "median":
                medians[key] = ms
        else:
            times.setdefault(key, []).append(ms)
    result = {k: sorted(v)[len(v) // 2] for k, v in times.items()}
    result.update(medians)
    return result


def size_of(args):
    """'w:2448/h:2048' -> '2448x2048'; other arguments as they stand."""
    fields = dict(a.split(":", 1) for a in args.split("/") if ":" in a)
    if "w" in fields and "h" in fields:
        rest = [a for a in args.split("/") if not a.startswith(("w:", "h:"))]
        return "x".join((fields["w"], fields["h"])) + ("" if not rest else " " + "/".join(rest))
    return args or "2448x2048"  # cases without size arguments run on the full frame


def fmt(ms):
    return "" if ms is None else "%.2f" % ms


def ratio(a, b):
    return "" if a is None or b is None or b == 0 else "%.2f" % (a / b)


def table(runs, only_size=None, peers_only=False):
    lines = [
        "| Case | Size | Configuration | Ours ms | Peer | Peer ms | Memcpy ms | Peer/ours | Ours/memcpy |",
        "|---|---|---|---:|---|---:|---:|---:|---:|",
    ]
    cases = []
    for _, run in runs:
        for (case, args, _) in run:
            if (case, args) not in cases:
                cases.append((case, args))
    for case, args in cases:
        if only_size and size_of(args).split(" ")[0] != only_size:
            continue
        for label, run in runs:
            ours = run.get((case, args, "Ours"))
            if ours is None:
                continue
            memcpy = run.get((case, args, "Memcpy"))
            peers = sorted(r for (c, a, r) in run if (c, a) == (case, args) and r not in ROLE_ORDER
                           and not (peers_only and r == "scalar"))
            if not peers:
                if peers_only:
                    continue
                peers = [None]
            for peer in peers:
                peer_ms = run.get((case, args, peer)) if peer else None
                lines.append("| %s | %s | %s | %s | %s | %s | %s | %s | %s |" % (
                    case, size_of(args), label, fmt(ours), peer or "", fmt(peer_ms), fmt(memcpy),
                    ratio(peer_ms, ours), ratio(memcpy, ours)))
    return "\n".join(lines)


def decoder_table(runs, only_size=None):
    """Each decoder's time over the bilinear decoder's of the same depth, destination and LUT."""
    lines = ["| Case | Size | Configuration | Ours ms | Bilinear ms | Time / bilinear |", "|---|---|---|---:|---:|---:|"]
    cases = []
    for _, run in runs:
        for (case, args, role) in run:
            if role == "Ours" and case.startswith("Bayer/") and (case, args) not in cases:
                cases.append((case, args))
    for case, args in cases:
        name = case.partition("/")[2]
        depth_at = next((i for i, ch in enumerate(name) if ch.isdigit()), None)
        if name.startswith("Bilinear") or depth_at is None:
            continue
        if only_size and size_of(args).split(" ")[0] != only_size:
            continue
        for label, run in runs:
            ms = run.get((case, args, "Ours"))
            bilinear = run.get(("Bayer/Bilinear" + name[depth_at:], args, "Ours"))
            if ms is not None and bilinear is not None:
                lines.append("| %s | %s | %s | %s | %s | %s |" % (case, size_of(args), label, fmt(ms), fmt(bilinear),
                                                                  ratio(ms, bilinear)))
    return "\n".join(lines)


def main(argv):
    only_size, peers_only, decoders = None, False, False
    while len(argv) > 1 and argv[1].startswith("--"):
        if argv[1] == "--size" and len(argv) > 2:
            only_size = argv[2]
            argv = argv[:1] + argv[3:]
        elif argv[1] == "--peers-only":
            peers_only = True
            argv = argv[:1] + argv[2:]
        elif argv[1] == "--decoders":
            decoders = True
            argv = argv[:1] + argv[2:]
        else:
            break
    if len(argv) < 2 or any("=" not in a for a in argv[1:]):
        sys.stderr.write(__doc__)
        return 2
    runs = []
    for label, paths in (a.split("=", 1) for a in argv[1:]):
        run = {}
        for path in paths.split(","):
            run.update(load(path))
        runs.append((label, run))
    print(decoder_table(runs, only_size) if decoders else table(runs, only_size, peers_only))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
