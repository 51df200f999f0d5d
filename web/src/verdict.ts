// The answer first: one sentence, then the numbers.

import { kinds, type Kind } from './data'
import type { Model } from './model'
import { capital, counted, groupName, kindName, listed } from './words'

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

/** All holds for the tree that was checked, which may be a wrong one. */
function condition({ result: { roots } }: Model): string {
  if (roots.method === 'inferred') return ', if the inferred tree is right'
  return roots.doubt ? ', if the tree is right' : ''
}

export function verdictOf(model: Model): string {
  if (model.result.status === 'failed') return 'The check could not be finished'
  if (model.repairs.length > 0 || model.told.notes.length > 0) return capital(model.told.verdict)
  const isClean = model.findings.length === 0
  const found = isClean ? 'No faults found' : `${whatWasFound(model)}${where(model)}`
  return `${found}${condition(model)}`
}

/** What a reader should know was looked at when nothing was found. */
export function whatWasChecked(model: Model): string {
  if (model.result.status === 'failed' || model.findings.length > 0) return ''
  const isInTree = model.switches.map((one) => one.rank >= 0)
  let cables = 0
  for (let at = 0; at < model.cables.length; at += 4)
    if (isInTree[model.cables[at]] && isInTree[model.cables[at + 2]]) cables++
  const texts = [
    counted(model.levels, 'level'),
    counted(isInTree.filter(Boolean).length, 'switch', 'switches'),
    `${counted(cables, 'cable')} between them`,
    counted(model.hosts, 'host link'),
  ]
  return `Checked: ${listed(texts)}.`
}
