#!/usr/bin/env python3
"""Ranks the switches of a topology dump, as a script that somebody writes in an afternoon does.

usage: plain_ranks.py DUMP

Switches with hosts are leaves; a switch's rank is told by its distance from the nearest leaf. It
prints how many switches each rank has, from the roots down. Regular expressions and a breadth-first
search, without any library.
"""

import re
import sys
from collections import Counter, deque

NODE = re.compile(r'^(Switch|Ca|Rt)\s+\d+\s+"([^"]+)"')
PORT = re.compile(r'^\[\d+\](?:\([0-9a-f]+\))?\s+"([^"]+)"\[\d+\]')


def read(path):
    """The switches, each with its neighbours among the switches, and those that have hosts."""
    neighbours = {}
    leaves = set()
    switch = None
    with open(path, encoding="utf-8", errors="replace") as dump:
        for line in dump:
            if match := NODE.match(line):
                switch = match[2] if match[1] == "Switch" else None
                if switch:
                    neighbours[switch] = []
            elif switch and (match := PORT.match(line)):
                if match[1].startswith("S-"):
                    neighbours[switch].append(match[1])
                elif match[1].startswith("H-"):
                    leaves.add(switch)
    return neighbours, leaves


def distances_from(leaves, neighbours):
    distances = dict.fromkeys(leaves, 0)
    queue = deque(leaves)
    while queue:
        switch = queue.popleft()
        for neighbour in neighbours[switch]:
            if neighbour not in distances:
                distances[neighbour] = distances[switch] + 1
                queue.append(neighbour)
    return distances


neighbours, leaves = read(sys.argv[1])
counts = Counter(distances_from(leaves, neighbours).values())
for rank, distance in enumerate(sorted(counts, reverse=True)):
    print(f"rank {rank}: {counts[distance]} switches")
