#!/usr/bin/env python3
"""Writes fabrics that a hostile or very broken machine room makes, as fabric documents.

usage: worst_cases.py NAME [SIZE]

  unlike     SIZE upper switches (default 2,048) and four times as many lower ones, no two of these
             with the same up-links, and none alike enough to be merged
  inside     the same with 60 cables from each lower switch to others
  popular    the same, but each lower switch is cabled to one of 40 upper ones that have three more
             lower switches for themselves, which makes it a cross link
  chain      as many spines as lines (2,048): line i has cables to the spines i to i + 3. A set of
             up-links has but one spine that the union of those before it lacks, so all merge into
             one group that lacks nearly every cable; no switch needs more than four ports for it
  groups     the same switches and cables in groups of four by four, which lack none
  one-level  leaves (200) with 240 hosts each that are cabled to other leaves only
  star       leaves (255) with 254 hosts each around one switch
  guids      the same with GUIDs that all fall into one bucket of a hash table of libstdc++ that has
             room for as many nodes and takes GUIDs as they are
  ring       a ring of switches (5,000) with a host each
  path       switches (5,000) in a row, with hosts at the first
  strays     leaves (10,000) in pods of 20 leaves and 10 spines, one cable of each in another pod
  random     switches (20,000) with 8 cables each to any others, every tenth with hosts
  complete   as many switches (6,400) in sets of 64, in which each is cabled to each

Lower switches are called leaf..., upper ones spine....
"""

import random
import sys

SIZES = {"unlike": 2048, "inside": 2048, "popular": 2048, "chain": 2048, "groups": 2048,
         "one-level": 200, "star": 255, "guids": 255, "ring": 5000,
         "path": 5000, "strays": 10000, "random": 20000, "complete": 6400}


class Fabric:
    def __init__(self):
        self.nodes = []
        self.links = []
        self.ports = []  # by node: how many have a cable
        self.guid_step = 1

    def add(self, kind, name):
        self.nodes.append((kind, name))
        self.ports.append(0)
        return len(self.nodes) - 1

    def add_all(self, kind, name, count):
        return [self.add(kind, f"{name}{number:04}") for number in range(1, count + 1)]

    def cable(self, a, b):
        self.ports[a] += 1
        self.ports[b] += 1
        self.links.append((a, self.ports[a], b, self.ports[b]))

    def add_hosts(self, switch, count):
        for number in range(1, count + 1):
            self.cable(switch, self.add("ca", f"host of {self.nodes[switch][1]} {number}"))

    def guid(self, node):
        return f"{(node + 1) * self.guid_step:#x}"

    def write(self, stream):
        if max(self.ports) > 255:
            raise SystemExit("a node cannot have more than 255 ports")
        stream.write('{"format": "fabscope-fabric", "version": 1,\n "nodes": [')
        stream.write(",".join(
            f'\n{{"guid": "{self.guid(node)}", "type": "{kind}", "name": "{name}", '
            f'"numPorts": {ports}}}'
            for node, ((kind, name), ports) in enumerate(zip(self.nodes, self.ports))))
        stream.write('],\n "links": [')
        stream.write(",".join(
            f'\n{{"a": "{self.guid(a)}", "aPort": {a_port}, "b": "{self.guid(b)}", '
            f'"bPort": {b_port}, "speed": "HDR"}}' for a, a_port, b, b_port in self.links))
        stream.write("]}\n")


