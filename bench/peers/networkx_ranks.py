#!/usr/bin/env python3
"""Ranks the switches of a topology dump with the graph library networkx.

usage: networkx_ranks.py DUMP

The same as plain_ranks.py, with the switches as a graph of the library: those with hosts are
leaves, and the layers of a search from all leaves are the ranks.
"""

import re
import sys

import networkx

NODE = re.compile(r'^(Switch|Ca|Rt)\s+\d+\s+"([^"]+)"')
PORT = re.compile(r'^\[\d+\](?:\([0-9a-f]+\))?\s+"([^"]+)"\[\d+\]')


def read(path):
    """The graph of the switches, and those that have hosts."""
    graph = networkx.Graph()
    leaves = set()
    switch = None
    with open(path, encoding="utf-8", errors="replace") as dump:
        for line in dump:
            if match := NODE.match(line):
                switch = match[2] if match[1] == "Switch" else None
                if switch:
                    graph.add_node(switch)
            elif switch and (match := PORT.match(line)):
                if match[1].startswith("S-"):
                    graph.add_edge(switch, match[1])
                elif match[1].startswith("H-"):
                    leaves.add(switch)
    return graph, leaves


graph, leaves = read(sys.argv[1])
layers = [len(layer) for layer in networkx.bfs_layers(graph, leaves)]
for rank, count in enumerate(reversed(layers)):
    print(f"rank {rank}: {count} switches")
