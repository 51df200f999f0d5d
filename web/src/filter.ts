// Which findings the list shows, and in which order.

import { kinds } from './data'
import type { Finding, Model } from './model'
import type { Order, State } from './state'
import { placeOf, plain, titleOf } from './words'

/** What a search looks through, in small letters, made when it is first needed. */
export function searchTexts(model: Model): (index: number) => string {
  const texts: string[] = []
  return (index) => {
    texts[index] ??= searchText(model, model.findings[index])
    return texts[index]
  }
}

const longestName = 1000

function searchText(model: Model, finding: Finding): string {
  const { raw } = finding
  const switches = finding.switches.map((index) => {
    const { name, guid } = model.switches[index]
    return `${name.slice(0, longestName)} ${guid}`
  })
  const ports = raw.kind === 'asymmetric-aports' ? raw.ports.map((port) => `port ${port[1]}`) : []
  const title = plain(model, titleOf(model, finding))
  return [title, placeOf(finding), raw.kind, ...switches, ...ports].join(' ').toLowerCase()
}

function matches(finding: Finding, state: State): boolean {
  if (state.kind && finding.raw.kind !== state.kind) return false
  if (state.inGroup >= 0 && !finding.groups.includes(state.inGroup)) return false
  return state.atSwitch < 0 || finding.switches.includes(state.atSwitch)
}

const keys: Record<Order, (finding: Finding) => number> = {
  unexplained: (finding) => finding.curedBy[0] ?? -1,
  found: () => 0,
  level: (finding) => -finding.raw.level,
  kind: (finding) =>
    kinds.includes(finding.raw.kind) ? kinds.indexOf(finding.raw.kind) : kinds.length,
  group: (finding) => finding.groups[0] ?? Infinity,
}

export function shownFindings(
  model: Model,
  state: State,
  textOf: (index: number) => string,
): number[] {
  const words = state.query.toLowerCase().split(/\s+/).filter(Boolean)
  const key = keys[state.order]
  return model.findings
    .filter((finding) => matches(finding, state))
    .filter((finding) => words.every((word) => textOf(finding.index).includes(word)))
    .sort((a, b) => key(a) - key(b) || a.index - b.index)
    .map((finding) => finding.index)
}
