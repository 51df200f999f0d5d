// What an opened row of the list tells: where to look, and the switches with their numbers.

import { showSwitch, showView, type App } from './actions'
import { copy } from './copy'
import { kinds, type AsymmetricAPorts, type UnevenLinks } from './data'
import { button, make, nameText } from './dom'
import type { Finding, Model } from './model'
import { adviceOf, asText, counted, cut, groupName, nameOf, rankName, type Part } from './words'

const mostSwitches = 60
const mostGroups = 4

/** A switch of the text, to be looked at by a click. */
export function switchLink(app: App, index: number): HTMLElement {
  const one = app.model.switches[index]
  const link = button('', { class: 'link', title: one.guid }, (event) => {
    event.stopPropagation()
    showSwitch(app, index)
  })
  link.append(nameText(nameOf(one)))
  return link
}

function sentence(app: App, parts: Part[]): (Node | string)[] {
  return parts.map((part) => (typeof part === 'string' ? part : switchLink(app, part)))
}

function linkFor(app: App, guid: string): Node {
  const index = app.model.switchAt(guid)
  return index >= 0 ? switchLink(app, index) : document.createTextNode(guid)
}

function many(app: App, guids: string[]): (Node | string)[] {
  const shown = guids.slice(0, mostSwitches).flatMap((guid) => [linkFor(app, guid), ' '])
  const rest = guids.length - mostSwitches
  return rest > 0 ? [...shown, `and ${counted(rest, 'more', 'more')}`] : shown
}

function countsTable(app: App, raw: UnevenLinks): HTMLElement {
  const rows = raw.counts.map(({ count, switches }) =>
    make(
      'tr',
      {},
      make('th', { scope: 'row' }, make('b', {}, String(count)), ` instead of ${raw.expected}`),
      make('td', {}, ...many(app, switches)),
    ),
  )
  return make('table', { class: 'counts' }, make('tbody', {}, ...rows))
}

function portsList(app: App, raw: AsymmetricAPorts): HTMLElement {
  const items = raw.ports
    .slice(0, mostSwitches)
    .map(([guid, port]) => make('li', {}, linkFor(app, guid), ` port ${port}`))
  const rest = raw.ports.length - mostSwitches
  if (rest > 0) items.push(make('li', {}, `and ${counted(rest, 'more', 'more')}`))
  return make('ul', { class: 'ports' }, ...items)
}

function switchRows(app: App, finding: Finding): HTMLElement {
  const { model } = app
  const rows = finding.switches.map((index) => {
    const one = model.switches[index]
    return make(
      'li',
      {},
      switchLink(app, index),
      make('code', {}, one.guid),
      ` ${rankName(one.rank, model.levels)}`,
    )
  })
  return make('ul', { class: 'ports' }, ...rows)
}

function specifics(app: App, finding: Finding): HTMLElement[] {
  const { raw } = finding
  if (raw.kind === 'uneven-links') return [countsTable(app, raw)]
  if (raw.kind === 'asymmetric-aports') return [portsList(app, raw)]
  return finding.switches.length > 0 ? [switchRows(app, finding)] : []
}

/** Switches and ports that the title only counts: paper has no row to open. */
export function untoldByTitle(app: App, finding: Finding): HTMLElement[] {
  const { kind } = finding.raw
  const isTold =
    kind === 'uneven-links'
      ? finding.switches.length === 1
      : kinds.includes(kind) && kind !== 'asymmetric-aports'
  return isTold ? [] : [make('div', { class: 'details' }, ...specifics(app, finding))]
}

/** Groups with the counted links where the finding's own group has none of them. */
function elsewhere(model: Model, { raw, switches }: Finding): number[] {
  if (raw.kind !== 'uneven-links') return []
  const isOutside = (raw.set === 'spines') === (raw.direction === 'up')
  if (!isOutside) return []
  const groups = switches.map((index) => {
    const { asSpine, asLine } = model.switches[index]
    return raw.direction === 'up' ? asLine : asSpine
  })
  return [...new Set(groups)].filter((index) => index >= 0).slice(0, mostGroups)
}

function buttons(app: App, finding: Finding): HTMLElement {
  const { model } = app
  const row = make('div', { class: 'buttons' })
  const others = elsewhere(model, finding)
  for (const index of finding.groups.slice(0, mostGroups)) {
    const isOne = finding.groups.length === 1 && others.length === 0
    const name = isOne ? '' : ` of ${groupName(model.groups[index])}`
    row.append(
      button(cut(`Matrix${name}`), { class: 'small' }, () => showView(app, 'matrix', index)),
    )
  }
  for (const index of others) {
    const name = `Matrix of ${groupName(model.groups[index])}`
    row.append(button(name, { class: 'small' }, () => showView(app, 'matrix', index)))
  }
  row.append(button('Tree', { class: 'small' }, () => showView(app, 'tree')))
  const text = asText(model, finding)
  const control = button('Copy', { class: 'small' }, () => void copy(text, control))
  row.append(control)
  return row
}

export function detailsOf(app: App, finding: Finding): HTMLElement {
  return make(
    'div',
    { class: 'details' },
    make('p', {}, ...sentence(app, adviceOf(app.model, finding))),
    ...specifics(app, finding),
    buttons(app, finding),
  )
}
