// All that the picture of the tree is drawn from, with paths that stay while it is moved.

import { faultLines, levelsOfSwitches, type FaultLine } from './faults'
import { curveBetween, loopAt, trace, type Curve, type Point } from './geometry'
import { frameOf, layoutOf, type Block, type Bundle, type Frame, type Layout } from './layout'
import type { Model } from './model'
import { headNames, nameOf } from './words'

export interface Bounds {
  x: number
  y: number
  width: number
  height: number
}

/** A group's box: one block, or the two of a neighborhood. */
export interface Box extends Bounds {
  group: number
  /** Where only cables are: below the upper row, between the two rows of a neighborhood. */
  label: number
}

export interface Weighted {
  path: Path2D
  /** Line width in pixels of the screen. */
  weight: number
}

export interface Scene {
  model: Model
  frame: Frame
  layout: Layout
  boxes: Box[]
  bundles: Weighted[]
  /** Cables that are drawn singly. */
  cables: Path2D
  /** How many these are. */
  singly: number
  faults: FaultLine[]
  /** Those that are drawn also when nobody chose them. */
  drawnFaults: FaultLine[]
  levels: Uint8Array
  /** Switch by switch, as it is named in the picture. */
  names: string[]
}

const weights = [0.6, 1.2, 2, 3.2]

function around(group: number, blocks: Block[]): Box {
  const x = Math.min(...blocks.map((block) => block.x))
  const y = Math.min(...blocks.map((block) => block.y))
  const width = Math.max(...blocks.map((block) => block.x + block.width)) - x
  const height = Math.max(...blocks.map((block) => block.y + block.height)) - y
  const [upper, lower] = blocks
  const bottom = upper.y + upper.height
  return { group, x, y, width, height, label: lower ? (bottom + lower.y) / 2 : bottom }
}

function boxesOf(blocks: Block[]): Box[] {
  const byGroup = new Map<number, Block[]>()
  const boxes: Box[] = []
  for (const block of blocks) {
    const known = byGroup.get(block.group)
    if (block.group < 0) boxes.push(around(-1, [block]))
    else if (known) known.push(block)
    else byGroup.set(block.group, [block])
  }
  for (const [group, own] of byGroup) boxes.push(around(group, own))
  return boxes.sort((a, b) => a.y - b.y || a.x - b.x)
}

export function middleOf(layout: Layout, index: number): Point {
  return { x: layout.x[index], y: layout.y[index] }
}

/** On the side of the switch that its name is not on. */
function loopOf(layout: Layout, index: number): Curve {
  const { rank } = layout.blocks[layout.blockOf[index]]
  const isLast = layout.blocks.every((block) => block.rank <= rank)
  const size = 1.7 * layout.pitch
  return loopAt(middleOf(layout, index), size, isLast ? -size : size)
}

export function curveOf(layout: Layout, a: number, b: number): Curve {
  if (a === b) return loopOf(layout, a)
  return curveBetween(middleOf(layout, a), middleOf(layout, b), layout.gap * 0.45)
}

function bundleCurve(layout: Layout, bundle: Bundle): Curve {
  const [upper, lower] = [layout.blocks[bundle.upper], layout.blocks[bundle.lower]]
  return curveBetween(
    { x: upper.x + upper.width / 2, y: upper.y + upper.height },
    { x: lower.x + lower.width / 2, y: lower.y },
    0,
  )
}

/** A bundle whose cables are drawn singly is not drawn. */
function drawnSingly(scene: Frame, bundle: Bundle, opened: number): boolean {
  return scene.small || (opened >= 0 && scene.blocks[bundle.upper].group === opened)
}

