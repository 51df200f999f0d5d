// Texts for the clipboard.

import { announce, make } from './dom'

/** Browsers keep the clipboard from pages that they do not trust; an older way often works there. */
function copySelected(text: string): boolean {
  const area = make('textarea', { class: 'hidden', readonly: '' })
  area.value = text
  document.body.append(area)
  area.select()
  const done = document.execCommand('copy')
  area.remove()
  return done
}

export async function copy(text: string, control: HTMLElement): Promise<void> {
  let done = true
  try {
    await navigator.clipboard.writeText(text)
  } catch {
    done = copySelected(text)
    control.focus()
  }
  const before = control.dataset.label ?? control.textContent ?? ''
  control.dataset.label = before
  control.textContent = done ? 'Copied' : 'Not allowed here'
  announce(control.textContent)
  setTimeout(() => (control.textContent = before), 1500)
}
