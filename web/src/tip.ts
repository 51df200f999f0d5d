// The small text beside the pointer.

import { byId, make, nameText } from './dom'
import type { Model } from './model'
import { capital, counted, groupName, nameOf, plain, rankName, titleOf } from './words'

export interface Tip {
  title: string
  lines: string[]
}

const away = 14

export function showTip(tip: Tip | null, x: number, y: number): void {
  const element = byId('tip')
  element.hidden = tip === null
  if (!tip) return
  element.replaceChildren(
    make('strong', {}, nameText(tip.title)),
    ...tip.lines.map((line) => make('span', {}, line)),
  )
  const { offsetWidth, offsetHeight } = element
  const left = x + away + offsetWidth > innerWidth ? x - away - offsetWidth : x + away
  const top = y + away + offsetHeight > innerHeight ? y - away - offsetHeight : y + away
  element.style.left = `${Math.max(4, Math.min(left, innerWidth - offsetWidth - 4))}px`
  element.style.top = `${Math.max(4, top)}px`
}

export function hideTip(): void {
  showTip(null, 0, 0)
}

/** Links in both directions, where they are known. */
export function linksOf(model: Model, index: number): string {
  const one = model.switches[index]
  const known = one.up >= 0 && one.down >= 0
  const links = known ? `${number(one.up)} up, ${number(one.down)} down` : ''
  return [links, counted(one.hosts, 'host')].filter((text) => text).join(' · ')
}

function number(value: number): string {
  return value.toLocaleString('en-US')
}

export function groupsAt(model: Model, index: number): string[] {
  const { asSpine, asLine } = model.switches[index]
  const texts: string[] = []
  if (asSpine >= 0) texts.push(`spine of ${groupName(model.groups[asSpine])}`)
  if (asLine >= 0) texts.push(`line of ${groupName(model.groups[asLine])}`)
  return texts
}

export function switchTip(model: Model, index: number): Tip {
  const one = model.switches[index]
  const lines = [one.guid, capital(rankName(one.rank, model.levels)), linksOf(model, index)]
  lines.push(...groupsAt(model, index).map(capital))
  if (one.findings.length > 0) lines.push(counted(one.findings.length, 'finding'))
  return { title: nameOf(one), lines }
}

export function groupTip(model: Model, index: number): Tip {
  const group = model.groups[index]
  const size = `${counted(group.spines.length, 'spine')}, ${counted(group.lines.length, 'line')}`
  const lines = [size, counted(group.findings.length, 'finding'), 'Click to open']
  return { title: capital(groupName(group)), lines }
}

const mostGroups = 12

/** Of a badge that stands for several groups. */
export function groupsTip(model: Model, indexes: number[]): Tip {
  const lines = indexes.slice(0, mostGroups).map((index) => {
    const group = model.groups[index]
    return `${capital(groupName(group))}: ${counted(group.findings.length, 'finding')}`
  })
  const rest = indexes.length - lines.length
  if (rest > 0) lines.push(`and ${counted(rest, 'more', 'more')}`)
  return { title: counted(indexes.length, 'group'), lines: [...lines, 'Click to come nearer'] }
}

export function findingTip(model: Model, index: number): Tip {
  const finding = model.findings[index]
  return { title: plain(model, titleOf(model, finding)), lines: [] }
}