function bundlePaths(frame: Frame, layout: Layout, opened: number): Weighted[] {
  const most = layout.bundles.reduce((max, bundle) => Math.max(max, bundle.cables), 1)
  return frame.rows.flatMap((_, rank) => {
    const own = layout.bundles.filter((bundle) => frame.blocks[bundle.upper].rank === rank)
    // Where there are many, thin ones still show how they run.
    const thinner = Math.min(1, Math.sqrt(160 / own.length))
    const paths = weights.map((weight) => ({ weight: weight * thinner, path: new Path2D() }))
    for (const bundle of own) {
      if (drawnSingly(frame, bundle, opened)) continue
      const size = Math.ceil((bundle.cables / most) * weights.length) - 1
      trace(paths[Math.max(0, size)].path, bundleCurve(layout, bundle))
    }
    return paths
  })
}

function cablePath(
  model: Model,
  frame: Frame,
  layout: Layout,
  opened: number,
): Pick<Scene, 'cables' | 'singly'> {
  const path = new Path2D()
  let singly = 0
  if (!frame.small && opened < 0) return { cables: path, singly }
  const { cables, invalidBy } = model
  for (let at = 0; at < cables.length; at += 4) {
    const [a, b] = [cables[at], cables[at + 2]]
    const [p, q] = [layout.blockOf[a], layout.blockOf[b]]
    if (p < 0 || q < 0 || invalidBy[at >> 2] >= 0) continue
    const [upper, lower] = frame.blocks[p].rank < frame.blocks[q].rank ? [p, q] : [q, p]
    if (!drawnSingly(frame, { upper, lower, cables: 1 }, opened)) continue
    trace(path, curveOf(layout, a, b))
    singly++
  }
  return { cables: path, singly }
}

const mostFaultLines = 3000

/** Where there are too many, one stands for all between the same two blocks. */
function someOf(faults: FaultLine[], { blockOf, blocks }: Frame): FaultLine[] {
  const drawn = faults.filter((line) => blockOf[line.a] >= 0 && blockOf[line.b] >= 0)
  if (drawn.length <= mostFaultLines) return drawn
  const first = new Map<number, FaultLine>()
  for (const line of drawn) {
    const kind = line.level * 2 + (line.missing ? 1 : 0)
    const key = (blockOf[line.a] * blocks.length + blockOf[line.b]) * 8 + kind
    if (!first.has(key)) first.set(key, line)
  }
  return [...first.values()]
}

const longestName = 18
const longestRead = 200

function namesIn(model: Model, { blocks }: Frame): string[] {
  const names: string[] = []
  for (const { switches } of blocks) {
    const own = switches.map((index) => nameOf(model.switches[index], longestRead))
    headNames(own, longestName).forEach((name, at) => (names[switches[at]] = name))
  }
  return names
}

export function startScene(model: Model, aspect: number, opened: number): Scene {
  const frame = frameOf(model)
  const faults = faultLines(model)
  const names = namesIn(model, frame)
  const fixed = { model, frame, faults, levels: levelsOfSwitches(model), names }
  const drawnFaults = someOf(faults, frame)
  return { ...fixed, drawnFaults, ...placed(model, frame, aspect, opened) }
}

type Placed = Pick<Scene, 'layout' | 'boxes' | 'bundles' | 'cables' | 'singly'>

/** Everything that moves when a group is opened or the window changes. */
export function placed(model: Model, frame: Frame, aspect: number, opened: number): Placed {
  const layout = layoutOf(model, frame, opened, aspect)
  return {
    layout,
    boxes: boxesOf(layout.blocks),
    bundles: bundlePaths(frame, layout, opened),
    ...cablePath(model, frame, layout, opened),
  }
}

/** What holds a set of switches. */
export function boundsOf(layout: Layout, switches: number[]): Bounds | null {
  const drawn = switches.filter((index) => layout.blockOf[index] >= 0)
  if (drawn.length === 0) return null
  const xs = drawn.map((index) => layout.x[index])
  const ys = drawn.map((index) => layout.y[index])
  const [x, y] = [xs.reduce((a, b) => Math.min(a, b)), ys.reduce((a, b) => Math.min(a, b))]
  const right = xs.reduce((a, b) => Math.max(a, b))
  const bottom = ys.reduce((a, b) => Math.max(a, b))
  return { x, y, width: right - x, height: bottom - y }
}
