// The page's plain words for what was found, as text with the switches that it names.

import type { GroupKind, InvalidLink, Kind, RawFinding, UnevenLinks } from './data'
import type { Finding, Group, Model, Switch } from './model'

/** A piece of a sentence: text, or a switch (by index). */
export type Part = string | number

const kindNames: Partial<Record<Kind, [one: string, more: string]>> = {
  'missing-link': ['missing link', 'missing links'],
  'invalid-link': ['invalid link', 'invalid links'],
  'uneven-links': ['uneven count', 'uneven counts'],
  'suspected-blocking': ['case of suspected blocking', 'cases of suspected blocking'],
  'asymmetric-aports': ['case of asymmetric ports', 'cases of asymmetric ports'],
  'shared-flid': ['shared FLID', 'shared FLIDs'],
}

/** What findings of all kinds have. */
const commonKeys = ['kind', 'level', 'groupKind', 'groups', 'issues']

export function kindName(kind: Kind): [one: string, more: string] {
  const other = kind.replaceAll('-', ' ')
  return kindNames[kind] ?? [other, other]
}

export const number = new Intl.NumberFormat('en-US')

export function counted(count: number, one: string, more = `${one}s`): string {
  return `${number.format(count)} ${count === 1 ? one : more}`
}

/** Names are as long as whoever set them liked. */
export function cut(text: string, most = 64): string {
  const short = text.slice(0, most * 2)
  const letters = Array.from(short)
  return letters.length <= most && short.length === text.length
    ? text
    : `${letters.slice(0, most - 1).join('')}…`
}

/** A switch as texts name it: by its GUID when it has no name. */
export function nameOf(one: Switch, most = 64): string {
  return cut(one.name.trim() === '' ? one.guid : one.name, most)
}

function inCommon(texts: string[][]): number {
  const [first, ...others] = texts
  const at = first.findIndex((letter, index) => others.some((one) => one[index] !== letter))
  return at < 0 ? first.length : at
}

/** Names side by side: where they are too long, without what they all begin with. */
export function headNames(names: string[], most: number): string[] {
  const texts = names.map((name) => Array.from(name))
  if (texts.every((text) => text.length <= most)) return names
  let from = texts.length > 1 ? inCommon(texts) : 0
  // Words and numbers stay whole.
  while (from > 0 && /[\p{L}\p{N}]/u.test(texts[0][from - 1])) from--
  return texts.map((text) => {
    const start = Math.max(0, Math.min(from, text.length - 1), text.length - most + 1)
    return start > 0 ? `…${text.slice(start).join('')}` : text.join('')
  })
}

export function capital(text: string): string {
  return text.charAt(0).toUpperCase() + text.slice(1)
}

export function groupName(group: Group): string {
  return `${group.kind} ${group.id}`
}

export function rankName(rank: number, levels: number): string {
  if (rank < 0) return 'not part of the tree'
  if (rank === 0) return 'rank 0 (roots)'
  return rank === levels - 1 ? `rank ${rank} (leaves)` : `rank ${rank}`
}

export function listed(texts: string[]): string {
  if (texts.length < 2) return texts.join('')
  return `${texts.slice(0, -1).join(', ')} and ${texts[texts.length - 1]}`
}

function groupsInWords(kind: GroupKind, ids: number[]): string {
  const known = [...new Set(ids)]
  return `${kind}${known.length > 1 ? 's' : ''} ${listed(known.map(String))}`
}

/** Where a finding is: "neighborhood 3", "connectivity groups 0 and 2". */
export function placeOf(finding: Finding): string {
  return groupsInWords(finding.raw.groupKind, finding.raw.groups)
}

const mostCures = 4

/** Which repairs a finding waits for; nothing if none cures it. */
export function cureOf(model: Model, { curedBy }: Finding): string {
  if (curedBy.length === 0) return ''
  const ids = curedBy.slice(0, mostCures).map((index) => String(model.repairs[index].raw.id))
  const rest = curedBy.length - ids.length
  if (rest > 0) ids.push(`${number.format(rest)} more`)
  return `cured by repair${curedBy.length > 1 ? 's' : ''} ${listed(ids)}`
}

/** A GUID of a finding as a switch, or as text if the page does not know it. */
function named(model: Model, guid: string): Part {
  const index = model.switchAt(guid)
  return index >= 0 ? index : guid
}

function unevenTitle(model: Model, raw: UnevenLinks): Part[] {
  const odd = raw.counts.reduce((sum, count) => sum + count.switches.length, 0)
  const links = (count: number) => counted(count, `${raw.direction}-link`)
  if (raw.counts.length !== 1)
    return [`${number.format(odd)} ${raw.set} do not have ${links(raw.expected)}`]
  const [{ count, switches }] = raw.counts
  const has = `${links(count)} instead of ${number.format(raw.expected)}`
  if (odd === 1) return [named(model, switches[0]), ` has ${has}`]
  return [`${number.format(odd)} ${raw.set} have ${has}`]
}

/** Of a kind without words of its own: its name and what is counted. */
function otherTitle(raw: RawFinding): string {
  const told = Object.entries(raw)
    .filter(([key, value]) => typeof value !== 'object' && !commonKeys.includes(key))
    .filter(([, value]) => !String(value).startsWith('0x'))
    .map(([key, value]) => `${key} ${value}`)
  return [capital(kindName(raw.kind)[0]), told.join(', ')].filter(Boolean).join(': ')
}

