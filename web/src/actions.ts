// Steps that a click, a key or the address may each ask for.

import { byId } from './dom'
import type { Model } from './model'
import type { State, Store, View } from './state'

export interface App {
  model: Model
  store: Store
}

/** A finding, and the repair for which it is shown. */
export function showFinding({ model, store }: App, index: number, repair = -1): void {
  const groups = index >= 0 ? model.findings[index].groups : []
  const { group, view } = store.state
  const own = groups.includes(group) ? group : (groups[0] ?? -1)
  store.set({
    finding: index,
    repair,
    switch: -1,
    group: own,
    // The table of switches has no place for findings.
    view: view === 'switches' ? 'tree' : view,
  })
}

/** The first that it cures shows best what it is about. */
export function showRepair(app: App, index: number): void {
  showFinding(app, app.model.repairs[index].raw.cures[0] ?? -1, index)
}

export function showSwitch({ store }: App, index: number): void {
  store.set({ switch: index })
}

export function showGroup({ store }: App, index: number): void {
  store.set({ group: index, switch: -1, finding: -1, repair: -1 })
}

/** On a small screen the picture may be far from the list. */
export function showView({ store }: App, view: View, group = store.state.group): void {
  store.set({ view, group })
  byId('stage').scrollIntoView({ block: 'nearest' })
}

const unfiltered: Partial<State> = { kind: '', inGroup: -1, atSwitch: -1, query: '' }

export function clearFilters({ store }: App): void {
  store.set(unfiltered)
}

/** Also when the list was narrowed to others. */
export function findInList(app: App, index: number): void {
  clearFilters(app)
  showFinding(app, index)
}

/** One step back: the last thing that was opened is closed first. */
export function goBack(app: App): void {
  const { state } = app.store
  if (state.switch >= 0) app.store.set({ switch: -1 })
  else if (state.finding >= 0 || state.repair >= 0) app.store.set({ finding: -1, repair: -1 })
  else if (state.group >= 0) app.store.set({ group: -1 })
  else clearFilters(app)
}