def cable_at_random(fabric, leaves, spines, uplinks):
    """Every leaf with that many cables, every spine with its even share of them."""
    chance = random.Random(1)
    places = spines * (-(-len(leaves) // len(spines)))
    above = [set() for _ in leaves]
    for _ in range(uplinks):
        chance.shuffle(places)
        for leaf, spine, known in zip(leaves, places, above):
            fabric.cable(leaf, spine)
            known.add(spine)
    if len(set(map(frozenset, above))) != len(leaves):
        raise SystemExit("two leaves have the same up-links")


def unlike(fabric, size):
    spines = fabric.add_all("switch", "spine", size)
    leaves = fabric.add_all("switch", "leaf", 4 * size)
    # An upper switch has 240 cables then, of 255 that are possible.
    cable_at_random(fabric, leaves, spines, 60)
    return leaves


def inside(fabric, size):
    leaves = unlike(fabric, size)
    for step in range(1, 31):
        for number, leaf in enumerate(leaves):
            fabric.cable(leaf, leaves[(number + step * step) % len(leaves)])


def popular(fabric, size):
    spines = fabric.add_all("switch", "spine", size)
    leaves = fabric.add_all("switch", "leaf", 4 * size)
    favourites, others = spines[:40], spines[40:]
    own, many = leaves[:120], leaves[120:]
    for number, leaf in enumerate(own):
        fabric.cable(leaf, favourites[number // 3])
    for number, leaf in enumerate(many):
        fabric.cable(leaf, favourites[number % 40])
    cable_at_random(fabric, many, others, 50)


def chain(fabric, size):
    spines = fabric.add_all("switch", "spine", size)
    for number, leaf in enumerate(fabric.add_all("switch", "leaf", size)):
        for step in range(4):
            fabric.cable(leaf, spines[(number + step) % size])


def groups(fabric, size):
    spines = fabric.add_all("switch", "spine", size)
    for number, leaf in enumerate(fabric.add_all("switch", "leaf", size)):
        for step in range(4):
            fabric.cable(leaf, spines[number // 4 * 4 + step])


def one_level(fabric, size):
    leaves = fabric.add_all("switch", "leaf", size)
    for step in range(1, 8):  # 14 cables of each leaf
        for number, leaf in enumerate(leaves):
            fabric.cable(leaf, leaves[(number + step * step) % size])
    for leaf in leaves:
        fabric.add_hosts(leaf, 240)


def star(fabric, size):
    centre = fabric.add("switch", "spine")
    for leaf in fabric.add_all("switch", "leaf", size):
        fabric.cable(leaf, centre)
        fabric.add_hosts(leaf, 254)


def guids(fabric, size):
    star(fabric, size)
    # The buckets of a table for 65,026 nodes: set aside at once, or grown to.
    fabric.guid_step = 67307 * 85229


def ring(fabric, size):
    leaves = fabric.add_all("switch", "leaf", size)
    for leaf, following in zip(leaves, leaves[1:] + leaves[:1]):
        fabric.cable(leaf, following)
        fabric.add_hosts(leaf, 1)


def path(fabric, size):
    switches = fabric.add_all("switch", "leaf", size)
    for switch, following in zip(switches, switches[1:]):
        fabric.cable(switch, following)
    fabric.add_hosts(switches[0], 100)


def strays(fabric, size):
    pods = [(fabric.add_all("switch", f"spine of {pod} ", 10),
             fabric.add_all("switch", f"leaf of {pod} ", 20)) for pod in range(size // 20)]
    for pod, (spines, leaves) in enumerate(pods):
        for number, leaf in enumerate(leaves):
            fabric.add_hosts(leaf, 8)
            for place, spine in enumerate(spines):
                other = pods[(pod + 1 + number) % len(pods)][0][place]
                fabric.cable(leaf, other if place == number % 10 else spine)
    for first in range(0, len(pods), 200):  # as many as a root has ports for
        for place in range(10):
            for root in fabric.add_all("switch", f"root of {first} {place} ", 4):
                for spines, _ in pods[first:first + 200]:
                    fabric.cable(spines[place], root)


def random_cables(fabric, size):
    switches = fabric.add_all("switch", "leaf", size)
    chance = random.Random(1)
    for _ in range(4):
        row = chance.sample(switches, size)
        for switch, following in zip(row, row[1:] + row[:1]):
            fabric.cable(switch, following)
    for switch in switches[::10]:
        fabric.add_hosts(switch, 2)


def complete(fabric, size):
    for number in range(size // 64):
        switches = fabric.add_all("switch", f"leaf of {number} ", 64)
        for place, switch in enumerate(switches):
            fabric.add_hosts(switch, 2)
            for other in switches[:place]:
                fabric.cable(switch, other)


MAKERS = {"unlike": unlike, "inside": inside, "popular": popular, "chain": chain, "groups": groups,
          "one-level": one_level, "star": star, "guids": guids, "ring": ring,
          "path": path, "strays": strays, "random": random_cables, "complete": complete}


def main():
    if len(sys.argv) not in (2, 3) or sys.argv[1] not in MAKERS:
        sys.exit(__doc__)
    name = sys.argv[1]
    fabric = Fabric()
    MAKERS[name](fabric, int(sys.argv[2]) if len(sys.argv) == 3 else SIZES[name])
    fabric.write(sys.stdout)


main()