/** What is wrong, in one sentence. */
export function titleOf(model: Model, { raw }: Finding): Part[] {
  switch (raw.kind) {
    case 'missing-link':
      return ['No cable between ', named(model, raw.spine), ' and ', named(model, raw.line)]
    case 'invalid-link': {
      const [a, b] = raw.ends
      if (a.switch === b.switch)
        return [named(model, a.switch), ` port ${a.port} is cabled to its own port ${b.port}`]
      return [
        named(model, a.switch),
        ` port ${a.port} is cabled to `,
        named(model, b.switch),
        ` port ${b.port}`,
      ]
    }
    case 'uneven-links':
      return unevenTitle(model, raw)
    case 'suspected-blocking':
      return [
        `Spines have ${counted(raw.uplinks, 'up-link')} for ${counted(raw.internalLinks, 'link')} to lines`,
      ]
    case 'asymmetric-aports': {
      const where = raw.toHosts ? 'to hosts' : 'between spines and lines'
      return [`${counted(raw.issues, 'asymmetric aggregated port')} ${where}`]
    }
    case 'shared-flid':
      return [`FLID ${raw.flid} appears in ${groupsInWords(raw.groupKind, raw.groups)}`]
    default:
      return [otherTitle(raw)]
  }
}

function invalidAdvice(model: Model, raw: InvalidLink): string {
  const [a, b] = raw.ends
  if (a.switch === b.switch)
    return 'The cable leads back to the switch that it comes from. Follow it to see which end belongs in another switch.'
  const wrong =
    a.rank === b.rank
      ? `Both switches are on ${rankName(a.rank, model.levels)}. Cables should lead from one rank to the next.`
      : `The cable crosses between ${groupsInWords(raw.groupKind, raw.groups)}.`
  return `${wrong} Follow the cable to see which end belongs in another switch.`
}

/** Ports that lead to no switch, but do so at others of the rank: where a missing cable may belong. */
export function sparePorts(model: Model, index: number): number[] {
  const used = new Set(model.cablesOf(index).map((cable) => cable.port))
  const highest = model.highestPorts.get(model.switches[index].rank) ?? 0
  const spare = []
  for (let port = 1; port <= highest; port++) if (!used.has(port)) spare.push(port)
  return spare
}

/** Only where hosts do not take ports too, the gaps say something. */
function gapHint(model: Model, guid: string): Part[] {
  const index = model.switchAt(guid)
  if (index < 0 || model.switches[index].hosts > 0) return []
  const spare = sparePorts(model, index)
  if (spare.length === 0 || spare.length > 4) return []
  const ports = spare.length > 1 ? 'ports' : 'port'
  return [' ', index, ` has no cable at ${ports} ${listed(spare.map(String))}.`]
}

/** What to look at. */
export function adviceOf(model: Model, { raw }: Finding): Part[] {
  switch (raw.kind) {
    case 'missing-link':
      return [
        'Every spine of a group should have a cable to every line. Look for a cable that is pulled, broken or in the wrong port.',
        ...gapHint(model, raw.spine),
        ...gapHint(model, raw.line),
      ]
    case 'invalid-link':
      return [invalidAdvice(model, raw)]
    case 'uneven-links': {
      const far = raw.direction === 'up' ? 'towards the roots' : 'away from the roots'
      return [
        `The other ${raw.set} of the group have ${counted(raw.expected, 'link')} ${far}. Compare the ports.`,
      ]
    }
    case 'suspected-blocking':
      return [
        'Fewer links go up than come from below, so traffic that leaves the group may have to wait. Look for missing up-links of the spines.',
      ]
    case 'asymmetric-aports':
      return ['The planes of these ports are cabled differently or run at different speeds.']
    case 'shared-flid':
      return [
        'A FLID should belong to one neighborhood. Compare the FLIDs of the leaves in these neighborhoods.',
      ]
    default:
      return []
  }
}

/** A sentence as text. */
export function plain(model: Model, parts: Part[]): string {
  return parts
    .map((part) => (typeof part === 'string' ? part : nameOf(model.switches[part])))
    .join('')
}

/** A finding as text for a mail or a ticket. */
export function asText(model: Model, finding: Finding): string {
  const { raw } = finding
  const tag = raw.level === 3 ? 'error' : 'warning'
  const lines = [`[${tag}] ${capital(placeOf(finding))}: ${plain(model, titleOf(model, finding))}`]
  if (raw.kind === 'uneven-links')
    for (const { count, switches } of raw.counts)
      lines.push(`  ${count} instead of ${raw.expected}: ${namesOf(model, switches).join(', ')}`)
  else if (raw.kind === 'asymmetric-aports')
    for (const [guid, port] of raw.ports) lines.push(`  ${namesOf(model, [guid])[0]} port ${port}`)
  else for (const index of finding.switches) lines.push(`  ${described(model.switches[index])}`)
  return lines.join('\n')
}

function namesOf(model: Model, guids: string[]): string[] {
  return guids.map((guid) => plain(model, [named(model, guid)]))
}

function described(one: Switch): string {
  return `${nameOf(one)} (${one.guid}, rank ${one.rank})`
}
