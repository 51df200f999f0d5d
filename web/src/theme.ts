// Light or dark: as the reader's system has it, until the reader says otherwise.

import { byId, sign } from './dom'

type Theme = 'light' | 'dark'

const system = matchMedia('(prefers-color-scheme: dark)')
const redraws: (() => void)[] = []
let chosen: Theme | '' = ''

/** When the dark colours hold. */
const media = { light: 'not all', dark: 'all', '': system.media }

function current(): Theme {
  return chosen || (system.matches ? 'dark' : 'light')
}

function changed(): void {
  const other = current() === 'dark' ? 'light' : 'dark'
  const control = byId('theme')
  control.title = `Use ${other} colours (t)`
  control.setAttribute('aria-label', `Use ${other} colours`)
  for (const redraw of redraws) redraw()
}

function useTheme(theme: Theme | ''): void {
  chosen = theme
  byId<HTMLStyleElement>('dark').media = media[theme]
  changed()
}

export function toggleTheme(): void {
  useTheme(current() === 'dark' ? 'light' : 'dark')
}

/** What is drawn and not styled has to be drawn anew. */
export function onTheme(redraw: () => void): void {
  redraws.push(redraw)
}

export function startTheme(): void {
  byId('theme').append(sign('theme'))
  byId('theme').addEventListener('click', toggleTheme)
  system.addEventListener('change', changed)
  // Paper is white.
  let before: Theme | '' = ''
  addEventListener('beforeprint', () => {
    before = chosen
    useTheme('light')
  })
  addEventListener('afterprint', () => useTheme(before))
  changed()
}

const names = [
  'surface',
  'ink',
  'soft',
  'edge',
  'box',
  'mark',
  'cable',
  'accent',
  'error',
  'warning',
  'cell',
] as const

export type Palette = Record<(typeof names)[number], string>

/** The colours of the style sheet, for drawing. */
export function palette(): Palette {
  const style = getComputedStyle(document.documentElement)
  return Object.fromEntries(
    names.map((name) => [name, style.getPropertyValue(`--${name}`).trim()]),
  ) as Palette
}

export const font = 'system-ui, -apple-system, "Segoe UI", Roboto, "DejaVu Sans", sans-serif'
