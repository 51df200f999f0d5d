// A small fabric to look at: two roots, and two leaves with two cables to each of them.

import type { Data, InvalidLink, RawFinding, RawStep, Result, UnevenLinks } from '../src/data'
import { modelOf, type Model } from '../src/model'

export const [rootA, rootB, leafA, leafB] = ['a', 'b', 'c', 'd'].map((end) => `0x${end.repeat(16)}`)

export const missing: RawFinding = {
  kind: 'missing-link',
  level: 3,
  groupKind: 'neighborhood',
  groups: [0],
  issues: 0,
  spine: rootA,
  line: leafA,
}

export function invalid(from: string, port: number, to: string, far: number): InvalidLink {
  const rank = (guid: string) => (guid === rootA || guid === rootB ? 0 : 1)
  return {
    kind: 'invalid-link',
    level: 3,
    groupKind: 'neighborhood',
    groups: [0],
    issues: 0,
    ends: [
      { switch: from, port, rank: rank(from) },
      { switch: to, port: far, rank: rank(to) },
    ],
  }
}

export function uneven(expected: number, counts: UnevenLinks['counts']): UnevenLinks {
  return {
    kind: 'uneven-links',
    level: 3,
    groupKind: 'neighborhood',
    groups: [0],
    issues: 1,
    set: 'spines',
    direction: 'down',
    expected,
    counts,
  }
}

export function step(id: number, cures: number[]): RawStep {
  return {
    id,
    action: 'connect',
    class: 'sure',
    cables: [],
    reason: 'Why.',
    cures,
    alternatives: [],
  }
}

const allCables = [
  [0, 1, 2, 1],
  [0, 2, 2, 2],
  [0, 3, 3, 1],
  [0, 4, 3, 2],
  [1, 1, 2, 3],
  [1, 2, 2, 4],
  [1, 3, 3, 3],
  [1, 4, 3, 4],
]

/** Cables are a switch, its port, the other switch and its port. */
export function fabric(change: Partial<Result> = {}, cables = allCables): Model {
  const data: Data = {
    result: {
      tool: 'fabscope',
      input: 'fabric.json',
      status: change.findings?.length ? 'findings' : 'clean',
      message: '',
      roots: { method: 'search', misfits: 0, doubt: '' },
      ranks: [
        [rootA, rootB],
        [leafA, leafB],
      ],
      groups: [
        {
          kind: 'neighborhood',
          id: 0,
          rank: 0,
          spines: [rootA, rootB],
          lines: [leafA, leafB],
          totalSpineUplinks: 0,
          totalInternalLinks: cables.length,
        },
      ],
      records: [],
      issues: 0,
      findings: [],
      repairs: [],
      ...change,
    },
    switches: [
      [rootA, 'root-a', 0, 0, 0, 4],
      [rootB, 'root-b', 0, 0, 0, 4],
      [leafA, 'leaf-a', 1, 3, 4, 3],
      [leafB, 'leaf-b', 1, 3, 4, 3],
    ],
    cables: cables.flat(),
    told: { verdict: 'what to do', notes: [], advice: '', date: '', places: [] },
  }
  return modelOf(data)
}

export function withoutCable(from: number, port: number): number[][] {
  return allCables.filter((cable) => cable[0] !== from || cable[1] !== port)
}
