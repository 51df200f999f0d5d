// Draws the tree on a canvas. Positions are the layout's, widths of lines are those of the screen.

import { worstLevel } from './model'
import { pointOn, trace, type Curve } from './geometry'
import { stepOf, type Layout } from './layout'
import { curveOf, type Box, type Scene } from './scene'
import { chosenIn, type State } from './state'
import { font, type Palette } from './theme'
import { groupName, number } from './words'

export interface Sight {
  width: number
  height: number
  /** Screen = world * k + (x, y). */
  k: number
  /** The k with which all of the tree is in sight. */
  whole: number
  x: number
  y: number
}

export interface Badge {
  /** Several where there is no room for one each. */
  groups: number[]
  x: number
  y: number
  width: number
}

/** Boxes and cables as they were last drawn. */
export interface Ground {
  picture: HTMLCanvasElement
  sight: Sight
  time: number
}

export interface Drawing {
  ctx: CanvasRenderingContext2D
  scene: Scene
  sight: Sight
  state: State
  colours: Palette
  /** The switch under the pointer or the keyboard's cursor; -1: none. */
  hovered: number
}

const badgeHeight = 18

function drawBoxes({ ctx, scene, state, colours, sight }: Drawing): void {
  for (const box of scene.boxes) {
    const chosen = box.group >= 0 && box.group === state.group
    ctx.fillStyle = colours.box
    ctx.strokeStyle = chosen ? colours.accent : colours.edge
    ctx.lineWidth = (chosen ? 2 : 1) / sight.k
    ctx.setLineDash(box.group < 0 ? [3 / sight.k, 3 / sight.k] : [])
    ctx.beginPath()
    ctx.roundRect(box.x, box.y, box.width, box.height, 5)
    ctx.fill()
    ctx.stroke()
  }
  ctx.setLineDash([])
}

/** Where something is chosen, everything else steps back. */
function focused(scene: Scene, state: State): boolean {
  return chosenIn(scene.model, state).length > 0 || state.switch >= 0
}

function drawCables({ ctx, scene, state, colours, sight }: Drawing): void {
  ctx.strokeStyle = colours.cable
  const crowd = Math.max(0.16, Math.min(0.6, 40 / Math.sqrt(scene.layout.bundles.length + 1)))
  const aside = focused(scene, state) || (state.group >= 0 && !scene.frame.small)
  ctx.globalAlpha = (scene.frame.small ? 0.75 : crowd) * (aside ? 0.4 : 1)
  for (const { path, weight } of scene.bundles) {
    ctx.lineWidth = (weight * Math.min(1, sight.width / 900)) / sight.k
    ctx.stroke(path)
  }
  ctx.globalAlpha = focused(scene, state) ? 0.3 : 0.6
  ctx.lineWidth = Math.min(0.9, (200 / scene.singly) * (sight.k / sight.whole)) / sight.k
  ctx.stroke(scene.cables)
  ctx.globalAlpha = 1
}

function inSight({ width, height, k, x, y }: Sight, wx: number, wy: number): boolean {
  const [sx, sy] = [wx * k + x, wy * k + y]
  return sx > -40 && sy > -40 && sx < width + 40 && sy < height + 40
}

function diamond(ctx: CanvasPath, x: number, y: number, r: number): void {
  ctx.moveTo(x, y - r)
  ctx.lineTo(x + r, y)
  ctx.lineTo(x, y + r)
  ctx.lineTo(x - r, y)
  ctx.closePath()
}

function triangle(ctx: CanvasPath, x: number, y: number, r: number): void {
  ctx.moveTo(x, y - r)
  ctx.lineTo(x + r, y + r * 0.85)
  ctx.lineTo(x - r, y + r * 0.85)
  ctx.closePath()
}

const largestMark = 9

/** Half of a mark's width, in the layout's units. */
function markSize(layout: Layout, { k }: Sight, index: number): number {
  return Math.min(stepOf(layout, layout.blocks[layout.blockOf[index]]) * 0.32, largestMark / k)
}

function drawMarks({ ctx, scene, colours, sight }: Drawing): void {
  const { layout, levels } = scene
  const paths = [new Path2D(), new Path2D(), new Path2D()]
  for (let index = 0; index < levels.length; index++) {
    if (layout.blockOf[index] < 0) continue
    const [x, y, r] = [layout.x[index], layout.y[index], markSize(layout, sight, index)]
    if (!inSight(sight, x, y)) continue
    if (levels[index] === 3) diamond(paths[2], x, y, r * 1.45)
    else if (levels[index] === 2) triangle(paths[1], x, y, r * 1.3)
    else paths[0].rect(x - r, y - r, 2 * r, 2 * r)
  }
  const fills = [colours.mark, colours.warning, colours.error]
  paths.forEach((path, at) => {
    ctx.fillStyle = fills[at]
    ctx.fill(path)
  })
}

