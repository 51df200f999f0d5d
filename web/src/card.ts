// The chosen switch: what it is, and where each of its cables leads.

import { showFinding, showGroup, showSwitch, type App } from './actions'
import { copy } from './copy'
import { announce, button, byId, make, nameText } from './dom'
import type { Cable } from './model'
import { linksOf } from './tip'
import {
  capital,
  counted,
  cut,
  groupName,
  nameOf,
  placeOf,
  plain,
  rankName,
  titleOf,
} from './words'

const longestName = 400
const mostFindings = 8

function cableRow(app: App, cable: Cable): HTMLElement {
  const peer = app.model.switches[cable.peer]
  const own = app.model.switches[app.store.state.switch]
  const invalid = app.model.invalidBy[cable.index] >= 0
  const way = invalid ? '✕' : peer.rank < 0 || own.rank < 0 ? '' : peer.rank < own.rank ? '↑' : '↓'
  const to = button('', { class: 'link', title: peer.guid }, () => showSwitch(app, cable.peer))
  to.append(nameText(nameOf(peer)))
  return make(
    'tr',
    invalid ? { class: 'invalid' } : {},
    make('td', { class: 'port' }, String(cable.port)),
    make('td', { class: 'way', 'aria-hidden': 'true' }, way),
    make('td', {}, to),
    make('td', { class: 'port' }, String(cable.peerPort)),
  )
}

function cableTable(app: App, cables: Cable[]): HTMLElement {
  const head = ['Port', '', 'leads to', 'port'].map((text) => make('th', { scope: 'col' }, text))
  return make(
    'table',
    { class: 'cables' },
    make('thead', {}, make('tr', {}, ...head)),
    make('tbody', {}, ...cables.map((cable) => cableRow(app, cable))),
  )
}

function findingsOf(app: App, findings: number[]): HTMLElement[] {
  const { model, store } = app
  const links = findings.slice(0, mostFindings).map((index) => {
    const finding = model.findings[index]
    const text = cut(plain(model, titleOf(model, finding)), 160)
    const link = button('', { class: 'link' }, () => showFinding(app, index))
    link.append(nameText(text), ` (${placeOf(finding)})`)
    return make('li', {}, link)
  })
  if (links.length === 0) return []
  const only = button(
    `List only its ${counted(findings.length, 'finding')}`,
    { class: 'small' },
    () => store.set({ atSwitch: store.state.switch, kind: '', inGroup: -1, query: '' }),
  )
  return [make('ul', { class: 'at-switch' }, ...links), only]
}

function groupButtons(app: App, index: number): HTMLElement {
  const { asSpine, asLine } = app.model.switches[index]
  const row = make('p', { class: 'facts' })
  for (const [group, role] of [
    [asSpine, 'Spine of '],
    [asLine, 'Line of '],
  ] as const)
    if (group >= 0)
      row.append(
        make(
          'span',
          {},
          role,
          button(groupName(app.model.groups[group]), { class: 'link' }, () =>
            showGroup(app, group),
          ),
        ),
      )
  return row
}

function fill(app: App, card: HTMLElement, index: number): void {
  const { model, store } = app
  const one = model.switches[index]
  const guid = button(
    one.guid,
    { class: 'link guid', title: 'Copy the GUID' },
    () => void copy(one.guid, guid),
  )
  const close = button('×', { class: 'quiet close', 'aria-label': 'Close (Escape)' }, () =>
    store.set({ switch: -1 }),
  )
  const cables = model.cablesOf(index)
  card.replaceChildren(
    close,
    make(
      'h3',
      {},
      nameText(cut(one.name.trim() === '' ? 'Switch without a name' : one.name, longestName)),
    ),
    guid,
    make(
      'p',
      { class: 'facts' },
      make('span', {}, capital(rankName(one.rank, model.levels))),
      make('span', {}, linksOf(model, index)),
    ),
    groupButtons(app, index),
    ...findingsOf(app, one.findings),
    cables.length > 0
      ? cableTable(app, cables)
      : make('p', {}, 'No cable leads to another switch.'),
  )
}

export function startCard(app: App): void {
  const card = byId('card')
  app.store.watch((state, before) => {
    if (state !== before && state.switch === before.switch) return
    card.hidden = state.switch < 0
    if (state.switch < 0) return
    fill(app, card, state.switch)
    card.scrollTop = 0
    const one = app.model.switches[state.switch]
    announce(`Chosen: ${nameOf(one)}, ${linksOf(app.model, state.switch)}`)
  })
}
