// The fabric as the page looks at it: everything by index, so that views need no look-ups by name.

import type { Data, GroupKind, RawFinding, RawStep, Result, Told } from './data'

export interface Switch {
  index: number
  guid: string
  name: string
  /** -1: not part of the tree. */
  rank: number
  hosts: number
  /** -1: not known. */
  up: number
  down: number
  /** The group that it is a spine of, and the one that it is a line of; -1: none. */
  asSpine: number
  asLine: number
  findings: number[]
}

export interface Group {
  index: number
  kind: GroupKind
  id: number
  rank: number
  spines: number[]
  lines: number[]
  findings: number[]
}

export interface Finding {
  index: number
  raw: RawFinding
  /** Its groups and switches, by index. */
  groups: number[]
  switches: number[]
  /** Repairs without all of which it stays. */
  curedBy: number[]
}

/** A step of the repair plan. */
export interface Repair {
  index: number
  raw: RawStep
  /** Where it moves cables. */
  switches: number[]
}

/** A cable as one of its switches sees it. */
export interface Cable {
  index: number
  port: number
  peer: number
  peerPort: number
}

export interface Model {
  result: Result
  switches: Switch[]
  groups: Group[]
  findings: Finding[]
  repairs: Repair[]
  told: Told
  cables: Int32Array
  /** Cable by cable: the finding that calls it invalid, or -1. */
  invalidBy: Int32Array
  /** Rank by rank: the highest port that a cable to another switch is in. */
  highestPorts: Map<number, number>
  levels: number
  hosts: number
  switchAt(guid: string): number
  groupAt(kind: GroupKind, id: number): number
  cablesOf(index: number): Cable[]
}

/** For every switch where its ends of cables are, one list after the other. */
interface Ends {
  from: Int32Array
  place: Int32Array
}

function endsOf(count: number, cables: Int32Array): Ends {
  const from = new Int32Array(count + 1)
  for (let i = 0; i < cables.length; i += 2) from[cables[i] + 1]++
  for (let i = 0; i < count; i++) from[i + 1] += from[i]
  const next = from.slice()
  const place = new Int32Array(cables.length / 2)
  for (let i = 0; i < cables.length; i += 2) place[next[cables[i]]++] = i
  return { from, place }
}

/** The cable of an end: both may be at one switch, so only their places tell them apart. */
function cableFrom(cables: Int32Array, end: number): Cable {
  const far = end ^ 2
  return {
    index: end >> 2,
    port: cables[end + 1],
    peer: cables[far],
    peerPort: cables[far + 1],
  }
}

/** All texts in it that look like a GUID. */
function guidsIn(value: unknown): string[] {
  if (typeof value === 'string') return /^0x[0-9a-f]{16}$/.test(value) ? [value] : []
  return value instanceof Object ? Object.values(value).flatMap(guidsIn) : []
}

/** GUIDs of all switches that a finding names. */
function namedIn(finding: RawFinding): string[] {
  switch (finding.kind) {
    case 'missing-link':
      return [finding.spine, finding.line]
    case 'invalid-link':
      return finding.ends.map((end) => end.switch)
    case 'uneven-links':
      return finding.counts.flatMap((count) => count.switches)
    case 'asymmetric-aports':
      return finding.ports.map((port) => port[0])
    case 'suspected-blocking':
    case 'shared-flid':
      return []
    default:
      return guidsIn(finding)
  }
}

function guidsOf({ cables }: RawStep): string[] {
  const ends = cables.flatMap(({ before, after }) => [...(before ?? []), ...(after ?? [])])
  return ends.map((end) => end.guid)
}

function highestPortsOf(switches: Switch[], cables: Int32Array): Map<number, number> {
  const highest = new Map<number, number>()
  for (let at = 0; at < cables.length; at += 2) {
    const { rank } = switches[cables[at]]
    highest.set(rank, Math.max(cables[at + 1], highest.get(rank) ?? 0))
  }
  return highest
}

