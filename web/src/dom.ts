// Elements are made here and nowhere else. Names from the fabric only ever become text.

export function byId<T extends HTMLElement = HTMLElement>(id: string): T {
  const found = document.getElementById(id)
  if (!found) throw new Error(`the page has no #${id}`)
  return found as T
}

type Attributes = Record<string, string | number | boolean>

export function make<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: (Node | string)[]
): HTMLElementTagNameMap[K] {
  const element = document.createElement(tag)
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, String(value))
  element.append(...children)
  return element
}

export function button(
  text: string,
  attributes: Attributes,
  onClick: (event: MouseEvent) => void,
): HTMLButtonElement {
  const element = make('button', { type: 'button', ...attributes }, text)
  element.addEventListener('click', onClick)
  return element
}

/** A name from the fabric: written from right to left or not, it leaves its surroundings alone. */
export function nameText(text: string): HTMLElement {
  return make('bdi', {}, text)
}

const drawing = 'http://www.w3.org/2000/svg'

/** A sign of the sheet of signs that stands in the page. */
export function sign(name: string): SVGSVGElement {
  const svg = document.createElementNS(drawing, 'svg')
  svg.setAttribute('class', `sign ${name}`)
  svg.setAttribute('aria-hidden', 'true')
  const use = document.createElementNS(drawing, 'use')
  use.setAttribute('href', `#sign-${document.getElementById(`sign-${name}`) ? name : 'other'}`)
  svg.append(use)
  return svg
}

/** Tells what is shown to those who do not see it. */
export function announce(text: string): void {
  byId('live').textContent = text
}
