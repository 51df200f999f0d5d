// The head of the page: the verdict, and numbers that lead on to what they count.

import type { App } from './actions'
import { button, byId, make, sign } from './dom'
import { worstLevel, type Model } from './model'
import type { View } from './state'
import { countsByKind, verdictOf, whatWasChecked } from './verdict'
import { counted, cut, kindName, number } from './words'

function signOf(model: Model): string {
  if (model.result.status === 'failed') return 'error'
  const worst = worstLevel(
    model,
    model.findings.map((finding) => finding.index),
  )
  return ['clean', 'clean', 'warning', 'error'][worst]
}

/** A number, and the view that shows what it counts. */
function tile({ store }: App, value: number, name: string, view: View): HTMLElement {
  const control = button('', { class: 'tile', 'data-number': name }, () => store.set({ view }))
  control.append(make('b', {}, number.format(value)), ` ${name}`)
  return control
}

function tiles(app: App): HTMLElement[] {
  const { model } = app
  const inTree = model.switches.filter((one) => one.rank >= 0).length
  const outside = model.switches.length - inTree
  if (model.levels === 0)
    return [
      tile(app, outside, outside === 1 ? 'switch' : 'switches', 'switches'),
      tile(app, model.hosts, model.hosts === 1 ? 'host link' : 'host links', 'switches'),
    ]
  const all: [number, string, View][] = [
    [model.levels, model.levels === 1 ? 'level' : 'levels', 'tree'],
    [inTree, inTree === 1 ? 'switch' : 'switches', 'switches'],
    [model.groups.length, model.groups.length === 1 ? 'group' : 'groups', 'matrix'],
    [model.hosts, model.hosts === 1 ? 'host link' : 'host links', 'switches'],
  ]
  if (outside > 0) all.push([outside, 'outside the tree', 'switches'])
  return all.map(([value, name, view]) => tile(app, value, name, view))
}

/** A second click on a kind shows all findings again. */
function kindTiles({ model, store }: App): HTMLElement[] {
  return [...countsByKind(model)].map(([kind, count]) => {
    const control = button('', { class: 'tile kind', 'data-kind': kind }, () => {
      store.set({ kind: store.state.kind === kind ? '' : kind })
      byId('findings-title').scrollIntoView({ block: 'nearest' })
    })
    const worst = worstLevel(
      model,
      model.findings.filter((one) => one.raw.kind === kind).map((one) => one.index),
    )
    control.classList.add(worst === 3 ? 'error' : 'warning')
    control.append(
      sign(kind),
      make('b', {}, number.format(count)),
      ` ${kindName(kind)[count === 1 ? 0 : 1]}`,
    )
    store.watch((state) => control.setAttribute('aria-pressed', String(state.kind === kind)))
    return control
  })
}

const longestInput = 200

/** A line below the verdict, where there is something to tell. */
function tell(id: string, text: string): void {
  byId(id).hidden = text === ''
  byId(id).textContent = cut(text, 2000)
}

export function showHead(app: App): void {
  const { model } = app
  const { result } = model
  const verdict = verdictOf(model)
  const input = cut(result.input === '-' ? 'standard input' : result.input, longestInput)
  document.title = `${verdict} – ${cut(input, 60)} – fabscope`
  byId('input').textContent = input
  byId('verdict').textContent = verdict
  byId('verdict-sign').append(sign(signOf(model)))
  document.documentElement.dataset.verdict = signOf(model)
  tell('checked', whatWasChecked(model))
  tell('message', result.message)
  tell('advice', model.told.advice)
  tell('doubt', result.roots.doubt)
  const notListed = result.recordsNotListed ?? 0
  tell('not-listed', notListed ? `${counted(notListed, 'more error record')} not listed` : '')
  byId('source').textContent =
    `${result.tool} · ${counted(result.records.length + notListed, 'error record')}, ` +
    counted(result.issues, 'issue') +
    (result.roots.method === 'inferred' ? ' · roots inferred from all cables' : '') +
    (model.told.date ? ` · dump generated on ${model.told.date}` : '')
  byId('numbers').append(...tiles(app), ...kindTiles(app))
}