/** Fault lines in one colour and kind at once; the chosen one is drawn apart. */
function drawFaults({ ctx, scene, state, colours, sight }: Drawing): void {
  const px = 1 / sight.k
  ctx.lineCap = 'round'
  for (const missing of [true, false])
    for (const level of [2, 3]) {
      const path = new Path2D()
      for (const line of scene.drawnFaults)
        if (line.missing === missing && line.level === level && line.finding !== state.finding)
          trace(path, curveOf(scene.layout, line.a, line.b))
      ctx.strokeStyle = level === 3 ? colours.error : colours.warning
      ctx.globalAlpha = focused(scene, state) ? 0.45 : 1
      ctx.setLineDash(missing ? [5 * px, 4 * px] : [])
      ctx.lineWidth = (missing ? 1.6 : 2.6) * px
      ctx.stroke(path)
    }
  ctx.globalAlpha = 1
  ctx.setLineDash([])
}

function drawChosenFault(drawing: Drawing): void {
  const { ctx, scene, state, colours, sight } = drawing
  const line = scene.faults.find((one) => one.finding === state.finding)
  if (!line || scene.layout.blockOf[line.a] < 0 || scene.layout.blockOf[line.b] < 0) return
  const path = new Path2D()
  trace(path, curveOf(scene.layout, line.a, line.b))
  ctx.strokeStyle = colours.surface
  ctx.lineWidth = 8 / sight.k
  ctx.stroke(path)
  ctx.setLineDash(line.missing ? [8 / sight.k, 6 / sight.k] : [])
  ctx.strokeStyle = line.level === 3 ? colours.error : colours.warning
  ctx.lineWidth = (line.missing ? 3 : 4.5) / sight.k
  ctx.stroke(path)
  ctx.setLineDash([])
}

/** Cables of the chosen switch, one by one. */
function drawFollowed({ ctx, scene, state, colours, sight }: Drawing): void {
  if (state.switch < 0 || scene.layout.blockOf[state.switch] < 0) return
  const path = new Path2D()
  for (const cable of scene.model.cablesOf(state.switch))
    if (scene.layout.blockOf[cable.peer] >= 0 && scene.model.invalidBy[cable.index] < 0)
      trace(path, curveOf(scene.layout, state.switch, cable.peer))
  const step = stepOf(scene.layout, scene.layout.blocks[scene.layout.blockOf[state.switch]])
  ctx.strokeStyle = colours.accent
  ctx.lineWidth = Math.min(1.5 / sight.k, step / 6)
  ctx.stroke(path)
}

function chosenSwitches(drawing: Drawing): number[] {
  const { scene, state, hovered } = drawing
  return [...chosenIn(scene.model, state), state.switch, hovered].filter(
    (index) => index >= 0 && scene.layout.blockOf[index] >= 0,
  )
}

function drawRings(drawing: Drawing): void {
  const { ctx, scene, sight, colours } = drawing
  ctx.strokeStyle = colours.accent
  ctx.lineWidth = 2 / sight.k
  for (const index of chosenSwitches(drawing)) {
    const r = Math.max(markSize(scene.layout, sight, index) * 1.9, 5 / sight.k)
    ctx.beginPath()
    ctx.arc(scene.layout.x[index], scene.layout.y[index], r, 0, 2 * Math.PI)
    ctx.stroke()
  }
}

/** Text that stays readable over lines. */
function haloText(drawing: Drawing, text: string, x: number, y: number, colour: string): void {
  const { ctx, colours } = drawing
  ctx.strokeStyle = colours.surface
  ctx.lineWidth = 4
  ctx.lineJoin = 'round'
  ctx.strokeText(text, x, y)
  ctx.fillStyle = colour
  ctx.fillText(text, x, y)
}

/** Where there is room for some names only, those of the switches with findings. */
function labelsOf({ scene, sight }: Drawing): number[] {
  const { layout, levels } = scene
  const shown: number[] = []
  for (const block of layout.blocks) {
    const step = stepOf(layout, block) * sight.k
    const all = step >= (block.folded ? 60 : 24)
    if (block.folded ? !all : step < 13) continue
    for (const index of block.switches)
      if ((all || levels[index] > 0) && inSight(sight, layout.x[index], layout.y[index]))
        shown.push(index)
  }
  return shown
}

