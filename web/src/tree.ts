// The picture of the tree: moving in it, and what is under the pointer.

import { select } from 'd3-selection'
import 'd3-transition'
import { zoom, zoomIdentity, zoomTransform, type D3ZoomEvent } from 'd3-zoom'
import { showFinding, showGroup, showSwitch, type App } from './actions'
import { sheetIn, type Sheet } from './canvas'
import { announce, button, make } from './dom'
import {
  drawGround,
  drawOldGround,
  drawTree,
  type Badge,
  type Drawing,
  type Ground,
} from './draw_tree'
import type { FaultLine } from './faults'
import { distanceTo } from './geometry'
import { stepOf, type Layout } from './layout'
import { boundsOf, curveOf, placed, startScene, type Bounds, type Scene } from './scene'
import { chosenIn, type State } from './state'
import type { Model } from './model'
import { palette } from './theme'
import { findingTip, groupsTip, groupTip, hideTip, showTip, switchTip } from './tip'
import { groupName, nameOf } from './words'

type Target =
  | { kind: 'switch' | 'finding' | 'group'; index: number }
  | { kind: 'groups'; groups: number[] }
  | null

const cardWidth = 328
const manyLines = 800

/** Milliseconds. */
const longestCopied = 250
const restAfter = 120

const still = matchMedia('(prefers-reduced-motion: reduce)')

export class TreeView {
  #app: App
  #sheet: Sheet
  #scene: Scene | null = null
  #badges: Badge[] = []
  #hovered = -1
  #ground: Ground | null = null
  #moving = false
  #rest = 0
  #zoom = zoom<HTMLCanvasElement, unknown>()

  constructor(app: App, host: HTMLElement) {
    this.#app = app
    this.#sheet = sheetIn(
      host,
      'The tree. Arrow keys go from switch to switch, Enter opens one, plus, minus and 0 zoom.',
      () => this.#draw(),
      () => this.#place(),
    )
    this.#listen()
    app.store.watch((state, before) => this.#follow(state, before))
  }

