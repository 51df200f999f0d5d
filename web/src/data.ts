// What the program puts into the page: the result of a check, as `fabscope check --json` writes it,
// with the switches and cables that it is about.

export type Status = 'clean' | 'findings' | 'failed'
export type GroupKind = 'neighborhood' | 'connectivity group'

export interface RawGroup {
  kind: GroupKind
  id: number
  rank: number
  spines: string[]
  lines: string[]
  totalSpineUplinks: number
  totalInternalLinks: number
}

interface Common {
  level: 2 | 3
  groupKind: GroupKind
  groups: number[]
  /** What it counts for in the number of issues; 0 for an error record. */
  issues: number
}

export interface MissingLink extends Common {
  kind: 'missing-link'
  spine: string
  line: string
}

export interface End {
  switch: string
  port: number
  rank: number
}

export interface InvalidLink extends Common {
  kind: 'invalid-link'
  ends: [End, End]
}

export interface UnevenLinks extends Common {
  kind: 'uneven-links'
  set: 'spines' | 'lines'
  direction: 'up' | 'down'
  expected: number
  counts: { count: number; switches: string[] }[]
}

export interface SuspectedBlocking extends Common {
  kind: 'suspected-blocking'
  uplinks: number
  internalLinks: number
}

export interface AsymmetricAPorts extends Common {
  kind: 'asymmetric-aports'
  toHosts: boolean
  ports: [string, number][]
}

export interface SharedFlid extends Common {
  kind: 'shared-flid'
  flid: number
}

export type RawFinding =
  MissingLink | InvalidLink | UnevenLinks | SuspectedBlocking | AsymmetricAPorts | SharedFlid

export type Kind = RawFinding['kind']

/**
 * In the order in which the page tells them. Findings of other kinds come after these, told by what
 * their data says of itself.
 */
export const kinds: Kind[] = [
  'missing-link',
  'invalid-link',
  'uneven-links',
  'suspected-blocking',
  'asymmetric-aports',
  'shared-flid',
]

export interface RawEnd {
  guid: string
  name: string
  port: number
  /** Where its switch stands, where a list of the site says so; the page adds it. */
  place?: string | undefined
}

/** A cable as it is and as it will be; the upper end first. */
export interface RawCable {
  before: [RawEnd, RawEnd] | null
  after: [RawEnd, RawEnd] | null
}

export interface RawStep {
  id: number
  action: 'swap' | 'move' | 'connect' | 'disconnect'
  class: 'sure' | 'likely' | 'ask'
  cables: RawCable[]
  reason: string
  /** Places of the findings that are gone afterwards. */
  cures: number[]
  alternatives: RawCable[][]
}

export interface Roots {
  method: 'search' | 'inferred' | 'smdb' | 'regex'
  misfits: number
  /** Why the tree may be a wrong one; empty if nothing says so. */
  doubt: string
}

export interface Result {
  tool: string
  input: string
  status: Status
  message: string
  roots: Roots
  ranks: string[][]
  groups: RawGroup[]
  records: unknown[]
  /** How many more there are, if any. */
  recordsNotListed?: number
  issues: number
  findings: RawFinding[]
  repairs: RawStep[]
}

/** GUID, name, rank (-1: not of the tree), links to hosts, up-links, down-links (-1: not known). */
export type RawSwitch = [string, string, number, number, number, number]

/** What the terminal tells in the same words. */
export interface Told {
  verdict: string
  /** What no cable cures. */
  notes: string[]
  /** What to do when the check failed. */
  advice: string
  /** When the fabric was discovered; empty if its file does not say. */
  date: string
  /** Of a switch's index, its rack and its unit. */
  places: [number, string, string][]
}

export interface Data {
  result: Result
  told: Told
  switches: RawSwitch[]
  /** Of each cable a switch's index, its port, the other's index, its port. */
  cables: number[]
}

export function readData(): Data {
  const text = document.getElementById('data')?.textContent ?? ''
  return JSON.parse(text) as Data
}
