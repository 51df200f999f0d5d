// The address keeps what is shown, so that a colleague who opens it sees the same.

import type { GroupKind, Kind } from './data'
import type { Model } from './model'
import { firstOrder, start, type Order, type State, type Store, type View } from './state'
import { countsByKind } from './verdict'

const views: View[] = ['tree', 'matrix', 'switches']
const orders: Order[] = ['unexplained', 'found', 'level', 'kind', 'group']

function groupText(model: Model, index: number): string {
  const group = model.groups[index]
  return `${group.kind.replace(' ', '-')}-${group.id}`
}

function groupFrom(model: Model, text: string): number {
  const match = /^(neighborhood|connectivity-group)-(\d+)$/.exec(text)
  return match ? model.groupAt(match[1].replace('-', ' ') as GroupKind, Number(match[2])) : -1
}

function oneOf<T extends string>(known: T[], text: string | null, otherwise: T): T {
  return known.includes(text as T) ? (text as T) : otherwise
}

export function fragmentOf(model: Model, state: State): string {
  const words = new URLSearchParams()
  if (state.view !== start.view) words.set('view', state.view)
  if (state.finding >= 0) words.set('finding', String(state.finding + 1))
  if (state.repair >= 0) words.set('repair', String(model.repairs[state.repair].raw.id))
  if (state.group >= 0) words.set('group', groupText(model, state.group))
  if (state.switch >= 0) words.set('switch', model.switches[state.switch].guid)
  if (state.kind) words.set('kind', state.kind)
  if (state.inGroup >= 0) words.set('in', groupText(model, state.inGroup))
  if (state.atSwitch >= 0) words.set('at', model.switches[state.atSwitch].guid)
  if (state.query) words.set('search', state.query)
  if (state.order !== firstOrder(model)) words.set('order', state.order)
  return words.toString()
}

export function stateFrom(model: Model, fragment: string): State {
  const words = new URLSearchParams(fragment.replace(/^#/, ''))
  const id = Number(words.get('repair'))
  const repair = model.repairs.findIndex(({ raw }) => raw.id === id)
  const number = Number(words.get('finding') ?? (model.repairs[repair]?.raw.cures[0] ?? -1) + 1)
  const finding = Number.isInteger(number) && number <= model.findings.length ? number - 1 : -1
  const own = finding >= 0 ? (model.findings[finding].groups[0] ?? -1) : -1
  const group = groupFrom(model, words.get('group') ?? '')
  return {
    view: oneOf(views, words.get('view'), start.view),
    finding: Math.max(finding, -1),
    repair,
    group: group >= 0 ? group : own,
    switch: model.switchAt(words.get('switch') ?? ''),
    kind: oneOf<Kind | ''>([...countsByKind(model).keys()], words.get('kind'), ''),
    inGroup: groupFrom(model, words.get('in') ?? ''),
    atSwitch: model.switchAt(words.get('at') ?? ''),
    query: words.get('search') ?? '',
    order: oneOf(orders, words.get('order'), firstOrder(model)),
  }
}

export function keepInAddress(model: Model, store: Store): void {
  store.watch((state) => {
    const fragment = fragmentOf(model, state)
    if (fragment === location.hash.slice(1)) return
    try {
      history.replaceState(null, '', `#${fragment}`)
    } catch {
      // A page shown inside a mail has no address to change.
    }
  })
  addEventListener('hashchange', () => store.set(stateFrom(model, location.hash)))
}