  tools(): HTMLElement[] {
    return [
      button('−', { title: 'Smaller (-)', 'aria-label': 'Zoom out' }, () => this.#scale(1 / 1.6)),
      button('+', { title: 'Larger (+)', 'aria-label': 'Zoom in' }, () => this.#scale(1.6)),
      button('Fit', { title: 'Show all (0)' }, () => this.#fitAll()),
    ]
  }

  #listen(): void {
    const { canvas } = this.#sheet
    this.#zoom.on('zoom', (event: D3ZoomEvent<HTMLCanvasElement, unknown>) => {
      if (event.sourceEvent) hideTip()
      this.#move()
    })
    select(canvas).call(this.#zoom).on('dblclick.zoom', null)
    canvas.addEventListener('pointermove', (event) => this.#hover(event))
    canvas.addEventListener('pointerleave', () => this.#leave())
    canvas.addEventListener('click', (event) => this.#click(event))
    canvas.addEventListener('keydown', (event) => this.#key(event))
    canvas.addEventListener('blur', () => this.#leave())
  }

  #place(): void {
    const { model, store } = this.#app
    const { group } = store.state
    this.#ground = null
    if (!this.#scene) this.#scene = startScene(model, this.#aspect(), group)
    else Object.assign(this.#scene, placed(model, this.#scene.frame, this.#aspect(), group))
    this.#focus(store.state, false)
  }

  #follow(state: State, before: State): void {
    const scene = this.#scene
    if (!scene) return
    this.#ground = null
    if (state.group !== before.group)
      Object.assign(scene, placed(scene.model, scene.frame, this.#aspect(), state.group))
    const chosen = (one: State) => `${one.finding} ${one.repair} ${one.group} ${one.switch}`
    if (chosen(state) !== chosen(before)) this.#focus(state, true)
    this.#sheet.redraw()
  }

  /** Where the tree is shown; around it is room for names. */
  #room(covered = 0): { x: number; y: number; top: number; side: number } {
    const { width, height } = this.#sheet
    const [side, top, bottom] = width < 600 ? [26, 60, 92] : [90, 78, 104]
    const [x, y] = [width - 2 * side - covered, height - top - bottom]
    return { x: Math.max(60, x), y: Math.max(60, y), top, side }
  }

  /** Width of what lies under the card of the chosen switch. */
  #covered(): number {
    return this.#app.store.state.switch >= 0 && this.#sheet.width > 600 ? cardWidth : 0
  }

  /** The scale with which all of the tree is in sight. */
  #wholeScale({ width, height }: Layout): number {
    const room = this.#room()
    return Math.min(room.x / Math.max(width, 1), room.y / Math.max(height, 1))
  }

  #aspect(): number {
    const { x, y } = this.#room()
    return Math.max(0.7, x / y)
  }

  #draw(): void {
    const { canvas, ctx, width, height, ratio } = this.#sheet
    const scene = this.#scene
    if (!scene) return
    const { k, x, y } = zoomTransform(canvas)
    const state = this.#app.store.state
    const sight = { width, height, k, x, y, whole: this.#wholeScale(scene.layout) }
    const colours = palette()
    const drawing = { ctx, scene, sight, state, colours, hovered: this.#hovered }
    this.#drawGround(drawing, ratio)
    this.#badges = drawTree(drawing, ratio)
    if (canvas.dataset.drawn) return
    canvas.dataset.drawn = 'true'
    performance.mark('first-picture')
  }

  /**
   * Thousands of cables take longer to draw than there is time between two pictures of a movement.
   * So most of these show a moved copy, and what is seen at rest is always drawn anew.
   */
  #drawGround(drawing: Drawing, ratio: number): void {
    const { scene, ctx } = drawing
    const isMany = scene.layout.bundles.length + scene.singly > manyLines
    const now = performance.now()
    const ground = this.#ground
    if (isMany && this.#moving && ground && now - ground.time < longestCopied) {
      drawOldGround(drawing, ratio, ground)
      return
    }
    drawGround(drawing, ratio)
    if (!isMany) return
    const picture = ground?.picture ?? make('canvas')
    picture.width = ctx.canvas.width
    picture.height = ctx.canvas.height
    picture.getContext('2d')?.drawImage(ctx.canvas, 0, 0)
    this.#ground = { picture, sight: drawing.sight, time: now }
  }

  #move(): void {
    this.#moving = true
    clearTimeout(this.#rest)
    this.#rest = setTimeout(() => {
      this.#moving = false
      this.#sheet.redraw()
    }, restAfter)
    this.#sheet.redraw()
  }

  /** What the reader has chosen comes into sight. */
  #focus(state: State, slowly: boolean): void {
    const scene = this.#scene
    if (!scene) return
    const box = this.#chosenBox(scene, state)
    if (box) this.#show(box, slowly)
    else this.#fitAll(slowly)
  }

  #chosenBox(scene: Scene, state: State): Bounds | null {
    const { model, layout } = scene
    if (state.switch >= 0) {
      const peers = model.cablesOf(state.switch).map((cable) => cable.peer)
      return boundsOf(layout, [state.switch, ...peers])
    }
    const line = scene.faults.find((one) => one.finding === state.finding)
    const ends = line ? boundsOf(layout, [line.a, line.b, ...neighbourhoods(model, line)]) : null
    if (ends) return widened(ends, layout)
    if (state.group < 0) return boundsOf(layout, chosenIn(model, state))
    return boundsOf(layout, [
      ...model.groups[state.group].spines,
      ...model.groups[state.group].lines,
    ])
  }

