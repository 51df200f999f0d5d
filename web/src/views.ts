// The three views of the fabric, one at a time.

import type { App } from './actions'
import { byId, make } from './dom'
import { MatrixView, startGroupChooser } from './matrix'
import type { View } from './state'
import { startSwitches } from './switches'
import { hideTip } from './tip'
import { TreeView } from './tree'

const order: View[] = ['tree', 'matrix', 'switches']

function startTabs(app: App, tools: Record<View, HTMLElement[]>): void {
  const tabs = order.map((view) => byId(`tab-${view}`))
  tabs.forEach((tab, at) => {
    tab.addEventListener('click', () => app.store.set({ view: order[at] }))
    tab.addEventListener('keydown', (event) => {
      const by = { ArrowRight: 1, ArrowLeft: -1 }[event.key]
      if (by === undefined) return
      const next = (at + by + order.length) % order.length
      app.store.set({ view: order[next] })
      tabs[next].focus()
    })
  })
  app.store.watch((state, before) => {
    if (state !== before && state.view === before.view) return
    hideTip()
    order.forEach((view, at) => {
      const chosen = view === state.view
      tabs[at].setAttribute('aria-selected', String(chosen))
      tabs[at].tabIndex = chosen ? 0 : -1
      byId(`${view}-view`).hidden = !chosen
    })
    byId('tools').replaceChildren(...tools[state.view])
    byId('group-chooser').hidden = state.view === 'switches' || app.model.groups.length === 0
  })
}

type Legend = [shape: string, text: string][]

const ofTree: Legend = [
  ['missing-link', 'missing cable'],
  ['invalid-link', 'invalid cable'],
  ['error', 'switch with an error'],
  ['warning', 'with a warning'],
]

const ofMatrix: Legend = [
  ['cable', 'cable'],
  ['gap', 'missing cable'],
  ['error', 'invalid links at the switch'],
]

/** What the shapes mean; only where there is something to explain. */
function legendOf(app: App, legend: Legend): HTMLElement {
  const items = legend.map(([name, text]) =>
    make('span', {}, make('i', { class: `shape ${name}`, 'aria-hidden': 'true' }), text),
  )
  const element = make('div', { class: 'legend' }, ...items)
  element.hidden = app.model.findings.length === 0
  return element
}

function noTree(host: HTMLElement): void {
  host.append(
    make('p', { class: 'no-tree' }, 'There is no tree to show. The switches are in the table.'),
  )
}

export function startViews(app: App): void {
  const host = byId('tree-view')
  const hasTree = app.model.result.ranks.some((rank) => rank.length > 0)
  if (!hasTree) noTree(host)
  startGroupChooser(app)
  const matrixHost = byId('matrix-view')
  if (app.model.groups.length === 0)
    matrixHost.append(make('p', { class: 'no-tree' }, 'No groups of switches were found.'))
  const matrix = new MatrixView(app, matrixHost)
  matrixHost.append(legendOf(app, ofMatrix))
  const tree = hasTree ? new TreeView(app, host) : null
  if (hasTree) host.append(legendOf(app, ofTree))
  startSwitches(app, byId('switches-view'))
  startTabs(app, { tree: tree?.tools() ?? [], matrix: matrix.tools(), switches: [] })
}
