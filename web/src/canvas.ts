// A canvas that fills its place and is drawn at most once per frame.

import { make } from './dom'
import { onTheme } from './theme'

export interface Sheet {
  canvas: HTMLCanvasElement
  ctx: CanvasRenderingContext2D
  width: number
  height: number
  /** Device pixels per pixel of the page. */
  ratio: number
  redraw(): void
}

export function sheetIn(
  host: HTMLElement,
  label: string,
  draw: (sheet: Sheet) => void,
  resized: (sheet: Sheet) => void,
): Sheet {
  const canvas = make('canvas', { tabindex: 0, role: 'application', 'aria-label': label })
  const ctx = canvas.getContext('2d')
  if (!ctx) throw new Error('this browser cannot draw')
  let waiting = false
  const sheet: Sheet = {
    canvas,
    ctx,
    width: 0,
    height: 0,
    ratio: 1,
    redraw() {
      if (waiting || sheet.width === 0) return
      waiting = true
      requestAnimationFrame(() => {
        waiting = false
        draw(sheet)
      })
    },
  }
  const fit = () => {
    const { width, height } = host.getBoundingClientRect()
    const ratio = window.devicePixelRatio || 1
    if (width === 0 || (width === sheet.width && height === sheet.height && ratio === sheet.ratio))
      return
    Object.assign(sheet, { width, height, ratio })
    canvas.width = Math.round(width * ratio)
    canvas.height = Math.round(height * ratio)
    resized(sheet)
    draw(sheet)
  }
  host.append(canvas)
  new ResizeObserver(fit).observe(host)
  onTheme(() => {
    if (sheet.width > 0) draw(sheet)
  })
  return sheet
}
