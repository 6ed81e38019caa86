#!/usr/bin/env python3
"""Compares two instruction_counts.sh outputs kernel by kernel: the ratio
new/old of each, the ten furthest from 1, and the totals."""
import sys


def read(path):
    counts = {}
    with open(path) as f:
        for line in f:
            name, count = line.split()
            counts[name] = int(count)
    return counts


old, new = read(sys.argv[1]), read(sys.argv[2])
shared = sorted(set(old) & set(new))
missing = sorted(set(old) ^ set(new))
ratios = sorted(((new[k] / old[k] if old[k] else 1.0), k) for k in shared)
worst = sorted(ratios, key=lambda r: -abs(r[0] - 1))[:10]
print(f"{len(shared)} kernels compared; {len(missing)} in one file only")
print(f"total: {sum(old[k] for k in shared):,} -> {sum(new[k] for k in shared):,} "
      f"({sum(new[k] for k in shared) / sum(old[k] for k in shared):.4f})")
over = [r for r in ratios if r[0] > 1.01]
print(f"above 1.01: {len(over)}; below 0.99: {len([r for r in ratios if r[0] < 0.99])}")
print("furthest from 1:")
for ratio, name in worst:
    print(f"  {ratio:.4f}  {name}  {old[name]:,} -> {new[name]:,}")
for name in missing:
    print("  only in one:", name)