  /** So near that each of these groups has room for a badge of its own. */
  #part(groups: number[]): void {
    const boxes = this.#scene?.boxes.filter((box) => groups.includes(box.group)) ?? []
    const middles = boxes.map((box) => box.x + box.width / 2)
    const [first, last] = [Math.min(...middles), Math.max(...middles)]
    this.#show({ x: first, y: boxes[0].label, width: last - first, height: 0 }, true)
  }

  #fitAll(slowly = true): void {
    const layout = this.#scene?.layout
    if (layout) this.#show({ x: 0, y: 0, width: layout.width, height: layout.height }, slowly)
  }

  #show(box: Bounds, slowly: boolean): void {
    const { canvas, width } = this.#sheet
    const whole = this.#scene?.layout
    if (!whole || width === 0) return
    const room = this.#room(this.#covered())
    const all = this.#wholeScale(whole)
    const most = Math.max(all, 44 / whole.pitch)
    const k = Math.min(room.x / Math.max(box.width, 1), room.y / Math.max(box.height, 1), most)
    this.#zoom.scaleExtent([all / 2, Math.max(most * 3, 8)])
    const x = room.side + room.x / 2 - (box.x + box.width / 2) * k
    const y = room.top + room.y / 2 - (box.y + box.height / 2) * k
    const target = zoomIdentity.translate(x, y).scale(k)
    const chosen = select(canvas)
    if (slowly && !still.matches)
      chosen.transition().duration(380).call(this.#zoom.transform, target)
    else chosen.call(this.#zoom.transform, target)
  }

  #scale(by: number): void {
    const chosen = select(this.#sheet.canvas)
    if (still.matches) chosen.call(this.#zoom.scaleBy, by)
    else chosen.transition().duration(180).call(this.#zoom.scaleBy, by)
  }

  #targetAt(event: MouseEvent): Target {
    const scene = this.#scene
    if (!scene) return null
    const { canvas } = this.#sheet
    const [sx, sy] = [event.offsetX, event.offsetY]
    const badge = this.#badges.find(
      (one) => Math.abs(sx - one.x) <= one.width / 2 && Math.abs(sy - one.y) <= 10,
    )
    if (badge && badge.groups.length > 1) return { kind: 'groups', groups: badge.groups }
    if (badge) return { kind: 'group', index: badge.groups[0] }
    const { k } = zoomTransform(canvas)
    const [x, y] = zoomTransform(canvas).invert([sx, sy])
    return switchNear(scene, x, y, k) ?? faultNear(scene, x, y, 6 / k) ?? groupAround(scene, x, y)
  }

  #hover(event: PointerEvent): void {
    if (event.buttons !== 0) return
    const target = this.#targetAt(event)
    const hovered = target?.kind === 'switch' ? target.index : -1
    this.#sheet.canvas.classList.toggle('pointing', target !== null)
    if (hovered !== this.#hovered) {
      this.#hovered = hovered
      this.#sheet.redraw()
    }
    showTip(this.#tipOf(target), event.clientX, event.clientY)
  }

  #tipOf(target: Target): ReturnType<typeof switchTip> | null {
    const { model } = this.#app
    if (target?.kind === 'switch') return switchTip(model, target.index)
    if (target?.kind === 'finding') return findingTip(model, target.index)
    if (target?.kind === 'groups') return groupsTip(model, target.groups)
    return target ? groupTip(model, target.index) : null
  }

  #leave(): void {
    hideTip()
    this.#hovered = -1
    this.#sheet.redraw()
  }

  #click(event: MouseEvent): void {
    const target = this.#targetAt(event)
    hideTip()
    if (target?.kind === 'switch') showSwitch(this.#app, target.index)
    else if (target?.kind === 'finding') showFinding(this.#app, target.index)
    else if (target?.kind === 'groups') this.#part(target.groups)
    else if (target) showGroup(this.#app, target.index)
  }

  #key(event: KeyboardEvent): void {
    if (event.ctrlKey || event.metaKey || event.altKey) return
    const { key } = event
    if (key === '+' || key === '=') this.#scale(1.6)
    else if (key === '-') this.#scale(1 / 1.6)
    else if (key === '0') this.#fitAll()
    else if (key === 'Enter' && this.#hovered >= 0) showSwitch(this.#app, this.#hovered)
    else if (event.shiftKey && key.startsWith('Arrow')) this.#pan(key)
    else if (key.startsWith('Arrow')) this.#step(key)
    else return
    event.preventDefault()
  }

  #pan(key: string): void {
    const { k } = zoomTransform(this.#sheet.canvas)
    const by = 80 / k
    const x = key === 'ArrowLeft' ? by : key === 'ArrowRight' ? -by : 0
    const y = key === 'ArrowUp' ? by : key === 'ArrowDown' ? -by : 0
    select(this.#sheet.canvas).call(this.#zoom.translateBy, x, y)
  }

  /** The keyboard's cursor goes to the next switch of a rank, or to the nearest of the next rank. */
  #step(key: string): void {
    const scene = this.#scene
    if (!scene || scene.layout.blocks.length === 0) return
    const from = this.#hovered >= 0 ? this.#hovered : this.#app.store.state.switch
    this.#hovered = from < 0 ? scene.layout.blocks[0].switches[0] : neighbour(scene, from, key)
    const one = scene.model.switches[this.#hovered]
    const group = one.asSpine >= 0 ? one.asSpine : one.asLine
    const where = group >= 0 ? `, ${groupName(scene.model.groups[group])}` : ''
    announce(`${nameOf(one)}, rank ${one.rank}${where}`)
    this.#bringIntoSight(scene)
    this.#sheet.redraw()
  }

  #bringIntoSight(scene: Scene): void {
    const { canvas, width, height } = this.#sheet
    const { layout } = scene
    const [wx, wy] = [layout.x[this.#hovered], layout.y[this.#hovered]]
    const [x, y] = zoomTransform(canvas).apply([wx, wy])
    if (x < 20 || y < 20 || x > width - 20 || y > height - 20)
      select(canvas).call(this.#zoom.translateTo, wx, wy)
    const place = canvas.getBoundingClientRect()
    const [tx, ty] = zoomTransform(canvas).apply([wx, wy])
    showTip(switchTip(scene.model, this.#hovered), place.left + tx, place.top + ty)
  }
}

/** What stands in the same boxes as a cable's ends. Connectivity groups are spread too far. */
function neighbourhoods(model: Model, { finding }: FaultLine): number[] {
  const { raw, groups } = model.findings[finding]
  if (raw.groupKind !== 'neighborhood') return []
  return groups.flatMap((index) => [...model.groups[index].spines, ...model.groups[index].lines])
}

/** Room for the neighbours of a cable's ends, and for its bow when it stays in a row. */
function widened({ x, y, width, height }: Bounds, layout: Layout): Bounds {
  const side = 3 * layout.pitch
  const bow = height < layout.gap * 0.45 ? Math.min(layout.gap, width * 0.25) : 0
  return { x: x - side, y: y - bow, width: width + 2 * side, height: height + bow }
}

function switchNear(scene: Scene, x: number, y: number, k: number): Target {
  const { layout } = scene
  let [best, nearest] = [-1, Infinity]
  for (let index = 0; index < layout.blockOf.length; index++) {
    if (layout.blockOf[index] < 0) continue
    const distance = Math.hypot(layout.x[index] - x, layout.y[index] - y)
    if (distance < nearest) [best, nearest] = [index, distance]
  }
  if (best < 0) return null
  const step = stepOf(layout, layout.blocks[layout.blockOf[best]])
  // Marks that are too small to be aimed at leave the pointer to their group.
  return step * k >= 6 && nearest <= step * 0.6 ? { kind: 'switch', index: best } : null
}

function faultNear(scene: Scene, x: number, y: number, reach: number): Target {
  for (const line of scene.drawnFaults) {
    if (distanceTo(curveOf(scene.layout, line.a, line.b), x, y) <= reach)
      return { kind: 'finding', index: line.finding }
  }
  return null
}

function groupAround(scene: Scene, x: number, y: number): Target {
  const box = scene.boxes.find(
    (one) =>
      one.group >= 0 &&
      x >= one.x &&
      y >= one.y &&
      x <= one.x + one.width &&
      y <= one.y + one.height,
  )
  return box ? { kind: 'group', index: box.group } : null
}

function neighbour(scene: Scene, from: number, key: string): number {
  const { layout, model } = scene
  const rank = layout.blocks[layout.blockOf[from]].rank
  const rowOf = (wanted: number) =>
    layout.blocks
      .filter((block) => block.rank === wanted)
      .sort((a, b) => a.x - b.x)
      .flatMap((block) => block.switches)
  if (key === 'ArrowLeft' || key === 'ArrowRight') {
    const row = rowOf(rank)
    return row[row.indexOf(from) + (key === 'ArrowLeft' ? -1 : 1)] ?? from
  }
  const next = rank + (key === 'ArrowUp' ? -1 : 1)
  if (next < 0 || next >= model.levels) return from
  const away = (index: number) => Math.abs(layout.x[index] - layout.x[from])
  return (
    rowOf(next).reduce(
      (best, index) => (away(index) < away(best) ? index : best),
      rowOf(next)[0],
    ) ?? from
  )
}