function nameAt(drawing: Drawing, index: number, upwards: boolean): void {
  const { ctx, scene, sight, colours } = drawing
  const { layout, levels, names } = scene
  const { k } = sight
  const r = markSize(layout, sight, index) * k + 5
  ctx.save()
  ctx.translate(layout.x[index] * k + sight.x, layout.y[index] * k + sight.y)
  ctx.rotate(upwards ? -Math.PI / 3 : Math.PI / 3)
  ctx.textBaseline = 'middle'
  haloText(drawing, names[index], r, 0, levels[index] ? colours.ink : colours.soft)
  ctx.restore()
}

function drawNames(drawing: Drawing): void {
  const { ctx, scene } = drawing
  ctx.font = `11px ${font}`
  ctx.textAlign = 'left'
  const shown = new Set(labelsOf(drawing))
  const chosen = chosenSwitches(drawing)
  if (chosen.length <= 24) chosen.forEach((index) => shown.add(index))
  for (const index of shown)
    nameAt(drawing, index, scene.model.switches[index].rank < scene.model.levels - 1)
}

function portLabel(drawing: Drawing, curve: Curve, t: number, port: number): void {
  const { ctx, sight, colours } = drawing
  const at = pointOn(curve, t)
  const [x, y] = [at.x * sight.k + sight.x, at.y * sight.k + sight.y]
  const text = String(port)
  const width = ctx.measureText(text).width + 8
  ctx.fillStyle = colours.surface
  ctx.strokeStyle = colours.accent
  ctx.lineWidth = 1
  ctx.beginPath()
  ctx.roundRect(x - width / 2, y - 8, width, 16, 4)
  ctx.fill()
  ctx.stroke()
  ctx.fillStyle = colours.ink
  ctx.fillText(text, x, y + 0.5)
}

/** Where on a curve the number of a port is. */
const nearStart = 0.16

/** Port numbers of what is followed, as long as there is room for them. */
function drawPorts(drawing: Drawing): void {
  const { ctx, scene, state, sight } = drawing
  const { layout, model } = scene
  ctx.font = `600 10px ${font}`
  ctx.textAlign = 'center'
  ctx.textBaseline = 'middle'
  const line = scene.faults.find((one) => one.finding === state.finding)
  if (line?.ports && layout.blockOf[line.a] >= 0 && layout.blockOf[line.b] >= 0) {
    const curve = curveOf(layout, line.a, line.b)
    portLabel(drawing, curve, nearStart, line.ports[0])
    portLabel(drawing, curve, 1 - nearStart, line.ports[1])
  }
  if (state.switch < 0 || layout.blockOf[state.switch] < 0) return
  const cables = model.cablesOf(state.switch).filter((cable) => layout.blockOf[cable.peer] >= 0)
  if (cables.length > 24 && sight.k * layout.pitch < 24) return
  for (const { port, peer, peerPort } of cables) {
    const ofLoop = port < peerPort ? nearStart : 1 - nearStart
    const t = peer === state.switch ? ofLoop : 0.72
    portLabel(drawing, curveOf(layout, state.switch, peer), t, port)
  }
}

function rankLabel({ scene, sight }: Drawing, rank: number): string {
  if (sight.width < 600) return String(rank)
  const { levels } = scene.model
  return `${rank}${rank === 0 ? ' · roots' : rank === levels - 1 ? ' · leaves' : ''}`
}

/** The names of the ranks, in a margin that the tree passes under when it is moved. */
function drawRankNames(drawing: Drawing): void {
  const { ctx, scene, sight, colours } = drawing
  const { layout, frame } = scene
  ctx.font = `600 11px ${font}`
  ctx.textAlign = 'left'
  ctx.textBaseline = 'middle'
  const labels = frame.rows.map((_, rank) => rankLabel(drawing, rank))
  const width = Math.max(...labels.map((label) => ctx.measureText(label).width)) + 16
  ctx.fillStyle = colours.surface
  ctx.fillRect(0, 0, width, sight.height)
  const first = layout.blocks.reduce((least, block) => Math.min(least, block.x), Infinity)
  ctx.fillStyle = colours.edge
  if (first * sight.k + sight.x < width) ctx.fillRect(width, 0, 1, sight.height)
  ctx.fillStyle = colours.soft
  labels.forEach((label, rank) => {
    const block = layout.blocks.find((one) => one.rank === rank)
    if (!block) return
    ctx.fillText(label, 8, (block.y + block.height / 2) * sight.k + sight.y + 0.5)
  })
}

/** As much of a group's name as there is room for. */
function groupLabel(scene: Scene, box: Box, room: number): string {
  if (box.group < 0) return room > 60 ? 'no group' : ''
  const group = scene.model.groups[box.group]
  if (room > 130 || (room > 105 && group.kind === 'neighborhood')) return groupName(group)
  return room > 26 ? `${group.kind === 'neighborhood' ? 'N' : 'C'} ${group.id}` : ''
}