function markInvalid(model: Model): void {
  const portAt = new Map<number, number>()
  for (const { raw, index } of model.findings)
    if (raw.kind === 'invalid-link')
      for (const end of raw.ends) portAt.set(model.switchAt(end.switch) * 256 + end.port, index)
  if (portAt.size === 0) return
  for (let at = 0; at < model.cables.length; at += 4) {
    const found = portAt.get(model.cables[at] * 256 + model.cables[at + 1])
    if (found !== undefined) model.invalidBy[at >> 2] = found
  }
}

/** "R12, unit 7" at each end of a cable that a repair changes. */
function markPlaces({ result, switches, told }: Data): void {
  const places = new Map(
    told.places.map(([index, rack, unit]) => [
      switches[index][0],
      [rack, unit && `unit ${unit}`].filter(Boolean).join(', '),
    ]),
  )
  for (const { cables } of result.repairs)
    for (const end of cables.flatMap(({ before, after }) => [...(before ?? []), ...(after ?? [])]))
      end.place = places.get(end.guid)
}

function switchesOf(data: Data): Switch[] {
  return data.switches.map(([guid, name, rank, hosts, up, down], index) => ({
    index,
    guid,
    name,
    rank,
    hosts,
    up,
    down,
    asSpine: -1,
    asLine: -1,
    findings: [],
  }))
}

function groupsOf(data: Data, indexOf: (guid: string) => number): Group[] {
  const known = (guids: string[]) => guids.map(indexOf).filter((index) => index >= 0)
  return data.result.groups.map((raw, index) => ({
    index,
    kind: raw.kind,
    id: raw.id,
    rank: raw.rank,
    spines: known(raw.spines),
    lines: known(raw.lines),
    findings: [],
  }))
}

export function modelOf(data: Data): Model {
  const { result } = data
  const byGuid = new Map(data.switches.map((raw, index) => [raw[0], index]))
  const switchAt = (guid: string) => byGuid.get(guid) ?? -1
  const switches = switchesOf(data)
  const groups = groupsOf(data, switchAt)
  const byKey = new Map(groups.map((group) => [`${group.kind} ${group.id}`, group.index]))
  const groupAt = (kind: GroupKind, id: number) => byKey.get(`${kind} ${id}`) ?? -1
  const present = (index: number) => index >= 0
  const findings = result.findings.map((raw, index) => ({
    index,
    raw,
    groups: raw.groups.map((id) => groupAt(raw.groupKind, id)).filter(present),
    switches: [...new Set(namedIn(raw).map(switchAt).filter(present))],
    curedBy: [] as number[],
  }))
  markPlaces(data)
  const repairs = result.repairs.map((raw, index) => ({
    index,
    raw,
    switches: [...new Set(guidsOf(raw).map(switchAt).filter(present))],
  }))
  for (const { raw, index } of repairs)
    for (const cured of raw.cures) findings[cured].curedBy.push(index)
  for (const group of groups) {
    for (const index of group.spines) switches[index].asSpine = group.index
    for (const index of group.lines) switches[index].asLine = group.index
  }
  for (const finding of findings) {
    for (const index of finding.groups) groups[index].findings.push(finding.index)
    for (const index of finding.switches) switches[index].findings.push(finding.index)
  }
  const cables = Int32Array.from(data.cables)
  const ends = endsOf(switches.length, cables)
  const model: Model = {
    result,
    switches,
    groups,
    findings,
    repairs,
    told: data.told,
    cables,
    invalidBy: new Int32Array(cables.length / 4).fill(-1),
    highestPorts: highestPortsOf(switches, cables),
    levels: result.ranks.length,
    hosts: switches.reduce((sum, one) => sum + one.hosts, 0),
    switchAt,
    groupAt,
    cablesOf: (index) =>
      Array.from(ends.place.subarray(ends.from[index], ends.from[index + 1]), (end) =>
        cableFrom(cables, end),
      ).sort((a, b) => a.port - b.port),
  }
  markInvalid(model)
  return model
}

/** 3 error, 2 warning, 0 nothing found. */
export function worstLevel(model: Model, findings: number[]): number {
  return findings.reduce((worst, index) => Math.max(worst, model.findings[index].raw.level), 0)
}

/** How many findings are gone once all repairs are done. */
export function countCured(model: Model): number {
  return model.findings.filter((finding) => finding.curedBy.length > 0).length
}
