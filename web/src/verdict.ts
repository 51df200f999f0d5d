// The answer first: one sentence, then the numbers.

import { kinds, type Kind } from './data'
import type { Model } from './model'
import { counted, groupName, kindName, listed } from './words'

export function countsByKind(model: Model): Map<Kind, number> {
  const counts = new Map<Kind, number>()
  const found = model.findings.map((finding) => finding.raw.kind)
  for (const kind of new Set([...kinds, ...found])) {
    const count = found.filter((one) => one === kind).length
    if (count > 0) counts.set(kind, count)
  }
  return counts
}

function whatWasFound(model: Model): string {
  const counts = countsByKind(model)
  const texts: string[] = []
  for (const kind of ['missing-link', 'invalid-link'] as const) {
    const count = counts.get(kind)
    if (count !== undefined) texts.push(counted(count, ...kindName(kind)))
    counts.delete(kind)
  }
  const rest = [...counts.values()].reduce((sum, count) => sum + count, 0)
  if (rest > 0) texts.push(counted(rest, texts.length > 0 ? 'other finding' : 'finding'))
  return listed(texts)
}

function where(model: Model): string {
  const hit = model.groups.filter((group) => group.findings.length > 0)
  if (hit.length === 1) return ` in ${groupName(hit[0])}`
  const texts = (['neighborhood', 'connectivity group'] as const)
    .map((kind) => ({ kind, count: hit.filter((group) => group.kind === kind).length }))
    .filter(({ count }) => count > 0)
    .map(({ kind, count }) => counted(count, kind))
  return texts.length > 0 ? ` in ${listed(texts)}` : ''
}

export function verdictOf(model: Model): string {
  if (model.result.status === 'failed') return 'The check could not be finished'
  if (model.findings.length === 0) return 'No faults found'
  return `${whatWasFound(model)}${where(model)}`
}
