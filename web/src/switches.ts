// All switches as a table, those first that something was found at.

import { showSwitch, type App } from './actions'
import { button, make, nameText } from './dom'
import type { Switch } from './model'
import { number, nameOf } from './words'

const most = 200
const longestName = 1000
const columns = ['Switch', 'GUID', 'Rank', 'Up', 'Down', 'Hosts', 'Findings']

function count(value: number): string {
  return value < 0 ? '–' : number.format(value)
}

function matching(app: App, query: string): Switch[] {
  const words = query.toLowerCase().split(/\s+/).filter(Boolean)
  return app.model.switches
    .filter((one) => {
      const text = `${one.name.slice(0, longestName)} ${one.guid}`.toLowerCase()
      return words.every((word) => text.includes(word))
    })
    .sort((a, b) => b.findings.length - a.findings.length || a.index - b.index)
}

function row(app: App, one: Switch): HTMLElement {
  const link = button('', { class: 'link' }, () => showSwitch(app, one.index))
  link.append(nameText(nameOf(one)))
  const numbers = [one.rank, one.up, one.down, one.hosts].map(count)
  return make(
    'tr',
    {},
    make('th', { scope: 'row' }, link),
    make('td', {}, make('code', {}, one.guid)),
    ...numbers.map((text) => make('td', { class: 'number' }, text)),
    make(
      'td',
      { class: one.findings.length > 0 ? 'number found' : 'number' },
      one.findings.length > 0 ? number.format(one.findings.length) : '',
    ),
  )
}

export function startSwitches(app: App, host: HTMLElement): void {
  const search = make('input', {
    type: 'search',
    placeholder: 'Name or GUID…',
    'aria-label': 'Search the switches',
    autocomplete: 'off',
  })
  const shown = make('span', { class: 'shown', role: 'status' })
  const body = make('tbody')
  const head = columns.map((text, at) =>
    make('th', { scope: 'col', class: at > 1 ? 'number' : '' }, text),
  )
  const table = make(
    'table',
    { class: 'switches' },
    make('thead', {}, make('tr', {}, ...head)),
    body,
  )
  host.append(
    make('div', { class: 'table-bar' }, search, shown),
    make('div', { class: 'table' }, table),
  )
  const fill = () => {
    const found = matching(app, search.value)
    const rows = found.slice(0, most)
    body.replaceChildren(...rows.map((one) => row(app, one)))
    shown.textContent = `${number.format(rows.length)} of ${number.format(found.length)} shown`
  }
  search.addEventListener('input', fill)
  let filled = false
  app.store.watch((state) => {
    if (filled || state.view !== 'switches') return
    filled = true
    fill()
  })
}
