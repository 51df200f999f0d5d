// What the reader looks at. Views change it here and draw what it says.

import type { Kind } from './data'
import type { Model } from './model'

export type View = 'tree' | 'matrix' | 'switches'
export type Order = 'unexplained' | 'found' | 'level' | 'kind' | 'group'

export interface State {
  view: View
  /** Indexes into the model; -1: none. */
  finding: number
  repair: number
  group: number
  switch: number
  /** Filters of the list of findings. */
  kind: Kind | ''
  inGroup: number
  atSwitch: number
  query: string
  order: Order
}

export const start: State = {
  view: 'tree',
  finding: -1,
  repair: -1,
  group: -1,
  switch: -1,
  kind: '',
  inGroup: -1,
  atSwitch: -1,
  query: '',
  order: 'kind',
}

/** Where there are repairs, they come first and then what is left. */
export function firstOrder(model: Model): Order {
  return model.repairs.length > 0 ? 'unexplained' : start.order
}

/** The switches of the chosen finding and of the chosen repair. */
export function chosenIn(model: Model, { finding, repair }: State): number[] {
  const found = finding >= 0 ? model.findings[finding].switches : []
  const repaired = repair >= 0 ? model.repairs[repair].switches : []
  return [...new Set([...found, ...repaired])]
}

export type Listener = (state: State, before: State) => void

export class Store {
  #state: State
  #listeners: Listener[] = []

  constructor(state: State) {
    this.#state = state
  }

  get state(): Readonly<State> {
    return this.#state
  }

  /** Told at once and after every change. */
  watch(listener: Listener): void {
    this.#listeners.push(listener)
    listener(this.#state, this.#state)
  }

  set(change: Partial<State>): void {
    const before = this.#state
    const next = { ...before, ...change }
    if (Object.keys(change).every((key) => next[key as keyof State] === before[key as keyof State]))
      return
    this.#state = next
    for (const listener of this.#listeners) listener(next, before)
  }
}