/** A little below where a box has its row, or in the middle between its two. */
function labelHeight({ label, y, height }: Box, { k, y: shift }: Sight): number {
  return label * k + shift + (label < y + height ? 0 : 12)
}

function drawGroupNames(drawing: Drawing): void {
  const { ctx, scene, sight, colours } = drawing
  ctx.font = `600 11px ${font}`
  ctx.textAlign = 'center'
  ctx.textBaseline = 'middle'
  for (const box of scene.boxes) {
    const text = groupLabel(scene, box, box.width * sight.k)
    const x = (box.x + box.width / 2) * sight.k + sight.x
    const y = labelHeight(box, sight)
    if (text) haloText(drawing, text, x, y, colours.soft)
  }
}

/** Counts of findings at the groups' boxes; those that would cover one another become one. */
function drawBadges(drawing: Drawing): Badge[] {
  const { scene, sight, ctx } = drawing
  const badges: (Badge & { findings: Set<number>; row: number })[] = []
  ctx.font = `700 11px ${font}`
  ctx.textAlign = 'center'
  ctx.textBaseline = 'middle'
  for (const box of scene.boxes) {
    const findings = box.group < 0 ? [] : scene.model.groups[box.group].findings
    if (findings.length === 0) continue
    const x = (box.x + box.width / 2) * sight.k + sight.x
    const below = groupLabel(scene, box, box.width * sight.k) ? 19 : 0
    const y = labelHeight(box, sight) + below
    const last = badges[badges.length - 1]
    if (last && last.row === box.y && x - last.x < 34) {
      last.groups.push(box.group)
      findings.forEach((one) => last.findings.add(one))
    } else {
      const groups = [box.group]
      badges.push({ groups, x, y, width: 0, row: box.y, findings: new Set(findings) })
    }
  }
  for (const badge of badges) badge.width = drawBadge(drawing, badge, [...badge.findings])
  return badges
}

function drawBadge(drawing: Drawing, at: { x: number; y: number }, findings: number[]): number {
  const { ctx, scene, colours } = drawing
  const text = number.format(findings.length)
  const width = ctx.measureText(text).width + 22
  const error = worstLevel(scene.model, findings) === 3
  const [left, top] = [at.x - width / 2, at.y - badgeHeight / 2]
  ctx.fillStyle = error ? colours.error : colours.warning
  ctx.strokeStyle = colours.surface
  ctx.lineWidth = 2
  ctx.beginPath()
  ctx.roundRect(left, top, width, badgeHeight, 9)
  ctx.stroke()
  ctx.fill()
  ctx.fillStyle = colours.surface
  ctx.beginPath()
  if (error) diamond(ctx, left + 9, at.y, 4)
  else triangle(ctx, left + 9, at.y, 3.8)
  ctx.fill()
  ctx.fillText(text, left + 8 + (width - 8) / 2, at.y + 0.5)
  return width
}

function clear({ ctx, sight, colours }: Drawing, ratio: number): void {
  ctx.setTransform(ratio, 0, 0, ratio, 0, 0)
  ctx.fillStyle = colours.surface
  ctx.fillRect(0, 0, Math.ceil(sight.width), Math.ceil(sight.height))
}

function lookAt({ ctx, sight: { k, x, y } }: Drawing, ratio: number): void {
  ctx.setTransform(ratio * k, 0, 0, ratio * k, ratio * x, ratio * y)
}

/** Boxes and cables, over which all else is drawn. */
export function drawGround(drawing: Drawing, ratio: number): void {
  clear(drawing, ratio)
  lookAt(drawing, ratio)
  drawBoxes(drawing)
  drawCables(drawing)
}

/** The same from a picture of it, taken when it was seen otherwise. */
export function drawOldGround(drawing: Drawing, ratio: number, ground: Ground): void {
  clear(drawing, ratio)
  const { ctx, sight } = drawing
  const { picture, sight: old } = ground
  const by = sight.k / old.k
  const [x, y] = [sight.x - old.x * by, sight.y - old.y * by]
  ctx.drawImage(picture, x, y, (picture.width / ratio) * by, (picture.height / ratio) * by)
}

/** Everything over the ground. Tells where the badges are. */
export function drawTree(drawing: Drawing, ratio: number): Badge[] {
  const { ctx } = drawing
  lookAt(drawing, ratio)
  drawFaults(drawing)
  drawFollowed(drawing)
  drawChosenFault(drawing)
  drawMarks(drawing)
  drawRings(drawing)
  ctx.setTransform(ratio, 0, 0, ratio, 0, 0)
  drawGroupNames(drawing)
  drawNames(drawing)
  drawPorts(drawing)
  const badges = drawBadges(drawing)
  drawRankNames(drawing)
  return badges
}
