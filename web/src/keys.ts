// Keys that work everywhere, and the text that tells of all of them.

import { goBack, type App } from './actions'
import { button, byId, make } from './dom'
import { showMore } from './list'
import type { View } from './state'
import { toggleTheme } from './theme'

const texts: [keys: string, what: string][] = [
  ['/', 'search the findings'],
  ['1 2 3', 'tree, matrix, switches'],
  ['j k', 'next and previous finding'],
  ['Escape', 'one step back'],
  ['t', 'light or dark'],
  ['← ↑ → ↓', 'move in tree, matrix and list'],
  ['Enter', 'open what is under the cursor'],
  ['+ − 0', 'zoom in, zoom out, show all'],
  ['Shift ← ↑ → ↓', 'move the tree'],
  ['?', 'this list'],
]

const views: Record<string, View> = { '1': 'tree', '2': 'matrix', '3': 'switches' }

function fillDialog(dialog: HTMLDialogElement): void {
  const rows = texts.flatMap(([keys, what]) => [
    make('dt', {}, ...keys.split(' ').map((key) => make('kbd', {}, key))),
    make('dd', {}, what),
  ])
  dialog.append(
    make('h2', { id: 'keys-title' }, 'Keys'),
    make('dl', {}, ...rows),
    button('Close', { class: 'small' }, () => dialog.close()),
  )
}

/** Goes through the findings as the list shows them. */
function nextFinding(by: number): void {
  const rowsShown = () => [...document.querySelectorAll<HTMLElement>('#list .row')]
  const rows = rowsShown()
  const at = rows.findIndex((row) => row.hasAttribute('aria-current'))
  const to = at < 0 && by < 0 ? rows.length - 1 : at + by
  if (to === rows.length) showMore()
  const row = rowsShown()[to]
  if (!row) return
  row.click()
  row.focus()
}

function isTyping(event: KeyboardEvent): boolean {
  const { target } = event
  return target instanceof HTMLInputElement || target instanceof HTMLSelectElement
}

function act(app: App, dialog: HTMLDialogElement, key: string): boolean {
  if (key === '/') byId<HTMLInputElement>('search').select()
  else if (key === '?') dialog.showModal()
  else if (key === 't') toggleTheme()
  else if (key === 'j' || key === 'k') nextFinding(key === 'j' ? 1 : -1)
  else if (views[key]) app.store.set({ view: views[key] })
  else return false
  return true
}

export function startKeys(app: App): void {
  const dialog = byId<HTMLDialogElement>('keys')
  fillDialog(dialog)
  byId('help').addEventListener('click', () => dialog.showModal())
  addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || dialog.open) return
    if (event.key === 'Escape') {
      if (isTyping(event)) (event.target as HTMLElement).blur()
      else goBack(app)
    } else if (!isTyping(event) && act(app, dialog, event.key)) event.preventDefault()
  })
}
