// What to do about the findings: the steps in which cables are moved, as `fabscope repair` has them.

import type { RawCable, RawEnd, RawStep } from './data'
import { byId, make, nameText } from './dom'
import type { Model } from './model'
import { counted, cut } from './words'

/** A fabric that wants more is cabled anew, and not from a page. */
const most = 100

type Piece = Node | string

function endOf(end: RawEnd): Piece[] {
  return [nameText(cut(end.name.trim() === '' ? end.guid : end.name)), ` port ${end.port}`]
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
    return ['cable of ', ...kept, ': from ', ...from, ' to ', ...to]
  }
  const pieces: Piece[] = []
  if (cable.before)
    pieces.push('unplug ', ...endOf(cable.before[1]), ' from ', ...endOf(cable.before[0]))
  if (cable.before && cable.after) pieces.push(', ')
  if (cable.after)
    pieces.push('connect ', ...endOf(cable.after[1]), ' to ', ...endOf(cable.after[0]))
  return pieces
}

function rowOf(step: RawStep): HTMLElement {
  const row = make('li', { value: step.id })
  row.append(
    make('span', { class: `trust ${step.class}` }, step.class),
    step.cables.every((cable) => movedEnd(cable)) ? ` ${step.action}: ` : ' ',
  )
  step.cables.forEach((cable, index) =>
    row.append(...(index > 0 ? ['; '] : []), ...changeOf(cable)),
  )
  const more = step.alternatives.length
  const others = more > 0 ? ` ${counted(more, 'alternative')} in fabscope repair.` : ''
  row.append(make('small', {}, step.reason + others))
  return row
}

/** Nothing is shown when there is nothing to do. */
export function showRepairs({ result }: Model): void {
  const steps = result.repairs
  byId('repairs').hidden = steps.length === 0
  byId('repairs-title').textContent = counted(steps.length, 'repair')
  byId('repair-list').append(...steps.slice(0, most).map(rowOf))
  if (steps.length > most)
    byId('repair-list').append(make('li', { class: 'rest' }, 'Run fabscope repair for the rest.'))
}
