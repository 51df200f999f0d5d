// What to do about the findings: the steps in which cables are moved, as `fabscope repair` has them.

import { findInList, goBack, showRepair, type App } from './actions'
import type { RawCable, RawEnd } from './data'
import { button, byId, make, nameText } from './dom'
import { countCured, type Repair } from './model'
import { counted, cut, nameOf, placeOf, titleOf } from './words'

/** A fabric that wants more is cabled anew, and not from a page. */
const most = 100
const mostCured = 60

type Piece = Node | string

function endOf(end: RawEnd): Piece[] {
  const name = nameText(cut(end.name.trim() === '' ? end.guid : end.name))
  const port = ` port ${end.port}`
  return end.place ? [name, `${port} (`, nameText(end.place), ')'] : [name, port]
}

function endsOf([upper, lower]: [RawEnd, RawEnd]): Piece[] {
  return [...endOf(upper), ' – ', ...endOf(lower)]
}

const same = (a: RawEnd, b: RawEnd) => a.guid === b.guid && a.port === b.port

/** The end that stays in its port, and the other one as it is and as it will be. */
function movedEnd({ before, after }: RawCable): [RawEnd, RawEnd, RawEnd] | undefined {
  if (!before || !after) return undefined
  for (const [kept, from] of [
    [before[1], before[0]],
    [before[0], before[1]],
  ]) {
    const place = after.findIndex((end) => same(end, kept))
    if (place >= 0) return [kept, from, after[1 - place]]
  }
  return undefined
}

function changeOf(cable: RawCable): Piece[] {
  const moved = movedEnd(cable)
  if (moved) {
    const [kept, from, to] = moved.map(endOf)
    return [...kept, ': from ', ...from, ' to ', ...to]
  }
  const { before, after } = cable
  if (before && after) return ['from ', ...endsOf(before), ' to ', ...endsOf(after)]
  const ends = before ?? after
  return ends ? endsOf(ends) : []
}

function curedLinks(app: App, { raw }: Repair): HTMLElement[] {
  const { model } = app
  const links = raw.cures.slice(0, mostCured).map((index) => {
    const link = button('', { class: 'link', 'data-shows': index }, () => findInList(app, index))
    for (const part of titleOf(model, model.findings[index]))
      link.append(typeof part === 'string' ? part : nameText(nameOf(model.switches[part])))
    return make('li', {}, link, ` (${placeOf(model.findings[index])})`)
  })
  const rest = raw.cures.length - links.length
  if (rest > 0) links.push(make('li', {}, `and ${counted(rest, 'more', 'more')}`))
  return links
}

/** What it is good for; only made when the reader asks. */
function curedBy(app: App, repair: Repair): HTMLElement {
  const list = make('ul')
  const count = counted(repair.raw.cures.length, 'finding')
  const folded = make('details', {}, make('summary', {}, `cures ${count}`), list)
  folded.addEventListener('toggle', () => {
    if (folded.open && list.childElementCount === 0) list.append(...curedLinks(app, repair))
  })
  return folded
}

function rowOf(app: App, repair: Repair): HTMLElement {
  const { raw, index } = repair
  const { store } = app
  const head = button('', { class: 'repair', 'data-repair': raw.id }, () => {
    if (store.state.repair === index) goBack(app)
    else showRepair(app, index)
  })
  const changes = raw.cables.map((cable) => make('span', {}, ...changeOf(cable)))
  head.append(
    make('b', { class: 'step' }, `${raw.id}.`),
    make('span', { class: `trust ${raw.class}` }, raw.class),
    make('b', { class: 'action' }, raw.action),
    make('span', { class: 'changes' }, ...changes),
  )
  store.watch((state) => head.setAttribute('aria-pressed', String(state.repair === index)))
  const more = raw.alternatives.length
  const others = more > 0 ? ` ${counted(more, 'alternative')} in fabscope repair.` : ''
  const row = make('li', { 'data-cures': raw.cures.length }, head)
  row.append(make('small', {}, raw.reason + others))
  if (raw.cures.length > 0) row.append(curedBy(app, repair))
  return row
}

/** Scrolls their list alone: on a small screen the picture is what the reader looks at. */
function bringIntoSight(list: HTMLElement, index: number): void {
  const row = list.children[index]
  if (!(row instanceof HTMLElement)) return
  const top = row.offsetTop - list.offsetTop
  const isAbove = top < list.scrollTop
  if (isAbove || top + row.offsetHeight > list.scrollTop + list.clientHeight) list.scrollTop = top
}

/** Nothing is shown when there is nothing to do. */
export function showRepairs(app: App): void {
  const { repairs, findings } = app.model
  const section = byId('repairs')
  section.hidden = repairs.length === 0 && app.model.told.notes.length === 0
  const cured = countCured(app.model)
  const left = findings.length - cured
  Object.assign(section.dataset, { count: repairs.length, cured })
  const unexplained = cured > 0 && left > 0 ? `, ${counted(left, 'finding')} unexplained` : ''
  byId('repairs-title').textContent =
    repairs.length === 0 ? 'Notes' : `${counted(repairs.length, 'repair')}${unexplained}`
  const list = byId('repair-list')
  list.append(...repairs.slice(0, most).map((repair) => rowOf(app, repair)))
  if (repairs.length > most)
    list.append(make('li', { class: 'rest' }, 'Run fabscope repair for the rest.'))
  for (const note of app.model.told.notes)
    list.append(make('li', { class: 'said' }, nameText(`Note: ${note}.`)))
  app.store.watch((state, before) => {
    if (state === before || state.repair !== before.repair) bringIntoSight(list, state.repair)
  })
}
